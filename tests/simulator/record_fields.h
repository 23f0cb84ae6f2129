// Fields of records that are plain bytes.
#pragma once

#include <cstring>

#include "sim_process.h"

template <typename Value, typename Bytes>
Value at(const Bytes& bytes, std::size_t offset) {
  Value value;
  std::memcpy(&value, reinterpret_cast<const std::uint8_t*>(&bytes) + offset, sizeof(value));
  return value;
}

template <typename Bytes>
std::uint32_t word(const Bytes& bytes, std::size_t offset) {
  return at<std::uint32_t>(bytes, offset);
}

template <typename Bytes>
std::string text_at(const Bytes& bytes, std::size_t offset) {
  return reinterpret_cast<const char*>(&bytes) + offset;
}
