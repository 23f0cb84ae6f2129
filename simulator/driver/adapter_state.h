// What an adapter and the driver behind it remember.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace simulator {

// Diagnostic states as the driver reports them.
enum class DiagnosticState : std::uint32_t {
  kOnline = 1,
  kNotReady = 2,  // the firmware has failed or is still starting; only ever reported, never switched to
  kOffline = 3,   // the firmware runs, the link is held down
  kDiagnostic = 4,
};

// Loopback modes as the driver numbers them.
enum class LoopbackMode : std::uint32_t {
  kNone = 0,
  kInternal = 1,  // within the adapter
  kExternal = 4,  // through what is plugged into the port
};

struct TestEvent {
  std::uint32_t first;
  std::uint32_t second;
};

struct AdapterState {
  DiagnosticState diagnostic_state = DiagnosticState::kOnline;
  LoopbackMode loopback = LoopbackMode::kNone;
  std::uint32_t not_ready_reports = 0;  // so many state reports still say "not ready"
  std::uint32_t generation = 0;         // counts changes of the fabric as this adapter sees it
  std::uint32_t events_raised = 0;
  std::deque<TestEvent> events;  // the newest, in the order in which they were raised

  void raise(TestEvent event);
};

// As JSON text. read_state throws StateError, which calls the text by the given name.
std::string write_state(const AdapterState& state);
AdapterState read_state(const std::string& name, std::string_view text);

}  // namespace simulator
