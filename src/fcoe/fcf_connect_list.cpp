// The FCF connect list: a record of region 23.
#include <algorithm>

#include "fcoe/region_record.h"
#include "transport/records/le.h"
#include "vaskdfc/fcoe.h"
#include "vaskdfc/regions.h"

using namespace vaskdfc;

namespace {

struct ConnectEntry {
  Le16 flags;
  Le16 vlan_id;
  uint8_t names[16];
};
VASKDFC_RECORD_SIZE(ConnectEntry, 20);

struct ConnectListRecord {
  static constexpr uint8_t kType = 0xA1;

  uint8_t type;
  uint8_t letter;  // the length of the data, at once
  uint8_t unread_2[2];
  ConnectEntry entries[DFC_FCF_CONNECT_ENTRIES];
};
VASKDFC_RECORD_SIZE(ConnectListRecord, 324);

constexpr uint8_t kLetter = 'P';
constexpr uint16_t kValid = 1;
constexpr uint16_t kKeptFlags = 0x3E;

}  // namespace

uint32_t DFC_FCoEGetFCFConnectList(uint32_t board, dfc_fcf_conn_list* list) {
  Region23 region;
  ConnectListRecord* record = nullptr;
  if (const uint32_t result = find_record(board, region, DFC_FAILED, record); result != DFC_OK) return result;
  if (record->letter != kLetter) return DFC_TOO_SMALL;

  const uint8_t room = list->numEntries;
  uint8_t count = 0;
  for (const ConnectEntry& stored : record->entries) {
    if ((stored.flags & kValid) == 0) continue;
    if (count < room) {
      dfc_fcf_connect_entry& entry = list->entries[count];
      entry.flags = stored.flags & 0xFF;
      entry.vlan_id = stored.vlan_id;
      std::ranges::copy(stored.names, entry.names);
    }
    ++count;
  }
  list->maxEntries = DFC_FCF_CONNECT_ENTRIES;
  list->numEntries = count;
  return count <= room ? DFC_OK : DFC_TOO_SMALL;
}

uint32_t DFC_FCoESetFCFConnectList(uint32_t board, dfc_fcf_conn_list* list) {
  Region23 region;
  ConnectListRecord* record = nullptr;
  if (const uint32_t result = find_record(board, region, DFC_RECORD_NOT_FOUND, record); result != DFC_OK) return result;
  list->maxEntries = DFC_FCF_CONNECT_ENTRIES;
  if (list->numEntries > DFC_FCF_CONNECT_ENTRIES || record->letter != kLetter) return DFC_TOO_SMALL;

  std::ranges::fill(record->entries, ConnectEntry{});
  for (uint8_t i = 0; i < list->numEntries; ++i) {
    const dfc_fcf_connect_entry& entry = list->entries[i];
    ConnectEntry& stored = record->entries[i];
    stored.flags = static_cast<uint16_t>((entry.flags & kKeptFlags) | kValid);
    stored.vlan_id = entry.vlan_id;
    std::ranges::copy(entry.names, stored.names);
  }
  return region.write();
}
