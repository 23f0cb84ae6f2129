// What is measured, and what is to be reached.
#pragma once

#include <string>
#include <vector>

#include "library.h"
#include "stopwatch.h"

namespace bench {

enum class Goal { kAtMost, kAtLeast, kNone };

struct Figure {
  std::string what;
  std::string against;
  double value;  // a ratio unless `unit` says something else
  double limit = 0;
  Goal goal = Goal::kAtMost;
  std::string unit = {};
  Times times = {};  // nanoseconds, where the value is a ratio of them
};

using Figures = std::vector<Figure>;

inline Figure ratio_of(std::string what, std::string against, const Times& times, double limit) {
  return {.what = std::move(what), .against = std::move(against), .value = times.ours / times.bare, .limit = limit, .times = times};
}

// Each adds its figures. The library is started, its log is off.
void measure_calls(const Library& library, Figures& figures);
void measure_transfers(const Library& library, Figures& figures);
void measure_log(const Library& library, Figures& figures);
void measure_rules(const Library& library, Figures& figures);
void measure_mapping(const Library& library, Figures& figures);
void measure_threads(const Library& library, Figures& figures);

// With no library loaded yet.
void measure_faults(const std::string& path, Figures& figures);
void measure_start(const std::string& path, const std::string& bare_path, Figures& figures);

}  // namespace bench
