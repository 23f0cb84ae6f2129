// Commands that pass any command block to a logical unit: scsi raw, fcp raw.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>

#include "command_line.h"
#include "decode.h"
#include "fcp_response.h"
#include "raw_file.h"
#include "scsi_exchange.h"
#include "scsi_sense.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  UnitArguments unit;
  std::vector<std::string> cdb;
  std::optional<std::string> read;
  std::optional<std::string> write;
  std::optional<std::string> file;
  std::string extra = "0";
};

struct RawCommand {
  std::vector<std::uint8_t> cdb;
  std::vector<std::uint8_t> out;
  std::uint32_t room = 0;
};

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

RawCommand raw_command_of(const Arguments& arguments) {
  RawCommand raw{.cdb = cdb_of(arguments.cdb)};
  if (arguments.write) raw.out = read_file(*arguments.write, DFC_SCSI_DATA_BYTES);
  if (arguments.read) raw.room = number_argument("--read", *arguments.read, DFC_SCSI_DATA_BYTES);
  return raw;
}

std::uint32_t data_bytes_of(const RawCommand& raw) {
  return raw.out.empty() ? raw.room : static_cast<std::uint32_t>(raw.out.size());
}

std::uint8_t direction_of(const RawCommand& raw) {
  if (!raw.out.empty()) return FCP_WRITE_DATA;
  return raw.room != 0 ? FCP_READ_DATA : 0;
}

FcpCmndBlock block_of(const Lun& lun, const RawCommand& raw) {
  FcpCmndBlock block{};
  std::ranges::copy(lun, block.FcpLun);
  std::ranges::copy(raw.cdb, block.CDB);
  block.DataDirection = direction_of(raw);
  put_number(block.DataLength, data_bytes_of(raw));
  return block;
}

bool may_send_to(const Context& context, const UnitAddress& unit, const RawCommand& raw) {
  return context.may_change(
      fmt::format("send the command {:02x} to LUN {} of {}", fmt::join(raw.cdb, " "), lun_text(unit.lun), wwn_text(unit.target)));
}

std::vector<Field> received_fields(const RawCommand& raw, const Arguments& arguments, Bytes data) {
  return joined({{"command", "Command", hex_bytes_cell(raw.cdb)}, {"data_bytes", "Data bytes", number_cell(data.size())}},
                delivered_fields(arguments.file, data, "data", "Data"));
}

// --- scsi raw

Answer send_scsi(const UnitAddress& unit, const RawCommand& raw) {
  const FcpCmndBlock block = block_of(unit.lun, raw);
  return ask(
      unit, "SendScsiCmd", raw.room,
      [&](void* data, std::uint32_t* moved, void* sense, std::uint32_t* senses) {
        return SendScsiCmd(unit.adapter, &unit.target, &block, sizeof(block), data, moved, sense, senses);
      },
      raw.out);
}

void scsi_raw(Context& context, const Arguments& arguments) {
  const RawCommand command = raw_command_of(arguments);
  const UnitSession session(arguments.unit);
  const UnitAddress& unit = session.unit();
  if (!may_send_to(context, unit, command)) return;
  const Answer answer = send_scsi(unit, command);
  auto fields = joined(received_fields(command, arguments, answer.data), sense_fields(answer.sense));
  context.print({.command = "scsi raw", .sections = {unit_section(unit), record_section("answer", "Answer", std::move(fields))}});
  completed(unit, answer);
}

// --- fcp raw: the response as it came, instead of the sense that the driver took out of it

constexpr const char* kFcpOperation = "SendFcpCmdEx";
constexpr std::uint32_t kResponseRoom = 160;  // as much as the library receives

Answer send_fcp(const UnitAddress& unit, const RawCommand& raw, std::uint32_t extra, std::vector<std::uint8_t>& response) {
  const FcpCmndBlock block = block_of(unit.lun, raw);
  response.resize(kResponseRoom);
  auto response_bytes = kResponseRoom;
  Answer answer = ask(
      unit, kFcpOperation, raw.room,
      [&](void* data, std::uint32_t* moved, void*, std::uint32_t*) {
        return SendFcpCmdEx(unit.adapter, &unit.target, &block, sizeof(block), data, moved, response.data(), &response_bytes,
                            extra);
      },
      raw.out);
  response.resize(std::min(response_bytes, kResponseRoom));
  const Bytes sense = sense_in(response);
  answer.sense.assign(sense.begin(), sense.end());
  return answer;
}

void fcp_raw(Context& context, const Arguments& arguments) {
  const RawCommand command = raw_command_of(arguments);
  const std::uint32_t extra = number_argument("--extra", arguments.extra);
  const UnitSession session(arguments.unit);
  const UnitAddress& unit = session.unit();
  if (!may_send_to(context, unit, command)) return;
  std::vector<std::uint8_t> response;
  const Answer answer = send_fcp(unit, command, extra, response);
  auto fields =
      joined(joined(received_fields(command, arguments, answer.data), response_fields(response)), sense_fields(answer.sense));
  context.print({.command = "fcp raw", .sections = {unit_section(unit), record_section("answer", "Answer", std::move(fields))}});
  completed(unit, answer);
  if (const std::string refusal = refusal_text(response); !refusal.empty()) {
    throw operation_failure(fmt::format("LUN {} of {} {}", lun_text(unit.lun), wwn_text(unit.target), refusal), unit.adapter,
                            kFcpOperation, Results::kHba, HBA_STATUS_OK);
  }
}

void add_raw_arguments(const Command& command, Arguments& arguments) {
  add_unit_arguments(command, arguments.unit).required();
  command.add_option("CDB", arguments.cdb, "The command's bytes, two hexadecimal digits each").required();
  const auto read = command.add_option("--read", arguments.read, "Receive at most so many bytes").type_name("BYTES");
  command.add_option("--write", arguments.write, "Send the bytes of this file").type_name("FILE").excludes(read);
  command.add_option("-f,--file", arguments.file, "Write the bytes received to this file").type_name("FILE").needs(read);
}

}  // namespace

void add_scsi_raw_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  add_raw_arguments(commands.add("scsi raw", "Send any command",
                                 {"vaskdfc scsi raw 0 50:5a:41:00:0c:00:20:01 0 00 00 00 00 00 00 --yes",
                                  "vaskdfc scsi raw 0 50:5a:41:00:0c:00:20:01 0 12 00 00 00 24 00 --read 36"},
                                 arguments, scsi_raw),
                    *arguments);

  const std::vector<std::string> examples{"vaskdfc fcp raw 0 50:5a:41:00:0c:00:20:01 0 12 00 00 00 24 00 --read 36"};
  commands.group("fcp", "Commands to logical units, with the FCP response as it comes back", examples);
  const Command sent = commands.add("fcp raw", "Send any command and show the FCP response", examples, arguments, fcp_raw);
  add_raw_arguments(sent, *arguments);
  sent.add_option("--extra", arguments->extra, "A number that the driver gets besides; 0 unless it is given").type_name("N");
}

}  // namespace vaskdfc::tool
