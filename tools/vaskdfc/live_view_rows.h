// The rows of a live view, as the adapters fill them.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "counters.h"
#include "failure.h"
#include "live_view.h"

namespace vaskdfc::tool {

// How fast the counters moved in so many seconds.
LiveRates rates_between(const HbaPortStatistics& before, const HbaPortStatistics& now, double seconds,
                        const SupportedCounters& supported);

// All adapters, read again and again. One that fails stays among them, and goes on where it left off once it answers again.
class LiveRows {
 public:
  explicit LiveRows(std::uint32_t adapters);

  // Reads every adapter. Returns the failures that are new since the reading before.
  std::vector<Failure> read();
  const std::vector<LiveRow>& rows() const { return rows_; }

 private:
  struct Reading {
    std::chrono::steady_clock::time_point time;
    HbaPortStatistics statistics;
    SupportedCounters supported;  // as the first reading told
  };

  static void read(LiveRow& row, std::optional<Reading>& last);

  std::vector<LiveRow> rows_;
  std::vector<std::optional<Reading>> last_;  // of each row, the latest that did not fail
};

}  // namespace vaskdfc::tool
