/**
 * @file
 * SLI mailboxes: pass-through with and without retries, and the dump and update-configuration mailboxes that read and write
 * configuration regions.
 *
 * A mailbox is up to 64 little-endian 32-bit words. Byte 1 is the command code. The 16 bits at offset 2 are the mailbox status:
 * cleared before sending, then the adapter's completion status, or one of the library's own DFC_MBOX_STATUS codes.
 *
 * Four commands carry addresses of the caller's memory. The library takes lengths (low 24 bits of a word) and addresses (32
 * bits; on 64-bit systems they name memory below 4 GiB) from the mailbox as the caller passed it, and copies the data itself:
 *
 *     command           to the adapter                 from the adapter
 *     0x84              length at 8, address at 12     length at 20, address at 24
 *     0x38, 0x8D, 0x8F  none                           length at 12, address at 16
 *
 * A length above 4096 bytes in one of these is a programming error: the process stops with "write_size <= 4096" or
 * "read_size <= 4096".
 */
#ifndef VASKDFC_MAILBOX_H
#define VASKDFC_MAILBOX_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Words of a plain mailbox. Longer ones are accepted in SLI mode 4, but only these words travel. */
#define DFC_MBOX_WORDS 64u

/** Words of extension data that the retry wrapper passes on in each direction. */
#define DFC_MBOX_EXTENSION_WORDS 512u

/** @name Mailbox statuses of the library's own
 *  @{ */
#define DFC_MBOX_STATUS_FAILED 252u         /**< a limit was exceeded, or the call failed in a way not named below */
#define DFC_MBOX_STATUS_BUSY 253u           /**< driver status 0xbad0039; the retry wrappers send again */
#define DFC_MBOX_STATUS_DRIVER_BAD0004 254u /**< driver status 0xbad0004 */
/** @} */

/** @name Results of mailbox operations beside those of vaskdfc/result.h
 *  @{ */
#define DFC_MBOX_GAVE_UP 2u    /**< retries used up, or a status that is not worth a retry */
#define DFC_MBOX_NOT_TAKEN 3u  /**< driver status 0xbad005a; IssueMbox: the adapter takes other mailboxes */
#define DFC_MBOX_WRONG_KIND 4u /**< the retry wrapper of SLI mode 4: not an adapter or not a mailbox of that kind */
/** @} */

/** @name Results of DFC_IssueDumpMBox and LEG_IssueDumpMBox
 *  @{ */
#define DFC_DUMP_UNKNOWN_REGION 3u /**< no adapter has a region of this number */
#define DFC_DUMP_NO_BUFFER 4u      /**< the buffer is null */
#define DFC_DUMP_COMPLETED_FFFD 4u /**< the adapter completed the dump with 0xFFFD */
#define DFC_DUMP_COMPLETED_FFF7 5u /**< the adapter completed it with 0xFFF7 */
#define DFC_DUMP_COMPLETED_FFF6 6u /**< the adapter completed it with 0xFFF6 */
/** @} */

/** @name Dump and update types
 *  @{ */
#define DFC_DUMP_TYPE_REGION 2u   /**< the dump type that reads configuration regions */
#define DFC_UPDATE_TYPE_REGION 2u /**< the only update type */
/** @} */

/**
 * Sends one mailbox to an adapter of SLI mode 3 or below.
 *
 * @param board        board index
 * @param mailbox      `word_count` words; holds the completed mailbox afterwards, also when the call failed
 * @param word_count   at most 32
 * @param reply_bytes  length of the reply that the caller wants, at most 128 bytes
 * @return DFC_OK; DFC_FAILED when the SLI mode cannot be read, a limit is exceeded, the call failed or the adapter completed the
 *         mailbox with a status, which then stands in the mailbox; DFC_MBOX_NOT_TAKEN for an adapter of SLI mode 4 or above
 *         (nothing sent, see DFC_IssueMboxWithRetryV2) or when the driver says so; DFC_NO_MEMORY
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_MBOX.
 */
uint32_t IssueMbox(uint32_t board, uint32_t* mailbox, uint32_t word_count, uint32_t reply_bytes);

/**
 * Sends one mailbox with extension data.
 *
 * @param board      board index
 * @param mailbox    exactly 32 words (128 bytes) travel in both directions
 * @param extension  `words_in` words are sent; on success `words_out` words are received. May be null where both are 0
 * @param flag       passed through to the driver
 * @param words_in   32-bit words; more than DFC_MBOX_EXTENSION_WORDS are not sent
 * @param words_out  32-bit words; more than DFC_MBOX_EXTENSION_WORDS are not received
 * @return DFC_OK; DFC_FAILED when the call failed or the adapter completed the mailbox with a status; DFC_MBOX_NOT_TAKEN;
 *         DFC_NO_MEMORY (nothing sent, the mailbox status is 0)
 *
 * Driver callback: TREL_MGMT_MBOX.
 */
uint32_t IssueMboxEx(uint32_t board, uint32_t* mailbox, void* extension, uint8_t flag, uint32_t words_in, uint32_t words_out);

/**
 * Sends one SLI_CONFIG mailbox (command 0x9B) of SLI mode 4.
 *
 * @param board          board index
 * @param mailbox        `word_count` words; as many bytes as the driver returns, at most 4096, are received on success. On
 *                       failure it is untouched
 * @param transfer_code  1 or 2, see DFC_IssueMboxWithRetryV2
 * @param kind           not used
 * @param word_count     more than 1024 words are not sent
 * @return DFC_OK; DFC_FAILED when the SLI mode cannot be read, there is no memory or the call failed; DFC_UNSUPPORTED for an
 *         adapter of SLI mode 3 or below (nothing sent)
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_MBOX_SLI_CFG_EXT.
 */
uint32_t IssueExtendedSLIConfig(uint32_t board, uint32_t* mailbox, uint32_t transfer_code, uint32_t kind, uint32_t word_count);

/**
 * Sends a mailbox, and again while the driver is busy. Sleeps after every busy answer, the last one included. Does not look at
 * the SLI mode: at most 512 words and a reply of at most 2048 bytes are accepted from any adapter.
 *
 * @param board        board index
 * @param mailbox      `word_count` words; the first `reply_bytes` bytes, at most 256, are received whatever the result
 * @param word_count   32-bit words
 * @param reply_bytes  bytes
 * @param retry_count  how often a busy driver is asked; 0 sends nothing and leaves the mailbox as it is
 * @param delay_ms     milliseconds, rounded up to whole seconds
 * @return DFC_OK; DFC_FAILED or DFC_NO_MEMORY where the mailbox status is 0 all the same; DFC_MBOX_GAVE_UP;
 *         DFC_MBOX_NOT_TAKEN
 *
 * Driver callback: TREL_MGMT_MBOX.
 */
uint32_t DFC_IssueMboxWithRetry(uint32_t board, uint32_t* mailbox, uint32_t word_count, uint32_t reply_bytes, uint32_t retry_count,
                                uint32_t delay_ms);

/**
 * Sends a mailbox to an adapter of SLI mode 4, in place, and again while the driver is busy. Sleeps between the attempts only, and
 * sends once where the retry count is 0.
 *
 * SLI_CONFIG mailboxes (command 0x9B) take the extended path:
 *   - embedded requests (bit 0 of the word at offset 4 set) whose byte at 25 is 1 and whose word at 152 is not 0: the words at
 *     160 and 164 are cleared; transfer code 1 when the byte at 24 is 0xAC, else 2;
 *   - requests that are not embedded: the words at 24 and 28 are cleared; transfer code 1 when the byte at 257 is 9, else 2. The
 *     mailbox must then be at least 258 bytes long.
 * All others must be exactly DFC_MBOX_WORDS words long.
 *
 * @param board        board index
 * @param mailbox      `word_count` words; holds the completed mailbox afterwards
 * @param word_count   32-bit words
 * @param retry_count  how often a busy driver is asked
 * @param delay_ms     milliseconds, rounded up to whole seconds
 * @return DFC_OK; DFC_FAILED when the SLI mode cannot be read, or when sending failed and left the mailbox status 0;
 *         DFC_NO_MEMORY; DFC_MBOX_GAVE_UP; DFC_MBOX_WRONG_KIND for an adapter of SLI mode 3 or below, or a plain mailbox of
 *         another length (nothing sent)
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_MBOX or TREL_MGMT_MBOX_SLI_CFG_EXT.
 */
uint32_t DFC_IssueMboxWithRetryV2(uint32_t board, uint32_t* mailbox, uint32_t word_count, uint32_t retry_count, uint32_t delay_ms);

/**
 * Sends a mailbox with extension data, and again while the driver is busy. Waits after every busy answer, the last one included.
 *
 * @param board        board index
 * @param mailbox      all 64 words are read and written whatever the result, although 32 of them travel
 * @param extension    `words_in` words are sent, `words_out` words are received whatever the result
 * @param flag         passed through to the driver
 * @param words_in     at most DFC_MBOX_EXTENSION_WORDS
 * @param words_out    at most DFC_MBOX_EXTENSION_WORDS
 * @param retry_count  how often a busy driver is asked; 0 sends nothing and leaves mailbox and extension as they are
 * @param delay_ms     milliseconds; above 1000 rounded up to whole seconds
 * @return DFC_OK; DFC_MBOX_GAVE_UP, also for a word count above the limit (nothing sent); DFC_FAILED, DFC_MBOX_NOT_TAKEN or
 *         DFC_NO_MEMORY where the mailbox status is 0
 *
 * Driver callback: TREL_MGMT_MBOX.
 */
uint32_t DFC_IssueMboxWithRetryEx(uint32_t board, uint32_t* mailbox, void* extension, uint8_t flag, uint32_t words_in,
                                  uint32_t words_out, uint32_t retry_count, uint32_t delay_ms);

/**
 * Reads a configuration region of an adapter of SLI mode 4.
 *
 * @param board          board index
 * @param dump_type      1 to 4; DFC_DUMP_TYPE_REGION reads regions
 * @param region_offset  offset in the region, for the driver
 * @param region         region number
 * @param data_offset    offset in what the driver delivers, from which the buffer is filled
 * @param buffer         receives the data
 * @param length         in: the buffer's capacity in bytes; out: bytes delivered. Untouched where nothing was sent
 * @return DFC_OK, also with 0 bytes; DFC_FAILED when the SLI mode cannot be read, there is no memory or the call failed (what came
 *         back is delivered all the same); DFC_UNSUPPORTED for SLI mode 3 or below, or another dump type; DFC_TOO_SMALL for a
 *         capacity of 0; DFC_DUMP_NO_BUFFER; DFC_DUMP_UNKNOWN_REGION; DFC_DUMP_COMPLETED_FFFD, DFC_DUMP_COMPLETED_FFF7,
 *         DFC_DUMP_COMPLETED_FFF6 with a length of 0; the platform's status, which may be 0, for any other completion word, also
 *         with a length of 0
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_HBA_ISSUE_DMP_MBX.
 */
uint32_t DFC_IssueDumpMBox(uint32_t board, uint32_t dump_type, uint32_t region_offset, uint32_t region, uint32_t data_offset,
                           void* buffer, uint32_t* length);

/**
 * Reads a whole configuration region of an adapter of SLI mode 3 or below, in pieces of 128 bytes.
 *
 * @param board   board index
 * @param buffer  receives what was gathered, at most the region's size; untouched on failure
 * @param length  neither read nor written
 * @param region  22 or 23
 * @return DFC_OK, also where the adapter delivered less than the region; DFC_DUMP_COMPLETED_FFFD, DFC_DUMP_COMPLETED_FFF7,
 *         DFC_DUMP_COMPLETED_FFF6; any other mailbox status; the result of DFC_IssueMboxWithRetryEx where that status is 0
 *
 * Driver callback: TREL_MGMT_MBOX.
 */
uint32_t LEG_IssueDumpMBox(uint32_t board, void* buffer, uint32_t* length, uint32_t region);

/**
 * Writes a configuration region of an adapter of SLI mode 4. Bytes of the region beyond the data are sent as zeros.
 *
 * @param board        board index
 * @param update_type  DFC_UPDATE_TYPE_REGION
 * @param region       region number
 * @param data         `length` bytes
 * @param length       at most the region's size
 * @param reply_word   receives the adapter's reply word on success; else untouched
 * @return DFC_OK; DFC_FAILED when the SLI mode cannot be read or the call failed; DFC_UNSUPPORTED for another update type or SLI
 *         mode 3 or below; DFC_DUMP_UNKNOWN_REGION; DFC_TOO_SMALL for data longer than the region; DFC_NO_MEMORY
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_HBA_ISSUE_UPD_MBX.
 */
uint32_t DFC_IssueUpdateCfgMBox(uint32_t board, uint32_t update_type, uint32_t region, const void* data, uint32_t length,
                                uint32_t* reply_word);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
