/**
 * @file
 * Port statistics in the layout of FC-HBA.
 *
 * The driver is never told to clear its counters. A reset takes their present values as the adapter's baseline in this process, and
 * reads are relative to it; initialisation makes all baselines 0 again. Callers serialise a reset against reads of the same
 * adapter.
 */
#ifndef VASKDFC_STATISTICS_H
#define VASKDFC_STATISTICS_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Port counters. A counter whose 64 bits are all ones (-1) is not supported by the adapter. */
typedef struct HbaPortStatistics {
  int64_t SecondsSinceLastReset;        /**< Seconds. */
  int64_t TxFrames;                     /**< Frames sent. */
  int64_t TxWords;                      /**< Words of 4 bytes. */
  int64_t RxFrames;                     /**< Frames received. */
  int64_t RxWords;                      /**< Words of 4 bytes. */
  int64_t LIPCount;                     /**< Loop initialisations. */
  int64_t NOSCount;                     /**< Not-operational sequences (NOS). */
  int64_t ErrorFrames;                  /**< Frames received with an error. */
  int64_t DumpedFrames;                 /**< Frames dropped for want of a buffer. */
  int64_t LinkFailureCount;             /**< Link failures. */
  int64_t LossOfSyncCount;              /**< Losses of synchronisation. */
  int64_t LossOfSignalCount;            /**< Losses of signal. */
  int64_t PrimitiveSeqProtocolErrCount; /**< Errors of the primitive sequence protocol. */
  int64_t InvalidTxWordCount;           /**< Invalid transmission words. */
  int64_t InvalidCRCCount;              /**< Frames with an invalid CRC. */
} HbaPortStatistics;
VASKDFC_RECORD_SIZE(HbaPortStatistics, 120);
VASKDFC_FIELD_AT(HbaPortStatistics, LIPCount, 40);
VASKDFC_FIELD_AT(HbaPortStatistics, InvalidCRCCount, 112);

/** The port index that asks for the driver's own values. */
#define HBA_RAW_STATISTICS 0xFFFFFFFFu

/**
 * Reads the port counters, relative to the adapter's baseline.
 *
 * Each difference wraps modulo 2^64: a counter that the driver has restarted below its baseline reads as a negative number. A
 * counter that was -1 when the baseline was taken reads as the driver's value plus one, except for LIPCount, NOSCount and
 * DumpedFrames, whose baseline is then 0.
 *
 * @param board       board index
 * @param port        HBA_RAW_STATISTICS asks for the driver's values, of which LIPCount, NOSCount and DumpedFrames are 0 where they
 *                    are -1; any other value asks for values relative to the baseline
 * @param statistics  receives the counters; untouched on failure
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR on any failure
 *
 * Driver callback: TREL_MGMT_HBA_PORTSTATISTICS.
 */
uint32_t GetPortStatistics(uint32_t board, uint32_t port, HbaPortStatistics* statistics);

/**
 * Makes the port counters start again from zero, as this process sees them.
 *
 * @param board  board index
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR on any failure, and then the baseline stays as it was
 *
 * Driver callback: TREL_MGMT_HBA_PORTSTATISTICS.
 */
uint32_t ResetStatistics(uint32_t board);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
