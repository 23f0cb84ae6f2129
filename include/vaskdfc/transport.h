/**
 * @file
 * Start and stop of the library, board discovery, diagnostic states, and the calendar behind the log's timestamps.
 */
#ifndef VASKDFC_TRANSPORT_H
#define VASKDFC_TRANSPORT_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Most adapters that the library addresses: driver board numbers and board indices run from 0 to 31. */
#define DFC_MAX_BOARDS 32u

/** Mode of SetBrdEnv and SetDiagEnv that first waits until the adapter no longer reports state 2. */
#define DFC_MODE_WAITING 2u

/**
 * One adapter as DFC_InitDiagEnv describes it. Fields named after an offset carry what the driver's discovery reply holds at
 * that offset; their meaning is the driver's.
 */
typedef struct dfc_brd_info {
  uint8_t caller_0[28]; /**< Not written. */
  uint32_t pci_id;      /**< Vendor identifier in bits 15-0, device identifier in bits 31-16. */
  uint32_t word_4;      /**< The driver's. */
  uint32_t word_8;      /**< The driver's. */
  uint8_t byte_80;      /**< The driver's. */
  uint8_t constant_10;  /**< Always 10. */
  uint16_t half_12;     /**< The driver's. */
  uint32_t word_16;     /**< The driver's. */
  int32_t condition;    /**< Negative: the adapter is in a failed state. */
  uint8_t bytes_24[16]; /**< The driver's. */
  uint8_t bytes_40[32]; /**< The driver's. */
  uint8_t bytes_72[8];  /**< The driver's. */
} dfc_brd_info;
VASKDFC_RECORD_SIZE(dfc_brd_info, 108);
VASKDFC_FIELD_AT(dfc_brd_info, pci_id, 28);
VASKDFC_FIELD_AT(dfc_brd_info, half_12, 42);
VASKDFC_FIELD_AT(dfc_brd_info, condition, 48);
VASKDFC_FIELD_AT(dfc_brd_info, bytes_72, 100);

/** One adapter as the older InitDiagEnv describes it. */
typedef struct dfc_brd_info_short {
  uint8_t caller_0[28]; /**< Not written. */
  uint32_t pci_id;      /**< As in dfc_brd_info. */
  uint32_t word_4;      /**< As in dfc_brd_info. */
  uint32_t word_8;      /**< As in dfc_brd_info. */
  uint8_t caller_40[3]; /**< Not written. */
  uint8_t half_12_low;  /**< Low byte of the driver's 16-bit value. */
  uint32_t word_16;     /**< As in dfc_brd_info. */
  int32_t condition;    /**< As in dfc_brd_info. */
  uint8_t bytes_24[16]; /**< As in dfc_brd_info. */
  uint8_t bytes_40[32]; /**< As in dfc_brd_info. */
} dfc_brd_info_short;
VASKDFC_RECORD_SIZE(dfc_brd_info_short, 100);
VASKDFC_FIELD_AT(dfc_brd_info_short, half_12_low, 43);
VASKDFC_FIELD_AT(dfc_brd_info_short, condition, 48);
VASKDFC_FIELD_AT(dfc_brd_info_short, bytes_40, 68);

/**
 * Opens the log and the management handle, probes driver board numbers 0 to 31 and describes the accepted adapters.
 *
 * Every call counts as one user of the library and wants one DFC_FreeDiagEnv. Every call probes again, so board indices may
 * change. Adapters that do not fit into the array are counted and can be addressed, but are not described.
 *
 * @param boards    receives one record per adapter, at the position of its board index
 * @param capacity  records in the array. It is compared with the driver's board number, not with the board index: an adapter
 *                  with driver board number p is described only if capacity is above p, so 32 describes every adapter
 * @return number of adapters; 0 also when the management handle cannot be opened (the log says why)
 *
 * Driver callback: TREL_MGMT_INITBRDS, once per driver board number.
 */
uint32_t DFC_InitDiagEnv(dfc_brd_info* boards, uint32_t capacity);

/**
 * Older form of DFC_InitDiagEnv: shorter records, no capacity, and board indices above the number of adapters keep the driver
 * board numbers of an earlier initialisation.
 *
 * @param boards  receives one record per adapter; must have room for 32
 * @return number of adapters; 0 also when the management handle cannot be opened (the log says why)
 *
 * Driver callback: TREL_MGMT_INITBRDS, once per driver board number.
 */
uint32_t InitDiagEnv(dfc_brd_info_short* boards);

/**
 * Switches one adapter to a diagnostic state.
 *
 * @param board  board index
 * @param mode   0, 1, 2, 3 or 5; the states belong to the driver. Mode 2 first asks for the present state: an adapter that was
 *               in a failed state at discovery and still reports state 2 is left alone (result 2); any other is asked once a
 *               second, without limit, until it no longer reports state 2
 * @return the adapter's new state as the driver reports it; 0 also for mode 4, for modes above 5 (nothing is sent) and for
 *         every failure
 *
 * Driver callback: TREL_MGMT_SETDIAG.
 */
uint32_t SetBrdEnv(uint32_t board, uint32_t mode);

/**
 * Switches all adapters, in the order of their board indices, and stops after the first that yields 0.
 *
 * @param mode  as in SetBrdEnv
 * @return the result of the last SetBrdEnv; 0 when there is no adapter
 *
 * Driver callback: TREL_MGMT_SETDIAG, through SetBrdEnv.
 */
uint32_t SetDiagEnv(uint32_t mode);

/**
 * Ends one use of the library. The call that matches the first initialisation destroys the management handle. No driver call.
 *
 * @return 0
 */
uint32_t DFC_FreeDiagEnv(void);

/** Older name of DFC_FreeDiagEnv. @return 0 */
uint32_t FreeDiagEnv(void);

/**
 * Writes a time of day as the log does: UTC, "1970-01-01T00:00:00", by the library's own calendar. No driver call.
 *
 * The calendar differs from the usual one on purpose: a time exactly on a month or year boundary stays in the earlier period
 * ("1970-12-32T00:00:00"), and a year's length is decided by the year after it, so that a leap year's dates come out one day
 * behind and its 1 January is month 13 of the year before.
 *
 * @param time    points to a signed 32-bit count of seconds since 1970-01-01T00:00:00 UTC; a struct timeval as filled by
 *                gettimeofday will do
 * @param buffer  receives the text, cut to fit and NUL-terminated
 * @param size    bytes in the buffer; 20 hold every text of a time that is not negative
 * @return length of the whole text, whether it fitted or not
 */
int trel_GetTimeOfDay(const void* time, char* buffer, size_t size);

/**
 * Tells a leap year. No driver call.
 *
 * @param year  Gregorian year
 * @return 1 for a leap year, else 0
 */
uint32_t trel_isLeap(uint32_t year);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
