// The PCI configuration space of an adapter's function: a device of type 0 with its capabilities.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "driver/kept_bytes.h"
#include "scenario/scenario.h"

namespace simulator {

class PciSpace {
 public:
  using Bytes = std::array<std::uint8_t, 4096>;

  // The store must outlive the space. Throws StateError when what it holds is damaged.
  PciSpace(const scenario::Adapter& card, StateStore& store);

  // All of these throw StateError.
  Bytes read() const;
  // Only bits that may be written change. The bytes end within the space.
  void write(std::size_t offset, std::span<const std::uint8_t> bytes);
  void reset();

 private:
  Bytes initial_{};
  Bytes writable_{};  // bit by bit
  KeptBytes kept_;
};

}  // namespace simulator
