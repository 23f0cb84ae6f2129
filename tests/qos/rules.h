// Priority rules as tests of their order write them down.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "support/scripted_driver.h"
#include "vaskdfc/priority.h"

namespace vaskdfc::test {

// A rule that its priority tells apart, with these of its keys (1 to 4) wildcards.
inline fcp_prio_entry rule(std::uint32_t prio, std::initializer_list<int> wildcards = {}) {
  fcp_prio_entry entry{.match1 = {1}, .match2 = {2}, .match3 = {3}, .match4 = {4}, .prio = prio};
  std::uint8_t* const keys[] = {entry.match1, entry.match2, entry.match3, entry.match4};
  for (const int key : wildcards) std::fill_n(keys[key - 1], sizeof(entry.match1), std::uint8_t{0xFF});
  return entry;
}

// A caller's table in memory of exactly its size, shorter or longer than the one that travels.
class RuleTable {
 public:
  explicit RuleTable(std::uint32_t room) : memory_(sizeof(std::uint32_t) + room * sizeof(fcp_prio_entry), 0xEE) {
    list().count = room;
  }
  explicit RuleTable(const std::vector<fcp_prio_entry>& rules) : RuleTable(static_cast<std::uint32_t>(rules.size())) {
    std::ranges::copy(rules, list().entries);
  }

  dfc_fcp_prio_list& list() { return *reinterpret_cast<dfc_fcp_prio_list*>(memory_.data()); }
  const ByteVector& bytes() const { return memory_; }

 private:
  ByteVector memory_;
};

}  // namespace vaskdfc::test
