// What the driver registered with the platform, and the check of a caller's signature against it.
#pragma once

#include <span>
#include <string>

#include "vaskdfc/platform.h"
#include "vmkmgmt_sim.h"

namespace simulator {

// Compares a signature and its descriptors with the driver's. The first mismatch decides.
vmkmgmt_sim_platform_status check_signature(const dfc_mgmt_signature& signature, std::span<const std::string> interface_names);

}  // namespace simulator
