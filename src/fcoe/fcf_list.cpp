// The walk over the FCFs that the port has discovered.
#include <algorithm>
#include <cstring>

#include "fcoe/sli4_only.h"
#include "transport/call_frame.h"
#include "transport/log.h"
#include "vaskdfc/fcoe.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kFcf{.function = "DFC_FCoEGetFCFList", .callback = Callback::kHbaGetFcfList, .lines = {148, 152}};
constexpr int kUnsupportedLine = 126;

// Asks for the first FCF, and says that there is no further one.
constexpr uint32_t kNoIndex = 0xFFFF;

// Indices are 16 bits wide: a longer walk runs in a circle.
constexpr uint32_t kMostRequests = 0x10000;

bool is_blank(const FcfReply& reply) {
  static constexpr FcfReply kBlank{};
  return std::memcmp(&reply, &kBlank, sizeof(reply)) == 0;
}

fcf_entry entry_of(const FcfReply& reply) {
  fcf_entry entry{.name_0 = reply.name_20,
                  .name_8 = reply.name_548,
                  .flag_22 = reply.byte_18 == 1 ? uint16_t{1} : uint16_t{0},
                  .word_540 = reply.word_4,
                  .word_548 = reply.word_8};
  std::ranges::copy(reply.mac_address, entry.macAddress);
  std::ranges::copy(reply.vlan_bitmap, entry.vlanBitmap);
  std::ranges::copy(reply.fc_map, entry.fcMap);
  return entry;
}

}  // namespace

uint32_t DFC_FCoEGetFCFList(uint32_t board, dfc_fcf_list* list) {
  uint32_t sli_mode = 0;
  if (const uint32_t result = sli4_only(board, sli_mode); result != DFC_OK) {
    if (result == DFC_UNSUPPORTED) log_unsupported_sli_mode({__func__, kUnsupportedLine}, sli_mode);
    return result;
  }

  uint32_t result = DFC_OK;
  uint32_t count = 0;
  uint32_t next = kNoIndex;
  auto header = header_for(board);  // what the driver leaves in it travels with the next request
  for (uint32_t requests = 0; requests < kMostRequests; ++requests) {
    FcfReply reply{};
    header.arg1 = next;
    if (!invoke<kFcf>(board, header, reply).ok()) break;
    next = header.arg4;
    list->listStatus = 0;
    if (is_blank(reply)) break;
    if (reply.is_valid != 0) {
      if (count < list->numEntries) {
        list->entries[count] = entry_of(reply);
      } else {
        result = DFC_TOO_SMALL;
      }
      ++count;
    }
    if (next == kNoIndex) break;
  }
  list->numEntries = static_cast<uint16_t>(std::min(count, uint32_t{UINT16_MAX}));
  list->listStatus = static_cast<uint16_t>(list->listStatus + header.arg5);
  return result;
}
