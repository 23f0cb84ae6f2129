// Port counters.
#include "vaskdfc/statistics.h"

#include <chrono>
#include <thread>

#include "sim_process.h"

namespace {

HbaPortStatistics counters(Session& session, std::uint32_t board = 2) {
  auto reply = garbage<HbaPortStatistics>();
  EXPECT_EQ(session.call<Callback::kHbaPortStatistics>({.brdno = board}, reply).status, 0u);
  return reply;
}

json with_counters(const char* counters) {
  json scenario = small_scenario();
  scenario["clock"] = {{"step_ms", 2500}};
  scenario["adapters"][0]["counters"] = json::parse(counters);
  return scenario;
}

TEST(Statistics, grow_with_each_step_of_the_clock) {
  under_scenario(with_counters(R"({"tx_frames": {"start": 100, "per_second": 10}, "invalid_crcs": {"start": 7},
                                   "rx_words": {"per_second": 1}})"),
                 [] {
                   Session session;
                   const HbaPortStatistics first = counters(session);
                   EXPECT_EQ(first.SecondsSinceLastReset, 2);
                   EXPECT_EQ(first.TxFrames, 125);
                   EXPECT_EQ(first.RxWords, 141557760 + 2);
                   EXPECT_EQ(first.InvalidCRCCount, 7);
                   const HbaPortStatistics second = counters(session);
                   EXPECT_EQ(second.SecondsSinceLastReset, 5);
                   EXPECT_EQ(second.TxFrames, 150);
                   EXPECT_EQ(second.InvalidCRCCount, 7);
                 });
}

TEST(Statistics, every_counter_has_its_name) {
  under_scenario(with_counters(R"({"seconds": {"start": 1, "per_second": 0}, "tx_frames": {"start": 2, "per_second": 0},
        "tx_words": {"start": 3, "per_second": 0}, "rx_frames": {"start": 4, "per_second": 0},
        "rx_words": {"start": 5, "per_second": 0}, "lips": {"start": 6}, "nos": {"start": 7}, "error_frames": {"start": 8},
        "dumped_frames": {"start": 9}, "link_failures": {"start": 10}, "losses_of_sync": {"start": 11},
        "losses_of_signal": {"start": 12}, "protocol_errors": {"start": 13}, "invalid_words": {"start": 14},
        "invalid_crcs": {"start": 15}})"),
                 [] {
                   Session session;
                   const auto values = std::bit_cast<std::array<std::int64_t, 15>>(counters(session));
                   for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(values[i], static_cast<std::int64_t>(i + 1)) << i;
                 });
}

TEST(Statistics, wrap_after_their_bits_and_may_be_unsupported) {
  under_scenario(with_counters(R"({"tx_frames": {"start": 250, "per_second": 4, "wraps": 8},
    "rx_frames": {"start": 9223372036854775807, "per_second": 0, "wraps": 63}, "rx_words": {"unsupported": true},
    "tx_words": {"start": 9223372036854775807, "per_second": 0}})"),
                 [] {
                   Session session;
                   const HbaPortStatistics first = counters(session);
                   EXPECT_EQ(first.TxFrames, 260 % 256);
                   EXPECT_EQ(first.RxFrames, std::numeric_limits<std::int64_t>::max());
                   EXPECT_EQ(first.TxWords, std::numeric_limits<std::int64_t>::max());
                   EXPECT_EQ(first.RxWords, -1);
                   EXPECT_EQ(counters(session).TxFrames, 270 % 256);
                 });
}

TEST(Statistics, a_restart_of_the_adapter_begins_at_zero) {
  under_scenario(with_counters(R"({"tx_frames": {"start": 100, "per_second": 10}, "nos": {"start": 3}})"), [] {
    Session session;
    EXPECT_EQ(counters(session).TxFrames, 125);
    session.call<Callback::kSetDiag>({.brdno = 2, .arg6 = 0x12});
    EXPECT_EQ(counters(session).TxFrames, 150) << "going offline is no restart";
    session.call<Callback::kSetDiag>({.brdno = 2, .arg6 = 0x14});
    const HbaPortStatistics restarted = counters(session);
    EXPECT_EQ(restarted.TxFrames, 25);
    EXPECT_EQ(restarted.SecondsSinceLastReset, 2);
    EXPECT_EQ(restarted.NOSCount, 0);
    EXPECT_EQ(restarted.LIPCount, -1);
  });
}

TEST(Statistics, of_the_built_in_scenario_follow_the_host_and_tell_a_cable_from_none) {
  in_process({}, [] {
    Session session;
    const HbaPortStatistics before = counters(session, 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const HbaPortStatistics after = counters(session, 1);
    EXPECT_GE(after.RxWords - before.RxWords, 20 * 921);
    EXPECT_GT(after.TxFrames, before.TxFrames);
    EXPECT_EQ(after.LIPCount, -1);
    EXPECT_EQ(after.DumpedFrames, -1);
    EXPECT_EQ(after.NOSCount, 1);

    const HbaPortStatistics unplugged = counters(session, 4);
    EXPECT_EQ(unplugged.TxFrames, 0);
    EXPECT_EQ(unplugged.NOSCount, 0);
    EXPECT_EQ(unplugged.LIPCount, -1);

    auto reply = garbage<HbaPortStatistics>();
    EXPECT_EQ(session.call<Callback::kHbaPortStatistics>({.brdno = 12}, reply).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
  });
}

}  // namespace
