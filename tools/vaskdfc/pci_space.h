// PCI configuration space, of which there may be any number of bytes.
#pragma once

#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

// The header of a device of type 0.
std::vector<Field> pci_header_fields(Bytes space);

// Both lists of capabilities, each to its end or to where it leaves the bytes or bites its tail.
Section pci_capabilities_section(Bytes space);

}  // namespace vaskdfc::tool
