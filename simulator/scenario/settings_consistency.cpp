#include "scenario/settings_consistency.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <set>

#include "scenario/document.h"
#include "scenario/parameters.h"
#include "scenario/values.h"

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
    check_rules(adapter, path);
    if (plug && adapter.contains("fabric")) refuse(path + ".loopback.plug", "unexpected; only a port without a cable has it");
  }

  void check_rules(const json& adapter, const std::string& path) const {
    std::set<std::string> names{bytes_of(adapter["wwpn"])};
    for (const json& port : adapter.value("virtual_ports", json::array())) names.insert(bytes_of(port["wwpn"]));
    const json rules = adapter.value("oas_rules", json::array());
    if (!rules.empty() && adapter["sli_mode"] != 4)
      refuse(path + ".oas_rules", "unexpected; only an adapter of SLI mode 4 has them");
    std::set<std::string> seen;
    for (std::size_t i = 0; i < rules.size(); ++i) {
      const std::string place = fmt::format("{}.oas_rules[{}]", path, i);
      const json initiator = rules[i].value("initiator", adapter["wwpn"]);
      if (!names.contains(bytes_of(initiator))) {
        refuse(place + ".initiator",
               fmt::format("expected the port WWN of the adapter or of its virtual port, found {}", initiator.dump()));
      }
      if (!seen.insert(bytes_of(initiator) + bytes_of(rules[i]["target"]) + rules[i]["lun"].dump()).second) {
        refuse(place, "expected each rule once");
      }
    }
  }

  static std::string bytes_of(const json& name) {
    const HbaWwn value = wwn(name);
    return {std::begin(value.wwn), std::end(value.wwn)};
  }

  void check_parameters(const json& adapter, const std::string& path) const {
    const json parameters = adapter.value("parameters", json::object());
    for (const auto& [name, value] : parameters.items()) {
      const Parameter* const parameter = find_parameter(adapter["sli_mode"], name);
      if (parameter == nullptr)
        refuse(path, fmt::format("expected parameters of SLI mode {}, found {}", adapter["sli_mode"].dump(), shown(name)));
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
