// Extended link services: what a member of a fabric answers to another port.
#pragma once

#include <cstdint>
#include <span>

#include "fabric/members.h"
#include "fabric/name_server.h"

namespace simulator::fabric {

// Which identification an RNID asks for: names alone, or also what a topology is drawn from.
inline constexpr std::uint8_t kCommonIdentification = 0x00;
inline constexpr std::uint8_t kTopologyIdentification = 0xDF;

// The accept of an RNID.
Bytes identification(const Member& member, std::uint8_t format);

// The accept or the reject of a request of at least four bytes.
Bytes answer_els(const Member& member, std::span<const std::uint8_t> request, Clock::Time now);

}  // namespace simulator::fabric
