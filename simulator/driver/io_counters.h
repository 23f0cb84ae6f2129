// What an adapter's FCP commands and loopback tests add up to, since the process began or the adapter was restarted.
#pragma once

#include <cstdint>

namespace simulator {

struct IoCounters {
  std::uint32_t commands = 0;
  std::uint32_t commands_with_sense = 0;
  std::uint64_t bytes_read = 0;
  std::uint64_t bytes_written = 0;
  std::uint32_t loopback_tests = 0;
  std::uint32_t loopback_failures = 0;  // nothing came back, or not what was sent
};

}  // namespace simulator
