// Events, and the identification of nodes.
#include "scsi_exchange.h"

namespace {

using vaskdfc::EventReply;
using vaskdfc::RnidKey;
using vaskdfc::RnidReply;

struct Events {
  std::vector<std::vector<std::uint32_t>> records;  // code, FC id, page
  std::uint32_t missed;
};

Events take(Session& session, std::uint32_t board, std::uint32_t room = 32) {
  auto reply = garbage<EventReply>();
  const dfc_mgmt_hdr header = session.call<Callback::kHbaGetEvent>({.brdno = board, .arg2 = room, .arg4 = 77}, reply);
  EXPECT_EQ(header.status, 0u);
  Events events{.records = {}, .missed = header.arg4};
  for (std::uint32_t i = 0; i < header.arg3; ++i) {
    std::vector<std::uint32_t> words(5);
    std::memcpy(words.data(), reply.events[i].bytes, sizeof(HbaEvent));
    EXPECT_EQ(words[3] | words[4], 0u);
    events.records.emplace_back(words.begin(), words.begin() + 3);
  }
  return events;
}

TEST(Events, of_the_scenario_come_at_their_times) {
  json scenario = small_scenario();
  scenario["clock"] = {{"step_ms", 100}};
  scenario["adapters"][0]["events"] = json::parse(R"([
    {"at_ms": 200, "event": "rscn", "fc_id": "0x010200"}, {"at_ms": 100, "event": "lip"},
    {"at_ms": 200, "event": "link_down"}, {"at_ms": 201, "event": "link_up"}])");
  under_scenario(scenario, [] {
    Session session;
    using Records = std::vector<std::vector<std::uint32_t>>;
    EXPECT_EQ(take(session, 2).records, (Records{{1, 0x010a00, 0}}));
    EXPECT_EQ(take(session, 2, 1).records, (Records{{5, 0x010a00, 0x010200}})) << "no more than there is room for";
    EXPECT_EQ(take(session, 2).records, (Records{{3, 0x010a00, 0}, {2, 0x010a00, 0}}));
    EXPECT_EQ(take(session, 2).records, Records());
  });
}

TEST(Events, that_find_no_room_are_counted_until_they_are_told) {
  json scenario = small_scenario();
  scenario["clock"] = {{"step_ms", 0}};
  json& events = scenario["adapters"][0]["events"];
  for (int i = 0; i < 40; ++i) events.push_back({{"at_ms", 0}, {"event", "rscn"}, {"fc_id", i < 32 ? "0x010200" : "0x010300"}});
  under_scenario(scenario, [] {
    Session session;
    const Events first = take(session, 2, 30);
    EXPECT_EQ(first.records.size(), 30u);
    EXPECT_EQ(first.missed, 8u);
    const Events second = take(session, 2, 4096);
    EXPECT_EQ(second.records.size(), 2u);
    EXPECT_EQ(second.records.back()[2], 0x010200u) << "the oldest stay";
    EXPECT_EQ(second.missed, 0u);
  });
}

TEST(Events, tell_that_the_link_goes_and_comes) {
  in_process({}, [] {
    Session session;
    const auto switch_to = [&](std::uint32_t board, std::uint32_t command) {
      session.call<Callback::kSetDiag>({.brdno = board, .arg6 = command});
    };
    const auto codes = [&](std::uint32_t board) {
      std::vector<std::uint32_t> result;
      for (const auto& record : take(session, board).records) result.push_back(record[0]);
      return result;
    };
    using Codes = std::vector<std::uint32_t>;
    switch_to(1, 0x12);
    switch_to(1, 0x13);
    EXPECT_EQ(codes(1), Codes{3});
    switch_to(1, 0x11);
    switch_to(1, 0x11);
    EXPECT_EQ(codes(1), Codes{2});
    switch_to(1, 0x14);
    EXPECT_EQ(codes(1), (Codes{3, 2}));
    switch_to(4, 0x12);
    EXPECT_EQ(codes(4), Codes()) << "no cable";
    EXPECT_EQ(codes(7), Codes()) << "another adapter";
    auto reply = garbage<EventReply>();
    EXPECT_EQ(session.call<Callback::kHbaGetEvent>({.brdno = 12}, reply).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
  });
}

TEST(Rnid, finds_ports_and_nodes_by_the_name_that_counts) {
  in_process({}, [] {
    Session session;
    const HbaWwn port = wwn({0x50, 0x5a, 0x41, 0, 0x0c, 0, 0x10, 0x02});
    const HbaWwn node = wwn({0x50, 0x5a, 0x41, 0, 0x0c, 0, 0x20, 0x00});
    auto key = garbage<RnidKey>();
    key.port_wwn = port;
    auto reply = garbage<RnidReply>();
    const dfc_mgmt_hdr by_port = session.call<Callback::kHbaRnid>({.brdno = 1, .arg2 = 64, .arg5 = 1}, key, reply);
    EXPECT_EQ(by_port.status, 0u);
    EXPECT_EQ(by_port.arg3, 24u);
    EXPECT_EQ(reply.bytes[0], 2);
    EXPECT_EQ(std::memcmp(reply.bytes + 8, &port, sizeof(port)), 0);

    EXPECT_EQ(session.call<Callback::kHbaRnid>({.brdno = 1, .arg5 = 0}, key, reply).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
    key.node_wwn = node;
    EXPECT_EQ(session.call<Callback::kHbaRnid>({.brdno = 1, .arg5 = 0}, key, reply).status, 0u);
    EXPECT_EQ(std::memcmp(reply.bytes + 16, &node, sizeof(node)), 0);
    EXPECT_EQ(session.call<Callback::kHbaRnid>({.brdno = 1, .arg5 = 2}, key, reply).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
    EXPECT_EQ(session.call<Callback::kHbaRnid>({.brdno = 4, .arg5 = 1}, key, reply).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
  });
}

TEST(Rnid, information_that_was_set_outlives_the_process) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [] {
    Session session;
    auto info = garbage<HbaMgmtInfo>();
    session.call<Callback::kHbaGetMgmtInfo>({.brdno = 1}, info);
    EXPECT_EQ(text(info.wwn), "10:00:00:5a:41:56:02:01");
    EXPECT_EQ(info.unittype, 0x0Bu);
    EXPECT_EQ(info.PortId, 0x010a00u);
    info.UDPPort = 4711;
    EXPECT_EQ(session.call<Callback::kHbaSetMgmtInfo>({.brdno = 1}, info).status, 0u);
  });
  in_process(environment, [] {
    Session session;
    auto info = garbage<HbaMgmtInfo>();
    session.call<Callback::kHbaGetMgmtInfo>({.brdno = 1}, info);
    EXPECT_EQ(info.UDPPort, 4711);
    session.call<Callback::kHbaGetMgmtInfo>({.brdno = 3}, info);
    EXPECT_EQ(info.UDPPort, 0);
  });
}

}  // namespace
