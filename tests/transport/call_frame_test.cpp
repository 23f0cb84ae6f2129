#include "transport/call_frame.h"

#include "support/library_test.h"
#include "transport/log.h"
#include "transport/status_map.h"

namespace vaskdfc {
namespace {

constexpr CallSite kSite{.function = "EventTest", .callback = Callback::kEventTest, .lines = {123, 45678}};
constexpr CallSite kRenamed{.function = "DFC_ConfigLoopback",
                            .callback = Callback::kLoopbackMode,
                            .lines = {7, 8},
                            .call_name = "TREL_MGMT_HBA_WWPNPORTATTRIBUTES"};

class CallFrameTest : public test::LibraryTest {};

TEST_F(CallFrameTest, sends_a_header_that_is_zero_but_for_the_board) {
  map_board(2, 17);
  driver.expect({.callback = Callback::kEventTest, .sent = {.brdno = 17}});

  auto header = header_for(2);
  EXPECT_TRUE(invoke<kSite>(2, header).ok());
}

TEST_F(CallFrameTest, sends_all_ones_for_a_board_index_that_was_never_filled) {
  map_board(31, kNoBoard);
  driver.expect({.callback = Callback::kEventTest, .sent = {.brdno = 0xFFFFFFFF}, .driver_status = 0x0BAD0011});

  auto header = header_for(31);
  EXPECT_EQ(invoke<kSite>(31, header).status(), 0x0BAD0011u);
}

TEST_F(CallFrameTest, logs_the_call_and_its_success) {
  start_log();
  map_board(2, 17);
  driver.expect({.callback = Callback::kEventTest, .sent = {.brdno = 17}});

  auto header = header_for(2);
  EXPECT_EQ(invoke<kSite>(2, header).status(), 0u);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                 EventTest:  123 call: TREL_MGMT_EVENT_TEST id[4711:4712]\n"
            "2023-11-14T22:13:20                 EventTest:45678 cmd ok:          TREL_MGMT_EVENT_TEST brd[2] id[4711:4712]\n");
}

TEST_F(CallFrameTest, logs_and_returns_the_drivers_status) {
  start_log();
  driver.expect({.callback = Callback::kEventTest, .driver_status = 0x0BAD0039});

  auto header = header_for(0);
  const Outcome outcome = invoke<kSite>(0, header);
  EXPECT_FALSE(outcome.ok());
  EXPECT_EQ(outcome.status(), 0x0BAD0039u);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                 EventTest:  123 call: TREL_MGMT_EVENT_TEST id[4711:4712]\n"
            "2023-11-14T22:13:20                 EventTest:45678 cmd err:         TREL_MGMT_EVENT_TEST brd[0] "
            "stat[x0:xbad0039] id[4711:4712]\n");
}

TEST_F(CallFrameTest, returns_the_platforms_status_when_both_are_nonzero) {
  start_log(kLogError);
  driver.expect({.callback = Callback::kEventTest, .platform_status = 0xFFFFFFF0, .driver_status = 5});

  auto header = header_for(0);
  EXPECT_EQ(invoke<kSite>(0, header).status(), 0xFFFFFFF0u);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                 EventTest:45678 cmd err:         TREL_MGMT_EVENT_TEST brd[0] "
            "stat[xfffffff0:x5] id[4711:4712]\n");
}

TEST_F(CallFrameTest, logs_another_name_where_the_call_site_says_so) {
  start_log();
  driver.expect({.callback = Callback::kLoopbackMode});

  auto header = header_for(0);
  EXPECT_TRUE(invoke<kRenamed>(kNoBoard, header).ok());
  EXPECT_EQ(
      log(),
      "2023-11-14T22:13:20        DFC_ConfigLoopback:    7 call: TREL_MGMT_HBA_WWPNPORTATTRIBUTES id[4711:4712]\n"
      "2023-11-14T22:13:20        DFC_ConfigLoopback:    8 cmd ok:  TREL_MGMT_HBA_WWPNPORTATTRIBUTES brd[-1] id[4711:4712]\n");
}

TEST_F(CallFrameTest, writes_only_the_classes_of_lines_that_the_mask_names) {
  start_log(kLogOk);
  driver.expect({.callback = Callback::kEventTest});
  driver.expect({.callback = Callback::kEventTest, .driver_status = 1});

  auto header = header_for(0);
  EXPECT_TRUE(invoke<kSite>(0, header).ok());
  EXPECT_FALSE(invoke<kSite>(0, header = header_for(0)).ok());
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                 EventTest:45678 cmd ok:          TREL_MGMT_EVENT_TEST brd[0] id[4711:4712]\n");
}

TEST_F(CallFrameTest, gives_the_same_results_without_a_log) {
  driver.expect({.callback = Callback::kEventTest});
  driver.expect({.callback = Callback::kEventTest, .driver_status = 7});
  auto header = header_for(0);
  EXPECT_EQ(invoke<kSite>(0, header).status(), 0u);
  EXPECT_EQ(invoke<kSite>(0, header = header_for(0)).status(), 7u);

  start_log(0);
  driver.expect({.callback = Callback::kEventTest, .driver_status = 7});
  EXPECT_EQ(invoke<kSite>(0, header = header_for(0)).status(), 7u);
  EXPECT_EQ(log(), "");
}

constexpr StatusMap kMap{{{0x0BAD0003, 5}, {0x0BAD005D, 6}}, 1};
static_assert(kMap(0x0BAD0003) == 5 && kMap(0x0BAD005D) == 6);
static_assert(kMap(0) == 1 && kMap(0xFFFFFFFF) == 1);

}  // namespace
}  // namespace vaskdfc
