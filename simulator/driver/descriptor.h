// A file descriptor that is closed with its object.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace simulator {

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  int get() const { return fd_; }
  bool is_open() const { return fd_ >= 0; }

 private:
  int fd_;
};

// Retries what a signal interrupted.
template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// In a process that runs with a standard descriptor closed, the next file that is opened would get that number, and what the
// process then prints would go into the file.
inline Descriptor beyond_standard(int fd) {
  Descriptor opened(fd);
  if (fd < 0 || fd > STDERR_FILENO) return opened;
  return Descriptor(fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace simulator
