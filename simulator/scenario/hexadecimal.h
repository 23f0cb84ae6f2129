// Bytes that a scenario writes as hexadecimal digits.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace simulator::scenario {

// Two digits a byte, upper or lower case; blanks, line ends and colons between or within bytes count for nothing. None for
// anything else.
std::optional<std::string> bytes_of(std::string_view text);

}  // namespace simulator::scenario
