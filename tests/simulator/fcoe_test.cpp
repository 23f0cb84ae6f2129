// FCFs that a converged adapter has discovered.
#include "sim_process.h"

namespace {

using vaskdfc::FcfReply;

struct Answer {
  dfc_mgmt_hdr header;
  FcfReply fcf;
};

Answer ask(Session& session, std::uint32_t board, std::uint32_t index) {
  auto fcf = garbage<FcfReply>();
  const dfc_mgmt_hdr header = session.call<Callback::kHbaGetFcfList>({.brdno = board, .arg1 = index, .arg4 = 77, .arg5 = 77}, fcf);
  return {header, fcf};
}

std::vector<unsigned> vlans(const FcfReply& fcf) {
  std::vector<unsigned> result;
  for (unsigned vlan = 0; vlan < 4096; ++vlan) {
    if ((fcf.vlan_bitmap[vlan / 8] >> vlan % 8 & 1) != 0) result.push_back(vlan);
  }
  return result;
}

bool is_zero(const FcfReply& fcf) {
  const FcfReply zero{};
  return std::memcmp(&fcf, &zero, sizeof(zero)) == 0;
}

// The small scenario with a converged adapter and these FCFs.
json with_fcfs(const char* fcfs) {
  json scenario = small_scenario();
  scenario["adapters"][0]["protocol"] = "fcoe";
  scenario["adapters"][0]["fcfs"] = json::parse(fcfs);
  return scenario;
}

TEST(Fcoe, the_built_in_scenario_is_walked_from_the_first_fcf_to_the_last) {
  in_process({}, [] {
    Session session;
    struct Expected {
      std::uint8_t available;
      std::vector<unsigned> vlans;
    };
    const std::vector<Expected> expected{
        {1, {1002}}, {0, {1}}, {1, {0, 7, 8, 100, 101, 102, 103, 1002, 1003, 2047, 2048, 4094, 4095}}};
    std::uint32_t index = 0xFFFF;
    for (const Expected& fcf : expected) {
      const Answer answer = ask(session, 1, index);
      EXPECT_EQ(answer.header.status, 0u);
      EXPECT_EQ(answer.header.arg5, 0u);
      EXPECT_EQ(answer.fcf.is_valid, 1);
      EXPECT_EQ(answer.fcf.byte_18, fcf.available);
      EXPECT_EQ(vlans(answer.fcf), fcf.vlans);
      index = answer.header.arg4;
    }
    EXPECT_EQ(index, 0xFFFFu);
  });
}

TEST(Fcoe, an_fcf_is_what_the_scenario_says) {
  const json scenario = with_fcfs(R"([{"names": ["10:00:00:00:00:00:00:aa", "20:00:00:00:00:00:00:bb"], "mac": "00:11:22:33:44:5F",
    "fc_map": "0e:fc:12", "vlans": [4095, 9], "word_4": 305419896, "word_8": 4294967295, "available": false}])");
  under_scenario(scenario, [] {
    Session session;
    const auto [header, fcf] = ask(session, 2, 0);
    EXPECT_EQ(header.arg4, 0xFFFFu);
    EXPECT_EQ(text(fcf.name_20), "10:00:00:00:00:00:00:aa");
    EXPECT_EQ(text(fcf.name_548), "20:00:00:00:00:00:00:bb");
    EXPECT_EQ(std::vector(fcf.mac_address, fcf.mac_address + 6), (std::vector<std::uint8_t>{0, 0x11, 0x22, 0x33, 0x44, 0x5F}));
    EXPECT_EQ(std::vector(fcf.fc_map, fcf.fc_map + 3), (std::vector<std::uint8_t>{0x0E, 0xFC, 0x12}));
    EXPECT_EQ(fcf.word_4, 0x12345678u);
    EXPECT_EQ(fcf.word_8, 0xFFFFFFFFu);
    EXPECT_EQ(fcf.byte_18, 0);
    EXPECT_EQ(vlans(fcf), (std::vector<unsigned>{9, 4095}));
  });
}

TEST(Fcoe, what_the_scenario_leaves_out_has_defaults_and_an_invalid_entry_is_still_walked) {
  const json scenario = with_fcfs(R"([
    {"names": ["10:00:00:00:00:00:00:aa", "20:00:00:00:00:00:00:bb"], "mac": "00:11:22:33:44:55", "valid": false},
    {"names": ["10:00:00:00:00:00:00:aa", "20:00:00:00:00:00:00:bb"], "mac": "00:11:22:33:44:56"}])");
  under_scenario(scenario, [] {
    Session session;
    const Answer invalid = ask(session, 2, 0xFFFF);
    EXPECT_EQ(invalid.header.arg4, 1u);
    EXPECT_EQ(invalid.fcf.is_valid, 0);
    EXPECT_FALSE(is_zero(invalid.fcf));

    const auto [header, fcf] = ask(session, 2, 1);
    EXPECT_EQ(header.arg4, 0xFFFFu);
    EXPECT_EQ(fcf.is_valid, 1);
    EXPECT_EQ(fcf.byte_18, 1);
    EXPECT_EQ(std::vector(fcf.fc_map, fcf.fc_map + 3), (std::vector<std::uint8_t>{0x0E, 0xFC, 0}));
    EXPECT_EQ(vlans(fcf), std::vector<unsigned>());
    EXPECT_EQ(fcf.word_4, 0u);
    EXPECT_EQ(fcf.word_8, 0u);
  });
}

TEST(Fcoe, an_index_that_does_not_exist_gets_zeros_and_the_end_of_the_list) {
  const auto expect_end = [](std::uint32_t board, std::uint32_t index) {
    Session session;
    const Answer answer = ask(session, board, index);
    EXPECT_EQ(answer.header.status, 0u);
    EXPECT_EQ(answer.header.arg4, 0xFFFFu);
    EXPECT_TRUE(is_zero(answer.fcf)) << index;
  };
  in_process({}, [&] {
    for (const std::uint32_t index : {3u, 0xFFFEu, 0x10000u, 0xFFFFFFFFu}) expect_end(1, index);
  });
  under_scenario(with_fcfs("[]"), [&] {
    for (const std::uint32_t index : {0u, 0xFFFFu}) expect_end(2, index);
  });
}

TEST(Fcoe, the_list_says_whether_the_port_is_online) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(ask(session, 1, 0).header.arg5, 0u);
    session.call<Callback::kSetDiag>({.brdno = 1, .arg6 = 0x12});
    const Answer offline = ask(session, 1, 0);
    EXPECT_EQ(offline.header.arg5, 1u);
    EXPECT_EQ(offline.fcf.is_valid, 1);
    EXPECT_EQ(ask(session, 1, 9).header.arg5, 1u);
  });
}

TEST(Fcoe, only_running_converged_adapters_of_the_newer_interface_have_a_list) {
  json scenario = small_scenario();
  for (const auto& [protocol, sli_mode, condition, status] :
       {std::tuple{"fc", 4, "ok", VMKMGMT_SIM_DRIVER_NOT_SUPPORTED},
        std::tuple{"fc", 4, "failed", VMKMGMT_SIM_DRIVER_NOT_SUPPORTED},
        std::tuple{"fcoe", 3, "ok", VMKMGMT_SIM_DRIVER_NOT_SUPPORTED},
        std::tuple{"fcoe", 4, "failed", VMKMGMT_SIM_DRIVER_NOT_READY}, std::tuple{"fcoe", 4, "ok", VMKMGMT_SIM_DRIVER_OK}}) {
    scenario["adapters"][0].update({{"protocol", protocol}, {"sli_mode", sli_mode}, {"condition", condition}});
    under_scenario(scenario, [expected = std::uint32_t{status}] {
      Session session;
      EXPECT_EQ(ask(session, 2, 0xFFFF).header.status, expected);
    });
  }
}

}  // namespace
