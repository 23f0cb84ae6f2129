// Loopback: a port sends to itself, within the adapter or through a plug.
#include <algorithm>
#include <span>

#include "driver/driver.h"
#include "families/families.h"
#include "families/interface_generation.h"
#include "families/restart.h"

namespace simulator {
namespace {

using vaskdfc::LoopbackData;

DriverStatus ready(const Adapter& adapter, const AdapterState& state) {
  return adapter.card().failed || state.not_ready_reports > 0 ? VMKMGMT_SIM_DRIVER_NOT_READY : VMKMGMT_SIM_DRIVER_OK;
}

void switch_to(Adapter& adapter, LoopbackMode mode) {
  change_link(adapter, [=](AdapterState& state) {
    if (state.diagnostic_state == DiagnosticState::kOnline) ++state.generation;
    state.loopback = mode;
  });
}

// Nothing here takes the time that the last argument word allows.
DriverStatus configure(BoardCall& call) {
  const auto mode = static_cast<LoopbackMode>(call.header.arg5);
  if (mode != LoopbackMode::kInternal && mode != LoopbackMode::kExternal) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  const AdapterState state = call.adapter.state();
  if (const DriverStatus status = ready(call.adapter, state); status != VMKMGMT_SIM_DRIVER_OK) return status;
  if (state.loopback == mode) return VMKMGMT_SIM_DRIVER_OK;
  if (state.loopback != LoopbackMode::kNone) return VMKMGMT_SIM_DRIVER_WRONG_MODE;

  switch_to(call.adapter, mode);
  return VMKMGMT_SIM_DRIVER_OK;
}

// Spreads the errors over the data, one bit each.
void disturb(std::span<std::uint8_t> data, std::uint32_t bit_errors) {
  const std::uint64_t bits = data.size() * 8;
  const std::uint64_t errors = std::min<std::uint64_t>(bit_errors, bits);
  for (std::uint64_t i = 0; i < errors; ++i) {
    const std::uint64_t bit = i * bits / errors;
    data[static_cast<std::size_t>(bit / 8)] ^= static_cast<std::uint8_t>(1 << bit % 8);
  }
}

DriverStatus run(BoardCall& call, const LoopbackData& sent, LoopbackData& received) {
  const scenario::Loopback& loop = call.adapter.card().loopback;
  const AdapterState state = call.adapter.state();
  const std::uint32_t bytes = call.header.arg2;
  call.header.arg3 = 0;
  if (const DriverStatus status = ready(call.adapter, state); status != VMKMGMT_SIM_DRIVER_OK) return status;
  if (state.loopback == LoopbackMode::kNone) return VMKMGMT_SIM_DRIVER_WRONG_MODE;
  if (bytes > sizeof(sent.bytes)) return VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;

  IoCounters& io = call.adapter.io();
  ++io.loopback_tests;
  const bool is_open = state.loopback == LoopbackMode::kExternal && !loop.plug;
  if (is_open || (loop.bit_errors > 0 && bytes > 0)) ++io.loopback_failures;
  if (is_open) return VMKMGMT_SIM_DRIVER_LOOP_OPEN;

  std::copy_n(sent.bytes, bytes, received.bytes);
  disturb(std::span(received.bytes).first(bytes), loop.bit_errors);
  call.header.arg3 = bytes;
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus end(BoardCall& call) {
  if (const DriverStatus status = newer_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const AdapterState state = call.adapter.state();
  if (state.loopback == LoopbackMode::kNone) return VMKMGMT_SIM_DRIVER_WRONG_MODE;
  switch_to(call.adapter, LoopbackMode::kNone);
  return VMKMGMT_SIM_DRIVER_OK;
}

// Initialises the loop, which takes the port out of loopback; a port that is up tells its applications.
DriverStatus initialise_loop(BoardCall& call) {
  Adapter& adapter = call.adapter;
  if (const DriverStatus status = older_interface(adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const AdapterState state = adapter.state();
  if (const DriverStatus status = ready(adapter, state); status != VMKMGMT_SIM_DRIVER_OK) return status;
  if (state.loopback == LoopbackMode::kNone && !holds_link_up(state)) return VMKMGMT_SIM_DRIVER_WRONG_MODE;

  switch_to(adapter, LoopbackMode::kNone);
  if (adapter.port_state(state) != fc_hba::PortState::kOnline) return VMKMGMT_SIM_DRIVER_OK;
  adapter.events().push({.code = static_cast<std::uint32_t>(scenario::Event::Code::kLip), .fc_id = adapter.card().port.fc_id});
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_loopback(Door& door) {
  door.on<Callback::kLoopbackMode>(configure);
  door.on<Callback::kLoopbackTest>(run);
  door.on<Callback::kDiagModeEnd>(end);
  door.on<Callback::kLip>(initialise_loop);
}

}  // namespace simulator
