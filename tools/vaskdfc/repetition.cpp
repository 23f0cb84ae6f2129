#include "repetition.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ctime>

#include "command_line.h"

namespace vaskdfc::tool {
namespace {

constexpr double kLeastSeconds = 0.1;
constexpr double kMostSeconds = 86400;

timespec timespec_of(std::chrono::nanoseconds duration) {
  const auto whole = std::chrono::duration_cast<std::chrono::seconds>(duration);
  return {.tv_sec = static_cast<std::time_t>(whole.count()), .tv_nsec = static_cast<long>((duration - whole).count())};
}

}  // namespace

Interruptible::Interruptible() {
  sigemptyset(&requests_);
  sigaddset(&requests_, SIGINT);
  sigaddset(&requests_, SIGTERM);
  sigaddset(&requests_, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &requests_, &before_);
}

Interruptible::~Interruptible() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

bool Interruptible::wait(Seconds duration) const {
  const auto end = std::chrono::steady_clock::now() + duration;
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(end - std::chrono::steady_clock::now());
    const timespec limit = timespec_of(std::max(left, std::chrono::nanoseconds(0)));
    if (sigtimedwait(&requests_, nullptr, &limit) > 0) return false;
    if (errno != EINTR) return true;
  }
}

Seconds seconds_argument(const std::string& name, const std::string& spelling) {
  double seconds = 0;
  const char* const end = spelling.data() + spelling.size();
  const auto [stop, error] = std::from_chars(spelling.data(), end, seconds, std::chars_format::fixed);
  if (error == std::errc{} && stop == end && seconds >= kLeastSeconds && seconds <= kMostSeconds) return Seconds(seconds);
  throw usage_failure(fmt::format("{}: \"{}\" is no time from {} to {} seconds", name, spelling, kLeastSeconds, kMostSeconds));
}

std::optional<std::uint32_t> times_argument(const std::string& name, const std::optional<std::string>& spelling) {
  if (!spelling) return std::nullopt;
  const std::uint32_t times = number_argument(name, *spelling);
  if (times == 0) throw usage_failure(fmt::format("{}: 0 times is nothing to do", name));
  return times;
}

}  // namespace vaskdfc::tool
