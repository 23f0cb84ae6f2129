// Commands about PCI configuration space: pci dump, pci read, pci write.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "change_report.h"
#include "command_line.h"
#include "decode.h"
#include "driver_record.h"
#include "pci_space.h"
#include "raw_file.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

constexpr std::uint32_t kWordBytes = 4;

struct Arguments {
  std::string adapter;
  std::string offset;
  std::string count = "64";
  std::vector<std::string> words;
  std::optional<std::string> file;
};

std::vector<std::uint8_t> read_space(std::uint32_t adapter, std::uint32_t offset, std::uint32_t count) {
  std::vector<std::uint8_t> bytes(count);
  watch_driver_calls();
  const std::uint32_t result = DFC_ReadPciCfg(adapter, bytes.data(), offset, count);
  if (result == DFC_OK) return bytes;
  throw operation_failure("the PCI configuration space cannot be read", adapter, "DFC_ReadPciCfg", Results::kDfc, result);
}

// The space consists of words.
std::uint32_t aligned_argument(const std::string& name, const std::string& spelling) {
  const std::uint32_t number = number_argument(name, spelling, DFC_ACCESS_BYTES);
  if (number % kWordBytes == 0) return number;
  throw usage_failure(fmt::format("{}: {} is not a multiple of {}", name, number, kWordBytes));
}

// Most of the space is zeros: lines of nothing else are left out.
Section lines_that_are_not_zero(Bytes space) {
  Section section = lines_section(space);
  section.title = "Lines that are not 0";
  std::erase_if(section.records, [](const Record& line) { return line[1].text.find_first_not_of("0 ") == std::string::npos; });
  return section;
}

void dump(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto space = read_space(adapter, 0, DFC_ACCESS_BYTES);
  if (arguments.file) write_file(*arguments.file, space);
  context.print({.command = "pci dump",
                 .sections = {record_section("header", "Header",
                                             joined({{"adapter", "Adapter", number_cell(adapter)},
                                                     {"file", "File", file_cell(arguments.file)}},
                                                    pci_header_fields(space))),
                              pci_capabilities_section(space), lines_that_are_not_zero(arguments.file ? Bytes{} : Bytes(space))}});
}

void read(Context& context, const Arguments& arguments) {
  const std::uint32_t offset = aligned_argument("OFFSET", arguments.offset);
  const std::uint32_t count = aligned_argument("COUNT", arguments.count);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto bytes = read_space(adapter, offset, count);
  if (arguments.file) write_file(*arguments.file, bytes);
  context.print({.command = "pci read",
                 .sections = {record_section("space", "PCI configuration space",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"offset", "Offset", text_cell(fmt::format("0x{:03x}", offset))},
                                              {"bytes", "Bytes", number_cell(bytes.size())},
                                              {"file", "File", file_cell(arguments.file)}}),
                              lines_section(arguments.file ? Bytes{} : Bytes(bytes), offset)}});
}

std::vector<Field> word_fields(Bytes bytes, std::uint32_t offset) {
  std::vector<Field> fields;
  for (std::size_t at = 0; at < bytes.size(); at += kWordBytes) {
    fields.push_back({fmt::format("word_{:03x}", offset + at), fmt::format("Word at 0x{:03x}", offset + at),
                      hex_cell(word_at(bytes, at).value_or(0))});
  }
  return fields;
}

// The words as they travel.
std::vector<std::uint8_t> words_argument(const std::vector<std::string>& spellings) {
  std::vector<std::uint8_t> bytes;
  for (const std::string& spelling : spellings) {
    const std::uint32_t word = number_argument("WORD", spelling);
    for (std::uint32_t shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
  }
  return bytes;
}

void write(Context& context, const Arguments& arguments) {
  const std::uint32_t offset = aligned_argument("OFFSET", arguments.offset);
  const auto wanted = words_argument(arguments.words);
  if (offset + wanted.size() > DFC_ACCESS_BYTES) throw usage_failure("the words leave the PCI configuration space");
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto count = static_cast<std::uint32_t>(wanted.size());
  const Setting setting{.command = "pci write",
                        .adapter = adapter,
                        .intent = fmt::format("write {} bytes at 0x{:03x} into the PCI configuration space", count, offset),
                        .place = "the PCI configuration space",
                        .operation = "WritePciCfg",
                        .results = Results::kAccess,
                        .read = [=] { return word_fields(read_space(adapter, offset, count), offset); },
                        .write =
                            [=] {
                              auto sent = wanted;  // the library may turn it over in place
                              return WritePciCfg(adapter, sent.data(), offset, count);
                            }};
  change(context, setting, word_fields(wanted, offset));
}

}  // namespace

void add_pci_commands(CommandLine& commands) {
  commands.group("pci", "PCI configuration space of an adapter",
                 {"vaskdfc pci dump 0", "vaskdfc pci read 0 0x40 16", "vaskdfc pci write 0 0x3c 0x0000010b"});
  auto arguments = std::make_shared<Arguments>();
  const std::string file_help = "Write the bytes to this file, whole or not at all";
  commands
      .add_for_adapter("pci dump", "Show header, capabilities and bytes",
                       {"vaskdfc pci dump 0", "vaskdfc pci dump 0 --file pci.bin"}, arguments, dump)
      .add_option("-f,--file", arguments->file, file_help)
      .type_name("FILE");
  const Command reading =
      commands.add_for_adapter("pci read", "Show bytes of the space", {"vaskdfc pci read 0 0x40 16"}, arguments, read);
  reading.add_option("OFFSET", arguments->offset, "Where to begin, a multiple of 4").required();
  reading.add_option("COUNT", arguments->count, "How many bytes, a multiple of 4; 64 unless it is given");
  reading.add_option("-f,--file", arguments->file, file_help).type_name("FILE");
  const Command writing =
      commands.add_for_adapter("pci write", "Write words into the space; nothing protects the adapter from them",
                               {"vaskdfc pci write 0 0x3c 0x0000010b --dry-run"}, arguments, write);
  writing.add_option("OFFSET", arguments->offset, "Where to begin, a multiple of 4").required();
  writing.add_option("WORD", arguments->words, "Words of 32 bits").required();
}

}  // namespace vaskdfc::tool
