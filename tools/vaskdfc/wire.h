// Payloads as they travel: big-endian numbers in bytes of which a driver may have delivered any number.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vaskdfc::tool {

using Bytes = std::span<const std::uint8_t>;

// As many of these bytes as there are.
inline Bytes part(Bytes bytes, std::size_t at, std::size_t count = SIZE_MAX) {
  const std::size_t from = std::min(at, bytes.size());
  return bytes.subspan(from, std::min(count, bytes.size() - from));
}

// The number that these bytes, at most eight, are.
inline std::uint64_t number_of(Bytes bytes) {
  std::uint64_t number = 0;
  for (const std::uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}

// The number of `width` bytes at this place; nothing where the bytes end before.
template <typename Number = std::uint32_t>
std::optional<Number> number_at(Bytes bytes, std::size_t at, std::size_t width = sizeof(Number)) {
  const Bytes found = part(bytes, at, width);
  if (found.size() < width) return std::nullopt;
  return static_cast<Number>(number_of(found));
}

// Writes the low bytes of a number over these.
inline void put_number(std::span<std::uint8_t> bytes, std::uint64_t number) {
  for (std::size_t i = bytes.size(); i-- > 0; number >>= 8) bytes[i] = static_cast<std::uint8_t>(number);
}

}  // namespace vaskdfc::tool
