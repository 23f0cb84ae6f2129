#include "counters.h"

#include <gtest/gtest.h>

#include <set>

namespace vaskdfc::tool {
namespace {

using Kind = Movement::Kind;

void expect_movement(std::uint64_t before, std::uint64_t now, Kind kind, std::uint64_t distance) {
  const Movement moved = movement(before, now, false);
  EXPECT_EQ(moved.kind, kind) << before << " to " << now;
  EXPECT_EQ(moved.distance, distance) << before << " to " << now;
}

TEST(Counters, move_forward) {
  expect_movement(0, 0, Kind::kForward, 0);
  expect_movement(5, 12, Kind::kForward, 7);
  expect_movement(0xFFFFFFF0, 0x100000010, Kind::kForward, 0x20);
}

TEST(Counters, wrap_at_the_end_of_their_bits) {
  expect_movement(0xFFFFFFF0, 0x10, Kind::kWrapped, 0x20);
  expect_movement(UINT64_MAX - 0xF, 0x10, Kind::kWrapped, 0x20);
}

TEST(Counters, are_reset_when_they_fall_for_no_other_reason) {
  expect_movement(1000, 3, Kind::kReset, 0);
  expect_movement(0x80000000, 0, Kind::kReset, 0);
  expect_movement(0x100000000, 0, Kind::kReset, 0);
}

TEST(Counters, are_reset_when_they_fall_below_their_baseline) {
  expect_movement(500, static_cast<std::uint64_t>(-1000), Kind::kReset, 0);
}

TEST(Counters, are_reset_when_the_adapter_says_so) {
  EXPECT_EQ(movement(0xFFFFFFF0, 0x10, true).kind, Kind::kReset);
  EXPECT_EQ(movement(5, 12, true).distance, 0U);
  HbaPortStatistics before{};
  HbaPortStatistics now{};
  before.SecondsSinceLastReset = 100;
  now.SecondsSinceLastReset = 100;
  EXPECT_FALSE(was_restarted(before, now));
  now.SecondsSinceLastReset = 2;
  EXPECT_TRUE(was_restarted(before, now));
}

TEST(Counters, cover_the_whole_record_in_its_order) {
  HbaPortStatistics statistics{};
  for (std::size_t i = 0; i < kCounters; ++i) statistics.*kPortCounters[i].field = static_cast<std::int64_t>(i);
  const SupportedCounters supported(statistics);
  std::set<std::string> keys;
  const auto* const record = reinterpret_cast<const std::int64_t*>(&statistics);
  for (std::size_t i = 0; i < kCounters; ++i) {
    EXPECT_EQ(record[i], static_cast<std::int64_t>(i));
    EXPECT_EQ(value_of(statistics, kPortCounters[i], supported), i);
    keys.insert(kPortCounters[i].key);
  }
  EXPECT_EQ(keys.size(), kCounters);
}

TEST(Counters, that_an_adapter_does_not_have_stay_unsupported_after_a_reset) {
  HbaPortStatistics statistics{};
  statistics.LIPCount = -1;
  const SupportedCounters supported(statistics);
  statistics.LIPCount = 0;
  EXPECT_EQ(value_of(statistics, kPortCounters[5], supported), std::nullopt);
  EXPECT_EQ(value_of(statistics, kPortCounters[6], supported), 0U);
}

}  // namespace
}  // namespace vaskdfc::tool
