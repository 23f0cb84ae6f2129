#include "vaskdfc/loopback.h"

#include <numeric>

#include "support/adapter_test.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;

struct Failure {
  std::uint32_t platform_status;
  std::uint32_t driver_status;
  std::uint32_t result;
};

test::ExpectedCall failing(test::ExpectedCall call, const Failure& failure) {
  call.platform_status = failure.platform_status;
  call.driver_status = failure.driver_status;
  return call;
}

// Where driver status 0xbad0021 has a result of its own, and where nothing has.
constexpr Failure kModeFailures[] = {{0, 0xBAD0021, 2}, {9, 0xBAD0021, 2}, {0, 0xBAD000A, 1}, {0, 0xBAD0039, 1}, {9, 0, 1}};
constexpr Failure kPlainFailures[] = {{0, 0xBAD0021, 1}, {9, 0xBAD0021, 1}, {0, 5, 1}, {9, 0, 1}};

// --- DFC_ConfigLoopback

class ConfigLoopbackTest : public test::AdapterTest {
 protected:
  static test::ExpectedCall call(std::uint32_t code) {
    return {.callback = Callback::kLoopbackMode, .sent = {.brdno = kDriverBoard, .arg5 = code, .arg7 = 0xCAFE0007}};
  }
};

TEST_F(ConfigLoopbackTest, tells_the_driver_other_modes_than_the_caller_does) {
  for (const auto& [mode, code] : {std::pair{1u, 1u}, {2u, 4u}}) {
    driver.expect(call(code));
    EXPECT_EQ(DFC_ConfigLoopback(kBoard, mode, 0xCAFE0007), DFC_OK);
  }
}

TEST_F(ConfigLoopbackTest, sends_and_logs_nothing_for_any_other_mode) {
  start_log();
  for (const std::uint32_t mode : {0u, 3u, 4u, 0xFFFFFFFFu}) EXPECT_EQ(DFC_ConfigLoopback(kBoard, mode, 7), 3u);
  EXPECT_EQ(log(), "");
}

TEST_F(ConfigLoopbackTest, has_a_result_of_its_own_for_one_driver_status) {
  for (const Failure& failure : kModeFailures) {
    driver.expect(failing(call(4), failure));
    EXPECT_EQ(DFC_ConfigLoopback(kBoard, 2, 0xCAFE0007), failure.result);
  }
}

TEST_F(ConfigLoopbackTest, is_logged_under_two_names) {
  start_log();
  driver.expect(call(1));
  EXPECT_EQ(DFC_ConfigLoopback(kBoard, 1, 0xCAFE0007), DFC_OK);
  driver.expect(failing(call(1), {0, 0xBAD0021, 2}));
  EXPECT_EQ(DFC_ConfigLoopback(kBoard, 1, 0xCAFE0007), 2u);
  constexpr const char* kFunction = "DFC_ConfigLoopback";
  const std::string line = test::call_line(kFunction, 72, "TREL_MGMT_HBA_WWPNPORTATTRIBUTES");
  EXPECT_EQ(log(), line + test::ok_line(kFunction, 76, "TREL_MGMT_LOOPBACK_MODE") + line +
                       test::error_line(kFunction, 76, "TREL_MGMT_LOOPBACK_MODE", "x0:xbad0021"));
}

// --- DFC_RunLoopbackTest

class RunLoopbackTest : public test::AdapterTest {
 protected:
  RunLoopbackTest() : data(65536) { std::iota(data.begin(), data.end(), std::uint8_t{3}); }

  test::ExpectedCall call(std::uint32_t bytes) const {
    return {.callback = Callback::kLoopbackTest,
            .sent = {.brdno = kDriverBoard, .arg2 = bytes},
            .sent_payload = {ByteVector(data.data(), data.data() + bytes)},
            .payload = {{}, ByteVector(65536, 0xA5)}};
  }
  // Sends bytes from and to memory of just that size; `received` bytes must arrive, and no further one.
  std::uint32_t run(std::uint32_t bytes, std::size_t received) const {
    const ByteVector sent(data.data(), data.data() + bytes);
    ByteVector memory(bytes, 0xEE);
    const dfc_loopback loopback{.bufSize = bytes, .txBuf = sent.data(), .rxBuf = memory.data()};
    const std::uint32_t result = DFC_RunLoopbackTest(kBoard, &loopback);
    ByteVector expected(bytes, 0xEE);
    std::fill_n(expected.begin(), received, std::uint8_t{0xA5});
    EXPECT_EQ(memory, expected);
    return result;
  }
  ByteVector data;
};

TEST_F(RunLoopbackTest, sends_and_receives_as_many_bytes_as_the_caller_says) {
  for (const std::uint32_t bytes : {1u, 512u, 65535u, 65536u}) {
    driver.expect(call(bytes));
    EXPECT_EQ(run(bytes, bytes), DFC_OK);
  }
}

TEST_F(RunLoopbackTest, of_no_bytes_is_sent_all_the_same) {
  driver.expect(call(0));
  const dfc_loopback loopback{};
  EXPECT_EQ(DFC_RunLoopbackTest(kBoard, &loopback), DFC_OK);
}

TEST_F(RunLoopbackTest, receives_nothing_when_the_call_fails) {
  constexpr Failure kFailures[] = {{0, 0xBAD000A, 6}, {9, 0xBAD000A, 6}, {0, 0xBAD0039, 3}, {9, 0xBAD0039, 3},
                                   {0, 0xBAD0021, 1}, {0, 5, 1},         {9, 0, 1}};
  for (const Failure& failure : kFailures) {
    driver.expect(failing(call(64), failure));
    EXPECT_EQ(run(64, 0), failure.result);
  }
}

TEST_F(RunLoopbackTest, sends_nothing_without_memory) {
  test::c_library.refused_bytes = 2 * 65536;
  EXPECT_EQ(run(64, 0), DFC_NO_MEMORY);
}

TEST_F(RunLoopbackTest, is_logged) {
  start_log();
  driver.expect(call(8));
  EXPECT_EQ(run(8, 8), DFC_OK);
  driver.expect(failing(call(8), {9, 0xBAD0039, 3}));
  EXPECT_EQ(run(8, 0), 3u);
  constexpr const char* kFunction = "DFC_RunLoopbackTest";
  constexpr const char* kCallback = "TREL_MGMT_LOOPBACK_TEST";
  const std::string line = test::call_line(kFunction, 132, kCallback);
  EXPECT_EQ(log(),
            line + test::ok_line(kFunction, 136, kCallback) + line + test::error_line(kFunction, 136, kCallback, "x9:xbad0039"));
}

using RunLoopbackDeathTest = RunLoopbackTest;

TEST_F(RunLoopbackDeathTest, stops_the_process_for_more_than_65536_bytes) {
  for (const std::uint32_t bytes : {65537u, 0xFFFFFFFFu}) {
    const dfc_loopback loopback{.bufSize = bytes, .txBuf = data.data(), .rxBuf = data.data()};
    EXPECT_EXIT((void)DFC_RunLoopbackTest(kBoard, &loopback), testing::KilledBySignal(SIGABRT),
                "trel_dfcutil:108: DFC_RunLoopbackTest: Assertion `pLoopback->bufSize <= 65536' failed");
  }
}

// --- DFC_EndLoopback

class EndLoopbackTest : public test::AdapterTest {
 protected:
  static test::ExpectedCall end_diagnostics_call() {
    return {.callback = Callback::kDiagModeEnd, .sent = {.brdno = kDriverBoard, .arg7 = 15}};
  }
  static test::ExpectedCall initialise_loop_call() { return {.callback = Callback::kLip, .sent = {.brdno = kDriverBoard}}; }
};

TEST_F(EndLoopbackTest, ends_diagnostics_in_sli_mode_4_and_above) {
  for (const std::uint32_t sli_mode : {4u, 5u}) {
    expect_driver_info(sli_mode);
    driver.expect(end_diagnostics_call());
    EXPECT_EQ(DFC_EndLoopback(kBoard), DFC_OK);
    for (const Failure& failure : kModeFailures) {
      expect_driver_info(sli_mode);
      driver.expect(failing(end_diagnostics_call(), failure));
      EXPECT_EQ(DFC_EndLoopback(kBoard), failure.result);
    }
  }
}

TEST_F(EndLoopbackTest, initialises_the_loop_in_sli_mode_3_and_below) {
  for (const std::uint32_t sli_mode : {2u, 3u}) {
    expect_driver_info(sli_mode);
    driver.expect(initialise_loop_call());
    EXPECT_EQ(DFC_EndLoopback(kBoard), DFC_OK);
    for (const Failure& failure : kPlainFailures) {
      expect_driver_info(sli_mode);
      driver.expect(failing(initialise_loop_call(), failure));
      EXPECT_EQ(DFC_EndLoopback(kBoard), failure.result);
    }
  }
}

TEST_F(EndLoopbackTest, needs_the_sli_mode) {
  expect_no_driver_info();
  EXPECT_EQ(DFC_EndLoopback(kBoard), DFC_FAILED);
}

TEST_F(EndLoopbackTest, is_logged_under_the_name_of_what_it_does) {
  start_log();
  expect_driver_info(4);
  driver.expect(end_diagnostics_call());
  EXPECT_EQ(DFC_EndLoopback(kBoard), DFC_OK);
  expect_driver_info(4);
  driver.expect(failing(end_diagnostics_call(), {0, 0xBAD0021, 2}));
  EXPECT_EQ(DFC_EndLoopback(kBoard), 2u);
  expect_driver_info(3);
  driver.expect(initialise_loop_call());
  EXPECT_EQ(DFC_EndLoopback(kBoard), DFC_OK);
  expect_driver_info(3);
  driver.expect(failing(initialise_loop_call(), {9, 0, 1}));
  EXPECT_EQ(DFC_EndLoopback(kBoard), DFC_FAILED);

  const std::string end = driver_info_lines() + test::call_line("dfc_EndLoopback_sli4", 178, "TREL_MGMT_DIAG_MODE_END");
  const std::string initialise = driver_info_lines() + test::call_line("dfc_EndLoopback", 212, "TREL_MGMT_LIP");
  EXPECT_EQ(log(), end + test::ok_line("dfc_EndLoopback_sli4", 182, "TREL_MGMT_DIAG_MODE_END") + end +
                       test::error_line("dfc_EndLoopback_sli4", 182, "TREL_MGMT_DIAG_MODE_END", "x0:xbad0021") + initialise +
                       test::ok_line("dfc_EndLoopback", 216, "TREL_MGMT_LIP") + initialise +
                       test::error_line("dfc_EndLoopback", 216, "TREL_MGMT_LIP", "x9:x0"));
}

}  // namespace
}  // namespace vaskdfc
