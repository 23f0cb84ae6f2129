// The simulated driver: adapters, and what is done for each callback.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "driver/adapter.h"
#include "driver/clock.h"
#include "driver/disks.h"
#include "driver/door.h"
#include "driver/faults.h"
#include "driver/kernel_log.h"
#include "driver/state_store.h"
#include "driver/trace.h"
#include "scenario/scenario.h"

namespace simulator {

class Driver {
 public:
  // `trace` may be null. Throws StateError when the store holds damaged state.
  Driver(scenario::Scenario scenario, std::unique_ptr<StateStore> store, std::unique_ptr<Trace> trace);
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  // Runs one callback and returns the platform status, 0 on success; the driver's own status is in the header. Any thread may
  // call.
  std::uint32_t invoke(const std::string& interface_name, const vaskdfc::CallbackFacts& callback, dfc_mgmt_hdr& header,
                       const Payloads& payloads);

  const scenario::Scenario& scenario() const { return scenario_; }
  Adapter* find_adapter(std::uint32_t board);
  KernelLog& kernel_log() { return kernel_log_; }
  Clock& clock() { return clock_; }
  Disks& disks() { return disks_; }

 private:
  DriverStatus answer(const vaskdfc::CallbackFacts& callback, Call& call, const Payloads& payloads);
  void write_trace(const TraceEntry& entry);
  void complain_once(const char* problem);

  const scenario::Scenario scenario_;
  const std::unique_ptr<StateStore> store_;
  const std::unique_ptr<Trace> trace_;
  KernelLog kernel_log_;
  Door door_;

  std::mutex mutex_;  // guards everything below and what the handlers reach
  std::vector<Adapter> adapters_;
  Disks disks_;
  Clock clock_;
  Faults faults_;
  std::set<std::string> complaints_;  // that were made
};

}  // namespace simulator
