#include "driver/driver.h"

#include <algorithm>
#include <chrono>

#include "driver/complaint.h"
#include "families/families.h"

namespace simulator {

Driver::Driver(scenario::Scenario scenario, std::unique_ptr<StateStore> store, std::unique_ptr<Trace> trace)
    : scenario_(std::move(scenario)),
      store_(std::move(store)),
      trace_(std::move(trace)),
      kernel_log_(*store_),
      disks_(scenario_, *store_),
      clock_(scenario_.clock_step_ms),
      faults_(scenario_.faults) {
  for (const scenario::Adapter& card : scenario_.adapters) adapters_.emplace_back(card, *store_);
  register_board(door_);
  register_info(door_);
  register_hbaapi(door_);
  register_mailbox(door_);
  register_extended_mailbox(door_);
  register_regions(door_);
  register_fcoe(door_);
  register_statistics(door_);
  register_virtual_ports(door_);
  register_scsi(door_);
  register_mapping(door_);
  register_fabric(door_);
  register_events(door_);
  register_rnid(door_);
  register_parameters(door_);
  register_link(door_);
  register_vpd(door_);
  register_access(door_);
  register_reset(door_);
  register_loopback(door_);
  register_priority(door_);
  register_oas(door_);
}

std::uint32_t Driver::invoke(const std::string& interface_name, const vaskdfc::CallbackFacts& callback, dfc_mgmt_hdr& header,
                             const Payloads& payloads) {
  const auto start = std::chrono::steady_clock::now();
  const dfc_mgmt_hdr sent = header;
  const Disturbance fault = [&] {
    const std::lock_guard lock(mutex_);
    return faults_.strike(callback, sent.brdno);
  }();

  fault.wait();
  if (!fault.replaces_answer()) {
    Call call{*this, header, interface_name};
    header.status = answer(callback, call, payloads);
  }
  fault.apply(callback, header, payloads);

  const std::uint32_t platform_status = fault.platform_status.value_or(VMKMGMT_SIM_OK);
  const auto duration = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
  write_trace({callback, sent, header, platform_status, duration});
  return platform_status;
}

DriverStatus Driver::answer(const vaskdfc::CallbackFacts& callback, Call& call, const Payloads& payloads) {
  const std::lock_guard lock(mutex_);
  try {
    return door_.enter(callback, call, payloads);
  } catch (const StateError& error) {
    complain_once(error.what());
    return VMKMGMT_SIM_DRIVER_STATE_NOT_SAVED;
  }
}

void Driver::write_trace(const TraceEntry& entry) {
  if (!trace_) return;
  const std::lock_guard lock(mutex_);
  try {
    trace_->write(entry);
  } catch (const TraceError& error) {
    complain_once(error.what());
  }
}

// What went wrong once goes wrong at every call.
void Driver::complain_once(const char* problem) {
  if (complaints_.insert(problem).second) complain(problem);
}

Adapter* Driver::find_adapter(std::uint32_t board) {
  const auto found = std::ranges::find(adapters_, board, [](const Adapter& adapter) { return adapter.card().board; });
  return found == adapters_.end() ? nullptr : &*found;
}

Adapter* Door::find_adapter(const Call& call) { return call.driver.find_adapter(call.header.brdno); }

}  // namespace simulator
