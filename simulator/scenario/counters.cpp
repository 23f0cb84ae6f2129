#include "scenario/counters.h"

#include <nlohmann/json.hpp>

namespace simulator::scenario {
namespace {

using nlohmann::json;

struct Usual {
  std::string_view name;
  Counter counter;
};

// A port that moves frames of some kilobytes. LIPs belong to loops, and no adapter of the family counts dumped frames.
constexpr std::array kConnected{
    Usual{"tx_frames", {.start = 184320, .per_second = 1200}},
    Usual{"tx_words", {.start = 94371840, .per_second = 614400}},
    Usual{"rx_frames", {.start = 276480, .per_second = 1800}},
    Usual{"rx_words", {.start = 141557760, .per_second = 921600}},
    Usual{"nos", {.start = 1}},
    Usual{"link_failures", {.start = 1}},
    Usual{"losses_of_sync", {.start = 2}},
};
constexpr std::array kAny{
    Usual{"seconds", {.per_second = 1}},
    Usual{"lips", {.supported = false}},
    Usual{"dumped_frames", {.supported = false}},
};

template <std::size_t N>
void take(const std::array<Usual, N>& usual, std::string_view name, Counter& counter) {
  for (const Usual& one : usual) {
    if (one.name == name) counter = one.counter;
  }
}

void change(const json& value, Counter& counter) {
  counter = {.start = value.value("start", counter.start),
             .per_second = value.value("per_second", counter.per_second),
             .wraps = value.contains("wraps") ? std::optional<std::uint32_t>(value["wraps"]) : std::nullopt,
             .supported = !value.value("unsupported", false)};
}

}  // namespace

Counters counters(const json& adapter) {
  const json changes = adapter.value("counters", json::object());
  Counters result;
  for (std::size_t i = 0; i < result.size(); ++i) {
    take(kAny, kCounterNames[i], result[i]);
    if (adapter.contains("fabric")) take(kConnected, kCounterNames[i], result[i]);
    if (changes.contains(kCounterNames[i])) change(changes[kCounterNames[i]], result[i]);
  }
  return result;
}

}  // namespace simulator::scenario
