/**
 * @file
 * Raw access to an adapter, for diagnostics: its memory, its control registers, its PCI configuration space.
 *
 * Nothing protects an adapter from what is written here. Operations differ in their results for failures that look alike;
 * applications rely on the difference.
 */
#ifndef VASKDFC_ACCESS_H
#define VASKDFC_ACCESS_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Most bytes that one operation reads or writes, and the last offset in PCI configuration space that is accepted. */
#define DFC_ACCESS_BYTES 4096u

/** @name Results of raw access beside those of vaskdfc/result.h
 *  @{ */
#define DFC_ACCESS_FAILED 22u  /**< the call failed, there is no memory for it, or it is longer than DFC_ACCESS_BYTES */
#define DFC_ACCESS_NOT_SLI3 4u /**< memory of an adapter of SLI mode 4 or above */
/** @} */

/**
 * Reads adapter memory, in SLI mode 3 or below.
 *
 * @param board    board index
 * @param buffer   receives `count` bytes; untouched on failure
 * @param address  in adapter memory
 * @param count    bytes, at most DFC_ACCESS_BYTES
 * @return DFC_OK; DFC_FAILED when the SLI mode cannot be read; DFC_ACCESS_NOT_SLI3 (nothing sent); DFC_ACCESS_FAILED, also for a
 *         larger count (nothing sent)
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_READ_MEM.
 */
uint32_t ReadMem(uint32_t board, void* buffer, uint32_t address, uint32_t count);

/**
 * Writes adapter memory, in SLI mode 3 or below.
 *
 * @param board    board index
 * @param data     `count` bytes
 * @param address  in adapter memory
 * @param count    bytes, at most DFC_ACCESS_BYTES
 * @return as ReadMem
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_WRITE_MEM.
 */
uint32_t WriteMem(uint32_t board, const void* data, uint32_t address, uint32_t count);

/**
 * Reads a control register, in SLI mode 3 or below.
 *
 * @param board   board index
 * @param value   receives the register's value; untouched on failure
 * @param offset  of the register
 * @return DFC_OK; DFC_FAILED when the SLI mode cannot be read; DFC_UNSUPPORTED for SLI mode 4 or above (nothing sent);
 *         DFC_ACCESS_FAILED
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_READ_CTLREG.
 */
uint32_t ReadCtlReg(uint32_t board, uint32_t* value, uint32_t offset);

/**
 * Writes a control register, in SLI mode 3 or below.
 *
 * @param board   board index
 * @param value   the register's new value
 * @param offset  of the register
 * @return as ReadCtlReg
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_WRITE_CTLREG.
 */
uint32_t WriteCtlReg(uint32_t board, const uint32_t* value, uint32_t offset);

/**
 * Reads PCI configuration space.
 *
 * @param board   board index
 * @param buffer  receives `count` bytes, little-endian; untouched on failure
 * @param offset  bytes, a multiple of 4 and at most DFC_ACCESS_BYTES
 * @param count   bytes, a multiple of 4 and at most DFC_ACCESS_BYTES
 * @return DFC_OK; DFC_FAILED for another offset or count (nothing sent), and on any failure
 *
 * Driver callback: TREL_MGMT_READ_PCI.
 */
uint32_t DFC_ReadPciCfg(uint32_t board, void* buffer, uint32_t offset, uint32_t count);

/**
 * Older name of DFC_ReadPciCfg.
 *
 * @param board   as in DFC_ReadPciCfg
 * @param buffer  as in DFC_ReadPciCfg
 * @param offset  as in DFC_ReadPciCfg
 * @param count   as in DFC_ReadPciCfg
 * @return the result of DFC_ReadPciCfg
 */
uint32_t ReadPciCfg(uint32_t board, void* buffer, uint32_t offset, uint32_t count);

/**
 * Writes PCI configuration space.
 *
 * @param board   board index
 * @param data    `count` bytes; SwapPciData is applied to them in place
 * @param offset  bytes, a multiple of 4 and at most DFC_ACCESS_BYTES
 * @param count   bytes, at most DFC_ACCESS_BYTES; any number, although configuration space is made of words
 * @return DFC_OK; DFC_FAILED for another offset (nothing sent); DFC_ACCESS_FAILED, also for a larger count (nothing sent)
 *
 * Driver callback: TREL_MGMT_WRITE_PCI.
 */
uint32_t WritePciCfg(uint32_t board, void* data, uint32_t offset, uint32_t count);

/**
 * Brings PCI configuration data from the host's byte order to the adapter's, which is little-endian, or back: in place, in whole
 * words of 4 bytes. Changes nothing on a little-endian host, which every supported host is. No driver call.
 *
 * @param data   `count` bytes
 * @param count  bytes
 */
void SwapPciData(void* data, uint32_t count);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
