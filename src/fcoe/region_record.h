// Settings of FCoE that are records of configuration region 23.
#pragma once

#include "fcoe/sli4_only.h"
#include "regions/region23.h"

namespace vaskdfc {

// Reads region 23 and finds the record of type T in it. `not_found` is the operation's result where the image has none.
template <Record T>
std::uint32_t find_record(std::uint32_t board, Region23& region, std::uint32_t not_found, T*& record) {
  std::uint32_t sli_mode = 0;
  if (const std::uint32_t result = sli4_only(board, sli_mode); result != DFC_OK) return result;
  if (const std::uint32_t result = region.read(board, sli_mode); result != DFC_OK) return result;
  record = region.find<T>();
  return record == nullptr ? not_found : DFC_OK;
}

}  // namespace vaskdfc
