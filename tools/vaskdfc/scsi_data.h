// What logical units answer: INQUIRY data, vital product data, capacities, lists of LUNs; and how LUNs are spelled.
#pragma once

#include <vaskdfc/hbaapi.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

using Lun = std::array<std::uint8_t, 8>;  // as it travels

// A number where a single level says it all, or else all bytes as in 0x4001000200000000.
std::string lun_text(const Lun& lun);
// A number, or all 16 digits with 0x. A Failure with exit code 2 for anything else.
Lun lun_argument(const std::string& spelling);
// As the library takes it: the same bytes in memory.
std::uint64_t lun_in_memory(const Lun& lun);

// Pages of the vital product data that the tool reads.
inline constexpr std::uint8_t kSupportedPages = 0x00;
inline constexpr std::uint8_t kUnitSerialNumber = 0x80;
inline constexpr std::uint8_t kDeviceIdentification = 0x83;

std::string device_type_name(std::uint8_t type);

// The fields of standard INQUIRY data; those that the bytes end before are absent.
std::vector<Field> inquiry_fields(Bytes bytes);

// The association of a designator that names the unit itself.
inline constexpr const char* kOfTheUnit = "logical unit";

// A designator of the device identification page.
struct Designator {
  std::string kind;         // as in "NAA", "EUI-64", "T10"
  std::string association;  // kOfTheUnit, target port, target device
  std::string text;         // the identifier, as in naa.600a0b80000f1eab
  std::size_t bytes = 0;    // with the header
};

// The designator at the start of the bytes; nothing where they end before it does, or where there is none.
std::optional<Designator> parse_designator(Bytes bytes);

// The list of a device identification page.
std::vector<Designator> parse_designators(Bytes page);

// What a page of supported pages lists.
std::vector<std::string> supported_pages(Bytes page);
std::string page_name(std::uint8_t page);
// What a page of the unit serial number says.
std::string serial_number(Bytes page);

struct Capacity {
  std::uint32_t last_block;
  std::uint32_t block_bytes;
  std::uint64_t bytes() const { return (std::uint64_t{last_block} + 1) * block_bytes; }
};
// Nothing for fewer than 8 bytes.
std::optional<Capacity> parse_capacity(Bytes bytes);

struct LunList {
  std::vector<Lun> luns;
  std::size_t bytes = 0;  // that the whole list needs
};
LunList parse_luns(Bytes bytes);

}  // namespace vaskdfc::tool
