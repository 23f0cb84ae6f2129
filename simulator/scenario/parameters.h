// The parameters that the driver keeps for every adapter.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace simulator::scenario {

struct Parameter {
  std::string_view name;
  std::string_view meaning;
  std::uint32_t minimum = 0;
  std::uint32_t maximum = 0;
  std::uint32_t initial = 0;
  bool needs_restart = false;  // a change takes effect when the adapter starts again
};

// Adapters of the newer interface carry out OAS rules only while this one is 1.
inline constexpr std::string_view kOasParameter = "oas_enabled";
inline constexpr std::string_view kTopologyParameter = "topology";
inline constexpr std::string_view kLinkSpeedParameter = "link_speed";

// Those of an adapter of this SLI mode, in the table's order.
std::span<const Parameter> parameters_of(std::uint32_t sli_mode);

// Null for a name that the adapter does not have.
const Parameter* find_parameter(std::uint32_t sli_mode, std::string_view name);

}  // namespace simulator::scenario
