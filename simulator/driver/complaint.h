// Messages to whoever runs the process; a status alone would not say what to do.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "scenario/escaped.h"

namespace simulator {

// One line, whatever stands in a scenario or in the name of a file.
inline void complain(std::string_view problem) {
  constexpr auto kIsNoControl = [](char letter) { return is_printable(letter) || static_cast<unsigned char>(letter) > 0x7F; };
  const std::string line = escaped(problem, kIsNoControl);
  std::fprintf(stderr, "vmkmgmt simulator: %s\n", line.c_str());
}

}  // namespace simulator
