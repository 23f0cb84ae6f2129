// Port statistics, relative to a baseline that lives in this process.
#include "vaskdfc/statistics.h"

#include <array>
#include <bit>

#include "transport/board_table.h"
#include "transport/call_frame.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kStatistics{.function = "GetPortStatistics", .callback = Callback::kHbaPortStatistics, .lines = {78, 82}};

constexpr int64_t kUnsupported = -1;

// Differences wrap: a counter that restarted below its baseline and one that is not supported are no special cases.
HbaPortStatistics difference(const HbaPortStatistics& now, const HbaPortStatistics& baseline) {
  using Counters = std::array<uint64_t, 15>;
  auto counters = std::bit_cast<Counters>(now);
  const auto subtrahends = std::bit_cast<Counters>(baseline);
  for (std::size_t i = 0; i < counters.size(); ++i) counters[i] -= subtrahends[i];
  return std::bit_cast<HbaPortStatistics>(counters);
}

}  // namespace

uint32_t GetPortStatistics(uint32_t board, uint32_t port, HbaPortStatistics* statistics) {
  auto header = header_for(board);
  HbaPortStatistics reply{};
  if (!invoke<kStatistics>(board, header, reply).ok()) return HBA_STATUS_ERROR;

  if (port != HBA_RAW_STATISTICS) {
    *statistics = difference(reply, dfc_rststatistics[board]);
    return HBA_STATUS_OK;
  }
  // These three stay "not supported" after a reset, because a baseline of 0 leaves the driver's -1 as it is.
  for (auto counter : {&HbaPortStatistics::DumpedFrames, &HbaPortStatistics::LIPCount, &HbaPortStatistics::NOSCount}) {
    if (reply.*counter == kUnsupported) reply.*counter = 0;
  }
  *statistics = reply;
  return HBA_STATUS_OK;
}

uint32_t ResetStatistics(uint32_t board) { return GetPortStatistics(board, HBA_RAW_STATISTICS, &dfc_rststatistics[board]); }
