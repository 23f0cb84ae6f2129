#include "driver/adapter_memory.h"

#include <cstring>
#include <vector>

#include "driver/stored_name.h"

namespace simulator {
namespace {

constexpr AdapterMemory::Registers kAfterPowerOn{.control = 0x0F, .scratch = 0};

std::string text_of(const AdapterMemory::Registers& registers) {
  return {reinterpret_cast<const char*>(&registers), sizeof(registers)};
}

AdapterMemory::Registers registers_of(const std::string& kept) {
  AdapterMemory::Registers registers;
  std::memcpy(&registers, kept.data(), sizeof(registers));
  return registers;
}

}  // namespace

AdapterMemory::AdapterMemory(const scenario::Adapter& card, StateStore& store)
    : image_(store.disk(stored_name("memory", card, "img"), kBytes)),
      registers_(store, stored_name("registers", card, "bin"), text_of(kAfterPowerOn), KeptBytes::of_size(sizeof(Registers))) {}

void AdapterMemory::read(std::uint32_t address, std::span<std::uint8_t> bytes) const { image_->read(address, bytes); }

void AdapterMemory::write(std::uint32_t address, std::span<const std::uint8_t> bytes) { image_->write(address, bytes); }

AdapterMemory::Registers AdapterMemory::registers() const { return registers_of(registers_.load()); }

void AdapterMemory::change_registers(const std::function<void(Registers&)>& change) {
  registers_.update([&](std::string& kept) {
    Registers registers = registers_of(kept);
    change(registers);
    kept = text_of(registers);
  });
}

void AdapterMemory::reset() {
  image_->write(0, std::vector<std::uint8_t>(kBytes));
  change_registers([](Registers& registers) { registers = kAfterPowerOn; });
}

}  // namespace simulator
