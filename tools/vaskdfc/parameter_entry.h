// A driver parameter, by this driver's layout of its entries.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

struct Parameter {
  std::uint32_t position = 0;  // in the table, by which the driver knows it
  std::string name;
  std::string meaning;
  // Absent where the entry ends before.
  std::optional<std::uint32_t> value;
  std::optional<std::uint32_t> initial;
  std::optional<std::uint32_t> least;
  std::optional<std::uint32_t> most;
  bool needs_restart = false;  // before a change takes effect
  bool waits = false;          // a change waits for that
};

Parameter parse_parameter(std::uint32_t position, Bytes entry);

// What a list shows of it, and what stands by itself besides.
std::vector<Field> parameter_fields(const Parameter& parameter);
Field meaning_field(const Parameter& parameter);

// The parameter that a name or a position names.
const Parameter* find_parameter(const std::vector<Parameter>& parameters, const std::string& name);

}  // namespace vaskdfc::tool
