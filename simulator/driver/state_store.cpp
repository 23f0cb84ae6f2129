#include "driver/state_store.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <utility>

#include "driver/memory_image.h"

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
  std::unique_ptr<DiskImage> disk(const std::string&, std::uint64_t) override { return std::make_unique<MemoryImage>(); }
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

[[noreturn]] void fail_at(const std::string& path, const char* problem) {
  throw StateError(fmt::format("{}: {}: {}", path, problem, std::strerror(errno)));
}

// A sparse file, which begins to exist with the first write.
class FileImage final : public DiskImage {
 public:
  // The folder must stay open.
  FileImage(int folder, std::string name, std::string path, std::uint64_t bytes)
      : folder_(folder), name_(std::move(name)), path_(std::move(path)), size_(static_cast<off_t>(bytes)) {
    struct stat present {};
    if (fstatat(folder_, name_.c_str(), &present, 0) != 0) return;
    if (present.st_size != size_) throw StateError::damaged(path_, "the whole file", fmt::format("{} bytes", bytes));
  }

  void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override {
    std::ranges::fill(bytes, std::uint8_t{0});
    const Descriptor file = open_file(O_RDONLY);
    if (!file.is_open() && errno == ENOENT) return;
    if (!file.is_open()) fail_at(path_, "cannot be opened");
    move(offset, bytes.size(), "cannot be read",
         [&](std::size_t done, off_t place) { return pread(file.get(), bytes.data() + done, bytes.size() - done, place); });
  }

  void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    const Descriptor file = open_file(O_WRONLY | O_CREAT);
    if (!file.is_open()) fail_at(path_, "cannot be opened");
    if (ftruncate(file.get(), size_) != 0) fail_at(path_, "cannot be made as large as its disk");
    move(offset, bytes.size(), "cannot be written",
         [&](std::size_t done, off_t place) { return pwrite(file.get(), bytes.data() + done, bytes.size() - done, place); });
  }

 private:
  Descriptor open_file(int flags) const {
    return Descriptor(uninterrupted([&] { return openat(folder_, name_.c_str(), flags | O_CLOEXEC, 0666); }));
  }

  template <typename Step>
  void move(std::uint64_t offset, std::size_t bytes, const char* problem, Step step) const {
    std::size_t done = 0;
    while (done < bytes) {
      const ssize_t size = uninterrupted([&] { return step(done, static_cast<off_t>(offset + done)); });
      if (size < 0) fail_at(path_, problem);
      if (size == 0) return;
      done += static_cast<std::size_t>(size);
    }
  }

  int folder_;
  std::string name_;
  std::string path_;
  off_t size_;
};

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

  std::unique_ptr<DiskImage> disk(const std::string& name, std::uint64_t bytes) override {
    return std::make_unique<FileImage>(folder_.get(), name, describe(name), bytes);
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
