// Why a command ended in a check condition.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "scsi/big_endian.h"

namespace simulator::scsi {

struct Sense {
  std::uint8_t key = 0;
  std::uint8_t code = 0;
  std::uint8_t qualifier = 0;
  std::optional<std::uint32_t> block;      // becomes the information field
  std::optional<std::uint16_t> cdb_field;  // the byte of the command that is wrong
};

inline constexpr Sense kNoSense{};
inline constexpr Sense kUnknownOperation{.key = 0x05, .code = 0x20, .cdb_field = 0};
inline constexpr Sense kNoSuchUnit{.key = 0x05, .code = 0x25};
inline constexpr Sense kWriteProtected{.key = 0x07, .code = 0x27};
inline constexpr Sense kDataMissing{.key = 0x0B, .code = 0x4B};

constexpr Sense invalid_field(std::uint16_t byte) { return {.key = 0x05, .code = 0x24, .cdb_field = byte}; }
constexpr Sense beyond_end(std::uint32_t block) { return {.key = 0x05, .code = 0x21, .block = block}; }

using FixedSense = std::array<std::uint8_t, 18>;

// The fixed format, about the present command.
constexpr FixedSense fixed_format(const Sense& sense) {
  FixedSense bytes{0x70, 0, sense.key};
  bytes[7] = static_cast<std::uint8_t>(bytes.size() - 8);
  bytes[12] = sense.code;
  bytes[13] = sense.qualifier;
  if (sense.block) {
    bytes[0] |= 0x80;
    put_big_endian(bytes, 3, *sense.block);
  }
  if (sense.cdb_field) {
    bytes[15] = 0xC0;
    put_big_endian(bytes, 16, *sense.cdb_field);
  }
  return bytes;
}

}  // namespace simulator::scsi
