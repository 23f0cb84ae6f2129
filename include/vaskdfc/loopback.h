/**
 * @file
 * Loopback: configure it, send data through it as often as wanted, end it. The library keeps no state between these calls and
 * neither makes nor compares data: what was received is the caller's to judge.
 */
#ifndef VASKDFC_LOOPBACK_H
#define VASKDFC_LOOPBACK_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Most bytes of one test. */
#define DFC_LOOPBACK_BYTES 65536u

/** The data of one test. */
typedef struct dfc_loopback {
  uint32_t bufSize;     /**< Bytes to send and to receive, at most DFC_LOOPBACK_BYTES. */
  const uint8_t* txBuf; /**< bufSize bytes. */
  uint8_t* rxBuf;       /**< Room for bufSize bytes. */
} dfc_loopback;
VASKDFC_POINTER_RECORD_SIZE(dfc_loopback, 12, 24);

/** @name Modes of DFC_ConfigLoopback
 *  @{ */
#define DFC_LOOPBACK_MODE_1 1u /**< the driver is told 1 */
#define DFC_LOOPBACK_MODE_2 2u /**< the driver is told 4 */
/** @} */

/** @name Results of loopback operations beside those of vaskdfc/result.h
 *  @{ */
#define DFC_LOOPBACK_BAD0021 2u      /**< DFC_ConfigLoopback, DFC_EndLoopback: driver status 0xbad0021 */
#define DFC_LOOPBACK_NO_SUCH_MODE 3u /**< DFC_ConfigLoopback: neither of the two modes */
#define DFC_LOOPBACK_BAD0039 3u      /**< DFC_RunLoopbackTest: driver status 0xbad0039 */
#define DFC_LOOPBACK_BAD000A 6u      /**< DFC_RunLoopbackTest: driver status 0xbad000a */
/** @} */

/**
 * Puts the adapter's port into a loopback mode.
 *
 * @param board  board index
 * @param mode   DFC_LOOPBACK_MODE_1 or DFC_LOOPBACK_MODE_2
 * @param value  passed to the driver
 * @return DFC_OK; DFC_LOOPBACK_NO_SUCH_MODE (nothing sent); DFC_LOOPBACK_BAD0021; DFC_FAILED on any other failure
 *
 * Driver callback: TREL_MGMT_LOOPBACK_MODE.
 */
uint32_t DFC_ConfigLoopback(uint32_t board, uint32_t mode, uint32_t value);

/**
 * Sends data through the loop. More than DFC_LOOPBACK_BYTES is a programming error: the process stops with
 * "pLoopback->bufSize <= 65536".
 *
 * @param board      board index
 * @param pLoopback  the data; its receive area is untouched on failure
 * @return DFC_OK; DFC_LOOPBACK_BAD000A; DFC_LOOPBACK_BAD0039; DFC_FAILED on any other failure; DFC_NO_MEMORY
 *
 * Driver callback: TREL_MGMT_LOOPBACK_TEST.
 */
uint32_t DFC_RunLoopbackTest(uint32_t board, const dfc_loopback* pLoopback);

/**
 * Takes the adapter's port out of loopback: by the end of diagnostics in SLI mode 4 and above, by a loop initialisation below.
 *
 * @param board  board index
 * @return DFC_OK; DFC_LOOPBACK_BAD0021 in SLI mode 4 and above; DFC_FAILED when the SLI mode cannot be read, and on any other
 *         failure
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_DIAG_MODE_END or TREL_MGMT_LIP.
 */
uint32_t DFC_EndLoopback(uint32_t board);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
