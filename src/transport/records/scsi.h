// Driver-side records of SCSI and FCP pass-through.
#pragma once

#include <cstdint>

#include "vaskdfc/scsi.h"

namespace vaskdfc {

struct ScsiPassThruRequest {
  HbaWwn target;
  FcpCmndBlock command;
  std::uint8_t sense[128];
  std::uint32_t sense_bytes;
};
VASKDFC_RECORD_SIZE(ScsiPassThruRequest, 172);
VASKDFC_FIELD_AT(ScsiPassThruRequest, sense, 40);
VASKDFC_FIELD_AT(ScsiPassThruRequest, sense_bytes, 168);

// The response begins at offset 40 and runs over its own length.
struct FcpPassThruRequest {
  HbaWwn target;
  FcpCmndBlock command;
  std::uint8_t response[16];
  std::uint32_t response_bytes;
  std::uint8_t response_60[140];
};
VASKDFC_RECORD_SIZE(FcpPassThruRequest, 200);
VASKDFC_FIELD_AT(FcpPassThruRequest, response, 40);
VASKDFC_FIELD_AT(FcpPassThruRequest, response_bytes, 56);

// The data of one command, in either direction.
struct TransferData {
  std::uint8_t bytes[262144];
};
VASKDFC_RECORD_SIZE(TransferData, 262144);

}  // namespace vaskdfc
