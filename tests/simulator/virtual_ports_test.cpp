// Virtual ports, their resources and what they see.
#include <algorithm>
#include <memory>

#include "record_fields.h"

namespace {

using vaskdfc::NodeListReply;
using vaskdfc::VportListReply;
using vaskdfc::WwnKey;

WwnKey key(std::initializer_list<std::uint8_t> bytes) {
  WwnKey result = garbage<WwnKey>();
  std::ranges::copy(bytes, result.wwn.wwn);
  return result;
}

const WwnKey kFirst = key({0x10, 0x01, 0, 0x5a, 0x41, 0x56, 0x03, 0x10});
const WwnKey kOwn = key({0x10, 0, 0, 0x5a, 0x41, 0x56, 0x03, 0x10});

std::uint32_t status(const dfc_mgmt_hdr& header) { return header.status; }

std::vector<std::string> nodes(Session& session, std::uint32_t board, const WwnKey& port) {
  const auto reply = std::make_unique<NodeListReply>();
  const dfc_mgmt_hdr header = session.call<Callback::kVportGetNodeInfo>({.brdno = board, .arg2 = 512}, port, *reply);
  EXPECT_EQ(header.status, 0u);
  std::vector<std::string> result;
  for (std::uint32_t i = 0; i < reply->count; ++i)
    result.push_back(text(at<HbaWwn>(reply->entries[i].bytes, vaskdfc::kNodePortWwn)));
  return result;
}

TEST(VirtualPorts, are_listed_with_their_names_and_fc_ids) {
  in_process({}, [] {
    Session session;
    const auto reply = std::make_unique<VportListReply>();
    EXPECT_EQ(status(session.call<Callback::kVportGetList>({.brdno = 3, .arg2 = 2}, *reply)), 0u);
    ASSERT_EQ(reply->count, 2u);
    const auto& entry = reply->entries[1].bytes;
    EXPECT_EQ(text(at<HbaWwn>(entry, 0)), "10:02:00:5a:41:56:03:10");
    EXPECT_EQ(text(at<HbaWwn>(entry, 8)), "20:02:00:5a:41:56:03:10");
    EXPECT_EQ(word(entry, 16), 0x020b02u);

    const dfc_mgmt_hdr tight = session.call<Callback::kVportGetList>({.brdno = 3, .arg2 = 1}, *reply);
    EXPECT_EQ(tight.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_ROOM});
    EXPECT_EQ(tight.arg3, 2u);
  });
}

TEST(VirtualPorts, readiness_and_resources_follow_the_generation_and_the_link) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(session.call<Callback::kNpivReady>({.brdno = 3}).arg4, 1u);
    EXPECT_EQ(session.call<Callback::kNpivReady>({.brdno = 4, .arg4 = 9}).arg4, 0u) << "no cable";
    EXPECT_EQ(session.call<Callback::kNpivReady>({.brdno = 7, .arg4 = 9}).arg4, 0u) << "the older interface";
    EXPECT_EQ(status(session.call<Callback::kNpivReady>({.brdno = 12})), std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});

    dfc_vport_resource reply{};
    EXPECT_EQ(status(session.call<Callback::kVportGetResrc>({.brdno = 3}, reply)), 0u);
    EXPECT_EQ(word(reply.bytes, 0), 4096u);
    EXPECT_EQ(word(reply.bytes, 4), 2u);
    EXPECT_EQ(word(reply.bytes, 8), 512u);
    EXPECT_EQ(word(reply.bytes, 12), 2u);
  });
}

TEST(VirtualPorts, have_attributes_while_they_are_online_and_fewer_offline) {
  in_process({}, [] {
    Session session;
    dfc_vport_attributes reply{};
    EXPECT_EQ(status(session.call<Callback::kVportGetAttrib>({.brdno = 3}, kFirst, reply)), 0u);
    EXPECT_EQ(text(at<HbaWwn>(reply.bytes, 0)), "20:01:00:5a:41:56:03:10");
    EXPECT_EQ(text(at<HbaWwn>(reply.bytes, 8)), "10:01:00:5a:41:56:03:10");
    EXPECT_EQ(word(reply.bytes, 16), 0x020b01u);
    EXPECT_EQ(word(reply.bytes, 20), 5u);
    EXPECT_EQ(word(reply.bytes, 24), 2u);
    EXPECT_EQ(word(reply.bytes, 28), 0x20u);
    EXPECT_EQ(reply.bytes[34], 1) << "FCP";
    EXPECT_EQ(text_at(reply.bytes, 64), "virtual machine db-01");
    EXPECT_EQ(text(at<HbaWwn>(reply.bytes, 320)), "10:00:5a:41:20:00:b0:01");
    EXPECT_EQ(word(reply.bytes, 328), 2048u);
    EXPECT_EQ(word(reply.bytes, 332), 2u);

    session.call<Callback::kSetDiag>({.brdno = 3, .arg6 = 0x12});
    EXPECT_EQ(status(session.call<Callback::kVportGetAttrib>({.brdno = 3}, kFirst, reply)), 0u);
    EXPECT_EQ(word(reply.bytes, 16), 0u);
    EXPECT_EQ(word(reply.bytes, 24), 3u);
    EXPECT_EQ(nodes(session, 3, kFirst), std::vector<std::string>());
  });
}

TEST(VirtualPorts, a_name_that_is_none_of_theirs_fails_without_an_argument_word) {
  in_process({}, [] {
    Session session;
    dfc_vport_attributes reply{};
    const dfc_mgmt_hdr unknown = session.call<Callback::kVportGetAttrib>({.brdno = 3, .arg3 = 5}, kOwn, reply);
    EXPECT_EQ(unknown.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
    EXPECT_EQ(unknown.arg3, 0u);
    const dfc_mgmt_hdr failed = session.call<Callback::kVportGetAttrib>({.brdno = 12}, kOwn, reply);
    EXPECT_EQ(failed.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    EXPECT_NE(failed.arg3, 0u);

    const auto list = std::make_unique<NodeListReply>();
    list->count = 7;
    EXPECT_EQ(status(session.call<Callback::kVportGetNodeInfo>({.brdno = 4, .arg2 = 512}, kFirst, *list)),
              std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
    EXPECT_EQ(list->count, 0u);
  });
}

TEST(VirtualPorts, and_the_port_itself_see_nodes) {
  in_process({}, [] {
    Session session;
    const auto reply = std::make_unique<NodeListReply>();
    EXPECT_EQ(status(session.call<Callback::kVportGetNodeInfo>({.brdno = 3, .arg2 = 2}, kOwn, *reply)), 0u);
    ASSERT_EQ(reply->count, 2u);
    const auto& node = reply->entries[0].bytes;
    EXPECT_EQ(word(node, 0), 0x020200u);
    EXPECT_EQ(word(node, 4), 5u);
    EXPECT_EQ(word(node, 8), 2u);
    EXPECT_EQ(word(node, 12), 8u);
    EXPECT_EQ(node[18], 1) << "FCP";
    EXPECT_EQ(text_at(node, 48), "array-1 controller A port 2");
    EXPECT_EQ(word(node, 272), 0x20u);
    EXPECT_EQ(text(at<HbaWwn>(node, 276)), "50:5a:41:00:0c:00:10:00");
    EXPECT_EQ(text(at<HbaWwn>(node, 284)), "50:5a:41:00:0c:00:10:03");
    EXPECT_EQ(text(at<HbaWwn>(node, 292)), "10:00:5a:41:20:00:b0:01");
    EXPECT_EQ(word(node, 300), 5u);

    const dfc_mgmt_hdr tight = session.call<Callback::kVportGetNodeInfo>({.brdno = 3, .arg2 = 1}, kFirst, *reply);
    EXPECT_EQ(tight.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_ROOM});
    EXPECT_EQ(reply->count, 2u);
  });
}

TEST(VirtualPorts, may_see_fewer_nodes_than_the_port) {
  json scenario = small_scenario();
  json& ports = scenario["fabrics"][0]["ports"];
  ports.push_back({{"wwnn", "50:00:00:00:00:00:00:01"}, {"wwpn", "50:00:00:00:00:00:00:03"}, {"fc_id", "0x010300"}});
  json& own = scenario["adapters"][0];
  own["virtual_ports"] = json::parse(R"([
    {"wwnn": "20:01:00:00:00:00:00:02", "wwpn": "10:01:00:5a:41:56:03:10", "fc_id": "0x010a01",
     "nodes": ["50:00:00:00:00:00:00:03"]},
    {"wwnn": "20:02:00:00:00:00:00:02", "wwpn": "10:00:00:5a:41:56:03:10", "fc_id": "0x010a02", "nodes": []}])");
  under_scenario(scenario, [] {
    Session session;
    EXPECT_EQ(nodes(session, 2, kFirst), std::vector<std::string>{"50:00:00:00:00:00:00:03"});
    EXPECT_EQ(nodes(session, 2, kOwn), std::vector<std::string>());
    EXPECT_EQ(nodes(session, 2, key({0x10, 0, 0, 0, 0, 0, 0, 2})).size(), 2u);
  });
}

TEST(VirtualPorts, may_be_4096) {
  json scenario = small_scenario();
  json& ports = scenario["adapters"][0]["virtual_ports"];
  for (int port = 0; port < 4096; ++port) {
    char wwpn[24], fc_id[9];
    std::snprintf(wwpn, sizeof(wwpn), "10:01:00:00:00:00:%02x:%02x", port >> 8, port & 0xFF);
    std::snprintf(fc_id, sizeof(fc_id), "0x%06x", 0x030000 + port);
    ports.push_back({{"wwnn", "20:01:00:00:00:00:00:00"}, {"wwpn", wwpn}, {"fc_id", fc_id}});
  }
  under_scenario(scenario, [] {
    Session session;
    const auto reply = std::make_unique<VportListReply>();
    EXPECT_EQ(status(session.call<Callback::kVportGetList>({.brdno = 2, .arg2 = 4096}, *reply)), 0u);
    EXPECT_EQ(reply->count, 4096u);
    EXPECT_EQ(word(reply->entries[4095].bytes, 16), 0x030FFFu);
    vaskdfc::dfc_initbrds_rsp board;
    session.call<Callback::kInitBrds>({.brdno = 2}, board);
    EXPECT_EQ(board.byte_80, 255);
  });
}

}  // namespace
