// Memory of an application that a 32-bit word can name.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace vaskdfc::test {

// Two pages of it.
class HostMemory {
 public:
  HostMemory() : bytes_(map(), kBytes) {}
  ~HostMemory() { munmap(bytes_.data(), kBytes); }
  HostMemory(const HostMemory&) = delete;
  HostMemory& operator=(const HostMemory&) = delete;

  std::span<std::uint8_t> bytes() const { return bytes_; }
  std::uint32_t address() const { return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(bytes_.data())); }

 private:
#ifdef MAP_32BIT
  static constexpr int kBelow4GiB = MAP_32BIT;
#else
  static constexpr int kBelow4GiB = 0;
#endif
  static constexpr std::size_t kBytes = 8192;

  static std::uint8_t* map() {
    void* const memory = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | kBelow4GiB, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    return static_cast<std::uint8_t*>(memory);
  }

  std::span<std::uint8_t> bytes_;
};

}  // namespace vaskdfc::test
