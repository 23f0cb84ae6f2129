// The platform's three functions, for any driver.
#pragma once

#include "exhaustive/agreeable_driver.h"

namespace vaskdfc::test {

// What a callback comes to: the status of the platform. Threads may call it side by side.
using Answer = int (*)(Callback callback, const Parameters& parameters);

// Who answers at present; to begin with, a driver that agrees to everything.
extern Answer answer;

// The library as after an initialisation with an adapter of every driver board number, logging into no file.
void start_library();

}  // namespace vaskdfc::test
