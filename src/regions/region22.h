// Configuration region 22: a signed table of entries.
#pragma once

#include <array>
#include <cstdint>

#include "transport/callback_table.h"
#include "vaskdfc/regions.h"

namespace vaskdfc {

struct Region22 {
  std::array<std::uint8_t, 4> signature;
  std::uint8_t constant_1;
  std::uint8_t zero_5[3];
  std::uint8_t entries[504];
};
VASKDFC_RECORD_SIZE(Region22, DFC_REGION22_BYTES);

inline constexpr Region22 kBlankRegion22{.signature = {'R', 'G', '2', '2'}, .constant_1 = 1};

// Whether an image of the region's size is one.
inline bool is_region22(const Region22& image) { return image.signature == kBlankRegion22.signature; }

// Writes region 22 of an FCoE adapter; the result is the adapter's reply word. DFC_UNSUPPORTED for another type of adapter, the
// result of get_hba_type when the type cannot be read.
std::uint32_t fcoeSetRegion22(std::uint32_t board, const void* image, std::uint32_t size);

}  // namespace vaskdfc
