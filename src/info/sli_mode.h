// The SLI interface mode of an adapter, which decides how other families talk to it.
#pragma once

#include <cstdint>

namespace vaskdfc {

// Stores the mode and returns 0; otherwise returns the result of DFC_GetDrvInfo and leaves `mode` untouched.
std::uint32_t get_sli_mode(std::uint32_t board, std::uint32_t& mode);

// Adapters of the newer generation report this mode or a higher one.
inline constexpr std::uint32_t kSli4 = 4;

}  // namespace vaskdfc
