// The link, the nodes that an adapter knows, its I/O and its vital product data.
#include "vaskdfc/link.h"

#include "record_fields.h"
#include "scsi_exchange.h"

namespace {

dfc_link_info link_of(Session& session, std::uint32_t board) {
  auto link = garbage<dfc_link_info>();
  EXPECT_EQ(session.call<Callback::kLinkInfo>({.brdno = board}, link).status, 0u);
  return link;
}

TEST(Link, of_an_adapter_in_a_fabric) {
  in_process({}, [] {
    Session session;
    const dfc_link_info link = link_of(session, 1);
    EXPECT_EQ(word(link, 0), 2u) << "online";
    EXPECT_EQ(word(link, 4), 2u) << "fabric";
    EXPECT_EQ(word(link, 8), 0x010a00u);
    EXPECT_EQ(word(link, 12), 10000u);
    EXPECT_EQ(word(link, 16), 0u);
    EXPECT_EQ(at<std::uint8_t>(link, 20), 0u);
    EXPECT_EQ(at<std::uint8_t>(link, 21), 1u) << "FCoE";
    EXPECT_EQ(text(at<HbaWwn>(link, 24)), "10:00:00:5a:41:56:02:01");
    EXPECT_EQ(text(at<HbaWwn>(link, 32)), "20:00:00:5a:41:56:02:01");
    EXPECT_EQ(text(at<HbaWwn>(link, 40)), "10:00:5a:41:20:00:a0:01");
    EXPECT_EQ(text_at(link, 48), "fabric-a");
    for (std::size_t offset = 80; offset < 152; ++offset) EXPECT_EQ(at<std::uint8_t>(link, offset), 0u) << offset;
    EXPECT_EQ(word(link, 152), 0x4u);
    EXPECT_EQ(word(link, 156), 0x4u);
    EXPECT_EQ(word(link, 160), 2048u);
    EXPECT_EQ(word(link, 164), 3u);
  });
}

TEST(Link, that_is_down_has_no_address_and_no_speed) {
  in_process({}, [] {
    Session session;
    session.call<Callback::kSetDiag>({.brdno = 1, .arg6 = 0x12});
    for (const auto& [board, state, generation] : {std::tuple{4u, 6u, 0u}, std::tuple{12u, 7u, 0u}, std::tuple{1u, 3u, 1u}}) {
      const dfc_link_info link = link_of(session, board);
      EXPECT_EQ(word(link, 0), state);
      for (const std::size_t offset : {4u, 8u, 12u, 40u, 44u, 48u, 156u, 164u}) EXPECT_EQ(word(link, offset), 0u) << offset;
      EXPECT_EQ(word(link, 16), generation);
      EXPECT_NE(word(link, 152), 0u);
    }
  });
}

TEST(Link, tells_what_the_parameters_ask_for) {
  json scenario = small_scenario();
  scenario["adapters"][0]["parameters"] = {{"topology", 2}, {"link_speed", 16}};
  under_scenario(scenario, [] {
    Session session;
    EXPECT_EQ(at<std::uint8_t>(link_of(session, 2), 22), 2u);
    EXPECT_EQ(at<std::uint8_t>(link_of(session, 2), 23), 16u);
  });
}

TEST(Nodes, are_the_discovered_ports) {
  in_process({}, [] {
    Session session;
    auto table = garbage<dfc_node_table>();
    const dfc_mgmt_hdr header = session.call<Callback::kNodeInfo>({.brdno = 1, .arg2 = sizeof(table)}, table);
    EXPECT_EQ(header.status, 0u);
    EXPECT_EQ(header.arg3, 3 * sizeof(dfc_node_info));
    const dfc_node_info& array = table.entries[1];
    EXPECT_EQ(array.half_0, 1u);
    EXPECT_EQ(array.half_2, 3u);
    EXPECT_EQ(array.word_4, 0x010300u);
    EXPECT_EQ(text(array.name_8), "50:5a:41:00:0c:00:10:02");
    EXPECT_EQ(text(array.name_16), "50:5a:41:00:0c:00:10:00");
    EXPECT_EQ(array.word_24, 3u);
    EXPECT_EQ(table.entries[2].half_2, 1u) << "a tape drive without units";
    EXPECT_EQ(table.entries[3].word_4, 0u);

    const dfc_mgmt_hdr tight = session.call<Callback::kNodeInfo>({.brdno = 1, .arg2 = header.arg3 - 1}, table);
    EXPECT_EQ(tight.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_ROOM});
    EXPECT_EQ(tight.arg3, header.arg3);
    EXPECT_EQ(session.call<Callback::kNodeInfo>({.brdno = 4}, table).arg3, 0u) << "no cable";
    EXPECT_EQ(session.call<Callback::kNodeInfo>({.brdno = 12, .arg2 = sizeof(table)}, table).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
  });
}

TEST(Nodes, that_do_not_serve_fcp_say_so) {
  json scenario = small_scenario();
  scenario["fabrics"][0]["ports"][0]["fc4_types"] = {"NVMe"};
  under_scenario(scenario, [] {
    Session session;
    dfc_node_table table;
    session.call<Callback::kNodeInfo>({.brdno = 2, .arg2 = sizeof(table)}, table);
    EXPECT_EQ(table.entries[0].half_2, 0u);
  });
}

dfc_io_info io_of(Session& session, std::uint32_t board) {
  auto io = garbage<dfc_io_info>();
  EXPECT_EQ(session.call<Callback::kIoInfo>({.brdno = board}, io).status, 0u);
  return io;
}

TEST(InputOutput, counts_what_is_sent_to_units) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(send(session, {.lun = {}, .cdb = {0x12, 0, 0, 0, 36, 0}, .room = 36, .data = {}}).data.size(), 36u);
    EXPECT_FALSE(send(session, {.lun = {}, .cdb = {0xFF}, .data = {}}).sense.empty());
    EXPECT_TRUE(send(session, {.lun = {}, .cdb = {0x2A, 0, 0, 0, 0, 0, 0, 0, 1}, .data = Bytes(512)}).sense.empty());
    dfc_io_info io = io_of(session, 1);
    EXPECT_EQ(io.counters[0], 3u);
    EXPECT_EQ(io.counters[1], 1u);
    EXPECT_EQ(at<std::uint64_t>(io, 8), 36u);
    EXPECT_EQ(at<std::uint64_t>(io, 16), 512u);
    session.call<Callback::kSetDiag>({.brdno = 1, .arg6 = 0x14});
    EXPECT_EQ(io_of(session, 1).counters[0], 0u);
    EXPECT_EQ(session.call<Callback::kIoInfo>({.brdno = 12}, io).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
  });
}

TEST(InputOutput, has_the_ports_counters) {
  json scenario = small_scenario();
  scenario["clock"] = {{"step_ms", 1000}};
  scenario["adapters"][0]["counters"] = json::parse(R"({"tx_frames": {"start": 8589934592, "per_second": 3},
      "rx_frames": {"start": 1, "per_second": 0}, "tx_words": {"start": 2, "per_second": 0},
      "rx_words": {"start": 3, "per_second": 0}, "link_failures": {"start": 4}, "losses_of_sync": {"start": 5},
      "losses_of_signal": {"start": 6}, "protocol_errors": {"start": 7}, "invalid_words": {"start": 8},
      "invalid_crcs": {"unsupported": true}})");
  under_scenario(scenario, [] {
    Session session;
    const dfc_io_info io = io_of(session, 2);
    EXPECT_EQ(at<std::uint64_t>(io, 32), 8589934595u);
    for (const std::uint32_t value : {1u, 2u, 3u}) EXPECT_EQ(at<std::uint64_t>(io, 32 + 8 * value), value);
    for (const std::uint32_t value : {4u, 5u, 6u, 7u, 8u}) EXPECT_EQ(word(io, 64 + 4 * (value - 4)), value);
    EXPECT_EQ(word(io, 84), 0xFFFFFFFFu);
    EXPECT_EQ(word(io, 88), 1u);
    EXPECT_EQ(word(io, 92), 0u);
  });
}

TEST(VitalProductData, is_chosen_by_a_selector) {
  in_process({}, [] {
    Session session;
    const std::vector<std::array<std::string, 3>> expected{
        {"Kestar K5602-CNA 10 Gb/s FCoE converged network adapter, PCIe", "K5602-CNA", "ZK56020A1174"},
        {"ZAV", "C2", "2016-31"},
        {"11.4.204.25", "11.4.204.20", "0000000b"}};
    for (std::uint32_t selector = 0; selector < expected.size(); ++selector) {
      auto vpd = garbage<dfc_vpd_info>();
      EXPECT_EQ(session.call<Callback::kGetVpd>({.brdno = 1, .arg6 = selector}, vpd).status, 0u);
      EXPECT_EQ(vpd.selector, selector);
      EXPECT_EQ((std::array{text(vpd.text_4), text(vpd.text_260), text(vpd.text_340)}), expected[selector]);
      EXPECT_EQ(std::vector(vpd.words_596, vpd.words_596 + 5), (std::vector<std::uint32_t>{0x5A41, 0x5602, 4, 1, 3}));
    }
    auto untouched = garbage<dfc_vpd_info>();
    for (const std::uint32_t selector : {3u, 0xFFFFFFFFu}) {
      EXPECT_EQ(session.call<Callback::kGetVpd>({.brdno = 1, .arg6 = selector}, untouched).status,
                std::uint32_t{VMKMGMT_SIM_DRIVER_NO_VPD});
    }
    EXPECT_EQ(session.call<Callback::kGetVpd>({.brdno = 12}, untouched).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    EXPECT_EQ(untouched.selector, 0xA5A5A5A5u);
  });
}

TEST(VitalProductData, is_made_from_the_model_where_the_scenario_is_silent) {
  under_scenario(small_scenario(), [] {
    Session session;
    auto vpd = garbage<dfc_vpd_info>();
    session.call<Callback::kGetVpd>({.brdno = 2}, vpd);
    EXPECT_EQ(text(vpd.text_4), "Kestar K5603-FC16");
    EXPECT_EQ(text(vpd.text_260), "K5603-FC16");
    session.call<Callback::kGetVpd>({.brdno = 2, .arg6 = 1}, vpd);
    EXPECT_EQ(text(vpd.text_260), "A");
    EXPECT_EQ(text(vpd.text_340), "");
  });
}

}  // namespace
