/**
 * @file
 * Reset and dump of an adapter as a whole.
 */
#ifndef VASKDFC_RESET_H
#define VASKDFC_RESET_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** The reset type that not every driver supports; types 1 and 2 are always sent. */
#define DFC_RESET_TYPE_3 3u
/** Result of DFC_ResetAdapter for a reset type that does not exist, or that the driver does not support. */
#define DFC_RESET_NO_SUCH_TYPE 4u

/** Mode of DFC_SetDumpEnv that makes the adapter produce a dump. */
#define DFC_DUMP_MODE_INDUCE 4u
/** Result of DFC_SetDumpEnv when the adapter was made to produce a dump. */
#define DFC_DUMP_INDUCED 4u
/** Result of DFC_SetDumpEnv when it was not: on purpose the other way round than everywhere else. */
#define DFC_DUMP_NOT_INDUCED 0u

/** Most bytes that DFC_GetDriverDumpRegion delivers. */
#define DFC_DUMP_REGION_BYTES 16u

/** @name Results of DFC_GetDriverDumpRegion beside those of vaskdfc/result.h
 *  @{ */
#define DFC_DUMP_REGION_BAD0014 3u /**< driver status 0xbad0014 */
#define DFC_DUMP_REGION_BAD0003 4u /**< driver status 0xbad0003 */
/** @} */

/**
 * Resets an adapter, and does not wait until it is back.
 *
 * @param board  board index
 * @param type   1, 2 or DFC_RESET_TYPE_3; what each does is the driver's
 * @return DFC_OK; DFC_FAILED on any failure, also of the revision query; DFC_RESET_NO_SUCH_TYPE (no reset sent)
 *
 * Driver callbacks: TREL_MGMT_GET_DFC_REV, TREL_MGMT_RESET.
 */
uint32_t DFC_ResetAdapter(uint32_t board, uint32_t type);

/**
 * Makes an adapter produce a dump, or switches it to a diagnostic state for one.
 *
 * @param board  board index
 * @param mode   DFC_DUMP_MODE_INDUCE; any other mode goes to SetBrdEnv, DFC_MODE_WAITING as 5, except in SLI mode 4, where
 *               nothing is done
 * @return DFC_FAILED when the SLI mode cannot be read. For DFC_DUMP_MODE_INDUCE: DFC_DUMP_INDUCED, DFC_DUMP_NOT_INDUCED. For any
 *         other mode: 0 in SLI mode 4; DFC_UNSUPPORTED when SetBrdEnv returns 4 or 5; else the result of SetBrdEnv
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_INDUCE_DUMP or those of SetBrdEnv.
 */
uint32_t DFC_SetDumpEnv(uint32_t board, uint32_t mode);

/**
 * Reads the descriptor of a dump region of the driver, in SLI mode 3 or below.
 *
 * @param board   board index
 * @param region  region identifier, the driver's
 * @param buffer  receives the descriptor, DFC_DUMP_REGION_BYTES at most; untouched on failure
 * @param length  in: room in bytes, for the driver; out: the descriptor's length as the driver says, whether the call worked or not
 * @return DFC_OK; DFC_FAILED when the SLI mode cannot be read, and on any failure not named here; DFC_UNSUPPORTED for SLI mode 4 or
 *         above (nothing sent, length untouched) and for driver status 0xbad0007; DFC_DUMP_REGION_BAD0014; DFC_DUMP_REGION_BAD0003
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_GET_DUMPREGION.
 */
uint32_t DFC_GetDriverDumpRegion(uint32_t board, uint32_t region, void* buffer, uint32_t* length);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
