#include "scenario/values.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "scenario/hexadecimal.h"

namespace simulator::scenario {

using nlohmann::json;

std::uint32_t prefixed_hexadecimal(const std::string& text) {
  std::uint32_t value = 0;
  std::from_chars(text.data() + 2, text.data() + text.size(), value, 16);
  return value;
}

HbaWwn wwn(const json& value) {
  HbaWwn result;
  std::ranges::copy(*bytes_of(value.get<std::string>()), result.wwn);
  return result;
}

std::uint32_t max_virtual_ports(const json& adapter) {
  constexpr std::uint32_t kNewerInterface = 4096;
  return adapter.value("max_virtual_ports", adapter.at("sli_mode") == 4 ? kNewerInterface : 0);
}

}  // namespace simulator::scenario
