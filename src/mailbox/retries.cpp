// Mailboxes that are sent again while the driver is busy. The three differ on purpose in how often they send and wait.
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "info/sli_mode.h"
#include "mailbox/issue_mbox.h"
#include "mailbox/mailbox_words.h"
#include "transport/records/mailbox.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr uint32_t whole_seconds(uint32_t milliseconds) { return milliseconds / 1000 + (milliseconds % 1000 != 0 ? 1 : 0); }
static_assert(whole_seconds(0) == 0 && whole_seconds(1) == 1 && whole_seconds(1001) == 2);

// The result that ends the attempts; nothing while the driver is busy.
std::optional<uint32_t> final_result(uint32_t sent, const uint32_t* mailbox) {
  if (sent == DFC_OK || status_of(mailbox) == 0) return sent;
  if (status_of(mailbox) == DFC_MBOX_STATUS_BUSY) return std::nullopt;
  return DFC_MBOX_GAVE_UP;
}

// The transfer of a mailbox that takes the extended path.
struct ExtendedTransfer {
  uint32_t code;
  uint32_t kind;
};

// Prepares an SLI_CONFIG mailbox for the extended path; nothing for a mailbox that goes the plain way.
std::optional<ExtendedTransfer> extended_transfer(uint32_t* mailbox) {
  constexpr uint8_t kSliConfig = 0x9B;
  if (command_of(mailbox) != kSliConfig) return std::nullopt;

  const auto byte_at = [bytes = reinterpret_cast<const uint8_t*>(mailbox)](std::size_t offset) { return bytes[offset]; };
  const bool is_embedded = (mailbox[1] & 1) != 0;
  if (!is_embedded) {
    mailbox[6] = mailbox[7] = 0;
    return ExtendedTransfer{.code = byte_at(257) == 9 ? 1u : 2u, .kind = 1};
  }
  if (byte_at(25) != 1 || mailbox[38] == 0) return std::nullopt;
  mailbox[40] = mailbox[41] = 0;
  return ExtendedTransfer{.code = byte_at(24) == 0xAC ? 1u : 2u, .kind = 2};
}

}  // namespace

// Sends `retry_count` times to a busy driver and sleeps as often.
uint32_t DFC_IssueMboxWithRetry(uint32_t board, uint32_t* mailbox, uint32_t word_count, uint32_t reply_bytes, uint32_t retry_count,
                                uint32_t delay_ms) {
  if (retry_count == 0) return DFC_OK;

  Mailbox scratch;
  uint32_t result = DFC_MBOX_GAVE_UP;
  for (uint32_t attempt = 0; attempt < retry_count; ++attempt) {
    scratch = {};
    std::copy_n(mailbox, std::min(word_count, DFC_MBOX_WORDS), scratch.words);
    // The limits of SLI mode 4, whatever the adapter's mode is.
    const uint32_t sent = _IssueMbox(board, scratch.words, word_count, reply_bytes, kSli4);
    const auto final = sent == DFC_MBOX_NOT_TAKEN ? sent : final_result(sent, scratch.words);
    if (final) {
      result = *final;
      break;
    }
    sleep(whole_seconds(delay_ms));
  }
  const auto* const bytes = reinterpret_cast<const uint8_t*>(scratch.words);
  std::copy_n(bytes, std::min<std::size_t>(reply_bytes, sizeof(scratch)), reinterpret_cast<uint8_t*>(mailbox));
  return result;
}

// Sends `retry_count` times to a busy driver, but once at least, and sleeps between the attempts.
uint32_t DFC_IssueMboxWithRetryV2(uint32_t board, uint32_t* mailbox, uint32_t word_count, uint32_t retry_count, uint32_t delay_ms) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  if (sli_mode < kSli4) return DFC_MBOX_WRONG_KIND;
  const auto extended = extended_transfer(mailbox);
  if (!extended && word_count != DFC_MBOX_WORDS) return DFC_MBOX_WRONG_KIND;

  for (uint32_t remaining = retry_count;; --remaining) {
    set_status(mailbox, 0);
    const uint32_t sent = extended ? IssueExtendedSLIConfig(board, mailbox, extended->code, extended->kind, word_count)
                                   : _IssueMbox(board, mailbox, word_count, word_count * sizeof(uint32_t), sli_mode);
    if (const auto final = final_result(sent, mailbox)) return *final;
    if (remaining <= 1) return DFC_MBOX_GAVE_UP;
    sleep(whole_seconds(delay_ms));
  }
}

// Sends `retry_count` times to a busy driver and waits as often.
uint32_t DFC_IssueMboxWithRetryEx(uint32_t board, uint32_t* mailbox, void* extension, uint8_t flag, uint32_t words_in,
                                  uint32_t words_out, uint32_t retry_count, uint32_t delay_ms) {
  if (words_in > DFC_MBOX_EXTENSION_WORDS || words_out > DFC_MBOX_EXTENSION_WORDS) return DFC_MBOX_GAVE_UP;
  if (retry_count == 0) return DFC_OK;

  Mailbox scratch;
  uint32_t scratch_extension[DFC_MBOX_EXTENSION_WORDS];
  auto* const extension_bytes = static_cast<uint8_t*>(extension);
  auto* const scratch_bytes = reinterpret_cast<uint8_t*>(scratch_extension);
  uint32_t result = DFC_MBOX_GAVE_UP;
  for (uint32_t attempt = 0; attempt < retry_count; ++attempt) {
    std::ranges::copy_n(mailbox, DFC_MBOX_WORDS, scratch.words);
    std::ranges::fill(scratch_extension, 0);
    std::copy_n(extension_bytes, words_in * sizeof(uint32_t), scratch_bytes);
    const uint32_t sent = IssueMboxEx(board, scratch.words, scratch_extension, flag, words_in, words_out);
    if (const auto final = final_result(sent, scratch.words)) {
      result = *final;
      break;
    }
    if (delay_ms <= 1000) {
      usleep(delay_ms * 1000);
    } else {
      sleep(whole_seconds(delay_ms));
    }
  }
  std::ranges::copy(scratch.words, mailbox);
  std::copy_n(scratch_bytes, words_out * sizeof(uint32_t), extension_bytes);
  return result;
}
