// Driver-side records of ELS, CT and management traffic.
#pragma once

#include <cstdint>

#include "vaskdfc/fabric.h"

namespace vaskdfc {

struct ElsFrame {
  std::uint8_t bytes[1024];
};
VASKDFC_RECORD_SIZE(ElsFrame, 1024);

// A CT request or reply, or one of a management command.
struct ServiceFrame {
  std::uint8_t bytes[245760];
};
VASKDFC_RECORD_SIZE(ServiceFrame, 245760);

}  // namespace vaskdfc
