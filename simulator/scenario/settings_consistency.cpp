#include "scenario/settings_consistency.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "scenario/document.h"
#include "scenario/parameters.h"

namespace simulator::scenario {
namespace {

using nlohmann::json;

struct SettingsChecker {
  std::string_view file;

  [[noreturn]] void refuse(const std::string& path, std::string_view problem) const {
    throw ScenarioError::at(file, path, problem);
  }

  void check_adapter(const json& adapter, const std::string& path) const {
    check_parameters(adapter, path + ".parameters");
    const bool plug = adapter.value("loopback", json::object()).value("plug", false);
    if (plug && adapter.contains("fabric")) refuse(path + ".loopback.plug", "unexpected; only a port without a cable has it");
  }

  void check_parameters(const json& adapter, const std::string& path) const {
    const json parameters = adapter.value("parameters", json::object());
    for (const auto& [name, value] : parameters.items()) {
      const Parameter* const parameter = find_parameter(adapter["sli_mode"], name);
      if (parameter == nullptr)
        refuse(path, fmt::format("expected parameters of SLI mode {}, found \"{}\"", adapter["sli_mode"].dump(), name));
      if (value >= parameter->minimum && value <= parameter->maximum) continue;
      refuse(fmt::format("{}.{}", path, name),
             fmt::format("expected {} to {}, found {}", parameter->minimum, parameter->maximum, value.dump()));
    }
  }
};

}  // namespace

void check_settings(std::string_view file, const json& document) {
  const SettingsChecker checker{file};
  const json& adapters = document.at("adapters");
  for (std::size_t i = 0; i < adapters.size(); ++i) checker.check_adapter(adapters[i], fmt::format("adapters[{}]", i));
}

}  // namespace simulator::scenario
