// Messages to whoever runs the process; a status alone would not say what to do.
#pragma once

#include <cstdio>

namespace simulator {

inline void complain(const char* problem) { std::fprintf(stderr, "vmkmgmt simulator: %s\n", problem); }

}  // namespace simulator
