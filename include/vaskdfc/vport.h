/**
 * @file
 * Virtual ports (N_Port ID virtualisation, NPIV): readiness, resources, attributes, lists, and the nodes that a virtual port sees.
 *
 * The records are the driver's. Lists: the count is the caller's room in entries before the call, and the driver's count
 * afterwards; the driver is expected to honour the room.
 */
#ifndef VASKDFC_VPORT_H
#define VASKDFC_VPORT_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Virtual-port resources; the layout is the driver's. */
typedef struct dfc_vport_resource {
  uint8_t bytes[16]; /**< The driver's. */
} dfc_vport_resource;
VASKDFC_RECORD_SIZE(dfc_vport_resource, 16);

/** Attributes of a virtual port; the layout is the driver's. */
typedef struct dfc_vport_attributes {
  uint8_t bytes[340]; /**< The driver's. */
} dfc_vport_attributes;
VASKDFC_RECORD_SIZE(dfc_vport_attributes, 340);

/** A virtual port in a list; the layout is the driver's. */
typedef struct dfc_vport_entry {
  uint8_t bytes[20]; /**< The driver's. */
} dfc_vport_entry;
VASKDFC_RECORD_SIZE(dfc_vport_entry, 20);

/** Virtual ports, in a buffer of 4 + 20 * numEntries bytes. */
typedef struct dfc_vport_list {
  uint32_t numEntries;        /**< In: room, in entries. Out: the driver's count. */
  dfc_vport_entry entries[1]; /**< As many as there is room for; at most 4096 are received. */
} dfc_vport_list;
VASKDFC_RECORD_SIZE(dfc_vport_list, 24);

/** A node; the layout is the driver's. */
typedef struct dfc_node_entry {
  uint8_t bytes[304];    /**< The driver's. */
  uint8_t caller_304[4]; /**< Not written. */
} dfc_node_entry;
VASKDFC_RECORD_SIZE(dfc_node_entry, 308);

/** Nodes, in a buffer of 4 + 308 * numEntries bytes. */
typedef struct dfc_node_list {
  uint32_t numEntries;       /**< In: room, in entries. Out: the driver's count. */
  dfc_node_entry entries[1]; /**< As many as there is room for; at most 512 are received. */
} dfc_node_list;
VASKDFC_RECORD_SIZE(dfc_node_list, 312);

/** Result of DFC_VPGetAttrib for a WWN that is no virtual port. */
#define DFC_NO_SUCH_VPORT 5u

/**
 * Tells whether an adapter's port can carry virtual ports.
 *
 * @param board  board index
 * @param ready  receives the driver's readiness word; untouched on failure
 * @return DFC_OK; DFC_FAILED on any failure
 *
 * Driver callback: TREL_MGMT_NPIV_READY.
 */
uint32_t DFC_NPIVReadyTest(uint32_t board, uint32_t* ready);

/**
 * Reads the virtual-port resources of an adapter's port.
 *
 * @param board     board index
 * @param resource  filled by the driver
 * @return DFC_OK; DFC_FAILED on any failure
 *
 * Driver callback: TREL_MGMT_VPORT_GET_RESRC.
 */
uint32_t DFC_VPGetResource(uint32_t board, dfc_vport_resource* resource);

/**
 * Reads the attributes of a virtual port.
 *
 * @param board       board index
 * @param wwn         port WWN of the virtual port
 * @param attributes  filled by the driver
 * @return DFC_OK; DFC_NO_SUCH_VPORT when the call fails and the driver leaves its third argument word 0; DFC_FAILED on any other
 * failure
 *
 * Driver callback: TREL_MGMT_VPORT_GET_ATTRIB.
 */
uint32_t DFC_VPGetAttrib(uint32_t board, const HbaWwn* wwn, dfc_vport_attributes* attributes);

/**
 * Lists the virtual ports of an adapter's port.
 *
 * @param board  board index
 * @param list   receives the virtual ports and their count; untouched on failure
 * @return DFC_OK; DFC_TOO_SMALL for driver status 0xbad00b4; DFC_FAILED on any other failure; DFC_NO_MEMORY
 *
 * Driver callback: TREL_MGMT_VPORT_GET_LIST.
 */
uint32_t DFC_VPGetList(uint32_t board, dfc_vport_list* list);

/**
 * Lists the nodes that a virtual port, or the adapter's own port, sees.
 *
 * @param board  board index
 * @param wwn    port WWN
 * @param list   receives the count whatever the outcome, and on success the nodes, 304 bytes of each
 * @return DFC_OK; DFC_TOO_SMALL for driver status 0xbad00b4 when the room is below the count; DFC_UNSUPPORTED for driver status
 *         0xbad0020; DFC_FAILED on any other failure; DFC_NO_MEMORY
 *
 * Driver callback: TREL_MGMT_VPORT_GET_NODE_INFO.
 */
uint32_t DFC_GetAllNodeInfoByWWN(uint32_t board, const HbaWwn* wwn, dfc_node_list* list);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
