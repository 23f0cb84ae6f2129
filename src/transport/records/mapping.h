// Driver-side records of target mapping and bindings.
#pragma once

#include <cstdint>

#include "vaskdfc/mapping.h"

namespace vaskdfc {

// Reply of the target mapping query. Its count word is not used: the count comes in the header.
struct TargetMappingReply {
  std::uint32_t unread_0;
  HbaFcpScsiEntry entries[1024];
};
VASKDFC_RECORD_SIZE(TargetMappingReply, 303108);
VASKDFC_FIELD_AT(TargetMappingReply, entries, 4);

// Reply of the binding list: a FcpBindList with room for 4096 entries.
struct BindListReply {
  std::uint32_t count;
  FcpBinding entries[4096];
};
VASKDFC_RECORD_SIZE(BindListReply, 131076);
VASKDFC_FIELD_AT(BindListReply, entries, 4);

}  // namespace vaskdfc
