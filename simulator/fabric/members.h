// Who is in a fabric: its own ports, and the adapters that are online there with their virtual ports.
#pragma once

#include <vector>

#include "driver/driver.h"

namespace simulator::fabric {

struct Member {
  const scenario::Port* port;
  Adapter* adapter;  // whose port it is; null for a port that is only in the scenario's fabric
};

// By ascending FC id. Throws StateError.
std::vector<Member> members(Driver& driver, const scenario::Fabric& fabric);

}  // namespace simulator::fabric
