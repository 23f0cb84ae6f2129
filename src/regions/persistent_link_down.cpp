// The persistent link-down setting: a record of region 23.
#include "info/sli_mode.h"
#include "regions/region23.h"
#include "vaskdfc/info.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

// Two places for the flag, of which one is in use. The flag is inverted: it says that the link may come up.
struct LinkDownRecord {
  static constexpr uint8_t kType = 0xA2;

  uint8_t type;
  uint8_t data_words;
  uint8_t unread_2[2];
  uint8_t uses_first;
  uint8_t unread_5;
  uint8_t first_link_up;
  uint8_t unread_7;
  uint8_t uses_second;
  uint8_t unread_9;
  uint8_t second_link_up;
  uint8_t unread_11;

  // Null when neither place is in use.
  uint8_t* link_up() {
    if (uses_first == 1) return &first_link_up;
    if (uses_second == 1) return &second_link_up;
    return nullptr;
  }
};
VASKDFC_RECORD_SIZE(LinkDownRecord, 12);
VASKDFC_FIELD_AT(LinkDownRecord, first_link_up, 6);
VASKDFC_FIELD_AT(LinkDownRecord, second_link_up, 10);

constexpr uint8_t inverted(uint32_t value) { return value == 0 ? 1 : 0; }

uint32_t support_persist_link_disable(uint32_t board, bool& is_supported) {
  dfc_drv_info info{.caller_0 = 2};
  if (DFC_GetDrvInfo(board, &info) != DFC_OK) return DFC_FAILED;
  is_supported = (info.feature_flags & DFC_FEATURE_PERSISTENT_LINK_DOWN) != 0;
  return DFC_OK;
}

// Finds the flag in the adapter's region 23. `not_found` is the caller's result where the image has no such record.
uint32_t find_flag(uint32_t board, Region23& region, uint32_t not_found, uint8_t*& link_up) {
  bool is_supported = false;
  if (support_persist_link_disable(board, is_supported) != DFC_OK) return DFC_FAILED;
  if (!is_supported) return DFC_UNSUPPORTED;
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (const uint32_t result = region.read(board, sli_mode); result != DFC_OK) return result;

  auto* const record = region.find<LinkDownRecord>();
  if (record == nullptr) return not_found;
  link_up = record->link_up();
  return link_up == nullptr ? DFC_UNSUPPORTED : DFC_OK;
}

}  // namespace

uint32_t DFC_SetPersistLinkDown(uint32_t board, uint16_t value) {
  Region23 region;
  uint8_t* link_up = nullptr;
  if (const uint32_t result = find_flag(board, region, DFC_RECORD_NOT_FOUND, link_up); result != DFC_OK) return result;
  *link_up = inverted(value);
  return region.write();
}

uint32_t DFC_GetPersistLinkDown(uint32_t board, uint16_t* value) {
  Region23 region;
  uint8_t* link_up = nullptr;
  if (const uint32_t result = find_flag(board, region, DFC_FAILED, link_up); result != DFC_OK) return result;
  *value = inverted(*link_up);
  return DFC_OK;
}
