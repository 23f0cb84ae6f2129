// Driver-side records of mailboxes, and of the dump and update mailboxes that carry configuration regions.
#pragma once

#include <cstdint>

#include "transport/records/le.h"
#include "vaskdfc/record.h"

namespace vaskdfc {

// An SLI mailbox.
struct Mailbox {
  std::uint32_t words[64];
};
VASKDFC_RECORD_SIZE(Mailbox, 256);

// Data that travels beside a mailbox; the whole mailbox where it is an extended one.
struct MailboxData {
  std::uint8_t bytes[4096];
};
VASKDFC_RECORD_SIZE(MailboxData, 4096);

// Extension data of a mailbox, packed.
struct MailboxExtension {
  Le32 sent_bytes;
  Le32 wanted_bytes;
  std::uint8_t flag;
  std::uint8_t data[2048];
};
VASKDFC_RECORD_SIZE(MailboxExtension, 2057);
VASKDFC_FIELD_AT(MailboxExtension, data, 9);

// What a dump mailbox asks for.
struct DumpRequest {
  std::uint32_t type;
  std::uint32_t region;
  std::uint32_t region_offset;
};
VASKDFC_RECORD_SIZE(DumpRequest, 12);

// A configuration region on its way from or to the adapter; the largest one fills it.
struct RegionData {
  std::uint8_t bytes[4096];
};
VASKDFC_RECORD_SIZE(RegionData, 4096);

// The word with which the adapter completes a dump or an update.
struct CompletionWord {
  std::uint32_t word;
};
VASKDFC_RECORD_SIZE(CompletionWord, 4);

}  // namespace vaskdfc
