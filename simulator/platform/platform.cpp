#include "platform/platform.h"

#include <bit>
#include <cstdlib>

#include "driver/complaint.h"
#include "platform/signature.h"
#include "scenario/load.h"

namespace simulator {
namespace {

// The value of an environment variable, null if it is unset. An empty value is a mistake, not a wish for the default.
template <typename Error>
const char* setting(const char* variable) {
  const char* const value = std::getenv(variable);
  if (value != nullptr && *value == '\0') throw Error(std::string(variable) + " is set but empty: name a path or unset it");
  return value;
}

// What the environment asks for. Throws ScenarioError, StateError, TraceError.
std::unique_ptr<Driver> driver_from_environment() {
  const char* const scenario_file = setting<scenario::ScenarioError>(VMKMGMT_SIM_SCENARIO);
  const char* const state_folder = setting<StateError>(VMKMGMT_SIM_STATE);
  const char* const trace_file = setting<TraceError>(VMKMGMT_SIM_TRACE);
  auto scenario = scenario_file != nullptr ? scenario::load_file(scenario_file) : scenario::load_default();
  auto store = state_folder != nullptr ? folder_store(state_folder) : memory_store();
  auto trace = trace_file != nullptr ? std::make_unique<Trace>(trace_file) : nullptr;
  return std::make_unique<Driver>(std::move(scenario), std::move(store), std::move(trace));
}

}  // namespace

vmkmgmt_sim_platform_status Platform::load_driver() {
  const auto refuse = [](const std::exception& error, vmkmgmt_sim_platform_status status) {
    complain(error.what());
    return status;
  };
  try {
    driver_ = driver_from_environment();
    return VMKMGMT_SIM_OK;
  } catch (const scenario::ScenarioError& error) {
    return refuse(error, VMKMGMT_SIM_BAD_SCENARIO);
  } catch (const StateError& error) {
    return refuse(error, VMKMGMT_SIM_BAD_STATE);
  } catch (const TraceError& error) {
    return refuse(error, VMKMGMT_SIM_BAD_TRACE);
  }
}

vmkmgmt_sim_platform_status Platform::open(const dfc_mgmt_signature& signature, vmk_MgmtUserHandle& handle) {
  const std::lock_guard lock(mutex_);
  if (!load_status_) load_status_ = load_driver();
  if (*load_status_ != VMKMGMT_SIM_OK) return *load_status_;

  const auto status = check_signature(signature, driver_->scenario().driver.interfaces);
  if (status != VMKMGMT_SIM_OK) return status;

  // Numbers, never used again: a destroyed handle does not come back to life as another.
  handle = std::bit_cast<vmk_MgmtUserHandle>(++last_handle_);
  interfaces_[handle] = signature.name;
  return VMKMGMT_SIM_OK;
}

vmkmgmt_sim_platform_status Platform::close(vmk_MgmtUserHandle handle) {
  const std::lock_guard lock(mutex_);
  return interfaces_.erase(handle) == 1 ? VMKMGMT_SIM_OK : VMKMGMT_SIM_BAD_HANDLE;
}

std::optional<std::string> Platform::interface_of(vmk_MgmtUserHandle handle) {
  const std::lock_guard lock(mutex_);
  const auto found = interfaces_.find(handle);
  if (found == interfaces_.end()) return std::nullopt;
  return found->second;
}

}  // namespace simulator
