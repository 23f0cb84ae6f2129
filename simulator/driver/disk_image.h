// The bytes of a disk, all zero at first.
#pragma once

#include <cstdint>
#include <span>

namespace simulator {

class DiskImage {
 public:
  virtual ~DiskImage() = default;
  // Within the disk; both throw StateError.
  virtual void read(std::uint64_t offset, std::span<std::uint8_t> bytes) = 0;
  virtual void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) = 0;
};

}  // namespace simulator
