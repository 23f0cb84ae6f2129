// What the driver keeps about an adapter: link, nodes, I/O counters, vital product data.
#include <algorithm>
#include <iterator>

#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/link.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kLink{.function = "DFC_GetLinkInfo", .callback = Callback::kLinkInfo, .lines = {388, 392}};
constexpr CallSite kNodes{.function = "GetNodeInfo", .callback = Callback::kNodeInfo, .lines = {436, 440}};
constexpr CallSite kIo{.function = "GetIOinfo", .callback = Callback::kIoInfo, .lines = {482, 486}};
constexpr CallSite kVpd{.function = "GetVPDInfo", .callback = Callback::kGetVpd, .lines = {524, 528}};

constexpr uint32_t kMostNodes = std::size(dfc_node_table{}.entries);

constexpr StatusMap kVpdFailures{{{0xBAD0084, DFC_VPD_BAD0084}}, DFC_VPD_FAILED};
static_assert(kVpdFailures(0xBAD0084) == 1);
static_assert(kVpdFailures(0) == 3);

}  // namespace

uint32_t DFC_GetLinkInfo(uint32_t board, dfc_link_info* info) {
  auto header = header_for(board);
  dfc_link_info reply{};
  if (!invoke<kLink>(board, header, reply).ok()) return DFC_FAILED;
  *info = reply;
  return DFC_OK;
}

uint32_t GetLinkInfo(uint32_t board, dfc_link_info* info) { return DFC_GetLinkInfo(board, info); }

uint32_t GetNodeInfo(uint32_t board, dfc_node_table* nodes) {
  *nodes = {};
  const StagingBuffer<dfc_node_table> reply;
  if (!reply) return 0;
  auto header = header_for(board);
  header.arg2 = sizeof(*reply);
  if (!invoke<kNodes>(board, header, *reply).ok()) return 0;

  const auto count = std::min<uint32_t>(header.arg3 / sizeof(dfc_node_info), kMostNodes);
  std::copy_n(reply->entries, count, nodes->entries);
  return count;
}

uint32_t GetIOinfo(uint32_t board, dfc_io_info* info) {
  auto header = header_for(board);
  dfc_io_info reply{};
  if (!invoke<kIo>(board, header, reply).ok()) return DFC_FAILED;
  *info = reply;
  return DFC_OK;
}

uint32_t GetVPDInfo(uint32_t board, dfc_vpd_info* info) {
  auto header = header_for(board);
  header.arg6 = info->selector;
  dfc_vpd_info reply{};
  const Outcome outcome = invoke<kVpd>(board, header, reply);
  if (!outcome.ok()) return kVpdFailures(outcome.driver);
  *info = reply;
  return DFC_OK;
}
