#include "scenario/targets.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "scenario/values.h"

namespace simulator::scenario {
namespace {

using nlohmann::json;

template <typename Value, std::size_t N>
Value named(const std::array<std::pair<const char*, Value>, N>& names, const std::string& name) {
  return std::ranges::find(names, name, &std::pair<const char*, Value>::first)->second;
}

constexpr std::array<std::pair<const char*, Identifier>, 4> kIdentifiers{
    {{"naa", Identifier::kNaa}, {"eui", Identifier::kEui}, {"t10", Identifier::kT10}, {"unusable", Identifier::kUnusable}}};

constexpr std::array<std::pair<const char*, Event::Code>, 4> kEvents{{{"lip", Event::Code::kLip},
                                                                      {"link_up", Event::Code::kLinkUp},
                                                                      {"link_down", Event::Code::kLinkDown},
                                                                      {"rscn", Event::Code::kRscn}}};

// Unless the scenario says otherwise, a node has one disk of each number, whichever of its ports leads there.
std::string serial(const json& value, const HbaWwn& node, std::uint32_t lun) {
  if (!value.contains("serial")) return fmt::format("{:02x}-{}", fmt::join(node.wwn, ""), lun);
  if (!value.contains("count")) return value["serial"];
  return fmt::format("{}-{}", value["serial"].get<std::string>(), lun);
}

LogicalUnit logical_unit(const json& value, const HbaWwn& node, std::uint32_t lun) {
  return {.lun = lun,
          .blocks = value.at("blocks"),
          .vendor = value.value("vendor", "KESTAR"),
          .product = value.value("product", "VIRTUAL DISK"),
          .revision = value.value("revision", "0001"),
          .serial = serial(value, node, lun),
          .identifier = named(kIdentifiers, value.value("identifier", "naa")),
          .read_only = value.value("read_only", false)};
}

Binding binding(const json& value) {
  Binding result{.bus = value.value("bus", 0u), .target = value.at("target")};
  if (value.contains("wwpn")) {
    result.wwn = wwn(value["wwpn"]);
  } else if (value.contains("wwnn")) {
    result.key = Binding::Key::kNodeWwn;
    result.wwn = wwn(value["wwnn"]);
  } else {
    result.key = Binding::Key::kFcId;
    result.fc_id = prefixed_hexadecimal(value.at("fc_id"));
  }
  return result;
}

Event event(const json& value) {
  return {.at_ms = value.at("at_ms"),
          .code = named(kEvents, value.at("event")),
          .fc_id = value.contains("fc_id") ? prefixed_hexadecimal(value["fc_id"]) : 0};
}

}  // namespace

std::vector<LogicalUnit> logical_units(const json& port) {
  std::vector<LogicalUnit> result;
  for (const json& value : port.value("luns", json::array())) {
    const std::uint32_t first = value.at("lun");
    const std::uint32_t count = value.value("count", 1u);
    for (std::uint32_t i = 0; i < count; ++i) result.push_back(logical_unit(value, wwn(port.at("wwnn")), first + i));
  }
  return result;
}

std::vector<Binding> bindings(const json& adapter) {
  std::vector<Binding> result;
  for (const json& value : adapter.value("bindings", json::array())) result.push_back(binding(value));
  return result;
}

std::vector<Event> events(const json& adapter) {
  std::vector<Event> result;
  for (const json& value : adapter.value("events", json::array())) result.push_back(event(value));
  std::ranges::stable_sort(result, {}, &Event::at_ms);
  return result;
}

}  // namespace simulator::scenario
