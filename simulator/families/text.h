// Texts in fixed arrays: cut to fit with a terminating NUL, the rest zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace simulator {

template <typename Byte, std::size_t N>
void set_text(Byte (&field)[N], std::string_view text) {
  static_assert(sizeof(Byte) == 1);
  auto* const end = std::ranges::copy(text.substr(0, N - 1), field).out;
  std::fill(end, field + N, Byte{});
}

}  // namespace simulator
