// Priority of FCP I/O.
#include <algorithm>
#include <cstring>

#include "info/sli_mode.h"
#include "qos/priority_order.h"
#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "vaskdfc/priority.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kSetFlag{.function = "DFC_QoSSetGlobalFlag", .callback = Callback::kSetFcpPriorityFlag, .lines = {146, 150}};
constexpr CallSite kGetFlag{.function = "DFC_QoSGetGlobalFlag", .callback = Callback::kGetFcpPriorityFlag, .lines = {176, 180}};
constexpr CallSite kGetRules{.function = "DFC_QoSGetConfig", .callback = Callback::kGetFcpPriority, .lines = {222, 226}};
constexpr CallSite kSetRules{.function = "DFC_QoSSetConfig", .callback = Callback::kSetFcpPriority, .lines = {284, 288}};
// The result line names another callback than the one that was issued; log readers match this name.
constexpr CallSite kLinkSpeed{.function = "DFC_GetQoSLinkSpeed",
                              .callback = Callback::kGetLogicalLinkSpeed,
                              .lines = {332, 336},
                              .result_name = facts_of(Callback::kGetVpd).name};

// Bytes of a table with that many rules, as far as it travels.
constexpr std::size_t travelling_bytes(uint32_t rules) {
  return std::min(sizeof(uint32_t) + rules * sizeof(fcp_prio_entry), sizeof(dfc_fcp_prio_list));
}
static_assert(travelling_bytes(0) == 4 && travelling_bytes(998) == 35932);
static_assert(travelling_bytes(DFC_FCP_PRIO_MOST_RULES) == 35932);

}  // namespace

uint32_t DFC_QoSSetGlobalFlag(uint32_t board, uint32_t flag) {
  auto header = header_for(board);
  header.arg5 = flag;
  return invoke<kSetFlag>(board, header).ok() ? DFC_OK : DFC_FAILED;
}

uint32_t DFC_QoSGetGlobalFlag(uint32_t board, uint32_t* flag) {
  auto header = header_for(board);
  if (!invoke<kGetFlag>(board, header).ok()) return DFC_FAILED;
  *flag = header.arg5;
  return DFC_OK;
}

uint32_t DFC_QoSGetConfig(uint32_t board, dfc_fcp_prio_list* list) {
  const uint32_t room = list->count;
  const StagingBuffer<dfc_fcp_prio_list> reply;
  if (!reply) return DFC_FAILED;
  if (room > DFC_FCP_PRIO_MOST_RULES) return DFC_FAILED;

  reply->count = 0;  // whatever a driver leaves unwritten reads as no rule
  auto header = header_for(board);
  header.arg2 = room;
  if (!invoke<kGetRules>(board, header, *reply).ok()) return DFC_FAILED;
  std::memcpy(list, &*reply, travelling_bytes(room));
  return room < list->count ? DFC_TOO_SMALL : DFC_OK;
}

uint32_t DFC_QoSSetConfig(uint32_t board, dfc_fcp_prio_list* list) {
  const StagingBuffer<dfc_fcp_prio_list> sent;
  if (!sent) return DFC_FAILED;
  if (list->count > DFC_FCP_PRIO_MOST_RULES) return DFC_FAILED;
  if (const uint32_t result = order_fcp_priority_list(*list); result != DFC_OK) return result;

  auto header = header_for(board);
  header.arg2 = list->count;
  std::memcpy(&*sent, list, travelling_bytes(list->count));
  return invoke<kSetRules>(board, header, *sent).ok() ? DFC_OK : DFC_FAILED;
}

uint32_t DFC_GetQoSLinkSpeed(uint32_t board, uint16_t* speed) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (sli_mode < kSli4) return DFC_UNSUPPORTED;

  auto header = header_for(board);
  if (!invoke<kLinkSpeed>(board, header).ok()) return DFC_FAILED;
  // Only the whole word says that there is no speed, although its low half is all that is one.
  const auto tenths = static_cast<uint16_t>(header.arg4);
  *speed = header.arg4 == 0 ? uint16_t{DFC_LINK_SPEED_UNKNOWN} : static_cast<uint16_t>(tenths / 10);
  return DFC_OK;
}
