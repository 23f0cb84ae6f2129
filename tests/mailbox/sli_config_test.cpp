#include "mailbox/mailboxes.h"
#include "support/adapter_test.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;
using test::Words;

constexpr const char* kFunction = "IssueExtendedSLIConfig";
constexpr const char* kCallback = "TREL_MGMT_MBOX_SLI_CFG_EXT";

Words caller_mailbox(std::size_t words) { return test::numbered_mailbox(words, 0x00009B00); }

ByteVector bytes_of(std::span<const std::uint32_t> words) {
  const auto bytes = std::as_bytes(words);
  ByteVector result(bytes.size());
  std::ranges::transform(bytes, result.begin(), [](std::byte byte) { return static_cast<std::uint8_t>(byte); });
  return result;
}

class SliConfigTest : public test::AdapterTest {
 protected:
  test::ExpectedCall call(std::uint32_t bytes, std::uint32_t transfer_code, ByteVector sent) {
    return {.callback = Callback::kMboxSliCfgExt,
            .sent = {.brdno = kDriverBoard, .arg2 = bytes, .arg3 = bytes, .arg6 = transfer_code},
            .sent_payload = {std::move(sent)}};
  }
};

TEST_F(SliConfigTest, sends_the_words_and_receives_as_many_bytes_as_the_driver_says) {
  Words mailbox = caller_mailbox(64);
  expect_driver_info(4);
  auto expected = call(256, 2, bytes_of(mailbox));
  expected.arg3 = 7;
  expected.payload[0] = ByteVector(4096, 0xA5);
  driver.expect(expected);
  start_log();

  EXPECT_EQ(IssueExtendedSLIConfig(kBoard, mailbox.data(), 2, 99, 64), DFC_OK);
  Words reply = caller_mailbox(64);
  reply[0] = 0xA5A5A5A5;
  reply[1] = (reply[1] & 0xFF000000) | 0xA5A5A5;
  EXPECT_EQ(mailbox, reply);
  EXPECT_EQ(log(), driver_info_lines() + test::call_line(kFunction, 3610, kCallback) + test::ok_line(kFunction, 3613, kCallback));
}

TEST_F(SliConfigTest, stays_within_its_buffer_whatever_the_counts) {
  Words mailbox = caller_mailbox(1024);
  expect_driver_info(5);
  auto expected = call(8000, 1, bytes_of(mailbox));
  expected.arg3 = 0xFFFFFFFF;
  expected.payload[0] = ByteVector(4096, 0xA5);
  driver.expect(expected);
  EXPECT_EQ(IssueExtendedSLIConfig(kBoard, mailbox.data(), 1, 1, 2000), DFC_OK);
  EXPECT_EQ(mailbox, Words(1024, 0xA5A5A5A5));
}

TEST_F(SliConfigTest, leaves_the_mailbox_alone_when_the_call_fails) {
  start_log(kLogError);
  for (const auto& [platform_status, driver_status] : {std::pair{7u, 0u}, {0u, 0xBAD0039u}}) {
    Words mailbox = caller_mailbox(64);
    expect_driver_info(4);
    auto expected = call(256, 1, bytes_of(mailbox));
    expected.platform_status = platform_status;
    expected.driver_status = driver_status;
    expected.payload[0] = ByteVector(4096, 0xA5);
    driver.expect(expected);
    EXPECT_EQ(IssueExtendedSLIConfig(kBoard, mailbox.data(), 1, 1, 64), DFC_FAILED);
    EXPECT_EQ(mailbox, caller_mailbox(64));
  }
  EXPECT_EQ(log(),
            test::error_line(kFunction, 3613, kCallback, "x7:x0") + test::error_line(kFunction, 3613, kCallback, "x0:xbad0039"));
}

TEST_F(SliConfigTest, sends_nothing_to_older_adapters_and_to_those_whose_mode_is_unknown) {
  Words mailbox = caller_mailbox(64);
  expect_driver_info(3);
  EXPECT_EQ(IssueExtendedSLIConfig(kBoard, mailbox.data(), 1, 1, 64), DFC_UNSUPPORTED);
  expect_no_driver_info();
  EXPECT_EQ(IssueExtendedSLIConfig(kBoard, mailbox.data(), 1, 1, 64), DFC_FAILED);
  test::c_library.refused_bytes = sizeof(MailboxData);
  EXPECT_EQ(IssueExtendedSLIConfig(kBoard, mailbox.data(), 1, 1, 64), DFC_FAILED);
  EXPECT_EQ(mailbox, caller_mailbox(64));
}

}  // namespace
}  // namespace vaskdfc
