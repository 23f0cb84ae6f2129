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
#include <fstream>

#include "decode.h"
#include "failure.h"

namespace vaskdfc::tool {
namespace {

std::string reason() { return std::strerror(errno); }

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

  bool write(std::span<const std::uint8_t> bytes) const {
    while (!bytes.empty()) {
      const ssize_t written = ::write(file_, bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return false;
      bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
  }

  bool keep_as(const std::string& path) {
    const mode_t mask = umask(0);
    umask(mask);
    kept_ = fchmod(file_, 0666 & ~mask) == 0 && fsync(file_) == 0 && std::rename(name_.c_str(), path.c_str()) == 0;
    return kept_;
  }

  bool is_open() const { return file_ >= 0; }

 private:
  std::string name_;
  int file_;
  bool kept_ = false;
};

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
  Draft draft(path);
  if (draft.is_open() && draft.write(bytes) && draft.keep_as(path)) return;
  throw plain_failure(Exit::kFailed, fmt::format("the file \"{}\" cannot be written: {}", path, reason()),
                      "it is as it was before; check the folder and the room in it");
}

std::vector<Field> delivered_fields(const std::optional<std::string>& file, std::span<const std::uint8_t> bytes, const char* key,
                                    const char* title) {
  if (file) write_file(*file, bytes);
  return {{"file", "File", file ? text_cell(text_of(*file)) : absent()}, {key, title, file ? absent() : hex_bytes_cell(bytes)}};
}

}  // namespace vaskdfc::tool
