// Which logical units the driver has mapped, and how they identify themselves.
#include <algorithm>
#include <cstring>
#include <span>

#include "hbaapi/scsi_transfer.h"
#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/hbaapi.h"
#include "vaskdfc/mapping.h"
#include "vaskdfc/result.h"
#include "vaskdfc/scsi.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kMapping{.function = "GetFcpTargetMapping", .callback = Callback::kHbaFcpTargetMapping, .lines = {418, 422}};

constexpr StatusMap kFailures{{{0x0BAD005D, HBA_STATUS_ERROR_MORE_DATA}}, HBA_STATUS_ERROR};
static_assert(kFailures(0x0BAD005D) == 7);
static_assert(kFailures(0) == 1);

constexpr uint32_t kMostEntries = std::size(TargetMappingReply{}.entries);

// The first descriptor of a device identification page, if it identifies the unit itself in a way that is of use.
std::span<const uint8_t> usable_identifier(std::span<const uint8_t> page) {
  constexpr uint8_t kAssociation = 0x30;
  constexpr uint8_t kDesignatorType = 0x0F;
  const auto descriptor = page.subspan(4);
  if ((descriptor[1] & kAssociation) != 0 || (descriptor[1] & kDesignatorType) >= 4) return {};
  return descriptor.first(std::min<std::size_t>(4u + descriptor[3], descriptor.size()));
}

// Asks a unit for its identifier; where it does not tell a usable one, the caller's bytes stay.
void identify(uint32_t board, HbaFcpScsiEntryV2& entry, TransferData& stage) {
  constexpr uint8_t kDeviceIdentification = 0x83;
  uint8_t page[256] = {};
  uint8_t sense[DFC_SCSI_SENSE_BYTES];
  uint32_t page_bytes = 255;
  uint32_t sense_bytes = 64;
  uint64_t lun = 0;
  std::memcpy(&lun, entry.FcpId.FcpLun, sizeof(lun));
  const FcpCmndBlock inquiry = inquiry_for_page(lun, kDeviceIdentification, page_bytes);
  const uint32_t result = send_scsi(board, entry.FcpId.PortWWN, inquiry, page, &page_bytes, sense, &sense_bytes, stage);
  if (result != HBA_STATUS_OK || page_bytes == 0 || sense_bytes != 0) return;
  const auto identifier = usable_identifier(page);
  copy_at_most(entry.LUID, identifier.data(), static_cast<uint32_t>(identifier.size()), sizeof(entry.LUID));
}

// Asks for the mapped units. `count` says how many there is room for, then how many there are; entries of either form are filled in
// what both have.
template <typename Entry>
uint32_t list_units(uint32_t board, uint32_t& count, Entry* entries) {
  const StagingBuffer<TargetMappingReply> reply;
  if (!reply) return HBA_STATUS_ERROR;
  auto header = header_for(board);
  header.arg2 = std::min(count, kMostEntries);
  const Outcome outcome = invoke<kMapping>(board, header, *reply);

  // Deliberate: the driver's count is looked at after failures too, and a count that does not fit hides them.
  const uint32_t room = count;
  count = header.arg3;
  if (room < count) return HBA_STATUS_ERROR_MORE_DATA;
  if (!outcome.ok()) return kFailures(outcome.driver);
  for (uint32_t i = 0; i < std::min(count, kMostEntries); ++i) {
    entries[i].ScsiId = reply->entries[i].ScsiId;
    entries[i].FcpId = reply->entries[i].FcpId;
  }
  return HBA_STATUS_OK;
}

}  // namespace

uint32_t GetFcpTargetMapping(uint32_t board, HbaFcpTargetMapping* mapping) {
  return list_units(board, mapping->NumberOfEntries, mapping->entry);
}

uint32_t DFC_GetFcpTargetMappingV2(uint32_t board, const HbaWwn* wwn, HbaFcpTargetMappingV2* mapping) {
  HbaPortAttributes port;
  if (GetAdapterPortAttributes(board, 0, &port) != HBA_STATUS_OK) return HBA_STATUS_ERROR;
  if (std::memcmp(&port.PortWWN, wwn, sizeof(*wwn)) != 0) return HBA_STATUS_ERROR_ILLEGAL_WWN;

  uint32_t count = mapping->NumberOfEntries;
  const uint32_t result = list_units(board, count, mapping->entry);
  if (result != HBA_STATUS_OK && result != HBA_STATUS_ERROR_MORE_DATA) return HBA_STATUS_ERROR;
  mapping->NumberOfEntries = count;
  if (result == HBA_STATUS_ERROR_MORE_DATA) return result;

  if (count == 0) return HBA_STATUS_OK;
  const StagingBuffer<TransferData> stage;
  if (!stage) return HBA_STATUS_OK;  // no unit could be asked, which is no failure of the mapping
  for (uint32_t i = 0; i < std::min(count, kMostEntries); ++i) identify(board, mapping->entry[i], *stage);
  return HBA_STATUS_OK;
}
