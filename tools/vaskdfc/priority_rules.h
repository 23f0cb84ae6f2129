// Rules of FCP priority: as people write them, and in the order in which the driver sees them.
#pragma once

#include <vaskdfc/priority.h>

#include <string>
#include <vector>

#include "report.h"

namespace vaskdfc::tool {

using PriorityRules = std::vector<fcp_prio_entry>;

// As many as travel.
inline constexpr std::size_t kMostRules = 998;

// The rules of a file, whose name ends with .json or which is CSV: the columns match1 to match4 and prio, in any order, each key
// "*" or 8 bytes. What `qos list` prints in either form will do. A Failure names the line and the column of what is wrong.
PriorityRules parse_rules(const std::string& name, const std::string& content);

// The most specific ones first, as the library sends them: by their first wildcard, each group in the reverse of its order.
PriorityRules as_sent(const PriorityRules& rules);

Section rules_section(const PriorityRules& rules);

// The rules as fields to compare, by their position.
std::vector<Field> rule_fields(const PriorityRules& rules);

}  // namespace vaskdfc::tool
