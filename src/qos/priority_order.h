// The order in which priority rules are sent.
#pragma once

#include <cstdint>

#include "vaskdfc/priority.h"

namespace vaskdfc {

// Puts the rules, at most DFC_FCP_PRIO_MOST_RULES, in order in place: the more specific a rule, the earlier, and rules that are
// equally specific in the reverse of their order. Returns 0; 1 without memory, and then leaves the rules as they are.
std::uint32_t order_fcp_priority_list(dfc_fcp_prio_list& list);

}  // namespace vaskdfc
