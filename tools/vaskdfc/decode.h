// What the driver's values mean: texts, names and the encodings of FC-HBA. A value without a known meaning keeps its number.
#pragma once

#include <vaskdfc/hbaapi.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "report.h"

namespace vaskdfc::tool {

// A text from a fixed array, which need not end with a NUL. What is not printable ASCII is shown as \xNN, so that no text reaches
// the terminal as a command, and a backslash as two, so that no text is taken for another.
std::string text_of(std::span<const char> array);
std::string text_of(std::span<const std::uint8_t> array);
std::vector<std::string> lines_of(std::span<const std::uint8_t> array);

std::string wwn_text(const HbaWwn& wwn);                     // 10:00:00:11:22:33:44:55
std::optional<HbaWwn> parse_wwn(std::string_view spelling);  // with colons, dashes, bare, or with 0x
bool operator==(const HbaWwn& left, const HbaWwn& right);

// Exactly so many bytes as a WWN is spelled: with colons, dashes, bare, or with 0x.
std::optional<std::vector<std::uint8_t>> parse_bytes(std::string_view spelling, std::size_t count);

// A decimal or 0x number that is not above `most`.
std::optional<std::uint32_t> parse_number(std::string_view spelling, std::uint32_t most = UINT32_MAX);

Cell wwn_cell(const HbaWwn& wwn);
Cell fc_id_cell(std::uint32_t fc_id);  // 0x010200
Cell hex_cell(std::uint32_t word);     // 0x00001042
Cell hex_bytes_cell(std::span<const std::uint8_t> bytes);
std::string colon_text(std::span<const std::uint8_t> bytes);  // 0e:fc:00

Cell port_type_cell(std::uint32_t type);
Cell port_state_cell(std::uint32_t state);
Cell speed_cell(std::uint32_t speed);
Cell speeds_cell(std::uint32_t speeds);
Cell classes_of_service_cell(std::uint32_t classes);
Cell fc4_types_cell(std::span<const std::uint8_t, 32> map);
Cell feature_flags_cell(std::uint32_t flags);

}  // namespace vaskdfc::tool
