// What a schema cannot say about the settings of adapters.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace simulator::scenario {

// Throws ScenarioError. The document satisfies the schema.
void check_settings(std::string_view file, const nlohmann::json& document);

}  // namespace simulator::scenario
