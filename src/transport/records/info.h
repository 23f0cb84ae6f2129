// Driver-side records of driver information.
#pragma once

#include <cstdint>

#include "vaskdfc/record.h"

namespace vaskdfc {

// Reply of the driver information query. Fields named after their offset are only passed through or not read at all.
struct DriverInfoReply {
  std::uint8_t bytes_0[16];
  std::uint8_t unread_16[48];
  std::uint8_t bytes_64[8];
  std::uint8_t unread_72[24];
  std::uint32_t sli_mode;
  std::uint32_t unread_100;
  std::uint32_t feature_flags;
  std::uint32_t word_108;
  std::uint32_t adapter_type;
  std::uint32_t unread_116;
};
VASKDFC_RECORD_SIZE(DriverInfoReply, 120);
VASKDFC_FIELD_AT(DriverInfoReply, bytes_64, 64);
VASKDFC_FIELD_AT(DriverInfoReply, sli_mode, 96);
VASKDFC_FIELD_AT(DriverInfoReply, feature_flags, 104);
VASKDFC_FIELD_AT(DriverInfoReply, adapter_type, 112);

}  // namespace vaskdfc
