#include "scsi_data.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "code_names.h"
#include "decode.h"
#include "failure.h"

namespace vaskdfc::tool {
namespace {

// Addressing methods of a LUN's first level, in its two highest bits.
constexpr std::uint8_t kFlat = 1;
constexpr std::uint32_t kMostPeripheral = 0xFF;
constexpr std::uint32_t kMostFlat = 0x3FFF;

constexpr std::array<std::pair<std::uint8_t, const char*>, 13> kDeviceTypes{{{0x00, "disk"},
                                                                             {0x01, "tape"},
                                                                             {0x02, "printer"},
                                                                             {0x03, "processor"},
                                                                             {0x04, "write-once"},
                                                                             {0x05, "CD/DVD"},
                                                                             {0x07, "optical memory"},
                                                                             {0x08, "medium changer"},
                                                                             {0x0C, "storage array controller"},
                                                                             {0x0D, "enclosure services"},
                                                                             {0x0E, "simplified disk"},
                                                                             {0x11, "object storage"},
                                                                             {0x1F, "unknown or none"}}};

constexpr std::array<std::pair<std::uint8_t, const char*>, 7> kPageNames{{{kSupportedPages, "supported pages"},
                                                                          {kUnitSerialNumber, "unit serial number"},
                                                                          {kDeviceIdentification, "device identification"},
                                                                          {0x86, "extended INQUIRY data"},
                                                                          {0xB0, "block limits"},
                                                                          {0xB1, "block device characteristics"},
                                                                          {0xB2, "logical block provisioning"}}};

std::string byte_text(std::uint8_t byte) { return fmt::format("0x{:02x}", byte); }

std::string hex(Bytes bytes) { return fmt::format("{:02x}", fmt::join(bytes, "")); }

Cell text_or_absent(Bytes bytes) { return bytes.empty() ? absent() : text_cell(text_of(bytes)); }

constexpr std::size_t kPageHead = 4;

// What stands in a vital product data page behind its head.
Bytes page_body(Bytes page) { return part(page, kPageHead, number_at<std::uint16_t>(page, 2).value_or(0)); }

struct Spelling {
  std::string kind;
  std::string text;
};

Spelling spelled(std::uint8_t type, bool is_text, Bytes identifier) {
  switch (type) {
    case 0: return {"vendor", "vendor." + (is_text ? text_of(identifier) : hex(identifier))};
    case 1: return {"T10", "t10." + text_of(identifier)};
    case 2: return {"EUI-64", "eui." + hex(identifier)};
    case 3: return {"NAA", "naa." + hex(identifier)};
    case 4: return {"relative target port", fmt::format("{}", number_of(part(identifier, 2, 2)))};
    case 5: return {"target port group", fmt::format("{}", number_of(part(identifier, 2, 2)))};
    case 6: return {"logical unit group", fmt::format("{}", number_of(part(identifier, 2, 2)))};
    case 8: return {"SCSI name", text_of(identifier)};
    default: return {fmt::format("type {}", type), hex(identifier)};
  }
}

std::string association_name(std::uint8_t association) {
  constexpr std::array<const char*, 4> kNames{kOfTheUnit, "target port", "target device", "reserved"};
  return kNames[association & 3];
}

}  // namespace

std::string lun_text(const Lun& lun) {
  const bool one_level = std::ranges::all_of(part(lun, 2), [](std::uint8_t byte) { return byte == 0; });
  const auto first = static_cast<std::uint32_t>(number_of(part(lun, 0, 2)));
  if (one_level && first <= kMostPeripheral) return fmt::format("{}", first);
  if (one_level && first >> 14 == kFlat && (first & kMostFlat) > kMostPeripheral) return fmt::format("{}", first & kMostFlat);
  return "0x" + hex(lun);
}

Lun lun_argument(const std::string& spelling) {
  Lun lun{};
  if (const auto bytes = spelling.starts_with("0x") ? parse_bytes(spelling, lun.size()) : std::nullopt) {
    std::ranges::copy(*bytes, lun.begin());
    return lun;
  }
  const auto number = parse_number(spelling, kMostFlat);
  if (!number) {
    throw usage_failure(fmt::format("LUN: \"{}\" is neither a number from 0 to {} nor 16 digits with 0x", spelling, kMostFlat));
  }
  put_number(std::span(lun).first(2), *number <= kMostPeripheral ? *number : *number | kFlat << 14);
  return lun;
}

std::uint64_t lun_in_memory(const Lun& lun) {
  std::uint64_t memory = 0;
  std::memcpy(&memory, lun.data(), lun.size());
  return memory;
}

std::string device_type_name(std::uint8_t type) { return name_in(kDeviceTypes, type, byte_text(type)); }

std::vector<Field> inquiry_fields(Bytes bytes) {
  const auto byte = [&](std::size_t at, auto cell) { return at < bytes.size() ? cell(bytes[at]) : absent(); };
  return {{"device_type", "Device type", byte(0, [](std::uint8_t value) { return text_cell(device_type_name(value & 0x1F)); })},
          {"qualifier", "Peripheral qualifier", byte(0, [](std::uint8_t value) { return number_cell(value >> 5U); })},
          {"removable", "Removable", byte(1, [](std::uint8_t value) { return flag_cell((value & 0x80) != 0); })},
          {"version", "Version", byte(2, [](std::uint8_t value) { return number_cell(value); })},
          {"vendor", "Vendor", text_or_absent(part(bytes, 8, 8))},
          {"product", "Product", text_or_absent(part(bytes, 16, 16))},
          {"revision", "Revision", text_or_absent(part(bytes, 32, 4))}};
}

std::optional<Designator> parse_designator(Bytes bytes) {
  constexpr std::size_t kHead = 4;
  if (bytes.size() < kHead) return std::nullopt;
  const std::size_t length = bytes[3];
  if (length == 0 || bytes.size() < kHead + length) return std::nullopt;
  constexpr std::uint8_t kAscii = 2;
  const std::uint8_t code_set = bytes[0] & 0x0F;
  Spelling spelling = spelled(bytes[1] & 0x0F, code_set >= kAscii, part(bytes, kHead, length));
  return Designator{std::move(spelling.kind), association_name(bytes[1] >> 4 & 3), std::move(spelling.text), kHead + length};
}

std::vector<Designator> parse_designators(Bytes page) {
  std::vector<Designator> designators;
  Bytes rest = page_body(page);
  while (auto designator = parse_designator(rest)) {
    rest = part(rest, designator->bytes);
    designators.push_back(std::move(*designator));
  }
  return designators;
}

std::vector<std::string> supported_pages(Bytes page) {
  std::vector<std::string> pages;
  for (const std::uint8_t number : page_body(page)) pages.push_back(fmt::format("0x{:02x}", number));
  return pages;
}

std::string page_name(std::uint8_t page) { return name_in(kPageNames, page, byte_text(page)); }

std::string serial_number(Bytes page) { return text_of(page_body(page)); }

std::optional<Capacity> parse_capacity(Bytes bytes) {
  const auto last_block = number_at(bytes, 0);
  const auto block_bytes = number_at(bytes, 4);
  if (!last_block || !block_bytes) return std::nullopt;
  return Capacity{*last_block, *block_bytes};
}

LunList parse_luns(Bytes bytes) {
  constexpr std::size_t kHead = 8;
  const std::size_t length = number_at(bytes, 0).value_or(0);
  LunList list;
  list.bytes = kHead + length;
  for (Bytes rest = part(bytes, kHead, length); rest.size() >= sizeof(Lun); rest = part(rest, sizeof(Lun))) {
    Lun lun;
    std::ranges::copy(part(rest, 0, sizeof(Lun)), lun.begin());
    list.luns.push_back(lun);
  }
  return list;
}

}  // namespace vaskdfc::tool
