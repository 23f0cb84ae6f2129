// How the library's log is switched on.
#pragma once

#include <string>

#include "command_line.h"

namespace vaskdfc::tool {

// Explains a mask: what it enables, and where it is written down.
void explain_log(const Context& context, const std::string& mask);

}  // namespace vaskdfc::tool
