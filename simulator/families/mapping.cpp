// Which units have which SCSI addresses, and which ports are bound to theirs.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>

#include "driver/driver.h"
#include "families/families.h"
#include "families/text.h"
#include "families/wwn.h"
#include "scsi/target.h"

namespace simulator {
namespace {

using scenario::Binding;
using scenario::Port;
using vaskdfc::BindListReply;
using vaskdfc::TargetMappingReply;

// A target's number is the port's position among those that the adapter discovers.
HbaFcpScsiEntry entry_of(const Port& port, std::size_t target, const scenario::LogicalUnit& unit, const std::string& adapter) {
  HbaFcpScsiEntry entry{};
  set_text(entry.ScsiId.OSDeviceName, fmt::format("{}:C0:T{}:L{}", adapter, target, unit.lun));
  entry.ScsiId.ScsiTargetNumber = static_cast<std::uint32_t>(target);
  entry.ScsiId.ScsiOSLun = unit.lun;
  entry.FcpId.FcId = port.fc_id;
  entry.FcpId.NodeWWN = port.wwnn;
  entry.FcpId.PortWWN = port.wwpn;
  std::ranges::copy(scsi::lun_bytes(unit.lun), entry.FcpId.FcpLun);
  return entry;
}

DriverStatus target_mapping(BoardCall& call, TargetMappingReply& reply) {
  const scenario::Adapter& card = call.adapter.card();
  if (card.failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  const auto ports = call.adapter.discovered_ports(call.adapter.state());
  std::uint32_t count = 0;
  for (const Port& port : ports) count += static_cast<std::uint32_t>(port.units.size());
  call.header.arg3 = count;
  if (count > call.header.arg2) return VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE;

  HbaFcpScsiEntry* entry = reply.entries;
  for (std::size_t target = 0; target < ports.size(); ++target) {
    for (const scenario::LogicalUnit& unit : ports[target].units) {
      *entry++ = entry_of(ports[target], target, unit, card.os_device_name);
    }
  }
  return VMKMGMT_SIM_DRIVER_OK;
}

bool names(const Binding& binding, const Port& port) {
  switch (binding.key) {
    case Binding::Key::kPortWwn: return binding.wwn == port.wwpn;
    case Binding::Key::kNodeWwn: return binding.wwn == port.wwnn;
    case Binding::Key::kFcId: return binding.fc_id == port.fc_id;
  }
  return false;
}

// The layout of a binding is this driver's choice.
FcpBinding describe(const Binding& binding, std::span<const Port> ports) {
  const bool present = std::ranges::any_of(ports, [&](const Port& port) { return names(binding, port); });
  const auto words = std::bit_cast<std::array<std::uint32_t, 2>>(binding.wwn);
  return {{static_cast<std::uint32_t>(binding.key), words[0], words[1], binding.fc_id, binding.bus, binding.target,
           present ? 1u : 0u, 0}};
}

// A failed request tells how many there are where the library looks for it, in the first argument word.
DriverStatus binding_list(BoardCall& call, BindListReply& reply) {
  const auto& bindings = call.adapter.card().bindings;
  call.header.arg1 = static_cast<std::uint32_t>(bindings.size());
  if (bindings.size() > call.header.arg4) return VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE;

  const auto ports = call.adapter.discovered_ports(call.adapter.state());
  reply.count = call.header.arg1;
  std::ranges::transform(bindings, reply.entries, [&](const Binding& binding) { return describe(binding, ports); });
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_mapping(Door& door) {
  door.on<Callback::kHbaFcpTargetMapping>(target_mapping);
  door.on<Callback::kListBind>(binding_list);
}

}  // namespace simulator
