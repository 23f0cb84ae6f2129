#include "scenario/hexadecimal.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace simulator::scenario {

std::optional<std::string> bytes_of(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
  constexpr std::string_view kIgnored = " \t\r\n:";
  std::string digits;
  std::ranges::copy_if(text, std::back_inserter(digits), [&](char letter) { return kIgnored.find(letter) == kIgnored.npos; });
  if (digits.size() % 2 != 0 || digits.find_first_not_of(kDigits) != digits.npos) return std::nullopt;

  std::string bytes;
  for (const char* pair = digits.data(); pair != digits.data() + digits.size(); pair += 2) {
    std::uint8_t byte = 0;
    std::from_chars(pair, pair + 2, byte, 16);
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

}  // namespace simulator::scenario
