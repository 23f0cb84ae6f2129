// Mailboxes as callers pass them and as they travel.
#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include "mailbox/mailbox_words.h"
#include "transport/records/mailbox.h"

namespace vaskdfc::test {

using Words = std::vector<std::uint32_t>;

// A mailbox with this first word, whose other words are all different.
inline Words numbered_mailbox(std::size_t words, std::uint32_t first_word) {
  Words mailbox(words);
  std::iota(mailbox.begin(), mailbox.end(), 0x11110000u);
  mailbox[0] = first_word;
  return mailbox;
}

// The first words of a mailbox on its way, with a status; the rest is 0.
inline Mailbox travelling(const Words& words, std::size_t count, std::uint16_t status = 0) {
  Mailbox mailbox{};
  std::copy_n(words.begin(), count, mailbox.words);
  set_status(mailbox.words, status);
  return mailbox;
}

}  // namespace vaskdfc::test
