#include "raw_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "decode.h"
#include "failure.h"

namespace vaskdfc::tool {
namespace {

std::string reason() { return std::strerror(errno); }

bool write_all(int file, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

// What is written under another name first; removed again unless it was kept.
class Draft {
 public:
  explicit Draft(const std::string& path) : name_(path + ".XXXXXX"), file_(mkstemp(name_.data())) {}
  ~Draft() {
    if (file_ < 0) return;
    close(file_);
    if (!kept_) unlink(name_.c_str());
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  bool write(std::span<const std::uint8_t> bytes) const { return file_ >= 0 && write_all(file_, bytes); }

  bool keep_as(const std::string& path, mode_t mode) {
    kept_ = fchmod(file_, mode) == 0 && fsync(file_) == 0 && std::rename(name_.c_str(), path.c_str()) == 0;
    return kept_;
  }

 private:
  std::string name_;
  int file_;
  bool kept_ = false;
};

mode_t mode_of_new_files() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// A pipe or a device takes the bytes as they come: it cannot be replaced.
bool write_into(const std::string& path, std::span<const std::uint8_t> bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool is_written = write_all(file, bytes);
  const int reason = errno;
  close(file);
  errno = reason;
  return is_written;
}

// The file that a link leads to is the one that is replaced.
bool replace(const std::string& path, std::span<const std::uint8_t> bytes, mode_t mode) {
  std::error_code no_such_file;
  const std::string target = std::filesystem::canonical(path, no_such_file);
  const std::string& place = no_such_file ? path : target;
  Draft draft(place);
  return draft.write(bytes) && draft.keep_as(place, mode);
}

bool write_or_replace(const std::string& path, std::span<const std::uint8_t> bytes) {
  struct stat present {};
  if (stat(path.c_str(), &present) != 0) return replace(path, bytes, mode_of_new_files());
  if (!S_ISREG(present.st_mode)) return write_into(path, bytes);
  return replace(path, bytes, present.st_mode & 07777);
}

}  // namespace

std::vector<std::uint8_t> read_file(const std::string& path, std::size_t most) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw usage_failure(fmt::format("the file \"{}\" cannot be opened: {}", path, reason()));
  std::vector<std::uint8_t> bytes;
  std::array<char, 65536> part;
  while (file && bytes.size() <= most) {
    file.read(part.data(), part.size());
    bytes.insert(bytes.end(), part.data(), part.data() + file.gcount());
  }
  if (file.bad()) throw usage_failure(fmt::format("the file \"{}\" cannot be read: {}", path, reason()));
  if (bytes.size() <= most) return bytes;
  throw usage_failure(fmt::format("the file \"{}\" is too long: at most {} bytes can be used", path, most));
}

void write_file(const std::string& path, std::span<const std::uint8_t> bytes) {
  if (write_or_replace(path, bytes)) return;
  throw plain_failure(Exit::kFailed, fmt::format("the file \"{}\" cannot be written: {}", path, reason()),
                      "it is as it was before; check the folder and the room in it");
}

Cell file_cell(const std::optional<std::string>& file) { return file ? text_cell(text_of(*file)) : absent(); }

std::vector<Field> delivered_fields(const std::optional<std::string>& file, std::span<const std::uint8_t> bytes, const char* key,
                                    const char* title) {
  if (file) write_file(*file, bytes);
  return {{"file", "File", file_cell(file)}, {key, title, file ? absent() : hex_bytes_cell(bytes)}};
}

}  // namespace vaskdfc::tool
