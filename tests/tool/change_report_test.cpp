#include "change_report.h"

#include <gtest/gtest.h>

namespace vaskdfc::tool {
namespace {

Field field(const char* key, const Cell& cell) { return {key, key, cell}; }

std::vector<std::string> described(const std::vector<Field>& before, const std::vector<Field>& after) {
  std::vector<std::string> texts;
  for (const Change& change : changes_between(before, after)) {
    texts.push_back(change.key + ": " + change.before.text + " -> " + change.after.text);
  }
  return texts;
}

using Texts = std::vector<std::string>;

TEST(Changes, are_the_fields_that_differ) {
  EXPECT_EQ(described({field("vlan", number_cell(7)), field("fc_map", text_cell("0e:fc:00"))},
                      {field("vlan", number_cell(8)), field("fc_map", text_cell("0e:fc:00"))}),
            Texts{"vlan: 7 -> 8"});
  EXPECT_EQ(described({}, {}), Texts{});
}

TEST(Changes, show_what_only_one_side_has) {
  EXPECT_EQ(described({field("gone", number_cell(1))}, {field("new", number_cell(2))}), (Texts{"gone: 1 -> -", "new: - -> 2"}));
}

TEST(Changes, do_not_count_what_neither_side_knows) {
  EXPECT_EQ(described({field("blank", absent())}, {}), Texts{});
  EXPECT_EQ(described({}, {field("blank", absent())}), Texts{});
}

}  // namespace
}  // namespace vaskdfc::tool
