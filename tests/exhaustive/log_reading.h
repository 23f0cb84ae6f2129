// The library's log as a person or a program would read it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace vaskdfc::test {

// What a log holds, by the kinds of its lines.
struct LogContents {
  std::uint64_t calls = 0;
  std::uint64_t results = 0;
  std::uint64_t others = 0;
  std::string broken;  // the first line that is not whole; empty if all are
};

// Reads the log from its start and empties it. The stream must have been opened for appending and reading.
LogContents take_log(std::FILE* log);

// A file without a name to write a log into.
std::FILE* nameless_log();

}  // namespace vaskdfc::test
