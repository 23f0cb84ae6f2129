#include "exhaustive/log_reading.h"

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string_view>

namespace vaskdfc::test {
namespace {

// Whether digits stand where a time of day has them, and then a function of 24 columns or more, a line number and a blank.
bool has_whole_start(std::string_view line, std::size_t& message) {
  constexpr std::string_view kTime = "dddd-dd-ddTdd:dd:dd  ";
  constexpr std::size_t kFunction = 24;
  if (line.size() < kTime.size() + kFunction) return false;
  for (std::size_t at = 0; at < kTime.size(); ++at) {
    if (kTime[at] == 'd' ? line[at] < '0' || line[at] > '9' : line[at] != kTime[at]) return false;
  }
  const std::size_t colon = line.find(':', kTime.size());
  if (colon == std::string_view::npos || colon < kTime.size() + kFunction) return false;
  message = line.find_first_not_of(" 0123456789", colon + 1);
  return message != std::string_view::npos;
}

void count(std::string_view line, LogContents& contents) {
  std::size_t at = 0;
  const bool has_end = line.ends_with('\n');
  if (!has_end || !has_whole_start(line, at)) {
    if (contents.broken.empty()) contents.broken = line;
    return;
  }
  const std::string_view message = line.substr(at);
  const bool is_whole = message.ends_with("]\n");
  if (message.starts_with("call: ") && is_whole) {
    ++contents.calls;
  } else if ((message.starts_with("cmd ok:  ") || message.starts_with("cmd err: ")) && is_whole) {
    ++contents.results;
  } else {
    ++contents.others;
  }
}

}  // namespace

LogContents take_log(std::FILE* log) {
  LogContents contents;
  std::rewind(log);
  std::array<char, 1024> line;  // no line is as long
  while (std::fgets(line.data(), line.size(), log) != nullptr) count(line.data(), contents);
  if (ftruncate(fileno(log), 0) != 0) std::abort();
  std::rewind(log);
  return contents;
}

std::FILE* nameless_log() {
  char path[] = "/tmp/vaskdfc-log-XXXXXX";
  const int descriptor = mkstemp(path);
  std::FILE* const log = descriptor < 0 ? nullptr : fdopen(descriptor, "a+");
  if (log == nullptr) std::abort();
  unlink(path);
  return log;
}

}  // namespace vaskdfc::test
