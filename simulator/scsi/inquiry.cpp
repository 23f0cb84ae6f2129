#include "scsi/inquiry.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "scsi/big_endian.h"

namespace simulator::scsi {
namespace {

using scenario::Identifier;
using scenario::LogicalUnit;

constexpr std::uint8_t kDisk = 0x00;
constexpr std::uint8_t kNoUnit = 0x7F;

constexpr std::array<std::uint8_t, 3> kPages{0x00, 0x80, 0x83};

constexpr std::uint64_t kCompanyId = 0x005A41;  // of the family's maker, as in the adapters' names

// Left-aligned and filled up with blanks.
void put_text(Bytes& bytes, std::size_t offset, std::size_t width, std::string_view text) {
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), width, std::uint8_t{' '});
  std::ranges::copy(text.substr(0, width), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

// Identifiers follow from the serial number, so that every path to a disk tells the same (64-bit FNV-1a).
std::uint64_t digest(std::string_view text) {
  std::uint64_t value = 0xCBF29CE484222325;
  for (const char letter : text) value = (value ^ static_cast<std::uint8_t>(letter)) * 0x100000001B3;
  return value;
}

enum class CodeSet : std::uint8_t { kBinary = 1, kAscii = 2 };
enum class Designator : std::uint8_t { kT10 = 1, kEui = 2, kNaa = 3, kRelativePort = 4 };
enum class Association : std::uint8_t { kUnit = 0, kPort = 1 };

Bytes descriptor(CodeSet code_set, Association association, Designator type, const Bytes& identifier) {
  Bytes result{static_cast<std::uint8_t>(code_set),
               static_cast<std::uint8_t>(static_cast<unsigned>(association) << 4 | static_cast<unsigned>(type)), 0,
               static_cast<std::uint8_t>(identifier.size())};
  result.insert(result.end(), identifier.begin(), identifier.end());
  return result;
}

// IEEE registered extended: 16 bytes.
Bytes naa(const LogicalUnit& unit) {
  const std::uint64_t hash = digest(unit.serial);
  Bytes name(16);
  put_big_endian(name, 0, std::uint64_t{6} << 60 | kCompanyId << 36 | hash >> 28);
  put_big_endian(name, 8, digest(unit.serial + unit.vendor));
  return descriptor(CodeSet::kBinary, Association::kUnit, Designator::kNaa, name);
}

Bytes eui(const LogicalUnit& unit) {
  Bytes name(8);
  put_big_endian(name, 0, kCompanyId << 40 | digest(unit.serial) >> 24);
  return descriptor(CodeSet::kBinary, Association::kUnit, Designator::kEui, name);
}

Bytes t10(const LogicalUnit& unit) {
  constexpr std::size_t kVendor = 8;
  constexpr std::size_t kProduct = 16;
  Bytes name(kVendor + kProduct);
  put_text(name, 0, kVendor, unit.vendor);
  put_text(name, kVendor, kProduct, unit.product);
  name.insert(name.end(), unit.serial.begin(), unit.serial.end());
  return descriptor(CodeSet::kAscii, Association::kUnit, Designator::kT10, name);
}

Bytes relative_port(std::uint32_t port) {
  Bytes number(4);
  put_big_endian(number, 0, port);
  return descriptor(CodeSet::kBinary, Association::kPort, Designator::kRelativePort, number);
}

// One that is not usable speaks of the port first and of the unit only then.
Bytes identification(const LogicalUnit& unit, std::uint32_t port) {
  const Bytes about_port = relative_port(port);
  Bytes result;
  switch (unit.identifier) {
    case Identifier::kNaa: result = naa(unit); break;
    case Identifier::kEui: result = eui(unit); break;
    case Identifier::kT10: result = t10(unit); break;
    case Identifier::kUnusable: {
      const Bytes about_unit = naa(unit);
      result = about_port;
      result.insert(result.end(), about_unit.begin(), about_unit.end());
      return result;
    }
  }
  result.insert(result.end(), about_port.begin(), about_port.end());
  return result;
}

Bytes page_of(std::uint8_t page, const Bytes& content) {
  Bytes result{kDisk, page, 0, 0};
  put_big_endian(result, 2, static_cast<std::uint16_t>(content.size()));
  result.insert(result.end(), content.begin(), content.end());
  return result;
}

}  // namespace

Bytes standard_inquiry(const LogicalUnit* unit) {
  Bytes data(96);
  data[0] = unit == nullptr ? kNoUnit : kDisk;
  data[2] = 0x05;  // SPC-3
  data[3] = 0x12;  // LUNs of several levels are understood; the format of this data
  data[4] = static_cast<std::uint8_t>(data.size() - 5);
  data[7] = 0x02;  // commands are queued
  put_text(data, 8, 8, unit == nullptr ? "" : unit->vendor);
  put_text(data, 16, 16, unit == nullptr ? "" : unit->product);
  put_text(data, 32, 4, unit == nullptr ? "" : unit->revision);
  constexpr std::array<std::uint16_t, 4> kStandards{0x0060, 0x0900, 0x0300, 0x0320};  // SAM-3, FCP-2, SPC-3, SBC-2
  for (std::size_t i = 0; i < kStandards.size(); ++i) put_big_endian(data, 58 + 2 * i, kStandards[i]);
  return data;
}

std::optional<Bytes> vital_product_data(const LogicalUnit& unit, std::uint8_t page, std::uint32_t port) {
  switch (page) {
    case 0x00: return page_of(page, Bytes(kPages.begin(), kPages.end()));
    case 0x80: return page_of(page, Bytes(unit.serial.begin(), unit.serial.end()));
    case 0x83: return page_of(page, identification(unit, port));
    default: return std::nullopt;
  }
}

}  // namespace simulator::scsi
