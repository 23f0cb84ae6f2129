#include "counters.h"

#include <vaskdfc/result.h>

#include <algorithm>

#include "failure.h"

namespace vaskdfc::tool {
namespace {

constexpr const char* kWordsUnit = "words";

// Counters of the hardware have 32 bits. One that fell by more than half of that is taken for one that passed its end.
constexpr std::uint64_t kHardwareRange = std::uint64_t{1} << 32;
constexpr std::uint64_t kHalfOfAllValues = std::uint64_t{1} << 63;

}  // namespace

const std::array<Counter, kCounters> kPortCounters{{
    {"seconds_since_last_reset", "Seconds since last reset", "s", &HbaPortStatistics::SecondsSinceLastReset},
    {"tx_frames", "Transmitted frames", "frames", &HbaPortStatistics::TxFrames},
    {"tx_words", "Transmitted words", kWordsUnit, &HbaPortStatistics::TxWords},
    {"rx_frames", "Received frames", "frames", &HbaPortStatistics::RxFrames},
    {"rx_words", "Received words", kWordsUnit, &HbaPortStatistics::RxWords},
    {"lip_count", "LIPs", "events", &HbaPortStatistics::LIPCount},
    {"nos_count", "NOS", "events", &HbaPortStatistics::NOSCount},
    {"error_frames", "Error frames", "frames", &HbaPortStatistics::ErrorFrames},
    {"dumped_frames", "Dumped frames", "frames", &HbaPortStatistics::DumpedFrames},
    {"link_failures", "Link failures", "events", &HbaPortStatistics::LinkFailureCount},
    {"losses_of_sync", "Losses of sync", "events", &HbaPortStatistics::LossOfSyncCount},
    {"losses_of_signal", "Losses of signal", "events", &HbaPortStatistics::LossOfSignalCount},
    {"primitive_sequence_errors", "Primitive sequence protocol errors", "errors", &HbaPortStatistics::PrimitiveSeqProtocolErrCount},
    {"invalid_tx_words", "Invalid transmission words", kWordsUnit, &HbaPortStatistics::InvalidTxWordCount},
    {"invalid_crcs", "Invalid CRCs", "frames", &HbaPortStatistics::InvalidCRCCount},
}};

bool counts_words(const Counter& counter) { return counter.unit == kWordsUnit; }

SupportedCounters::SupportedCounters(const HbaPortStatistics& as_the_driver_tells) : supported_{} {
  std::ranges::transform(kPortCounters, supported_.begin(),
                         [&](const Counter& counter) { return as_the_driver_tells.*counter.field != -1; });
}

std::optional<std::uint64_t> value_of(const HbaPortStatistics& statistics, const Counter& counter,
                                      const SupportedCounters& supported) {
  if (!supported.has(counter)) return std::nullopt;
  return static_cast<std::uint64_t>(statistics.*counter.field);
}

Movement movement(std::uint64_t before, std::uint64_t now, bool restarted) {
  if (restarted) return {.kind = Movement::Kind::kReset};
  const std::uint64_t forward = now - before;
  const bool passed_the_end = now < before;
  if (forward < kHalfOfAllValues) return {passed_the_end ? Movement::Kind::kWrapped : Movement::Kind::kForward, forward};
  const std::uint64_t back = before - now;
  if (back > kHardwareRange / 2 && back < kHardwareRange) return {Movement::Kind::kWrapped, kHardwareRange - back};
  return {.kind = Movement::Kind::kReset};
}

bool was_restarted(const HbaPortStatistics& before, const HbaPortStatistics& now) {
  return now.SecondsSinceLastReset < before.SecondsSinceLastReset;
}

Cell mark_cell(Movement::Kind kind) {
  switch (kind) {
    case Movement::Kind::kForward: return absent();
    case Movement::Kind::kWrapped: return text_cell("wrap");
    case Movement::Kind::kReset: return text_cell("reset");
  }
  return absent();
}

HbaPortStatistics read_statistics(std::uint32_t adapter) {
  HbaPortStatistics statistics{};
  watch_driver_calls();
  const std::uint32_t result = GetPortStatistics(adapter, 0, &statistics);
  if (result != HBA_STATUS_OK) {
    throw operation_failure("the port counters cannot be read", adapter, "GetPortStatistics", Results::kHba, result);
  }
  return statistics;
}

}  // namespace vaskdfc::tool
