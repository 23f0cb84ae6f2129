/**
 * @file
 * OAS: rules for single logical units. A rule names a LUN behind a remote port as seen from a local port, physical or virtual.
 */
#ifndef VASKDFC_OAS_H
#define VASKDFC_OAS_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** A rule. Fields named after an offset carry what the driver's record holds at that offset; their meaning is the driver's. */
typedef struct oas_lun_entry {
  uint8_t lun[8];       /**< The LUN in the 8-byte form of SCSI, its number in byte 1. */
  uint32_t word_16;     /**< The driver's. */
  uint32_t word_20;     /**< The driver's. */
  uint8_t flag_bit_1;   /**< 1 or 0. */
  uint8_t flag_bit_0;   /**< 1 or 0. */
  uint8_t caller_18[2]; /**< Not written. */
  uint8_t bytes_0[16];  /**< The driver's. */
} oas_lun_entry;
VASKDFC_RECORD_SIZE(oas_lun_entry, 36);
VASKDFC_FIELD_AT(oas_lun_entry, flag_bit_1, 16);
VASKDFC_FIELD_AT(oas_lun_entry, bytes_0, 20);

/** Rules, in a buffer of 4 + 36 * numEntries bytes. */
typedef struct dfc_oas_lun_list {
  uint32_t numEntries;      /**< In: room, in rules. Out: the driver's count, which may be more. */
  oas_lun_entry entries[1]; /**< As many as there is room for; at most 256 are received. */
} dfc_oas_lun_list;
VASKDFC_RECORD_SIZE(dfc_oas_lun_list, 40);

/** @name Results of OAS operations beside those of vaskdfc/result.h
 *  @{ */
#define DFC_OAS_BAD0010 5u         /**< DFC_GetOASLunList: driver status 0xbad0010 */
#define DFC_OAS_BAD000F 15u        /**< DFC_GetOASLunList: driver status 0xbad000f */
#define DFC_OAS_BAD0006 16u        /**< DFC_SetOASLun: driver status 0xbad0006, or no memory for the rule */
#define DFC_OAS_NO_NODES 17u       /**< DFC_SetOASLun: the nodes of the local port cannot be read */
#define DFC_OAS_NO_REMOTE_PORT 18u /**< DFC_SetOASLun: the remote port is not among them */
#define DFC_OAS_BAD0020 32u        /**< driver status 0xbad0020; DFC_SetOASLun: also any driver status of the version query */
#define DFC_OAS_BAD0030 33u        /**< driver status 0xbad0030 */
#define DFC_OAS_BAD002B 34u        /**< DFC_SetOASLun: driver status 0xbad002b or 0xbad002c */
/** @} */

/**
 * Sets or removes a rule, then makes sure that the local port knows the remote port. The two are separate driver calls: the rule
 * stands also where the result is DFC_OAS_NO_NODES or DFC_OAS_NO_REMOTE_PORT.
 *
 * @param board        board index
 * @param local_port   port WWN
 * @param remote_port  port WWN
 * @param lun_low      low word of the 64-bit LUN
 * @param lun_high     high word of the 64-bit LUN
 * @param unused       not read
 * @param enable       1 sets the rule, 0 removes it
 * @return DFC_OK; DFC_FAILED for another value of enable (no rule sent), a failure of the platform or a driver status that is not
 *         listed; DFC_OAS_BAD0006 to DFC_OAS_BAD002B. Driver status 0xbad0100 is no failure
 *
 * Driver callbacks: TREL_MGMT_OAS_VER, TREL_MGMT_OAS_SET_RULE, then that of DFC_GetAllNodeInfoByWWN.
 */
uint32_t DFC_SetOASLun(uint32_t board, const HbaWwn* local_port, const HbaWwn* remote_port, uint32_t lun_low, uint32_t lun_high,
                       uint32_t unused, uint8_t enable);

/**
 * Lists the rules for a pair of ports.
 *
 * @param board        board index
 * @param local_port   port WWN
 * @param remote_port  port WWN
 * @param unused       not read
 * @param list         its numEntries: in: room in rules; out: the driver's count. Receives as many rules as there is room for;
 *                     untouched on failure
 * @return DFC_OK; DFC_TOO_SMALL when the driver has more rules than there is room for, for a null list (nothing sent) and for
 *         platform status 7; DFC_OAS_BAD0010, DFC_OAS_BAD000F, DFC_OAS_BAD0020, DFC_OAS_BAD0030; DFC_FAILED on any other failure
 *         or without memory
 *
 * Driver callback: TREL_MGMT_OAS_GET.
 */
uint32_t DFC_GetOASLunList(uint32_t board, const HbaWwn* local_port, const HbaWwn* remote_port, uint32_t unused,
                           dfc_oas_lun_list* list);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
