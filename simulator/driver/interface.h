// How the driver registers itself with the platform, beside the interface's name.
#pragma once

#include <cstdint>

namespace simulator {

inline constexpr std::uint32_t kInterfaceVersion = 0x2000101;
inline constexpr char kVendor[] = "ZAV";

}  // namespace simulator
