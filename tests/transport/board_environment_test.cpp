#include "support/library_test.h"
#include "transport/board_table.h"
#include "vaskdfc/transport.h"

namespace vaskdfc {
namespace {

class BoardEnvironmentTest : public test::LibraryTest {
 protected:
  // One exchange: the sub-command that is sent, the state that the driver reports.
  void expect_command(std::uint32_t driver_board, std::uint32_t command, std::uint32_t state) {
    driver.expect({.callback = Callback::kSetDiag, .sent = {.brdno = driver_board, .arg6 = command}, .arg4 = state});
  }
};

TEST_F(BoardEnvironmentTest, sends_the_sub_command_of_each_mode) {
  const std::pair<std::uint32_t, std::uint32_t> kModes[] = {{0, 0x10}, {1, 0x11}, {3, 0x13}, {5, 0x14}};
  map_board(4, 8);
  for (const auto& [mode, command] : kModes) {
    expect_command(8, command, 40 + mode);
    EXPECT_EQ(SetBrdEnv(4, mode), 40 + mode);
    EXPECT_EQ(dfc_state[4], 40 + mode);
  }
}

TEST_F(BoardEnvironmentTest, sends_nothing_for_mode_4_and_modes_above_5) {
  dfc_state[0] = 1;
  for (const std::uint32_t mode : {4u, 6u, 0xFFFFFFFFu}) EXPECT_EQ(SetBrdEnv(0, mode), 0u);
  EXPECT_EQ(dfc_state[0], 1u);
}

TEST_F(BoardEnvironmentTest, mode_2_asks_once_a_second_until_the_board_leaves_state_2) {
  dfc_state[0] = kStateUsable;
  expect_command(0, 0x10, 2);
  expect_command(0, 0x10, 2);
  expect_command(0, 0x10, 1);
  expect_command(0, 0x12, 3);

  EXPECT_EQ(SetBrdEnv(0, 2), 3u);
  EXPECT_EQ(dfc_state[0], 3u);
  EXPECT_EQ(test::c_library.sleeps, (std::vector<std::string>{"sleep 1", "sleep 1"}));
}

TEST_F(BoardEnvironmentTest, mode_2_leaves_a_board_alone_that_failed_and_still_reports_state_2) {
  dfc_state[0] = kStateFailed;
  expect_command(0, 0x10, 2);

  EXPECT_EQ(SetBrdEnv(0, 2), 2u);
  EXPECT_TRUE(test::c_library.sleeps.empty());
}

TEST_F(BoardEnvironmentTest, mode_2_switches_a_board_that_failed_and_has_recovered) {
  dfc_state[0] = kStateFailed;
  expect_command(0, 0x10, 1);
  expect_command(0, 0x12, 6);

  EXPECT_EQ(SetBrdEnv(0, 2), 6u);
  EXPECT_EQ(dfc_state[0], 6u);
}

TEST_F(BoardEnvironmentTest, mode_2_ends_with_0_when_the_state_cannot_be_asked) {
  driver.expect({.callback = Callback::kSetDiag, .sent = {.arg6 = 0x10}, .driver_status = 9});
  EXPECT_EQ(SetBrdEnv(0, 2), 0u);

  expect_command(0, 0x10, 2);
  driver.expect({.callback = Callback::kSetDiag, .sent = {.arg6 = 0x10}, .platform_status = 9});
  EXPECT_EQ(SetBrdEnv(0, 2), 0u);
}

TEST_F(BoardEnvironmentTest, reports_every_failure_as_0_and_keeps_the_state) {
  dfc_state[0] = 1;
  driver.expect({.callback = Callback::kSetDiag, .sent = {.arg6 = 0x11}, .driver_status = 0x0BAD0001, .arg4 = 5});
  EXPECT_EQ(SetBrdEnv(0, 1), 0u);
  driver.expect({.callback = Callback::kSetDiag, .sent = {.arg6 = 0x11}, .platform_status = 3, .arg4 = 5});
  EXPECT_EQ(SetBrdEnv(0, 1), 0u);
  EXPECT_EQ(dfc_state[0], 1u);
}

TEST_F(BoardEnvironmentTest, logs_the_wait_and_the_switch) {
  start_log();
  expect_command(0, 0x10, 1);
  driver.expect({.callback = Callback::kSetDiag, .sent = {.arg6 = 0x12}, .driver_status = 0x0BAD0001});

  EXPECT_EQ(SetBrdEnv(0, 2), 0u);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                 SetBrdEnv:  452 call: TREL_MGMT_SETDIAG id[4711:4712]\n"
            "2023-11-14T22:13:20                 SetBrdEnv:  456 cmd ok:             TREL_MGMT_SETDIAG brd[0] id[4711:4712]\n"
            "2023-11-14T22:13:20                 SetBrdEnv:  486 call: TREL_MGMT_SETDIAG id[4711:4712]\n"
            "2023-11-14T22:13:20                 SetBrdEnv:  490 cmd err:            TREL_MGMT_SETDIAG brd[0] stat[x0:xbad0001] "
            "id[4711:4712]\n");
}

TEST_F(BoardEnvironmentTest, switches_all_boards_in_order) {
  dftrel_brdCnt = 2;
  map_board(0, 1);
  map_board(1, 3);
  expect_command(1, 0x11, 5);
  expect_command(3, 0x11, 6);
  EXPECT_EQ(SetDiagEnv(1), 6u);
}

TEST_F(BoardEnvironmentTest, stops_at_the_first_board_that_yields_0) {
  dftrel_brdCnt = 2;
  map_board(0, 1);
  expect_command(1, 0x11, 0);
  EXPECT_EQ(SetDiagEnv(1), 0u);
}

TEST_F(BoardEnvironmentTest, switches_nothing_where_there_is_no_board) { EXPECT_EQ(SetDiagEnv(1), 0u); }

}  // namespace
}  // namespace vaskdfc
