// Driver-side records of events and RNID.
#pragma once

#include <cstdint>

#include "vaskdfc/events.h"

namespace vaskdfc {

struct EventReply {
  HbaEvent events[32];
};
VASKDFC_RECORD_SIZE(EventReply, 640);

// Names a port or a node to the driver by its WWN; the type in the header tells which of the two fields counts.
struct RnidKey {
  std::uint8_t zero_0[8];
  HbaWwn port_wwn;
  HbaWwn node_wwn;
  std::uint8_t zero_24[4];
};
VASKDFC_RECORD_SIZE(RnidKey, 28);
VASKDFC_FIELD_AT(RnidKey, node_wwn, 16);

struct RnidReply {
  std::uint8_t bytes[64];
};
VASKDFC_RECORD_SIZE(RnidReply, 64);

}  // namespace vaskdfc
