// A mailbox on its way to the adapter and back.
#pragma once

#include "sim_process.h"

// Boards of the built-in scenario with adapters of either generation.
constexpr std::uint32_t kOlder = 7;
constexpr std::uint32_t kNewer = 1;

// A mailbox with what travels beside it; every byte that nobody sets is one that a test would not expect.
struct MailboxExchange {
  explicit MailboxExchange(std::uint32_t command) { mailbox.words[0] = 0x55AA0001 | command << 8; }

  vaskdfc::Mailbox mailbox{};
  vaskdfc::MailboxData data = garbage<vaskdfc::MailboxData>();
  vaskdfc::MailboxExtension extension = garbage<vaskdfc::MailboxExtension>();
  dfc_mgmt_hdr header{.arg2 = sizeof(vaskdfc::Mailbox), .arg3 = sizeof(vaskdfc::Mailbox)};

  // Words by their byte offset.
  std::uint32_t& at(std::size_t offset) { return mailbox.words[offset / 4]; }
  std::uint32_t status() const { return mailbox.words[0] >> 16; }

  // Returns the adapter's status of a mailbox that the driver must take.
  std::uint32_t issue(Session& session, std::uint32_t board) {
    header.brdno = board;
    header = session.call<Callback::kMbox>(header, data, mailbox, extension);
    EXPECT_EQ(header.status, 0u);
    return status();
  }
};

// A dump of a region's piece on an adapter of the older generation.
MailboxExchange dump_mailbox(std::uint16_t region, std::uint16_t offset, std::uint32_t wanted);

// An update of a region there.
MailboxExchange update_mailbox(std::uint16_t region, const std::vector<std::uint8_t>& image);
