// An application that calls the library: the numbers it passes and the memory it hands over, which is guarded on both sides.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <type_traits>
#include <vector>

#include "vaskdfc/hbaapi.h"

namespace vaskdfc::test {

class Caller {
 public:
  explicit Caller(std::uint32_t board) : board_(board) {}
  virtual ~Caller() = default;
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;

  std::uint32_t board() const { return board_; }

  // A number that is `ordinary`, unless the application is out for trouble; never above `most`.
  virtual std::uint32_t number(std::uint32_t ordinary, std::uint32_t most = UINT32_MAX) {
    static_cast<void>(most);
    return ordinary;
  }

  // A record, followed by memory up to `bytes` as a list is by its entries. What the value does not say is a pattern.
  template <typename T>
  requires std::is_trivially_copyable_v<T> T* record(const T& value, std::size_t bytes = sizeof(T)) {
    const std::span<std::uint8_t> memory = lend(bytes);
    std::memcpy(memory.data(), &value, sizeof(T));
    keep();
    return reinterpret_cast<T*>(memory.data());
  }
  template <typename T>
  requires std::is_trivially_copyable_v<T> T* record() { return reinterpret_cast<T*>(bytes(sizeof(T))); }
  std::uint8_t* bytes(std::size_t count) {
    std::uint8_t* const memory = lend(count).data();
    keep();
    return memory;
  }
  // The WWN of the board's port, and that of everything that it sees.
  const HbaWwn* wwn();

  // Whether nothing was written beside what the library was given.
  bool guards_are_whole() const;
  // Whether all memory is as it was handed over.
  bool is_untouched() const;
  // All memory that was handed over, one after another.
  std::vector<std::uint8_t> contents() const;

 protected:
  // What memory holds when it is handed over.
  virtual void fill(std::span<std::uint8_t> memory);

 private:
  struct Block {
    std::unique_ptr<std::uint8_t[]> memory;
    std::vector<std::uint8_t> handed_over;
    std::span<std::uint8_t> lent() const;
  };

  std::span<std::uint8_t> lend(std::size_t bytes);
  void keep();

  std::uint32_t board_;
  std::vector<Block> blocks_;
};

}  // namespace vaskdfc::test
