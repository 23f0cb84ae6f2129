#include "scenario/settings.h"

#include <nlohmann/json.hpp>

#include "scenario/values.h"

namespace simulator::scenario {
namespace {

using nlohmann::json;

std::optional<HbaWwn> optional_wwn(const json& object, const char* key) {
  if (!object.contains(key)) return std::nullopt;
  return wwn(object[key]);
}

PriorityRule priority_rule(const json& value) {
  return {.initiator = optional_wwn(value, "initiator"),
          .target = optional_wwn(value, "target"),
          .lun = value.contains("lun") ? std::optional<std::uint32_t>(value["lun"]) : std::nullopt,
          .application = optional_wwn(value, "application"),
          .priority = value.at("priority")};
}

}  // namespace

// As a maker of adapters would name them.
Vpd vpd(const json& adapter) {
  const json value = adapter.value("vpd", json::object());
  const std::string model = adapter.at("model");
  return {.product = value.value("product", adapter.value("description", model)),
          .part_number = value.value("part_number", model.substr(model.rfind(' ') + 1)),
          .engineering_change = value.value("engineering_change", "A"),
          .manufacture_id = value.value("manufacture_id", "")};
}

Loopback loopback(const json& adapter) {
  const json value = adapter.value("loopback", json::object());
  return {.bit_errors = value.value("bit_errors", 0u), .plug = value.value("plug", false)};
}

Priority priority(const json& adapter) {
  const json value = adapter.value("priority", json::object());
  Priority result{.enabled = value.value("enabled", false), .rules = {}};
  for (const json& rule : value.value("rules", json::array())) result.rules.push_back(priority_rule(rule));
  return result;
}

std::vector<OasRule> oas_rules(const json& adapter) {
  std::vector<OasRule> result;
  for (const json& rule : adapter.value("oas_rules", json::array())) {
    result.push_back(
        {.initiator = wwn(rule.value("initiator", adapter.at("wwpn"))), .target = wwn(rule.at("target")), .lun = rule.at("lun")});
  }
  return result;
}

}  // namespace simulator::scenario
