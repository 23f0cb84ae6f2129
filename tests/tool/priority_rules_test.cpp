#include "priority_rules.h"

#include <gtest/gtest.h>

#include "failure.h"

namespace vaskdfc::tool {
namespace {

constexpr const char* kHeader = "match1,match2,match3,match4,prio\n";

std::vector<std::uint32_t> priorities(const PriorityRules& rules) {
  std::vector<std::uint32_t> found;
  for (const fcp_prio_entry& rule : rules) found.push_back(rule.prio);
  return found;
}

std::string mistake_in(const std::string& name, const std::string& content) {
  try {
    parse_rules(name, content);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.exit, Exit::kUsage);
    return failure.message;
  }
  return "no mistake";
}

TEST(PriorityRules, are_read_from_csv_with_columns_in_any_order) {
  const auto rules = parse_rules("r.csv",
                                 "\"prio\",match4,match3,match2,match1,position\r\n\r\n"
                                 "0x10, * ,0001000000000000,*,10:00:00:11:22:33:44:55,7\r\n");
  ASSERT_EQ(rules.size(), 1);
  EXPECT_EQ(rules[0].prio, 16);
  EXPECT_EQ(rules[0].match1[0], 0x10);
  EXPECT_EQ(rules[0].match1[7], 0x55);
  EXPECT_EQ(rules[0].match2[3], 0xFF);
  EXPECT_EQ(rules[0].match3[1], 1);
  EXPECT_EQ(rules[0].match4[7], 0xFF);
}

TEST(PriorityRules, are_read_from_json_by_itself_or_as_a_list_shows_them) {
  const std::string rule = R"({"position": 0, "match1": "*", "match2": "*", "match3": "*", "match4": "*", "prio": 3})";
  EXPECT_EQ(priorities(parse_rules("r.json", "[" + rule + "," + rule + "]")), (std::vector<std::uint32_t>{3, 3}));
  EXPECT_EQ(parse_rules("r.json", R"({"schema": 1, "command": "qos list", "rules": [)" + rule + "]}").size(), 1);
  EXPECT_TRUE(parse_rules("r.json", "[]").empty());
  EXPECT_TRUE(parse_rules("r.csv", kHeader).empty());
}

TEST(PriorityRules, say_where_a_csv_file_is_wrong) {
  EXPECT_EQ(mistake_in("r.csv", ""), "r.csv: there is no line with the names of the columns");
  EXPECT_EQ(mistake_in("r.csv", "match1,match2,match3,prio\n"), "r.csv: line 1: \"match4\" is not there once");
  EXPECT_EQ(mistake_in("r.csv", "match1,match2,match3,match4,prio,prio\n"), "r.csv: line 1: \"prio\" is not there once");
  EXPECT_EQ(mistake_in("r.csv", "match1,match2,match3,match4,prio,lun\n"), "r.csv: line 1: \"lun\" is no column of a rule");
  EXPECT_EQ(mistake_in("r.csv", std::string(kHeader) + "*,*,*,*,1\n\n*,*,zz,*,1\n"),
            "r.csv: line 4, column match3: \"zz\" is neither * nor 8 bytes");
  EXPECT_EQ(mistake_in("r.csv", std::string(kHeader) + "*,*,*,*,-1"), "r.csv: line 2, column prio: \"-1\" is no number");
  EXPECT_EQ(mistake_in("r.csv", std::string(kHeader) + "*,*,*,1"), "r.csv: line 2: there are 4 columns instead of 5");
}

TEST(PriorityRules, say_where_a_json_file_is_wrong) {
  EXPECT_EQ(mistake_in("r.json", "[\n  {\n]").substr(0, 24), "r.json: line 3, column 1");
  EXPECT_EQ(mistake_in("r.json", "{}"), "r.json: there is no list of rules, by itself or as \"rules\"");
  EXPECT_EQ(mistake_in("r.json", "[1]"), "r.json: rules[0]: this is no object");
  EXPECT_EQ(mistake_in("r.json", R"([{"match1": "*"}])"), "r.json: rules[0]: \"prio\" is not there once");
  EXPECT_EQ(mistake_in("r.json", R"([{"match1": 5, "match2": "*", "match3": "*", "match4": "*", "prio": 1}])"),
            "r.json: rules[0].match1: \"5\" is neither * nor 8 bytes");
  EXPECT_EQ(mistake_in("r.json", "[1e999]"), "r.json: number overflow parsing '1e999'");
}

TEST(PriorityRules, are_not_lists_however_deep) {
  constexpr std::size_t kDepth = 1'000'000;
  const std::string list = std::string(kDepth, '[') + std::string(kDepth, ']');
  EXPECT_EQ(mistake_in("r.json", R"([{"match1": "*", "match2": "*", "match3": "*", "match4": "*", "prio": )" + list + "}]"),
            "r.json: rules[0].prio: \"array\" is no number");
}

TEST(PriorityRules, are_no_more_than_travel) {
  std::string content = kHeader;
  for (std::size_t i = 0; i < kMostRules; ++i) content += "*,*,*,*,1\n";
  EXPECT_EQ(parse_rules("r.csv", content).size(), kMostRules);
  EXPECT_EQ(mistake_in("r.csv", content + "*,*,*,*,1\n"), "r.csv: line 1000: there are more than 998 rules");
}

TEST(PriorityRules, are_sent_by_their_first_wildcard_and_each_group_turned_round) {
  const auto rules = parse_rules("r.csv", std::string(kHeader) +
                                              "*,0000000000000000,*,0000000000000000,1\n"
                                              "0000000000000000,0000000000000000,0000000000000000,0000000000000000,2\n"
                                              "0000000000000000,0000000000000000,0000000000000000,*,3\n"
                                              "0000000000000000,0000000000000000,*,0000000000000000,4\n"
                                              "0000000000000000,*,*,*,5\n"
                                              "ffffffffffffff00,0000000000000000,0000000000000000,0000000000000000,6\n"
                                              "*,*,*,*,7\n");
  EXPECT_EQ(priorities(as_sent(rules)), (std::vector<std::uint32_t>{6, 2, 3, 4, 5, 7, 1}));
}

TEST(PriorityRules, show_wildcards_as_they_are_written) {
  const auto rules = parse_rules("r.csv", std::string(kHeader) + "*,5000000000000001,*,*,4\n");
  EXPECT_EQ(rule_fields(rules)[0].cell.text, "* 50:00:00:00:00:00:00:01 * *, priority 4");
  EXPECT_EQ(rules_section(rules).records[0][1].text, "*");
}

}  // namespace
}  // namespace vaskdfc::tool
