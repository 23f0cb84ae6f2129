// What a schema cannot say about logical units, virtual ports, bindings and events.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace simulator::scenario {

// Throws ScenarioError. The document satisfies the schema, and its adapters name fabrics that it has.
void check_targets(std::string_view file, const nlohmann::json& document);

}  // namespace simulator::scenario
