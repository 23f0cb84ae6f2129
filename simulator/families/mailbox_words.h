// The first word of a mailbox, which every mailbox has in common.
#pragma once

#include <cstdint>

#include "vmkmgmt_sim.h"

namespace simulator {

using MailboxStatus = vmkmgmt_sim_mailbox_status;

constexpr std::uint32_t command_of(std::uint32_t first_word) { return first_word >> 8 & 0xFF; }

constexpr std::uint32_t with_status(std::uint32_t first_word, MailboxStatus status) {
  return (first_word & 0xFFFF) | static_cast<std::uint32_t>(status) << 16;
}

}  // namespace simulator
