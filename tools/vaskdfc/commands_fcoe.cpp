// Commands about FCoE parameters and discovered forwarders: fcoe params, fcoe fcf.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "change_report.h"
#include "command_line.h"
#include "decode.h"
#include "region_fields.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

// --- fcoe params

struct ParamsArguments {
  std::string adapter;
  std::optional<std::string> fc_map;
  std::optional<std::string> vlan;
  bool no_vlan = false;
};

FcoeParameters read_parameters(std::uint32_t adapter) {
  dfc_fcoe_params params{};
  watch_driver_calls();
  const std::uint32_t result = DFC_FCoEGetParams(adapter, &params);
  if (result != DFC_OK) {
    throw operation_failure("the FCoE parameters cannot be read", adapter, "DFC_FCoEGetParams", Results::kRegion, result);
  }
  FcoeParameters parameters;
  std::ranges::copy(params.fcMap, parameters.fc_map.begin());
  if (params.vlanValid == 1) parameters.vlan = params.vlanId;
  return parameters;
}

std::uint32_t write_parameters(std::uint32_t adapter, const FcoeParameters& parameters) {
  dfc_fcoe_params params{};
  std::ranges::copy(parameters.fc_map, params.fcMap);
  params.vlanValid = parameters.vlan ? 1 : 0;
  params.vlanId = parameters.vlan.value_or(0);
  return DFC_FCoESetParams(adapter, &params);
}

// What the arguments ask for; what they do not name stays.
FcoeParameters with(FcoeParameters parameters, const ParamsArguments& arguments) {
  if (arguments.fc_map) {
    const auto bytes = parse_bytes(*arguments.fc_map, parameters.fc_map.size());
    if (!bytes) throw usage_failure(fmt::format("--fc-map: \"{}\" is no FC-MAP", *arguments.fc_map), "6 digits, as in 0e:fc:00");
    std::ranges::copy(*bytes, parameters.fc_map.begin());
  }
  if (arguments.vlan) parameters.vlan = vlan_argument(*arguments.vlan);
  if (arguments.no_vlan) parameters.vlan = std::nullopt;
  return parameters;
}

void get_params(Context& context, const ParamsArguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  auto fields = joined({{"adapter", "Adapter", number_cell(adapter)}}, fcoe_fields(read_parameters(adapter)));
  context.print({.command = "fcoe params get", .sections = {record_section("params", "FCoE parameters", std::move(fields))}});
}

void set_params(Context& context, const ParamsArguments& arguments) {
  if (!arguments.fc_map && !arguments.vlan && !arguments.no_vlan) {
    throw usage_failure("nothing to set", "name one or more of --fc-map, --vlan, --no-vlan");
  }
  with({}, arguments);  // what is spelled wrongly is wrong whatever the adapter holds
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const FcoeParameters before = read_parameters(adapter);
  const FcoeParameters wanted = with(before, arguments);
  const Setting setting{.command = "fcoe params set",
                        .adapter = adapter,
                        .intent = "set the FCoE parameters",
                        .place = "region 23",
                        .operation = "DFC_FCoESetParams",
                        .results = Results::kRegion,
                        .read = [=] { return fcoe_fields(read_parameters(adapter)); },
                        .write = [=] { return write_parameters(adapter, wanted); }};
  change(context, setting, fcoe_fields(before), fcoe_fields(wanted));
}

// --- fcoe fcf

// A list with room for `room` forwarders.
class FcfList {
 public:
  explicit FcfList(std::uint16_t room) : storage_(sizeof(dfc_fcf_list) + room * sizeof(fcf_entry)) { get()->numEntries = room; }
  dfc_fcf_list* get() { return reinterpret_cast<dfc_fcf_list*>(storage_.data()); }
  std::vector<fcf_entry> entries(std::size_t room) {
    return {get()->entries, get()->entries + std::min<std::size_t>(get()->numEntries, room)};
  }

 private:
  std::vector<std::uint8_t> storage_;  // aligned for anything, as all allocated memory is
};

struct Forwarders {
  std::vector<fcf_entry> entries;
  std::uint16_t status = 0;
};

// The number of forwarders may grow between two calls.
Forwarders read_forwarders(std::uint32_t adapter) {
  constexpr std::uint16_t kFirstRoom = 8;
  constexpr int kMostAttempts = 5;
  std::uint16_t room = kFirstRoom;
  std::uint32_t result = DFC_TOO_SMALL;
  for (int attempt = 0; attempt < kMostAttempts && result == DFC_TOO_SMALL; ++attempt) {
    FcfList list(room);
    watch_driver_calls();
    result = DFC_FCoEGetFCFList(adapter, list.get());
    if (result == DFC_OK) return {list.entries(room), list.get()->listStatus};
    room = list.get()->numEntries;
  }
  throw operation_failure("the forwarders cannot be read", adapter, "DFC_FCoEGetFCFList", Results::kRegion, result);
}

// VLAN ids of a bitmap as ranges, as in 1,100-104.
std::string vlan_ranges(std::span<const std::uint8_t> bitmap) {
  const auto is_set = [&](std::size_t id) { return id < bitmap.size() * 8 && (bitmap[id / 8] >> id % 8 & 1) != 0; };
  std::vector<std::string> ranges;
  for (std::size_t id = 0; id < bitmap.size() * 8; ++id) {
    if (!is_set(id)) continue;
    const std::size_t first = id;
    while (is_set(id + 1)) ++id;
    ranges.push_back(first == id ? fmt::format("{}", id) : fmt::format("{}-{}", first, id));
  }
  return fmt::format("{}", fmt::join(ranges, ","));
}

Section forwarders_section(const std::vector<fcf_entry>& entries) {
  Section section = blocks_section("fcfs", "FCFs",
                                   {{"name_0", "First name"},
                                    {"name_8", "Second name"},
                                    {"mac_address", "MAC address"},
                                    {"fc_map", "FC-MAP"},
                                    {"vlans", "VLANs"},
                                    {"flag_22", "Flag 22"},
                                    {"word_540", "Word 540"},
                                    {"word_548", "Word 548"}});
  for (const fcf_entry& entry : entries) {
    section.records.push_back({wwn_cell(entry.name_0), wwn_cell(entry.name_8), text_cell(colon_text(entry.macAddress)),
                               text_cell(colon_text(entry.fcMap)), text_cell(vlan_ranges(entry.vlanBitmap)),
                               number_cell(entry.flag_22), hex_cell(entry.word_540), hex_cell(entry.word_548)});
  }
  return section;
}

void list_forwarders(Context& context, const std::string& name) {
  const Session session;
  const std::uint32_t adapter = session.find(name);
  const Forwarders forwarders = read_forwarders(adapter);
  // A failure of the driver ends the list without a word.
  if (last_failed_driver_call()) {
    const bool none = forwarders.entries.empty();
    context.report_failure(
        operation_failure(none ? "the forwarders cannot be read" : "the list of forwarders ends early: the driver failed", adapter,
                          "DFC_FCoEGetFCFList", Results::kRegion, DFC_OK));
  }
  context.print({.command = "fcoe fcf list",
                 .sections = {record_section("list", "List",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"forwarders", "FCFs", number_cell(forwarders.entries.size())},
                                              {"list_status", "List status", number_cell(forwarders.status)}}),
                              forwarders_section(forwarders.entries)}});
}

void add_fcoe_params_commands(CommandLine& commands) {
  commands.group("fcoe params", "FCoE parameters: FC-MAP and VLAN",
                 {"vaskdfc fcoe params get 0", "vaskdfc fcoe params set 0 --vlan 1002"});
  auto arguments = std::make_shared<ParamsArguments>();
  commands.add_for_adapter("fcoe params get", "Show the FCoE parameters", {"vaskdfc fcoe params get 0"}, arguments, get_params);

  const Command command =
      commands.add_for_adapter("fcoe params set", "Change the FCoE parameters; what is not named stays",
                               {"vaskdfc fcoe params set 0 --vlan 1002", "vaskdfc fcoe params set 0 --no-vlan --yes",
                                "vaskdfc fcoe params set 0 --fc-map 0e:fc:01 --dry-run"},
                               arguments, set_params);
  command.add_option("--fc-map", arguments->fc_map, "FC-MAP, as in 0e:fc:00").type_name("MAP");
  const auto vlan = command.add_option("--vlan", arguments->vlan, "VLAN id, 0 to 4095").type_name("ID");
  command.add_flag("--no-vlan", arguments->no_vlan, "No VLAN id").excludes(vlan);
}

}  // namespace

void add_fcoe_commands(CommandLine& commands) {
  commands.group("fcoe", "FCoE: parameters, discovered forwarders (FCFs), forwarders to log in to",
                 {"vaskdfc fcoe params get 0", "vaskdfc fcoe fcf list 0", "vaskdfc fcoe connect list 0"});
  add_fcoe_params_commands(commands);

  commands.group("fcoe fcf", "Fibre Channel Forwarders that a port has discovered", {"vaskdfc fcoe fcf list 0"});
  auto listed = std::make_shared<std::string>();
  commands.add_for_adapter("fcoe fcf list", "List the discovered forwarders",
                           {"vaskdfc fcoe fcf list 0", "vaskdfc fcoe fcf list 0 -o json"}, listed, list_forwarders);
  add_fcoe_connect_commands(commands);
}

}  // namespace vaskdfc::tool
