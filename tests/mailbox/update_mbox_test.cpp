#include "support/adapter_test.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;

constexpr const char* kFunction = "DFC_IssueUpdateCfgMBox";
constexpr const char* kCallback = "TREL_MGMT_HBA_ISSUE_UPD_MBX";
constexpr std::uint32_t kUntouched = 0xEEEEEEEE;

class UpdateMboxTest : public test::AdapterTest {
 protected:
  // Data of that length, and then zeros up to the whole payload.
  static ByteVector padded(std::size_t length) {
    ByteVector data(4096, 0);
    std::fill_n(data.begin(), length, std::uint8_t{0xD1});
    return data;
  }
  test::ExpectedCall call(std::uint32_t region, std::uint32_t region_bytes, std::size_t length) {
    return {.callback = Callback::kHbaIssueUpdMbx,
            .sent = {.brdno = kDriverBoard, .arg2 = region_bytes, .arg4 = region},
            .sent_payload = {padded(length)},
            .payload = {{}, test::bytes_of(CompletionWord{0x12345678})}};
  }
  std::uint32_t update(std::uint32_t type, std::uint32_t region, std::uint32_t length) {
    return DFC_IssueUpdateCfgMBox(kBoard, type, region, data.data(), length, &reply_word);
  }

  const ByteVector data = ByteVector(4096, 0xD1);
  std::uint32_t reply_word = kUntouched;
};

TEST_F(UpdateMboxTest, sends_the_data_with_zeros_behind_it_and_the_size_of_the_region) {
  expect_driver_info(4);
  driver.expect(call(22, 512, 100));
  start_log();
  EXPECT_EQ(update(2, 22, 100), DFC_OK);
  EXPECT_EQ(reply_word, 0x12345678u);
  EXPECT_EQ(log(), driver_info_lines() + test::call_line(kFunction, 3559, kCallback) + test::ok_line(kFunction, 3562, kCallback));
}

TEST_F(UpdateMboxTest, takes_data_of_the_regions_size_and_no_more) {
  for (const auto& [region, bytes] : {std::pair{22u, 512u}, {160u, 4096u}}) {
    expect_driver_info(4);
    driver.expect(call(region, bytes, bytes));
    EXPECT_EQ(update(2, region, bytes), DFC_OK);
    expect_driver_info(4);
    EXPECT_EQ(update(2, region, bytes + 1), DFC_TOO_SMALL);
  }
}

TEST_F(UpdateMboxTest, keeps_the_reply_word_to_itself_when_the_call_fails) {
  start_log(kLogError);
  for (const auto& [platform_status, driver_status] : {std::pair{7u, 0u}, {0u, 0xBAD0020u}}) {
    expect_driver_info(4);
    auto expected = call(23, 1024, 8);
    expected.platform_status = platform_status;
    expected.driver_status = driver_status;
    driver.expect(expected);
    EXPECT_EQ(update(2, 23, 8), DFC_FAILED);
    EXPECT_EQ(reply_word, kUntouched);
  }
  EXPECT_EQ(log(),
            test::error_line(kFunction, 3562, kCallback, "x7:x0") + test::error_line(kFunction, 3562, kCallback, "x0:xbad0020"));
}

TEST_F(UpdateMboxTest, checks_its_arguments_in_order_and_sends_nothing) {
  for (const std::uint32_t type : {0u, 1u, 3u}) EXPECT_EQ(update(type, 99, 0xFFFFFFFF), DFC_UNSUPPORTED);
  expect_no_driver_info();
  EXPECT_EQ(update(2, 99, 0xFFFFFFFF), DFC_FAILED);
  expect_driver_info(3);
  EXPECT_EQ(update(2, 99, 0xFFFFFFFF), DFC_UNSUPPORTED);
  expect_driver_info(4);
  EXPECT_EQ(update(2, 99, 0xFFFFFFFF), DFC_DUMP_UNKNOWN_REGION);
  expect_driver_info(4);
  EXPECT_EQ(update(2, 22, 513), DFC_TOO_SMALL);
  EXPECT_EQ(reply_word, kUntouched);
}

TEST_F(UpdateMboxTest, sends_nothing_without_memory) {
  test::c_library.refused_bytes = sizeof(RegionData);
  expect_driver_info(4);
  EXPECT_EQ(update(2, 22, 512), DFC_NO_MEMORY);
}

}  // namespace
}  // namespace vaskdfc
