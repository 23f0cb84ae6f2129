// Tables of numbers and their names.
#pragma once

#include <cstdint>
#include <string>

namespace vaskdfc::tool {

// The name that a table has for a number; something else for a number that it does not have.
std::string name_in(const auto& table, std::uint32_t number, const std::string& otherwise = "") {
  for (const auto& [known, name] : table) {
    if (known == number) return name;
  }
  return otherwise;
}

}  // namespace vaskdfc::tool
