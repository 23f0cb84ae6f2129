// What the library itself reads and writes in a mailbox.
#pragma once

#include <cstdint>

namespace vaskdfc {

constexpr std::uint8_t command_of(const std::uint32_t* mailbox) { return static_cast<std::uint8_t>(mailbox[0] >> 8); }

constexpr std::uint16_t status_of(const std::uint32_t* mailbox) { return static_cast<std::uint16_t>(mailbox[0] >> 16); }

constexpr void set_status(std::uint32_t* mailbox, std::uint32_t status) { mailbox[0] = (mailbox[0] & 0xFFFF) | status << 16; }

}  // namespace vaskdfc
