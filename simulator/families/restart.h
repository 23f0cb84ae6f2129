// Changes of an adapter that its link goes through.
#pragma once

#include <functional>

#include "driver/door.h"
#include "driver/driver.h"

namespace simulator {

// Whether nothing in this state keeps the link from coming up.
bool holds_link_up(const AdapterState& state);

// Changes the state; applications learn when the link thereby goes or comes.
AdapterState change_link(Adapter& adapter, const std::function<void(AdapterState&)>& changes);

// The firmware starts again: online, counters at 0, no loopback, and parameters that waited for it take effect.
AdapterState restart(BoardCall& call);

}  // namespace simulator
