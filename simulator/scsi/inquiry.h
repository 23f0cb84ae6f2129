// What a logical unit says about itself.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "scenario/targets.h"

namespace simulator::scsi {

using Bytes = std::vector<std::uint8_t>;

// Standard data; of a LUN without a unit where there is none.
Bytes standard_inquiry(const scenario::LogicalUnit* unit);

// A page of vital product data; none for a page that units do not have. `port` counts the fabric's ports from 1.
std::optional<Bytes> vital_product_data(const scenario::LogicalUnit& unit, std::uint8_t page, std::uint32_t port);

}  // namespace simulator::scsi
