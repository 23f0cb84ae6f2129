/**
 * @file
 * Target mapping and bindings in the layouts of FC-HBA: which remote logical units the driver has mapped to SCSI addresses of the
 * operating system.
 *
 * Lists: the count is the caller's room in entries before the call, and what the driver has afterwards, which may be more.
 */
#ifndef VASKDFC_MAPPING_H
#define VASKDFC_MAPPING_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** SCSI address of the operating system. */
typedef struct HbaScsiId {
  char OSDeviceName[256];    /**< The host's name of the unit. */
  uint32_t ScsiBusNumber;    /**< Bus. */
  uint32_t ScsiTargetNumber; /**< Target. */
  uint32_t ScsiOSLun;        /**< Logical unit. */
} HbaScsiId;
VASKDFC_RECORD_SIZE(HbaScsiId, 268);

/** Fibre Channel address of a logical unit. */
typedef struct HbaFcpId {
  uint32_t FcId;     /**< 24-bit N_Port identifier in the low bits. */
  HbaWwn NodeWWN;    /**< Node WWN of the remote port. */
  HbaWwn PortWWN;    /**< Port WWN of the remote port. */
  uint8_t FcpLun[8]; /**< In FCP LUN byte order. */
} HbaFcpId;
VASKDFC_RECORD_SIZE(HbaFcpId, 28);
VASKDFC_FIELD_AT(HbaFcpId, FcpLun, 20);

/** A mapped logical unit, first form. */
typedef struct HbaFcpScsiEntry {
  HbaScsiId ScsiId; /**< Where the operating system has the unit. */
  HbaFcpId FcpId;   /**< Where the fabric has it. */
} HbaFcpScsiEntry;
VASKDFC_RECORD_SIZE(HbaFcpScsiEntry, 296);
VASKDFC_FIELD_AT(HbaFcpScsiEntry, FcpId, 268);

/** A mapped logical unit, second form. */
typedef struct HbaFcpScsiEntryV2 {
  HbaScsiId ScsiId;  /**< Where the operating system has the unit. */
  HbaFcpId FcpId;    /**< Where the fabric has it. */
  uint8_t LUID[256]; /**< One SCSI device identification descriptor: a header of 4 bytes, then the identifier. */
} HbaFcpScsiEntryV2;
VASKDFC_RECORD_SIZE(HbaFcpScsiEntryV2, 552);
VASKDFC_FIELD_AT(HbaFcpScsiEntryV2, LUID, 296);

/** Target mapping, first form, in a buffer of 4 + 296 * NumberOfEntries bytes. */
typedef struct HbaFcpTargetMapping {
  uint32_t NumberOfEntries; /**< In: room, in entries. Out: the count, which may be more. */
  HbaFcpScsiEntry entry[1]; /**< As many as there is room for. */
} HbaFcpTargetMapping;
VASKDFC_RECORD_SIZE(HbaFcpTargetMapping, 300);

/** Target mapping, second form, in a buffer of 4 + 552 * NumberOfEntries bytes. */
typedef struct HbaFcpTargetMappingV2 {
  uint32_t NumberOfEntries;   /**< In: room, in entries. Out: the count, which may be more. */
  HbaFcpScsiEntryV2 entry[1]; /**< As many as there is room for. */
} HbaFcpTargetMappingV2;
VASKDFC_RECORD_SIZE(HbaFcpTargetMappingV2, 556);

/** A persistent binding; its layout is the driver's. */
typedef struct FcpBinding {
  uint32_t words[8]; /**< The driver's. */
} FcpBinding;
VASKDFC_RECORD_SIZE(FcpBinding, 32);

/** Persistent bindings, in a buffer of 4 + 32 * count bytes. */
typedef struct FcpBindList {
  uint32_t count;        /**< In: room, in entries. Out: as the driver filled it. */
  FcpBinding entries[1]; /**< As many as there is room for. */
} FcpBindList;
VASKDFC_RECORD_SIZE(FcpBindList, 36);

/**
 * Reads the target mapping.
 *
 * @param board    board index
 * @param mapping  receives the entries, at most 1024, and the driver's count, also when the call failed
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR_MORE_DATA when the driver's count is above the room (no entry copied), also after a
 * failure, or when the driver's status is 0x0BAD005D; HBA_STATUS_ERROR on any other failure, or without memory (nothing sent, the
 * count untouched)
 *
 * Driver callback: TREL_MGMT_HBA_FCPTARGETMAPPING.
 */
uint32_t GetFcpTargetMapping(uint32_t board, HbaFcpTargetMapping* mapping);

/**
 * Reads the target mapping and asks every unit for its identifier, one after another.
 *
 * @param board    board index
 * @param wwn      the adapter's port WWN
 * @param mapping  receives the entries, at most 1024, and the count. A unit that does not tell a usable identifier (of the unit
 * itself, of a type below 4, first in its page), or cannot be asked for lack of memory, leaves the caller's bytes in LUID
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR_ILLEGAL_WWN when the adapter's port has another WWN; HBA_STATUS_ERROR_MORE_DATA when the
 * units do not fit, with the count; HBA_STATUS_ERROR on any other failure
 *
 * Driver callbacks: TREL_MGMT_HBA_PORTATTRIBUTES, TREL_MGMT_HBA_FCPTARGETMAPPING, TREL_MGMT_HBA_SEND_SCSI for every unit.
 */
uint32_t DFC_GetFcpTargetMappingV2(uint32_t board, const HbaWwn* wwn, HbaFcpTargetMappingV2* mapping);

/**
 * Reads the persistent bindings.
 *
 * @param board  board index
 * @param list   receives the entries, and the count as the driver filled it. On a driver failure the count is the driver's first
 *               argument word
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR on any failure; DFC_NO_MEMORY
 *
 * Driver callback: TREL_MGMT_LIST_BIND.
 */
uint32_t GetFcpBindList(uint32_t board, FcpBindList* list);

/**
 * Reports an empty list of persistent bindings. No driver call.
 *
 * @param board    not used
 * @param binding  its first word becomes 0
 * @return HBA_STATUS_OK
 */
uint32_t GetFcpPersistentBinding(uint32_t board, void* binding);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
