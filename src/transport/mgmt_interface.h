// The one management handle of the process: how the interface is described to the platform, opened, counted and closed.
#pragma once

#include <cstdint>

#include "vaskdfc/platform.h"

namespace vaskdfc {

extern const dfc_mgmt_signature trel_mgmt_signature;        // the primary interface
extern const dfc_mgmt_signature trel_mgmt_inbox_signature;  // the fallback; both share one callback table

extern vmk_MgmtUserHandle trel_mgmt_handle;  // keeps its last value after the handle is destroyed
extern std::int32_t refcnt;                  // opens not yet matched by a close; a close too many makes it negative

// Both count one more user and open the handle for the first. Each returns 0, or 1 when the platform refuses; the count is
// then 0.
std::uint32_t dfc_mgmt_init();
std::uint32_t dfc_mgmt_inbox_init();

// Counts one user less and destroys the handle when none is left.
void dfc_mgmt_close();

}  // namespace vaskdfc
