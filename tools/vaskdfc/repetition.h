// Commands that go on until somebody stops them.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdint>
#include <optional>
#include <string>

namespace vaskdfc::tool {

using Seconds = std::chrono::duration<double>;

// While it lives, Ctrl-C, a request to terminate and the end of the terminal end a wait instead of the program, so that the command
// can finish in order.
class Interruptible {
 public:
  Interruptible();
  ~Interruptible();
  Interruptible(const Interruptible&) = delete;
  Interruptible& operator=(const Interruptible&) = delete;

  // False when the wait was ended early.
  bool wait(Seconds duration) const;

 private:
  sigset_t requests_{};
  sigset_t before_{};
};

// An argument that is a time in seconds, at least a tenth and with a fraction if need be.
Seconds seconds_argument(const std::string& name, const std::string& spelling);

// An argument that is a number of times, at least one; nothing where it is not given.
std::optional<std::uint32_t> times_argument(const std::string& name, const std::optional<std::string>& spelling);

}  // namespace vaskdfc::tool
