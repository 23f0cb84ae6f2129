#include "driver/pci_space.h"

#include <algorithm>
#include <bit>
#include <concepts>

#include "driver/stored_name.h"

namespace simulator {
namespace {

struct Layout {
  PciSpace::Bytes values{};
  PciSpace::Bytes writable{};

  template <std::unsigned_integral Value>
  void put(std::size_t offset, Value value, Value mask = 0) {
    for (std::size_t i = 0; i < sizeof(Value); ++i) {
      values[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
      writable[offset + i] = static_cast<std::uint8_t>(mask >> 8 * i);
    }
  }
  void byte(std::size_t offset, std::uint8_t value, std::uint8_t mask = 0) { put(offset, value, mask); }
  void half(std::size_t offset, std::uint16_t value, std::uint16_t mask = 0) { put(offset, value, mask); }
  void word(std::size_t offset, std::uint32_t value, std::uint32_t mask = 0) { put(offset, value, mask); }
};

constexpr std::size_t kPowerManagement = 0x40;
constexpr std::size_t kMsiX = 0x50;
constexpr std::size_t kExpress = 0x60;
constexpr std::size_t kErrorReporting = 0x100;
constexpr std::size_t kSerialNumber = 0x140;

bool is_newer(const scenario::Adapter& card) { return card.sli_mode >= 4; }

// A region of memory with a 64-bit address. Address bits below its size are read-only zeros, by which software finds the size.
void put_memory_region(Layout& layout, std::size_t offset, std::uint32_t address, std::uint32_t bytes) {
  constexpr std::uint32_t k64Bit = 0x4;
  layout.word(offset, address | k64Bit, ~(bytes - 1));
  layout.word(offset + 4, 0, 0xFFFFFFFF);
}

void put_header(Layout& layout, const scenario::Adapter& card) {
  layout.half(0x00, card.pci.vendor);
  layout.half(0x02, card.pci.device);
  layout.half(0x04, 0x0546, 0x0546);  // memory, bus master, parity, system errors, no INTx
  layout.half(0x06, 0x0010);          // there is a list of capabilities
  layout.byte(0x08, is_newer(card) ? 0x10 : 0x03);
  layout.byte(0x0A, 0x04);  // Fibre Channel
  layout.byte(0x0B, 0x0C);  // serial bus
  layout.byte(0x0C, 0x10, 0xFF);
  layout.byte(0x0E, is_newer(card) ? 0x80 : 0x00);  // newer adapters have more functions
  put_memory_region(layout, 0x10, 0xE0000000 + card.board * 0x100000, 0x4000);
  put_memory_region(layout, 0x18, 0xE0080000 + card.board * 0x100000, 0x20000);
  layout.half(0x2C, card.pci.vendor);
  layout.half(0x2E, card.pci.device);
  layout.word(0x30, 0, 0xFFFC0001);  // option ROM of 256 KiB
  layout.byte(0x34, kPowerManagement);
  layout.byte(0x3C, 0x0B, 0xFF);
  layout.byte(0x3D, 0x01);
}

void put_capability(Layout& layout, std::size_t offset, std::uint8_t identifier, std::size_t next) {
  layout.byte(offset, identifier);
  layout.byte(offset + 1, static_cast<std::uint8_t>(next));
}

void put_capabilities(Layout& layout, const scenario::Adapter& card) {
  put_capability(layout, kPowerManagement, 0x01, kMsiX);
  layout.half(kPowerManagement + 2, 0x0003);
  layout.half(kPowerManagement + 4, 0x0008, 0x0103);  // power state, PME enable

  put_capability(layout, kMsiX, 0x11, kExpress);
  layout.half(kMsiX + 2, is_newer(card) ? 0x801F : 0x8003, 0xC000);  // vectors less one; enable, mask
  layout.word(kMsiX + 4, 0x00002002);                                // table and pending bits lie in the second region
  layout.word(kMsiX + 8, 0x00003002);

  const std::uint16_t link = is_newer(card) ? 0x0083 : 0x0082;  // 8 lanes of generation 3 or 2
  put_capability(layout, kExpress, 0x10, 0);
  layout.half(kExpress + 0x02, 0x0002);      // an endpoint
  layout.word(kExpress + 0x04, 0x10008002);  // payload of 512 bytes, function-level reset
  layout.half(kExpress + 0x08, 0x2030, 0x7FFF);
  layout.word(kExpress + 0x0C, link);
  layout.half(kExpress + 0x10, 0x0040, 0x00C3);
  layout.half(kExpress + 0x12, link);
}

void put_extended_capability(Layout& layout, std::size_t offset, std::uint16_t identifier, std::size_t next) {
  constexpr std::uint32_t kFirstVersion = 1;
  layout.word(offset, static_cast<std::uint32_t>(next << 20) | kFirstVersion << 16 | identifier);
}

void put_extended_capabilities(Layout& layout, const scenario::Adapter& card) {
  put_extended_capability(layout, kErrorReporting, 0x0001, kSerialNumber);
  layout.word(kErrorReporting + 0x08, 0, 0x003FF030);
  layout.word(kErrorReporting + 0x0C, 0x00062030, 0x003FF030);
  layout.word(kErrorReporting + 0x14, 0x00002000, 0x000031C1);

  put_extended_capability(layout, kSerialNumber, 0x0003, 0);
  for (std::size_t i = 0; i < sizeof(card.port.wwpn.wwn); ++i) layout.byte(kSerialNumber + 4 + i, card.port.wwpn.wwn[7 - i]);
}

Layout layout_of(const scenario::Adapter& card) {
  Layout layout;
  put_header(layout, card);
  put_capabilities(layout, card);
  put_extended_capabilities(layout, card);
  return layout;
}

std::string text_of(const PciSpace::Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

}  // namespace

PciSpace::PciSpace(const scenario::Adapter& card, StateStore& store)
    : initial_(layout_of(card).values),
      writable_(layout_of(card).writable),
      kept_(store, stored_name("pci", card, "bin"), text_of(initial_), KeptBytes::of_size(sizeof(Bytes))) {}

// Bits that cannot be written are the card's, whatever is stored.
PciSpace::Bytes PciSpace::read() const {
  const std::string kept = kept_.load();
  Bytes bytes = initial_;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>((bytes[i] & ~writable_[i]) | (static_cast<std::uint8_t>(kept[i]) & writable_[i]));
  }
  return bytes;
}

void PciSpace::write(std::size_t offset, std::span<const std::uint8_t> bytes) {
  kept_.update([&](std::string& kept) { std::ranges::copy(bytes, kept.begin() + static_cast<std::ptrdiff_t>(offset)); });
}

void PciSpace::reset() {
  kept_.update([&](std::string& kept) { kept = text_of(initial_); });
}

}  // namespace simulator
