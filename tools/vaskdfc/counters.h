// Port counters: what each counts, and how they move between two readings.
#pragma once

#include <vaskdfc/statistics.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "report.h"

namespace vaskdfc::tool {

struct Counter {
  const char* key;
  const char* title;
  const char* unit;
  std::int64_t HbaPortStatistics::*field;
};

inline constexpr std::size_t kCounters = 15;
extern const std::array<Counter, kCounters> kPortCounters;  // in the order of the record

// Counters of words can be told as bytes.
inline constexpr std::uint64_t kWordBytes = 4;
bool counts_words(const Counter& counter);

// Which counters an adapter has. The value that says so is lost once the counters are told relative to a baseline, so it is kept.
class SupportedCounters {
 public:
  explicit SupportedCounters(const HbaPortStatistics& as_the_driver_tells);
  bool has(const Counter& counter) const { return supported_[static_cast<std::size_t>(&counter - kPortCounters.data())]; }

 private:
  std::array<bool, kCounters> supported_;
};

// A counter's value; nothing for a counter that the adapter does not have.
std::optional<std::uint64_t> value_of(const HbaPortStatistics& statistics, const Counter& counter,
                                      const SupportedCounters& supported);

// How a counter moved from one reading to the next.
struct Movement {
  enum class Kind {
    kForward,
    kWrapped,  // it passed its end and went on from 0
    kReset,    // it was started again, so nobody knows how far it went
  };
  Kind kind = Kind::kForward;
  std::uint64_t distance = 0;  // 0 after a reset
};

// `restarted`: the adapter says that its counters were started again in between.
Movement movement(std::uint64_t before, std::uint64_t now, bool restarted);

// Whether the adapter's counters were started again between two readings, by the seconds that it counts itself.
bool was_restarted(const HbaPortStatistics& before, const HbaPortStatistics& now);

// "wrap", "reset", or absent.
Cell mark_cell(Movement::Kind kind);

// Reads the counters; a Failure says why it could not.
HbaPortStatistics read_statistics(std::uint32_t adapter);

}  // namespace vaskdfc::tool
