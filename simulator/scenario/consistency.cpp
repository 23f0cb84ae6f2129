#include "scenario/consistency.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <string>
#include <vector>

#include "scenario/document.h"
#include "scenario/hexadecimal.h"
#include "scenario/settings_consistency.h"
#include "scenario/target_consistency.h"
#include "transport/records/regions.h"

namespace simulator::scenario {
namespace {

using nlohmann::json;

// Values that may stand only once, each with the path where it stood.
class Unique {
 public:
  Unique(std::string_view file, std::string_view what) : file_(file), what_(what) {}

  void add(std::string value, const std::string& path) {
    std::ranges::transform(value, value.begin(), [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const auto [earlier, is_new] = seen_.try_emplace(value, path);
    if (!is_new)
      throw ScenarioError::at(file_, path, fmt::format("expected {} of its own, {} is that of {}", what_, value, earlier->second));
  }

 private:
  std::string_view file_;
  std::string_view what_;
  std::map<std::string, std::string> seen_;
};

struct Checker {
  std::string_view file;
  const json& document;
  Unique boards{file, "a driver board number"};
  Unique port_names{file, "a port WWN"};
  Unique fabric_names{file, "a name"};
  std::map<std::string, Unique> fc_ids;  // of each fabric

  [[noreturn]] void refuse(const std::string& path, std::string_view problem) const {
    throw ScenarioError::at(file, path, problem);
  }

  void check() {
    each(document, "", "fabrics", &Checker::check_fabric);
    each(document, "", "adapters", &Checker::check_adapter);
    each(document, "", "foreign_boards", &Checker::check_foreign_board);
    each(document, "", "faults", &Checker::check_fault);
    check_targets(file, document);
    check_settings(file, document);
  }

  template <typename Member>
  void each(const json& object, const std::string& path, const char* key, Member check_one) {
    if (!object.contains(key)) return;
    for (std::size_t i = 0; i < object[key].size(); ++i) {
      (this->*check_one)(object[key][i], fmt::format("{}{}{}[{}]", path, path.empty() ? "" : ".", key, i));
    }
  }

  void check_fabric(const json& fabric, const std::string& path) {
    fabric_names.add(fabric["name"], path + ".name");
    Unique& ids = fc_ids.try_emplace(fabric["name"], file, "an FC id").first->second;
    if (!fabric.contains("ports")) return;
    for (std::size_t i = 0; i < fabric["ports"].size(); ++i) {
      check_port(fabric["ports"][i], fmt::format("{}.ports[{}]", path, i), ids);
      check_speed(fabric["ports"][i], fmt::format("{}.ports[{}]", path, i));
    }
  }

  void check_port(const json& port, const std::string& path, Unique& ids) {
    port_names.add(port["wwpn"], path + ".wwpn");
    ids.add(port["fc_id"], path + ".fc_id");
  }

  void check_speed(const json& port, const std::string& path) const {
    if (!port.contains("speed") || port["speed"] == "auto") return;
    const json supported = port.value("supported_speeds", json::array());
    if (std::ranges::find(supported, port["speed"]) != supported.end()) return;
    refuse(path + ".speed", fmt::format("expected one of supported_speeds, found {}", port["speed"].dump()));
  }

  void check_adapter(const json& adapter, const std::string& path) {
    boards.add(adapter["board"].dump(), path + ".board");
    check_speed(adapter, path);
    check_regions(adapter, path);
    check_fcfs(adapter, path);
    if (!adapter.contains("fabric")) {
      check_unconnected(adapter, path);
      port_names.add(adapter["wwpn"], path + ".wwpn");
      return;
    }
    const auto ids = fc_ids.find(adapter["fabric"]);
    if (ids == fc_ids.end()) {
      refuse(path + ".fabric", fmt::format("expected the name of a fabric, found {}", adapter["fabric"].dump()));
    }
    if (!adapter.contains("fc_id")) refuse(path + ".fc_id", "missing; an adapter in a fabric has one");
    check_port(adapter, path, ids->second);
    if (!adapter.contains("virtual_ports")) return;
    for (std::size_t i = 0; i < adapter["virtual_ports"].size(); ++i) {
      check_port(adapter["virtual_ports"][i], fmt::format("{}.virtual_ports[{}]", path, i), ids->second);
    }
  }

  void check_unconnected(const json& adapter, const std::string& path) const {
    for (const char* key : {"fc_id", "virtual_ports"}) {
      if (adapter.contains(key)) refuse(fmt::format("{}.{}", path, key), "unexpected; only an adapter in a fabric has it");
    }
  }

  void check_regions(const json& adapter, const std::string& path) const {
    if (!adapter.contains("regions")) return;
    Unique numbers{file, "a region"};
    for (std::size_t i = 0; i < adapter["regions"].size(); ++i) {
      const json& region = adapter["regions"][i];
      const std::string place = fmt::format("{}.regions[{}]", path, i);
      check_region(region, place);
      numbers.add(region["region"].dump(), place + ".region");
    }
  }

  void check_region(const json& region, const std::string& path) const {
    const std::uint32_t size = vaskdfc::region_bytes(region["region"]);
    if (size == 0) {
      refuse(path + ".region",
             fmt::format("expected the number of a region: one of {}, found {}", region_numbers(), region["region"].dump()));
    }
    if (region.contains("image") == region.contains("missing")) refuse(path, "expected either image or missing");
    if (!region.contains("image")) return;

    const std::optional<std::string> image = bytes_of(region["image"].get<std::string>());
    if (!image) refuse(path + ".image", "expected hexadecimal digits, two a byte");
    if (image->size() > size) refuse(path + ".image", fmt::format("expected at most {} bytes, found {}", size, image->size()));
  }

  static std::string region_numbers() {
    std::vector<std::uint32_t> numbers;
    for (const auto& [region, bytes] : vaskdfc::kRegionSizes) numbers.push_back(region);
    return fmt::format("{}", fmt::join(numbers, ", "));
  }

  void check_fcfs(const json& adapter, const std::string& path) const {
    if (!adapter.contains("fcfs")) return;
    if (adapter.value("protocol", "") == "fcoe" && adapter["sli_mode"] == 4) return;
    refuse(path + ".fcfs", "unexpected; only an FCoE adapter of SLI mode 4 has them");
  }

  void check_foreign_board(const json& board, const std::string& path) { boards.add(board["board"].dump(), path + ".board"); }

  void check_fault(const json& fault, const std::string& path) {
    if (find_callback(fault["callback"]) == nullptr) {
      refuse(path + ".callback", fmt::format("expected the name or number of a callback, found {}", shown(fault["callback"])));
    }
    if (fault.contains("platform_status") && is_zero(fault["platform_status"])) {
      refuse(path + ".platform_status", "expected a status other than 0");
    }
    constexpr std::array kEffects{"platform_status", "driver_status", "header", "delay_ms", "garbage_seed"};
    if (std::ranges::none_of(kEffects, [&](const char* effect) { return fault.contains(effect); })) {
      refuse(path, fmt::format("expected at least one of {}", fmt::join(kEffects, ", ")));
    }
  }

  static bool is_zero(const json& word) {
    if (word.is_number()) return word == 0;
    return word.get<std::string>().find_first_not_of("0", 2) == std::string::npos;
  }
};

}  // namespace

void check_consistency(std::string_view file, const json& document) { Checker{file, document}.check(); }

const vaskdfc::CallbackFacts* find_callback(const json& name_or_number) {
  using vaskdfc::Callbacks;
  const auto matches = [&](const vaskdfc::CallbackFacts& row) {
    if (name_or_number.is_number()) return name_or_number == row.id;
    return name_or_number == row.name && *row.name != '\0';
  };
  const auto found = std::ranges::find_if(Callbacks::kFacts, matches);
  return found == Callbacks::kFacts.end() ? nullptr : &*found;
}

}  // namespace simulator::scenario
