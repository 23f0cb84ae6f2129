// Driver-side records of adapter and port attributes.
#pragma once

#include <cstdint>

#include "transport/records/le.h"
#include "vaskdfc/hbaapi.h"

namespace vaskdfc {

// Who a port is: the start of the driver's reply and, byte for byte, of the caller's HbaPortAttributes.
struct PortIdentity {
  HbaWwn node_wwn;
  HbaWwn port_wwn;
  Le32 fc_id;
  Le32 type;
  Le32 state;
  Le32 classes_of_service;
  std::uint8_t supported_fc4_types[32];
  std::uint8_t active_fc4_types[32];
};
VASKDFC_RECORD_SIZE(PortIdentity, 96);
VASKDFC_FIELD_AT(PortIdentity, fc_id, 16);

// Reply of the four port queries: packed, and shorter than the caller's record in the OS device name.
struct PortAttributesReply {
  PortIdentity identity;
  char symbolic_name[256];
  char os_device_name[114];
  Le32 supported_speeds;
  Le32 speed;
  Le32 max_frame_size;
  HbaWwn fabric_name;
  Le32 discovered_ports;
};
VASKDFC_RECORD_SIZE(PortAttributesReply, 490);
VASKDFC_FIELD_AT(PortAttributesReply, os_device_name, 352);
VASKDFC_FIELD_AT(PortAttributesReply, supported_speeds, 466);
VASKDFC_FIELD_AT(PortAttributesReply, discovered_ports, 486);

// Names a port to the driver by its WWN.
struct WwnKey {
  std::uint8_t zero_0[8];
  HbaWwn wwn;
  std::uint8_t zero_16[12];
};
VASKDFC_RECORD_SIZE(WwnKey, 28);
VASKDFC_FIELD_AT(WwnKey, wwn, 8);

}  // namespace vaskdfc
