// Driver-side records of FCoE.
#pragma once

#include <cstdint>

#include "transport/records/le.h"
#include "vaskdfc/hbaapi.h"

namespace vaskdfc {

// One Fibre Channel Forwarder (FCF). Fields named after their offset are only passed through or not read at all.
struct FcfReply {
  std::uint8_t unread_0[4];
  Le32 word_4;
  Le32 word_8;
  std::uint8_t mac_address[6];
  std::uint8_t byte_18;
  std::uint8_t unread_19;
  HbaWwn name_20;
  std::uint8_t fc_map[3];
  std::uint8_t is_valid;  // zero: the reply holds no FCF
  std::uint8_t unread_32[4];
  std::uint8_t vlan_bitmap[512];
  HbaWwn name_548;
};
VASKDFC_RECORD_SIZE(FcfReply, 556);
VASKDFC_FIELD_AT(FcfReply, mac_address, 12);
VASKDFC_FIELD_AT(FcfReply, is_valid, 31);
VASKDFC_FIELD_AT(FcfReply, name_548, 548);

}  // namespace vaskdfc
