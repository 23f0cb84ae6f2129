// Writing configuration regions.
#include "info/sli_mode.h"
#include "mailbox/valid_region.h"
#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kUpdate{.function = "DFC_IssueUpdateCfgMBox", .callback = Callback::kHbaIssueUpdMbx, .lines = {3559, 3562}};

}  // namespace

uint32_t DFC_IssueUpdateCfgMBox(uint32_t board, uint32_t update_type, uint32_t region, const void* data, uint32_t length,
                                uint32_t* reply_word) {
  if (update_type != DFC_UPDATE_TYPE_REGION) return DFC_UNSUPPORTED;
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (sli_mode < kSli4) return DFC_UNSUPPORTED;
  const uint32_t region_length = valid_region(region);
  if (region_length == 0) return DFC_DUMP_UNKNOWN_REGION;
  if (region_length < length) return DFC_TOO_SMALL;

  const auto image = StagingBuffer<RegionData>::cleared();
  if (!image) return DFC_NO_MEMORY;
  copy_at_most(image->bytes, data, length, sizeof(*image));
  auto header = header_for(board);
  header.arg2 = region_length;
  header.arg4 = region;
  CompletionWord reply{};
  if (!invoke<kUpdate>(board, header, *image, reply).ok()) return DFC_FAILED;

  *reply_word = reply.word;
  return DFC_OK;
}
