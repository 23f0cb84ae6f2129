// SLI_CONFIG mailboxes of SLI mode 4, which are longer than others.
#include <algorithm>
#include <cstring>

#include "info/sli_mode.h"
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
  constexpr std::size_t kMostWords = sizeof(MailboxData) / sizeof(uint32_t);
  std::memcpy(data->bytes, mailbox, std::min<std::size_t>(word_count, kMostWords) * sizeof(uint32_t));
  if (!invoke<kSliConfig>(board, header, *data).ok()) return DFC_FAILED;

  std::memcpy(mailbox, data->bytes, std::min<std::size_t>(header.arg3, sizeof(MailboxData)));
  return DFC_OK;
}
