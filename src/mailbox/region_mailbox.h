// The mailboxes that read and write configuration regions of the older generation, in extension data.
#pragma once

#include <cstdint>

#include "transport/records/mailbox.h"
#include "vaskdfc/mailbox.h"

namespace vaskdfc {

enum class RegionCommand : std::uint8_t { kDump = 0x17, kUpdate = 0x1B };

// `half_10` is the offset of a dump or the size of an update; only its low 16 bits travel there.
constexpr Mailbox region_mailbox(RegionCommand command, std::uint32_t region, std::uint32_t half_10, std::uint32_t bytes) {
  return {{std::uint32_t{static_cast<std::uint8_t>(command)} << 8, 0x32, (region & 0xFFFF) | half_10 << 16, 0, bytes}};
}

// The word in which the adapter says how many bytes it delivered.
constexpr std::uint32_t delivered_bytes(const Mailbox& mailbox) { return mailbox.words[4]; }

inline std::uint32_t send_region_mailbox(std::uint32_t board, Mailbox& mailbox, void* extension, std::uint32_t words_in,
                                         std::uint32_t words_out) {
  return DFC_IssueMboxWithRetryEx(board, mailbox.words, extension, /*flag=*/5, words_in, words_out, /*retry_count=*/1,
                                  /*delay_ms=*/100);
}

}  // namespace vaskdfc
