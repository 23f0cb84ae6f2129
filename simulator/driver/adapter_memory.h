// Memory and control registers of an adapter of the older interface, which the host reaches directly.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "driver/kept_bytes.h"
#include "scenario/scenario.h"

namespace simulator {

class AdapterMemory {
 public:
  static constexpr std::uint32_t kBytes = 0x40000;
  static constexpr std::uint32_t kDumpAddress = 0x30000;  // where the firmware leaves a dump

  // The store must outlive the memory. Throws StateError when what it holds is damaged.
  AdapterMemory(const scenario::Adapter& card, StateStore& store);

  // All of these throw StateError. The bytes end within the memory.
  void read(std::uint32_t address, std::span<std::uint8_t> bytes) const;
  void write(std::uint32_t address, std::span<const std::uint8_t> bytes);

  // The registers that remember what was written.
  struct Registers {
    std::uint32_t control;
    std::uint32_t scratch;
  };
  Registers registers() const;
  void change_registers(const std::function<void(Registers&)>& change);

  // Everything is as after power-on.
  void reset();

 private:
  std::unique_ptr<DiskImage> image_;
  KeptBytes registers_;
};

}  // namespace simulator
