// Adapter and port attributes.
#include <cstring>

#include "sim_process.h"

namespace {

using vaskdfc::PortAttributesReply;
using vaskdfc::WwnKey;

struct Answer {
  std::uint32_t status;
  PortAttributesReply reply;
};

template <Callback kCallback>
Answer query(Session& session, const dfc_mgmt_hdr& header) {
  Answer answer;
  std::memset(&answer.reply, 0xA5, sizeof(answer.reply));
  answer.status = session.call<kCallback>(header, answer.reply).status;
  return answer;
}
Answer own(Session& session, std::uint32_t board) { return query<Callback::kHbaPortAttributes>(session, {.brdno = board}); }
Answer indexed(Session& session, std::uint32_t board, std::uint32_t index, std::uint32_t generation = 0) {
  return query<Callback::kHbaIndexPortAttributes>(session, {.brdno = board, .arg1 = index, .arg4 = generation});
}
Answer discovered(Session& session, std::uint32_t board, std::uint32_t index, std::uint32_t generation = 0) {
  return query<Callback::kHbaDiscPortAttributes>(session, {.brdno = board, .arg1 = index, .arg4 = generation});
}
Answer named(Session& session, std::uint32_t board, const HbaWwn& wwn) {
  Answer answer;
  const WwnKey key{.wwn = wwn};
  answer.status = session.call<Callback::kHbaWwpnPortAttributes>({.brdno = board}, answer.reply, key).status;
  return answer;
}

constexpr std::uint32_t kStale = 0xFFFFFFFF;

TEST(HbaApi, adapter_attributes_are_the_scenarios) {
  in_process({}, [] {
    Session session;
    HbaAdapterAttributes attributes;
    std::memset(&attributes, 0xA5, sizeof(attributes));
    EXPECT_EQ(session.call<Callback::kHbaAdapterAttributes>({.brdno = 1}, attributes).status, 0u);
    EXPECT_EQ(text(attributes.Manufacturer), "ZAV");
    EXPECT_EQ(text(attributes.SerialNumber), "ZK56020A1174");
    EXPECT_EQ(text(attributes.Model), "Kestar K5602-CNA");
    EXPECT_EQ(text(attributes.ModelDescription), "Kestar K5602-CNA 10 Gb/s FCoE converged network adapter, PCIe");
    EXPECT_EQ(text(attributes.NodeWWN), "20:00:00:5a:41:56:02:01");
    EXPECT_EQ(text(attributes.NodeSymbolicName), "Kestar K5602-CNA FV11.4.204.25 DV11.4.1193.4");
    EXPECT_EQ(text(attributes.HardwareVersion), "0000000b");
    EXPECT_EQ(text(attributes.DriverVersion), "11.4.1193.4");
    EXPECT_EQ(text(attributes.OptionROMVersion), "11.4.204.20");
    EXPECT_EQ(text(attributes.FirmwareVersion), "11.4.204.25");
    EXPECT_EQ(attributes.VendorSpecificID, 0x5A41u);
    EXPECT_EQ(attributes.NumberOfPorts, 1u);
    EXPECT_EQ(text(attributes.DriverName), "vaskfcoe");

    EXPECT_EQ(session.call<Callback::kHbaAdapterAttributes>({.brdno = 0}, attributes).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_BOARD});
  });
}

TEST(HbaApi, an_online_port_is_encoded_as_fc_hba_says) {
  in_process({}, [] {
    Session session;
    const auto [status, reply] = own(session, 3);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(text(reply.identity.node_wwn), "20:00:00:5a:41:56:03:10");
    EXPECT_EQ(text(reply.identity.port_wwn), "10:00:00:5a:41:56:03:10");
    EXPECT_EQ(reply.identity.fc_id, 0x020b00u);
    EXPECT_EQ(reply.identity.type, 5u);
    EXPECT_EQ(reply.identity.state, 2u);
    EXPECT_EQ(reply.identity.classes_of_service, 8u);
    EXPECT_EQ(std::string(reply.identity.supported_fc4_types, reply.identity.supported_fc4_types + 32),
              std::string({0, 0, 1}) + std::string(29, '\0'));
    EXPECT_EQ(std::memcmp(reply.identity.active_fc4_types, reply.identity.supported_fc4_types, 32), 0);
    EXPECT_EQ(text(reply.symbolic_name), "Kestar K5603-FC16 FV11.4.204.25 DV11.4.1193.4");
    EXPECT_EQ(text(reply.os_device_name), "vmhba3");
    EXPECT_EQ(reply.supported_speeds, 0x38u);
    EXPECT_EQ(reply.speed, 0x20u);
    EXPECT_EQ(reply.max_frame_size, 2048u);
    EXPECT_EQ(text(reply.fabric_name), "10:00:5a:41:20:00:b0:01");
    EXPECT_EQ(reply.discovered_ports, 2u);
  });
}

TEST(HbaApi, fc4_types_and_speeds_have_their_bits) {
  json scenario = small_scenario();
  scenario["adapters"][0]["fc4_types"] = {"FCP", "CT", "NVMe"};
  scenario["adapters"][0]["supported_speeds"] = {"1G", "2G", "4G", "8G", "10G", "16G", "32G"};
  scenario["adapters"][0]["speed"] = "1G";
  under_scenario(scenario, [] {
    Session session;
    const auto [status, reply] = own(session, 2);
    EXPECT_EQ(std::string(reply.identity.supported_fc4_types, reply.identity.supported_fc4_types + 32),
              std::string({0, 0, 1, 0, 0, 0, 1, 1}) + std::string(24, '\0'));
    EXPECT_EQ(reply.supported_speeds, 0x7Fu);
    EXPECT_EQ(reply.speed, 1u);
  });
  struct Row {
    const char* name;
    std::uint32_t bit;
  };
  for (const Row& row : {Row{"2G", 2}, Row{"4G", 8}, Row{"8G", 0x10}, Row{"10G", 4}, Row{"16G", 0x20}, Row{"32G", 0x40}}) {
    scenario["adapters"][0]["speed"] = row.name;
    under_scenario(scenario, [&] {
      Session session;
      EXPECT_EQ(own(session, 2).reply.speed, row.bit);
    });
  }
  scenario["adapters"][0]["speed"] = "auto";
  scenario["adapters"][0]["supported_speeds"] = {"10G", "8G"};
  under_scenario(scenario, [] {
    Session session;
    EXPECT_EQ(own(session, 2).reply.speed, 4u) << "10G is faster than 8G though its bit is lower";
  });
}

void expect_disconnected(const Answer& answer, std::uint32_t state) {
  EXPECT_EQ(answer.status, 0u);
  EXPECT_EQ(answer.reply.identity.state, state);
  EXPECT_EQ(answer.reply.identity.type, 1u);
  EXPECT_EQ(answer.reply.identity.fc_id, 0u);
  EXPECT_EQ(answer.reply.speed, 0u);
  EXPECT_NE(answer.reply.supported_speeds, 0u);
  EXPECT_EQ(text(answer.reply.fabric_name), "00:00:00:00:00:00:00:00");
  EXPECT_EQ(answer.reply.discovered_ports, 0u);
}

TEST(HbaApi, a_port_without_a_link_has_no_fc_id_and_discovers_nothing) {
  in_process({}, [] {
    Session session;
    expect_disconnected(own(session, 4), 6);
    expect_disconnected(indexed(session, 4, 0), 6);
    EXPECT_EQ(indexed(session, 4, 1).status, std::uint32_t{VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE});
    EXPECT_EQ(discovered(session, 4, 0).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
  });
}

TEST(HbaApi, a_failed_adapter_answers_attributes_but_refuses_a_refresh) {
  in_process({}, [] {
    Session session;
    expect_disconnected(own(session, 12), 7);
    HbaAdapterAttributes attributes;
    EXPECT_EQ(session.call<Callback::kHbaAdapterAttributes>({.brdno = 12}, attributes).status, 0u);
    EXPECT_EQ(session.call<Callback::kHbaRefreshInfo>({.brdno = 12}).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    EXPECT_EQ(discovered(session, 12, 0).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
  });
}

TEST(HbaApi, the_port_list_holds_the_own_port_the_virtual_ports_and_the_discovered_ports) {
  in_process({}, [] {
    Session session;
    const char* const expected[]{"10:00:00:5a:41:56:03:10", "10:01:00:5a:41:56:03:10", "10:02:00:5a:41:56:03:10",
                                 "50:5a:41:00:0c:00:10:03", "50:5a:41:00:0c:00:10:04"};
    const char* const os_names[]{"vmhba3", "vmhba3:V0", "vmhba3:V1", "vmhba3:C0:T0", "vmhba3:C0:T1"};
    const std::uint32_t discovered_counts[]{2, 2, 2, 0, 0};
    for (std::uint32_t index = 0; index < 5; ++index) {
      const auto [status, reply] = indexed(session, 3, index);
      EXPECT_EQ(status, 0u);
      EXPECT_EQ(text(reply.identity.port_wwn), expected[index]);
      EXPECT_EQ(text(reply.os_device_name), os_names[index]);
      EXPECT_EQ(reply.identity.state, 2u);
      EXPECT_EQ(reply.discovered_ports, discovered_counts[index]);
    }
    EXPECT_EQ(indexed(session, 3, 1).reply.identity.fc_id, 0x020b01u);
    for (const std::uint32_t index : {5u, 0xFFFFFFFFu}) {
      EXPECT_EQ(indexed(session, 3, index).status, std::uint32_t{VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE});
    }
  });
}

TEST(HbaApi, discovered_ports_are_the_fabrics_in_order) {
  in_process({}, [] {
    Session session;
    const auto [status, reply] = discovered(session, 1, 2);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(text(reply.identity.port_wwn), "50:5a:41:00:0c:00:20:01");
    EXPECT_EQ(reply.identity.fc_id, 0x010400u);
    EXPECT_EQ(reply.identity.type, 5u);
    EXPECT_EQ(text(reply.symbolic_name), "tape-1 drive 1");
    EXPECT_EQ(reply.speed, 0x10u);
    for (const std::uint32_t index : {3u, 0xFFFFFFFFu}) {
      EXPECT_EQ(discovered(session, 1, index).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
    }
  });
}

TEST(HbaApi, a_wwn_finds_own_virtual_and_discovered_ports_of_its_adapter_only) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t index : {0u, 2u, 4u}) {
      const auto listed = indexed(session, 3, index);
      const auto found = named(session, 3, listed.reply.identity.port_wwn);
      EXPECT_EQ(found.status, 0u);
      EXPECT_EQ(std::memcmp(&found.reply, &listed.reply, sizeof(found.reply)), 0);
      EXPECT_EQ(named(session, 1, listed.reply.identity.port_wwn).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
    }
    const HbaWwn node = own(session, 3).reply.identity.node_wwn;
    EXPECT_EQ(named(session, 3, node).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT}) << "a node WWN names no port";
  });
}

TEST(HbaApi, an_old_generation_makes_list_queries_stale_until_the_next_refresh) {
  json scenario = small_scenario();
  scenario["adapters"][0]["generation"] = 7;
  under_scenario(scenario, [] {
    Session session;
    for (const auto& [status, reply] :
         {indexed(session, 2, 0), indexed(session, 2, 99), discovered(session, 2, 0), discovered(session, 2, 0, 8)}) {
      EXPECT_EQ(status, 0u);
      EXPECT_EQ(reply.identity.fc_id, kStale);
    }
    EXPECT_EQ(own(session, 2).reply.identity.fc_id, 0x010a00u) << "not a list query";

    const dfc_mgmt_hdr refreshed = session.call<Callback::kHbaRefreshInfo>({.brdno = 2});
    EXPECT_EQ(refreshed.arg4, 7u);
    EXPECT_EQ(discovered(session, 2, 0, refreshed.arg4).reply.identity.fc_id, 0x010200u);
    EXPECT_EQ(indexed(session, 2, 1, refreshed.arg4).reply.identity.fc_id, 0x010200u);
  });
}

TEST(HbaApi, going_offline_loses_the_discovered_ports_and_makes_old_queries_stale) {
  in_process({}, [] {
    Session session;
    const HbaWwn remote = discovered(session, 1, 0).reply.identity.port_wwn;
    session.call<Callback::kSetDiag>({.brdno = 1, .arg6 = 0x12});
    EXPECT_EQ(discovered(session, 1, 0).reply.identity.fc_id, kStale);
    EXPECT_EQ(discovered(session, 1, 0, 1).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
    EXPECT_EQ(named(session, 1, remote).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_PORT});
    expect_disconnected(own(session, 1), 3);
  });
}

}  // namespace
