/**
 * @file
 * Configuration regions: what an adapter keeps in non-volatile memory, and the persistent link-down setting in region 23.
 *
 * Region 23 (1024 bytes) is a chain of typed records, region 22 (512 bytes) a table of 16-byte entries, region 14 an opaque
 * block of 1000 bytes. docs/formats describes the first two.
 *
 * On adapters of the newer generation the operations that write return the reply word of the adapter, which is 0 unless the
 * adapter set it: a write that the driver refused returns 0 as well. Read the region again to be sure. Nothing guards the time
 * between reading a region and writing it back: two callers that change one adapter's region at once lose one of the changes.
 */
#ifndef VASKDFC_REGIONS_H
#define VASKDFC_REGIONS_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** @name Sizes of the regions
 *  @{ */
#define DFC_REGION14_BYTES 1000u /**< region 14, in bytes */
#define DFC_REGION22_BYTES 512u  /**< region 22, in bytes */
#define DFC_REGION23_BYTES 1024u /**< region 23, in bytes */
/** @} */

/** An entry of region 22; its layout is the adapter's. */
typedef struct dfc_region22_entry {
  uint8_t bytes[16]; /**< The adapter's. */
} dfc_region22_entry;
VASKDFC_RECORD_SIZE(dfc_region22_entry, 16);

/** Entries that DFC_GetRegion22 delivers. The image has room for 31 and the first half of the last one. */
#define DFC_REGION22_ENTRIES 32u

/** Result of DFC_GetRegion22 when there is no valid image. */
#define DFC_REGION22_NO_IMAGE 65534u

/** Result of the operations that change a record of region 23 when the image does not have it. */
#define DFC_RECORD_NOT_FOUND 3u

/**
 * Reads region 23; where it holds no valid image, delivers the default image over what was read.
 *
 * @param board     board index
 * @param image     receives an allocated image that the caller releases with free(); null on failure
 * @param size      receives the image's size, DFC_REGION23_BYTES; 0 on failure
 * @param sli_mode  the adapter's SLI mode as DFC_GetDrvInfo tells it
 * @return DFC_OK; DFC_FAILED when the region cannot be read; DFC_NO_MEMORY
 *
 * Driver callbacks: those of DFC_IssueDumpMBox in SLI mode 4 and above, else those of LEG_IssueDumpMBox.
 */
uint32_t GetRegion23(uint32_t board, uint8_t** image, uint32_t* size, uint32_t sli_mode);

/**
 * Writes region 23 of an adapter of SLI mode 3 or below.
 *
 * @param board  board index
 * @param image  `size` bytes
 * @param size   bytes, a multiple of 4
 * @return result of DFC_IssueMboxWithRetryEx
 *
 * Driver callback: TREL_MGMT_MBOX.
 */
uint32_t LegacySetRegion23(uint32_t board, const void* image, uint32_t size);

/**
 * Writes the default image to region 23.
 *
 * @param board  board index
 * @return the adapter's reply word, or on SLI mode 3 and below the result of DFC_IssueMboxWithRetryEx; DFC_FAILED when the SLI
 *         mode cannot be read; DFC_NO_MEMORY
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then those of DFC_IssueUpdateCfgMBox or TREL_MGMT_MBOX.
 */
uint32_t DFC_InitR23(uint32_t board);

/**
 * Writes region 22 of an adapter that is not of an FCoE type.
 *
 * @param board  board index
 * @param image  `size` bytes
 * @param size   bytes, a multiple of 4
 * @return result of DFC_IssueMboxWithRetryEx
 *
 * Driver callback: TREL_MGMT_MBOX.
 */
uint32_t LegacySetRegion22(uint32_t board, const void* image, uint32_t size);

/**
 * Writes a blank image to region 22.
 *
 * @param board  board index
 * @return the adapter's reply word, or on adapters that are not of an FCoE type the result of DFC_IssueMboxWithRetryEx;
 *         DFC_NO_MEMORY; DFC_FAILED or the driver's status when the adapter type cannot be read
 *
 * Driver callbacks: TREL_MGMT_GET_TRELDFC_INFO, then those of DFC_IssueUpdateCfgMBox or TREL_MGMT_MBOX.
 */
uint32_t DFC_InitR22(uint32_t board);

/**
 * Reads the entries of region 22.
 *
 * @param board    board index
 * @param entries  receives DFC_REGION22_ENTRIES entries; of the last one the second half is 0
 * @param count    receives DFC_REGION22_ENTRIES
 * @return DFC_OK; DFC_REGION22_NO_IMAGE; DFC_NO_MEMORY; DFC_FAILED or the driver's status when the adapter type cannot be read;
 *         else the result of DFC_IssueDumpMBox or LEG_IssueDumpMBox. Untouched arguments unless the result is DFC_OK
 *
 * Driver callbacks: TREL_MGMT_GET_TRELDFC_INFO, then those of DFC_IssueDumpMBox or TREL_MGMT_MBOX.
 */
uint32_t DFC_GetRegion22(uint32_t board, dfc_region22_entry* entries, uint32_t* count);

/**
 * Writes the first entries of region 22 and keeps the others. Where there is no valid image, first writes a blank one.
 *
 * @param board    board index
 * @param entries  `count` entries
 * @param count    entries beyond the end of the image are cut off
 * @return result of the last write, as for DFC_InitR22; DFC_FAILED when the region cannot be read and an absent image is not the
 *         reason; DFC_NO_MEMORY; DFC_FAILED or the driver's status when the adapter type cannot be read
 *
 * Driver callbacks: those of DFC_GetRegion22, then those of DFC_InitR22, once or twice.
 */
uint32_t DFC_SetRegion22(uint32_t board, const dfc_region22_entry* entries, uint32_t count);

/**
 * Writes region 14. Only adapters of an FCoE type have it.
 *
 * @param board  board index
 * @param data   DFC_REGION14_BYTES bytes
 * @return the adapter's reply word; DFC_UNSUPPORTED for an adapter of another type (nothing sent); DFC_FAILED or the driver's
 *         status when the adapter type cannot be read
 *
 * Driver callbacks: TREL_MGMT_GET_TRELDFC_INFO, then those of DFC_IssueUpdateCfgMBox.
 */
uint32_t DFC_SetRegion14(uint32_t board, const void* data);

/** The driver takes the persistent link-down setting; a bit of dfc_drv_info::feature_flags. */
#define DFC_FEATURE_PERSISTENT_LINK_DOWN 0x400u

/**
 * Tells an adapter to keep its link down across restarts, or not to.
 *
 * @param board  board index
 * @param value  nonzero: keep the link down
 * @return result of the write, as for DFC_InitR23; DFC_FAILED when driver information cannot be read; DFC_UNSUPPORTED when the
 *         driver does not have the feature or no flag of the record is in use (nothing written); DFC_RECORD_NOT_FOUND;
 *         DFC_NO_MEMORY; results of GetRegion23
 *
 * Driver callbacks: those of DFC_GetDrvInfo, GetRegion23 and DFC_InitR23.
 */
uint32_t DFC_SetPersistLinkDown(uint32_t board, uint16_t value);

/**
 * Tells whether an adapter keeps its link down across restarts.
 *
 * @param board  board index
 * @param value  receives 1 when it does, else 0; only written with DFC_OK
 * @return DFC_OK; DFC_FAILED when driver information cannot be read or the image has no record of the setting; DFC_UNSUPPORTED
 *         when the driver does not have the feature or no flag of the record is in use; DFC_NO_MEMORY; results of GetRegion23
 *
 * Driver callbacks: those of DFC_GetDrvInfo and GetRegion23.
 */
uint32_t DFC_GetPersistLinkDown(uint32_t board, uint16_t* value);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
