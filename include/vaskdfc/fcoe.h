/**
 * @file
 * FCoE: the Fibre Channel Forwarders (FCFs) that a port has discovered, and two settings kept in configuration region 23: the FCoE
 * parameters and the list of FCFs that the port may log in to.
 *
 * For adapters of SLI mode 4 and above. The operations that write return the reply word of the adapter, which is 0 unless the
 * adapter set it: a write that the driver refused returns 0 as well. Read again to be sure. Two callers that change settings of
 * one adapter at once lose one of the changes.
 */
#ifndef VASKDFC_FCOE_H
#define VASKDFC_FCOE_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** One FCF. Fields named after their offset are the driver's. */
typedef struct fcf_entry {
  HbaWwn name_0;           /**< First name. */
  HbaWwn name_8;           /**< Second name. */
  uint8_t macAddress[6];   /**< The FCF's MAC address. */
  uint16_t flag_22;        /**< 1 or 0. */
  uint8_t vlanBitmap[512]; /**< Bit n % 8 of byte n / 8 belongs to VLAN id n, 0 to 4095. */
  uint8_t fcMap[3];        /**< FC-MAP, most significant byte first. */
  uint8_t zero_539;        /**< 0 */
  uint32_t word_540;       /**< The driver's. */
  uint32_t zero_544;       /**< 0 */
  uint32_t word_548;       /**< The driver's. */
} fcf_entry;
VASKDFC_RECORD_SIZE(fcf_entry, 552);
VASKDFC_FIELD_AT(fcf_entry, vlanBitmap, 24);
VASKDFC_FIELD_AT(fcf_entry, word_548, 548);

/** A list of FCFs, in a buffer of 8 + 552 * numEntries bytes. */
typedef struct dfc_fcf_list {
  uint8_t caller_0[4];  /**< Not written. */
  uint16_t numEntries;  /**< In: room, in entries. Out: FCFs that the driver reported, which may be more. */
  uint16_t listStatus;  /**< Out: the driver's. */
  fcf_entry entries[1]; /**< As many as there is room for. */
} dfc_fcf_list;
VASKDFC_RECORD_SIZE(dfc_fcf_list, 560);
VASKDFC_FIELD_AT(dfc_fcf_list, entries, 8);

/** FCoE parameters. */
typedef struct dfc_fcoe_params {
  uint8_t version;     /**< Set to 1 when read; not looked at when written. */
  uint8_t caller_1[3]; /**< Not written. */
  uint8_t fcMap[3];    /**< FC-MAP, most significant byte first. */
  uint8_t vlanValid;   /**< 1: the VLAN id is valid. When written, any other value means that it is not. */
  uint16_t vlanId;     /**< VLAN id, 12 bits. */
} dfc_fcoe_params;
VASKDFC_RECORD_SIZE(dfc_fcoe_params, 10);
VASKDFC_FIELD_AT(dfc_fcoe_params, fcMap, 4);
VASKDFC_FIELD_AT(dfc_fcoe_params, vlanId, 8);

/** Entries of an FCF connect list. */
#define DFC_FCF_CONNECT_ENTRIES 16u

/** One FCF that the port may log in to. */
typedef struct dfc_fcf_connect_entry {
  uint16_t flags;       /**< Bit 0: the entry is valid, always stored as 1. Bits 1 to 5 are kept, others are not. */
  uint16_t vlan_id;     /**< The VLAN id to use. */
  uint8_t names[16];    /**< The names of the FCF. */
  uint8_t caller_20[2]; /**< Not used. */
} dfc_fcf_connect_entry;
VASKDFC_RECORD_SIZE(dfc_fcf_connect_entry, 22);
VASKDFC_FIELD_AT(dfc_fcf_connect_entry, names, 4);

/** The FCF connect list. */
typedef struct dfc_fcf_conn_list {
  uint8_t caller_0[2]; /**< Not written. */
  uint8_t numEntries;  /**< Set: entries supplied. Get: in the room, out the valid entries, which may be more. */
  uint8_t maxEntries;  /**< Written as DFC_FCF_CONNECT_ENTRIES. */
  dfc_fcf_connect_entry entries[DFC_FCF_CONNECT_ENTRIES]; /**< A list with less room may be shorter. */
} dfc_fcf_conn_list;
VASKDFC_RECORD_SIZE(dfc_fcf_conn_list, 356);
VASKDFC_FIELD_AT(dfc_fcf_conn_list, entries, 4);

/**
 * Lists the FCFs that the port has discovered.
 *
 * @param board  board index
 * @param list   list->numEntries tells the room; entries, numEntries and listStatus are received
 * @return DFC_OK; DFC_TOO_SMALL when FCFs did not fit; DFC_FAILED when the SLI mode cannot be read; DFC_UNSUPPORTED for SLI mode 3
 *         or below. A failure of the driver ends the list silently
 *
 * Driver callbacks: those of DFC_GetDrvInfo, then TREL_MGMT_HBA_GET_FCF_LIST for every FCF.
 */
uint32_t DFC_FCoEGetFCFList(uint32_t board, dfc_fcf_list* list);

/**
 * Reads the FCoE parameters.
 *
 * @param board   board index
 * @param params  receives the parameters; untouched unless the result is DFC_OK
 * @return DFC_OK; DFC_FAILED when the SLI mode or the region cannot be read or the record is not there; DFC_UNSUPPORTED for SLI
 * mode 3 or below; DFC_TOO_SMALL when the record has another version; DFC_NO_MEMORY
 *
 * Driver callbacks: those of DFC_GetDrvInfo and GetRegion23.
 */
uint32_t DFC_FCoEGetParams(uint32_t board, dfc_fcoe_params* params);

/**
 * Writes the FCoE parameters.
 *
 * @param board   board index
 * @param params  FC-MAP, and the VLAN id if vlanValid is 1
 * @return the adapter's reply word; DFC_FAILED when the SLI mode or the region cannot be read; DFC_UNSUPPORTED for SLI mode 3 or
 *         below; DFC_RECORD_NOT_FOUND; DFC_NO_MEMORY
 *
 * Driver callbacks: those of DFC_GetDrvInfo, GetRegion23 and DFC_IssueUpdateCfgMBox.
 */
uint32_t DFC_FCoESetParams(uint32_t board, const dfc_fcoe_params* params);

/**
 * Reads the FCF connect list.
 *
 * @param board  board index
 * @param list   list->numEntries tells the room; entries, numEntries and maxEntries are received
 * @return DFC_OK; DFC_TOO_SMALL when entries did not fit (those that did are there) or the record has another layout; DFC_FAILED
 * when the SLI mode or the region cannot be read or the record is not there; DFC_UNSUPPORTED for SLI mode 3 or below; DFC_NO_MEMORY
 *
 * Driver callbacks: those of DFC_GetDrvInfo and GetRegion23.
 */
uint32_t DFC_FCoEGetFCFConnectList(uint32_t board, dfc_fcf_conn_list* list);

/**
 * Writes the FCF connect list, all of it.
 *
 * @param board  board index
 * @param list   list->numEntries entries; maxEntries is received
 * @return the adapter's reply word; DFC_TOO_SMALL for more than DFC_FCF_CONNECT_ENTRIES entries or a record of another layout;
 * DFC_FAILED when the SLI mode or the region cannot be read; DFC_UNSUPPORTED for SLI mode 3 or below; DFC_RECORD_NOT_FOUND;
 *         DFC_NO_MEMORY
 *
 * Driver callbacks: those of DFC_GetDrvInfo, GetRegion23 and DFC_IssueUpdateCfgMBox.
 */
uint32_t DFC_FCoESetFCFConnectList(uint32_t board, dfc_fcf_conn_list* list);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
