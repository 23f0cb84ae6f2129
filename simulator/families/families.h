// The families of callbacks, one file each.
#pragma once

#include "driver/door.h"

namespace simulator {

void register_board(Door& door);
void register_info(Door& door);
void register_hbaapi(Door& door);

}  // namespace simulator
