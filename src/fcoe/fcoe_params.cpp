// FCoE parameters: a record of region 23.
#include <algorithm>

#include "fcoe/region_record.h"
#include "transport/records/le.h"
#include "vaskdfc/fcoe.h"
#include "vaskdfc/regions.h"

using namespace vaskdfc;

namespace {

struct FcoeParamsRecord {
  static constexpr uint8_t kType = 0xA0;

  uint8_t type;
  uint8_t version;  // the length of the data, at once
  uint8_t constant_1;
  uint8_t flags;
  uint8_t fc_map[3];
  uint8_t unread_7;
  Le32 vlan_id;
};
VASKDFC_RECORD_SIZE(FcoeParamsRecord, 12);
VASKDFC_FIELD_AT(FcoeParamsRecord, vlan_id, 8);

constexpr uint8_t kVersion = 2;
constexpr uint8_t kVlanValid = 1;
constexpr uint16_t kVlanBits = 0xFFF;

}  // namespace

uint32_t DFC_FCoEGetParams(uint32_t board, dfc_fcoe_params* params) {
  Region23 region;
  FcoeParamsRecord* record = nullptr;
  if (const uint32_t result = find_record(board, region, DFC_FAILED, record); result != DFC_OK) return result;
  if (record->version != kVersion) return DFC_TOO_SMALL;

  params->version = 1;
  std::ranges::copy(record->fc_map, params->fcMap);
  params->vlanValid = record->flags & kVlanValid;
  params->vlanId = static_cast<uint16_t>(record->vlan_id & kVlanBits);
  return DFC_OK;
}

uint32_t DFC_FCoESetParams(uint32_t board, const dfc_fcoe_params* params) {
  Region23 region;
  FcoeParamsRecord* record = nullptr;
  if (const uint32_t result = find_record(board, region, DFC_RECORD_NOT_FOUND, record); result != DFC_OK) return result;

  const bool has_vlan = params->vlanValid == 1;
  record->version = kVersion;
  record->constant_1 = 1;
  record->flags = has_vlan ? kVlanValid : 0;
  record->vlan_id = has_vlan ? params->vlanId & kVlanBits : 0;
  std::ranges::copy(params->fcMap, record->fc_map);
  return region.write();
}
