// The configuration regions that adapters have, by number, and how large each is.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace vaskdfc {

// Numbers and sizes in bytes.
inline constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 18> kRegionSizes{{{0, 60},
                                                                                       {4, 120},
                                                                                       {5, 200},
                                                                                       {6, 200},
                                                                                       {7, 200},
                                                                                       {8, 60},
                                                                                       {9, 256},
                                                                                       {10, 256},
                                                                                       {14, 1000},
                                                                                       {17, 100},
                                                                                       {19, 2028},
                                                                                       {21, 200},
                                                                                       {22, 512},
                                                                                       {23, 1024},
                                                                                       {30, 12},
                                                                                       {32, 8},
                                                                                       {160, 4096},
                                                                                       {162, 4096}}};

// The region's size in bytes; 0 for a number that names none.
constexpr std::uint32_t region_bytes(std::uint32_t region) {
  const auto* const found = std::ranges::find(kRegionSizes, region, [](const auto& entry) { return entry.first; });
  return found == kRegionSizes.end() ? 0 : found->second;
}

}  // namespace vaskdfc
