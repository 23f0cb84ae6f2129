// How FC-HBA encodes what a scenario says in words.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace simulator::fc_hba {

struct Speed {
  std::string_view name;
  std::uint32_t bit;
};
// Slowest first. The bits are older than some of the speeds.
inline constexpr std::array kSpeeds{
    Speed{"1G", 0x1},  Speed{"2G", 0x2},   Speed{"4G", 0x8},   Speed{"8G", 0x10},
    Speed{"10G", 0x4}, Speed{"16G", 0x20}, Speed{"32G", 0x40},
};
inline constexpr std::uint32_t kSpeedUnknown = 0;

struct Fc4Type {
  std::string_view name;
  std::uint8_t code;
};
inline constexpr std::array kFc4Types{Fc4Type{"FCP", 0x08}, Fc4Type{"CT", 0x20}, Fc4Type{"NVMe", 0x28}};

// A type's bit lies in the big-endian 32-bit word number code/32.
constexpr std::size_t fc4_byte(std::uint8_t code) { return code / 32 * 4 + 3 - code % 32 / 8; }
constexpr std::uint8_t fc4_bit(std::uint8_t code) { return static_cast<std::uint8_t>(1 << code % 8); }
static_assert(fc4_byte(0x08) == 2 && fc4_bit(0x08) == 1);
static_assert(fc4_byte(0x20) == 7 && fc4_bit(0x20) == 1);

enum class PortType : std::uint32_t { kUnknown = 1, kNPort = 5 };

enum class PortState : std::uint32_t { kOnline = 2, kOffline = 3, kDiagnostics = 5, kLinkDown = 6, kError = 7 };

inline constexpr std::uint32_t kClass3 = 0x8;

}  // namespace simulator::fc_hba
