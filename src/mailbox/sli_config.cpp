// SLI_CONFIG mailboxes of SLI mode 4, which are longer than others.
#include "info/sli_mode.h"
#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kSliConfig{.function = "IssueExtendedSLIConfig", .callback = Callback::kMboxSliCfgExt, .lines = {3610, 3613}};

}  // namespace

uint32_t IssueExtendedSLIConfig(uint32_t board, uint32_t* mailbox, uint32_t transfer_code, uint32_t /*kind*/, uint32_t word_count) {
  StagingBuffer<MailboxData> data;
  if (!data) return DFC_FAILED;
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (sli_mode < kSli4) return DFC_UNSUPPORTED;

  auto header = header_for(board);
  header.arg2 = word_count * sizeof(uint32_t);
  header.arg3 = header.arg2;
  header.arg6 = transfer_code;
  copy_at_most(data->bytes, mailbox, header.arg2, sizeof(*data));
  if (!invoke<kSliConfig>(board, header, *data).ok()) return DFC_FAILED;

  copy_at_most(mailbox, data->bytes, header.arg3, sizeof(*data));
  return DFC_OK;
}
