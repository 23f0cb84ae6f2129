// The families of callbacks, one file each.
#pragma once

#include "driver/door.h"

namespace simulator {

void register_board(Door& door);
void register_info(Door& door);
void register_hbaapi(Door& door);
void register_mailbox(Door& door);
void register_extended_mailbox(Door& door);
void register_regions(Door& door);
void register_fcoe(Door& door);
void register_statistics(Door& door);
void register_virtual_ports(Door& door);
void register_scsi(Door& door);
void register_mapping(Door& door);
void register_fabric(Door& door);
void register_events(Door& door);
void register_rnid(Door& door);
void register_parameters(Door& door);
void register_link(Door& door);
void register_vpd(Door& door);
void register_access(Door& door);
void register_reset(Door& door);
void register_loopback(Door& door);
void register_priority(Door& door);
void register_oas(Door& door);

}  // namespace simulator
