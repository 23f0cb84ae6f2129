// Big-endian integers, in which SCSI and Fibre Channel speak.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator {

template <std::unsigned_integral Value>
constexpr Value big_endian(std::span<const std::uint8_t> bytes, std::size_t offset) {
  Value value = 0;
  for (const std::uint8_t byte : bytes.subspan(offset, sizeof(Value))) value = static_cast<Value>(value << 8 | byte);
  return value;
}

template <std::unsigned_integral Value>
constexpr void put_big_endian(std::span<std::uint8_t> bytes, std::size_t offset, Value value) {
  for (std::size_t i = 0; i < sizeof(Value); ++i) {
    bytes[offset + i] = static_cast<std::uint8_t>(value >> 8 * (sizeof(Value) - 1 - i));
  }
}

}  // namespace simulator
