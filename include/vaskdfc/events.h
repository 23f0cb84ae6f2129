/**
 * @file
 * Events, and Request Node Identification Data (RNID), in the style of FC-HBA.
 */
#ifndef VASKDFC_EVENTS_H
#define VASKDFC_EVENTS_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** An event as the driver queues it: the event information of FC-HBA. */
typedef struct HbaEvent {
  uint8_t bytes[20]; /**< The driver's: a code, then what the code calls for. */
} HbaEvent;
VASKDFC_RECORD_SIZE(HbaEvent, 20);

/** Events that the driver lost, as of the last successful GetEventBuffer of any adapter. */
extern uint32_t EventMissedCount;

/** What an adapter tells when others ask it for RNID. */
typedef struct HbaMgmtInfo {
  HbaWwn wwn;                      /**< WWN of the node. */
  uint32_t unittype;               /**< Kind of unit. */
  uint32_t PortId;                 /**< Number of the port. */
  uint32_t NumberOfAttachedNodes;  /**< Nodes attached to the unit. */
  uint16_t IPVersion;              /**< IP version of the management address. */
  uint16_t UDPPort;                /**< UDP port of the management address. */
  uint8_t IPAddress[16];           /**< The management address. */
  uint8_t reserved[2];             /**< Neither sent nor received. */
  uint16_t TopologyDiscoveryFlags; /**< Flags for topology discovery. */
} HbaMgmtInfo;
VASKDFC_RECORD_SIZE(HbaMgmtInfo, 44);
VASKDFC_FIELD_AT(HbaMgmtInfo, IPAddress, 24);
VASKDFC_FIELD_AT(HbaMgmtInfo, TopologyDiscoveryFlags, 42);

/** @name What a WWN names in SendRNID
 *  @{ */
#define HBA_RNID_NODE_WWN 0u /**< a node */
#define HBA_RNID_PORT_WWN 1u /**< a port */
/** @} */

/**
 * Takes the events that the driver has queued.
 *
 * @param board   board index
 * @param events  receives the events
 * @param count   in: room in events; out: events received. Untouched on failure
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR on any failure; DFC_NO_MEMORY
 *
 * Driver callback: TREL_MGMT_HBA_GETEVENT.
 */
uint32_t GetEventBuffer(uint32_t board, HbaEvent* events, uint32_t* count);

/**
 * Asks a remote node or port for its identification.
 *
 * @param board       board index
 * @param wwn         WWN of the node or port
 * @param type        HBA_RNID_NODE_WWN or HBA_RNID_PORT_WWN; with any other type no WWN is sent
 * @param reply       receives the payload of the accept, at most 64 bytes
 * @param reply_size  in: room in bytes; out: length of the reply, also where it does not fit
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR_MORE_DATA when the reply does not fit (nothing copied); HBA_STATUS_ERROR on any failure
 *
 * Driver callback: TREL_MGMT_HBA_RNID.
 */
uint32_t SendRNID(uint32_t board, const HbaWwn* wwn, uint32_t type, void* reply, uint32_t* reply_size);

/**
 * Reads what the adapter tells when others ask it for RNID.
 *
 * @param board  board index
 * @param info   receives the information but for the reserved bytes; untouched on failure
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR on any failure
 *
 * Driver callback: TREL_MGMT_HBA_GETMGMTINFO.
 */
uint32_t GetRNIDMgmtInfo(uint32_t board, HbaMgmtInfo* info);

/**
 * Sets what the adapter tells when others ask it for RNID.
 *
 * @param board  board index
 * @param info   the information; the reserved bytes are sent as 0
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR on any failure
 *
 * Driver callback: TREL_MGMT_HBA_SETMGMTINFO.
 */
uint32_t SetRNIDMgmtInfo(uint32_t board, const HbaMgmtInfo* info);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
