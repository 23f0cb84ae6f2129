// How FC-HBA encodes what a scenario says in words.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace simulator::fc_hba {

struct Speed {
  std::string_view name;
  std::uint32_t bit;
  std::uint32_t megabits;
};
// Slowest first. The bits are older than some of the speeds.
inline constexpr std::array kSpeeds{
    Speed{"1G", 0x1, 1000},   Speed{"2G", 0x2, 2000},    Speed{"4G", 0x8, 4000},    Speed{"8G", 0x10, 8000},
    Speed{"10G", 0x4, 10000}, Speed{"16G", 0x20, 16000}, Speed{"32G", 0x40, 32000},
};
inline constexpr std::uint32_t kSpeedUnknown = 0;

// Megabits per second; 0 for a speed that is not known.
constexpr std::uint32_t megabits(std::uint32_t speed) {
  const auto* const known = std::ranges::find(kSpeeds, speed, &Speed::bit);
  return known == kSpeeds.end() ? 0 : known->megabits;
}

struct Fc4Type {
  std::string_view name;
  std::uint8_t code;
};
inline constexpr std::uint8_t kFcp = 0x08;
inline constexpr std::array kFc4Types{Fc4Type{"FCP", kFcp}, Fc4Type{"CT", 0x20}, Fc4Type{"NVMe", 0x28}};

// A type's bit lies in the big-endian 32-bit word number code/32.
constexpr std::size_t fc4_byte(std::uint8_t code) { return code / 32 * 4 + 3 - code % 32 / 8; }
constexpr std::uint8_t fc4_bit(std::uint8_t code) { return static_cast<std::uint8_t>(1 << code % 8); }
static_assert(fc4_byte(kFcp) == 2 && fc4_bit(kFcp) == 1);
static_assert(fc4_byte(0x20) == 7 && fc4_bit(0x20) == 1);

using Fc4Types = std::array<std::uint8_t, 32>;
constexpr bool serves_fcp(const Fc4Types& types) { return (types[fc4_byte(kFcp)] & fc4_bit(kFcp)) != 0; }

enum class PortType : std::uint32_t { kUnknown = 1, kNPort = 5 };

enum class PortState : std::uint32_t { kOnline = 2, kOffline = 3, kDiagnostics = 5, kLinkDown = 6, kError = 7, kLoopback = 8 };

inline constexpr std::uint32_t kClass3 = 0x8;

}  // namespace simulator::fc_hba
