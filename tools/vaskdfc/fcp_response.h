// The FCP response (FCP_RSP) that ends a command.
#pragma once

#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

// The sense data in a response. The driver's record has a length of its own where the response has the length of its sense, so
// what follows the response's other parts is taken for sense.
Bytes sense_in(Bytes response);

// SCSI status and how many bytes too few or too many there were; what the response ends before is absent.
std::vector<Field> response_fields(Bytes response);

// How the command ended if it did not end well, as in "ended with status BUSY (08)"; empty otherwise.
std::string refusal_text(Bytes response);

}  // namespace vaskdfc::tool
