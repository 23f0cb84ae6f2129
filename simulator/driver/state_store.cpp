#include "driver/state_store.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <utility>

namespace simulator {
namespace {

class MemoryStore final : public StateStore {
 public:
  std::optional<std::string> load(const std::string& name) override {
    const auto found = contents_.find(name);
    if (found == contents_.end()) return std::nullopt;
    return found->second;
  }
  void update(const std::string& name, const Change& change) override { contents_[name] = change(load(name)); }
  std::string describe(const std::string& name) const override { return name; }

 private:
  std::map<std::string, std::string> contents_;
};

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

// The folder's lock, from one flock to the next. Unlocking is explicit: a process that was forked meanwhile still has the file
// open, and closing it here would leave the lock with that process.
class Lock {
 public:
  explicit Lock(Descriptor file) : file_(std::move(file)) {}
  Lock(Lock&&) = default;
  ~Lock() {
    if (file_.is_open()) flock(file_.get(), LOCK_UN);
  }

 private:
  Descriptor file_;
};

// Retries what a signal interrupted.
template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

class FolderStore final : public StateStore {
 public:
  explicit FolderStore(const std::string& path) : path_(path), folder_(open_folder(path)) {
    if (faccessat(folder_.get(), ".", W_OK, AT_EACCESS) != 0) fail_folder("cannot be written");
    lock();  // proves that updates will get that far
  }

  std::optional<std::string> load(const std::string& name) override {
    const Descriptor file(uninterrupted([&] { return openat(folder_.get(), name.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!file.is_open() && errno == ENOENT) return std::nullopt;
    if (!file.is_open()) fail(name, "cannot be opened");

    std::string content;
    char piece[4096];
    for (;;) {
      const ssize_t size = uninterrupted([&] { return read(file.get(), piece, sizeof(piece)); });
      if (size < 0) fail(name, "cannot be read");
      if (size == 0) return content;
      content.append(piece, static_cast<std::size_t>(size));
    }
  }

  void update(const std::string& name, const Change& change) override {
    const Lock held = lock();
    const std::optional<std::string> present = load(name);
    const std::string content = change(present);
    if (present != content) replace(name, content);
  }

  std::string describe(const std::string& name) const override { return path_ + "/" + name; }

 private:
  static Descriptor open_folder(const std::string& path) {
    if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) fail_at(path, "cannot be created");
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.is_open()) fail_at(path, "cannot be opened");
    return folder;
  }

  // Each holder opens the file anew: through one descriptor, a process and its fork would not exclude each other.
  Lock lock() const {
    Descriptor file(uninterrupted([&] { return openat(folder_.get(), "lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666); }));
    if (!file.is_open()) fail("lock", "cannot be opened");
    if (uninterrupted([&] { return flock(file.get(), LOCK_EX); }) != 0) fail("lock", "cannot be locked");
    return Lock(std::move(file));
  }

  // The lock is held, so that the temporary file is nobody else's; one that a killed process left is overwritten.
  void replace(const std::string& name, const std::string& content) const {
    const std::string temporary = name + ".new";
    write_synced(temporary, content);
    if (renameat(folder_.get(), temporary.c_str(), folder_.get(), name.c_str()) != 0)
      abandon(temporary, name, "cannot be replaced");
    if (fsync(folder_.get()) != 0) fail(name, "cannot be made to last");
  }

  void write_synced(const std::string& name, const std::string& content) const {
    const Descriptor file(
        uninterrupted([&] { return openat(folder_.get(), name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666); }));
    if (!file.is_open()) fail(name, "cannot be created");
    std::size_t done = 0;
    while (done < content.size()) {
      const ssize_t size = uninterrupted([&] { return write(file.get(), content.data() + done, content.size() - done); });
      if (size < 0) abandon(name, name, "cannot be written");
      done += static_cast<std::size_t>(size);
    }
    if (fsync(file.get()) != 0) abandon(name, name, "cannot be made to last");
  }

  [[noreturn]] void abandon(const std::string& temporary, const std::string& name, const char* problem) const {
    const int reason = errno;
    unlinkat(folder_.get(), temporary.c_str(), 0);
    errno = reason;
    fail(name, problem);
  }
  [[noreturn]] void fail(const std::string& name, const char* problem) const { fail_at(describe(name), problem); }
  [[noreturn]] void fail_folder(const char* problem) const { fail_at(path_, problem); }
  [[noreturn]] static void fail_at(const std::string& path, const char* problem) {
    throw StateError(fmt::format("{}: {}: {}", path, problem, std::strerror(errno)));
  }

  std::string path_;
  Descriptor folder_;
};

}  // namespace

StateError StateError::damaged(std::string_view file, std::string_view where, std::string_view wanted) {
  return StateError(fmt::format("{}: damaged: {}: expected {}; remove the file to start with fresh state", file, where, wanted));
}

std::unique_ptr<StateStore> memory_store() { return std::make_unique<MemoryStore>(); }

std::unique_ptr<StateStore> folder_store(const std::string& path) { return std::make_unique<FolderStore>(path); }

}  // namespace simulator
