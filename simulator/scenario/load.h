// From a scenario's file to what it says.
#pragma once

#include <string_view>

#include "scenario/document.h"
#include "scenario/scenario.h"

namespace simulator::scenario {

// Both throw ScenarioError.
Scenario load_file(const char* path);
Scenario load_text(std::string_view file, std::string_view text);

// The built-in scenario.
Scenario load_default();

}  // namespace simulator::scenario
