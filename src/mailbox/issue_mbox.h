// Sending one mailbox.
#pragma once

#include <cstdint>

namespace vaskdfc {

// Sends `word_count` words within the limits of the SLI mode and copies the completed mailbox back, also when the call failed.
// Above 64 words only the first 64 travel. Results: DFC_OK; DFC_FAILED with a mailbox status; DFC_MBOX_NOT_TAKEN; DFC_NO_MEMORY
// with the mailbox untouched.
// NOLINTNEXTLINE(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp): log readers know the function by this name
std::uint32_t _IssueMbox(std::uint32_t board, std::uint32_t* mailbox, std::uint32_t word_count, std::uint32_t reply_bytes,
                         std::uint32_t sli_mode);

}  // namespace vaskdfc
