// A disk in memory, which costs what is written of it.
#pragma once

#include <array>
#include <map>

#include "driver/disk_image.h"

namespace simulator {

class MemoryImage final : public DiskImage {
 public:
  void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override;
  void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override;

 private:
  static constexpr std::size_t kPageBytes = 4096;
  using Page = std::array<std::uint8_t, kPageBytes>;
  std::map<std::uint64_t, Page> pages_;
};

}  // namespace simulator
