#include "mailbox/issue_mbox.h"

#include "mailbox/mailboxes.h"
#include "support/adapter_test.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;
using test::travelling;
using test::Words;

constexpr const char* kMbox = "TREL_MGMT_MBOX";
constexpr const char* kOtherName = "TREL_MGMT_INDUCE_DUMP";

// Command 5, status 0xAAAA.
Words caller_mailbox(std::size_t words) { return test::numbered_mailbox(words, 0xAAAA0501); }

class IssueMboxTest : public test::AdapterTest {
 protected:
  // A call that sends this mailbox without extension data.
  test::ExpectedCall call(const Mailbox& sent, std::uint32_t bytes, std::uint32_t reply_bytes) {
    return {.callback = Callback::kMbox,
            .sent = {.brdno = kDriverBoard, .arg2 = bytes, .arg3 = reply_bytes},
            .sent_payload = {{}, bytes_of(sent), ByteVector(sizeof(MailboxExtension), 0)}};
  }
  test::ExpectedCall answered(test::ExpectedCall expected, const Mailbox& reply) {
    expected.payload[1] = bytes_of(reply);
    return expected;
  }
};

TEST_F(IssueMboxTest, sends_the_words_zero_padded_and_copies_as_many_back) {
  Words mailbox = caller_mailbox(32);
  Mailbox reply{};
  std::ranges::fill(reply.words, 0x22222222u);
  set_status(reply.words, 0);
  driver.expect(answered(call(travelling(mailbox, 3), 12, 128), reply));
  start_log();

  EXPECT_EQ(_IssueMbox(kBoard, mailbox.data(), 3, 128, 3), DFC_OK);
  Words expected = caller_mailbox(32);
  expected[0] = 0x00002222;
  expected[1] = expected[2] = 0x22222222;
  EXPECT_EQ(mailbox, expected);
  EXPECT_EQ(log(), test::call_line("_IssueMbox", 1248, kMbox) + test::ok_line("_IssueMbox", 1253, kOtherName));
}

struct Limit {
  std::uint32_t sli_mode;
  std::uint32_t words;
  std::uint32_t reply_bytes;
  bool is_accepted;
};

TEST_F(IssueMboxTest, limits_words_and_reply_by_the_sli_mode) {
  const Limit kLimits[] = {{3, 32, 128, true},    {3, 33, 128, false},   {3, 32, 129, false}, {4, 512, 2048, true},
                           {4, 513, 2048, false}, {4, 512, 2049, false}, {5, 33, 128, false}, {5, 32, 128, true}};
  for (const Limit& limit : kLimits) {
    SCOPED_TRACE(testing::Message() << limit.sli_mode << " " << limit.words << " " << limit.reply_bytes);
    Words mailbox = caller_mailbox(513);
    if (limit.is_accepted) {
      const Mailbox sent = travelling(mailbox, std::min(limit.words, 64u));
      driver.expect(answered(call(sent, limit.words * 4, limit.reply_bytes), sent));
    }
    EXPECT_EQ(_IssueMbox(kBoard, mailbox.data(), limit.words, limit.reply_bytes, limit.sli_mode),
              limit.is_accepted ? DFC_OK : DFC_FAILED);
    Words expected = caller_mailbox(513);
    set_status(expected.data(), limit.is_accepted ? 0 : 252);
    EXPECT_EQ(mailbox, expected);
  }
}

TEST_F(IssueMboxTest, copies_64_words_at_most_in_both_directions) {
  Words mailbox = caller_mailbox(100);
  Mailbox reply{};
  std::ranges::fill(reply.words, 0x33330000u);
  set_status(reply.words, 0);
  driver.expect(answered(call(travelling(mailbox, 64), 400, 400), reply));

  EXPECT_EQ(_IssueMbox(kBoard, mailbox.data(), 100, 400, 4), DFC_OK);
  Words expected = caller_mailbox(100);
  std::copy_n(reply.words, 64, expected.begin());
  EXPECT_EQ(mailbox, expected);
}

TEST_F(IssueMboxTest, keeps_the_status_with_which_the_adapter_completes_a_mailbox) {
  Words mailbox = caller_mailbox(4);
  driver.expect(answered(call(travelling(mailbox, 4), 16, 16), travelling(mailbox, 4, 0x1234)));
  EXPECT_EQ(_IssueMbox(kBoard, mailbox.data(), 4, 16, 3), DFC_FAILED);
  EXPECT_EQ(status_of(mailbox.data()), 0x1234);
}

struct FailedCall {
  std::uint32_t platform_status;
  std::uint32_t driver_status;
  std::uint32_t result;
  std::uint16_t mailbox_status;
};

constexpr FailedCall kFailedCalls[] = {{0, 0xBAD005A, 3, 252}, {0, 0xBAD0039, 1, 253}, {0, 0xBAD0004, 1, 254},
                                       {0, 0xBAD0001, 1, 252}, {7, 0, 1, 252},         {7, 0xBAD0039, 1, 253}};

TEST_F(IssueMboxTest, turns_failures_of_the_call_into_mailbox_statuses) {
  start_log(kLogError);
  for (const FailedCall& failed : kFailedCalls) {
    SCOPED_TRACE(failed.driver_status);
    Words mailbox = caller_mailbox(4);
    auto expected = answered(call(travelling(mailbox, 4), 16, 16), {{0x77770502, 0x44444444}});
    expected.platform_status = failed.platform_status;
    expected.driver_status = failed.driver_status;
    driver.expect(expected);

    EXPECT_EQ(_IssueMbox(kBoard, mailbox.data(), 4, 16, 3), failed.result);
    // What came back stands in the mailbox, except for the status.
    EXPECT_EQ(mailbox, (Words{std::uint32_t{failed.mailbox_status} << 16 | 0x0502, 0x44444444, 0, 0}));
  }
  EXPECT_TRUE(log().starts_with(test::error_line("_IssueMbox", 1253, kOtherName, "x0:xbad005a")));
}

TEST_F(IssueMboxTest, leaves_the_mailbox_alone_without_memory) {
  test::c_library.refused_bytes = sizeof(MailboxData);
  Words mailbox = caller_mailbox(4);
  EXPECT_EQ(_IssueMbox(kBoard, mailbox.data(), 4, 16, 3), DFC_NO_MEMORY);
  EXPECT_EQ(mailbox, caller_mailbox(4));
}

// --- IssueMbox

TEST_F(IssueMboxTest, asks_for_the_mode_and_sends_to_older_adapters) {
  Words mailbox = caller_mailbox(32);
  const Mailbox sent = travelling(mailbox, 32);
  expect_driver_info(3);
  driver.expect(answered(call(sent, 128, 64), sent));
  EXPECT_EQ(IssueMbox(kBoard, mailbox.data(), 32, 64), DFC_OK);
}

TEST_F(IssueMboxTest, sends_nothing_to_newer_adapters) {
  Words mailbox = caller_mailbox(32);
  expect_driver_info(4);
  EXPECT_EQ(IssueMbox(kBoard, mailbox.data(), 32, 64), DFC_MBOX_NOT_TAKEN);
  EXPECT_EQ(mailbox, caller_mailbox(32));
}

TEST_F(IssueMboxTest, sends_nothing_when_the_mode_cannot_be_read) {
  Words mailbox = caller_mailbox(32);
  expect_no_driver_info();
  EXPECT_EQ(IssueMbox(kBoard, mailbox.data(), 32, 64), DFC_FAILED);
  EXPECT_EQ(mailbox, caller_mailbox(32));
}

// --- IssueMboxEx

ByteVector extension_block(std::uint32_t sent_bytes, std::uint32_t wanted_bytes, std::uint8_t flag, const ByteVector& data) {
  MailboxExtension block{.flag = flag};
  block.sent_bytes = sent_bytes;
  block.wanted_bytes = wanted_bytes;
  std::ranges::copy(data, block.data);
  return bytes_of(block);
}

class IssueMboxExTest : public IssueMboxTest {
 protected:
  test::ExpectedCall call(const Mailbox& sent, ByteVector block) {
    return {.callback = Callback::kMbox,
            .sent = {.brdno = kDriverBoard, .arg2 = 128, .arg3 = 256},
            .sent_payload = {{}, bytes_of(sent), std::move(block)}};
  }
};

TEST_F(IssueMboxExTest, sends_32_words_of_any_mailbox_and_extension_data_in_both_directions) {
  Words mailbox = caller_mailbox(64);
  ByteVector extension(16, 0xE1);
  Mailbox reply{};
  std::ranges::fill(reply.words, 0x55555555u);
  set_status(reply.words, 0);
  auto expected = call(travelling(mailbox, 32), extension_block(8, 12, 9, ByteVector(8, 0xE1)));
  expected.payload[1] = bytes_of(reply);
  expected.payload[2] = extension_block(8, 12, 9, ByteVector(2048, 0xE2));
  driver.expect(expected);
  start_log();

  EXPECT_EQ(IssueMboxEx(kBoard, mailbox.data(), extension.data(), 9, 2, 3), DFC_OK);
  Words expected_mailbox = caller_mailbox(64);
  std::copy_n(reply.words, 32, expected_mailbox.begin());
  EXPECT_EQ(mailbox, expected_mailbox);
  ByteVector expected_extension(16, 0xE1);
  std::fill_n(expected_extension.begin(), 12, std::uint8_t{0xE2});
  EXPECT_EQ(extension, expected_extension);
  EXPECT_EQ(log(), test::call_line("IssueMboxEx", 1388, kMbox) + test::ok_line("IssueMboxEx", 1390, kMbox));
}

TEST_F(IssueMboxExTest, needs_no_extension_area_without_words) {
  Words mailbox = caller_mailbox(32);
  auto expected = call(travelling(mailbox, 32), extension_block(0, 0, 0, {}));
  expected.payload[1] = bytes_of(travelling(mailbox, 32));
  driver.expect(expected);
  EXPECT_EQ(IssueMboxEx(kBoard, mailbox.data(), nullptr, 0, 0, 0), DFC_OK);
}

TEST_F(IssueMboxExTest, stays_within_the_block_whatever_the_word_counts) {
  Words mailbox = caller_mailbox(32);
  ByteVector extension(2048, 0xE1);
  auto expected = call(travelling(mailbox, 32), extension_block(0x1000, 0x2000, 0, extension));
  expected.payload[1] = bytes_of(travelling(mailbox, 32));
  expected.payload[2] = extension_block(0, 0, 0, ByteVector(2048, 0xE2));
  driver.expect(expected);
  EXPECT_EQ(IssueMboxEx(kBoard, mailbox.data(), extension.data(), 0, 0x400, 0x800), DFC_OK);
  EXPECT_EQ(extension, ByteVector(2048, 0xE2));
}

TEST_F(IssueMboxExTest, receives_no_extension_data_with_an_adapters_status) {
  Words mailbox = caller_mailbox(32);
  ByteVector extension(8, 0xE1);
  auto expected = call(travelling(mailbox, 32), extension_block(0, 8, 0, {}));
  expected.payload[1] = bytes_of(travelling(mailbox, 32, 0x0102));
  expected.payload[2] = extension_block(0, 8, 0, ByteVector(8, 0xE2));
  driver.expect(expected);
  EXPECT_EQ(IssueMboxEx(kBoard, mailbox.data(), extension.data(), 0, 0, 2), DFC_FAILED);
  EXPECT_EQ(status_of(mailbox.data()), 0x0102);
  EXPECT_EQ(extension, ByteVector(8, 0xE1));
}

TEST_F(IssueMboxExTest, turns_failures_of_the_call_into_mailbox_statuses) {
  start_log(kLogError);
  for (const FailedCall& failed : kFailedCalls) {
    SCOPED_TRACE(failed.driver_status);
    Words mailbox = caller_mailbox(32);
    auto expected = call(travelling(mailbox, 32), extension_block(0, 4, 0, {}));
    expected.payload[1] = bytes_of(travelling(mailbox, 2, 0x7777));
    expected.platform_status = failed.platform_status;
    expected.driver_status = failed.driver_status;
    driver.expect(expected);

    ByteVector extension(4, 0xE1);
    EXPECT_EQ(IssueMboxEx(kBoard, mailbox.data(), extension.data(), 0, 0, 1), failed.result);
    EXPECT_EQ(status_of(mailbox.data()), failed.mailbox_status);
    EXPECT_EQ(mailbox[1], caller_mailbox(2)[1]);
    EXPECT_EQ(mailbox[2], 0u);
    EXPECT_EQ(extension, ByteVector(4, 0xE1));
  }
  EXPECT_TRUE(log().starts_with(test::error_line("IssueMboxEx", 1390, kMbox, "x0:xbad005a")));
}

TEST_F(IssueMboxExTest, clears_the_status_even_without_memory) {
  test::c_library.refused_bytes = sizeof(MailboxData);
  Words mailbox = caller_mailbox(32);
  EXPECT_EQ(IssueMboxEx(kBoard, mailbox.data(), nullptr, 0, 0, 0), DFC_NO_MEMORY);
  Words expected = caller_mailbox(32);
  set_status(expected.data(), 0);
  EXPECT_EQ(mailbox, expected);
}

}  // namespace
}  // namespace vaskdfc
