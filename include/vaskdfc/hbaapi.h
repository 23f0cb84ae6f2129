/**
 * @file
 * Adapter and port attributes in the layout of FC-HBA, the common HBA management API.
 *
 * Values are the driver's: port types, port states, speeds, classes of service and FC-4 maps are encoded as FC-HBA encodes
 * them, and the library passes them through. Texts are whole arrays; the library never terminates them.
 */
#ifndef VASKDFC_HBAAPI_H
#define VASKDFC_HBAAPI_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** World-wide name: eight bytes, never reordered. */
typedef struct HbaWwn {
  uint8_t wwn[8]; /**< In the order in which a WWN is written. */
} HbaWwn;
VASKDFC_RECORD_SIZE(HbaWwn, 8);

/** Adapter attributes. */
typedef struct HbaAdapterAttributes {
  char Manufacturer[64];      /**< Who made the adapter. */
  char SerialNumber[64];      /**< The adapter's serial number. */
  char Model[256];            /**< Model name. */
  char ModelDescription[256]; /**< What the model is, in words. */
  HbaWwn NodeWWN;             /**< The adapter's node WWN. */
  char NodeSymbolicName[256]; /**< Symbolic node name, as the name server knows it. */
  char HardwareVersion[256];  /**< Version of the hardware. */
  char DriverVersion[256];    /**< Version of the driver. */
  char OptionROMVersion[256]; /**< Version of the option ROM. */
  char FirmwareVersion[256];  /**< Version of the firmware. */
  uint32_t VendorSpecificID;  /**< Identifies the model to its maker. */
  uint32_t NumberOfPorts;     /**< Ports of the adapter. */
  char DriverName[256];       /**< Name of the driver. */
} HbaAdapterAttributes;
VASKDFC_RECORD_SIZE(HbaAdapterAttributes, 2192);
VASKDFC_FIELD_AT(HbaAdapterAttributes, Model, 128);
VASKDFC_FIELD_AT(HbaAdapterAttributes, NodeWWN, 640);
VASKDFC_FIELD_AT(HbaAdapterAttributes, DriverVersion, 1160);
VASKDFC_FIELD_AT(HbaAdapterAttributes, VendorSpecificID, 1928);
VASKDFC_FIELD_AT(HbaAdapterAttributes, DriverName, 1936);

/** Port attributes. */
typedef struct HbaPortAttributes {
  HbaWwn NodeWWN;                       /**< Node WWN. */
  HbaWwn PortWWN;                       /**< Port WWN. */
  uint32_t PortFcId;                    /**< 24-bit N_Port identifier in the low bits. */
  uint32_t PortType;                    /**< Kind of port. */
  uint32_t PortState;                   /**< What the port does now. */
  uint32_t PortSupportedClassofService; /**< A bit for each class of service. */
  uint8_t PortSupportedFc4Types[32];    /**< A bit for each FC-4 type that the port can serve. */
  uint8_t PortActiveFc4Types[32];       /**< A bit for each FC-4 type that it serves now. */
  char PortSymbolicName[256];           /**< Symbolic port name, as the name server knows it. */
  char OSDeviceName[256];           /**< The driver knows 114 bytes; bytes 114 and 115 are unspecified, the rest is the caller's. */
  uint32_t PortSupportedSpeed;      /**< A bit for each speed. */
  uint32_t PortSpeed;               /**< The speed of the link now. */
  uint32_t PortMaxFrameSize;        /**< Bytes. */
  HbaWwn FabricName;                /**< WWN of the fabric. */
  uint32_t NumberofDiscoveredPorts; /**< Ports that this one has discovered. */
} HbaPortAttributes;
VASKDFC_RECORD_SIZE(HbaPortAttributes, 632);
VASKDFC_FIELD_AT(HbaPortAttributes, PortSymbolicName, 96);
VASKDFC_FIELD_AT(HbaPortAttributes, OSDeviceName, 352);
VASKDFC_FIELD_AT(HbaPortAttributes, PortSupportedSpeed, 608);
VASKDFC_FIELD_AT(HbaPortAttributes, FabricName, 620);

/**
 * Reads the attributes of an adapter.
 *
 * @param board       board index
 * @param attributes  receives the driver's reply, also when the call failed and the reply holds nothing useful
 * @return HBA_STATUS_OK in every case; only the log tells a failure
 *
 * Driver callback: TREL_MGMT_HBA_ADAPTERATTRIBUTES.
 */
uint32_t GetAdapterAttributes(uint32_t board, HbaAdapterAttributes* attributes);

/**
 * Reads the attributes of an adapter's own port.
 *
 * @param board       board index
 * @param port        not used
 * @param attributes  receives the attributes; untouched on failure. Clear it before the call for a terminated OSDeviceName
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR on any failure
 *
 * Driver callback: TREL_MGMT_HBA_PORTATTRIBUTES.
 */
uint32_t GetAdapterPortAttributes(uint32_t board, uint32_t port, HbaPortAttributes* attributes);

/**
 * Reads the attributes of a port by its position in the driver's port list.
 *
 * @param board       board index
 * @param port        not used
 * @param index       position in the port list
 * @param attributes  receives the attributes; untouched unless the result is HBA_STATUS_OK
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR_ILLEGAL_INDEX when the driver's status is 0x0BAD005D;
 *         HBA_STATUS_ERROR_STALE_DATA when the ports have changed since the last RefreshInformation; HBA_STATUS_ERROR on any
 *         other failure
 *
 * Driver callback: TREL_MGMT_HBA_INDEXPORTATTRIBUTES.
 */
uint32_t GetPortAttributesByIndex(uint32_t board, uint32_t port, uint32_t index, HbaPortAttributes* attributes);

/**
 * Reads the attributes of a discovered port.
 *
 * @param board       board index
 * @param port        not used
 * @param index       discovered-port index, from 0
 * @param attributes  receives the attributes; untouched unless the result is HBA_STATUS_OK
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR_ILLEGAL_INDEX when the driver's status is 0x0BAD0003;
 *         HBA_STATUS_ERROR_STALE_DATA when the ports have changed since the last RefreshInformation; HBA_STATUS_ERROR on any
 *         other failure
 *
 * Driver callback: TREL_MGMT_HBA_DISCPORTATTRIBUTES.
 */
uint32_t GetDiscoveredPortAttributes(uint32_t board, uint32_t port, uint32_t index, HbaPortAttributes* attributes);

/**
 * Reads the attributes of a port by its port WWN.
 *
 * @param board       board index
 * @param wwn         port WWN
 * @param attributes  receives the attributes; untouched on failure
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR_ILLEGAL_WWN when the driver's status is 0x0BAD0003; HBA_STATUS_ERROR on any other
 *         failure
 *
 * Driver callback: TREL_MGMT_HBA_WWPNPORTATTRIBUTES.
 */
uint32_t GetPortAttributesByWWN(uint32_t board, const HbaWwn* wwn, HbaPortAttributes* attributes);

/**
 * Renews the driver's view of the discovered ports, to which queries by index and of discovered ports then refer.
 *
 * @param board  board index
 * @return HBA_STATUS_OK; HBA_STATUS_ERROR on any failure
 *
 * Driver callback: TREL_MGMT_HBA_REFRESHINFO.
 */
uint32_t RefreshInformation(uint32_t board);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
