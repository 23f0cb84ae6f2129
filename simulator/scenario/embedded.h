// Files that are part of the library itself.
#pragma once

#include <string_view>

namespace simulator::scenario {

extern const std::string_view kSchemaText;
extern const std::string_view kDefaultScenarioText;

}  // namespace simulator::scenario
