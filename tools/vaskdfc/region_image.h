// Images of configuration regions 22 and 23. What an adapter delivers may be anything, so every length is checked here.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vaskdfc::tool {

inline constexpr const char* kRegion22Signature = "RG22";
inline constexpr const char* kRegion23Signature = "RG23";

// One record of region 23.
struct Region23Record {
  std::size_t offset;               // in the image
  std::vector<std::uint8_t> bytes;  // with its head

  std::uint8_t type() const { return bytes[0]; }
  std::span<const std::uint8_t> flags() const { return std::span(bytes).subspan(2, 2); }
  std::size_t data_bytes() const;
};

struct Region23Image {
  std::string signature;
  std::optional<std::uint32_t> version;
  std::vector<Region23Record> records;  // up to the end of the chain, without the end marker
  std::string problem;                  // why the chain cannot be read to its end; empty where it can
  std::size_t bytes_behind = 0;         // behind the end marker, which are not 0

  // The first record of a type; null where there is none.
  const Region23Record* find(std::uint8_t type) const;
};
Region23Image parse_region23(std::span<const std::uint8_t> image);

// Types of records.
inline constexpr std::uint8_t kFcoeParametersRecord = 0xA0;
inline constexpr std::uint8_t kConnectListRecord = 0xA1;
inline constexpr std::uint8_t kLinkDownRecord = 0xA2;

struct FcoeParameters {
  std::array<std::uint8_t, 3> fc_map{};
  std::optional<std::uint16_t> vlan;
};

struct ConnectEntry {
  std::uint16_t flags = 0;
  std::uint16_t vlan = 0;
  std::array<std::uint8_t, 16> names{};

  bool operator==(const ConnectEntry&) const = default;
};

// What records say; nothing where a record has another layout.
std::optional<FcoeParameters> fcoe_parameters_in(const Region23Record& record);
std::optional<std::vector<ConnectEntry>> connect_entries_in(const Region23Record& record);  // those in use
std::optional<bool> link_kept_down_in(const Region23Record& record);

// One entry of region 22.
struct Region22Entry {
  std::size_t position;
  std::size_t offset;               // in the image
  std::vector<std::uint8_t> bytes;  // the end of the image cuts off the last entry
};

struct Region22Image {
  std::string signature;
  std::vector<std::uint8_t> head;  // between the signature and the entries
  std::vector<Region22Entry> entries;
  std::string problem;  // why the image is not valid; empty for one that is
};
Region22Image parse_region22(std::span<const std::uint8_t> image);

// What `region init` makes of region 22.
Region22Image blank_region22();

bool is_blank(std::span<const std::uint8_t> bytes);

}  // namespace vaskdfc::tool
