#include "qos/rules.h"
#include "support/adapter_test.h"
#include "vaskdfc/priority.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;
using test::rule;
using test::RuleTable;

using Rules = std::vector<fcp_prio_entry>;

constexpr std::size_t kTravelling = 35932;
constexpr std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{9, 0}, {0, 0xBAD0020}, {9, 0xBAD0020}};

test::ExpectedCall failing(test::ExpectedCall call, std::uint32_t platform_status, std::uint32_t driver_status) {
  call.platform_status = platform_status;
  call.driver_status = driver_status;
  return call;
}

// What a call writes into the log that succeeds once and then fails in the ways of kFailures; `before` each of them.
std::string lines(const char* function, int call, int result, const char* call_name, const char* result_name,
                  const std::string& before = "") {
  const std::string start = before + test::call_line(function, call, call_name);
  std::string text = start + test::ok_line(function, result, result_name);
  for (const char* const statuses : {"x9:x0", "x0:xbad0020", "x9:xbad0020"}) {
    text += start + test::error_line(function, result, result_name, statuses);
  }
  return text;
}

// Rules with the priorities first, first + 1 and so on.
Rules many(std::uint32_t count, std::uint32_t first = 0) {
  Rules rules;
  for (std::uint32_t i = 0; i < count; ++i) rules.push_back(rule(first + i));
  return rules;
}

ByteVector first_bytes(ByteVector bytes, std::size_t count) {
  bytes.resize(count);
  return bytes;
}

class PriorityTest : public test::AdapterTest {};

// --- DFC_QoSSetGlobalFlag and DFC_QoSGetGlobalFlag

TEST_F(PriorityTest, is_switched_by_a_flag) {
  start_log();
  test::ExpectedCall call{.callback = Callback::kSetFcpPriorityFlag, .sent = {.brdno = kDriverBoard, .arg5 = 0x80000001}};
  driver.expect(call);
  EXPECT_EQ(DFC_QoSSetGlobalFlag(kBoard, 0x80000001), DFC_OK);
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect(failing(call, platform_status, driver_status));
    EXPECT_EQ(DFC_QoSSetGlobalFlag(kBoard, 0x80000001), DFC_FAILED);
  }
  constexpr const char* kCallback = "TREL_MGMT_SET_FCP_PRIORITY_FLAG";
  EXPECT_EQ(log(), lines("DFC_QoSSetGlobalFlag", 146, 150, kCallback, kCallback));
}

TEST_F(PriorityTest, tells_its_flag_unless_the_call_fails) {
  start_log();
  test::ExpectedCall call{.callback = Callback::kGetFcpPriorityFlag, .sent = {.brdno = kDriverBoard}, .arg5 = 0x80000001};
  std::uint32_t flag = 99;
  driver.expect(call);
  EXPECT_EQ(DFC_QoSGetGlobalFlag(kBoard, &flag), DFC_OK);
  EXPECT_EQ(flag, 0x80000001u);
  flag = 99;
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect(failing(call, platform_status, driver_status));
    EXPECT_EQ(DFC_QoSGetGlobalFlag(kBoard, &flag), DFC_FAILED);
    EXPECT_EQ(flag, 99u);
  }
  constexpr const char* kCallback = "TREL_MGMT_GET_FCP_PRIORITY_FLAG";
  EXPECT_EQ(log(), lines("DFC_QoSGetGlobalFlag", 176, 180, kCallback, kCallback));
}

// --- DFC_QoSGetConfig

class GetRulesTest : public PriorityTest {
 protected:
  // The driver has the rules of many(998) and counts them as it likes.
  static test::ExpectedCall call(std::uint32_t room, std::uint32_t count) {
    RuleTable rules(many(998));
    rules.list().count = count;
    return {.callback = Callback::kGetFcpPriority, .sent = {.brdno = kDriverBoard, .arg2 = room}, .payload = {rules.bytes()}};
  }
  // Gets into memory for just that many rules, of which `received` must arrive with this count.
  static std::uint32_t get(std::uint32_t room, std::uint32_t received, std::uint32_t count) {
    RuleTable table(room);
    const std::uint32_t result = DFC_QoSGetConfig(kBoard, &table.list());
    ByteVector expected = RuleTable(many(received)).bytes();
    expected.resize(table.bytes().size(), 0xEE);
    std::ranges::copy(test::bytes_of(count), expected.begin());
    EXPECT_EQ(table.bytes(), expected);
    return result;
  }
};

TEST_F(GetRulesTest, fills_the_callers_room_and_tells_how_many_rules_there_are) {
  struct Row {
    std::uint32_t room, count, received, result;
  };
  // Whatever the driver's count, as many slots are copied as there is room for.
  constexpr Row kRows[] = {{10, 12, 10, 7},      {12, 12, 12, 0},      {12, 11, 12, 0},      {0, 0, 0, 0},
                           {0, 1, 0, 7},         {998, 998, 998, 0},   {998, 999, 998, 7},   {999, 999, 998, 0},
                           {1000, 1000, 998, 0}, {1000, 1001, 998, 7}, {5, 0xFFFFFFFF, 5, 7}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.room);
    driver.expect(call(row.room, row.count));
    EXPECT_EQ(get(row.room, row.received, row.count), row.result);
  }
}

TEST_F(GetRulesTest, refuses_more_room_than_for_1000_rules) {
  EXPECT_EQ(get(1001, 0, 1001), DFC_FAILED);
  RuleTable table(1);
  table.list().count = 0xFFFFFFFF;
  EXPECT_EQ(DFC_QoSGetConfig(kBoard, &table.list()), DFC_FAILED);
}

TEST_F(GetRulesTest, leaves_the_callers_table_alone_when_the_call_fails) {
  start_log();
  driver.expect(call(3, 3));
  EXPECT_EQ(get(3, 3, 3), DFC_OK);
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect(failing(call(3, 12), platform_status, driver_status));
    EXPECT_EQ(get(3, 0, 3), DFC_FAILED);
  }
  constexpr const char* kCallback = "TREL_MGMT_GET_FCP_PRIORITY";
  EXPECT_EQ(log(), lines("DFC_QoSGetConfig", 222, 226, kCallback, kCallback));
}

TEST_F(GetRulesTest, counts_no_rule_where_the_driver_writes_nothing) {
  // Memory that was used before is not blank.
  driver.expect(call(0, 12));
  driver.expect({.callback = Callback::kGetFcpPriority, .sent = {.brdno = kDriverBoard, .arg2 = 0}});
  EXPECT_EQ(get(0, 0, 12), DFC_TOO_SMALL);
  EXPECT_EQ(get(0, 0, 0), DFC_OK);
}

TEST_F(GetRulesTest, fails_without_memory) {
  test::c_library.refused_bytes = kTravelling;
  EXPECT_EQ(get(3, 0, 3), DFC_FAILED);
}

// --- DFC_QoSSetConfig

class SetRulesTest : public PriorityTest {
 protected:
  static test::ExpectedCall call(const Rules& sent) {
    return {.callback = Callback::kSetFcpPriority,
            .sent = {.brdno = kDriverBoard, .arg2 = static_cast<std::uint32_t>(sent.size())},
            .sent_payload = {first_bytes(RuleTable(sent).bytes(), std::min(kTravelling, 4 + 36 * sent.size()))}};
  }
  // Sets rules, which must stand in the caller's table in this order afterwards.
  static std::uint32_t set(const Rules& rules, const Rules& ordered) {
    RuleTable table(rules);
    const std::uint32_t result = DFC_QoSSetConfig(kBoard, &table.list());
    EXPECT_EQ(table.bytes(), RuleTable(ordered).bytes());
    return result;
  }
  static Rules reversed(Rules rules) {
    std::ranges::reverse(rules);
    return rules;
  }
  const Rules rules{rule(1, {1}), rule(2), rule(3, {4}), rule(4)};
  const Rules ordered{rule(4), rule(2), rule(3, {4}), rule(1, {1})};
};

TEST_F(SetRulesTest, orders_the_callers_table_and_sends_it) {
  driver.expect(call(ordered));
  EXPECT_EQ(set(rules, ordered), DFC_OK);
}

TEST_F(SetRulesTest, sends_a_table_without_rules) {
  driver.expect(call({}));
  EXPECT_EQ(set({}, {}), DFC_OK);
}

TEST_F(SetRulesTest, takes_1000_rules_and_sends_the_first_998_of_their_order) {
  for (const std::uint32_t count : {998u, 999u, 1000u}) {
    driver.expect(call(reversed(many(count))));
    EXPECT_EQ(set(many(count), reversed(many(count))), DFC_OK);
  }
  EXPECT_EQ(set(many(1001), many(1001)), DFC_FAILED);
}

TEST_F(SetRulesTest, leaves_the_table_ordered_when_the_call_fails) {
  start_log();
  driver.expect(call(ordered));
  EXPECT_EQ(set(rules, ordered), DFC_OK);
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect(failing(call(ordered), platform_status, driver_status));
    EXPECT_EQ(set(rules, ordered), DFC_FAILED);
  }
  constexpr const char* kCallback = "TREL_MGMT_SET_FCP_PRIORITY";
  EXPECT_EQ(log(), lines("DFC_QoSSetConfig", 284, 288, kCallback, kCallback));
}

TEST_F(SetRulesTest, neither_orders_nor_sends_without_memory) {
  for (const std::size_t bytes : {kTravelling, std::size_t{37000}}) {
    test::c_library.refused_bytes = bytes;
    EXPECT_EQ(set(rules, rules), DFC_FAILED);
  }
}

// --- DFC_GetQoSLinkSpeed

class LinkSpeedTest : public PriorityTest {
 protected:
  static test::ExpectedCall call(std::uint32_t word) {
    return {.callback = Callback::kGetLogicalLinkSpeed, .sent = {.brdno = kDriverBoard}, .arg4 = word};
  }
  std::uint16_t speed = 99;
};

TEST_F(LinkSpeedTest, is_a_tenth_of_the_low_half_of_the_drivers_word) {
  constexpr std::pair<std::uint32_t, std::uint16_t> kSpeeds[] = {{0, 0xFFFF},     {100, 10}, {109, 10}, {0xFFFF0064, 10},
                                                                 {0x00010000, 0}, {9, 0},    {10, 1},   {0xFFFF, 6553}};
  for (const auto& [word, expected] : kSpeeds) {
    for (const std::uint32_t sli_mode : {4u, 5u}) {
      expect_driver_info(sli_mode);
      driver.expect(call(word));
      EXPECT_EQ(DFC_GetQoSLinkSpeed(kBoard, &speed), DFC_OK);
      EXPECT_EQ(speed, expected);
    }
  }
}

TEST_F(LinkSpeedTest, exists_from_sli_mode_4_on) {
  for (const std::uint32_t sli_mode : {2u, 3u}) {
    expect_driver_info(sli_mode);
    EXPECT_EQ(DFC_GetQoSLinkSpeed(kBoard, &speed), DFC_UNSUPPORTED);
  }
  expect_no_driver_info();
  EXPECT_EQ(DFC_GetQoSLinkSpeed(kBoard, &speed), DFC_FAILED);
  EXPECT_EQ(speed, 99u);
}

TEST_F(LinkSpeedTest, is_logged_under_two_names_and_untouched_when_the_call_fails) {
  start_log();
  expect_driver_info(4);
  driver.expect(call(80));
  EXPECT_EQ(DFC_GetQoSLinkSpeed(kBoard, &speed), DFC_OK);
  EXPECT_EQ(speed, 8u);
  for (const auto& [platform_status, driver_status] : kFailures) {
    expect_driver_info(4);
    driver.expect(failing(call(100), platform_status, driver_status));
    EXPECT_EQ(DFC_GetQoSLinkSpeed(kBoard, &speed), DFC_FAILED);
    EXPECT_EQ(speed, 8u);
  }
  EXPECT_EQ(log(),
            lines("DFC_GetQoSLinkSpeed", 332, 336, "TREL_MGMT_GET_LOGICAL_LINK_SPEED", "TREL_MGMT_GET_VPD", driver_info_lines()));
}

}  // namespace
}  // namespace vaskdfc
