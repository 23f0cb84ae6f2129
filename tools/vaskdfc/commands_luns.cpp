// Commands about mapped logical units: luns.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "command_line.h"
#include "decode.h"
#include "mapped_units.h"
#include "progress.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  bool tree = false;
  bool by_library = false;
};

// One after another, and each may take its time.
std::vector<MappedUnit> identified_units(std::uint32_t adapter) {
  const auto entries = read_mapping(adapter);
  Progress progress("asking units", entries.size());
  std::vector<MappedUnit> units;
  for (const HbaFcpScsiEntry& entry : entries) {
    progress.reached(units.size());
    units.push_back({entry, identify(adapter, entry)});
  }
  return units;
}

// Bus, target and LUN, as the operating system counts them.
std::string address_text(const HbaScsiId& scsi) {
  return fmt::format("{}:{}:{}", scsi.ScsiBusNumber, scsi.ScsiTargetNumber, scsi.ScsiOSLun);
}

Record unit_record(const MappedUnit& unit) {
  const HbaScsiId& scsi = unit.entry.ScsiId;
  const auto& [designator, problem] = unit.identification;
  return {wwn_cell(unit.entry.FcpId.PortWWN),
          fc_id_cell(unit.entry.FcpId.FcId),
          text_cell(lun_text(lun_of(unit.entry))),
          text_cell(address_text(scsi)),
          text_cell(text_of(scsi.OSDeviceName)),
          designator ? text_cell(designator->text) : absent(),
          problem.empty() ? absent() : text_cell(problem)};
}

// Units of one target port together; for people the port stands only above the first of them.
void make_tree(std::vector<Record>& records) {
  constexpr std::size_t kPort = 0;
  constexpr std::size_t kFcId = 1;
  std::ranges::stable_sort(records, {}, [](const Record& record) { return record[kPort].text; });
  std::string port;
  for (Record& record : records) {
    const bool is_first = std::exchange(port, record[kPort].text) != record[kPort].text;
    if (!is_first) record[kPort].text = record[kFcId].text = "";
  }
}

void luns(Context& context, const Arguments& arguments) {
  const Session session;
  Section section = table_section("luns", "Logical units",
                                  {{"target_port", "TARGET PORT"},
                                   {"fc_id", "FC ID"},
                                   {"lun", "LUN"},
                                   {"scsi_address", "ADDRESS"},
                                   {"os_device_name", "DEVICE"},
                                   {"identifier", "IDENTIFIER"},
                                   {"problem", "PROBLEM"}});
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto units = arguments.by_library ? read_mapping_by_library(adapter) : identified_units(adapter);
  for (const MappedUnit& unit : units) section.records.push_back(unit_record(unit));
  if (arguments.tree) make_tree(section.records);
  context.print({.command = "luns", .sections = {std::move(section)}});
}

}  // namespace

void add_luns_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const Command command =
      commands.add_for_adapter("luns", "List the logical units that the driver has mapped, with their identifiers",
                               {"vaskdfc luns 0", "vaskdfc luns 0 --tree", "vaskdfc luns 0 -o json"}, arguments, luns);
  command.add_flag("--tree", arguments->tree, "Group the units by target port");
  command.add_flag("--by-library", arguments->by_library,
                   "Let the library ask the units, as applications do; it takes only what comes first in an answer");
}

}  // namespace vaskdfc::tool
