#include "driver/memory_image.h"

#include <algorithm>

namespace simulator {
namespace {

// Calls with each page's number, the place in it, and the part of the bytes that lies in it.
template <std::size_t kPageBytes, typename Byte, typename Each>
void each_page(std::uint64_t offset, std::span<Byte> bytes, Each each) {
  while (!bytes.empty()) {
    const auto place = static_cast<std::size_t>(offset % kPageBytes);
    const std::size_t size = std::min(bytes.size(), kPageBytes - place);
    each(offset / kPageBytes, place, bytes.first(size));
    bytes = bytes.subspan(size);
    offset += size;
  }
}

}  // namespace

void MemoryImage::read(std::uint64_t offset, std::span<std::uint8_t> bytes) {
  each_page<kPageBytes>(offset, bytes, [this](std::uint64_t number, std::size_t place, std::span<std::uint8_t> part) {
    const auto found = pages_.find(number);
    if (found == pages_.end()) {
      std::ranges::fill(part, std::uint8_t{0});
    } else {
      std::copy_n(found->second.begin() + static_cast<std::ptrdiff_t>(place), part.size(), part.begin());
    }
  });
}

void MemoryImage::write(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
  each_page<kPageBytes>(offset, bytes, [this](std::uint64_t number, std::size_t place, std::span<const std::uint8_t> part) {
    std::ranges::copy(part, pages_[number].begin() + static_cast<std::ptrdiff_t>(place));
  });
}

}  // namespace simulator
