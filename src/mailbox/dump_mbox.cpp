// Reading configuration regions.
#include <algorithm>
#include <cstring>

#include "info/sli_mode.h"
#include "mailbox/mailbox_words.h"
#include "mailbox/region_mailbox.h"
#include "mailbox/valid_region.h"
#include "transport/call_frame.h"
#include "transport/insist.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kDump{.function = "DFC_IssueDumpMBox", .callback = Callback::kHbaIssueDmpMbx, .lines = {3469, 3472}};

constexpr StatusMap kCompletion{
    {{0xFFFD, DFC_DUMP_COMPLETED_FFFD}, {0xFFF7, DFC_DUMP_COMPLETED_FFF7}, {0xFFF6, DFC_DUMP_COMPLETED_FFF6}}, /*otherwise=*/0};
static_assert(kCompletion(0xFFFD) == 4 && kCompletion(0xFFF7) == 5 && kCompletion(0xFFF6) == 6);
static_assert(kCompletion(0xFFFE) == 0);

// The result of a dump that completed with a code; `otherwise` for a code without a result of its own.
constexpr uint32_t completed(uint32_t code, uint32_t otherwise) {
  const uint32_t result = kCompletion(code);
  return result != 0 ? result : otherwise;
}

// Delivers what the driver returned from an offset on, as far as there is room; returns the number of bytes.
uint32_t deliver(const RegionData& data, uint32_t returned, uint32_t offset, void* buffer, uint32_t capacity) {
  const uint32_t available = std::min<uint32_t>(returned, sizeof(data));
  if (offset >= available) return 0;
  const uint32_t bytes = std::min(capacity, available - offset);
  std::memcpy(buffer, data.bytes + offset, bytes);
  return bytes;
}

}  // namespace

uint32_t DFC_IssueDumpMBox(uint32_t board, uint32_t dump_type, uint32_t region_offset, uint32_t region, uint32_t data_offset,
                           void* buffer, uint32_t* length) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (sli_mode < kSli4) return DFC_UNSUPPORTED;
  if (dump_type < 1 || dump_type > 4) return DFC_UNSUPPORTED;
  if (*length == 0) return DFC_TOO_SMALL;
  if (buffer == nullptr) return DFC_DUMP_NO_BUFFER;
  const uint32_t region_length = valid_region(region);
  if (region_length == 0) return DFC_DUMP_UNKNOWN_REGION;
  INSIST(region_length <= 4096, 3458);

  const auto data = StagingBuffer<RegionData>::cleared();
  if (!data) return DFC_FAILED;
  auto header = header_for(board);
  header.arg1 = data_offset;
  header.arg2 = region_length;
  const DumpRequest request{.type = dump_type, .region = region, .region_offset = region_offset};
  CompletionWord completion{};
  const Outcome outcome = invoke<kDump>(board, header, request, *data, completion);

  if (completion.word != 0) {
    *length = 0;
    return completed(completion.word, outcome.platform);
  }
  // Also where the call failed: whoever asks for a damaged region wants to see what there is.
  *length = deliver(*data, header.arg3, data_offset, buffer, *length);
  return outcome.ok() ? DFC_OK : DFC_FAILED;
}

uint32_t LEG_IssueDumpMBox(uint32_t board, void* buffer, uint32_t* /*length*/, uint32_t region) {
  constexpr uint32_t kPieceWords = 128;
  constexpr uint32_t kGatheringBytes = 2048;
  uint8_t gathered[kGatheringBytes + kPieceWords * sizeof(uint32_t)] = {};  // the last piece may overshoot
  const uint32_t size = std::min(valid_region(region), kGatheringBytes);

  uint32_t offset = 0;
  uint32_t delivered = 0;
  do {
    Mailbox mailbox = region_mailbox(RegionCommand::kDump, region, offset, /*bytes=*/128);
    const uint32_t result = send_region_mailbox(board, mailbox, gathered + offset, 0, kPieceWords);
    const uint32_t status = status_of(mailbox.words);
    if (result != DFC_OK) return status == 0 ? result : completed(status, status);
    delivered = delivered_bytes(mailbox);
    offset += std::min(delivered, size - offset);
  } while (offset < size && delivered != 0);

  std::memcpy(buffer, gathered, offset);
  return DFC_OK;
}
