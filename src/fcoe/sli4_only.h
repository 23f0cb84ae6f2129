// FCoE operations are for adapters of SLI mode 4 and above.
#pragma once

#include <cstdint>

#include "info/sli_mode.h"
#include "vaskdfc/result.h"

namespace vaskdfc {

// DFC_OK with the mode; DFC_FAILED when it cannot be read; DFC_UNSUPPORTED, also with the mode, when it is a lower one.
inline std::uint32_t sli4_only(std::uint32_t board, std::uint32_t& sli_mode) {
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  return sli_mode < kSli4 ? DFC_UNSUPPORTED : DFC_OK;
}

}  // namespace vaskdfc
