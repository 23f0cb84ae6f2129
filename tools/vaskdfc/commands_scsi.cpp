// Commands that ask a logical unit: scsi inquiry, scsi capacity, scsi luns.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>

#include "command_line.h"
#include "decode.h"
#include "scsi_exchange.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  UnitArguments unit;
  std::optional<std::string> page;
};

// --- scsi inquiry

std::vector<Field> page_fields(std::uint8_t page, Bytes bytes) {
  std::vector<Field> fields{{"page", "Page", text_cell(fmt::format("0x{:02x}", page))},
                            {"page_name", "Page name", text_cell(page_name(page))}};
  fields.push_back({"supported_pages", "Supported pages", page == kSupportedPages ? list_cell(supported_pages(bytes)) : absent()});
  fields.push_back({"serial_number", "Serial number", page == kUnitSerialNumber ? text_cell(serial_number(bytes)) : absent()});
  fields.push_back({"bytes", "Bytes", hex_bytes_cell(bytes)});
  return fields;
}

Section designators_section(Bytes page) {
  Section section = table_section("designators", "Designators", {{"type", "TYPE"}, {"of", "OF"}, {"identifier", "IDENTIFIER"}});
  for (const Designator& designator : parse_designators(page)) {
    section.records.push_back({text_cell(designator.kind), text_cell(designator.association), text_cell(designator.text)});
  }
  return section;
}

void inquire(Context& context, const Arguments& arguments) {
  const auto number = arguments.page ? std::optional(number_argument("--page", *arguments.page, UINT8_MAX)) : std::nullopt;
  const UnitSession session(arguments.unit);
  if (!number) {
    const Answer answer = completed(session.unit(), inquiry(session.unit(), std::nullopt));
    return context.print(
        {.command = "scsi inquiry",
         .sections = {unit_section(session.unit()), record_section("inquiry", "INQUIRY", inquiry_fields(answer.data))}});
  }
  const auto page = static_cast<std::uint8_t>(*number);
  const Answer answer = completed(session.unit(), inquiry(session.unit(), page));
  context.print(
      {.command = "scsi inquiry",
       .sections = {unit_section(session.unit()), record_section("page", "Vital product data", page_fields(page, answer.data)),
                    designators_section(page == kDeviceIdentification ? Bytes(answer.data) : Bytes{})}});
}

// --- scsi capacity

void show_capacity(Context& context, const Arguments& arguments) {
  const UnitSession session(arguments.unit);
  const Capacity capacity = read_capacity(session.unit());
  context.print({.command = "scsi capacity",
                 .sections = {unit_section(session.unit()),
                              record_section("capacity", "Capacity",
                                             {{"blocks", "Blocks", number_cell(std::uint64_t{capacity.last_block} + 1)},
                                              {"block_bytes", "Block size", number_cell(capacity.block_bytes, "bytes")},
                                              {"bytes", "Size", number_cell(capacity.bytes(), "bytes")}})}});
}

// --- scsi luns: the library asks LUN 0

Answer report_luns(const UnitAddress& unit, std::uint32_t room) {
  return ask(unit, "SendReportLUNs", room, [&](void* data, std::uint32_t* bytes, void* sense, std::uint32_t* senses) {
    return SendReportLUNs(unit.adapter, &unit.target, data, bytes, sense, senses);
  });
}

// A target may have more units than there was room for.
void list_luns(Context& context, const Arguments& arguments) {
  constexpr std::uint32_t kFirstRoom = 2048;
  const UnitSession session(arguments.unit);
  LunList list = parse_luns(completed(session.unit(), report_luns(session.unit(), kFirstRoom)).data);
  if (list.bytes > kFirstRoom) {
    const auto room = static_cast<std::uint32_t>(std::min<std::size_t>(list.bytes, DFC_SCSI_DATA_BYTES));
    list = parse_luns(completed(session.unit(), report_luns(session.unit(), room)).data);
  }
  Section section = table_section("luns", "LUNs", {{"lun", "LUN"}, {"bytes", "BYTES"}});
  for (const Lun& lun : list.luns) section.records.push_back({text_cell(lun_text(lun)), hex_bytes_cell(lun)});
  context.print({.command = "scsi luns", .sections = {unit_section(session.unit()), std::move(section)}});
}

}  // namespace

void add_scsi_commands(CommandLine& commands) {
  commands.group("scsi", "SCSI commands to logical units behind remote ports",
                 {"vaskdfc scsi inquiry 0 50:5a:41:00:0c:00:20:01 0", "vaskdfc scsi capacity 0 50:5a:41:00:0c:00:20:01 0"});
  auto arguments = std::make_shared<Arguments>();
  const auto command = [&](const char* name, const char* summary, const std::vector<std::string>& examples, auto action,
                           bool needs_lun = true) {
    const Command added = commands.add(name, summary, examples, arguments, action);
    add_unit_arguments(added, arguments->unit).required(needs_lun);
    return added;
  };
  command("scsi inquiry", "Ask a unit what it is", {"vaskdfc scsi inquiry 0 50:5a:41:00:0c:00:20:01 0 --page 0x83"}, inquire)
      .add_option("--page", arguments->page, "A page of the vital product data instead of the standard data")
      .type_name("PAGE");
  command("scsi capacity", "Ask a unit for its size", {"vaskdfc scsi capacity 0 50:5a:41:00:0c:00:20:01 0"}, show_capacity);
  command("scsi luns", "Ask a target for its units, through LUN 0", {"vaskdfc scsi luns 0 50:5a:41:00:0c:00:20:01"}, list_luns,
          false);
  add_scsi_raw_commands(commands);
  add_scsi_transfer_commands(commands);
}

}  // namespace vaskdfc::tool
