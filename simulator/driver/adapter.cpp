#include "driver/adapter.h"

#include "driver/stored_name.h"

namespace simulator {

Adapter::Adapter(const scenario::Adapter& card, StateStore& store)
    : card_(card),
      store_(store),
      name_(stored_name("adapter", card, "json")),
      regions_(card, store),
      parameters_(card, store),
      priority_(card, store),
      oas_rules_(card, store),
      management_info_(card, store),
      pci_space_(card, store),
      memory_(card, store) {
  state();
}

AdapterState Adapter::parse(const std::optional<std::string>& text) const {
  if (!text) return {.not_ready_reports = card_.not_ready_reports, .generation = card_.generation};
  return read_state(store_.describe(name_), *text);
}

AdapterState Adapter::state() const { return parse(store_.load(name_)); }

AdapterState Adapter::change(const std::function<void(AdapterState&)>& changes) {
  AdapterState state;
  store_.update(name_, [&](const std::optional<std::string>& present) {
    state = parse(present);
    changes(state);
    return write_state(state);
  });
  return state;
}

void Adapter::restart_counters(Clock::Time now) {
  restarted_ = now;
  io_ = {};
}

fc_hba::PortState Adapter::port_state(const AdapterState& state) const {
  if (card_.failed) return fc_hba::PortState::kError;
  if (state.not_ready_reports > 0) return fc_hba::PortState::kOffline;
  if (state.loopback != LoopbackMode::kNone) return fc_hba::PortState::kLoopback;
  if (state.diagnostic_state == DiagnosticState::kOffline) return fc_hba::PortState::kOffline;
  if (state.diagnostic_state == DiagnosticState::kDiagnostic) return fc_hba::PortState::kDiagnostics;
  return card_.fabric ? fc_hba::PortState::kOnline : fc_hba::PortState::kLinkDown;
}

std::span<const scenario::Port> Adapter::discovered_ports(const AdapterState& state) const {
  if (port_state(state) != fc_hba::PortState::kOnline) return {};
  return card_.fabric->ports;
}

}  // namespace simulator
