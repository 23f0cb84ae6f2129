#include <array>

#include "support/adapter_test.h"
#include "vaskdfc/oas.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr HbaWwn kLocal{{0x10, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55}};
constexpr HbaWwn kRemote{{0x20, 0x00, 0x00, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE}};

test::ExpectedCall failing(test::ExpectedCall call, std::uint32_t platform_status, std::uint32_t driver_status) {
  call.platform_status = platform_status;
  call.driver_status = driver_status;
  return call;
}

// --- DFC_SetOASLun

class SetOasLunTest : public test::AdapterTest {
 protected:
  static test::ExpectedCall version_call(std::uint32_t version = 0) {
    return {.callback = Callback::kOasVer, .sent = {.brdno = kDriverBoard, .arg6 = 4119}, .arg4 = version};
  }
  static test::ExpectedCall rule_call(std::string_view key = kKey, std::uint32_t enable = 1) {
    ByteVector payload(key.begin(), key.end());
    payload.resize(6400, 0);
    return {.callback = Callback::kOasSetRule,
            .sent = {.brdno = kDriverBoard, .arg5 = enable, .arg6 = 4118},
            .sent_payload = {payload}};
  }
  // The nodes of the local port, of which one (from 0) has the WWN.
  static test::ExpectedCall nodes_call(std::uint32_t count, std::uint32_t position, const HbaWwn& wwn = kRemote) {
    ByteVector key(28, 0);
    std::ranges::copy(kLocal.wwn, key.begin() + 8);
    ByteVector reply(157700, 0);
    std::ranges::copy(bytes_of(count), reply.begin());
    std::ranges::copy(wwn.wwn, reply.begin() + static_cast<std::ptrdiff_t>(4 + 308 * position + 284));
    return {.callback = Callback::kVportGetNodeInfo,
            .sent = {.brdno = kDriverBoard, .arg2 = 64},
            .sent_payload = {key},
            .payload = {{}, reply}};
  }
  static std::uint32_t set(std::uint8_t enable = 1, std::uint32_t lun_low = 5, std::uint32_t lun_high = 0) {
    return DFC_SetOASLun(kBoard, &kLocal, &kRemote, lun_low, lun_high, 0xDEADBEEF, enable);
  }
  // What a successful operation writes into the log, up to the query for nodes.
  static std::string version_lines() {
    return test::call_line("DFC_SetOASLun", 92, "TREL_MGMT_OAS_VER") + test::ok_line("DFC_SetOASLun", 96, "TREL_MGMT_OAS_VERSION");
  }
  static std::string nodes_lines() {
    return test::call_line("DFC_GetAllNodeInfoByWWN", 226, "TREL_MGMT_VPORT_GET_NODE_INFO") +
           test::ok_line("DFC_GetAllNodeInfoByWWN", 229, "TREL_MGMT_VPORT_GET_NODE_INFO");
  }
  static constexpr std::string_view kKey = "001000001122334455200000aabbccddee0000000000000005";
  static_assert(kKey.size() == 50);
};

TEST_F(SetOasLunTest, names_the_rule_by_50_characters_and_confirms_the_remote_port) {
  start_log();
  driver.expect(version_call());
  driver.expect(rule_call());
  driver.expect(nodes_call(3, 2));
  EXPECT_EQ(set(), DFC_OK);
  EXPECT_EQ(log(), version_lines() + test::call_line("DFC_SetOASLun", 138, "TREL_MGMT_OAS_GET") +
                       test::ok_line("DFC_SetOASLun", 142, "TREL_MGMT_OAS_SET_RULE") + nodes_lines());
}

TEST_F(SetOasLunTest, writes_luns_of_64_bits) {
  driver.expect(version_call());
  driver.expect(rule_call("001000001122334455200000aabbccddeefedcba9876543210"));
  driver.expect(nodes_call(1, 0));
  EXPECT_EQ(set(1, 0x76543210, 0xFEDCBA98), DFC_OK);
}

TEST_F(SetOasLunTest, writes_versions_above_0_as_0_and_others_as_they_are) {
  constexpr std::pair<std::uint32_t, const char*> kVersions[] = {
      {0, "00"}, {3, "00"}, {0x7FFFFFFF, "00"}, {0xFFFFFFFF, "ffffffff"}, {0x80000000, "80000000"}};
  for (const auto& [version, written] : kVersions) {
    driver.expect(version_call(version));
    driver.expect(rule_call(written + std::string(kKey.substr(2))));
    driver.expect(nodes_call(1, 0));
    EXPECT_EQ(set(), DFC_OK);
  }
}

TEST_F(SetOasLunTest, removes_a_rule) {
  driver.expect(version_call());
  driver.expect(rule_call(kKey, 2));
  driver.expect(nodes_call(1, 0));
  EXPECT_EQ(set(0), DFC_OK);
}

TEST_F(SetOasLunTest, sends_no_rule_that_is_neither_set_nor_removed) {
  for (const std::uint8_t enable : {std::uint8_t{2}, std::uint8_t{255}}) {
    driver.expect(version_call());
    EXPECT_EQ(set(enable), DFC_FAILED);
  }
}

TEST_F(SetOasLunTest, ends_where_the_driver_refuses_to_tell_its_version) {
  start_log();
  for (const std::uint32_t driver_status : {1u, 0xBAD0006u, 0xBAD0100u}) {
    driver.expect(failing(version_call(), 0, driver_status));
    EXPECT_EQ(set(), 32u);
  }
  const auto lines = [](const char* statuses) {
    return test::call_line("DFC_SetOASLun", 92, "TREL_MGMT_OAS_VER") +
           test::error_line("DFC_SetOASLun", 96, "TREL_MGMT_OAS_VERSION", statuses);
  };
  EXPECT_EQ(log(), lines("x0:x1") + lines("x0:xbad0006") + lines("x0:xbad0100"));
}

TEST_F(SetOasLunTest, goes_on_where_the_platform_cannot_ask_for_the_version) {
  for (const std::uint32_t driver_status : {0u, 1u}) {
    driver.expect(failing(version_call(), 9, driver_status));
    driver.expect(rule_call());
    driver.expect(nodes_call(1, 0));
    EXPECT_EQ(set(), DFC_OK);
  }
}

TEST_F(SetOasLunTest, has_results_for_some_driver_statuses) {
  constexpr std::pair<std::uint32_t, std::uint32_t> kResults[] = {
      {0xBAD0006, 16}, {0xBAD0020, 32}, {0xBAD0030, 33}, {0xBAD002B, 34}, {0xBAD002C, 34}, {0xBAD002D, 1}, {0xBAD0010, 1}, {1, 1}};
  for (const auto& [driver_status, result] : kResults) {
    driver.expect(version_call());
    driver.expect(failing(rule_call(), 0, driver_status));
    EXPECT_EQ(set(), result);
  }
}

TEST_F(SetOasLunTest, fails_where_the_platform_fails_whatever_the_driver_says) {
  start_log();
  for (const std::uint32_t driver_status : {0u, 0xBAD0006u}) {
    driver.expect(version_call());
    driver.expect(failing(rule_call(), 9, driver_status));
    EXPECT_EQ(set(), DFC_FAILED);
  }
  const auto lines = [](const char* statuses) {
    return version_lines() + test::call_line("DFC_SetOASLun", 138, "TREL_MGMT_OAS_GET") +
           test::error_line("DFC_SetOASLun", 142, "TREL_MGMT_OAS_SET_RULE", statuses);
  };
  EXPECT_EQ(log(), lines("x9:x0") + lines("x9:xbad0006"));
}

TEST_F(SetOasLunTest, takes_one_driver_status_for_success_although_the_log_does_not) {
  start_log();
  driver.expect(version_call());
  driver.expect(failing(rule_call(), 0, 0xBAD0100));
  driver.expect(nodes_call(1, 0));
  EXPECT_EQ(set(), DFC_OK);
  EXPECT_EQ(log(), version_lines() + test::call_line("DFC_SetOASLun", 138, "TREL_MGMT_OAS_GET") +
                       test::error_line("DFC_SetOASLun", 142, "TREL_MGMT_OAS_SET_RULE", "x0:xbad0100") + nodes_lines());
}

TEST_F(SetOasLunTest, misses_a_remote_port_that_no_node_names_in_full) {
  HbaWwn almost = kRemote;
  almost.wwn[7] ^= 1;
  const test::ExpectedCall kNodes[] = {nodes_call(0, 0), nodes_call(2, 2), nodes_call(2, 1, almost), nodes_call(2, 0, kLocal)};
  for (const test::ExpectedCall& nodes : kNodes) {
    driver.expect(version_call());
    driver.expect(rule_call());
    driver.expect(nodes);
    EXPECT_EQ(set(), 18u);
  }
}

TEST_F(SetOasLunTest, finds_the_remote_port_among_more_nodes_than_it_asked_for) {
  constexpr std::array<std::uint32_t, 3> kCounts[] = {{64, 63, 0}, {512, 511, 0}, {100000, 511, 0}};
  for (const auto& [count, position, result] : kCounts) {
    driver.expect(version_call());
    driver.expect(rule_call());
    driver.expect(nodes_call(count, position));
    EXPECT_EQ(set(), result);
  }
}

TEST_F(SetOasLunTest, cannot_confirm_a_port_whose_nodes_cannot_be_read) {
  for (const auto& [platform_status, driver_status] : {std::pair{9u, 0u}, {0u, 0xBAD00B4u}, {0u, 0xBAD0020u}}) {
    driver.expect(version_call());
    driver.expect(rule_call());
    driver.expect(failing(nodes_call(100, 0), platform_status, driver_status));
    EXPECT_EQ(set(), 17u);
  }
  driver.expect(version_call());
  driver.expect(rule_call());
  test::c_library.refused_bytes = 157700;
  EXPECT_EQ(set(), 17u);
}

TEST_F(SetOasLunTest, sends_no_rule_without_memory) {
  test::c_library.refused_bytes = 6400;
  for (const std::uint8_t enable : {std::uint8_t{1}, std::uint8_t{2}}) {
    driver.expect(version_call());
    EXPECT_EQ(set(enable), 16u);
  }
}

// --- DFC_GetOASLunList

class OasLunListTest : public test::AdapterTest {
 protected:
  OasLunListTest() : listed(6400) {
    for (std::size_t i = 0; i < listed.size(); ++i) listed[i] = static_cast<std::uint8_t>(i % 253);
  }

  test::ExpectedCall call(std::uint32_t count) const {
    return {.callback = Callback::kOasGet,
            .sent = {.brdno = kDriverBoard, .arg6 = 4117},
            .sent_payload = {bytes_of(kLocal), bytes_of(kRemote)},
            .arg3 = count,
            .payload = {{}, {}, listed}};
  }
  // The caller's memory for that many rules, of which the first `received` came from the driver.
  ByteVector memory(std::uint32_t room, std::uint32_t count, std::size_t received) const {
    ByteVector bytes(4 + 36 * std::size_t{room}, 0xEE);
    std::ranges::copy(bytes_of(count), bytes.begin());
    for (std::size_t i = 0; i < received; ++i) {
      const auto record = listed.begin() + static_cast<std::ptrdiff_t>(25 * i);
      const auto entry = bytes.begin() + static_cast<std::ptrdiff_t>(4 + 36 * i);
      std::fill_n(entry, 8, std::uint8_t{0});
      entry[1] = record[16];
      std::copy_n(record + 16, 8, entry + 8);
      entry[16] = (record[24] & 2) != 0;
      entry[17] = (record[24] & 1) != 0;
      std::copy_n(record, 16, entry + 20);
    }
    return bytes;
  }
  // Lists into memory for just that many rules, of which `received` must arrive with this count.
  std::uint32_t list(std::uint32_t room, std::uint32_t count, std::size_t received) const {
    ByteVector caller = memory(room, room, 0);
    auto* const list = reinterpret_cast<dfc_oas_lun_list*>(caller.data());
    const std::uint32_t result = DFC_GetOASLunList(kBoard, &kLocal, &kRemote, 0xDEADBEEF, list);
    EXPECT_EQ(caller, memory(room, count, received));
    return result;
  }
  ByteVector listed;
};

TEST_F(OasLunListTest, converts_as_many_rules_as_there_are_and_as_there_is_room_for) {
  struct Row {
    std::uint32_t room, count, received, result;
  };
  constexpr Row kRows[] = {{4, 4, 4, 0}, {6, 4, 4, 0}, {3, 4, 3, 7}, {0, 4, 0, 7}, {0, 0, 0, 0}, {256, 256, 256, 0}};
  for (const Row& row : kRows) {
    driver.expect(call(row.count));
    EXPECT_EQ(list(row.room, row.count, row.received), row.result);
  }
}

TEST_F(OasLunListTest, counts_as_the_driver_does_and_copies_no_more_than_a_reply_holds) {
  driver.expect(call(257));
  EXPECT_EQ(list(300, 257, 256), DFC_OK);
  driver.expect(call(0xFFFFFFFF));
  EXPECT_EQ(list(300, 0xFFFFFFFF, 256), DFC_TOO_SMALL);
}

TEST_F(OasLunListTest, writes_a_lun_in_the_form_of_scsi_and_flags_as_bytes) {
  listed.assign(6400, 0);
  listed[16] = 3;
  listed[24] = 0xFE;
  listed[25 + 16] = 0xFF;
  listed[25 + 24] = 0xFD;
  driver.expect(call(2));
  ByteVector caller = memory(2, 2, 0);
  auto* const rules = reinterpret_cast<dfc_oas_lun_list*>(caller.data());
  EXPECT_EQ(DFC_GetOASLunList(kBoard, &kLocal, &kRemote, 0, rules), DFC_OK);
  const std::uint8_t kLun3[] = {0, 3, 0, 0, 0, 0, 0, 0};
  const std::uint8_t kLun255[] = {0, 0xFF, 0, 0, 0, 0, 0, 0};
  const oas_lun_entry& second = *reinterpret_cast<const oas_lun_entry*>(caller.data() + 4 + 36);
  EXPECT_TRUE(std::ranges::equal(rules->entries[0].lun, kLun3));
  EXPECT_TRUE(std::ranges::equal(second.lun, kLun255));
  EXPECT_EQ(rules->entries[0].flag_bit_1, 1);
  EXPECT_EQ(rules->entries[0].flag_bit_0, 0);
  EXPECT_EQ(second.flag_bit_1, 0);
  EXPECT_EQ(second.flag_bit_0, 1);
}

TEST_F(OasLunListTest, leaves_the_callers_list_alone_when_the_call_fails) {
  struct Failure {
    std::uint32_t platform_status;
    std::uint32_t driver_status;
    std::uint32_t result;
  };
  constexpr Failure kFailures[] = {{0, 0xBAD0010, 5}, {0, 0xBAD000F, 15}, {0, 0xBAD0020, 32}, {0, 0xBAD0030, 33},
                                   {0, 0xBAD0006, 1}, {0, 0xBAD0100, 1},  {0, 7, 1},          {7, 0, 7},
                                   {7, 0xBAD0010, 7}, {9, 0, 1},          {9, 0xBAD0010, 1}};
  for (const auto& [platform_status, driver_status, result] : kFailures) {
    driver.expect(failing(call(2), platform_status, driver_status));
    EXPECT_EQ(list(3, 3, 0), result);
  }
}

TEST_F(OasLunListTest, sends_nothing_without_a_list_or_memory) {
  start_log();
  EXPECT_EQ(DFC_GetOASLunList(kBoard, &kLocal, &kRemote, 0, nullptr), DFC_TOO_SMALL);
  test::c_library.refused_bytes = 6400;
  EXPECT_EQ(list(3, 3, 0), DFC_FAILED);
  EXPECT_EQ(log(), "");
}

TEST_F(OasLunListTest, is_logged_under_two_names) {
  start_log();
  driver.expect(call(1));
  EXPECT_EQ(list(1, 1, 1), DFC_OK);
  driver.expect(failing(call(1), 0, 0xBAD000F));
  EXPECT_EQ(list(1, 1, 0), 15u);
  constexpr const char* kFunction = "DFC_GetOASLunList";
  const std::string line = test::call_line(kFunction, 226, "TREL_MGMT_OAS_GET");
  EXPECT_EQ(log(), line + test::ok_line(kFunction, 230, "TREL_MGMT_OAS_GET_LIST") + line +
                       test::error_line(kFunction, 230, "TREL_MGMT_OAS_GET_LIST", "x0:xbad000f"));
}

}  // namespace
}  // namespace vaskdfc
