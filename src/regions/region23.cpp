#include "regions/region23.h"

#include <algorithm>
#include <array>

#include "info/sli_mode.h"
#include "mailbox/valid_region.h"
#include "regions/image_cursor.h"
#include "regions/region_paths.h"
#include "transport/log.h"
#include "transport/records/le.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr uint32_t kRegion = 23;
constexpr uint32_t kVersion = 1;
constexpr uint8_t kEndOfChain = 0xFF;
constexpr std::array<uint8_t, 4> kSignature{'R', 'G', '2', '3'};

struct RecordHeader {
  uint8_t type;
  uint8_t data_words;
  uint8_t specific[2];

  constexpr std::size_t data_bytes() const { return data_words * sizeof(uint32_t); }
};
VASKDFC_RECORD_SIZE(RecordHeader, 4);

constexpr std::size_t kFirstRecord = 8;

// Everything that the default image sets. The end marker has no second specific byte here.
constexpr std::array<uint8_t, 359> kDefaultImage = [] {
  std::array<uint8_t, 359> image{};
  const auto put = [&](std::size_t offset, std::initializer_list<uint8_t> bytes) {
    std::ranges::copy(bytes, image.begin() + static_cast<std::ptrdiff_t>(offset));
  };
  std::ranges::copy(kSignature, image.begin());
  put(4, {kVersion});
  put(8, {0xA0, 2, 1, 1, /*data*/ 0x0E, 0xFC});
  put(20, {0xA1, 80});
  put(344, {0xA2, 2, 0x20, 0, /*data*/ 1, 0, 1, 0, 0xFF});
  put(356, {kEndOfChain});
  return image;
}();

constexpr RegionPath path_of(uint32_t sli_mode) { return sli_mode < kSli4 ? RegionPath::kMailboxes : RegionPath::kCallbacks; }

uint32_t write_image(uint32_t board, uint32_t sli_mode, const void* image, uint32_t size) {
  return sli_mode < kSli4 ? LegacySetRegion23(board, image, size) : fcoeSetRegion23(board, image, size);
}

SearchStatus take_start(ImageCursor& cursor) {
  const auto signature = cursor.take<std::array<uint8_t, 4>>();
  if (!signature) return SearchStatus::kTooShort;
  if (*signature != kSignature) return SearchStatus::kSignature;
  const auto version = cursor.take<Le32>();
  if (!version) return SearchStatus::kTooShort;
  return *version == kVersion ? SearchStatus::kFound : SearchStatus::kVersion;
}

// Results of a reader that found no image.
constexpr bool is_absent(uint32_t result) {
  return result == DFC_DUMP_COMPLETED_FFFD || result == DFC_DUMP_COMPLETED_FFF7 || result == DFC_DUMP_COMPLETED_FFF6;
}

constexpr bool may_start_an_image(uint8_t type) { return (type >= 0xA0 && type <= 0xA2) || type == kEndOfChain; }

}  // namespace

uint32_t vaskdfc::initRegion23(uint8_t* image) {
  std::ranges::copy(kDefaultImage, image);
  return 0;
}

// The first four records have known types. Deliberately, an end marker among them does not end this walk, headers do not count
// towards the bound, and the fourth record's length is not looked at.
bool vaskdfc::is_region23(std::span<uint8_t> image) {
  constexpr int kRecords = 4;
  ImageCursor cursor(image);
  if (take_start(cursor) != SearchStatus::kFound) return false;
  std::size_t bound = kFirstRecord;
  for (int i = 0; i < kRecords; ++i) {
    if (bound >= image.size()) return false;
    const auto record = cursor.take<RecordHeader>();
    if (!record || !may_start_an_image(record->type)) return false;
    bound += record->data_bytes();
    cursor.skip(record->data_bytes());
  }
  return true;
}

uint8_t* vaskdfc::searchRegion23(std::span<uint8_t> image, uint8_t wanted, SearchStatus& status) {
  ImageCursor cursor(image);
  status = take_start(cursor);
  if (status != SearchStatus::kFound) return nullptr;

  // Deliberate: headers do not count towards the bound.
  std::size_t bound = kFirstRecord;
  while (const auto record = cursor.peek<RecordHeader>()) {
    if (record->type == kEndOfChain) {
      log_record_found({__func__, 4417}, kEndOfChain);
      status = SearchStatus::kEnd;
      return nullptr;
    }
    if (record->type == wanted) {
      // An "ERROR:" line although nothing is wrong; log readers match it.
      log_record_found({__func__, 4423}, wanted);
      return cursor.rest().data();
    }
    bound += record->data_bytes();
    if (bound >= image.size()) break;
    cursor.skip(sizeof(RecordHeader) + record->data_bytes());
  }
  status = SearchStatus::kTooShort;
  return nullptr;
}

uint32_t GetRegion23(uint32_t board, uint8_t** image, uint32_t* size, uint32_t sli_mode) {
  *image = nullptr;
  *size = 0;
  const uint32_t whole = valid_region(kRegion);
  Image buffer = cleared_image(whole);
  if (!buffer) return DFC_NO_MEMORY;

  uint32_t bytes = whole;
  const uint32_t result = read_region(board, path_of(sli_mode), kRegion, buffer.get(), bytes);
  if (result != DFC_OK && !is_absent(result)) return DFC_FAILED;

  const bool was_read = result == DFC_OK && bytes == whole;
  if (!was_read || !is_region23({buffer.get(), whole})) initRegion23(buffer.get());
  *image = buffer.release();
  *size = whole;
  return DFC_OK;
}

uint32_t vaskdfc::fcoeSetRegion23(uint32_t board, const void* image, uint32_t size) {
  return write_region(board, RegionPath::kCallbacks, kRegion, image, size);
}

uint32_t LegacySetRegion23(uint32_t board, const void* image, uint32_t size) {
  return write_region(board, RegionPath::kMailboxes, kRegion, image, size);
}

uint32_t DFC_InitR23(uint32_t board) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  const uint32_t size = valid_region(kRegion);
  const Image image = cleared_image(size);
  if (!image) return DFC_NO_MEMORY;
  initRegion23(image.get());
  return write_image(board, sli_mode, image.get(), size);
}

uint32_t Region23::read(uint32_t board, uint32_t sli_mode) {
  board_ = board;
  sli_mode_ = sli_mode;
  uint8_t* image = nullptr;
  const uint32_t result = GetRegion23(board, &image, &size_, sli_mode);
  image_.reset(image);
  return result;
}

uint8_t* Region23::find(uint8_t type, std::size_t bytes) const {
  SearchStatus status{};
  const std::span image(image_.get(), size_);
  uint8_t* const record = searchRegion23(image, type, status);
  if (record == nullptr) return nullptr;
  const auto offset = static_cast<std::size_t>(record - image.data());
  return image.size() - offset < bytes ? nullptr : record;
}

uint32_t Region23::write() const { return write_image(board_, sli_mode_, image_.get(), size_); }
