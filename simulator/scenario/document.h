// A scenario's text as a JSON document that satisfies the schema.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

namespace simulator::scenario {

// What is wrong with a scenario, and where: "FILE:LINE:COLUMN: ..." or "FILE: adapters[1].wwpn: ...".
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  static ScenarioError at(std::string_view file, std::string_view path, std::string_view problem);
};

// A value as messages show it: in JSON, without its end where it is long.
std::string shown(const nlohmann::json& value);

// Parses and checks; `file` is for messages.
nlohmann::json read_document(std::string_view file, std::string_view text);

}  // namespace simulator::scenario
