// Board discovery and diagnostic states.
#include <algorithm>

#include "driver/driver.h"
#include "families/families.h"
#include "families/restart.h"
#include "families/text.h"

namespace simulator {
namespace {

using vaskdfc::dfc_initbrds_rsp;

std::uint32_t pci_id(const scenario::PciIdentity& pci) { return std::uint32_t{pci.device} << 16 | pci.vendor; }

// What the reply's descriptive fields hold is this driver's choice.
void describe(const Adapter& adapter, dfc_initbrds_rsp& reply) {
  const scenario::Adapter& card = adapter.card();
  reply.pci_id = pci_id(card.pci);
  reply.word_4 = card.sli_mode;
  reply.word_8 = static_cast<std::uint32_t>(card.protocol);
  reply.half_12 = static_cast<std::uint16_t>(card.board);
  reply.word_16 = card.port.supported_speeds;
  reply.condition = card.failed ? 0xFFFFFFFF : 0;
  set_text(reply.bytes_24, card.pci.address);
  set_text(reply.bytes_40, card.model);
  std::ranges::copy(card.port.wwpn.wwn, reply.bytes_72);
  reply.byte_80 = static_cast<std::uint8_t>(std::min<std::size_t>(card.virtual_ports.size(), 255));
}

DriverStatus initialise_board(Call& call, dfc_initbrds_rsp& reply) {
  const std::uint32_t board = call.header.brdno;
  if (const Adapter* const adapter = call.driver.find_adapter(board)) {
    reply = {};
    describe(*adapter, reply);
    return VMKMGMT_SIM_DRIVER_OK;
  }
  const auto& foreign_boards = call.driver.scenario().foreign_boards;
  const auto foreign = std::ranges::find(foreign_boards, board, &scenario::ForeignBoard::board);
  if (foreign == foreign_boards.end()) return VMKMGMT_SIM_DRIVER_NO_SUCH_BOARD;

  reply = {};
  reply.pci_id = pci_id(foreign->pci);
  set_text(reply.bytes_24, foreign->pci.address);
  return VMKMGMT_SIM_DRIVER_OK;
}

// Sub-commands in arg6.
enum class DiagnosticCommand : std::uint32_t {
  kReport = 0x10,
  kOnline = 0x11,
  kOffline = 0x12,
  kDiagnostic = 0x13,
  kRestart = 0x14
};

bool is_ready(const Adapter& adapter, const AdapterState& state) { return !adapter.card().failed && state.not_ready_reports == 0; }

std::uint32_t reported_state(const Adapter& adapter, const AdapterState& state) {
  return static_cast<std::uint32_t>(is_ready(adapter, state) ? state.diagnostic_state : DiagnosticState::kNotReady);
}

// A starting adapter comes up while it is watched: each report is one step.
DriverStatus report_state(BoardCall& call) {
  AdapterState state = call.adapter.state();
  call.header.arg4 = reported_state(call.adapter, state);
  if (state.not_ready_reports > 0) call.adapter.change([](AdapterState& changed) { --changed.not_ready_reports; });
  return VMKMGMT_SIM_DRIVER_OK;
}

void switch_to(AdapterState& state, DiagnosticState wanted) {
  const bool was_up = holds_link_up(state);
  state.diagnostic_state = wanted;
  if (holds_link_up(state) != was_up) ++state.generation;
}

DiagnosticState wanted_by(DiagnosticCommand command) {
  if (command == DiagnosticCommand::kOnline) return DiagnosticState::kOnline;
  return command == DiagnosticCommand::kOffline ? DiagnosticState::kOffline : DiagnosticState::kDiagnostic;
}

DriverStatus change_state(BoardCall& call, DiagnosticCommand command) {
  const AdapterState before = call.adapter.state();
  if (!is_ready(call.adapter, before)) return VMKMGMT_SIM_DRIVER_NOT_READY;

  const bool restarts = command == DiagnosticCommand::kRestart;
  const AdapterState state =
      restarts ? restart(call) : change_link(call.adapter, [&](AdapterState& changed) { switch_to(changed, wanted_by(command)); });
  call.header.arg4 = reported_state(call.adapter, state);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus set_diagnostic_state(BoardCall& call) {
  const auto command = static_cast<DiagnosticCommand>(call.header.arg6);
  if (command < DiagnosticCommand::kReport || command > DiagnosticCommand::kRestart) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  if (command == DiagnosticCommand::kReport) return report_state(call);
  return change_state(call, command);
}

}  // namespace

void register_board(Door& door) {
  door.on<Callback::kInitBrds>(initialise_board);
  door.on<Callback::kSetDiag>(set_diagnostic_state);
}

}  // namespace simulator
