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

}  // namespace simulator
