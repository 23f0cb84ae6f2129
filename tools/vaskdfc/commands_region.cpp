// Commands that read configuration regions: region list, region dump, region show.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "command_line.h"
#include "decode.h"
#include "driver_record.h"
#include "raw_file.h"
#include "region_access.h"
#include "region_fields.h"
#include "region_image.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::string region;
  std::optional<std::string> file;
};

// --- region list

std::string state_text(RegionRead::State state) {
  switch (state) {
    case RegionRead::State::kPresent: return "present";
    case RegionRead::State::kMissing: return "missing";
    case RegionRead::State::kUnreadable: return "unreadable";
  }
  return "";
}

void list(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const std::uint32_t sli_mode = read_driver(adapter).sli_mode;
  Section section = table_section("regions", "Regions",
                                  {{"region", "REGION"},
                                   {"size", "SIZE"},
                                   {"state", "STATE"},
                                   {"contents", "CONTENTS"},
                                   {"shown", "SHOWN"},
                                   {"writable", "WRITABLE"}});
  for (const KnownRegion& known : known_regions(sli_mode)) {
    const RegionRead read = read_region(adapter, sli_mode, known.number);
    if (read.state == RegionRead::State::kUnreadable) context.report_failure(region_failure(adapter, known.number, read));
    section.records.push_back({number_cell(known.number), read.size ? number_cell(*read.size) : absent(),
                               text_cell(state_text(read.state)), text_cell(known.what), flag_cell(known.shown),
                               flag_cell(known.writable)});
  }
  context.print({.command = "region list", .sections = {std::move(section)}});
}

// --- region dump

void dump(Context& context, const Arguments& arguments) {
  const std::uint32_t region = number_argument("REGION", arguments.region);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const RegionRead read = read_present_region(adapter, region);
  if (arguments.file) write_file(*arguments.file, read.bytes);
  context.print({.command = "region dump",
                 .sections = {record_section("region", "Region",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"region", "Region", number_cell(region)},
                                              {"bytes", "Bytes", number_cell(read.bytes.size())},
                                              {"file", "File", file_cell(arguments.file)}}),
                              lines_section(arguments.file ? Bytes{} : Bytes(read.bytes))}});
}

// --- region show

// Whether the library takes the image as it is; it puts its default in the place of one that it does not.
bool is_region23_used(std::uint32_t adapter, std::uint32_t sli_mode, Bytes read) {
  std::uint8_t* image = nullptr;
  std::uint32_t size = 0;
  const std::uint32_t result = GetRegion23(adapter, &image, &size, sli_mode);
  const std::unique_ptr<std::uint8_t, decltype(&std::free)> owner(image, std::free);
  return result == DFC_OK && std::ranges::equal(Bytes(image, size), read);
}

Cell problem_cell(const std::string& problem) { return problem.empty() ? absent() : text_cell(problem); }

void show23(const Context& context, std::uint32_t adapter, const RegionRead& read) {
  const Region23Image image = parse_region23(read.bytes);
  const bool used = is_region23_used(adapter, read_driver(adapter).sli_mode, read.bytes);
  Section records = table_section(
      "records", "Records",
      {{"offset", "OFFSET"}, {"type", "TYPE"}, {"name", "NAME"}, {"length", "LENGTH"}, {"flags", "FLAGS"}, {"fields", "FIELDS"}});
  for (const Region23Record& record : image.records) {
    const std::string name = record_name(record.type());
    records.records.push_back({number_cell(record.offset), text_cell(fmt::format("0x{:02x}", record.type())),
                               name.empty() ? absent() : text_cell(name), number_cell(record.data_bytes()),
                               hex_bytes_cell(record.flags()), list_cell(decoded_fields(record))});
  }
  context.print({.command = "region show",
                 .sections = {record_section("image", "Image",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"region", "Region", number_cell(23)},
                                              {"bytes", "Bytes", number_cell(read.bytes.size())},
                                              {"signature", "Signature", text_cell(image.signature)},
                                              {"version", "Version", image.version ? number_cell(*image.version) : absent()},
                                              {"used", "Used as it is", flag_cell(used)},
                                              {"problem", "Problem", problem_cell(image.problem)}}),
                              std::move(records)}});
}

// Whether the library takes the image; it begins a blank one in the place of one that it does not.
bool is_region22_used(std::uint32_t adapter) {
  std::array<dfc_region22_entry, DFC_REGION22_ENTRIES> entries{};
  std::uint32_t count = 0;
  return DFC_GetRegion22(adapter, entries.data(), &count) == DFC_OK;
}

void show22(const Context& context, std::uint32_t adapter, const RegionRead& read) {
  const Region22Image image = parse_region22(read.bytes);
  Section entries =
      table_section("entries", "Entries that are not 0", {{"position", "POSITION"}, {"offset", "OFFSET"}, {"bytes", "BYTES"}});
  for (const Region22Entry& entry : image.entries) {
    if (is_blank(entry.bytes)) continue;
    entries.records.push_back({number_cell(entry.position), number_cell(entry.offset), hex_bytes_cell(entry.bytes)});
  }
  context.print({.command = "region show",
                 .sections = {record_section("image", "Image",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"region", "Region", number_cell(22)},
                                              {"bytes", "Bytes", number_cell(read.bytes.size())},
                                              {"signature", "Signature", text_cell(image.signature)},
                                              {"head", "Bytes 4-7", image.head.empty() ? absent() : hex_bytes_cell(image.head)},
                                              {"used", "Used as it is", flag_cell(is_region22_used(adapter))},
                                              {"problem", "Problem", problem_cell(image.problem)}}),
                              std::move(entries)}});
}

void show(Context& context, const Arguments& arguments) {
  const std::uint32_t region = region_argument(arguments.region, {22, 23});
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const RegionRead read = read_present_region(adapter, region);
  if (region == 22) return show22(context, adapter, read);
  show23(context, adapter, read);
}

}  // namespace

void add_region_commands(CommandLine& commands) {
  commands.group("region", "Configuration regions, which an adapter keeps in non-volatile memory",
                 {"vaskdfc region list 0", "vaskdfc region show 0 23", "vaskdfc region dump 0 23 --file region23.bin"});
  auto arguments = std::make_shared<Arguments>();
  commands.add_for_adapter("region list", "List the regions: which are there, and what the tool can do with them",
                           {"vaskdfc region list 0"}, arguments, list);
  commands
      .add_for_adapter("region show", "Show what a region holds, record by record",
                       {"vaskdfc region show 0 23", "vaskdfc region show 3 22"}, arguments, show)
      .add_option("REGION", arguments->region, "Number of the region")
      .type_name("22|23")
      .required();

  const Command dumped =
      commands.add_for_adapter("region dump", "Show the bytes of a region, or write them to a file",
                               {"vaskdfc region dump 0 23", "vaskdfc region dump 0 23 --file region23.bin"}, arguments, dump);
  dumped.add_option("REGION", arguments->region, "Number of the region").required();
  dumped.add_option("-f,--file", arguments->file, "Write the bytes to this file, whole or not at all").type_name("FILE");
  add_region_write_commands(commands);
}

}  // namespace vaskdfc::tool
