// Events, and Request Node Identification Data (RNID).
#include "vaskdfc/events.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

uint32_t EventMissedCount;

namespace {

constexpr CallSite kEvents{.function = "GetEventBuffer", .callback = Callback::kHbaGetEvent, .lines = {586, 590}};
constexpr CallSite kRnid{.function = "SendRNID", .callback = Callback::kHbaRnid, .lines = {652, 656}};
// The result line names the setter's callback; log readers match this name.
constexpr CallSite kGetInfo{.function = "GetRNIDMgmtInfo",
                            .callback = Callback::kHbaGetMgmtInfo,
                            .lines = {708, 712},
                            .result_name = facts_of(Callback::kHbaSetMgmtInfo).name};
constexpr CallSite kSetInfo{.function = "SetRNIDMgmtInfo", .callback = Callback::kHbaSetMgmtInfo, .lines = {754, 758}};

constexpr uint32_t kMostEvents = std::size(EventReply{}.events);

// Takes events into a buffer of 32 or more.
uint32_t take_events(uint32_t board, EventReply& events, uint32_t& count) {
  auto header = header_for(board);
  header.arg2 = count;
  if (!invoke<kEvents>(board, header, events).ok()) return HBA_STATUS_ERROR;
  EventMissedCount = header.arg4;
  count = header.arg3;
  return HBA_STATUS_OK;
}

RnidKey key_of(const HbaWwn& wwn, uint32_t type) {
  RnidKey key{};
  if (type == HBA_RNID_NODE_WWN) key.node_wwn = wwn;
  if (type == HBA_RNID_PORT_WWN) key.port_wwn = wwn;
  return key;
}

// Everything but the reserved bytes.
void copy_info(const HbaMgmtInfo& from, HbaMgmtInfo& to) {
  std::memcpy(&to, &from, offsetof(HbaMgmtInfo, reserved));
  to.TopologyDiscoveryFlags = from.TopologyDiscoveryFlags;
}

}  // namespace

uint32_t GetEventBuffer(uint32_t board, HbaEvent* events, uint32_t* count) {
  if (*count >= kMostEvents) return take_events(board, *reinterpret_cast<EventReply*>(events), *count);

  const auto temporary = StagingBuffer<EventReply>::cleared();
  if (!temporary) return DFC_NO_MEMORY;
  const uint32_t result = take_events(board, *temporary, *count);
  if (result == HBA_STATUS_OK) std::copy_n(temporary->events, std::min(*count, kMostEvents), events);
  return result;
}

uint32_t SendRNID(uint32_t board, const HbaWwn* wwn, uint32_t type, void* reply, uint32_t* reply_size) {
  // The driver writes 64 bytes: into the caller's buffer only where it has as many.
  RnidReply temporary{};
  const bool has_room = *reply_size >= sizeof(temporary);
  RnidReply& answer = has_room ? *static_cast<RnidReply*>(reply) : temporary;
  const RnidKey key = key_of(*wwn, type);
  auto header = header_for(board);
  header.arg2 = sizeof(RnidReply);
  header.arg5 = type;
  if (!invoke<kRnid>(board, header, key, answer).ok()) return HBA_STATUS_ERROR;

  const uint32_t room = *reply_size;
  *reply_size = header.arg3;
  if (room < header.arg3) return HBA_STATUS_ERROR_MORE_DATA;
  if (!has_room) std::memcpy(reply, temporary.bytes, header.arg3);
  return HBA_STATUS_OK;
}

uint32_t GetRNIDMgmtInfo(uint32_t board, HbaMgmtInfo* info) {
  auto header = header_for(board);
  HbaMgmtInfo reply{};
  if (!invoke<kGetInfo>(board, header, reply).ok()) return HBA_STATUS_ERROR;
  copy_info(reply, *info);
  return HBA_STATUS_OK;
}

uint32_t SetRNIDMgmtInfo(uint32_t board, const HbaMgmtInfo* info) {
  auto header = header_for(board);
  HbaMgmtInfo sent{};
  copy_info(*info, sent);
  return invoke<kSetInfo>(board, header, sent).ok() ? HBA_STATUS_OK : HBA_STATUS_ERROR;
}
