#include "live_view_rows.h"

#include <algorithm>
#include <array>
#include <span>

#include "decode.h"
#include "repetition.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

using CounterField = std::int64_t HbaPortStatistics::*;

constexpr std::array<CounterField, 1> kReceivedWords{&HbaPortStatistics::RxWords};
constexpr std::array<CounterField, 1> kSentWords{&HbaPortStatistics::TxWords};
constexpr std::array<CounterField, 2> kFrames{&HbaPortStatistics::RxFrames, &HbaPortStatistics::TxFrames};
constexpr std::array<CounterField, 8> kErrors{
    &HbaPortStatistics::ErrorFrames,        &HbaPortStatistics::DumpedFrames,      &HbaPortStatistics::LinkFailureCount,
    &HbaPortStatistics::LossOfSyncCount,    &HbaPortStatistics::LossOfSignalCount, &HbaPortStatistics::PrimitiveSeqProtocolErrCount,
    &HbaPortStatistics::InvalidTxWordCount, &HbaPortStatistics::InvalidCRCCount};

// What lies between two readings.
struct Span {
  const HbaPortStatistics& before;
  const HbaPortStatistics& now;
  double seconds;
  const SupportedCounters& supported;
};

// Counters together, as far as the adapter has them. What happened to one of them marks the sum: a reset hides it.
std::optional<Rate> rate_of(std::span<const CounterField> fields, const Span& span, std::uint64_t unit = 1) {
  std::optional<Rate> rate;
  double distance = 0;
  for (const CounterField field : fields) {
    const Counter& counter = *std::ranges::find(kPortCounters, field, &Counter::field);
    const auto from = value_of(span.before, counter, span.supported);
    const auto to = value_of(span.now, counter, span.supported);
    if (!from || !to) continue;
    const Movement moved = movement(*from, *to, was_restarted(span.before, span.now));
    if (!rate) rate.emplace();
    rate->kind = std::max(rate->kind, moved.kind);
    distance += static_cast<double>(moved.distance);
  }
  if (rate && rate->kind != Movement::Kind::kReset) rate->per_second = distance * static_cast<double>(unit) / span.seconds;
  return rate;
}

std::vector<LiveRow> rows_of(std::uint32_t adapters) {
  std::vector<LiveRow> rows(adapters);
  for (std::uint32_t adapter = 0; adapter < adapters; ++adapter) rows[adapter].adapter = adapter;
  return rows;
}

}  // namespace

LiveRates rates_between(const HbaPortStatistics& before, const HbaPortStatistics& now, double seconds,
                        const SupportedCounters& supported) {
  const Span span{before, now, seconds, supported};
  return {.seconds = seconds,
          .received = rate_of(kReceivedWords, span, kWordBytes),
          .sent = rate_of(kSentWords, span, kWordBytes),
          .frames = rate_of(kFrames, span),
          .errors = rate_of(kErrors, span)};
}

LiveRows::LiveRows(std::uint32_t adapters) : rows_(rows_of(adapters)), last_(adapters) {}

std::vector<Failure> LiveRows::read() {
  std::vector<Failure> failures;
  for (LiveRow& row : rows_) {
    const std::string problem_before = row.problem;
    row.rates = {};
    row.problem.clear();
    try {
      read(row, last_[row.adapter]);
    } catch (const Failure& failure) {
      row.problem = failure.message;
      if (row.problem != problem_before) failures.push_back(failure);
    }
    row.history.push_back(throughput(row.rates));
    if (row.history.size() > kMostHistory) row.history.pop_front();
  }
  return failures;
}

void LiveRows::read(LiveRow& row, std::optional<Reading>& last) {
  row.state.reset();
  row.speed.reset();
  if (!row.model) row.model = text_of(read_adapter(row.adapter).Model);
  const HbaPortAttributes port = read_port(row.adapter);
  row.state = port_state_cell(port.PortState).text;
  if (port.PortSpeed != 0) row.speed = speed_cell(port.PortSpeed).text;
  const auto time = std::chrono::steady_clock::now();
  const HbaPortStatistics statistics = read_statistics(row.adapter);
  if (!last) {
    last = Reading{time, statistics, SupportedCounters(statistics)};
    return;
  }
  row.rates = rates_between(last->statistics, statistics, Seconds(time - last->time).count(), last->supported);
  last->time = time;
  last->statistics = statistics;
}

}  // namespace vaskdfc::tool
