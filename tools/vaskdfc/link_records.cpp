#include "link_records.h"

#include <fmt/format.h>
#include <vaskdfc/link.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "code_names.h"
#include "decode.h"
#include "driver_record.h"

namespace vaskdfc::tool {
namespace {

std::uint32_t word_of(Bytes bytes) { return static_cast<std::uint32_t>(little_endian(bytes)); }

using Name = std::pair<std::uint32_t, const char*>;

Cell name_cell(std::span<const Name> names, std::uint32_t value) {
  return text_cell(name_in(names, value, fmt::format("{}", value)));
}

// The driver is told modes 1 and 4, which the library calls 1 and 2.
constexpr std::array kLoopbackModes{Name{0, "none"}, Name{1, "internal"}, Name{4, "external"}};
constexpr std::array kTopologies{Name{0, "unknown"}, Name{2, "fabric"}, Name{4, "loopback"}};
constexpr std::array kProtocols{Name{0, "FC"}, Name{1, "FCoE"}};

constexpr std::array kLink{
    RecordField{"state", "State", 0, 4, [](Bytes bytes) { return port_state_cell(word_of(bytes)); }},
    RecordField{"topology", "Topology", 4, 4, [](Bytes bytes) { return name_cell(kTopologies, word_of(bytes)); }},
    RecordField{"fc_id", "FC ID", 8, 4, fc_id_in},
    RecordField{"speed", "Speed", 156, 4, [](Bytes bytes) { return speed_cell(word_of(bytes)); }},
    RecordField{"rate", "Rate", 12, 4, [](Bytes bytes) { return number_cell(little_endian(bytes), "Mb/s"); }},
    RecordField{"supported_speeds", "Supported speeds", 152, 4, [](Bytes bytes) { return speeds_cell(word_of(bytes)); }},
    RecordField{"protocol", "Protocol", 21, 1, [](Bytes bytes) { return name_cell(kProtocols, word_of(bytes)); }},
    RecordField{"loopback", "Loopback", 20, 1, [](Bytes bytes) { return name_cell(kLoopbackModes, word_of(bytes)); }},
    RecordField{"configured_topology", "Configured topology", 22, 1, number_in},
    RecordField{"configured_speed", "Configured speed", 23, 1, number_in},
    RecordField{"port_wwn", "Port WWN", 24, 8, wwn_in},
    RecordField{"node_wwn", "Node WWN", 32, 8, wwn_in},
    RecordField{"fabric_wwn", "Fabric name", 40, 8, wwn_in},
    RecordField{"fabric", "Fabric", 48, 32, text_in},
    RecordField{"max_frame_size", "Max frame size", 160, 4, [](Bytes bytes) { return number_cell(little_endian(bytes), "bytes"); }},
    RecordField{"discovered_ports", "Discovered ports", 164, 4, number_in},
    RecordField{"generation", "Generation", 16, 4, number_in},
    RecordField{"bytes_80", "Bytes 80-151", 80, 72, bytes_in}};

constexpr std::uint64_t kServesFcp = 0x1;
constexpr std::uint64_t kHasUnits = 0x2;

constexpr std::array kNode{
    RecordField{"position", "Position", 0, 2, number_in},
    RecordField{"fc_id", "FC ID", 4, 4, fc_id_in},
    RecordField{"port_wwn", "Port WWN", 8, 8, wwn_in},
    RecordField{"node_wwn", "Node WWN", 16, 8, wwn_in},
    RecordField{"fcp", "FCP", 2, 2, [](Bytes bytes) { return flag_cell((little_endian(bytes) & kServesFcp) != 0); }},
    RecordField{"has_units", "Has units", 2, 2, [](Bytes bytes) { return flag_cell((little_endian(bytes) & kHasUnits) != 0); }},
    RecordField{"units", "Units", 24, 4, number_in},
    RecordField{"flags", "Flags", 2, 2, hex_in}};

struct IoCounter {
  const char* key;
  const char* title;
  const char* unit;
  std::size_t offset;
  std::size_t bytes;
};

constexpr std::array kIoCounters{IoCounter{"scsi_commands", "SCSI commands", "commands", 0, 4},
                                 IoCounter{"scsi_commands_with_sense", "SCSI commands with sense", "commands", 4, 4},
                                 IoCounter{"bytes_read", "Bytes read", "bytes", 8, 8},
                                 IoCounter{"bytes_written", "Bytes written", "bytes", 16, 8},
                                 IoCounter{"loopback_tests", "Loopback tests", "tests", 24, 4},
                                 IoCounter{"loopback_tests_failed", "Loopback tests that failed", "tests", 28, 4},
                                 IoCounter{"frames_sent", "Frames sent", "frames", 32, 8},
                                 IoCounter{"frames_received", "Frames received", "frames", 40, 8},
                                 IoCounter{"words_sent", "Words sent", "words", 48, 8},
                                 IoCounter{"words_received", "Words received", "words", 56, 8},
                                 IoCounter{"link_failures", "Link failures", "events", 64, 4},
                                 IoCounter{"losses_of_sync", "Losses of sync", "events", 68, 4},
                                 IoCounter{"losses_of_signal", "Losses of signal", "events", 72, 4},
                                 IoCounter{"protocol_errors", "Protocol errors", "errors", 76, 4},
                                 IoCounter{"invalid_words", "Invalid words", "words", 80, 4},
                                 IoCounter{"invalid_crcs", "Invalid CRCs", "frames", 84, 4},
                                 IoCounter{"seconds", "Seconds", "s", 88, 4},
                                 IoCounter{"generation", "Generation", "changes", 92, 4}};

// Absent where the record ends before, and also a counter that the adapter does not have, whose bits are all set.
Cell counter_cell(Bytes bytes, const IoCounter& counter) {
  if (bytes.size() < counter.bytes) return absent();
  if (std::ranges::count(bytes, 0xFF) == static_cast<std::ptrdiff_t>(counter.bytes)) return {nullptr, "not supported"};
  return number_in(bytes);
}

constexpr std::size_t kSelectorsOffset = 612;

constexpr std::array kVpd{
    RecordField{"pci_vendor", "PCI vendor", 596, 4, hex_in}, RecordField{"pci_device", "PCI device", 600, 4, hex_in},
    RecordField{"sli_mode", "SLI mode", 604, 4, number_in}, RecordField{"driver_board", "Driver board", 608, 4, number_in},
    RecordField{"selectors", "Selectors", kSelectorsOffset, 4, number_in}};

struct VpdText {
  std::size_t offset;
  std::size_t bytes;
  std::array<const char*, 3> what;  // by selector
};

constexpr std::array kVpdTexts{VpdText{4, 256, {"product", "driver's vendor", "firmware version"}},
                               VpdText{260, 80, {"part number", "engineering change", "option ROM version"}},
                               VpdText{340, 256, {"serial number", "manufacture identifier", "hardware version"}}};

}  // namespace

std::vector<Field> link_fields(Bytes record) { return fields_of(record, kLink); }

std::vector<Field> node_fields(Bytes record) { return fields_of(record, kNode); }

Section io_section(Bytes record) {
  Section section = table_section("counters", "Counters", {{"counter", "COUNTER"}, {"value", "VALUE"}, {"unit", "UNIT"}});
  for (const IoCounter& counter : kIoCounters) {
    section.records.push_back({{counter.key, counter.title},
                               counter_cell(part(record, counter.offset, counter.bytes), counter),
                               text_cell(counter.unit)});
  }
  return section;
}

std::vector<Field> vpd_fields(Bytes record) { return fields_of(record, kVpd); }

Section vpd_texts_section() {
  return table_section("texts", "Texts", {{"selector", "SELECTOR"}, {"offset", "OFFSET"}, {"what", "WHAT"}, {"text", "TEXT"}});
}

void add_vpd_texts(Section& section, Bytes record) {
  const std::optional<std::uint32_t> selector = word_at(record, 0);
  for (const VpdText& text : kVpdTexts) {
    const bool known = selector && *selector < text.what.size();
    section.records.push_back({selector ? number_cell(*selector) : absent(), number_cell(text.offset),
                               known ? text_cell(text.what[*selector]) : absent(), text_in(part(record, text.offset, text.bytes))});
  }
}

std::uint32_t vpd_selectors(Bytes record) { return word_at(record, kSelectorsOffset).value_or(0); }

}  // namespace vaskdfc::tool
