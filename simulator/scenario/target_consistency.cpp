#include "scenario/target_consistency.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "scenario/document.h"
#include "scenario/targets.h"
#include "scenario/values.h"
#include "transport/records/mapping.h"

namespace simulator::scenario {
namespace {

using nlohmann::json;

constexpr std::size_t kMostUnits = std::extent_v<decltype(vaskdfc::TargetMappingReply::entries)>;

struct TargetChecker {
  std::string_view file;
  std::map<std::string, std::uint32_t> disks;            // blocks by serial number
  std::map<std::string, std::set<std::string>> fabrics;  // port WWNs as bytes

  [[noreturn]] void refuse(const std::string& path, std::string_view problem) const {
    throw ScenarioError::at(file, path, problem);
  }

  static std::string bytes(const json& name) {
    const HbaWwn value = wwn(name);
    return {std::begin(value.wwn), std::end(value.wwn)};
  }

  void check_fabric(const json& fabric, const std::string& path) {
    const json ports = fabric.value("ports", json::array());
    std::size_t units = 0;
    for (std::size_t i = 0; i < ports.size(); ++i) {
      const std::string place = fmt::format("{}.ports[{}].luns", path, i);
      units += check_units(ports[i], place);
      if (units > kMostUnits) refuse(place, fmt::format("expected at most {} units in a fabric, found {}", kMostUnits, units));
      fabrics[fabric["name"]].insert(bytes(ports[i]["wwpn"]));
    }
  }

  std::size_t check_units(const json& port, const std::string& path) {
    const std::vector<LogicalUnit> units = logical_units(port);
    std::set<std::uint32_t> luns;
    for (const LogicalUnit& unit : units) {
      if (unit.lun > 0x3FFF) refuse(path, fmt::format("expected LUNs up to 16383, found {}", unit.lun));
      if (!luns.insert(unit.lun).second) refuse(path, fmt::format("expected each LUN once, found {} twice", unit.lun));
      const auto [disk, is_new] = disks.try_emplace(unit.serial, unit.blocks);
      if (is_new || disk->second == unit.blocks) continue;
      refuse(path, fmt::format("expected {} blocks, as elsewhere for serial number {}, found {}", disk->second, unit.serial,
                               unit.blocks));
    }
    return units.size();
  }

  void check_adapter(const json& adapter, const std::string& path) const {
    check_virtual_ports(adapter, path);
    const json bindings = adapter.value("bindings", json::array());
    for (std::size_t i = 0; i < bindings.size(); ++i) check_binding(bindings[i], fmt::format("{}.bindings[{}]", path, i));
    const json events = adapter.value("events", json::array());
    for (std::size_t i = 0; i < events.size(); ++i) check_event(events[i], fmt::format("{}.events[{}]", path, i));
  }

  void check_virtual_ports(const json& adapter, const std::string& path) const {
    const json ports = adapter.value("virtual_ports", json::array());
    const std::uint32_t most = max_virtual_ports(adapter);
    if (ports.size() > most) {
      refuse(path + ".virtual_ports", fmt::format("expected at most {}, found {}", most, ports.size()));
    }
    for (std::size_t i = 0; i < ports.size(); ++i) {
      const json nodes = ports[i].value("nodes", json::array());
      for (std::size_t node = 0; node < nodes.size(); ++node) {
        if (fabrics.contains(adapter["fabric"]) && fabrics.at(adapter["fabric"]).contains(bytes(nodes[node]))) continue;
        refuse(fmt::format("{}.virtual_ports[{}].nodes[{}]", path, i, node),
               fmt::format("expected the port WWN of a port of the fabric, found {}", nodes[node].dump()));
      }
    }
  }

  void check_binding(const json& binding, const std::string& path) const {
    constexpr std::array kKeys{"wwpn", "wwnn", "fc_id"};
    if (std::ranges::count_if(kKeys, [&](const char* key) { return binding.contains(key); }) == 1) return;
    refuse(path, fmt::format("expected one of {}", fmt::join(kKeys, ", ")));
  }

  void check_event(const json& event, const std::string& path) const {
    const bool is_rscn = event["event"] == "rscn";
    if (is_rscn && !event.contains("fc_id")) refuse(path + ".fc_id", "missing; an RSCN is about a port");
    if (!is_rscn && event.contains("fc_id")) refuse(path + ".fc_id", "unexpected; only an RSCN is about a port");
  }
};

}  // namespace

void check_targets(std::string_view file, const json& document) {
  TargetChecker checker{.file = file, .disks = {}, .fabrics = {}};
  const json fabrics = document.value("fabrics", json::array());
  for (std::size_t i = 0; i < fabrics.size(); ++i) checker.check_fabric(fabrics[i], fmt::format("fabrics[{}]", i));
  const json& adapters = document.at("adapters");
  for (std::size_t i = 0; i < adapters.size(); ++i) checker.check_adapter(adapters[i], fmt::format("adapters[{}]", i));
}

}  // namespace simulator::scenario
