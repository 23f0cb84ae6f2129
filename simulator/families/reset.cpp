// Resets of an adapter and dumps of its firmware.
#include <fmt/format.h>

#include <array>

#include "driver/driver.h"
#include "driver/interface.h"
#include "families/families.h"
#include "families/interface_generation.h"
#include "families/layout.h"
#include "families/restart.h"

namespace simulator {
namespace {

using vaskdfc::DumpRegionReply;
using vaskdfc::RevisionReply;

DriverStatus revision(Call& call, RevisionReply& reply) {
  reply = {.unread_0 = kInterfaceVersion,
           .unread_4 = Callbacks::kCount,
           .supports_reset_type_3 = call.driver.scenario().driver.reset_type_3 ? 1u : 0u};
  return VMKMGMT_SIM_DRIVER_OK;
}

// Each does what those before it do, and more.
enum class Reset : std::uint32_t { kFirmware = 1, kMemory = 2, kFunction = 3 };

DriverStatus reset(BoardCall& call) {
  const auto type = static_cast<Reset>(call.header.arg6);
  const Reset last = call.driver.scenario().driver.reset_type_3 ? Reset::kFunction : Reset::kMemory;
  if (type < Reset::kFirmware || type > last) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  Adapter& adapter = call.adapter;
  if (adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;

  if (type >= Reset::kMemory) {
    adapter.objects().clear();
    if (!has_newer_interface(adapter.card())) adapter.memory().reset();
  }
  if (type == Reset::kFunction) adapter.pci_space().reset();
  restart(call);
  return VMKMGMT_SIM_DRIVER_OK;
}

// Before the text of a dump.
struct DumpHeader {
  std::array<char, 4> mark;
  std::uint32_t bytes;   // of the dump, this header included
  std::uint32_t number;  // counts the dumps since the memory was cleared
  std::uint32_t generation;
};
constexpr std::array kDumpMark{'D', 'U', 'M', 'P'};

// The name under which the firmware of newer adapters leaves its dump.
constexpr char kDumpObject[] = "dump";

DumpHeader last_dump(Adapter& adapter) {
  DumpHeader header{};
  if (has_newer_interface(adapter.card())) {
    const auto object = adapter.objects().find(kDumpObject);
    if (object != adapter.objects().end()) object->second.copy(reinterpret_cast<char*>(&header), sizeof(header));
  } else {
    adapter.memory().read(AdapterMemory::kDumpAddress, {reinterpret_cast<std::uint8_t*>(&header), sizeof(header)});
  }
  return header.mark == kDumpMark ? header : DumpHeader{};
}

std::string dump_of(Adapter& adapter) {
  const scenario::Adapter& card = adapter.card();
  const AdapterState state = adapter.state();
  const std::string text =
      fmt::format("model: {}\nserial number: {}\nfirmware: {}\nport state: {}\ngeneration: {}\n", card.model, card.serial_number,
                  card.firmware_version, static_cast<unsigned>(adapter.port_state(state)), state.generation);
  const DumpHeader header{.mark = kDumpMark,
                          .bytes = static_cast<std::uint32_t>(sizeof(DumpHeader) + text.size()),
                          .number = last_dump(adapter).number + 1,
                          .generation = state.generation};
  return std::string(reinterpret_cast<const char*>(&header), sizeof(header)) + text;
}

// A firmware that has dumped starts again.
DriverStatus induce_dump(BoardCall& call) {
  Adapter& adapter = call.adapter;
  if (adapter.card().failed || adapter.state().not_ready_reports > 0) return VMKMGMT_SIM_DRIVER_NOT_READY;
  const std::string dump = dump_of(adapter);
  if (has_newer_interface(adapter.card())) {
    adapter.objects()[kDumpObject] = dump;
  } else {
    adapter.memory().write(AdapterMemory::kDumpAddress, {reinterpret_cast<const std::uint8_t*>(dump.data()), dump.size()});
  }
  restart(call);
  return VMKMGMT_SIM_DRIVER_OK;
}

struct DumpRegion {
  std::uint32_t identifier;
  std::uint32_t address;
  std::uint32_t bytes;
  std::uint32_t number;
};

DriverStatus dump_region(BoardCall& call, DumpRegionReply& reply) {
  constexpr std::uint32_t kFirmwareDump = 1;
  call.header.arg3 = 0;
  if (const DriverStatus status = older_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  if (call.header.arg6 != kFirmwareDump) return VMKMGMT_SIM_DRIVER_NO_SUCH_REGION;
  const DumpHeader dump = last_dump(call.adapter);
  if (dump.number == 0) return VMKMGMT_SIM_DRIVER_NO_DUMP;
  call.header.arg3 = sizeof(reply);
  if (call.header.arg2 < sizeof(reply)) return VMKMGMT_SIM_DRIVER_NO_DUMP_ROOM;

  fill(reply,
       DumpRegion{.identifier = kFirmwareDump, .address = AdapterMemory::kDumpAddress, .bytes = dump.bytes, .number = dump.number});
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_reset(Door& door) {
  door.on<Callback::kGetDfcRev>(revision);
  door.on<Callback::kReset>(reset);
  door.on<Callback::kInduceDump>(induce_dump);
  door.on<Callback::kGetDumpRegion>(dump_region);
}

}  // namespace simulator
