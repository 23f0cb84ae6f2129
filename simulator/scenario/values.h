// Values that satisfy the schema, converted.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "vaskdfc/hbaapi.h"

namespace simulator::scenario {

std::uint32_t prefixed_hexadecimal(const std::string& text);
HbaWwn wwn(const nlohmann::json& value);
// How many an adapter carries; the older interface none.
std::uint32_t max_virtual_ports(const nlohmann::json& adapter);

}  // namespace simulator::scenario
