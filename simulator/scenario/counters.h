// A port's counters: where each begins and how fast it grows.
#pragma once

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

namespace simulator::scenario {

struct Counter {
  std::uint64_t start = 0;
  std::uint64_t per_second = 0;
  std::optional<std::uint32_t> wraps;  // after so many bits; none: never within 64
  bool supported = true;
};

// By the names that scenarios use, in the order of HbaPortStatistics.
inline constexpr std::array<const char*, 15> kCounterNames{"seconds",
                                                           "tx_frames",
                                                           "tx_words",
                                                           "rx_frames",
                                                           "rx_words",
                                                           "lips",
                                                           "nos",
                                                           "error_frames",
                                                           "dumped_frames",
                                                           "link_failures",
                                                           "losses_of_sync",
                                                           "losses_of_signal",
                                                           "protocol_errors",
                                                           "invalid_words",
                                                           "invalid_crcs"};

using Counters = std::array<Counter, kCounterNames.size()>;

// Those of an adapter: what it says about each, else what a port of its kind usually counts.
Counters counters(const nlohmann::json& adapter);

}  // namespace simulator::scenario
