// Driver-side records of board discovery.
#pragma once

#include <cstdint>

#include "transport/records/le.h"
#include "vaskdfc/record.h"

namespace vaskdfc {

// Reply of board discovery. Fields named after their offset are only passed through to the caller.
struct dfc_initbrds_rsp {
  Le32 pci_id;  // vendor in bits 15-0, device in bits 31-16
  Le32 word_4;
  Le32 word_8;
  Le16 half_12;
  std::uint8_t unread_14[2];
  Le32 word_16;
  Le32 condition;  // signed; negative: the adapter is in a failed state
  std::uint8_t bytes_24[16];
  std::uint8_t bytes_40[32];
  std::uint8_t bytes_72[8];
  std::uint8_t byte_80;
};
VASKDFC_RECORD_SIZE(dfc_initbrds_rsp, 81);
VASKDFC_FIELD_AT(dfc_initbrds_rsp, condition, 20);
VASKDFC_FIELD_AT(dfc_initbrds_rsp, byte_80, 80);

}  // namespace vaskdfc
