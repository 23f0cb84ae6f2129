// SLI mailboxes of both generations.
#include <algorithm>
#include <numeric>

#include "mailbox_exchange.h"

namespace {

using vaskdfc::Mailbox;

TEST(Mailbox, read_commands_fill_the_data_buffer_with_a_pattern) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t board : {kOlder, kNewer}) {
      for (const std::uint32_t command : {0x38u, 0x8Du, 0x8Fu}) {
        for (const std::uint32_t length : {0u, 1u, 300u, 4096u}) {
          MailboxExchange read(command);
          read.at(12) = 0xAB000000 | length;
          EXPECT_EQ(read.issue(session, board), 0u);
          for (std::uint32_t i = 0; i < length; ++i) ASSERT_EQ(read.data.bytes[i], (i + i / 256 + command) % 256) << i;
          EXPECT_TRUE(std::all_of(read.data.bytes + length, std::end(read.data.bytes), [](auto byte) { return byte == 0xA5; }));
        }
      }
    }
  });
}

TEST(Mailbox, a_pattern_longer_than_the_data_buffer_is_refused) {
  in_process({}, [] {
    Session session;
    MailboxExchange read(0x38);
    read.at(12) = 4097;
    EXPECT_EQ(read.issue(session, kNewer), std::uint32_t{VMKMGMT_SIM_MAILBOX_BAD_REQUEST});
    EXPECT_EQ(read.data.bytes[0], 0xA5);
  });
}

// What comes back of so many bytes sent when so many are wanted.
std::vector<std::uint8_t> inverted(Session& session, std::uint32_t sent, std::uint32_t wanted) {
  MailboxExchange exchange(0x84);
  exchange.at(8) = 0xCD000000 | sent;
  exchange.at(20) = 0xEF000000 | wanted;
  std::ranges::copy(pattern(sent, 0), exchange.data.bytes);
  EXPECT_EQ(exchange.issue(session, kOlder), 0u);
  return {exchange.data.bytes, exchange.data.bytes + wanted};
}

TEST(Mailbox, sent_data_comes_back_inverted_as_far_as_it_is_wanted) {
  in_process({}, [] {
    Session session;
    for (const auto& [sent, wanted] : {std::pair{0u, 0u}, std::pair{1u, 1u}, std::pair{300u, 300u}, std::pair{4096u, 4096u},
                                       std::pair{300u, 100u}, std::pair{100u, 300u}}) {
      std::vector<std::uint8_t> expected = pattern(sent, 0);
      for (std::uint8_t& byte : expected) byte ^= 0xFF;
      expected.resize(wanted);
      EXPECT_EQ(inverted(session, sent, wanted), expected) << sent << " " << wanted;
    }
  });
}

TEST(Mailbox, lengths_beyond_the_data_buffer_are_refused_for_sent_data_too) {
  in_process({}, [] {
    Session session;
    for (const auto& [sent, wanted] : {std::pair{4097u, 1u}, std::pair{1u, 4097u}}) {
      MailboxExchange exchange(0x84);
      exchange.at(8) = sent;
      exchange.at(20) = wanted;
      EXPECT_EQ(exchange.issue(session, kOlder), std::uint32_t{VMKMGMT_SIM_MAILBOX_BAD_REQUEST});
    }
  });
}

std::string bytes_at(const Mailbox& mailbox, std::size_t offset, std::size_t count) {
  return std::string(reinterpret_cast<const char*>(mailbox.words), sizeof(mailbox)).substr(offset, count);
}

TEST(Mailbox, ordinary_commands_read_what_the_adapter_is) {
  in_process({}, [] {
    Session session;
    MailboxExchange revision(0x01);
    std::ranges::fill(revision.mailbox.words + 1, std::end(revision.mailbox.words), 0xFFFFFFFF);
    EXPECT_EQ(revision.issue(session, kOlder), 0u);
    EXPECT_EQ(revision.at(4), 3u);
    EXPECT_EQ(bytes_at(revision.mailbox, 8, 32), "2.10a7" + std::string(26, '\0'));

    MailboxExchange names(0x03);
    EXPECT_EQ(names.issue(session, kNewer), 0u);
    EXPECT_EQ(bytes_at(names.mailbox, 4, 16), std::string("\x20\0\0\x5A\x41\x56\x02\x01\x10\0\0\x5A\x41\x56\x02\x01", 16));
  });
}

TEST(Mailbox, ordinary_commands_read_how_the_adapter_is_doing) {
  in_process({}, [] {
    Session session;
    MailboxExchange link(0x02);
    EXPECT_EQ(link.issue(session, kOlder), 0u);
    EXPECT_EQ(link.at(4), 2u);
    EXPECT_EQ(link.at(8), 0x010C00u);
    EXPECT_EQ(link.at(12), 0x10u);

    session.call<Callback::kSetDiag>({.brdno = kOlder, .arg6 = 0x12});
    session.call<Callback::kEventTest>({.brdno = kOlder});
    session.call<Callback::kEventTest>({.brdno = kOlder});
    EXPECT_EQ(link.issue(session, kOlder), 0u);
    EXPECT_EQ(link.at(4), 3u);
    EXPECT_EQ(link.at(8), 0u);
    EXPECT_EQ(link.at(12), 0u);

    MailboxExchange counters(0x04);
    EXPECT_EQ(counters.issue(session, kOlder), 0u);
    EXPECT_EQ(counters.at(4), 1u);
    EXPECT_EQ(counters.at(8), 2u);
  });
}

TEST(Mailbox, unknown_commands_complete_with_a_status_and_keep_the_words) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t board : {kOlder, kNewer}) {
      for (const std::uint32_t command : {0x00u, 0x05u, 0x16u, 0x18u, 0x9Bu, 0xFFu}) {
        MailboxExchange unknown(command);
        std::iota(unknown.mailbox.words + 1, std::end(unknown.mailbox.words), 1u);
        const Mailbox sent = unknown.mailbox;
        EXPECT_EQ(unknown.issue(session, board), std::uint32_t{VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND});
        EXPECT_EQ(unknown.at(0) & 0xFFFF, sent.words[0] & 0xFFFF);
        EXPECT_TRUE(std::equal(sent.words + 1, std::end(sent.words), unknown.mailbox.words + 1));
      }
    }
  });
}

TEST(Mailbox, words_that_were_not_sent_are_zero_and_words_that_are_not_wanted_do_not_come_back) {
  in_process({}, [] {
    Session session;
    MailboxExchange read(0x38);
    read.at(12) = 16;
    read.header.arg2 = 12;
    EXPECT_EQ(read.issue(session, kNewer), 0u);
    EXPECT_EQ(read.data.bytes[0], 0xA5) << "the length was not sent";
    EXPECT_EQ(read.at(12), 0u);

    MailboxExchange revision(0x01);
    revision.header.arg3 = 8;
    EXPECT_EQ(revision.issue(session, kNewer), 0u);
    EXPECT_EQ(revision.at(4), 4u);
    EXPECT_EQ(revision.at(8), 0u);

    MailboxExchange unknown(0x05);
    unknown.header.arg2 = unknown.header.arg3 = 0;
    EXPECT_EQ(unknown.issue(session, kNewer), std::uint32_t{VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND})
        << "the first word always travels";
  });
}

TEST(Mailbox, lengths_beyond_the_mailbox_mean_the_mailbox) {
  in_process({}, [] {
    Session session;
    MailboxExchange unknown(0x05);
    unknown.mailbox.words[63] = 63;
    unknown.header.arg2 = unknown.header.arg3 = 0xFFFFFFFF;
    EXPECT_EQ(unknown.issue(session, kNewer), std::uint32_t{VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND});
    EXPECT_EQ(unknown.mailbox.words[63], 63u);
  });
}

TEST(Mailbox, the_example_scenario_is_busy_twice_and_then_works) {
  in_process({{VMKMGMT_SIM_SCENARIO, EXAMPLE_SCENARIOS "/busy-mailbox.json"}}, [] {
    Session session;
    const auto issue = [&](std::uint32_t board) {
      MailboxExchange link(0x02);
      link.header.brdno = board;
      const std::uint32_t status = session.call<Callback::kMbox>(link.header, link.data, link.mailbox, link.extension).status;
      EXPECT_EQ(link.status(), status == 0 ? 0u : 0x55AAu) << "the adapter never saw it";
      return status;
    };
    EXPECT_EQ(issue(0), std::uint32_t{VMKMGMT_SIM_DRIVER_BUSY});
    EXPECT_EQ(issue(0), std::uint32_t{VMKMGMT_SIM_DRIVER_BUSY});
    EXPECT_EQ(issue(0), 0u);

    MailboxExchange dump = dump_mailbox(22, 0, 128);
    EXPECT_EQ(dump.issue(session, 0), 0u);
    EXPECT_EQ(std::string(dump.extension.data, dump.extension.data + 4), "RG22");
  });
}

TEST(Mailbox, a_failed_adapter_takes_none) {
  in_process({}, [] {
    Session session;
    MailboxExchange revision(0x01);
    revision.header.brdno = 12;
    EXPECT_EQ(session.call<Callback::kMbox>(revision.header, revision.data, revision.mailbox, revision.extension).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    EXPECT_EQ(revision.status(), 0x55AAu);
  });
}

}  // namespace
