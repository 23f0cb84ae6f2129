#include "regions/region22.h"

#include <algorithm>
#include <array>

#include "mailbox/valid_region.h"
#include "regions/adapter_type.h"
#include "regions/region_paths.h"
#include "transport/staging_buffer.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr uint32_t kRegion = 22;

uint32_t read_image(uint32_t board, uint32_t type, Region22& image, uint32_t& size) {
  size = sizeof(image);
  return read_region(board, is_fcoe_type(type) ? RegionPath::kCallbacks : RegionPath::kMailboxes, kRegion, &image, size);
}

uint32_t write_image(uint32_t board, uint32_t type, const Region22& image) {
  return is_fcoe_type(type) ? fcoeSetRegion22(board, &image, sizeof(image)) : LegacySetRegion22(board, &image, sizeof(image));
}

bool is_valid(const Region22& image, uint32_t size) { return size == sizeof(image) && is_region22(image); }

// Results of a reader after which a new image is written: there was something else, or the adapter has no such region yet.
constexpr bool may_be_recreated(uint32_t read_result) {
  return std::ranges::count(std::array{0u, 4u, 0xFFF6u, 0xFFF7u, 0xFFFCu, 0xFFFEu}, read_result) != 0;
}

}  // namespace

uint32_t vaskdfc::fcoeSetRegion22(uint32_t board, const void* image, uint32_t size) {
  uint32_t type = 0;
  if (const uint32_t result = get_hba_type(board, type); result != DFC_OK) return result;
  if (!is_fcoe_type(type)) return DFC_UNSUPPORTED;
  return write_region(board, RegionPath::kCallbacks, kRegion, image, size);
}

uint32_t LegacySetRegion22(uint32_t board, const void* image, uint32_t size) {
  return write_region(board, RegionPath::kMailboxes, kRegion, image, size);
}

uint32_t DFC_InitR22(uint32_t board) {
  uint32_t type = 0;
  if (const uint32_t result = get_hba_type(board, type); result != DFC_OK) return result;
  const StagingBuffer<Region22> image;
  if (!image) return DFC_NO_MEMORY;
  *image = kBlankRegion22;
  return write_image(board, type, *image);
}

uint32_t DFC_GetRegion22(uint32_t board, dfc_region22_entry* entries, uint32_t* count) {
  uint32_t type = 0;
  if (const uint32_t result = get_hba_type(board, type); result != DFC_OK) return result;
  const auto image = StagingBuffer<Region22>::cleared();
  if (!image) return DFC_NO_MEMORY;
  uint32_t size = 0;
  if (const uint32_t result = read_image(board, type, *image, size); result != DFC_OK) return result;
  if (!is_valid(*image, size)) return DFC_REGION22_NO_IMAGE;

  // Half of the last entry lies beyond the image.
  const auto end = std::ranges::copy(image->entries, entries->bytes).out;
  std::fill_n(end, DFC_REGION22_ENTRIES * sizeof(*entries) - sizeof(image->entries), uint8_t{0});
  *count = DFC_REGION22_ENTRIES;
  return DFC_OK;
}

uint32_t DFC_SetRegion22(uint32_t board, const dfc_region22_entry* entries, uint32_t count) {
  uint32_t type = 0;
  if (const uint32_t result = get_hba_type(board, type); result != DFC_OK) return result;
  const auto image = StagingBuffer<Region22>::cleared();
  if (!image) return DFC_NO_MEMORY;
  uint32_t size = 0;
  const uint32_t read_result = read_image(board, type, *image, size);
  if (!may_be_recreated(read_result)) return DFC_FAILED;

  if (read_result != DFC_OK || !is_valid(*image, size)) {
    *image = kBlankRegion22;
    if (const uint32_t result = write_image(board, type, *image); result != DFC_OK) return result;
  }
  const std::size_t bytes = std::min(count, DFC_REGION22_ENTRIES) * sizeof(*entries);
  const auto* const first = reinterpret_cast<const uint8_t*>(entries);  // may be null where there are none
  std::copy_n(first, std::min(bytes, sizeof(image->entries)), image->entries);
  return write_image(board, type, *image);
}

uint32_t DFC_SetRegion14(uint32_t board, const void* data) {
  uint32_t type = 0;
  if (const uint32_t result = get_hba_type(board, type); result != DFC_OK) return result;
  if (!is_fcoe_type(type)) return DFC_UNSUPPORTED;
  constexpr uint32_t kRegion14 = 14;
  return write_region(board, RegionPath::kCallbacks, kRegion14, data, valid_region(kRegion14));
}
