// A table of driver statuses that contradicts itself.
#include "transport/status_map.h"

using namespace vaskdfc;

#ifdef STATUS_MAPPED_TWICE  // refused: a_driver_status_is_mapped_twice
constexpr std::uint32_t kLast = 0x0BAD0003;
#else
constexpr std::uint32_t kLast = 0x0BAD005D;
#endif

constexpr StatusMap kResults{{{0x0BAD0003, 5}, {0x0BAD0020, 2}, {kLast, 6}}, 1};
static_assert(kResults(0x0BAD0003) == 5);
