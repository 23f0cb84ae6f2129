// The terminal, as far as a view of the whole screen needs it.
#pragma once

#include <termios.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vaskdfc::tool {

// The value of an environment variable; null if it is not set.
using Variables = std::function<const char*(const char* name)>;

// What the environment says that the terminal can do.
bool can_address_the_cursor(const Variables& variables);
bool shows_utf8(const Variables& variables);
bool shows_colour(const Variables& variables);

// Of this program's own environment.
const char* environment_variable(const char* name);

// While it lives, the terminal shows a screen of its own and tells keys as they are typed. Then it is as it was before, also when
// somebody asks the program to end: the requests arrive as events. What stops the program in other ways is switched off meanwhile.
class Terminal {
 public:
  struct Size {
    std::size_t columns;
    std::size_t lines;
  };

  enum class Happening { kTime, kKey, kResize, kEnd };
  struct Event {
    Happening happening;
    char key = 0;
  };

  using Clock = std::chrono::steady_clock;

  // Whether there is a terminal to draw on.
  static bool is_there();

  Terminal();
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  Size size() const;
  // Replaces what the screen shows. The lines are no longer than the screen is wide.
  void show(const std::vector<std::string>& lines) const;
  // Waits for whatever happens first, until a time at most.
  Event wait_until(Clock::time_point time) const;

 private:
  std::optional<Event> signal_event() const;
  static std::optional<Event> key_event();

  sigset_t signals_before_{};
  int signals_ = -1;  // tells them as a file
  bool has_keys_ = false;
  termios keys_before_{};
};

}  // namespace vaskdfc::tool
