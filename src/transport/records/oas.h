// Driver-side records of OAS rules.
#pragma once

#include <cstdint>

#include "transport/records/le.h"
#include "vaskdfc/oas.h"

namespace vaskdfc {

// Names a rule to the driver: hexadecimal digits without blanks, then NUL bytes. The digits are those of the version, of the local
// port's WWN, of the remote port's WWN, of the LUN.
struct OasRuleKey {
  char text[6400];
};
VASKDFC_RECORD_SIZE(OasRuleKey, 6400);

// A rule as the driver lists it, packed. Fields named after their offset are only passed through.
struct OasRuleRecord {
  std::uint8_t bytes_0[16];
  Le32 word_16;  // its first byte is the LUN's number
  Le32 word_20;
  std::uint8_t flags;  // bits 0 and 1
};
VASKDFC_RECORD_SIZE(OasRuleRecord, 25);
VASKDFC_FIELD_AT(OasRuleRecord, flags, 24);

// Reply of the list of rules; their count comes in the header.
struct OasListReply {
  OasRuleRecord rules[256];
};
VASKDFC_RECORD_SIZE(OasListReply, 6400);

}  // namespace vaskdfc
