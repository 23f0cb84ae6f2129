#include "transport/insist.h"

#undef NDEBUG  // glibc declares what an assertion calls only where assertions are on
#include <cassert>

void vaskdfc::insist_failed(const char* condition, const char* function, unsigned line) {
  __assert_fail(condition, "trel_dfcutil", line, function);
}
