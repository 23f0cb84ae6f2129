// Simulated time: milliseconds since the driver started. It is the host's, or moves in steps so that nobody has to wait.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace simulator {

class Clock {
 public:
  using Time = std::chrono::duration<std::uint64_t, std::milli>;

  explicit Clock(std::optional<std::uint32_t> step_ms);

  Time now() const;
  // What a query that depends on time takes as the present: after one step, where time moves in steps.
  Time next();

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::optional<Time> step_;
  Time stepped_{};
};

}  // namespace simulator
