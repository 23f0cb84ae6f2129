// What is set on an adapter before anyone changes it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "vaskdfc/hbaapi.h"

namespace simulator::scenario {

// Parameters that begin with another value than the driver's.
using ParameterValues = std::map<std::string, std::uint32_t, std::less<>>;

struct Vpd {
  std::string product;
  std::string part_number;
  std::string engineering_change;
  std::string manufacture_id;
};

struct Loopback {
  std::uint32_t bit_errors = 0;  // in every test
  bool plug = false;             // what the port sends comes back
};

inline constexpr std::uint32_t kHighestPriority = 7;

// What is left out matches everything.
struct PriorityRule {
  std::optional<HbaWwn> initiator;
  std::optional<HbaWwn> target;
  std::optional<std::uint32_t> lun;
  std::optional<HbaWwn> application;  // eight bytes, too
  std::uint32_t priority = 0;
};

struct Priority {
  bool enabled = false;
  std::vector<PriorityRule> rules;
};

inline constexpr std::size_t kMostOasRules = 256;
inline constexpr std::uint32_t kLastOasLun = 255;

struct OasRule {
  HbaWwn initiator{};
  HbaWwn target{};
  std::uint32_t lun = 0;
};

// All of an adapter.
Vpd vpd(const nlohmann::json& adapter);
Loopback loopback(const nlohmann::json& adapter);
Priority priority(const nlohmann::json& adapter);
std::vector<OasRule> oas_rules(const nlohmann::json& adapter);

}  // namespace simulator::scenario
