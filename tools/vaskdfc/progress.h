// How far something has come that may take longer than a second.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vaskdfc::tool {

// A line on standard error, if that is a terminal, which is gone when the work is done.
class Progress {
 public:
  Progress(std::string what, std::uint64_t all);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void reached(std::uint64_t done);

 private:
  std::string what_;
  std::uint64_t all_;
  bool is_shown_;
  std::chrono::steady_clock::time_point next_{};
};

// As in "luns [#####.....] 12/24".
std::string progress_line(const std::string& what, std::uint64_t done, std::uint64_t all);

}  // namespace vaskdfc::tool
