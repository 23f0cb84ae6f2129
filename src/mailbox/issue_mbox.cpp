// One mailbox, one call.
#include "mailbox/issue_mbox.h"

#include <algorithm>
#include <span>

#include "info/sli_mode.h"
#include "mailbox/mailbox_words.h"
#include "transport/call_frame.h"
#include "transport/insist.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

// The result line names another callback than the one that was issued; log readers match this name.
constexpr CallSite kPlain{.function = "_IssueMbox",
                          .callback = Callback::kMbox,
                          .lines = {1248, 1253},
                          .result_name = facts_of(Callback::kInduceDump).name};
constexpr CallSite kExtended{.function = "IssueMboxEx", .callback = Callback::kMbox, .lines = {1388, 1390}};

constexpr StatusMap kFailureStatus{
    {{0xBAD005A, DFC_MBOX_STATUS_FAILED}, {0xBAD0039, DFC_MBOX_STATUS_BUSY}, {0xBAD0004, DFC_MBOX_STATUS_DRIVER_BAD0004}},
    DFC_MBOX_STATUS_FAILED};
static_assert(kFailureStatus(0xBAD0039) == 253);
static_assert(kFailureStatus(0) == 252);

constexpr StatusMap kFailureResult{{{0xBAD005A, DFC_MBOX_NOT_TAKEN}}, DFC_FAILED};
static_assert(kFailureResult(0xBAD005A) == 3);
static_assert(kFailureResult(0) == 1);

// What came of a mailbox: the adapter's own status stays, a failed call leaves one of the library's.
uint32_t result_of(const Outcome& outcome, uint32_t* mailbox) {
  if (outcome.ok()) return status_of(mailbox) == 0 ? DFC_OK : DFC_FAILED;
  set_status(mailbox, kFailureStatus(outcome.driver));
  return kFailureResult(outcome.driver);
}

constexpr bool is_within_limits(uint32_t word_count, uint32_t reply_bytes, uint32_t sli_mode) {
  if (sli_mode == kSli4) return word_count <= 512 && reply_bytes <= 2048;
  return word_count <= 32 && reply_bytes <= 128;
}

// The caller's memory that a mailbox names.
struct HostBuffers {
  uint32_t write_size = 0;
  uint32_t write_address = 0;
  uint32_t read_size = 0;
  uint32_t read_address = 0;
};

HostBuffers host_buffers(const Mailbox& mailbox) {
  constexpr uint32_t kLength = 0xFFFFFF;
  const uint32_t* const words = mailbox.words;
  switch (command_of(words)) {
    case 0x84: return {words[2] & kLength, words[3], words[5] & kLength, words[6]};
    case 0x38:
    case 0x8D:
    case 0x8F: return {.read_size = words[3] & kLength, .read_address = words[4]};
    default: return {};
  }
}

// Host addresses are 32-bit words; on 64-bit systems they name memory below 4 GiB.
template <typename T>
T* at_address(uint32_t address) {
  return reinterpret_cast<T*>(static_cast<uintptr_t>(address));  // NOLINT(performance-no-int-to-ptr): a mailbox holds numbers
}

}  // namespace

uint32_t vaskdfc::_IssueMbox(uint32_t board, uint32_t* mailbox, uint32_t word_count, uint32_t reply_bytes, uint32_t sli_mode) {
  if (!is_within_limits(word_count, reply_bytes, sli_mode)) {
    set_status(mailbox, DFC_MBOX_STATUS_FAILED);
    return DFC_FAILED;
  }
  StagingBuffer<MailboxData> data;
  if (!data) return DFC_NO_MEMORY;

  set_status(mailbox, 0);
  const std::span words(mailbox, std::min(word_count, DFC_MBOX_WORDS));
  Mailbox travelling{};
  MailboxExtension no_extension{};
  std::ranges::copy(words, travelling.words);

  const auto [write_size, write_address, read_size, read_address] = host_buffers(travelling);
  INSIST(write_size <= 4096, 1236);
  INSIST(read_size <= 4096, 1241);
  std::copy_n(at_address<const uint8_t>(write_address), write_size, data->bytes);

  auto header = header_for(board);
  header.arg2 = word_count * sizeof(uint32_t);
  header.arg3 = reply_bytes;
  const Outcome outcome = invoke<kPlain>(board, header, *data, travelling, no_extension);
  std::copy_n(travelling.words, words.size(), mailbox);

  const uint32_t result = result_of(outcome, mailbox);
  if (result == DFC_OK && read_address != 0) std::copy_n(data->bytes, read_size, at_address<uint8_t>(read_address));
  return result;
}

uint32_t IssueMbox(uint32_t board, uint32_t* mailbox, uint32_t word_count, uint32_t reply_bytes) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (sli_mode >= kSli4) return DFC_MBOX_NOT_TAKEN;
  return _IssueMbox(board, mailbox, word_count, reply_bytes, sli_mode);
}

uint32_t IssueMboxEx(uint32_t board, uint32_t* mailbox, void* extension, uint8_t flag, uint32_t words_in, uint32_t words_out) {
  // Half of a mailbox, whatever the command needs.
  constexpr uint32_t kWords = 32;

  set_status(mailbox, 0);
  Mailbox travelling{};
  std::copy_n(mailbox, kWords, travelling.words);
  MailboxExtension block{.flag = flag};
  block.sent_bytes = words_in * sizeof(uint32_t);
  block.wanted_bytes = words_out * sizeof(uint32_t);
  auto* const extension_bytes = static_cast<uint8_t*>(extension);
  const auto travelling_bytes = [](uint32_t words) { return std::min(words, DFC_MBOX_EXTENSION_WORDS) * sizeof(uint32_t); };
  std::copy_n(extension_bytes, travelling_bytes(words_in), block.data);

  StagingBuffer<MailboxData> data;
  if (!data) return DFC_NO_MEMORY;

  auto header = header_for(board);
  header.arg2 = kWords * sizeof(uint32_t);
  header.arg3 = sizeof(travelling);
  const Outcome outcome = invoke<kExtended>(board, header, *data, travelling, block);
  std::copy_n(travelling.words, kWords, mailbox);

  const uint32_t result = result_of(outcome, mailbox);
  if (result == DFC_OK) std::copy_n(block.data, travelling_bytes(words_out), extension_bytes);
  return result;
}
