// Driver-side records of loopback.
#pragma once

#include <cstdint>

#include "vaskdfc/loopback.h"

namespace vaskdfc {

// What is sent through the loop or received from it; the header says how much of it counts.
struct LoopbackData {
  std::uint8_t bytes[DFC_LOOPBACK_BYTES];
};
VASKDFC_RECORD_SIZE(LoopbackData, 65536);

}  // namespace vaskdfc
