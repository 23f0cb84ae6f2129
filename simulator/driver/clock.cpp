#include "driver/clock.h"

namespace simulator {

Clock::Clock(std::optional<std::uint32_t> step_ms) {
  if (step_ms) step_ = Time(*step_ms);
}

Clock::Time Clock::now() const {
  if (step_) return stepped_;
  return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now() - start_);
}

Clock::Time Clock::next() {
  if (step_) stepped_ += *step_;
  return now();
}

}  // namespace simulator
