// Two pieces of code measured against each other: in turns, so that what disturbs one disturbs the other, and by medians, so that
// what disturbs both for a moment does not count.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace bench {

// Nanoseconds of one execution.
struct Times {
  double ours;
  double bare;
};

// Keeps the compiler from leaving out what nobody looks at, and from moving it.
inline void barrier() { asm volatile("" ::: "memory"); }

template <typename Code>
double seconds_of(Code code) {
  const auto start = std::chrono::steady_clock::now();
  barrier();
  code();
  barrier();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double median_of(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

inline constexpr int kRounds = 301;

// The medians of so many turns of `batch` executions each. What `prepare` does before every batch is not measured.
template <typename Ours, typename Bare, typename Prepare>
Times in_turns_of(std::size_t batch, Ours ours, Bare bare, Prepare prepare, int rounds = kRounds) {
  std::vector<double> our_times;
  std::vector<double> bare_times;
  const auto time = [&](auto& code) {
    prepare();
    return 1e9 / static_cast<double>(batch) * seconds_of([&] {
             for (std::size_t i = 0; i < batch; ++i) {
               code();
               barrier();
             }
           });
  };
  for (int round = -rounds / 10; round < rounds; ++round) {
    const double our_time = time(ours);
    const double bare_time = time(bare);
    if (round < 0) continue;  // the first rounds are for caches and clocks to get going
    our_times.push_back(our_time);
    bare_times.push_back(bare_time);
  }
  return {.ours = median_of(our_times), .bare = median_of(bare_times)};
}

// Batches that take a tenth of a millisecond at least, which no clock is too coarse for.
template <typename Ours, typename Bare>
Times in_turns(Ours ours, Bare bare) {
  constexpr double kBatchSeconds = 1e-4;
  std::size_t batch = 1;
  const auto too_short = [&] {
    return seconds_of([&] {
             for (std::size_t i = 0; i < batch; ++i) {
               bare();
               barrier();
             }
           }) < kBatchSeconds;
  };
  while (too_short()) batch *= 2;
  return in_turns_of(batch, ours, bare, [] {});
}

}  // namespace bench
