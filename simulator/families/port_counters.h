// The counters of an adapter's port at a time.
#pragma once

#include "driver/adapter.h"
#include "vaskdfc/statistics.h"

namespace simulator {

HbaPortStatistics counters_at(const Adapter& adapter, Clock::Time now);

}  // namespace simulator
