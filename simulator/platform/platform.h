// The platform of one process: the driver, loaded when the first handle is opened, and the open handles.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "driver/driver.h"
#include "vaskdfc/platform.h"
#include "vmkmgmt_sim.h"

namespace simulator {

class Platform {
 public:
  vmkmgmt_sim_platform_status open(const dfc_mgmt_signature& signature, vmk_MgmtUserHandle& handle);
  vmkmgmt_sim_platform_status close(vmk_MgmtUserHandle handle);

  // The interface that a handle was opened on; nothing for what is not an open handle.
  std::optional<std::string> interface_of(vmk_MgmtUserHandle handle);

  // Only for whoever has an open handle.
  Driver& driver() { return *driver_; }

 private:
  vmkmgmt_sim_platform_status load_driver();

  std::mutex mutex_;
  std::unique_ptr<Driver> driver_;
  std::optional<vmkmgmt_sim_platform_status> load_status_;  // none: not tried yet
  std::map<vmk_MgmtUserHandle, std::string> interfaces_;    // of the open handles
  std::uintptr_t last_handle_ = 0;
};

}  // namespace simulator
