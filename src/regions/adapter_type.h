// Which adapters are FCoE adapters.
#pragma once

#include <cstdint>

namespace vaskdfc {

// Stores the adapter's type, 0 on failure. Results: 0; 1 when the platform failed; otherwise the driver's status.
std::uint32_t get_hba_type(std::uint32_t board, std::uint32_t& type);

// Types of the FCoE converged adapters: the first and the last of 17 consecutive codes.
constexpr bool is_fcoe_type(std::uint32_t type) { return type == 24 || type == 40; }

}  // namespace vaskdfc
