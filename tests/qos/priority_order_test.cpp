#include "qos/priority_order.h"

#include "qos/rules.h"
#include "support/library_test.h"

namespace vaskdfc {
namespace {

using test::rule;
using test::RuleTable;

using Rules = std::vector<fcp_prio_entry>;

class PriorityOrderTest : public test::LibraryTest {
 protected:
  static void expect_order(const Rules& before, const Rules& after) {
    RuleTable table(before);
    EXPECT_EQ(order_fcp_priority_list(table.list()), 0u);
    EXPECT_EQ(table.bytes(), RuleTable(after).bytes());
  }
};

TEST_F(PriorityOrderTest, reverses_rules_that_are_equally_specific) {
  expect_order({rule(1), rule(2)}, {rule(2), rule(1)});
  expect_order({rule(1), rule(2), rule(3)}, {rule(3), rule(2), rule(1)});
  for (const int wildcard : {1, 2, 3, 4}) {
    expect_order({rule(1, {wildcard}), rule(2, {wildcard})}, {rule(2, {wildcard}), rule(1, {wildcard})});
  }
}

TEST_F(PriorityOrderTest, puts_specific_rules_before_wildcards) {
  expect_order({rule(1, {1}), rule(2)}, {rule(2), rule(1, {1})});
  expect_order({rule(1, {1}), rule(2, {2}), rule(3, {3}), rule(4, {4}), rule(5)},
               {rule(5), rule(4, {4}), rule(3, {3}), rule(2, {2}), rule(1, {1})});
  expect_order({rule(5), rule(4, {4}), rule(3, {3}), rule(2, {2}), rule(1, {1})},
               {rule(5), rule(4, {4}), rule(3, {3}), rule(2, {2}), rule(1, {1})});
}

TEST_F(PriorityOrderTest, looks_at_the_first_wildcard_only) {
  expect_order(
      {rule(1, {1, 3}), rule(2, {1}), rule(3, {1, 2, 3, 4}), rule(4, {2, 3, 4}), rule(5, {2}), rule(6, {3, 4}), rule(7, {4})},
      {rule(7, {4}), rule(6, {3, 4}), rule(5, {2}), rule(4, {2, 3, 4}), rule(3, {1, 2, 3, 4}), rule(2, {1}), rule(1, {1, 3})});
}

TEST_F(PriorityOrderTest, takes_eight_bytes_for_a_wildcard_and_no_fewer) {
  for (std::size_t byte = 0; byte < 8; ++byte) {
    auto almost = rule(1, {1});
    almost.match1[byte] = 0xFE;
    expect_order({rule(2), almost}, {almost, rule(2)});  // equally specific
  }
}

TEST_F(PriorityOrderTest, keeps_rules_that_are_alike_apart) {
  expect_order({rule(1, {4}), rule(1, {4}), rule(2), rule(2)}, {rule(2), rule(2), rule(1, {4}), rule(1, {4})});
}

TEST_F(PriorityOrderTest, mixes_groups) {
  expect_order(
      {rule(1, {2}), rule(2), rule(3, {1}), rule(4, {4}), rule(5), rule(6, {2}), rule(7, {4}), rule(8, {3}), rule(9, {1})},
      {rule(5), rule(2), rule(7, {4}), rule(4, {4}), rule(8, {3}), rule(6, {2}), rule(1, {2}), rule(9, {1}), rule(3, {1})});
}

TEST_F(PriorityOrderTest, orders_as_many_rules_as_a_table_may_have) {
  Rules before;
  Rules after;
  for (std::uint32_t i = 0; i < 1000; ++i) {
    before.push_back(rule(i));
    after.push_back(rule(999 - i));
  }
  expect_order(before, after);
}

TEST_F(PriorityOrderTest, touches_nothing_without_rules_or_memory) {
  test::c_library.refused_bytes = 37000;
  RuleTable none(Rules{});
  EXPECT_EQ(order_fcp_priority_list(none.list()), 0u);  // needs no memory

  const Rules rules{rule(1), rule(2)};
  RuleTable table(rules);
  EXPECT_EQ(order_fcp_priority_list(table.list()), 1u);
  EXPECT_EQ(table.bytes(), RuleTable(rules).bytes());
}

}  // namespace
}  // namespace vaskdfc
