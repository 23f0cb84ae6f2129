/**
 * @file
 * Priority of FCP I/O: a table of rules, a flag that switches it on and off, and the logical link speed.
 *
 * The driver evaluates the rules. The library puts the most specific ones first and beyond that does not interpret them: what a
 * key identifies and what a priority means is the driver's.
 */
#ifndef VASKDFC_PRIORITY_H
#define VASKDFC_PRIORITY_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** A rule. A key of eight bytes 0xFF is a wildcard that matches everything. */
typedef struct fcp_prio_entry {
  uint8_t match1[8]; /**< First key. */
  uint8_t match2[8]; /**< Second key. */
  uint8_t match3[8]; /**< Third key. */
  uint8_t match4[8]; /**< Fourth key. */
  uint32_t prio;     /**< Priority of what matches; the driver's. */
} fcp_prio_entry;
VASKDFC_RECORD_SIZE(fcp_prio_entry, 36);
VASKDFC_FIELD_AT(fcp_prio_entry, prio, 32);

/** A table of rules as it travels. A caller's table may be shorter or longer: 4 + 36 * count bytes. */
typedef struct dfc_fcp_prio_list {
  uint32_t count;              /**< Rules, or room for rules. */
  fcp_prio_entry entries[998]; /**< The rules. */
} dfc_fcp_prio_list;
VASKDFC_RECORD_SIZE(dfc_fcp_prio_list, 35932);
VASKDFC_FIELD_AT(dfc_fcp_prio_list, entries, 4);

/** Most rules in a caller's table: more than travel. */
#define DFC_FCP_PRIO_MOST_RULES 1000u

/** What DFC_GetQoSLinkSpeed stores when the driver knows no speed. */
#define DFC_LINK_SPEED_UNKNOWN 0xFFFFu

/**
 * Switches the priority of FCP I/O on or off.
 *
 * @param board  board index
 * @param flag   passed to the driver
 * @return DFC_OK; DFC_FAILED on any failure
 *
 * Driver callback: TREL_MGMT_SET_FCP_PRIORITY_FLAG.
 */
uint32_t DFC_QoSSetGlobalFlag(uint32_t board, uint32_t flag);

/**
 * Tells whether the priority of FCP I/O is on.
 *
 * @param board  board index
 * @param flag   receives the driver's flag; untouched on failure
 * @return DFC_OK; DFC_FAILED on any failure
 *
 * Driver callback: TREL_MGMT_GET_FCP_PRIORITY_FLAG.
 */
uint32_t DFC_QoSGetGlobalFlag(uint32_t board, uint32_t* flag);

/**
 * Reads the rules.
 *
 * @param board  board index
 * @param list   its count: in: room in rules, at most DFC_FCP_PRIO_MOST_RULES; out: the driver's count. Receives as many rules as
 *               there is room for, 998 at most; untouched on failure
 * @return DFC_OK; DFC_TOO_SMALL when the driver has more rules than there is room for; DFC_FAILED on any failure, for more room
 *         (nothing sent) or without memory
 *
 * Driver callback: TREL_MGMT_GET_FCP_PRIORITY.
 */
uint32_t DFC_QoSGetConfig(uint32_t board, dfc_fcp_prio_list* list);

/**
 * Replaces the rules.
 *
 * @param board  board index
 * @param list   the rules, at most DFC_FCP_PRIO_MOST_RULES, of which the first 998 travel. They are ordered in place before they
 *               are sent and stay so whatever the driver answers: rules without a wildcard, then those whose first wildcard is
 *               match4, match3, match2, match1; each of these groups in the reverse of the caller's order
 * @return DFC_OK; DFC_FAILED on any failure, for more rules (nothing sent, nothing ordered) or without memory (likewise)
 *
 * Driver callback: TREL_MGMT_SET_FCP_PRIORITY.
 */
uint32_t DFC_QoSSetConfig(uint32_t board, dfc_fcp_prio_list* list);

/**
 * Reads the logical link speed, in SLI mode 4 and above.
 *
 * @param board  board index
 * @param speed  receives a tenth of the driver's 16-bit value, without remainder, or DFC_LINK_SPEED_UNKNOWN; untouched on failure
 * @return DFC_OK; DFC_FAILED when the SLI mode cannot be read, and on any other failure; DFC_UNSUPPORTED for SLI mode 3 or below
 *         (nothing sent)
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_GET_LOGICAL_LINK_SPEED.
 */
uint32_t DFC_GetQoSLinkSpeed(uint32_t board, uint16_t* speed);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
