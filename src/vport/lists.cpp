// Lists: the virtual ports of a port, and the nodes that a port sees.
#include <algorithm>
#include <iterator>

#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/result.h"
#include "vaskdfc/vport.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kVports{.function = "DFC_VPGetList", .callback = Callback::kVportGetList, .lines = {172, 175}};
constexpr CallSite kNodes{.function = "DFC_GetAllNodeInfoByWWN", .callback = Callback::kVportGetNodeInfo, .lines = {226, 229}};

constexpr uint32_t kDoesNotFit = 0xBAD00B4;

constexpr StatusMap kVportFailures{{{kDoesNotFit, DFC_TOO_SMALL}}, DFC_FAILED};
static_assert(kVportFailures(kDoesNotFit) == 7);
static_assert(kVportFailures(0) == 1);

constexpr StatusMap kNodeFailures{{{kDoesNotFit, DFC_TOO_SMALL}, {0xBAD0020, DFC_UNSUPPORTED}}, DFC_FAILED};
static_assert(kNodeFailures(kDoesNotFit) == 7 && kNodeFailures(0xBAD0020) == 2);
static_assert(kNodeFailures(0) == 1);

}  // namespace

uint32_t DFC_VPGetList(uint32_t board, dfc_vport_list* list) {
  auto header = header_for(board);
  header.arg2 = list->numEntries;
  const StagingBuffer<VportListReply> reply;
  if (!reply) return DFC_NO_MEMORY;
  reply->count = 0;  // whatever a driver leaves unwritten reads as no virtual port
  const Outcome outcome = invoke<kVports>(board, header, *reply);
  if (!outcome.ok()) return kVportFailures(outcome.driver);

  list->numEntries = reply->count;
  std::copy_n(reply->entries, std::min<std::size_t>(reply->count, std::size(reply->entries)), list->entries);
  return DFC_OK;
}

uint32_t DFC_GetAllNodeInfoByWWN(uint32_t board, const HbaWwn* wwn, dfc_node_list* list) {
  const uint32_t room = list->numEntries;
  const StagingBuffer<NodeListReply> reply;
  if (!reply) return DFC_NO_MEMORY;
  reply->count = room;
  auto header = header_for(board);
  header.arg2 = room;
  const WwnKey key{.wwn = *wwn};
  const Outcome outcome = invoke<kNodes>(board, header, key, *reply);

  const uint32_t count = reply->count;
  list->numEntries = count;
  if (!outcome.ok()) {
    const uint32_t result = kNodeFailures(outcome.driver);
    return result == DFC_TOO_SMALL && room >= count ? DFC_FAILED : result;
  }
  for (std::size_t i = 0; i < std::min<std::size_t>(count, std::size(reply->entries)); ++i) {
    std::ranges::copy(reply->entries[i].bytes, list->entries[i].bytes);
  }
  return DFC_OK;
}
