// The folder where state is kept: its files, replaced whole or not at all, and the lock under which they change.
#pragma once

#include <functional>
#include <string>

#include "driver/descriptor.h"

namespace simulator {

class Folder {
 public:
  // Creates the folder if need be. Throws StateError, as all others here do.
  explicit Folder(const std::string& path);

  // The lock, from one flock to the next. Unlocking is explicit: a process that was forked meanwhile still has the file open, and
  // closing it here would leave the lock with that process.
  class Lock {
   public:
    explicit Lock(Descriptor file) : file_(std::move(file)) {}
    Lock(Lock&&) = default;
    ~Lock();

   private:
    Descriptor file_;
  };

  // Waits until nobody else holds it.
  Lock lock() const;

  // A file that is there, for O_RDONLY or O_WRONLY; not open where there is none.
  Descriptor open_present(const std::string& name, int flags) const;

  // Makes a file of this name of what `fill` does to an empty one, while the lock is held; false means that it failed.
  void replace(const std::string& name, const std::function<bool(int file)>& fill) const;

  std::string describe(const std::string& name) const { return path_ + "/" + name; }

  // Throws, with the reason that errno tells.
  [[noreturn]] void fail(const std::string& name, const char* problem) const;

 private:
  Lock lock(int operation) const;

  std::string path_;
  Descriptor folder_;
};

}  // namespace simulator
