#include "driver/folder.h"

#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstring>

#include "driver/state_store.h"

namespace simulator {
namespace {

[[noreturn]] void fail_at(const std::string& path, const char* problem) {
  throw StateError(fmt::format("{}: {}: {}", path, problem, std::strerror(errno)));
}

Descriptor open_folder(const std::string& path) {
  if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) fail_at(path, "cannot be created");
  Descriptor folder = beyond_standard(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.is_open()) fail_at(path, "cannot be opened");
  return folder;
}

Descriptor open_in(int folder, const std::string& name, int flags) {
  return beyond_standard(uninterrupted([&] { return openat(folder, name.c_str(), flags | O_CLOEXEC, 0666); }));
}

// A file under its temporary name; removed again unless it became another.
class Draft {
 public:
  Draft(int folder, std::string name) : folder_(folder), name_(std::move(name)) {}
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;
  ~Draft() {
    if (!kept_) unlinkat(folder_, name_.c_str(), 0);
  }

  bool keep_as(const std::string& name) {
    kept_ = renameat(folder_, name_.c_str(), folder_, name.c_str()) == 0;
    return kept_;
  }

 private:
  int folder_;
  std::string name_;
  bool kept_ = false;
};

}  // namespace

Folder::Lock::~Lock() {
  if (file_.is_open()) flock(file_.get(), LOCK_UN);
}

Folder::Folder(const std::string& path) : path_(path), folder_(open_folder(path)) {
  if (faccessat(folder_.get(), ".", W_OK, AT_EACCESS) != 0) fail_at(path_, "cannot be written");
  lock(LOCK_EX | LOCK_NB);  // proves that changes will get that far
}

Folder::Lock Folder::lock() const { return lock(LOCK_EX); }

// Each holder opens the file anew: through one descriptor, a process and its fork would not exclude each other.
Folder::Lock Folder::lock(int operation) const {
  Descriptor file = open_in(folder_.get(), "lock", O_RDWR | O_CREAT);
  if (!file.is_open()) fail("lock", "cannot be opened");
  const bool is_held = uninterrupted([&] { return flock(file.get(), operation); }) == 0;
  if (!is_held && errno != EWOULDBLOCK) fail("lock", "cannot be locked");
  return Lock(std::move(file));
}

Descriptor Folder::open_present(const std::string& name, int flags) const {
  // A pipe of this name would keep whoever opens it waiting.
  Descriptor file = open_in(folder_.get(), name, flags | O_NONBLOCK);
  if (!file.is_open() && errno == ENOENT) return file;
  if (!file.is_open()) fail(name, "cannot be opened");

  struct stat present {};
  if (fstat(file.get(), &present) != 0) fail(name, "cannot be read");
  if (!S_ISREG(present.st_mode)) throw StateError(describe(name) + ": is no regular file");
  return file;
}

// The lock is held, so that the draft is nobody else's; one that a killed process left is overwritten.
void Folder::replace(const std::string& name, const std::function<bool(int file)>& fill) const {
  const std::string temporary = name + ".new";
  const Descriptor file = open_in(folder_.get(), temporary, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.is_open()) fail(temporary, "cannot be created");

  Draft draft(folder_.get(), temporary);
  if (!fill(file.get())) fail(temporary, "cannot be written");
  if (fsync(file.get()) != 0) fail(temporary, "cannot be made to last");
  if (!draft.keep_as(name)) fail(name, "cannot be replaced");
  if (fsync(folder_.get()) != 0) fail(name, "cannot be made to last");
}

void Folder::fail(const std::string& name, const char* problem) const { fail_at(describe(name), problem); }

}  // namespace simulator
