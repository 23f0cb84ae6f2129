// Fields of a report, for tests to look into.
#pragma once

#include <string>
#include <vector>

#include "report.h"

namespace vaskdfc::tool {

inline std::string text_in(const std::vector<Field>& fields, const std::string& key) {
  for (const Field& field : fields) {
    if (field.key == key) return field.cell.text;
  }
  return "no such field";
}

}  // namespace vaskdfc::tool
