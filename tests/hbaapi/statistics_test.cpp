#include "vaskdfc/statistics.h"

#include <bit>
#include <limits>

#include "support/adapter_test.h"
#include "transport/board_table.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using Counters = std::array<std::int64_t, 15>;

constexpr const char* kCallback = "TREL_MGMT_HBA_PORTSTATISTICS";
constexpr std::size_t kLip = 5;
constexpr std::size_t kNos = 6;
constexpr std::size_t kDumped = 8;

class StatisticsTest : public test::AdapterTest {
 protected:
  StatisticsTest() { map_board(4, 6); }

  void expect_counters(const Counters& counters, std::uint32_t driver_board = kDriverBoard) {
    driver.expect(
        {.callback = Callback::kHbaPortStatistics, .sent = {.brdno = driver_board}, .payload = {test::bytes_of(counters)}});
  }
  static Counters numbered(std::int64_t first) {
    Counters counters;
    for (std::int64_t& counter : counters) counter = first++;
    return counters;
  }
  Counters read(std::uint32_t board = kBoard, std::uint32_t port = 0) {
    HbaPortStatistics statistics{};
    EXPECT_EQ(GetPortStatistics(board, port, &statistics), HBA_STATUS_OK);
    return std::bit_cast<Counters>(statistics);
  }
};

TEST_F(StatisticsTest, are_the_drivers_before_any_reset) {
  const Counters counters = numbered(-3);
  expect_counters(counters);
  start_log();
  EXPECT_EQ(read(), counters);
  EXPECT_EQ(log(), test::call_line("GetPortStatistics", 78, kCallback) + test::ok_line("GetPortStatistics", 82, kCallback));
}

TEST_F(StatisticsTest, start_again_from_zero_after_a_reset) {
  expect_counters(numbered(1000));
  EXPECT_EQ(ResetStatistics(kBoard), HBA_STATUS_OK);
  expect_counters(numbered(1000));
  EXPECT_EQ(read(), Counters{});
  expect_counters(numbered(1007));
  Counters seven;
  seven.fill(7);
  EXPECT_EQ(read(), seven);
}

TEST_F(StatisticsTest, keep_three_unsupported_counters_unsupported_across_a_reset) {
  Counters all_unsupported;
  all_unsupported.fill(-1);
  expect_counters(all_unsupported);
  EXPECT_EQ(ResetStatistics(kBoard), HBA_STATUS_OK);

  // The others have -1 as their baseline and read as the driver's value plus one.
  expect_counters(all_unsupported);
  Counters expected{};
  expected[kLip] = expected[kNos] = expected[kDumped] = -1;
  EXPECT_EQ(read(), expected);
  Counters now;
  now.fill(41);
  expect_counters(now);
  expected.fill(42);
  expected[kLip] = expected[kNos] = expected[kDumped] = 41;
  EXPECT_EQ(read(), expected);
}

TEST_F(StatisticsTest, wrap_where_the_driver_has_restarted_a_counter) {
  Counters high;
  high.fill(std::numeric_limits<std::int64_t>::max());
  expect_counters(high);
  EXPECT_EQ(ResetStatistics(kBoard), HBA_STATUS_OK);
  Counters low;
  low.fill(-2);
  expect_counters(low);
  Counters expected;
  expected.fill(std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(read(), expected);
  expect_counters(Counters{});
  expected.fill(std::numeric_limits<std::int64_t>::min() + 1);
  EXPECT_EQ(read(), expected);
}

TEST_F(StatisticsTest, are_raw_for_the_port_that_asks_for_it_and_leave_the_baseline) {
  expect_counters(numbered(100));
  EXPECT_EQ(ResetStatistics(kBoard), HBA_STATUS_OK);
  Counters raw = numbered(1);
  raw[0] = raw[kLip] = raw[kNos] = raw[kDumped] = -1;
  expect_counters(raw);
  Counters expected = raw;
  expected[kLip] = expected[kNos] = expected[kDumped] = 0;
  EXPECT_EQ(read(kBoard, HBA_RAW_STATISTICS), expected);
  expect_counters(numbered(100));
  EXPECT_EQ(read(), Counters{});
}

TEST_F(StatisticsTest, have_a_baseline_for_each_board) {
  expect_counters(numbered(100));
  EXPECT_EQ(ResetStatistics(kBoard), HBA_STATUS_OK);
  expect_counters(numbered(100), 6);
  EXPECT_EQ(read(4), numbered(100));
}

TEST_F(StatisticsTest, stay_as_they_were_when_the_call_fails) {
  expect_counters(numbered(100));
  EXPECT_EQ(ResetStatistics(kBoard), HBA_STATUS_OK);
  start_log(kLogError);
  for (const auto& [platform_status, driver_status] : {std::pair{9u, 0u}, {0u, 0xBAD0020u}}) {
    const test::ExpectedCall failure{.callback = Callback::kHbaPortStatistics,
                                     .sent = {.brdno = kDriverBoard},
                                     .platform_status = platform_status,
                                     .driver_status = driver_status,
                                     .payload = {test::bytes_of(numbered(5))}};
    driver.expect(failure);
    EXPECT_EQ(ResetStatistics(kBoard), HBA_STATUS_ERROR);
    driver.expect(failure);
    HbaPortStatistics statistics{.TxFrames = 77};
    EXPECT_EQ(GetPortStatistics(kBoard, 0, &statistics), HBA_STATUS_ERROR);
    EXPECT_EQ(test::bytes_of(statistics), test::bytes_of(HbaPortStatistics{.TxFrames = 77}));
  }
  expect_counters(numbered(100));
  EXPECT_EQ(read(), Counters{});
  EXPECT_TRUE(log().starts_with(test::error_line("GetPortStatistics", 82, kCallback, "x9:x0")));
}

}  // namespace
}  // namespace vaskdfc
