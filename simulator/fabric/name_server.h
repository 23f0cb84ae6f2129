// The directory service of a fabric: CT requests about the fabric's members.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "fabric/members.h"

namespace simulator::fabric {

using Bytes = std::vector<std::uint8_t>;

// A CT preamble, without which nothing is a request.
inline constexpr std::size_t kPreambleBytes = 16;

// The accept or the reject of a request that has at least its preamble.
Bytes answer_ct(std::uint32_t destination, std::span<const std::uint8_t> request, std::span<const Member> members);

}  // namespace simulator::fabric
