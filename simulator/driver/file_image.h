// A disk in a folder: a sparse file of its whole size, which begins to exist with the first write.
#pragma once

#include <sys/types.h>

#include <string>

#include "driver/disk_image.h"
#include "driver/folder.h"

namespace simulator {

class FileImage final : public DiskImage {
 public:
  // The folder must outlive the object. Throws StateError when the file has another size.
  FileImage(const Folder& folder, std::string name, std::uint64_t bytes);

  void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override;
  void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override;

 private:
  Descriptor open_whole(int flags) const;
  void create() const;

  template <typename Step>
  void move(std::uint64_t offset, std::size_t bytes, const char* problem, Step step) const;

  const Folder& folder_;
  std::string name_;
  off_t size_;
};

}  // namespace simulator
