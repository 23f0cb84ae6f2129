#include "driver/trace.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>

namespace simulator {
namespace {

using Json = nlohmann::ordered_json;

Json words(const dfc_mgmt_hdr& header) {
  return {{"brdno", header.brdno}, {"arg1", header.arg1},   {"arg2", header.arg2},   {"arg3", header.arg3},
          {"arg4", header.arg4},   {"arg5", header.arg5},   {"arg6", header.arg6},   {"arg7", header.arg7},
          {"rsvd1", header.rsvd1}, {"rsvd2", header.rsvd2}, {"rsvd3", header.rsvd3}, {"status", header.status}};
}

Json payloads(const vaskdfc::CallbackFacts& callback) {
  constexpr std::array kUsages{"in", "out", "in/out"};
  Json list = Json::array();
  for (std::size_t i = 1; i < callback.parameters; ++i) {
    list.push_back({{"size", callback.sizes[i]}, {"usage", kUsages[callback.usages[i]]}});
  }
  return list;
}

std::string line(const TraceEntry& entry) {
  const Json document{{"pid", getpid()},
                      {"callback", entry.callback.name},
                      {"id", entry.callback.id},
                      {"board", entry.sent.brdno},
                      {"payloads", payloads(entry.callback)},
                      {"in", words(entry.sent)},
                      {"out", words(entry.answered)},
                      {"platform_status", entry.platform_status},
                      {"driver_status", entry.answered.status},
                      {"duration_us", entry.duration.count()}};
  return document.dump() + "\n";
}

// Whether the last line of a file has no end; a trace that cannot be read is taken as it is.
bool has_torn_end(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat present {};
  if (!file.is_open() || fstat(file.get(), &present) != 0 || !S_ISREG(present.st_mode) || present.st_size == 0) return false;
  char last = '\n';
  return pread(file.get(), &last, 1, present.st_size - 1) == 1 && last != '\n';
}

[[noreturn]] void fail(const std::string& path, const char* problem) {
  throw TraceError(fmt::format("{}: {}: {}", path, problem, std::strerror(errno)));
}

}  // namespace

Trace::Trace(const std::string& path)
    : path_(path),
      file_(beyond_standard(open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666))),
      ends_in_mid_line_(file_.is_open() && has_torn_end(path)) {
  if (!file_.is_open()) fail(path_, "cannot be opened for appending");
}

void Trace::write(const TraceEntry& entry) {
  const std::string text = (ends_in_mid_line_ ? "\n" : "") + line(entry);
  errno = ENOSPC;  // what a short write means
  const ssize_t written = uninterrupted([&] { return ::write(file_.get(), text.data(), text.size()); });
  if (written > 0) ends_in_mid_line_ = text[static_cast<std::size_t>(written) - 1] != '\n';
  if (written != static_cast<ssize_t>(text.size())) fail(path_, "cannot be written");
}

}  // namespace simulator
