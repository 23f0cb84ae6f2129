// Reset and dump of an adapter as a whole.
#include "vaskdfc/reset.h"

#include "info/sli_mode.h"
#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/status_map.h"
#include "vaskdfc/result.h"
#include "vaskdfc/transport.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kInduceDump{.function = "DFC_SetDumpEnv", .callback = Callback::kInduceDump, .lines = {1087, 1091}};
constexpr CallSite kDumpRegion{.function = "DFC_GetDriverDumpRegion", .callback = Callback::kGetDumpRegion, .lines = {2103, 2108}};
constexpr CallSite kRevision{.function = "DFC_ResetAdapter", .callback = Callback::kGetDfcRev, .lines = {2361, 2364}};
constexpr CallSite kReset{.function = "DFC_ResetAdapter", .callback = Callback::kReset, .lines = {2394, 2399}};

constexpr StatusMap kDumpRegionFailures{
    {{0xBAD0003, DFC_DUMP_REGION_BAD0003}, {0xBAD0007, DFC_UNSUPPORTED}, {0xBAD0014, DFC_DUMP_REGION_BAD0014}}, DFC_FAILED};
static_assert(kDumpRegionFailures(0xBAD0003) == 4 && kDumpRegionFailures(0xBAD0007) == 2);
static_assert(kDumpRegionFailures(0xBAD0014) == 3 && kDumpRegionFailures(0) == 1);

bool is_reset_type(uint32_t type, const RevisionReply& revision) {
  if (type == DFC_RESET_TYPE_3) return revision.supports_reset_type_3 != 0;
  return type == 1 || type == 2;
}

}  // namespace

uint32_t DFC_ResetAdapter(uint32_t board, uint32_t type) {
  dfc_mgmt_hdr query{};
  RevisionReply revision{};
  if (!invoke<kRevision>(kNoBoard, query, revision).ok()) return DFC_FAILED;
  if (!is_reset_type(type, revision)) return DFC_RESET_NO_SUCH_TYPE;

  auto header = header_for(board);
  header.arg6 = type;
  return invoke<kReset>(board, header).ok() ? DFC_OK : DFC_FAILED;
}

uint32_t DFC_SetDumpEnv(uint32_t board, uint32_t mode) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (mode == DFC_DUMP_MODE_INDUCE) {
    auto header = header_for(board);
    // Inverted on purpose: applications know the codes.
    return invoke<kInduceDump>(board, header).ok() ? DFC_DUMP_INDUCED : DFC_DUMP_NOT_INDUCED;
  }
  if (sli_mode == kSli4) return DFC_OK;

  constexpr uint32_t kNotWaiting = 5;
  const uint32_t state = SetBrdEnv(board, mode == DFC_MODE_WAITING ? kNotWaiting : mode);
  return state == 4 || state == 5 ? DFC_UNSUPPORTED : state;
}

uint32_t DFC_GetDriverDumpRegion(uint32_t board, uint32_t region, void* buffer, uint32_t* length) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (sli_mode >= kSli4) return DFC_UNSUPPORTED;

  auto header = header_for(board);
  header.arg2 = *length;
  header.arg6 = region;
  DumpRegionReply reply{};
  const Outcome outcome = invoke<kDumpRegion>(board, header, reply);
  *length = header.arg3;
  if (!outcome.ok()) return kDumpRegionFailures(outcome.driver);
  copy_at_most(buffer, reply.bytes, header.arg3, sizeof(reply));
  return DFC_OK;
}
