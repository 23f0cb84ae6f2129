// Commands that ask a logical unit: scsi inquiry, scsi capacity, scsi luns, scsi raw.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>

#include "command_line.h"
#include "decode.h"
#include "raw_file.h"
#include "scsi_exchange.h"
#include "scsi_sense.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  UnitArguments unit;
  std::optional<std::string> page;
  std::vector<std::string> cdb;
  std::optional<std::string> read;
  std::optional<std::string> write;
  std::optional<std::string> file;
};

constexpr std::uint32_t kMostInquiryBytes = 255;  // of an allocation length of 8 bits

// --- scsi inquiry

Answer inquiry(const UnitAddress& unit, std::optional<std::uint8_t> page) {
  return ask(unit, "SendScsiInquiry", kMostInquiryBytes, [&](void* data, std::uint32_t* bytes, void* sense, std::uint32_t* senses) {
    return SendScsiInquiry(unit.adapter, &unit.target, lun_in_memory(unit.lun), page ? 1 : 0, page.value_or(0), data, bytes, sense,
                           senses);
  });
}

std::vector<Field> page_fields(std::uint8_t page, Bytes bytes) {
  std::vector<Field> fields{{"page", "Page", text_cell(fmt::format("0x{:02x}", page))},
                            {"page_name", "Page name", text_cell(page_name(page))}};
  fields.push_back({"supported_pages", "Supported pages", page == 0x00 ? list_cell(supported_pages(bytes)) : absent()});
  fields.push_back({"serial_number", "Serial number", page == 0x80 ? text_cell(serial_number(bytes)) : absent()});
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
  constexpr std::uint8_t kDeviceIdentification = 0x83;
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

// --- scsi raw

std::vector<std::uint8_t> cdb_of(const std::vector<std::string>& spellings) {
  constexpr std::size_t kMostBytes = sizeof(FcpCmndBlock::CDB);
  if (spellings.size() > kMostBytes) throw usage_failure(fmt::format("CDB: more than {} bytes", kMostBytes));
  std::vector<std::uint8_t> cdb;
  for (const std::string& spelling : spellings) {
    const auto byte = parse_bytes(spelling, 1);
    if (!byte) throw usage_failure(fmt::format("CDB: \"{}\" is no byte", spelling), "two hexadecimal digits each, as in 12 00");
    cdb.push_back(byte->front());
  }
  return cdb;
}

FcpCmndBlock command_of(const Lun& lun, Bytes cdb, std::uint8_t direction, std::uint32_t data_bytes) {
  FcpCmndBlock command{};
  std::ranges::copy(lun, command.FcpLun);
  std::ranges::copy(cdb, command.CDB);
  command.DataDirection = direction;
  put_number(command.DataLength, data_bytes);
  return command;
}

struct RawCommand {
  std::vector<std::uint8_t> cdb;
  std::vector<std::uint8_t> out;
  std::uint32_t room = 0;
};

RawCommand raw_command_of(const Arguments& arguments) {
  RawCommand raw{.cdb = cdb_of(arguments.cdb)};
  if (arguments.write) raw.out = read_file(*arguments.write, DFC_SCSI_DATA_BYTES);
  if (arguments.read) raw.room = number_argument("--read", *arguments.read, DFC_SCSI_DATA_BYTES);
  return raw;
}

Answer send_raw(const UnitAddress& unit, const RawCommand& raw) {
  const bool writes = !raw.out.empty();
  const std::uint8_t direction = writes ? FCP_WRITE_DATA : raw.room != 0 ? FCP_READ_DATA : 0;
  const auto bytes = writes ? static_cast<std::uint32_t>(raw.out.size()) : raw.room;
  FcpCmndBlock command = command_of(unit.lun, raw.cdb, direction, bytes);
  return ask(
      unit, "SendScsiCmd", bytes,
      [&](void* data, std::uint32_t* moved, void* sense, std::uint32_t* senses) {
        return SendScsiCmd(unit.adapter, &unit.target, &command, sizeof(command), data, moved, sense, senses);
      },
      raw.out);
}

void raw(Context& context, const Arguments& arguments) {
  const RawCommand command = raw_command_of(arguments);
  const UnitSession session(arguments.unit);
  const UnitAddress& unit = session.unit();
  const std::string what = fmt::format("send the command {:02x} to LUN {} of {}", fmt::join(command.cdb, " "), lun_text(unit.lun),
                                       wwn_text(unit.target));
  if (!context.may_change(what)) return;
  const Answer answer = send_raw(unit, command);
  const bool reads = command.out.empty();
  if (reads && arguments.file) write_file(*arguments.file, answer.data);
  std::vector<Field> fields{{"command", "Command", hex_bytes_cell(command.cdb)},
                            {"data_bytes", "Data bytes", number_cell(answer.data.size())},
                            {"file", "File", reads && arguments.file ? text_cell(text_of(*arguments.file)) : absent()},
                            {"data", "Data", reads && !arguments.file ? hex_bytes_cell(answer.data) : absent()}};
  for (Field& field : sense_fields(answer.sense)) fields.push_back(std::move(field));
  context.print({.command = "scsi raw", .sections = {unit_section(unit), record_section("answer", "Answer", std::move(fields))}});
  completed(unit, answer);
}

}  // namespace

void add_scsi_commands(CommandLine& commands) {
  commands.group("scsi", "SCSI commands to logical units behind remote ports",
                 {"vaskdfc scsi inquiry 0 50:5a:41:00:0c:00:20:01 0", "vaskdfc scsi capacity 0 50:5a:41:00:0c:00:20:01 0"});
  auto arguments = std::make_shared<Arguments>();
  const auto command = [&](const char* name, const char* summary, const std::vector<std::string>& examples, auto action,
                           bool needs_lun = true) {
    const Command added =
        commands.add(name, summary, examples, [arguments, action](Context& context) { action(context, *arguments); });
    add_unit_arguments(added, arguments->unit).required(needs_lun);
    return added;
  };
  command("scsi inquiry", "Ask a unit what it is", {"vaskdfc scsi inquiry 0 50:5a:41:00:0c:00:20:01 0 --page 0x83"}, inquire)
      .add_option("--page", arguments->page, "A page of the vital product data instead of the standard data")
      .type_name("PAGE");
  command("scsi capacity", "Ask a unit for its size", {"vaskdfc scsi capacity 0 50:5a:41:00:0c:00:20:01 0"}, show_capacity);
  command("scsi luns", "Ask a target for its units, through LUN 0", {"vaskdfc scsi luns 0 50:5a:41:00:0c:00:20:01"}, list_luns,
          false);

  const Command sent = command("scsi raw", "Send any command",
                               {"vaskdfc scsi raw 0 50:5a:41:00:0c:00:20:01 0 00 00 00 00 00 00 --yes",
                                "vaskdfc scsi raw 0 50:5a:41:00:0c:00:20:01 0 12 00 00 00 24 00 --read 36"},
                               raw);
  sent.add_option("CDB", arguments->cdb, "The command's bytes, two hexadecimal digits each").required();
  const auto read = sent.add_option("--read", arguments->read, "Receive at most so many bytes").type_name("BYTES");
  sent.add_option("--write", arguments->write, "Send the bytes of this file").type_name("FILE").excludes(read);
  sent.add_option("-f,--file", arguments->file, "Write the bytes received to this file").type_name("FILE").needs(read);
  add_scsi_transfer_commands(commands);
}

}  // namespace vaskdfc::tool
