// Commands about adapter memory and control registers: mem read, mem write, reg read, reg write.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "change_report.h"
#include "command_line.h"
#include "decode.h"
#include "driver_record.h"
#include "memory_access.h"
#include "raw_file.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::string address;
  std::string count = "256";
  std::vector<std::string> bytes;
  std::vector<std::string> offsets;
  std::string value;
  std::optional<std::string> file;
};

// --- mem

void read_mem(Context& context, const Arguments& arguments) {
  const std::uint32_t address = number_argument("ADDRESS", arguments.address);
  const std::uint32_t count = number_argument("COUNT", arguments.count, kMostMemoryBytes);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto bytes = read_memory(adapter, address, count);
  if (arguments.file) write_file(*arguments.file, bytes);
  context.print({.command = "mem read",
                 .sections = {record_section("memory", "Memory",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"address", "Address", hex_cell(address)},
                                              {"bytes", "Bytes", number_cell(bytes.size())},
                                              {"file", "File", file_cell(arguments.file)}}),
                              lines_section(arguments.file ? Bytes{} : Bytes(bytes), address)}});
}

void write_mem(Context& context, const Arguments& arguments) {
  const std::uint32_t address = number_argument("ADDRESS", arguments.address);
  const auto wanted = bytes_to_write(arguments.bytes, arguments.file, DFC_ACCESS_BYTES);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto count = static_cast<std::uint32_t>(wanted.size());
  const Setting setting{.command = "mem write",
                        .adapter = adapter,
                        .intent = fmt::format("write {} bytes at 0x{:08x} into the memory", count, address),
                        .place = "the memory",
                        .operation = "WriteMem",
                        .results = Results::kAccess,
                        .read = [=] { return line_fields(read_memory(adapter, address, count), address); },
                        .write = [=] { return WriteMem(adapter, wanted.data(), address, count); }};
  change(context, setting, line_fields(wanted, address));
}

// --- reg

struct Register {
  std::uint32_t offset;
  const char* name;
  const char* meaning;
};

// Those of this driver's adapters.
constexpr std::array kRegisters{
    Register{0x00, "identity", "PCI device and vendor"}, Register{0x04, "status", "1 firmware is up, 2 link is up, 4 loopback"},
    Register{0x08, "control", "the low six bits can be written"}, Register{0x0C, "scratch", "for any use"}};

std::uint32_t read_register(std::uint32_t adapter, std::uint32_t offset) {
  std::uint32_t value = 0;
  watch_driver_calls();
  const std::uint32_t result = ReadCtlReg(adapter, &value, offset);
  if (result == DFC_OK) return value;
  throw operation_failure(fmt::format("the register at 0x{:02x} cannot be read", offset), adapter, "ReadCtlReg", Results::kAccess,
                          result);
}

std::vector<std::uint32_t> offsets_argument(const std::vector<std::string>& spellings) {
  std::vector<std::uint32_t> offsets;
  for (const std::string& spelling : spellings) offsets.push_back(number_argument("OFFSET", spelling));
  if (!offsets.empty()) return offsets;
  for (const Register& known : kRegisters) offsets.push_back(known.offset);
  return offsets;
}

Record register_record(std::uint32_t adapter, std::uint32_t offset) {
  const auto* const known = std::ranges::find(kRegisters, offset, &Register::offset);
  const bool is_known = known != kRegisters.end();
  return {text_cell(fmt::format("0x{:02x}", offset)), is_known ? text_cell(known->name) : absent(),
          hex_cell(read_register(adapter, offset)), is_known ? text_cell(known->meaning) : absent()};
}

void read_regs(Context& context, const Arguments& arguments) {
  const auto offsets = offsets_argument(arguments.offsets);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  Section section =
      table_section("registers", "Registers", {{"offset", "OFFSET"}, {"name", "NAME"}, {"value", "VALUE"}, {"meaning", "MEANING"}});
  for (const std::uint32_t offset : offsets) section.records.push_back(register_record(adapter, offset));
  context.print({.command = "reg read", .sections = {std::move(section)}});
}

std::vector<Field> register_fields(std::uint32_t offset, std::uint32_t value) {
  return {{fmt::format("register_{:02x}", offset), fmt::format("Register 0x{:02x}", offset), hex_cell(value)}};
}

void write_reg(Context& context, const Arguments& arguments) {
  const std::uint32_t offset = number_argument("OFFSET", arguments.address);
  const std::uint32_t wanted = number_argument("VALUE", arguments.value);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const Setting setting{.command = "reg write",
                        .adapter = adapter,
                        .intent = fmt::format("write 0x{:08x} into the register at 0x{:02x}", wanted, offset),
                        .place = "the register",
                        .operation = "WriteCtlReg",
                        .results = Results::kAccess,
                        .read = [=] { return register_fields(offset, read_register(adapter, offset)); },
                        .write = [=] { return WriteCtlReg(adapter, &wanted, offset); }};
  change(context, setting, register_fields(offset, wanted));
}

void add_mem_commands(CommandLine& commands) {
  commands.group("mem", "Memory of an adapter, in SLI mode 3 or below",
                 {"vaskdfc mem read 3 0x1000 64", "vaskdfc mem write 3 0x1000 de ad be ef"});
  auto arguments = std::make_shared<Arguments>();
  const Command read = commands.add_for_adapter("mem read", "Show what the memory holds, or write it to a file",
                                                {"vaskdfc mem read 3 0x1000 64", "vaskdfc mem read 3 0 262144 --file memory.bin"},
                                                arguments, read_mem);
  read.add_option("ADDRESS", arguments->address, "Where to begin").required();
  read.add_option("COUNT", arguments->count, "How many bytes; 256 unless it is given");
  read.add_option("-f,--file", arguments->file, "Write the bytes to this file, whole or not at all").type_name("FILE");
  const Command write = commands.add_for_adapter(
      "mem write", "Write bytes into the memory; nothing protects the adapter from them",
      {"vaskdfc mem write 3 0x1000 de ad be ef", "vaskdfc mem write 3 0x1000 --file patch.bin --dry-run"}, arguments, write_mem);
  write.add_option("ADDRESS", arguments->address, "Where to begin").required();
  write.add_option("BYTES", arguments->bytes, "Pairs of hexadecimal digits");
  write.add_option("-f,--file", arguments->file, "Take the bytes from this file").type_name("FILE");
}

}  // namespace

void add_memory_commands(CommandLine& commands) {
  add_mem_commands(commands);
  commands.group("reg", "Control registers of an adapter, in SLI mode 3 or below",
                 {"vaskdfc reg read 3", "vaskdfc reg write 3 0x0c 0x1234"});
  auto arguments = std::make_shared<Arguments>();
  commands
      .add_for_adapter("reg read", "Show control registers", {"vaskdfc reg read 3", "vaskdfc reg read 3 0x04 0x08"}, arguments,
                       read_regs)
      .add_option("OFFSET", arguments->offsets, "Offsets of registers; all that the tool knows unless they are given");
  const Command write = commands.add_for_adapter("reg write", "Write a control register", {"vaskdfc reg write 3 0x0c 0x1234 --yes"},
                                                 arguments, write_reg);
  write.add_option("OFFSET", arguments->address, "Offset of the register").required();
  write.add_option("VALUE", arguments->value, "Its new value").required();
}

}  // namespace vaskdfc::tool
