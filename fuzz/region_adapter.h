// An adapter that keeps configuration regions as they are written, and delivers them by callbacks or by mailboxes.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "exhaustive/platform.h"

namespace vaskdfc::fuzz {

using Image = std::vector<std::uint8_t>;

inline constexpr std::uint32_t kFcType = 16;
inline constexpr std::uint32_t kFcoeType = 24;

struct RegionAdapter {
  std::uint32_t sli_mode;
  std::uint32_t type;
  std::uint32_t piece_bytes;                 // that a mailbox delivers at most
  std::map<std::uint32_t, Image> regions{};  // by number; an empty one is missing

  bool is_newer() const { return sli_mode >= 4; }
};

// The one that answers at every board, and its answers.
extern RegionAdapter* region_adapter;
int answer_as_region_adapter(Callback callback, const test::Parameters& parameters);

}  // namespace vaskdfc::fuzz
