#include "families/restart.h"

namespace simulator {
namespace {

// Where there is no cable the link neither goes nor comes.
void tell_link(Adapter& adapter, scenario::Event::Code code) {
  if (!adapter.card().fabric) return;
  adapter.events().push({.code = static_cast<std::uint32_t>(code), .fc_id = adapter.card().port.fc_id});
}

}  // namespace

bool holds_link_up(const AdapterState& state) {
  return state.diagnostic_state == DiagnosticState::kOnline && state.loopback == LoopbackMode::kNone;
}

AdapterState change_link(Adapter& adapter, const std::function<void(AdapterState&)>& changes) {
  const bool was_up = holds_link_up(adapter.state());
  AdapterState state = adapter.change(changes);
  const bool is_up = holds_link_up(state);
  if (was_up && !is_up) tell_link(adapter, scenario::Event::Code::kLinkDown);
  if (is_up && !was_up) tell_link(adapter, scenario::Event::Code::kLinkUp);
  return state;
}

AdapterState restart(BoardCall& call) {
  Adapter& adapter = call.adapter;
  const bool was_up = holds_link_up(adapter.state());
  adapter.parameters().restart();
  AdapterState state = adapter.change([&](AdapterState& changed) {
    changed.diagnostic_state = DiagnosticState::kOnline;
    changed.loopback = LoopbackMode::kNone;
    changed.not_ready_reports = adapter.card().not_ready_reports;
    ++changed.generation;
  });
  if (was_up) tell_link(adapter, scenario::Event::Code::kLinkDown);
  tell_link(adapter, scenario::Event::Code::kLinkUp);
  adapter.restart_counters(call.driver.clock().now());
  return state;
}

}  // namespace simulator
