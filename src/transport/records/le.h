// Unaligned little-endian integers: byte arrays, so that a packed driver record needs no packing attribute and no cast, and has
// one layout on every word size.
#pragma once

#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>

namespace vaskdfc {

static_assert(std::endian::native == std::endian::little, "the driver's words are little-endian and so is every supported host");

template <std::unsigned_integral T>
struct Le {
  std::array<std::uint8_t, sizeof(T)> bytes;

  constexpr operator T() const { return std::bit_cast<T>(bytes); }
  constexpr Le& operator=(T value) {
    bytes = std::bit_cast<decltype(bytes)>(value);
    return *this;
  }
};

using Le16 = Le<std::uint16_t>;
using Le32 = Le<std::uint32_t>;

static_assert(alignof(Le32) == 1 && sizeof(Le32) == 4);
static_assert(Le16{{0x34, 0x12}} == 0x1234);

}  // namespace vaskdfc
