#include "pci_space.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>

#include "code_names.h"
#include "decode.h"
#include "driver_record.h"

namespace vaskdfc::tool {
namespace {

using Details = std::vector<std::string>;
using Name = std::pair<std::uint32_t, const char*>;

std::uint32_t number_of_width(Bytes space, std::size_t at, std::size_t bytes) {
  return static_cast<std::uint32_t>(little_endian(part(space, at, bytes)));
}
std::uint32_t half(Bytes space, std::size_t at) { return number_of_width(space, at, 2); }
std::uint32_t word(Bytes space, std::size_t at) { return number_of_width(space, at, 4); }

Cell bits_cell(std::span<const Name> names, std::uint32_t bits) {
  Details set;
  for (const auto& [bit, name] : names) {
    if ((bits & bit) != 0) set.emplace_back(name);
  }
  return list_cell(set);
}

// --- the header

constexpr std::array kCommandBits{Name{0x001, "I/O space"},       Name{0x002, "memory space"}, Name{0x004, "bus master"},
                                  Name{0x040, "parity response"}, Name{0x100, "SERR"},         Name{0x400, "INTx disabled"}};
constexpr std::array kStatusBits{Name{0x0008, "INTx pending"},          Name{0x0010, "capabilities"},
                                 Name{0x0100, "master parity error"},   Name{0x0800, "signaled target abort"},
                                 Name{0x1000, "received target abort"}, Name{0x2000, "received master abort"},
                                 Name{0x4000, "signaled system error"}, Name{0x8000, "parity error"}};

constexpr std::size_t kCommandOffset = 0x04;
constexpr std::size_t kStatusOffset = 0x06;
constexpr std::size_t kBaseAddresses = 0x10;
constexpr std::size_t kBaseAddressesEnd = 0x28;

// The address registers; one of 64 bits takes two.
Cell regions_cell(Bytes space) {
  constexpr std::uint32_t kIsIo = 0x1;
  constexpr std::uint32_t kIs64Bit = 0x4;
  constexpr std::uint32_t kIsPrefetchable = 0x8;
  Details regions;
  for (std::size_t at = kBaseAddresses; at < std::min(kBaseAddressesEnd, space.size()); at += 4) {
    const std::uint32_t low = word(space, at);
    if (low == 0) continue;
    const std::size_t number = (at - kBaseAddresses) / 4;
    if ((low & kIsIo) != 0) {
      regions.push_back(fmt::format("{}: I/O at 0x{:x}", number, low & ~0x3U));
      continue;
    }
    const bool is_wide = (low & kIs64Bit) != 0;
    const std::uint64_t high = is_wide ? word(space, at + 4) : 0;
    regions.push_back(fmt::format("{}: memory at 0x{:x}, {}-bit{}", number, high << 32 | (low & ~0xFU), is_wide ? 64 : 32,
                                  (low & kIsPrefetchable) != 0 ? ", prefetchable" : ""));
    if (is_wide) at += 4;
  }
  return list_cell(regions);
}

Cell rom_cell(Bytes bytes) {
  const auto address = static_cast<std::uint32_t>(little_endian(bytes));
  return text_cell(fmt::format("0x{:08x}, {}", address & ~0x7FFU, (address & 1) != 0 ? "enabled" : "disabled"));
}

constexpr std::array kHeader{
    RecordField{"vendor", "Vendor", 0x00, 2, hex_in},
    RecordField{"device", "Device", 0x02, 2, hex_in},
    RecordField{"revision", "Revision", 0x08, 1, hex_in},
    RecordField{"class", "Class", 0x09, 3, hex_in},
    RecordField{"header_type", "Header type", 0x0E, 1, hex_in},
    RecordField{"command", "Command", kCommandOffset, 2, hex_in},
    RecordField{"command_bits", "Command bits", kCommandOffset, 2,
                [](Bytes bytes) { return bits_cell(kCommandBits, half(bytes, 0)); }},
    RecordField{"status", "Status", kStatusOffset, 2, hex_in},
    RecordField{"status_bits", "Status bits", kStatusOffset, 2, [](Bytes bytes) { return bits_cell(kStatusBits, half(bytes, 0)); }},
    RecordField{"cache_line", "Cache line size", 0x0C, 1, number_in},
    RecordField{"subsystem_vendor", "Subsystem vendor", 0x2C, 2, hex_in},
    RecordField{"subsystem", "Subsystem", 0x2E, 2, hex_in},
    RecordField{"option_rom", "Option ROM", 0x30, 4, rom_cell},
    RecordField{"interrupt_line", "Interrupt line", 0x3C, 1, number_in},
    RecordField{"interrupt_pin", "Interrupt pin", 0x3D, 1, number_in}};

// --- capabilities

const char* on_or_off(bool on) { return on ? "on" : "off"; }

Details power_management(Bytes capability) {
  return {fmt::format("version {}", half(capability, 2) & 0x7), fmt::format("power state D{}", half(capability, 4) & 0x3),
          fmt::format("PME {}", on_or_off((half(capability, 4) & 0x100) != 0))};
}

Details msi(Bytes capability) { return {fmt::format("enable {}", on_or_off((half(capability, 2) & 0x1) != 0))}; }

Details msi_x(Bytes capability) {
  const std::uint32_t control = half(capability, 2);
  return {fmt::format("{} vectors", (control & 0x7FF) + 1), fmt::format("enable {}", on_or_off((control & 0x8000) != 0)),
          fmt::format("mask {}", on_or_off((control & 0x4000) != 0)),
          fmt::format("table in region {} at 0x{:x}", word(capability, 4) & 0x7, word(capability, 4) & ~0x7U),
          fmt::format("pending bits in region {} at 0x{:x}", word(capability, 8) & 0x7, word(capability, 8) & ~0x7U)};
}

std::string link_text(std::uint32_t speed_and_width) {
  constexpr std::array kRates{Name{1, "2.5 GT/s"}, Name{2, "5 GT/s"}, Name{3, "8 GT/s"}, Name{4, "16 GT/s"}, Name{5, "32 GT/s"}};
  return fmt::format("{} lanes at {}", speed_and_width >> 4 & 0x3F, name_in(kRates, speed_and_width & 0xF, "an unknown rate"));
}

Details pci_express(Bytes capability) {
  constexpr std::array kTypes{Name{0, "endpoint"}, Name{1, "legacy endpoint"}, Name{4, "root port"},
                              Name{9, "integrated endpoint"}};
  const std::uint32_t type = half(capability, 2) >> 4 & 0xF;
  return {name_in(kTypes, type, fmt::format("type {}", type)), fmt::format("version {}", half(capability, 2) & 0xF),
          fmt::format("link of at most {}", link_text(word(capability, 0xC))),
          fmt::format("link now {}", link_text(half(capability, 0x12))),
          fmt::format("payload {} bytes", 128U << (half(capability, 8) >> 5 & 0x7))};
}

Details error_reporting(Bytes capability) {
  return {fmt::format("uncorrectable errors 0x{:08x}", word(capability, 0x4)),
          fmt::format("correctable errors 0x{:08x}", word(capability, 0x10))};
}

// Kept the other way round than it is spelled.
Details serial_number(Bytes capability) {
  const Bytes bytes = part(capability, 4, 8);
  return {colon_text(std::vector<std::uint8_t>(bytes.rbegin(), bytes.rend()))};
}

struct Capability {
  std::uint32_t id;
  const char* name;
  std::size_t bytes;  // that its details are in
  Details (*details)(Bytes);
};

Details nothing(Bytes) { return {}; }

constexpr std::array kCapabilities{Capability{0x01, "power management", 6, power_management},
                                   Capability{0x03, "vital product data", 2, nothing},
                                   Capability{0x05, "MSI", 4, msi},
                                   Capability{0x09, "vendor specific", 2, nothing},
                                   Capability{0x10, "PCI Express", 0x14, pci_express},
                                   Capability{0x11, "MSI-X", 12, msi_x}};
constexpr std::array kExtendedCapabilities{Capability{0x0001, "advanced error reporting", 0x14, error_reporting},
                                           Capability{0x0003, "device serial number", 12, serial_number},
                                           Capability{0x000B, "vendor specific", 4, nothing},
                                           Capability{0x000E, "alternative routing", 4, nothing},
                                           Capability{0x0010, "single root I/O virtualization", 4, nothing},
                                           Capability{0x0019, "secondary PCI Express", 4, nothing}};

Record capability_record(Bytes space, std::size_t at, std::uint32_t id, std::span<const Capability> known) {
  const bool is_extended = known.data() == kExtendedCapabilities.data();
  Record record{text_cell(fmt::format("0x{:03x}", at)), text_cell(fmt::format("0x{:0{}x}", id, is_extended ? 4 : 2)), absent(),
                list_cell({})};
  for (const Capability& capability : known) {
    if (capability.id != id) continue;
    record[2] = text_cell(capability.name);
    const Bytes bytes = part(space, at, capability.bytes);
    if (bytes.size() == capability.bytes) record[3] = list_cell(capability.details(bytes));
  }
  return record;
}

void add_capabilities(Section& section, Bytes space) {
  constexpr std::uint32_t kHasCapabilities = 0x10;
  constexpr std::size_t kFirstPointer = 0x34;
  if ((half(space, kStatusOffset) & kHasCapabilities) == 0) return;
  std::set<std::size_t> seen;
  std::size_t at = number_of_width(space, kFirstPointer, 1) & ~0x3U;
  while (at != 0 && at + 2 <= space.size() && seen.insert(at).second) {
    section.records.push_back(capability_record(space, at, space[at], kCapabilities));
    at = space[at + 1] & ~0x3U;
  }
}

void add_extended_capabilities(Section& section, Bytes space) {
  constexpr std::size_t kFirst = 0x100;
  std::set<std::size_t> seen;
  std::size_t at = kFirst;
  while (at != 0 && at + 4 <= space.size() && seen.insert(at).second) {
    const std::uint32_t header = word(space, at);
    if (header == 0 || header == UINT32_MAX) return;
    section.records.push_back(capability_record(space, at, header & 0xFFFF, kExtendedCapabilities));
    at = header >> 20 & ~0x3U;
  }
}

}  // namespace

std::vector<Field> pci_header_fields(Bytes space) {
  return joined(fields_of(space, kHeader), {{"regions", "Regions", regions_cell(space)}});
}

Section pci_capabilities_section(Bytes space) {
  Section section =
      table_section("capabilities", "Capabilities", {{"offset", "OFFSET"}, {"id", "ID"}, {"name", "NAME"}, {"details", "DETAILS"}});
  add_capabilities(section, space);
  add_extended_capabilities(section, space);
  return section;
}

}  // namespace vaskdfc::tool
