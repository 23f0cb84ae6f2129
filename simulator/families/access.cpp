// Raw access: memory and control registers of the older interface, PCI configuration space of both.
#include <algorithm>
#include <optional>
#include <span>

#include "driver/driver.h"
#include "families/families.h"
#include "families/interface_generation.h"

namespace simulator {
namespace {

using vaskdfc::AccessData;

// Success if so many bytes at an address lie in a space of this size and in a record.
DriverStatus within(std::size_t space, std::uint32_t address, std::uint32_t bytes) {
  const bool fits = bytes <= sizeof(AccessData) && address <= space && bytes <= space - address;
  return fits ? VMKMGMT_SIM_DRIVER_OK : VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;
}

DriverStatus reaches_memory(const BoardCall& call) {
  if (const DriverStatus status = older_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  return within(AdapterMemory::kBytes, call.header.arg1, call.header.arg2);
}

DriverStatus read_memory(BoardCall& call, AccessData& data) {
  if (const DriverStatus status = reaches_memory(call); status != VMKMGMT_SIM_DRIVER_OK) return status;
  call.adapter.memory().read(call.header.arg1, std::span(data.bytes).first(call.header.arg2));
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus write_memory(BoardCall& call, const AccessData& data) {
  if (const DriverStatus status = reaches_memory(call); status != VMKMGMT_SIM_DRIVER_OK) return status;
  call.adapter.memory().write(call.header.arg1, std::span(data.bytes).first(call.header.arg2));
  return VMKMGMT_SIM_DRIVER_OK;
}

// Offsets of the registers are this adapter's choice.
enum class Register : std::uint32_t { kIdentity = 0x00, kStatus = 0x04, kControl = 0x08, kScratch = 0x0C };

constexpr std::uint32_t kControlBits = 0x3F;

std::uint32_t status_register(const Adapter& adapter) {
  constexpr std::uint32_t kReady = 0x1;
  constexpr std::uint32_t kLinkUp = 0x2;
  constexpr std::uint32_t kLoopback = 0x4;
  const AdapterState state = adapter.state();
  const fc_hba::PortState port = adapter.port_state(state);
  std::uint32_t bits = state.not_ready_reports == 0 ? kReady : 0;
  if (port == fc_hba::PortState::kOnline) bits |= kLinkUp;
  if (port == fc_hba::PortState::kLoopback) bits |= kLoopback;
  return bits;
}

std::optional<std::uint32_t> value_of(Register wanted, Adapter& adapter) {
  const scenario::PciIdentity& pci = adapter.card().pci;
  switch (wanted) {
    case Register::kIdentity: return std::uint32_t{pci.device} << 16 | pci.vendor;
    case Register::kStatus: return status_register(adapter);
    case Register::kControl: return adapter.memory().registers().control;
    case Register::kScratch: return adapter.memory().registers().scratch;
  }
  return std::nullopt;
}

DriverStatus read_register(BoardCall& call) {
  if (const DriverStatus status = older_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const auto value = value_of(static_cast<Register>(call.header.arg1), call.adapter);
  if (!value) return VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;
  call.header.arg4 = *value;
  return VMKMGMT_SIM_DRIVER_OK;
}

// What is written to a read-only register is lost, as on the bus.
DriverStatus write_register(BoardCall& call) {
  if (const DriverStatus status = older_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const auto wanted = static_cast<Register>(call.header.arg1);
  if (!value_of(wanted, call.adapter)) return VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;

  call.adapter.memory().change_registers([&](AdapterMemory::Registers& registers) {
    if (wanted == Register::kControl) registers.control = call.header.arg4 & kControlBits;
    if (wanted == Register::kScratch) registers.scratch = call.header.arg4;
  });
  return VMKMGMT_SIM_DRIVER_OK;
}

// The bus reaches an adapter whose firmware does not run.
DriverStatus reaches_configuration(const BoardCall& call) {
  constexpr std::uint32_t kAlignment = 4;
  if (call.header.arg1 % kAlignment != 0) return VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;
  return within(sizeof(PciSpace::Bytes), call.header.arg1, call.header.arg2);
}

DriverStatus read_configuration(BoardCall& call, AccessData& data) {
  if (const DriverStatus status = reaches_configuration(call); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const PciSpace::Bytes space = call.adapter.pci_space().read();
  std::ranges::copy(std::span(space).subspan(call.header.arg1, call.header.arg2), data.bytes);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus write_configuration(BoardCall& call, const AccessData& data) {
  if (const DriverStatus status = reaches_configuration(call); status != VMKMGMT_SIM_DRIVER_OK) return status;
  call.adapter.pci_space().write(call.header.arg1, std::span(data.bytes).first(call.header.arg2));
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_access(Door& door) {
  door.on<Callback::kReadMem>(read_memory);
  door.on<Callback::kWriteMem>(write_memory);
  door.on<Callback::kReadCtlReg>(read_register);
  door.on<Callback::kWriteCtlReg>(write_register);
  door.on<Callback::kReadPci>(read_configuration);
  door.on<Callback::kWritePci>(write_configuration);
}

}  // namespace simulator
