// Faults that a scenario injects.
#include <algorithm>
#include <chrono>
#include <vector>

#include "sim_process.h"

namespace {

json with_faults(const char* faults) {
  json scenario = small_scenario();
  scenario["faults"] = json::parse(faults);
  return scenario;
}

// Platform and driver status of state reports, in order.
using Statuses = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

Statuses reports(Session& session, std::size_t count, std::uint32_t board = 2) {
  Statuses statuses;
  std::generate_n(std::back_inserter(statuses), count, [&] {
    dfc_mgmt_hdr header{.brdno = board, .arg6 = 0x10};
    const std::uint32_t platform = session.invoke<Callback::kSetDiag>(header);
    return std::pair{platform, header.status};
  });
  return statuses;
}

TEST(Faults, a_driver_status_hits_the_calls_that_it_names) {
  under_scenario(with_faults(R"([{"callback": "TREL_MGMT_SETDIAG", "call": 2, "times": 2, "driver_status": "0x0BAD0039"}])"), [] {
    Session session;
    EXPECT_EQ(reports(session, 5), (Statuses{{0, 0}, {0, VMKMGMT_SIM_DRIVER_BUSY}, {0, VMKMGMT_SIM_DRIVER_BUSY}, {0, 0}, {0, 0}}));
  });
}

TEST(Faults, without_a_number_of_times_a_fault_lasts) {
  under_scenario(with_faults(R"([{"callback": 123, "call": 2, "driver_status": 5}])"), [] {
    Session session;
    EXPECT_EQ(reports(session, 4), (Statuses{{0, 0}, {0, 5}, {0, 5}, {0, 5}}));
  });
}

TEST(Faults, a_platform_status_leaves_the_header_as_it_was_sent) {
  under_scenario(with_faults(R"([{"callback": 123, "platform_status": "0xdeadbeef"}])"), [] {
    Session session;
    dfc_mgmt_hdr header{.brdno = 2, .arg6 = 0x10};
    EXPECT_EQ(session.invoke<Callback::kSetDiag>(header), 0xDEADBEEF);
    EXPECT_EQ(header.arg4, 0u);
    EXPECT_EQ(header.status, 0u);
  });
}

TEST(Faults, both_statuses_can_fail_at_once) {
  under_scenario(with_faults(R"([{"callback": 320, "platform_status": 1, "driver_status": "0x0BAD005D"}])"), [] {
    Session session;
    dfc_mgmt_hdr header{.brdno = 2};
    vaskdfc::PortAttributesReply reply{};
    EXPECT_EQ(session.invoke<Callback::kHbaIndexPortAttributes>(header, reply), 1u);
    EXPECT_EQ(header.status, 0x0BAD005Du);
    EXPECT_EQ(reply.identity.fc_id, 0u) << "the driver was not asked";
  });
}

TEST(Faults, a_fault_of_one_board_neither_hits_nor_counts_calls_for_another) {
  under_scenario(with_faults(R"([{"callback": 123, "board": 2, "call": 2, "times": 1, "driver_status": 5}])"), [] {
    Session session;
    EXPECT_EQ(reports(session, 1), (Statuses{{0, 0}}));
    EXPECT_EQ(reports(session, 1, 3), (Statuses{{0, VMKMGMT_SIM_DRIVER_NO_SUCH_BOARD}}));
    EXPECT_EQ(reports(session, 2), (Statuses{{0, 5}, {0, 0}}));
  });
}

TEST(Faults, header_words_go_on_top_of_the_drivers_answer) {
  under_scenario(
      with_faults(R"([{"callback": 123, "header": {"arg1": 1, "arg2": 2, "arg3": 3, "arg5": 5, "arg7": "0xFFFFFFFF"}}])"), [] {
        Session session;
        const dfc_mgmt_hdr header = session.call<Callback::kSetDiag>({.brdno = 2, .arg6 = 0x10});
        EXPECT_EQ(header.arg1, 1u);
        EXPECT_EQ(header.arg2, 2u);
        EXPECT_EQ(header.arg3, 3u);
        EXPECT_EQ(header.arg4, 1u) << "the driver's own";
        EXPECT_EQ(header.arg5, 5u);
        EXPECT_EQ(header.arg6, 0x10u);
        EXPECT_EQ(header.arg7, 0xFFFFFFFFu);
      });
}

TEST(Faults, of_two_faults_of_one_call_the_later_wins_where_they_disagree) {
  under_scenario(with_faults(R"([{"callback": 123, "driver_status": 5, "header": {"arg4": 4, "arg5": 5}},
                                 {"callback": 123, "driver_status": 6, "header": {"arg4": 44}}])"),
                 [] {
                   Session session;
                   const dfc_mgmt_hdr header = session.call<Callback::kSetDiag>({.brdno = 2, .arg6 = 0x10});
                   EXPECT_EQ(header.status, 6u);
                   EXPECT_EQ(header.arg4, 44u);
                   EXPECT_EQ(header.arg5, 5u);
                 });
}

std::vector<std::uint8_t> garbage_of_two_calls(int seed) {
  const TemporaryFolder folder;
  json scenario = small_scenario();
  scenario["faults"] = {{{"callback", "TREL_MGMT_HBA_WWPNPORTATTRIBUTES"}, {"garbage_seed", seed}}};
  const std::string output = folder.path("garbage");
  in_process({{VMKMGMT_SIM_SCENARIO, folder.write("scenario.json", scenario.dump())}}, [&] {
    Session session;
    std::array<vaskdfc::PortAttributesReply, 2> replies{};
    const vaskdfc::WwnKey key{.wwn = {{0x10, 0, 0, 0, 0, 0, 0, 2}}};
    const vaskdfc::WwnKey sent = key;
    for (auto& reply : replies) EXPECT_EQ(session.call<Callback::kHbaWwpnPortAttributes>({.brdno = 2}, reply, key).status, 0u);
    EXPECT_EQ(std::memcmp(&key, &sent, sizeof(key)), 0) << "the driver does not write an in payload";
    folder.write("garbage", std::string(reinterpret_cast<const char*>(replies.data()), sizeof(replies)));
  });
  const std::string bytes = read_file(output);
  return {bytes.begin(), bytes.end()};
}

TEST(Faults, garbage_fills_what_the_driver_writes_and_depends_on_the_seed_and_the_call_alone) {
  const auto first = garbage_of_two_calls(1);
  ASSERT_EQ(first.size(), 2u * 490);
  EXPECT_EQ(first, garbage_of_two_calls(1));
  EXPECT_NE(first, garbage_of_two_calls(2));
  EXPECT_FALSE(std::equal(first.begin(), first.begin() + 490, first.begin() + 490)) << "each call has bytes of its own";
  EXPECT_GT(std::ranges::count_if(first, [](std::uint8_t byte) { return byte != 0; }), 900);
  EXPECT_NE(std::vector(first.end() - 490 + 480, first.end()), std::vector<std::uint8_t>(10)) << "up to the end";
}

TEST(Faults, a_delay_makes_a_call_take_longer) {
  under_scenario(with_faults(R"([{"callback": 123, "times": 1, "delay_ms": 20}])"), [] {
    Session session;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(reports(session, 1), (Statuses{{0, 0}}));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
  });
}

TEST(Faults, a_fault_may_answer_for_a_board_that_is_not_there) {
  under_scenario(with_faults(R"([{"callback": "TREL_MGMT_INITBRDS", "board": 9, "driver_status": 0, "garbage_seed": 3}])"), [] {
    Session session;
    vaskdfc::dfc_initbrds_rsp reply{};
    EXPECT_EQ(session.call<Callback::kInitBrds>({.brdno = 9}, reply).status, 0u);
    EXPECT_NE(reply.pci_id, 0u);
  });
}

}  // namespace
