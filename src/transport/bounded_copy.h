// Copies between a caller's memory and a payload, as far as the payload reaches.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vaskdfc {

// Copies `bytes` bytes and `most` at most. Where there is nothing to copy, either address may be null.
inline void copy_at_most(void* to, const void* from, std::uint32_t bytes, std::size_t most) {
  if (bytes != 0) std::memcpy(to, from, std::min<std::size_t>(bytes, most));
}

}  // namespace vaskdfc
