#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <utility>

namespace vaskdfc::tool {
namespace {

constexpr auto kPause = std::chrono::milliseconds(100);
constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

Progress::Progress(std::string what, std::uint64_t all)
    : what_(std::move(what)), all_(all), is_shown_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (is_shown_) std::cerr << kEraseLine << std::flush;
}

void Progress::reached(std::uint64_t done) {
  const auto now = std::chrono::steady_clock::now();
  if (!is_shown_ || now < next_) return;
  next_ = now + kPause;
  std::cerr << kEraseLine << progress_line(what_, done, all_) << std::flush;
}

std::string progress_line(const std::string& what, std::uint64_t done, std::uint64_t all) {
  constexpr std::uint64_t kWidth = 40;
  const auto filled = static_cast<std::size_t>(all == 0 ? kWidth : std::min(done, all) * kWidth / all);
  return fmt::format("{} [{}{}] {}/{}", what, std::string(filled, '#'), std::string(kWidth - filled, '.'), done, all);
}

}  // namespace vaskdfc::tool
