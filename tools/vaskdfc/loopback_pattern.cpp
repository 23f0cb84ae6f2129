#include "loopback_pattern.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace vaskdfc::tool {
namespace {

constexpr std::array kNames{std::pair{"walking-ones", Pattern::Kind::kWalkingOnes}, std::pair{"prbs15", Pattern::Kind::kPrbs15},
                            std::pair{"prbs31", Pattern::Kind::kPrbs31}};

// The two bits of the shift register that make the next one: x^15 + x^14 + 1 and x^31 + x^28 + 1.
struct Taps {
  int length;
  int other;
};
constexpr Taps kPrbs15Taps{15, 14};
constexpr Taps kPrbs31Taps{31, 28};

constexpr std::uint32_t ones(int bits) { return (std::uint32_t{1} << bits) - 1; }

}  // namespace

Pattern::Pattern(Kind kind, std::vector<std::uint8_t> bytes)
    : kind_(kind), bytes_(std::move(bytes)), register_(ones(kind == Kind::kPrbs15 ? kPrbs15Taps.length : kPrbs31Taps.length)) {}

std::vector<std::uint8_t> Pattern::next(std::size_t count) {
  std::vector<std::uint8_t> data(count);
  for (std::size_t i = 0; i < count; ++i) {
    switch (kind_) {
      case Kind::kWalkingOnes: data[i] = static_cast<std::uint8_t>(1U << position_++ % 8); break;
      case Kind::kBytes: data[i] = bytes_[i % bytes_.size()]; break;
      case Kind::kPrbs15:
      case Kind::kPrbs31: data[i] = random_byte(); break;
    }
  }
  return data;
}

std::uint8_t Pattern::random_byte() {
  const Taps& taps = kind_ == Kind::kPrbs15 ? kPrbs15Taps : kPrbs31Taps;
  std::uint32_t byte = 0;
  for (int bit = 0; bit < 8; ++bit) {
    const std::uint32_t next = (register_ >> (taps.length - 1) ^ register_ >> (taps.other - 1)) & 1;
    register_ = (register_ << 1 | next) & ones(taps.length);
    byte = byte << 1 | next;
  }
  return static_cast<std::uint8_t>(byte);
}

std::optional<Pattern::Kind> pattern_named(const std::string& name) {
  for (const auto& [known, kind] : kNames) {
    if (name == known) return kind;
  }
  return std::nullopt;
}

std::vector<std::string> pattern_names() {
  std::vector<std::string> names;
  for (const auto& [name, kind] : kNames) names.emplace_back(name);
  return names;
}

Comparison compare(Bytes sent, Bytes received) {
  Comparison comparison;
  const auto at = [](Bytes bytes, std::size_t i) { return i < bytes.size() ? bytes[i] : std::uint8_t{0}; };
  const std::size_t both = std::min(sent.size(), received.size());
  for (std::size_t i = 0; i < std::max(sent.size(), received.size()); ++i) {
    if (i < both && sent[i] == received[i]) continue;
    if (!comparison.first) {
      comparison.first = i;
      comparison.sent = at(sent, i);
      comparison.received = at(received, i);
    }
    ++comparison.bytes;
    comparison.bits += i < both ? static_cast<std::uint64_t>(std::popcount(static_cast<std::uint8_t>(sent[i] ^ received[i]))) : 8;
  }
  return comparison;
}

}  // namespace vaskdfc::tool
