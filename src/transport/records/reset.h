// Driver-side records of reset and dump.
#pragma once

#include <cstdint>

#include "vaskdfc/reset.h"

namespace vaskdfc {

// Reply of the driver's revision query.
struct RevisionReply {
  std::uint32_t unread_0;
  std::uint32_t unread_4;
  std::uint32_t supports_reset_type_3;  // nonzero: it does
};
VASKDFC_RECORD_SIZE(RevisionReply, 12);
VASKDFC_FIELD_AT(RevisionReply, supports_reset_type_3, 8);

// Descriptor of a dump region of the driver; the header says how much of it counts.
struct DumpRegionReply {
  std::uint8_t bytes[DFC_DUMP_REGION_BYTES];
};
VASKDFC_RECORD_SIZE(DumpRegionReply, 16);

}  // namespace vaskdfc
