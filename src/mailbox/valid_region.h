// Which configuration regions there are.
#pragma once

#include <cstdint>

namespace vaskdfc {

// The region's size in bytes; 0, with a line in the log, for a number that names none.
std::uint32_t valid_region(std::uint32_t region);

}  // namespace vaskdfc
