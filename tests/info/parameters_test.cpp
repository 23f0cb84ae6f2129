#include "vaskdfc/parameters.h"

#include <cstring>

#include "support/adapter_test.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{9, 0}, {0, 0xBAD0020}, {9, 0xBAD0020}};

class ParametersTest : public test::AdapterTest {
 protected:
  ParametersTest() { std::memset(&table, 0xEE, sizeof(table)); }

  // The driver writes `written` bytes and says that it returned another number of them.
  test::ExpectedCall call(std::uint32_t returned, std::size_t written) {
    return {.callback = Callback::kGetCfg,
            .sent = {.brdno = kDriverBoard, .arg2 = 8448},
            .arg3 = returned,
            .payload = {ByteVector(written, 0xA5)}};
  }
  static ByteVector table_with(std::size_t written) {
    ByteVector bytes(8448, 0);
    std::fill_n(bytes.begin(), written, std::uint8_t{0xA5});
    return bytes;
  }
  dfc_cfg_table table;
};

TEST_F(ParametersTest, are_counted_by_the_bytes_that_the_driver_returns) {
  constexpr std::pair<std::uint32_t, std::uint32_t> kCounts[] = {{0, 0},   {131, 0},   {132, 1},  {263, 1},
                                                                 {264, 2}, {8447, 63}, {8448, 64}};
  for (const auto& [returned, count] : kCounts) {
    driver.expect(call(returned, returned));
    EXPECT_EQ(GetCfgParam(kBoard, &table), count);
    EXPECT_EQ(bytes_of(table), table_with(returned));
  }
}

TEST_F(ParametersTest, are_no_more_than_the_table_holds) {
  for (const std::uint32_t returned : {8449u, 8580u, 0xFFFFFFFFu}) {
    driver.expect(call(returned, 8448));
    EXPECT_EQ(GetCfgParam(kBoard, &table), 64u);
  }
}

TEST_F(ParametersTest, read_as_zeros_where_the_driver_writes_nothing) {
  driver.expect(call(8448, 200));
  EXPECT_EQ(GetCfgParam(kBoard, &table), 64u);
  EXPECT_EQ(bytes_of(table), table_with(200));
}

TEST_F(ParametersTest, are_none_when_the_call_fails) {
  start_log();
  for (const auto& [platform_status, driver_status] : kFailures) {
    std::memset(&table, 0xEE, sizeof(table));
    auto failure = call(264, 264);
    failure.platform_status = platform_status;
    failure.driver_status = driver_status;
    driver.expect(failure);
    EXPECT_EQ(GetCfgParam(kBoard, &table), 0u);
    EXPECT_EQ(bytes_of(table), table_with(264));  // whatever the driver wrote stays
  }
  const auto lines = [](const char* statuses) {
    return test::call_line("GetCfgParam", 312, "TREL_MGMT_GETCFG") +
           test::error_line("GetCfgParam", 316, "TREL_MGMT_GETCFG", statuses);
  };
  EXPECT_EQ(log(), lines("x9:x0") + lines("x0:xbad0020") + lines("x9:xbad0020"));
}

TEST_F(ParametersTest, are_set_by_position) {
  start_log();
  driver.expect(call(132, 132));
  EXPECT_EQ(GetCfgParam(kBoard, &table), 1u);
  driver.expect({.callback = Callback::kSetCfg, .sent = {.brdno = kDriverBoard, .arg1 = 63, .arg4 = 0xFFFFFFFF}});
  EXPECT_EQ(SetCfgParam(kBoard, 63, 0xFFFFFFFF), DFC_OK);
  EXPECT_EQ(log(), test::call_line("GetCfgParam", 312, "TREL_MGMT_GETCFG") + test::ok_line("GetCfgParam", 316, "TREL_MGMT_GETCFG") +
                       test::call_line("SetCfgParam", 344, "TREL_MGMT_SETCFG") +
                       test::ok_line("SetCfgParam", 348, "TREL_MGMT_SETCFG"));
}

TEST_F(ParametersTest, that_the_driver_rejects_are_a_failure_without_its_status) {
  start_log(kLogError);
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect({.callback = Callback::kSetCfg,
                   .sent = {.brdno = kDriverBoard, .arg1 = 99, .arg4 = 1},
                   .platform_status = platform_status,
                   .driver_status = driver_status});
    EXPECT_EQ(SetCfgParam(kBoard, 99, 1), DFC_FAILED);
  }
  const auto line = [](const char* statuses) { return test::error_line("SetCfgParam", 348, "TREL_MGMT_SETCFG", statuses); };
  EXPECT_EQ(log(), line("x9:x0") + line("x0:xbad0020") + line("x9:xbad0020"));
}

}  // namespace
}  // namespace vaskdfc
