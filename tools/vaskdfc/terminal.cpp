#include "terminal.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "failure.h"

namespace vaskdfc::tool {
namespace {

// Alternate screen, cursor out of the way; and back.
constexpr std::string_view kTakeScreen = "\x1b[?1049h\x1b[?25l\x1b[2J";
constexpr std::string_view kGiveScreenBack = "\x1b[0m\x1b[?25h\x1b[?1049l";

constexpr Terminal::Size kUsualSize{.columns = 80, .lines = 24};

std::string_view value_of(const Variables& variables, const char* name) {
  const char* const value = variables(name);
  return value == nullptr ? "" : value;
}

// False if the terminal took less than all of it.
bool write_all(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

sigset_t watched_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH}) sigaddset(&signals, signal);
  return signals;
}

}  // namespace

const char* environment_variable(const char* name) { return std::getenv(name); }

bool can_address_the_cursor(const Variables& variables) {
  const std::string_view term = value_of(variables, "TERM");
  return !term.empty() && term != "dumb";
}

bool shows_utf8(const Variables& variables) {
  // The first that is set and not empty counts.
  for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    std::string locale(value_of(variables, name));
    if (locale.empty()) continue;
    std::ranges::transform(locale, locale.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return locale.find("utf-8") != std::string::npos || locale.find("utf8") != std::string::npos;
  }
  return false;
}

bool shows_colour(const Variables& variables) {
  if (!value_of(variables, "NO_COLOR").empty()) return false;
  const std::string_view term = value_of(variables, "TERM");
  const bool is_monochrome = term.starts_with("vt") || term.ends_with("-m") || term.ends_with("-mono");
  return can_address_the_cursor(variables) && !is_monochrome;
}

bool Terminal::is_there() { return isatty(STDOUT_FILENO) != 0 && can_address_the_cursor(environment_variable); }

Terminal::Terminal() {
  const sigset_t watched = watched_signals();
  signals_ = signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
  if (signals_ < 0) throw plain_failure(Exit::kFailed, "requests to end cannot be waited for");
  pthread_sigmask(SIG_BLOCK, &watched, &signals_before_);
  has_keys_ = tcgetattr(STDIN_FILENO, &keys_before_) == 0;
  if (has_keys_) {
    termios keys = keys_before_;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VMIN] = 0;
    keys.c_cc[VTIME] = 0;
    // Stopping or dumping the program would leave its screen behind.
    keys.c_cc[VSUSP] = _POSIX_VDISABLE;
    keys.c_cc[VQUIT] = _POSIX_VDISABLE;
    tcsetattr(STDIN_FILENO, TCSANOW, &keys);
  }
  write_all(kTakeScreen);
}

Terminal::~Terminal() {
  write_all(kGiveScreenBack);
  if (has_keys_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &keys_before_);
  close(signals_);
  pthread_sigmask(SIG_SETMASK, &signals_before_, nullptr);
}

Terminal::Size Terminal::size() const {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return kUsualSize;
  return {.columns = size.ws_col, .lines = size.ws_row};
}

void Terminal::show(const std::vector<std::string>& lines) const {
  std::string screen;
  // Each line by its place and erased first: the last column neither scrolls the screen nor loses its character.
  for (std::size_t i = 0; i < lines.size(); ++i) screen += fmt::format("\x1b[{};1H\x1b[2K{}", i + 1, lines[i]);
  if (write_all(screen)) return;
  throw plain_failure(Exit::kFailed, "the terminal cannot be written to");
}

Terminal::Event Terminal::wait_until(Clock::time_point time) const {
  while (true) {
    constexpr std::int64_t kMostMilliseconds = 60'000;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
    std::array<pollfd, 2> files{
        {{.fd = signals_, .events = POLLIN, .revents = 0}, {.fd = has_keys_ ? STDIN_FILENO : -1, .events = POLLIN, .revents = 0}}};
    poll(files.data(), files.size(), static_cast<int>(std::clamp<std::int64_t>(left, 0, kMostMilliseconds)));
    if (const auto event = files[0].revents != 0 ? signal_event() : std::nullopt) return *event;
    if (const auto event = files[1].revents != 0 ? key_event() : std::nullopt) return *event;
    if (left <= 0) return {.happening = Happening::kTime};
  }
}

std::optional<Terminal::Event> Terminal::signal_event() const {
  signalfd_siginfo signal{};
  if (read(signals_, &signal, sizeof(signal)) != static_cast<ssize_t>(sizeof(signal))) return std::nullopt;
  return Event{.happening = signal.ssi_signo == SIGWINCH ? Happening::kResize : Happening::kEnd};
}

std::optional<Terminal::Event> Terminal::key_event() {
  constexpr char kEscape = '\x1b';
  char key = 0;
  if (read(STDIN_FILENO, &key, 1) != 1) return Event{.happening = Happening::kEnd};  // nobody is there any more
  if (key != kEscape) return Event{.happening = Happening::kKey, .key = key};
  tcflush(STDIN_FILENO, TCIFLUSH);  // the rest of an arrow or function key, whose letters are no keys of their own
  return std::nullopt;
}

}  // namespace vaskdfc::tool
