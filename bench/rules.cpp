// Ordering of FCP priority rules, as setting them does it.
#include <cstring>
#include <random>

#include "figures.h"

namespace bench {
namespace {

struct RuleTable {
  std::uint32_t count;
  fcp_prio_entry entries[DFC_FCP_PRIO_MOST_RULES];
};

// Rules as people write them: some keys are given, the rest is a wildcard.
std::vector<RuleTable> unordered_tables(std::size_t tables, std::uint32_t rules) {
  std::mt19937 random(1);
  RuleTable table{.count = rules};
  for (std::uint32_t i = 0; i < rules; ++i) {
    fcp_prio_entry& rule = table.entries[i];
    for (auto key : {&fcp_prio_entry::match1, &fcp_prio_entry::match2, &fcp_prio_entry::match3, &fcp_prio_entry::match4}) {
      const bool is_wildcard = random() % 3 == 0;
      for (std::uint8_t& byte : rule.*key) byte = is_wildcard ? 0xFF : static_cast<std::uint8_t>(random());
    }
  }
  return std::vector<RuleTable>(tables, table);
}

// Tables are ordered where they stand, so each is used once between two preparations.
Times ordering_times(const Library& library, std::uint32_t rules) {
  constexpr std::size_t kTables = 16;
  const std::vector<RuleTable> unordered = unordered_tables(kTables, rules);
  const std::size_t bytes = sizeof(std::uint32_t) + rules * sizeof(fcp_prio_entry);
  std::vector<RuleTable> tables;
  RuleTable copy;
  std::size_t next = 0;
  return in_turns_of(
      kTables, [&] { library.DFC_QoSSetConfig(0, reinterpret_cast<dfc_fcp_prio_list*>(&tables[next++])); },
      [&] {
        RuleTable& table = tables[next++];
        std::memcpy(&copy, &table, bytes);
        barrier();
        std::memcpy(&table, &copy, bytes);
      },
      [&] {
        tables = unordered;
        next = 0;
      });
}

}  // namespace

void measure_rules(const Library& library, Figures& figures) {
  const Times most = ordering_times(library, 1000);
  figures.push_back(ratio_of("ordering of 1000 priority rules", "two copies of the table", most, 8));

  // Whatever is not linear costs more for each rule of a long table than of a short one.
  const Times few = ordering_times(library, 10);
  figures.push_back(ratio_of("a rule of 1000", "a rule of 10", {.ours = most.ours / 1000, .bare = few.ours / 10}, 1.2));
}

}  // namespace bench
