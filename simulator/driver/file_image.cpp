#include "driver/file_image.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>

#include "driver/state_store.h"

namespace simulator {

FileImage::FileImage(const Folder& folder, std::string name, std::uint64_t bytes)
    : folder_(folder), name_(std::move(name)), size_(static_cast<off_t>(bytes)) {
  open_whole(O_RDONLY);
}

void FileImage::read(std::uint64_t offset, std::span<std::uint8_t> bytes) {
  std::ranges::fill(bytes, std::uint8_t{0});
  const Descriptor file = open_whole(O_RDONLY);
  if (!file.is_open()) return;
  move(offset, bytes.size(), "cannot be read",
       [&](std::size_t done, off_t place) { return pread(file.get(), bytes.data() + done, bytes.size() - done, place); });
}

void FileImage::write(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
  if (!open_whole(O_WRONLY).is_open()) create();
  const Descriptor file = open_whole(O_WRONLY);
  move(offset, bytes.size(), "cannot be written",
       [&](std::size_t done, off_t place) { return pwrite(file.get(), bytes.data() + done, bytes.size() - done, place); });
}

// Not open where nothing was written yet.
Descriptor FileImage::open_whole(int flags) const {
  Descriptor file = folder_.open_present(name_, flags);
  if (!file.is_open()) return file;

  struct stat present {};
  if (fstat(file.get(), &present) != 0) folder_.fail(name_, "cannot be read");
  if (present.st_size != size_)
    throw StateError::damaged(folder_.describe(name_), "the whole file", fmt::format("{} bytes", size_));
  return file;
}

// Nobody must ever see the file at another size than its own.
void FileImage::create() const {
  const Folder::Lock held = folder_.lock();
  if (folder_.open_present(name_, O_WRONLY).is_open()) return;  // another process was here first
  folder_.replace(name_, [this](int file) { return ftruncate(file, size_) == 0; });
}

template <typename Step>
void FileImage::move(std::uint64_t offset, std::size_t bytes, const char* problem, Step step) const {
  std::size_t done = 0;
  while (done < bytes) {
    const ssize_t size = uninterrupted([&] { return step(done, static_cast<off_t>(offset + done)); });
    if (size < 0) folder_.fail(name_, problem);
    if (size == 0) return;
    done += static_cast<std::size_t>(size);
  }
}

}  // namespace simulator
