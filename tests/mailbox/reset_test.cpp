#include "vaskdfc/reset.h"

#include "support/adapter_test.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{9, 0}, {0, 0xBAD0004}, {9, 0xBAD0004}};

test::ExpectedCall failing(test::ExpectedCall call, std::uint32_t platform_status, std::uint32_t driver_status) {
  call.platform_status = platform_status;
  call.driver_status = driver_status;
  return call;
}

// --- DFC_ResetAdapter

class ResetTest : public test::AdapterTest {
 protected:
  static test::ExpectedCall revision_call(std::uint32_t third_word) {
    return {.callback = Callback::kGetDfcRev, .payload = {bytes_of(RevisionReply{0x11, 0x22, third_word})}};
  }
  static test::ExpectedCall reset_call(std::uint32_t type) {
    return {.callback = Callback::kReset, .sent = {.brdno = kDriverBoard, .arg6 = type}};
  }
  // Result lines of the revision query name no board.
  static std::string revision_line(const std::string& begin, const std::string& end) {
    return test::log_line("DFC_ResetAdapter", 2364, begin + "       TREL_MGMT_GET_DFC_REV brd[-1]" + end + " id[4711:4712]");
  }
};

TEST_F(ResetTest, sends_types_1_and_2_whatever_the_driver_supports) {
  for (const std::uint32_t third_word : {0u, 1u}) {
    for (const std::uint32_t type : {1u, 2u}) {
      driver.expect(revision_call(third_word));
      driver.expect(reset_call(type));
      EXPECT_EQ(DFC_ResetAdapter(kBoard, type), DFC_OK);
    }
  }
}

TEST_F(ResetTest, sends_type_3_where_the_driver_supports_it) {
  for (const std::uint32_t third_word : {1u, 0x80000000u}) {
    driver.expect(revision_call(third_word));
    driver.expect(reset_call(3));
    EXPECT_EQ(DFC_ResetAdapter(kBoard, 3), DFC_OK);
  }
  driver.expect(revision_call(0));
  EXPECT_EQ(DFC_ResetAdapter(kBoard, 3), 4u);
}

TEST_F(ResetTest, takes_an_unwritten_revision_for_one_without_type_3) {
  driver.expect({.callback = Callback::kGetDfcRev});
  EXPECT_EQ(DFC_ResetAdapter(kBoard, 3), 4u);
}

TEST_F(ResetTest, knows_no_other_types) {
  for (const std::uint32_t type : {0u, 4u, 0xFFFFFFFFu}) {
    driver.expect(revision_call(1));
    EXPECT_EQ(DFC_ResetAdapter(kBoard, type), 4u);
  }
}

TEST_F(ResetTest, needs_the_revision) {
  for (const auto& [platform_status, driver_status] : kFailures) {
    for (const std::uint32_t type : {0u, 1u, 3u}) {
      driver.expect(failing(revision_call(1), platform_status, driver_status));
      EXPECT_EQ(DFC_ResetAdapter(kBoard, type), DFC_FAILED);
    }
  }
}

TEST_F(ResetTest, hides_the_drivers_status) {
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect(revision_call(1));
    driver.expect(failing(reset_call(3), platform_status, driver_status));
    EXPECT_EQ(DFC_ResetAdapter(kBoard, 3), DFC_FAILED);
  }
}

TEST_F(ResetTest, logs_the_query_without_a_board_and_the_reset_with_one) {
  start_log();
  driver.expect(revision_call(1));
  driver.expect(reset_call(1));
  EXPECT_EQ(DFC_ResetAdapter(kBoard, 1), DFC_OK);
  driver.expect(revision_call(1));
  driver.expect(failing(reset_call(1), 0, 0xBAD0004));
  EXPECT_EQ(DFC_ResetAdapter(kBoard, 1), DFC_FAILED);
  driver.expect(failing(revision_call(1), 9, 0));
  EXPECT_EQ(DFC_ResetAdapter(kBoard, 1), DFC_FAILED);

  const std::string query = test::call_line("DFC_ResetAdapter", 2361, "TREL_MGMT_GET_DFC_REV");
  const std::string reset = test::call_line("DFC_ResetAdapter", 2394, "TREL_MGMT_RESET");
  EXPECT_EQ(log(), query + revision_line("cmd ok:  ", "") + reset + test::ok_line("DFC_ResetAdapter", 2399, "TREL_MGMT_RESET") +
                       query + revision_line("cmd ok:  ", "") + reset +
                       test::error_line("DFC_ResetAdapter", 2399, "TREL_MGMT_RESET", "x0:xbad0004") + query +
                       revision_line("cmd err: ", " stat[x9:x0]"));
}

// --- DFC_SetDumpEnv

class DumpEnvironmentTest : public test::AdapterTest {
 protected:
  static test::ExpectedCall induce_call() { return {.callback = Callback::kInduceDump, .sent = {.brdno = kDriverBoard}}; }
  // What SetBrdEnv sends for a mode, and the state that the driver reports.
  static test::ExpectedCall state_call(std::uint32_t command, std::uint32_t state) {
    return {.callback = Callback::kSetDiag, .sent = {.brdno = kDriverBoard, .arg6 = command}, .arg4 = state};
  }
};

TEST_F(DumpEnvironmentTest, induces_a_dump_in_any_sli_mode_and_inverts_the_result) {
  for (const std::uint32_t sli_mode : {2u, 3u, 4u, 5u}) {
    expect_driver_info(sli_mode);
    driver.expect(induce_call());
    EXPECT_EQ(DFC_SetDumpEnv(kBoard, 4), 4u);
    for (const auto& [platform_status, driver_status] : kFailures) {
      expect_driver_info(sli_mode);
      driver.expect(failing(induce_call(), platform_status, driver_status));
      EXPECT_EQ(DFC_SetDumpEnv(kBoard, 4), 0u);
    }
  }
}

TEST_F(DumpEnvironmentTest, needs_the_sli_mode) {
  for (const std::uint32_t mode : {0u, 2u, 4u}) {
    expect_no_driver_info();
    EXPECT_EQ(DFC_SetDumpEnv(kBoard, mode), DFC_FAILED);
  }
}

TEST_F(DumpEnvironmentTest, does_nothing_else_in_sli_mode_4) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 5u, 6u}) {
    expect_driver_info(4);
    EXPECT_EQ(DFC_SetDumpEnv(kBoard, mode), 0u);
  }
}

TEST_F(DumpEnvironmentTest, switches_the_state_in_sli_mode_3_and_never_waits) {
  constexpr std::pair<std::uint32_t, std::uint32_t> kCommands[] = {{0, 0x10}, {1, 0x11}, {2, 0x14}, {3, 0x13}, {5, 0x14}};
  for (const auto& [mode, command] : kCommands) {
    expect_driver_info(3);
    driver.expect(state_call(command, 1));
    EXPECT_EQ(DFC_SetDumpEnv(kBoard, mode), 1u);
  }
  EXPECT_TRUE(test::c_library.sleeps.empty());
}

TEST_F(DumpEnvironmentTest, calls_two_states_unsupported_and_returns_all_others) {
  constexpr std::pair<std::uint32_t, std::uint32_t> kResults[] = {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 2}, {5, 2}, {6, 6}};
  for (const auto& [state, result] : kResults) {
    expect_driver_info(3);
    driver.expect(state_call(0x11, state));
    EXPECT_EQ(DFC_SetDumpEnv(kBoard, 1), result);
  }
  expect_driver_info(3);
  EXPECT_EQ(DFC_SetDumpEnv(kBoard, 6), 0u);
}

TEST_F(DumpEnvironmentTest, logs_the_induced_dump) {
  start_log();
  expect_driver_info(4);
  driver.expect(induce_call());
  EXPECT_EQ(DFC_SetDumpEnv(kBoard, 4), 4u);
  expect_driver_info(3);
  driver.expect(failing(induce_call(), 0, 0xBAD0004));
  EXPECT_EQ(DFC_SetDumpEnv(kBoard, 4), 0u);
  const std::string call = driver_info_lines() + test::call_line("DFC_SetDumpEnv", 1087, "TREL_MGMT_INDUCE_DUMP");
  EXPECT_EQ(log(), call + test::ok_line("DFC_SetDumpEnv", 1091, "TREL_MGMT_INDUCE_DUMP") + call +
                       test::error_line("DFC_SetDumpEnv", 1091, "TREL_MGMT_INDUCE_DUMP", "x0:xbad0004"));
}

// --- DFC_GetDriverDumpRegion

class DumpRegionTest : public test::AdapterTest {
 protected:
  // Asks with room for 100 bytes; the driver answers with 16 bytes and this length.
  static test::ExpectedCall call(std::uint32_t length) {
    return {.callback = Callback::kGetDumpRegion,
            .sent = {.brdno = kDriverBoard, .arg2 = 100, .arg6 = 0x55},
            .arg3 = length,
            .payload = {ByteVector(16, 0xA5)}};
  }
  // `received` bytes must arrive, and no further one.
  std::uint32_t get(std::size_t received) {
    ByteVector memory(100, 0xEE);
    length = 100;
    const std::uint32_t result = DFC_GetDriverDumpRegion(kBoard, 0x55, memory.data(), &length);
    ByteVector expected(100, 0xEE);
    std::fill_n(expected.begin(), received, std::uint8_t{0xA5});
    EXPECT_EQ(memory, expected);
    return result;
  }
  std::uint32_t length = 0;
};

TEST_F(DumpRegionTest, delivers_what_the_driver_says_and_no_more_than_there_is) {
  constexpr std::pair<std::uint32_t, std::size_t> kLengths[] = {{0, 0}, {1, 1}, {12, 12}, {16, 16}, {17, 16}, {0xFFFFFFFF, 16}};
  for (const auto& [told, received] : kLengths) {
    for (const std::uint32_t sli_mode : {2u, 3u}) {
      expect_driver_info(sli_mode);
      driver.expect(call(told));
      EXPECT_EQ(get(received), DFC_OK);
      EXPECT_EQ(length, told);
    }
  }
}

TEST_F(DumpRegionTest, tells_the_length_and_delivers_nothing_when_the_call_fails) {
  struct Failure {
    std::uint32_t platform_status;
    std::uint32_t driver_status;
    std::uint32_t result;
  };
  constexpr Failure kResults[] = {{0, 0xBAD0003, 4}, {0, 0xBAD0007, 2}, {0, 0xBAD0014, 3}, {0, 0xBAD0004, 1}, {0, 0xBAD0013, 1},
                                  {0, 0xBAD0002, 1}, {0, 0xBAD0015, 1}, {0, 1, 1},         {9, 0, 1},         {9, 0xBAD0007, 2}};
  for (const auto& [platform_status, driver_status, result] : kResults) {
    expect_driver_info(3);
    driver.expect(failing(call(12), platform_status, driver_status));
    EXPECT_EQ(get(0), result);
    EXPECT_EQ(length, 12u);
  }
}

TEST_F(DumpRegionTest, needs_sli_mode_3_or_below) {
  expect_no_driver_info();
  EXPECT_EQ(get(0), DFC_FAILED);
  for (const std::uint32_t sli_mode : {4u, 5u}) {
    expect_driver_info(sli_mode);
    EXPECT_EQ(get(0), DFC_UNSUPPORTED);
  }
  EXPECT_EQ(length, 100u);
}

TEST_F(DumpRegionTest, is_logged) {
  start_log();
  expect_driver_info(3);
  driver.expect(call(16));
  EXPECT_EQ(get(16), DFC_OK);
  expect_driver_info(3);
  driver.expect(failing(call(0), 9, 0xBAD0007));
  EXPECT_EQ(get(0), DFC_UNSUPPORTED);
  constexpr const char* kFunction = "DFC_GetDriverDumpRegion";
  constexpr const char* kCallback = "TREL_MGMT_GET_DUMPREGION";
  const std::string lines = driver_info_lines() + test::call_line(kFunction, 2103, kCallback);
  EXPECT_EQ(log(), lines + test::ok_line(kFunction, 2108, kCallback) + lines +
                       test::error_line(kFunction, 2108, kCallback, "x9:xbad0007"));
}

}  // namespace
}  // namespace vaskdfc
