// Where the driver keeps what must last: byte strings under names. In a folder they outlive the process and are shared with
// other processes; in memory they end with the process.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "driver/disk_image.h"

namespace simulator {

// A folder or a file that cannot be used, in words.
class StateError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  // A file whose content cannot be what was stored: `where` in it something else is wanted.
  static StateError damaged(std::string_view file, std::string_view where, std::string_view wanted);
};

class StateStore {
 public:
  using Change = std::function<std::string(std::optional<std::string> present)>;

  virtual ~StateStore() = default;

  // What is stored under a name; nothing if nothing ever was.
  virtual std::optional<std::string> load(const std::string& name) = 0;

  // Reads, changes and stores as one step, also against other processes. What a failure or a kill leaves behind is either the
  // old or the new content, whole.
  virtual void update(const std::string& name, const Change& change) = 0;

  // A disk of this size under a name, kept apart from the byte strings: what is written is there at once and for every process,
  // but a kill may leave a part of it. Throws StateError when the disk that is stored has another size.
  virtual std::unique_ptr<DiskImage> disk(const std::string& name, std::uint64_t bytes) = 0;

  // How messages call what is stored under a name.
  virtual std::string describe(const std::string& name) const = 0;
};

std::unique_ptr<StateStore> memory_store();

// Creates the folder if need be. Throws StateError.
std::unique_ptr<StateStore> folder_store(const std::string& path);

}  // namespace simulator
