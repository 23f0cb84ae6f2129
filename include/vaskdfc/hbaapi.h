/*
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
  uint8_t wwn[8];
} HbaWwn;
VASKDFC_RECORD_SIZE(HbaWwn, 8);

/** Adapter attributes. */
typedef struct HbaAdapterAttributes {
  char Manufacturer[64];
  char SerialNumber[64];
  char Model[256];
  char ModelDescription[256];
  HbaWwn NodeWWN;
  char NodeSymbolicName[256];
  char HardwareVersion[256];
  char DriverVersion[256];
  char OptionROMVersion[256];
  char FirmwareVersion[256];
  uint32_t VendorSpecificID;
  uint32_t NumberOfPorts;
  char DriverName[256];
} HbaAdapterAttributes;
VASKDFC_RECORD_SIZE(HbaAdapterAttributes, 2192);
VASKDFC_FIELD_AT(HbaAdapterAttributes, Model, 128);
VASKDFC_FIELD_AT(HbaAdapterAttributes, NodeWWN, 640);
VASKDFC_FIELD_AT(HbaAdapterAttributes, DriverVersion, 1160);
VASKDFC_FIELD_AT(HbaAdapterAttributes, VendorSpecificID, 1928);
VASKDFC_FIELD_AT(HbaAdapterAttributes, DriverName, 1936);

/** Port attributes. */
typedef struct HbaPortAttributes {
  HbaWwn NodeWWN;
  HbaWwn PortWWN;
  uint32_t PortFcId; /**< 24-bit N_Port identifier in the low bits. */
  uint32_t PortType;
  uint32_t PortState;
  uint32_t PortSupportedClassofService;
  uint8_t PortSupportedFc4Types[32];
  uint8_t PortActiveFc4Types[32];
  char PortSymbolicName[256];
  char OSDeviceName[256]; /**< The driver knows 114 bytes; bytes 114 and 115 are unspecified, the rest is the caller's. */
  uint32_t PortSupportedSpeed;
  uint32_t PortSpeed;
  uint32_t PortMaxFrameSize; /**< Bytes. */
  HbaWwn FabricName;
  uint32_t NumberofDiscoveredPorts;
} HbaPortAttributes;
VASKDFC_RECORD_SIZE(HbaPortAttributes, 632);
VASKDFC_FIELD_AT(HbaPortAttributes, PortSymbolicName, 96);
VASKDFC_FIELD_AT(HbaPortAttributes, OSDeviceName, 352);
VASKDFC_FIELD_AT(HbaPortAttributes, PortSupportedSpeed, 608);
VASKDFC_FIELD_AT(HbaPortAttributes, FabricName, 620);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
