// Text for a line of ASCII: other characters are told by their bytes.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

namespace simulator {

inline bool is_printable(char letter) { return letter >= ' ' && letter <= '~'; }

// Characters that a predicate does not let through become \xHH.
template <typename Predicate>
std::string escaped(std::string_view text, Predicate passes) {
  std::string result;
  for (const char letter : text) {
    result += passes(letter) ? std::string(1, letter) : fmt::format("\\x{:02X}", static_cast<unsigned char>(letter));
  }
  return result;
}

}  // namespace simulator
