// Limits that only a programming error exceeds. They stop the process in every build, because going on would copy beyond a buffer.
#pragma once

namespace vaskdfc {

// Prints the condition, under the name of the library's main source file, and aborts.
[[noreturn]] void insist_failed(const char* condition, const char* function, unsigned line);

}  // namespace vaskdfc

// A macro because the text that is printed is the condition as it stands here. The line is fixed, as those of the log are.
#define INSIST(condition, line) ((condition) ? void() : ::vaskdfc::insist_failed(#condition, __func__, line))
