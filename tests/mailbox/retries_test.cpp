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
using Sleeps = std::vector<std::string>;

constexpr std::uint32_t kBusy = 0xBAD0039;

Words caller_mailbox(std::size_t words, std::uint8_t command = 0x05) {
  return test::numbered_mailbox(words, 0x00000001u | std::uint32_t{command} << 8);
}

class RetriesTest : public test::AdapterTest {
 protected:
  // Scripts `times` sendings of a mailbox with a driver status and, unless the reply is another one, the same mailbox back.
  void expect_sent(int times, const Mailbox& sent, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t driver_status,
                   const Mailbox* reply = nullptr, ByteVector extension = {}) {
    for (int i = 0; i < times; ++i) {
      driver.expect({.callback = Callback::kMbox,
                     .sent = {.brdno = kDriverBoard, .arg2 = arg2, .arg3 = arg3},
                     .sent_payload = {{}, bytes_of(sent), extension},
                     .driver_status = driver_status,
                     .payload = {{}, bytes_of(reply == nullptr ? sent : *reply)}});
    }
  }
  static const Sleeps& sleeps() { return test::c_library.sleeps; }
};

// --- DFC_IssueMboxWithRetry: N sendings, N sleeps

using WithRetryTest = RetriesTest;

TEST_F(WithRetryTest, sends_and_sleeps_as_often_as_told_while_the_driver_is_busy) {
  Words mailbox = caller_mailbox(8);
  expect_sent(3, travelling(mailbox, 8), 32, 4, kBusy);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 8, 4, 3, 1), DFC_MBOX_GAVE_UP);
  EXPECT_EQ(sleeps(), (Sleeps{"sleep 1", "sleep 1", "sleep 1"}));
  EXPECT_EQ(status_of(mailbox.data()), 253);
}

TEST_F(WithRetryTest, rounds_the_delay_up_to_seconds) {
  for (const auto& [delay_ms, seconds] : {std::pair{0u, 0u}, {1u, 1u}, {1000u, 1u}, {1001u, 2u}, {0xFFFFFFFFu, 4294968u}}) {
    test::c_library.sleeps.clear();
    Words mailbox = caller_mailbox(8);
    expect_sent(1, travelling(mailbox, 8), 32, 4, kBusy);
    EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 8, 4, 1, delay_ms), DFC_MBOX_GAVE_UP);
    EXPECT_EQ(sleeps(), Sleeps{"sleep " + std::to_string(seconds)});
  }
}

TEST_F(WithRetryTest, ends_with_the_first_sending_that_is_not_busy) {
  Words mailbox = caller_mailbox(8);
  const Mailbox sent = travelling(mailbox, 8);
  Mailbox reply = sent;
  reply.words[1] = 0x99999999;
  expect_sent(2, sent, 32, 32, kBusy);
  expect_sent(1, sent, 32, 32, 0, &reply);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 8, 32, 9, 1), DFC_OK);
  EXPECT_EQ(sleeps().size(), 2u);
  EXPECT_EQ(mailbox[1], 0x99999999u);
}

TEST_F(WithRetryTest, gives_up_at_once_on_any_other_status) {
  Words mailbox = caller_mailbox(8);
  const Mailbox refused = travelling(mailbox, 8, 0x0001);
  expect_sent(1, travelling(mailbox, 8), 32, 32, 0, &refused);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 8, 32, 3, 1), DFC_MBOX_GAVE_UP);
  EXPECT_EQ(status_of(mailbox.data()), 1);
  EXPECT_EQ(sleeps(), Sleeps{});
}

TEST_F(WithRetryTest, passes_on_that_the_driver_does_not_take_the_mailbox) {
  Words mailbox = caller_mailbox(8);
  expect_sent(1, travelling(mailbox, 8), 32, 32, 0xBAD005A);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 8, 32, 3, 1), DFC_MBOX_NOT_TAKEN);
  EXPECT_EQ(status_of(mailbox.data()), 252);
}

TEST_F(WithRetryTest, passes_on_that_there_is_no_memory) {
  test::c_library.refused_bytes = sizeof(MailboxData);
  Words mailbox = caller_mailbox(8);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 8, 32, 3, 1), DFC_NO_MEMORY);
}

TEST_F(WithRetryTest, has_the_limits_of_sli_mode_4) {
  Words mailbox = caller_mailbox(512);
  expect_sent(1, travelling(mailbox, 64), 2048, 2048, 0);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 512, 2048, 1, 1), DFC_OK);
  EXPECT_EQ(mailbox, caller_mailbox(512));
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 513, 0, 1, 1), DFC_MBOX_GAVE_UP);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 1, 2049, 1, 1), DFC_MBOX_GAVE_UP);
}

TEST_F(WithRetryTest, receives_the_reply_length_and_256_bytes_at_most) {
  Words mailbox = caller_mailbox(100);
  Mailbox reply{};
  std::ranges::fill(reply.words, 0x00007777u);
  const Mailbox sent = travelling(mailbox, 2);
  expect_sent(1, sent, 8, 6, 0, &reply);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 2, 6, 1, 0), DFC_OK);
  Words expected = caller_mailbox(100);
  expected[0] = 0x00007777;
  expected[1] = (expected[1] & 0xFFFF0000) | 0x7777;
  EXPECT_EQ(mailbox, expected);

  mailbox = caller_mailbox(100);
  std::ranges::fill(reply.words, 0x00008888u);
  expect_sent(1, travelling(mailbox, 64), 256, 400, 0, &reply);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 64, 400, 1, 0), DFC_OK);
  expected = caller_mailbox(100);
  std::fill_n(expected.begin(), 64, 0x00008888u);
  EXPECT_EQ(mailbox, expected);
}

TEST_F(WithRetryTest, sends_nothing_and_changes_nothing_without_retries) {
  Words mailbox = caller_mailbox(64);
  EXPECT_EQ(DFC_IssueMboxWithRetry(kBoard, mailbox.data(), 8, 256, 0, 1), DFC_OK);
  EXPECT_EQ(mailbox, caller_mailbox(64));
}

// --- DFC_IssueMboxWithRetryV2: N sendings (at least one), N - 1 sleeps

class WithRetryV2Test : public RetriesTest {
 protected:
  // A mailbox of the extended path: `bytes` at offsets, the rest as in caller_mailbox.
  static Words sli_config(std::size_t words, std::initializer_list<std::pair<std::size_t, std::uint8_t>> bytes) {
    Words mailbox = caller_mailbox(words, 0x9B);
    for (const auto& [offset, value] : bytes) reinterpret_cast<std::uint8_t*>(mailbox.data())[offset] = value;
    return mailbox;
  }
  void expect_extended(const Words& sent, std::uint32_t transfer_code, std::uint32_t driver_status = 0) {
    const auto bytes = static_cast<std::uint32_t>(sent.size() * 4);
    ByteVector payload(bytes);
    std::memcpy(payload.data(), sent.data(), bytes);
    driver.expect({.callback = Callback::kMboxSliCfgExt,
                   .sent = {.brdno = kDriverBoard, .arg2 = bytes, .arg3 = bytes, .arg6 = transfer_code},
                   .sent_payload = {payload},
                   .driver_status = driver_status,
                   .payload = {payload}});
  }
};

TEST_F(WithRetryV2Test, sleeps_between_the_sendings_only) {
  Words mailbox = caller_mailbox(64);
  expect_driver_info(4);
  expect_sent(3, travelling(mailbox, 64), 256, 256, kBusy);
  EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 3, 1500), DFC_MBOX_GAVE_UP);
  EXPECT_EQ(sleeps(), (Sleeps{"sleep 2", "sleep 2"}));
}

TEST_F(WithRetryV2Test, sends_once_with_one_retry_or_none) {
  for (const std::uint32_t retries : {0u, 1u}) {
    Words mailbox = caller_mailbox(64);
    expect_driver_info(4);
    expect_sent(1, travelling(mailbox, 64), 256, 256, kBusy);
    EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, retries, 1), DFC_MBOX_GAVE_UP);
  }
  EXPECT_EQ(sleeps(), Sleeps{});
}

TEST_F(WithRetryV2Test, works_in_place_and_clears_the_status_before_every_sending) {
  Words mailbox = caller_mailbox(64);
  const Mailbox sent = travelling(mailbox, 64);
  Mailbox reply = sent;
  reply.words[63] = 0x99999999;
  expect_driver_info(4);
  expect_sent(1, sent, 256, 256, kBusy);
  expect_sent(1, sent, 256, 256, 0, &reply);
  set_status(mailbox.data(), 0xFFFF);
  EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 2, 0), DFC_OK);
  EXPECT_EQ(mailbox[63], 0x99999999u);
  EXPECT_EQ(sleeps(), Sleeps{"sleep 0"});
}

TEST_F(WithRetryV2Test, gives_up_on_any_other_status) {
  Words mailbox = caller_mailbox(64);
  expect_driver_info(4);
  expect_sent(1, travelling(mailbox, 64), 256, 256, 0xBAD005A);
  EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 3, 1), DFC_MBOX_GAVE_UP);
  EXPECT_EQ(status_of(mailbox.data()), 252);
}

TEST_F(WithRetryV2Test, refuses_plain_mailboxes_of_another_length) {
  for (const std::uint32_t words : {63u, 65u}) {
    Words mailbox = caller_mailbox(65);
    expect_driver_info(4);
    EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), words, 3, 1), DFC_MBOX_WRONG_KIND);
    EXPECT_EQ(mailbox, caller_mailbox(65));
  }
}

TEST_F(WithRetryV2Test, sends_nothing_to_older_adapters_and_to_those_whose_mode_is_unknown) {
  Words mailbox = caller_mailbox(64);
  expect_driver_info(3);
  EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 3, 1), DFC_MBOX_WRONG_KIND);
  expect_no_driver_info();
  EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 3, 1), DFC_FAILED);
  EXPECT_EQ(mailbox, caller_mailbox(64));
}

TEST_F(WithRetryV2Test, plain_mailboxes_above_sli_mode_4_exceed_the_limits_of_other_modes) {
  Words mailbox = caller_mailbox(64);
  expect_driver_info(5);
  EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 3, 1), DFC_MBOX_GAVE_UP);
  EXPECT_EQ(status_of(mailbox.data()), 252);
}

TEST_F(WithRetryV2Test, sends_embedded_requests_on_the_extended_path) {
  for (const auto& [opcode, code] : {std::pair<std::uint8_t, std::uint32_t>{0xAC, 1}, {0xAB, 2}, {0xAD, 2}, {0x01, 2}}) {
    SCOPED_TRACE(int{opcode});
    Words mailbox = sli_config(64, {{4, 1}, {24, opcode}, {25, 1}});
    Words sent = mailbox;
    sent[40] = sent[41] = 0;
    expect_driver_info(4);
    expect_driver_info(4);
    expect_extended(sent, code);
    EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 1, 1), DFC_OK);
    EXPECT_EQ(mailbox, sent);
  }
}

TEST_F(WithRetryV2Test, sends_other_requests_on_the_extended_path_too) {
  for (const auto& [selector, code] : {std::pair<std::uint8_t, std::uint32_t>{9, 1}, {8, 2}, {0, 2}}) {
    SCOPED_TRACE(int{selector});
    Words mailbox = sli_config(66, {{4, 0}, {257, selector}});
    Words sent = mailbox;
    sent[6] = sent[7] = 0;
    expect_driver_info(4);
    expect_driver_info(4);
    expect_extended(sent, code);
    EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 66, 1, 1), DFC_OK);
    EXPECT_EQ(mailbox, sent);
  }
}

TEST_F(WithRetryV2Test, sends_incomplete_embedded_requests_the_plain_way) {
  const Words wrong_byte = sli_config(64, {{4, 1}, {25, 2}});
  Words no_length = sli_config(64, {{4, 1}, {25, 1}});
  no_length[38] = 0;
  for (Words mailbox : {wrong_byte, no_length}) {
    expect_driver_info(4);
    expect_sent(1, travelling(mailbox, 64), 256, 256, 0);
    const Words before = mailbox;
    EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 1, 1), DFC_OK);
    EXPECT_EQ(mailbox, before);
  }
  Words short_mailbox = wrong_byte;
  expect_driver_info(4);
  EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, short_mailbox.data(), 63, 1, 1), DFC_MBOX_WRONG_KIND);
}

TEST_F(WithRetryV2Test, never_repeats_on_the_extended_path) {
  Words mailbox = sli_config(64, {{4, 1}, {24, 0xAC}, {25, 1}});
  Words sent = mailbox;
  sent[40] = sent[41] = 0;
  expect_driver_info(4);
  expect_driver_info(4);
  expect_extended(sent, 1, kBusy);
  EXPECT_EQ(DFC_IssueMboxWithRetryV2(kBoard, mailbox.data(), 64, 3, 1), DFC_FAILED);
  EXPECT_EQ(sleeps(), Sleeps{});
}

// --- DFC_IssueMboxWithRetryEx: N sendings, N waits

class WithRetryExTest : public RetriesTest {
 protected:
  static ByteVector block(std::uint32_t words_in, std::uint32_t words_out, std::uint8_t flag, const ByteVector& data = {}) {
    MailboxExtension extension{.flag = flag};
    extension.sent_bytes = words_in * 4;
    extension.wanted_bytes = words_out * 4;
    std::ranges::copy(data, extension.data);
    return bytes_of(extension);
  }
  std::uint32_t send(Words& mailbox, ByteVector& extension, std::uint32_t words_in, std::uint32_t words_out, std::uint32_t retries,
                     std::uint32_t delay_ms) {
    return DFC_IssueMboxWithRetryEx(kBoard, mailbox.data(), extension.data(), 5, words_in, words_out, retries, delay_ms);
  }
};

TEST_F(WithRetryExTest, sends_and_waits_as_often_as_told_while_the_driver_is_busy) {
  Words mailbox = caller_mailbox(64);
  ByteVector extension(16, 0xE1);
  expect_sent(3, travelling(mailbox, 32), 128, 256, kBusy, nullptr, block(4, 0, 5, extension));
  EXPECT_EQ(send(mailbox, extension, 4, 0, 3, 100), DFC_MBOX_GAVE_UP);
  EXPECT_EQ(sleeps(), (Sleeps{"usleep 100000", "usleep 100000", "usleep 100000"}));
  Words expected = caller_mailbox(64);
  set_status(expected.data(), 253);
  EXPECT_EQ(mailbox, expected);
}

TEST_F(WithRetryExTest, waits_in_microseconds_up_to_a_second_and_in_seconds_above) {
  for (const auto& [delay_ms, wait] : {std::pair{1000u, "usleep 1000000"}, {1001u, "sleep 2"}, {0u, "usleep 0"}}) {
    test::c_library.sleeps.clear();
    Words mailbox = caller_mailbox(64);
    ByteVector extension(4);
    expect_sent(1, travelling(mailbox, 32), 128, 256, kBusy);
    EXPECT_EQ(send(mailbox, extension, 0, 0, 1, delay_ms), DFC_MBOX_GAVE_UP);
    EXPECT_EQ(sleeps(), Sleeps{wait});
  }
}

TEST_F(WithRetryExTest, receives_the_completed_mailbox_and_the_extension_words) {
  Words mailbox = caller_mailbox(64);
  ByteVector extension(16, 0xE1);
  const Mailbox sent = travelling(mailbox, 32);
  Mailbox reply = sent;
  reply.words[31] = 0x99999999;
  expect_sent(1, sent, 128, 256, kBusy, nullptr, block(2, 3, 5, ByteVector(8, 0xE1)));
  driver.expect({.callback = Callback::kMbox,
                 .sent = {.brdno = kDriverBoard, .arg2 = 128, .arg3 = 256},
                 .sent_payload = {{}, bytes_of(sent), block(2, 3, 5, ByteVector(8, 0xE1))},
                 .payload = {{}, bytes_of(reply), block(2, 3, 5, ByteVector(2048, 0xE2))}});
  EXPECT_EQ(send(mailbox, extension, 2, 3, 2, 0), DFC_OK);
  Words expected = caller_mailbox(64);
  expected[31] = 0x99999999;
  EXPECT_EQ(mailbox, expected);
  ByteVector expected_extension(16, 0xE1);
  std::fill_n(expected_extension.begin(), 12, std::uint8_t{0xE2});
  EXPECT_EQ(extension, expected_extension);
}

TEST_F(WithRetryExTest, gives_up_on_any_other_status_and_on_a_driver_that_does_not_take_the_mailbox) {
  for (const std::uint32_t driver_status : {0xBAD005Au, 0xBAD0004u, 1u}) {
    Words mailbox = caller_mailbox(64);
    ByteVector extension(4);
    expect_sent(1, travelling(mailbox, 32), 128, 256, driver_status);
    EXPECT_EQ(send(mailbox, extension, 0, 1, 3, 1), DFC_MBOX_GAVE_UP);
    EXPECT_EQ(status_of(mailbox.data()), driver_status == 0xBAD0004 ? 254 : 252);
  }
  EXPECT_EQ(sleeps(), Sleeps{});
}

TEST_F(WithRetryExTest, passes_on_that_there_is_no_memory) {
  test::c_library.refused_bytes = sizeof(MailboxData);
  Words mailbox = caller_mailbox(64);
  ByteVector extension(4);
  EXPECT_EQ(send(mailbox, extension, 1, 0, 3, 1), DFC_NO_MEMORY);
}

TEST_F(WithRetryExTest, takes_512_extension_words_and_no_more) {
  Words mailbox = caller_mailbox(64);
  ByteVector extension(2048, 0xE1);
  expect_sent(1, travelling(mailbox, 32), 128, 256, 0, nullptr, block(512, 512, 5, extension));
  EXPECT_EQ(send(mailbox, extension, 512, 512, 1, 0), DFC_OK);
  EXPECT_EQ(send(mailbox, extension, 513, 0, 1, 0), DFC_MBOX_GAVE_UP);
  EXPECT_EQ(send(mailbox, extension, 0, 513, 1, 0), DFC_MBOX_GAVE_UP);
}

TEST_F(WithRetryExTest, sends_nothing_and_changes_nothing_without_retries) {
  Words mailbox = caller_mailbox(64);
  ByteVector extension(16, 0xE1);
  EXPECT_EQ(send(mailbox, extension, 4, 4, 0, 100), DFC_OK);
  EXPECT_EQ(mailbox, caller_mailbox(64));
  EXPECT_EQ(extension, ByteVector(16, 0xE1));
}

}  // namespace
}  // namespace vaskdfc
