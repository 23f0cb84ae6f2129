#include "mailbox_exchange.h"

#include <algorithm>

MailboxExchange dump_mailbox(std::uint16_t region, std::uint16_t offset, std::uint32_t wanted) {
  MailboxExchange dump(0x17);
  dump.at(4) = 0x32;
  dump.at(8) = std::uint32_t{offset} << 16 | region;
  dump.at(16) = wanted;
  dump.extension.sent_bytes = 0;
  dump.extension.wanted_bytes = 512;
  return dump;
}

MailboxExchange update_mailbox(std::uint16_t region, const std::vector<std::uint8_t>& image) {
  const auto size = static_cast<std::uint32_t>(image.size());
  MailboxExchange update(0x1B);
  update.at(4) = 0x32;
  update.at(8) = size << 16 | region;
  update.at(16) = size;
  update.extension.sent_bytes = size;
  update.extension.wanted_bytes = 0;
  std::copy_n(image.begin(), std::min(image.size(), sizeof(update.extension.data)), update.extension.data);
  return update;
}
