// Walks the image of a configuration region. It counts what remains, and nothing leads out of the image, whatever lengths it holds.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

#include "transport/callback_table.h"

namespace vaskdfc {

class ImageCursor {
 public:
  explicit ImageCursor(std::span<std::uint8_t> image) : rest_(image) {}

  // What lies at the cursor; nothing where the image ends before it does.
  template <Record T>
  std::optional<T> peek() const {
    if (rest_.size() < sizeof(T)) return std::nullopt;
    T record;
    std::memcpy(&record, rest_.data(), sizeof(T));
    return record;
  }
  template <Record T>
  std::optional<T> take() {
    const auto record = peek<T>();
    skip(sizeof(T));
    return record;
  }

  // Beyond the end of the image the cursor stays at the end.
  void skip(std::size_t bytes) { rest_ = rest_.subspan(std::min(bytes, rest_.size())); }

  std::span<std::uint8_t> rest() const { return rest_; }

 private:
  std::span<std::uint8_t> rest_;
};

}  // namespace vaskdfc
