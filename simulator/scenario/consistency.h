// What a schema cannot say: references that must resolve, values that must be unique, fields that need each other.
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

#include "transport/callbacks.h"

namespace simulator::scenario {

// Throws ScenarioError. The document satisfies the schema.
void check_consistency(std::string_view file, const nlohmann::json& document);

// The callback that a fault names, by its name or by its number; null for one that the driver does not have.
const vaskdfc::CallbackFacts* find_callback(const nlohmann::json& name_or_number);

}  // namespace simulator::scenario
