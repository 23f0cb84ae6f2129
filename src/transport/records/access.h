// Driver-side records of raw access to an adapter.
#pragma once

#include <cstdint>

#include "vaskdfc/access.h"

namespace vaskdfc {

// What is read from or written to adapter memory or PCI configuration space; the header says how much of it counts.
struct AccessData {
  std::uint8_t bytes[DFC_ACCESS_BYTES];
};
VASKDFC_RECORD_SIZE(AccessData, 4096);

}  // namespace vaskdfc
