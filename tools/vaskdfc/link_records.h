// What the driver says about links, nodes, I/O and vital product data, by this driver's layouts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

std::vector<Field> link_fields(Bytes record);

std::vector<Field> node_fields(Bytes record);

// Counters with their units, a record each.
Section io_section(Bytes record);

// The words about the adapter, which come with every selector.
std::vector<Field> vpd_fields(Bytes record);

// The texts of a selector, with what they are where that is known.
Section vpd_texts_section();
void add_vpd_texts(Section& section, Bytes record);

// How many selectors the record says that there are.
std::uint32_t vpd_selectors(Bytes record);

}  // namespace vaskdfc::tool
