// The four commands whose mailboxes name memory of the caller.
#include <span>

#include "mailbox/issue_mbox.h"
#include "mailbox/mailbox_words.h"
#include "support/adapter_test.h"
#include "support/host_memory.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;

Mailbox mailbox_with(std::uint8_t command, std::initializer_list<std::pair<std::size_t, std::uint32_t>> words) {
  Mailbox mailbox{};
  mailbox.words[0] = std::uint32_t{command} << 8;
  for (const auto& [offset, word] : words) mailbox.words[offset / 4] = word;
  return mailbox;
}

class HostBuffersTest : public test::AdapterTest {
 protected:
  HostBuffersTest() { std::ranges::fill(memory.bytes(), kUntouched); }

  // Sends a mailbox; the driver must see the data, answers with 4096 bytes of kRead and completes the mailbox with a status.
  std::uint32_t send(Mailbox mailbox, const ByteVector& data = {}, std::uint16_t status = 0) {
    Mailbox reply = mailbox;
    set_status(reply.words, status);
    return send(mailbox, data, reply);
  }
  std::uint32_t send(Mailbox mailbox, const ByteVector& data, const Mailbox& reply) {
    driver.expect({.callback = Callback::kMbox,
                   .sent = {.brdno = kDriverBoard, .arg2 = 128, .arg3 = 128},
                   .sent_payload = {data, test::bytes_of(mailbox), {}},
                   .payload = {ByteVector(4096, kRead), test::bytes_of(reply)}});
    return _IssueMbox(kBoard, mailbox.words, 32, 128, 3);
  }
  // That many bytes were read into the memory, and no further one.
  void expect_read(std::size_t bytes) {
    EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(memory.bytes().first(bytes), kRead)), bytes);
    EXPECT_EQ(std::ranges::count(memory.bytes().subspan(bytes), kRead), 0);
  }

  static constexpr std::uint8_t kUntouched = 0xC0;
  static constexpr std::uint8_t kRead = 0xD0;
  test::HostMemory memory;
};

TEST_F(HostBuffersTest, reads_up_to_4096_bytes_for_the_three_reading_commands) {
  for (const auto command : std::to_array<std::uint8_t>({0x38, 0x8D, 0x8F})) {
    SCOPED_TRACE(int{command});
    for (const std::uint32_t bytes : {1u, 4096u}) {
      std::ranges::fill(memory.bytes(), kUntouched);
      // Only the low 24 bits are the length.
      EXPECT_EQ(send(mailbox_with(command, {{12, 0xAB000000 | bytes}, {16, memory.address()}})), DFC_OK);
      expect_read(bytes);
    }
  }
}

TEST_F(HostBuffersTest, sends_and_reads_for_the_command_that_does_both) {
  const ByteVector data(4096, kUntouched);
  const std::uint32_t destination = memory.address() + 4096;
  EXPECT_EQ(send(mailbox_with(0x84, {{8, 0xFF001000}, {12, memory.address()}, {20, 0xFF000005}, {24, destination}}), data), DFC_OK);
  EXPECT_EQ(memory.bytes()[4095], kUntouched);
  EXPECT_EQ(memory.bytes()[4096 + 4], kRead);
  EXPECT_EQ(memory.bytes()[4096 + 5], kUntouched);
}

TEST_F(HostBuffersTest, reads_nothing_without_a_length_or_a_destination) {
  EXPECT_EQ(send(mailbox_with(0x38, {{12, 0}, {16, memory.address()}})), DFC_OK);
  EXPECT_EQ(send(mailbox_with(0x38, {{12, 16}, {16, 0}})), DFC_OK);
  EXPECT_EQ(send(mailbox_with(0x84, {{20, 16}, {24, 0}})), DFC_OK);
  expect_read(0);
}

TEST_F(HostBuffersTest, reads_nothing_for_other_commands) {
  EXPECT_EQ(send(mailbox_with(0x05, {{12, 16}, {16, memory.address()}, {20, 16}, {24, memory.address()}})), DFC_OK);
  expect_read(0);
}

TEST_F(HostBuffersTest, reads_nothing_when_the_adapter_completes_with_a_status) {
  EXPECT_EQ(send(mailbox_with(0x38, {{12, 16}, {16, memory.address()}}), {}, 0x0001), DFC_FAILED);
  expect_read(0);
}

TEST_F(HostBuffersTest, takes_length_and_address_from_the_caller_and_not_from_the_reply) {
  const Mailbox mailbox = mailbox_with(0x38, {{12, 16}, {16, memory.address()}});
  const Mailbox reply = mailbox_with(0x38, {{12, 4096}, {16, memory.address() + 4096}});
  EXPECT_EQ(send(mailbox, {}, reply), DFC_OK);
  expect_read(16);
}

TEST_F(HostBuffersTest, looks_only_at_words_that_the_caller_sent) {
  Mailbox mailbox = mailbox_with(0x38, {{12, 16}, {16, memory.address()}});
  Mailbox sent = mailbox;
  sent.words[4] = 0;
  driver.expect({.callback = Callback::kMbox,
                 .sent = {.brdno = kDriverBoard, .arg2 = 16, .arg3 = 16},
                 .sent_payload = {{}, test::bytes_of(sent), {}},
                 .payload = {ByteVector(4096, kRead), test::bytes_of(sent)}});
  EXPECT_EQ(_IssueMbox(kBoard, mailbox.words, 4, 16, 3), DFC_OK);
  expect_read(0);
}

using HostBuffersDeathTest = HostBuffersTest;

TEST_F(HostBuffersDeathTest, stops_the_process_for_more_than_4096_bytes_to_the_adapter) {
  Mailbox mailbox = mailbox_with(0x84, {{8, 4097}, {12, memory.address()}});
  EXPECT_EXIT((void)_IssueMbox(kBoard, mailbox.words, 32, 128, 3), testing::KilledBySignal(SIGABRT),
              "trel_dfcutil:[0-9]+: _IssueMbox: Assertion `write_size <= 4096' failed");
}

TEST_F(HostBuffersDeathTest, stops_the_process_for_more_than_4096_bytes_from_the_adapter) {
  Mailbox by_read_command = mailbox_with(0x8F, {{12, 4097}, {16, memory.address()}});
  Mailbox by_both = mailbox_with(0x84, {{20, 4097}, {24, memory.address()}});
  for (Mailbox* const mailbox : {&by_read_command, &by_both}) {
    EXPECT_EXIT((void)_IssueMbox(kBoard, mailbox->words, 32, 128, 3), testing::KilledBySignal(SIGABRT),
                "trel_dfcutil:[0-9]+: _IssueMbox: Assertion `read_size <= 4096' failed");
  }
}

}  // namespace
}  // namespace vaskdfc
