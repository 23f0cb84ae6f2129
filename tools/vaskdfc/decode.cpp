#include "decode.h"

#include <fmt/format.h>
#include <vaskdfc/info.h>
#include <vaskdfc/regions.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace vaskdfc::tool {
namespace {

using Meaning = std::pair<std::uint32_t, const char*>;

constexpr std::array kPortTypes{Meaning{1, "unknown"}, Meaning{2, "other"},   Meaning{3, "not present"},    Meaning{5, "N_Port"},
                                Meaning{6, "NL_Port"}, Meaning{7, "FL_Port"}, Meaning{8, "F_Port"},         Meaning{9, "E_Port"},
                                Meaning{10, "G_Port"}, Meaning{20, "L_Port"}, Meaning{21, "point-to-point"}};
constexpr std::array kPortStates{Meaning{1, "unknown"},     Meaning{2, "online"},    Meaning{3, "offline"}, Meaning{4, "bypassed"},
                                 Meaning{5, "diagnostics"}, Meaning{6, "link down"}, Meaning{7, "error"},   Meaning{8, "loopback"}};
constexpr std::array kSpeeds{Meaning{0x1, "1 Gbit/s"},   Meaning{0x2, "2 Gbit/s"},         Meaning{0x8, "4 Gbit/s"},
                             Meaning{0x10, "8 Gbit/s"},  Meaning{0x4, "10 Gbit/s"},        Meaning{0x20, "16 Gbit/s"},
                             Meaning{0x40, "32 Gbit/s"}, Meaning{0x8000, "not negotiated"}};
constexpr std::array kFc4Types{Meaning{0x05, "IP"}, Meaning{0x08, "FCP"}, Meaning{0x20, "CT"}, Meaning{0x28, "NVMe"}};
constexpr std::array kFeatures{Meaning{DFC_FEATURE_EXTENDED_SLI_CONFIG, "extended SLI configuration mailboxes"},
                               Meaning{DFC_FEATURE_PERSISTENT_LINK_DOWN, "persistent link down"}};

const char* meaning_of(std::span<const Meaning> meanings, std::uint32_t value) {
  const auto found = std::ranges::find(meanings, value, &Meaning::first);
  return found == meanings.end() ? nullptr : found->second;
}

std::string name_or_number(std::span<const Meaning> meanings, std::uint32_t value) {
  const char* const meaning = meaning_of(meanings, value);
  return meaning != nullptr ? meaning : fmt::format("{}", value);
}

// The names of the bits that are set, in the table's order; what no name covers follows as one number.
std::vector<std::string> bit_names(std::span<const Meaning> meanings, std::uint32_t bits) {
  std::vector<std::string> names;
  for (const auto& [bit, name] : meanings) {
    if ((bits & bit) == 0) continue;
    names.emplace_back(name);
    bits &= ~bit;
  }
  if (bits != 0) names.push_back(fmt::format("0x{:x}", bits));
  return names;
}

// FC-GS: a big-endian bit map of eight words, type 0 being the lowest bit of the first.
bool has_fc4_type(std::span<const std::uint8_t, 32> map, std::uint32_t type) {
  const std::size_t byte = type / 32 * 4 + 3 - type % 32 / 8;
  return (map[byte] >> type % 8 & 1) != 0;
}

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool starts_with_0x(std::string_view text) { return text.starts_with("0x") || text.starts_with("0X"); }

}  // namespace

std::string text_of(std::span<const std::uint8_t> array) {
  std::string text;
  for (const std::uint8_t byte : array) {
    if (byte == 0) break;
    const bool printable = byte >= 0x20 && byte < 0x7F;
    if (byte == '\\') text += '\\';
    text += printable ? std::string(1, static_cast<char>(byte)) : fmt::format("\\x{:02x}", byte);
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::vector<std::string> lines_of(std::span<const std::uint8_t> array) {
  std::vector<std::string> lines;
  array = array.first(static_cast<std::size_t>(std::ranges::find(array, 0) - array.begin()));
  while (!array.empty()) {
    const auto length = static_cast<std::size_t>(std::ranges::find(array, '\n') - array.begin());
    lines.push_back(text_of(array.first(length)));
    array = array.subspan(std::min(length + 1, array.size()));
  }
  return lines;
}

std::string text_of(std::span<const char> array) {
  std::vector<std::uint8_t> bytes(array.size());
  std::ranges::transform(array, bytes.begin(), [](char c) { return static_cast<std::uint8_t>(c); });
  return text_of(std::span<const std::uint8_t>(bytes));
}

std::string wwn_text(const HbaWwn& wwn) { return colon_text(wwn.wwn); }

// Separators stand between all bytes or between none.
std::optional<std::vector<std::uint8_t>> parse_bytes(std::string_view spelling, std::size_t count) {
  if (starts_with_0x(spelling)) spelling.remove_prefix(2);
  const bool separated = spelling.size() == 3 * count - 1 && (spelling[2] == ':' || spelling[2] == '-');
  if (!separated && spelling.size() != 2 * count) return std::nullopt;

  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = i * (separated ? 3 : 2);
    if (separated && i > 0 && spelling[at - 1] != spelling[2]) return std::nullopt;
    const int high = hex_digit(spelling[at]);
    const int low = hex_digit(spelling[at + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
  }
  return bytes;
}

std::optional<HbaWwn> parse_wwn(std::string_view spelling) {
  HbaWwn wwn{};
  const auto bytes = parse_bytes(spelling, sizeof(wwn.wwn));
  if (!bytes) return std::nullopt;
  std::ranges::copy(*bytes, wwn.wwn);
  return wwn;
}

bool operator==(const HbaWwn& left, const HbaWwn& right) { return std::ranges::equal(left.wwn, right.wwn); }

std::optional<std::uint32_t> parse_number(std::string_view spelling, std::uint32_t most) {
  const bool is_hex = starts_with_0x(spelling);
  if (is_hex) spelling.remove_prefix(2);
  std::uint32_t number = 0;
  const char* const end = spelling.data() + spelling.size();
  const auto [stop, error] = std::from_chars(spelling.data(), end, number, is_hex ? 16 : 10);
  if (error != std::errc{} || stop != end || number > most) return std::nullopt;
  return number;
}

Cell wwn_cell(const HbaWwn& wwn) { return text_cell(wwn_text(wwn)); }

Cell fc_id_cell(std::uint32_t fc_id) { return text_cell(fmt::format("0x{:06x}", fc_id)); }

Cell hex_cell(std::uint32_t word) { return text_cell(fmt::format("0x{:08x}", word)); }

std::string colon_text(std::span<const std::uint8_t> bytes) { return fmt::format("{:02x}", fmt::join(bytes, ":")); }

Cell hex_bytes_cell(std::span<const std::uint8_t> bytes) { return text_cell(fmt::format("{:02x}", fmt::join(bytes, " "))); }

Cell port_type_cell(std::uint32_t type) { return text_cell(name_or_number(kPortTypes, type)); }

Cell port_state_cell(std::uint32_t state) { return text_cell(name_or_number(kPortStates, state)); }

Cell speed_cell(std::uint32_t speed) {
  if (speed == 0) return text_cell("unknown");
  return text_cell(fmt::format("{}", fmt::join(bit_names(kSpeeds, speed), ", ")));
}

Cell speeds_cell(std::uint32_t speeds) { return list_cell(bit_names(kSpeeds, speeds)); }

Cell classes_of_service_cell(std::uint32_t classes) {
  std::vector<std::string> names;
  for (std::uint32_t bit = 0; bit < 32; ++bit) {
    if ((classes >> bit & 1) != 0) names.push_back(bit == 0 ? "class F" : fmt::format("class {}", bit));
  }
  return list_cell(names);
}

Cell fc4_types_cell(std::span<const std::uint8_t, 32> map) {
  std::vector<std::string> names;
  for (std::uint32_t type = 0; type < 256; ++type) {
    if (!has_fc4_type(map, type)) continue;
    const char* const name = meaning_of(kFc4Types, type);
    names.push_back(name != nullptr ? name : fmt::format("0x{:02x}", type));
  }
  return list_cell(names);
}

Cell feature_flags_cell(std::uint32_t flags) { return list_cell(bit_names(kFeatures, flags)); }

}  // namespace vaskdfc::tool
