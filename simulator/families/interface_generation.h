// Which generation of the SLI interface an adapter has, and what its driver answers to a callback that needs the other one.
#pragma once

#include "driver/adapter.h"
#include "driver/door.h"

namespace simulator {

inline bool has_newer_interface(const scenario::Adapter& card) { return card.sli_mode >= 4; }

// Success, or why an adapter does not serve what only the older interface has.
inline DriverStatus older_interface(const Adapter& adapter) {
  if (has_newer_interface(adapter.card())) return VMKMGMT_SIM_DRIVER_NOT_SUPPORTED;
  return adapter.card().failed ? VMKMGMT_SIM_DRIVER_NOT_READY : VMKMGMT_SIM_DRIVER_OK;
}

// Success, or why an adapter does not serve what only the newer interface has.
inline DriverStatus newer_interface(const Adapter& adapter) {
  if (!has_newer_interface(adapter.card())) return VMKMGMT_SIM_DRIVER_NOT_SUPPORTED;
  return adapter.card().failed ? VMKMGMT_SIM_DRIVER_NOT_READY : VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace simulator
