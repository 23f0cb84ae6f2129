// Reading configuration regions, whatever the adapter's generation, and what the tool knows of each region.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "failure.h"

namespace vaskdfc::tool {

// Generations of adapters differ in how their regions are read.
inline constexpr std::uint32_t kNewerSliMode = 4;

// What the results of region writes mean, which are mailboxes' on the older generation.
Results results_of_writes(std::uint32_t sli_mode);

struct RegionRead {
  enum class State { kPresent, kMissing, kUnreadable };

  State state = State::kUnreadable;
  std::optional<std::uint32_t> size;  // of the region, by the library's own table
  std::vector<std::uint8_t> bytes;    // as delivered, which may be fewer
  std::uint32_t result = 0;
  std::string operation;  // the library's; empty where it cannot read this region at all
};

// A region as the adapter delivers it. Does not throw; a region that is not there is no failure.
RegionRead read_region(std::uint32_t adapter, std::uint32_t sli_mode, std::uint32_t region);

// The same, where anything but a region that was read is a Failure.
RegionRead read_present_region(std::uint32_t adapter, std::uint32_t region);
// The same, where a region that is not there will do.
RegionRead read_region_or_missing(std::uint32_t adapter, std::uint32_t region);

Failure region_failure(std::uint32_t adapter, std::uint32_t region, const RegionRead& read);

// The regions that a generation of adapters is known to have.
struct KnownRegion {
  std::uint32_t number;
  const char* what = "the adapter's";
  bool shown = false;     // `region show` decodes it
  bool writable = false;  // `region init` or `region write` changes it
};
std::vector<KnownRegion> known_regions(std::uint32_t sli_mode);

}  // namespace vaskdfc::tool
