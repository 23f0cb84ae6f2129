// Board discovery and diagnostic states.
#include <vector>

#include "sim_process.h"

namespace {

dfc_mgmt_hdr set_diag(Session& session, std::uint32_t board, std::uint32_t command) {
  return session.call<Callback::kSetDiag>({.brdno = board, .arg6 = command});
}

// Sub-commands.
constexpr std::uint32_t kReport = 0x10;
constexpr std::uint32_t kOnline = 0x11;
constexpr std::uint32_t kOffline = 0x12;
constexpr std::uint32_t kDiagnostic = 0x13;
constexpr std::uint32_t kRestart = 0x14;

std::uint32_t generation(Session& session, std::uint32_t board) {
  return session.call<Callback::kHbaRefreshInfo>({.brdno = board}).arg4;
}

std::uint32_t port_state(Session& session, std::uint32_t board) {
  vaskdfc::PortAttributesReply reply;
  session.call<Callback::kHbaPortAttributes>({.brdno = board}, reply);
  return reply.identity.state;
}

TEST(Board, the_built_in_scenario_has_adapters_of_every_kind_and_a_foreign_board) {
  in_process({}, [] {
    Session session;
    std::map<std::uint32_t, std::uint32_t> found;
    for (std::uint32_t board = 0; board < 32; ++board) {
      vaskdfc::dfc_initbrds_rsp reply{};
      const dfc_mgmt_hdr header = session.call<Callback::kInitBrds>({.brdno = board}, reply);
      if (header.status != 0) {
        EXPECT_EQ(header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_BOARD});
        EXPECT_EQ(reply.pci_id, 0u);
        continue;
      }
      found[board] = reply.pci_id;
      EXPECT_EQ(reply.condition, board == 12 ? 0xFFFFFFFF : 0u);
    }
    const std::map<std::uint32_t, std::uint32_t> expected{{1, 0x56025A41}, {3, 0x56035A41}, {4, 0x56035A41},
                                                          {6, 0x57005A41}, {7, 0x56015A41}, {12, 0x56015A41}};
    EXPECT_EQ(found, expected);
  });
}

TEST(Board, discovery_describes_an_adapter) {
  json scenario = small_scenario();
  scenario["adapters"][0]["pci_address"] = "0000:3b:00.1";
  scenario["adapters"][0]["protocol"] = "fcoe";
  scenario["adapters"][0]["virtual_ports"] =
      json::parse(R"([{"wwnn": "20:01:00:00:00:00:00:02", "wwpn": "10:01:00:00:00:00:00:02", "fc_id": "0x010a01"}])");
  under_scenario(scenario, [] {
    Session session;
    vaskdfc::dfc_initbrds_rsp reply;
    std::memset(&reply, 0xA5, sizeof(reply));
    session.call<Callback::kInitBrds>({.brdno = 2}, reply);
    EXPECT_EQ(reply.pci_id, 0x56035A41u);
    EXPECT_EQ(reply.word_4, 4u);
    EXPECT_EQ(reply.word_8, 1u);
    EXPECT_EQ(reply.half_12, 2u);
    EXPECT_EQ(reply.word_16, 0x38u);
    EXPECT_EQ(reply.condition, 0u);
    EXPECT_EQ(text(reply.bytes_24), "0000:3b:00.1");
    EXPECT_EQ(text(reply.bytes_40), "Kestar K5603-FC16");
    EXPECT_EQ(std::vector(reply.bytes_72, reply.bytes_72 + 8), (std::vector<std::uint8_t>{0x10, 0, 0, 0, 0, 0, 0, 2}));
    EXPECT_EQ(reply.byte_80, 1u);
  });
}

TEST(Board, calls_for_a_board_that_is_not_there_fail) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t board : {0u, 6u, 31u, 32u, 0xFFFFFFFFu}) {
      EXPECT_EQ(set_diag(session, board, kReport).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_BOARD}) << board;
    }
  });
}

TEST(Board, diagnostic_commands_switch_the_adapter_and_its_port) {
  in_process({}, [] {
    Session session;
    struct Step {
      std::uint32_t command, state, port_state;
    };
    for (const Step& step : {Step{kReport, 1, 2}, Step{kOffline, 3, 3}, Step{kReport, 3, 3}, Step{kDiagnostic, 4, 5},
                             Step{kOnline, 1, 2}, Step{kDiagnostic, 4, 5}, Step{kRestart, 1, 2}}) {
      const dfc_mgmt_hdr header = set_diag(session, 1, step.command);
      EXPECT_EQ(header.status, 0u);
      EXPECT_EQ(header.arg4, step.state) << std::hex << step.command;
      EXPECT_EQ(port_state(session, 1), step.port_state) << std::hex << step.command;
    }
    EXPECT_EQ(set_diag(session, 3, kReport).arg4, 1u) << "another adapter";
  });
}

TEST(Board, unknown_diagnostic_commands_are_refused_and_change_nothing) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t command : {0u, 0xFu, 0x15u, 0xFFFFFFFFu}) {
      EXPECT_EQ(set_diag(session, 1, command).status, std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
    }
    EXPECT_EQ(set_diag(session, 1, kReport).arg4, 1u);
  });
}

TEST(Board, a_switch_that_changes_the_link_makes_a_new_generation) {
  in_process({}, [] {
    Session session;
    struct Step {
      std::uint32_t command, generation;
    };
    for (const Step& step : {Step{kReport, 0}, Step{kOnline, 0}, Step{kOffline, 1}, Step{kOffline, 1}, Step{kDiagnostic, 1},
                             Step{kOnline, 2}, Step{kRestart, 3}}) {
      set_diag(session, 1, step.command);
      EXPECT_EQ(generation(session, 1), step.generation) << std::hex << step.command;
    }
  });
}

TEST(Board, a_failed_adapter_reports_that_it_is_not_ready_and_cannot_be_switched) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(set_diag(session, 12, kReport).arg4, 2u);
    for (const std::uint32_t command : {kOnline, kOffline, kDiagnostic, kRestart}) {
      EXPECT_EQ(set_diag(session, 12, command).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    }
    EXPECT_EQ(set_diag(session, 12, kReport).arg4, 2u);
  });
}

TEST(Board, a_starting_adapter_comes_up_after_so_many_reports_and_again_after_a_restart) {
  json scenario = small_scenario();
  scenario["adapters"][0]["not_ready_reports"] = 2;
  under_scenario(scenario, [] {
    Session session;
    EXPECT_EQ(port_state(session, 2), 3u);
    EXPECT_EQ(set_diag(session, 2, kOffline).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    EXPECT_EQ(set_diag(session, 2, kReport).arg4, 2u);
    EXPECT_EQ(set_diag(session, 2, kReport).arg4, 2u);
    EXPECT_EQ(set_diag(session, 2, kReport).arg4, 1u);
    EXPECT_EQ(port_state(session, 2), 2u);

    EXPECT_EQ(set_diag(session, 2, kRestart).arg4, 2u);
    EXPECT_EQ(set_diag(session, 2, kReport).arg4, 2u);
    EXPECT_EQ(set_diag(session, 2, kReport).arg4, 2u);
    EXPECT_EQ(set_diag(session, 2, kReport).arg4, 1u);
  });
}

}  // namespace
