/* The simulator's header stands alone in C99 as well. */
#include "vmkmgmt_sim.h"

int vmkmgmt_sim_header_is_c99(void);

int vmkmgmt_sim_header_is_c99(void) {
  vmkmgmt_sim_platform_status platform = VMKMGMT_SIM_OK;
  vmkmgmt_sim_driver_status driver = VMKMGMT_SIM_DRIVER_OK;
  return (int)platform + (int)driver;
}
