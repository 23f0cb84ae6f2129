// What a fuzzer holds against the code: a promise that is broken ends the program, which saves the input.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace vaskdfc::fuzz {

inline void promise(bool kept, const char* what) {
  if (kept) return;
  std::fprintf(stderr, "a promise is broken: %s\n", what);
  std::abort();
}

}  // namespace vaskdfc::fuzz
