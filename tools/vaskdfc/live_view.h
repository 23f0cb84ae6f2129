// The screen of a live view of all adapters: a line each, redrawn with every sample. Drawing is a function of rows and options
// alone, so that it can be tested without a terminal.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "counters.h"

namespace vaskdfc::tool {

// How fast counters move.
struct Rate {
  std::optional<double> per_second;  // nothing after a reset
  Movement::Kind kind = Movement::Kind::kForward;
};

// Rates of one adapter. One is missing before there are two readings, and where the adapter does not have the counters.
struct LiveRates {
  std::optional<double> seconds;  // between the two readings
  std::optional<Rate> received;   // bytes
  std::optional<Rate> sent;       // bytes
  std::optional<Rate> frames;     // both ways
  std::optional<Rate> errors;     // of all kinds together
};

// Bytes both ways; nothing where a direction is not known.
std::optional<double> throughput(const LiveRates& rates);

struct LiveRow {
  std::uint32_t adapter = 0;
  std::optional<std::string> model;
  std::optional<std::string> state;
  std::optional<std::string> speed;  // nothing while there is none
  LiveRates rates;
  std::string problem;                        // why the adapter cannot be read; empty if it can
  std::deque<std::optional<double>> history;  // of the throughput, the newest last
};

// More than the widest sparkline shows.
inline constexpr std::size_t kMostHistory = 200;

enum class SortKey { kAdapter, kThroughput, kFrames, kErrors };

struct ViewOptions {
  std::size_t columns = 80;
  std::size_t lines = 24;
  SortKey sort = SortKey::kAdapter;
  bool reversed = false;
  std::size_t page = 0;  // of the adapters, if they do not fit; counts on past the last, where the first comes again
  bool utf8 = false;
  bool colour = false;
};

// Busiest first, unless reversed; adapters by number. Those without a rate come last either way.
std::vector<LiveRow> sorted(std::vector<LiveRow> rows, SortKey key, bool reversed);

// Ends a view; all other keys change what it shows.
inline constexpr char kQuitKey = 'q';

// What a key changes, if it means anything here.
void apply_key(char key, ViewOptions& options);

// The lines of the screen from the top, as many as it has.
std::vector<std::string> draw(const std::vector<LiveRow>& rows, const std::string& heading, const ViewOptions& options);

// The same columns for people without a terminal, but for the sparkline: titles, and a row.
std::string plain_titles();
std::string plain_line(std::uint32_t sample, const LiveRow& row);

// A block for each value, relative to the largest of them; blank where a value is not known.
std::string sparkline(const std::deque<std::optional<double>>& history, std::size_t width, bool utf8);

}  // namespace vaskdfc::tool
