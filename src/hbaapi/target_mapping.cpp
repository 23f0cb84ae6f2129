// Which logical units the driver has mapped, and how they identify themselves.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

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

// A first-form mapping with room for as many units as a reply can hold, or fewer where the caller has less room.
struct Free {
  void operator()(HbaFcpTargetMapping* mapping) const { std::free(mapping); }
};
using WorkMapping = std::unique_ptr<HbaFcpTargetMapping, Free>;

WorkMapping cleared_mapping(uint32_t room) {
  const std::size_t bytes = sizeof(uint32_t) + std::min(room, kMostEntries) * sizeof(HbaFcpScsiEntry);
  WorkMapping mapping(static_cast<HbaFcpTargetMapping*>(std::calloc(1, bytes)));
  if (mapping) mapping->NumberOfEntries = room;
  return mapping;
}

// The first descriptor of a device identification page, if it identifies the unit itself in a way that is of use.
std::span<const uint8_t> usable_identifier(std::span<const uint8_t> page) {
  constexpr uint8_t kAssociation = 0x30;
  constexpr uint8_t kDesignatorType = 0x0F;
  const auto descriptor = page.subspan(4);
  if ((descriptor[1] & kAssociation) != 0 || (descriptor[1] & kDesignatorType) >= 4) return {};
  return descriptor.first(std::min<std::size_t>(4u + descriptor[3], descriptor.size()));
}

// Asks a unit for its identifier; where it does not tell a usable one, the caller's bytes stay.
void identify(uint32_t board, HbaFcpScsiEntryV2& entry) {
  uint8_t page[256] = {};
  uint8_t sense[DFC_SCSI_SENSE_BYTES] = {};
  uint32_t page_bytes = 255;
  uint32_t sense_bytes = 64;
  uint64_t lun = 0;
  std::memcpy(&lun, entry.FcpId.FcpLun, sizeof(lun));
  constexpr uint8_t kDeviceIdentification = 0x83;
  const uint32_t result =
      SendScsiInquiry(board, &entry.FcpId.PortWWN, lun, /*evpd=*/1, kDeviceIdentification, page, &page_bytes, sense, &sense_bytes);
  if (result != HBA_STATUS_OK || page_bytes == 0 || sense_bytes != 0) return;
  std::ranges::copy(usable_identifier(page), entry.LUID);
}

}  // namespace

uint32_t GetFcpTargetMapping(uint32_t board, HbaFcpTargetMapping* mapping) {
  const StagingBuffer<TargetMappingReply> reply;
  if (!reply) return HBA_STATUS_ERROR;
  auto header = header_for(board);
  header.arg2 = std::min(mapping->NumberOfEntries, kMostEntries);
  const Outcome outcome = invoke<kMapping>(board, header, *reply);

  // Deliberate: the driver's count is looked at after failures too, and a count that does not fit hides them.
  const uint32_t room = mapping->NumberOfEntries;
  const uint32_t count = header.arg3;
  mapping->NumberOfEntries = count;
  if (room < count) return HBA_STATUS_ERROR_MORE_DATA;
  if (!outcome.ok()) return kFailures(outcome.driver);
  std::copy_n(reply->entries, std::min(count, kMostEntries), mapping->entry);
  return HBA_STATUS_OK;
}

uint32_t DFC_GetFcpTargetMappingV2(uint32_t board, const HbaWwn* wwn, HbaFcpTargetMappingV2* mapping) {
  HbaPortAttributes port;
  if (GetAdapterPortAttributes(board, 0, &port) != HBA_STATUS_OK) return HBA_STATUS_ERROR;
  if (!std::ranges::equal(port.PortWWN.wwn, wwn->wwn)) return HBA_STATUS_ERROR_ILLEGAL_WWN;
  const WorkMapping work = cleared_mapping(mapping->NumberOfEntries);
  if (!work) return HBA_STATUS_ERROR;

  const uint32_t result = GetFcpTargetMapping(board, work.get());
  if (result != HBA_STATUS_OK && result != HBA_STATUS_ERROR_MORE_DATA) return HBA_STATUS_ERROR;
  mapping->NumberOfEntries = work->NumberOfEntries;
  if (result == HBA_STATUS_ERROR_MORE_DATA) return result;

  for (uint32_t i = 0; i < std::min(work->NumberOfEntries, kMostEntries); ++i) {
    HbaFcpScsiEntryV2& entry = mapping->entry[i];
    entry.ScsiId = work->entry[i].ScsiId;
    entry.FcpId = work->entry[i].FcpId;
    identify(board, entry);
  }
  return HBA_STATUS_OK;
}
