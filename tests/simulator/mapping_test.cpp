// Target mapping and persistent bindings.
#include "scsi_exchange.h"

namespace {

using vaskdfc::BindListReply;
using vaskdfc::TargetMappingReply;

TEST(Mapping, has_every_unit_with_both_of_its_addresses) {
  in_process({}, [] {
    Session session;
    const auto reply = std::make_unique<TargetMappingReply>();
    const dfc_mgmt_hdr header = session.call<Callback::kHbaFcpTargetMapping>({.brdno = 1, .arg2 = 8}, *reply);
    EXPECT_EQ(header.status, 0u);
    ASSERT_EQ(header.arg3, 8u) << "five and three; a tape drive without units";

    const HbaFcpScsiEntry& last = reply->entries[7];
    EXPECT_EQ(text(last.ScsiId.OSDeviceName), "vmhba2:C0:T1:L300");
    EXPECT_EQ(last.ScsiId.ScsiBusNumber, 0u);
    EXPECT_EQ(last.ScsiId.ScsiTargetNumber, 1u);
    EXPECT_EQ(last.ScsiId.ScsiOSLun, 300u);
    EXPECT_EQ(last.FcpId.FcId, 0x010300u);
    EXPECT_EQ(text(last.FcpId.NodeWWN), "50:5a:41:00:0c:00:10:00");
    EXPECT_EQ(text(last.FcpId.PortWWN), "50:5a:41:00:0c:00:10:02");
    EXPECT_EQ(Bytes(last.FcpId.FcpLun, last.FcpId.FcpLun + 8), (Bytes{0x41, 0x2C, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Bytes(reply->entries[4].FcpId.FcpLun, reply->entries[4].FcpId.FcpLun + 8), (Bytes{0, 4, 0, 0, 0, 0, 0, 0}));

    for (std::uint32_t i = 0; i < header.arg3; ++i) {
      const HbaFcpId& address = reply->entries[i].FcpId;
      const Bytes lun(std::begin(address.FcpLun), std::end(address.FcpLun));
      EXPECT_TRUE(send(session, {.target = address.PortWWN, .lun = lun, .cdb = {0}, .data = {}}).sense.empty()) << i;
    }
  });
}

TEST(Mapping, that_does_not_fit_tells_how_many_there_are) {
  in_process({}, [] {
    Session session;
    const auto reply = std::make_unique<TargetMappingReply>();
    const dfc_mgmt_hdr header = session.call<Callback::kHbaFcpTargetMapping>({.brdno = 1, .arg2 = 7}, *reply);
    EXPECT_EQ(header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE});
    EXPECT_EQ(header.arg3, 8u);
    EXPECT_EQ(session.call<Callback::kHbaFcpTargetMapping>({.brdno = 4, .arg3 = 9}, *reply).arg3, 0u) << "no cable";
    EXPECT_EQ(session.call<Callback::kHbaFcpTargetMapping>({.brdno = 12}, *reply).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
  });
}

TEST(Mapping, may_have_1024_units) {
  json scenario = small_scenario();
  scenario["fabrics"][0]["ports"][0]["luns"] = json::parse(R"([{"lun": 15360, "count": 1024, "blocks": 1, "serial": "many"}])");
  under_scenario(scenario, [] {
    Session session;
    const auto reply = std::make_unique<TargetMappingReply>();
    const dfc_mgmt_hdr header = session.call<Callback::kHbaFcpTargetMapping>({.brdno = 2, .arg2 = 1024}, *reply);
    EXPECT_EQ(header.status, 0u);
    EXPECT_EQ(header.arg3, 1024u);
    EXPECT_EQ(reply->entries[1023].ScsiId.ScsiOSLun, 16383u);

    const ScsiCommand command{.board = 2,
                              .target = reply->entries[1023].FcpId.PortWWN,
                              .lun = {0x7F, 0xFF},
                              .cdb = {0x12, 1, 0x80, 0, 255},
                              .room = 255,
                              .data = {}};
    const ScsiResult serial = send(session, command);
    EXPECT_EQ(std::string(serial.data.begin() + 4, serial.data.end()), "many-16383");
  });
}

std::vector<std::uint32_t> words(const FcpBinding& binding) { return {std::begin(binding.words), std::end(binding.words)}; }

TEST(Mapping, bindings_tell_their_key_their_address_and_whether_the_port_is_there) {
  in_process({}, [] {
    Session session;
    const auto reply = std::make_unique<BindListReply>();
    EXPECT_EQ(session.call<Callback::kListBind>({.brdno = 1, .arg2 = sizeof(*reply), .arg4 = 3}, *reply).status, 0u);
    ASSERT_EQ(reply->count, 3u);
    EXPECT_EQ(words(reply->entries[0]), (std::vector<std::uint32_t>{1, 0x00415a50, 0x0110000c, 0, 0, 0, 1, 0}));
    EXPECT_EQ(words(reply->entries[1]), (std::vector<std::uint32_t>{2, 0x00415a50, 0x0020000c, 0, 0, 2, 1, 0}));
    EXPECT_EQ(words(reply->entries[2]), (std::vector<std::uint32_t>{3, 0, 0, 0x010900, 1, 7, 0, 0}));

    const dfc_mgmt_hdr tight = session.call<Callback::kListBind>({.brdno = 1, .arg2 = sizeof(*reply), .arg4 = 2}, *reply);
    EXPECT_EQ(tight.status, std::uint32_t{VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE});
    EXPECT_EQ(tight.arg1, 3u);
  });
}

TEST(Mapping, bindings_may_be_4096) {
  json scenario = small_scenario();
  json& bindings = scenario["adapters"][0]["bindings"];
  for (std::uint32_t target = 0; target < 4096; ++target) bindings.push_back({{"fc_id", "0x010200"}, {"target", target}});
  under_scenario(scenario, [] {
    Session session;
    const auto reply = std::make_unique<BindListReply>();
    EXPECT_EQ(session.call<Callback::kListBind>({.brdno = 2, .arg4 = 4096}, *reply).status, 0u);
    EXPECT_EQ(reply->count, 4096u);
    EXPECT_EQ(reply->entries[4095].words[5], 4095u);
    EXPECT_EQ(reply->entries[4095].words[6], 1u);
  });
}

}  // namespace
