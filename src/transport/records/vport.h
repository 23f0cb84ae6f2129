// Driver-side records of virtual ports.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vaskdfc/vport.h"

namespace vaskdfc {

// Reply of the virtual-port list: a dfc_vport_list with room for 4096 entries.
struct VportListReply {
  std::uint32_t count;
  dfc_vport_entry entries[4096];
};
VASKDFC_RECORD_SIZE(VportListReply, 81924);

// Reply of the node list: a dfc_node_list with room for 512 nodes.
struct NodeListReply {
  std::uint32_t count;
  dfc_node_entry entries[512];
};
VASKDFC_RECORD_SIZE(NodeListReply, 157700);

// Where a node's port WWN stands in it: all that the library itself knows of a node.
inline constexpr std::size_t kNodePortWwn = 284;

}  // namespace vaskdfc
