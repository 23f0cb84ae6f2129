// The ports that an adapter has itself, and what they see.
#pragma once

#include <vector>

#include "driver/adapter.h"

namespace simulator {

const scenario::Port* find_virtual(const Adapter& adapter, const HbaWwn& wwpn);

// The adapter's own port or a virtual one; null if there is none of this WWN.
const scenario::Port* find_local(const Adapter& adapter, const HbaWwn& wwpn);

// What one of the adapter's ports sees of what the adapter has discovered.
std::vector<const scenario::Port*> nodes_of(const Adapter& adapter, const scenario::Port& port);

}  // namespace simulator
