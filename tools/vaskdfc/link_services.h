// Extended Link Services (ELS) of FC-LS: requests to a port, and what it answers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

std::vector<std::uint8_t> echo_request(Bytes data);
// Of the link errors that the port with this id has counted.
std::vector<std::uint8_t> link_errors_request(std::uint32_t fc_id);
// Of the general topology format.
std::vector<std::uint8_t> identification_request();

// What the first word of an answer says.
struct LinkAnswer {
  bool accepted = false;
  std::uint8_t reason = 0;
  std::uint8_t explanation = 0;
  Bytes payload;  // behind the first word
};
// Nothing for bytes that are neither an accept nor a whole reject.
std::optional<LinkAnswer> parse_link_answer(Bytes bytes);

// As in "command not supported (b), request not supported (2c)".
std::string rejection_text(const LinkAnswer& answer);

// The counters of a link error status block; those that the payload ends before are absent.
std::vector<Field> link_error_fields(Bytes payload);

// Node identification data; what the payload ends before, or its format does not have, is absent.
std::vector<Field> identification_fields(Bytes payload);

}  // namespace vaskdfc::tool
