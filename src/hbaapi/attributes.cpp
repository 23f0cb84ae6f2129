// Adapter and port attributes.
#include "vaskdfc/hbaapi.h"

#include <cstddef>
#include <cstring>

#include "transport/board_table.h"
#include "transport/call_frame.h"
#include "transport/status_map.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kAdapter{.function = "GetAdapterAttributes", .callback = Callback::kHbaAdapterAttributes, .lines = {62, 66}};
constexpr CallSite kPort{.function = "GetAdapterPortAttributes", .callback = Callback::kHbaPortAttributes, .lines = {118, 122}};
constexpr CallSite kByIndex{
    .function = "GetPortAttributesByIndex", .callback = Callback::kHbaIndexPortAttributes, .lines = {176, 180}};
constexpr CallSite kDiscovered{
    .function = "GetDiscoveredPortAttributes", .callback = Callback::kHbaDiscPortAttributes, .lines = {238, 242}};
constexpr CallSite kByWwn{.function = "GetPortAttributesByWWN", .callback = Callback::kHbaWwpnPortAttributes, .lines = {302, 306}};
constexpr CallSite kRefresh{.function = "RefreshInformation", .callback = Callback::kHbaRefreshInfo, .lines = {358, 362}};

constexpr uint32_t kNoSuchPort = 0x0BAD0003;
constexpr uint32_t kIndexOutOfRange = 0x0BAD005D;

// The queries look at the driver's status also when it is the platform that failed.
constexpr StatusMap kByIndexResults{{{kIndexOutOfRange, HBA_STATUS_ERROR_ILLEGAL_INDEX}}, HBA_STATUS_ERROR};
constexpr StatusMap kDiscoveredResults{{{kNoSuchPort, HBA_STATUS_ERROR_ILLEGAL_INDEX}}, HBA_STATUS_ERROR};
constexpr StatusMap kByWwnResults{{{kNoSuchPort, HBA_STATUS_ERROR_ILLEGAL_WWN}}, HBA_STATUS_ERROR};
static_assert(kByIndexResults(kIndexOutOfRange) == HBA_STATUS_ERROR_ILLEGAL_INDEX &&
              kByIndexResults(kNoSuchPort) == HBA_STATUS_ERROR);
static_assert(kDiscoveredResults(kNoSuchPort) == HBA_STATUS_ERROR_ILLEGAL_INDEX &&
              kDiscoveredResults(kIndexOutOfRange) == HBA_STATUS_ERROR);
static_assert(kByWwnResults(kNoSuchPort) == HBA_STATUS_ERROR_ILLEGAL_WWN && kByWwnResults(0) == HBA_STATUS_ERROR);

void copy_port(const PortAttributesReply& reply, HbaPortAttributes& attributes) {
  // Both records begin alike, up to the end of the device name as the driver knows it.
  constexpr std::size_t kAlike = offsetof(PortAttributesReply, supported_speeds);
  static_assert(offsetof(HbaPortAttributes, PortSymbolicName) == offsetof(PortAttributesReply, symbolic_name));
  static_assert(offsetof(HbaPortAttributes, OSDeviceName) == offsetof(PortAttributesReply, os_device_name));
  std::memcpy(&attributes, &reply, kAlike);
  // Two bytes more than the driver knows are written, as they always were; the rest of the field stays the caller's.
  std::memset(attributes.OSDeviceName + sizeof(reply.os_device_name), 0, 2);
  attributes.PortSupportedSpeed = reply.supported_speeds;
  attributes.PortSpeed = reply.speed;
  attributes.PortMaxFrameSize = reply.max_frame_size;
  attributes.FabricName = reply.fabric_name;
  attributes.NumberofDiscoveredPorts = reply.discovered_ports;
}

// A port that is named by its position in a list, which the driver may have changed since the last refresh.
template <const CallSite& kSite>
uint32_t query_listed_port(uint32_t board, uint32_t index, const auto& failures, HbaPortAttributes* attributes) {
  constexpr uint32_t kStaleFcId = 0xFFFFFFFF;

  auto header = header_for(board);
  header.arg1 = index;
  header.arg4 = dfc_refresh_timer[board];
  PortAttributesReply reply{};
  const Outcome outcome = invoke<kSite>(board, header, reply);
  if (!outcome.ok()) return failures(outcome.driver);
  if (reply.identity.fc_id == kStaleFcId) return HBA_STATUS_ERROR_STALE_DATA;

  copy_port(reply, *attributes);
  return HBA_STATUS_OK;
}

}  // namespace

uint32_t GetAdapterAttributes(uint32_t board, HbaAdapterAttributes* attributes) {
  auto header = header_for(board);
  HbaAdapterAttributes reply{};
  // Deliberate: a failure is logged and otherwise ignored; the caller gets whatever the reply holds.
  static_cast<void>(invoke<kAdapter>(board, header, reply));
  *attributes = reply;
  return HBA_STATUS_OK;
}

uint32_t GetAdapterPortAttributes(uint32_t board, uint32_t, HbaPortAttributes* attributes) {
  auto header = header_for(board);
  PortAttributesReply reply{};
  if (!invoke<kPort>(board, header, reply).ok()) return HBA_STATUS_ERROR;

  copy_port(reply, *attributes);
  return HBA_STATUS_OK;
}

uint32_t GetPortAttributesByIndex(uint32_t board, uint32_t, uint32_t index, HbaPortAttributes* attributes) {
  return query_listed_port<kByIndex>(board, index, kByIndexResults, attributes);
}

uint32_t GetDiscoveredPortAttributes(uint32_t board, uint32_t, uint32_t index, HbaPortAttributes* attributes) {
  return query_listed_port<kDiscovered>(board, index, kDiscoveredResults, attributes);
}

uint32_t GetPortAttributesByWWN(uint32_t board, const HbaWwn* wwn, HbaPortAttributes* attributes) {
  auto header = header_for(board);
  PortAttributesReply reply{};
  const WwnKey key{.wwn = *wwn};
  const Outcome outcome = invoke<kByWwn>(board, header, reply, key);
  if (!outcome.ok()) return kByWwnResults(outcome.driver);

  copy_port(reply, *attributes);
  return HBA_STATUS_OK;
}

uint32_t RefreshInformation(uint32_t board) {
  auto header = header_for(board);
  if (!invoke<kRefresh>(board, header).ok()) return HBA_STATUS_ERROR;

  dfc_refresh_timer[board] = header.arg4;
  return HBA_STATUS_OK;
}
