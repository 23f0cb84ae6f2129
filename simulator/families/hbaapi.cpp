// Adapter and port attributes.
#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "driver/driver.h"
#include "driver/interface.h"
#include "families/families.h"
#include "families/text.h"
#include "families/wwn.h"

namespace simulator {
namespace {

using scenario::Port;
using vaskdfc::PortAttributesReply;
using vaskdfc::WwnKey;

DriverStatus adapter_attributes(BoardCall& call, HbaAdapterAttributes& attributes) {
  const scenario::Adapter& card = call.adapter.card();
  const scenario::Driver& driver = call.driver.scenario().driver;
  set_text(attributes.Manufacturer, kVendor);
  set_text(attributes.SerialNumber, card.serial_number);
  set_text(attributes.Model, card.model);
  set_text(attributes.ModelDescription, card.description);
  attributes.NodeWWN = card.port.wwnn;
  set_text(attributes.NodeSymbolicName, card.port.symbolic_name);
  set_text(attributes.HardwareVersion, card.hardware_version);
  set_text(attributes.DriverVersion, driver.version);
  set_text(attributes.OptionROMVersion, card.option_rom_version);
  set_text(attributes.FirmwareVersion, card.firmware_version);
  attributes.VendorSpecificID = card.pci.vendor;
  attributes.NumberOfPorts = 1;
  set_text(attributes.DriverName, driver.name);
  return VMKMGMT_SIM_DRIVER_OK;
}

// What every reply says about a port, wherever it is.
void describe(const Port& port, const scenario::Adapter& card, const std::string& os_device_name, PortAttributesReply& reply) {
  reply = {};
  reply.identity.node_wwn = port.wwnn;
  reply.identity.port_wwn = port.wwpn;
  reply.identity.classes_of_service = fc_hba::kClass3;
  std::ranges::copy(port.fc4_types, reply.identity.supported_fc4_types);
  set_text(reply.symbolic_name, port.symbolic_name);
  set_text(reply.os_device_name, os_device_name);
  reply.supported_speeds = port.supported_speeds;
  reply.max_frame_size = card.max_frame_size;
}

// Adds what only a port in the fabric has.
void connect(const Port& port, const scenario::Adapter& card, PortAttributesReply& reply) {
  reply.identity.fc_id = port.fc_id;
  reply.identity.type = static_cast<std::uint32_t>(fc_hba::PortType::kNPort);
  std::ranges::copy(port.fc4_types, reply.identity.active_fc4_types);
  reply.speed = port.speed;
  reply.fabric_name = card.fabric->wwn;
}

// One of the adapter's own ports, real or virtual.
void describe_local(const Port& port, const Adapter& adapter, const std::string& os_device_name, PortAttributesReply& reply) {
  const AdapterState state = adapter.state();
  const fc_hba::PortState port_state = adapter.port_state(state);
  describe(port, adapter.card(), os_device_name, reply);
  reply.identity.type = static_cast<std::uint32_t>(fc_hba::PortType::kUnknown);
  reply.identity.state = static_cast<std::uint32_t>(port_state);
  if (port_state != fc_hba::PortState::kOnline) return;

  connect(port, adapter.card(), reply);
  reply.discovered_ports = static_cast<std::uint32_t>(adapter.discovered_ports(state).size());
}

void describe_own(const Adapter& adapter, PortAttributesReply& reply) {
  describe_local(adapter.card().port, adapter, adapter.card().os_device_name, reply);
}

void describe_virtual(const Adapter& adapter, std::size_t index, PortAttributesReply& reply) {
  const std::string name = fmt::format("{}:V{}", adapter.card().os_device_name, index);
  describe_local(adapter.card().virtual_ports[index], adapter, name, reply);
}

void describe_discovered(const Adapter& adapter, std::size_t index, PortAttributesReply& reply) {
  const Port& port = adapter.card().fabric->ports[index];
  describe(port, adapter.card(), fmt::format("{}:C0:T{}", adapter.card().os_device_name, index), reply);
  reply.identity.state = static_cast<std::uint32_t>(fc_hba::PortState::kOnline);
  connect(port, adapter.card(), reply);
}

// The answer to a caller whose view of the fabric is out of date: a success whose FC id no port can have.
bool is_stale(const BoardCall& call, const AdapterState& state, PortAttributesReply& reply) {
  constexpr std::uint32_t kStaleFcId = 0xFFFFFFFF;
  if (call.header.arg4 == state.generation) return false;
  reply = {};
  reply.identity.fc_id = kStaleFcId;
  return true;
}

DriverStatus port_attributes(BoardCall& call, PortAttributesReply& reply) {
  describe_own(call.adapter, reply);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus discovered_port_attributes(BoardCall& call, PortAttributesReply& reply) {
  const AdapterState state = call.adapter.state();
  if (is_stale(call, state, reply)) return VMKMGMT_SIM_DRIVER_OK;

  const std::uint32_t index = call.header.arg1;
  if (index >= call.adapter.discovered_ports(state).size()) return VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;
  describe_discovered(call.adapter, index, reply);
  return VMKMGMT_SIM_DRIVER_OK;
}

// The port list: the adapter's own port, then its virtual ports, then what it has discovered.
DriverStatus indexed_port_attributes(BoardCall& call, PortAttributesReply& reply) {
  const AdapterState state = call.adapter.state();
  if (is_stale(call, state, reply)) return VMKMGMT_SIM_DRIVER_OK;

  const std::size_t index = call.header.arg1;
  const std::size_t virtual_ports = call.adapter.card().virtual_ports.size();
  const std::size_t discovered_ports = call.adapter.discovered_ports(state).size();
  if (index > virtual_ports + discovered_ports) return VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE;

  if (index == 0) {
    describe_own(call.adapter, reply);
  } else if (index <= virtual_ports) {
    describe_virtual(call.adapter, index - 1, reply);
  } else {
    describe_discovered(call.adapter, index - 1 - virtual_ports, reply);
  }
  return VMKMGMT_SIM_DRIVER_OK;
}

// Position of a port in a list; the list's size if it is not there.
std::size_t position(std::span<const Port> ports, const HbaWwn& wwpn) {
  const auto found = std::ranges::find_if(ports, [&](const Port& port) { return port.wwpn == wwpn; });
  return static_cast<std::size_t>(found - ports.begin());
}

DriverStatus named_port_attributes(BoardCall& call, PortAttributesReply& reply, const WwnKey& key) {
  const Adapter& adapter = call.adapter;
  if (adapter.card().port.wwpn == key.wwn) {
    describe_own(adapter, reply);
    return VMKMGMT_SIM_DRIVER_OK;
  }
  const auto& virtual_ports = adapter.card().virtual_ports;
  if (const std::size_t index = position(virtual_ports, key.wwn); index < virtual_ports.size()) {
    describe_virtual(adapter, index, reply);
    return VMKMGMT_SIM_DRIVER_OK;
  }
  const auto discovered_ports = adapter.discovered_ports(adapter.state());
  if (const std::size_t index = position(discovered_ports, key.wwn); index < discovered_ports.size()) {
    describe_discovered(adapter, index, reply);
    return VMKMGMT_SIM_DRIVER_OK;
  }
  return VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;
}

DriverStatus refresh_information(BoardCall& call) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  call.header.arg4 = call.adapter.state().generation;
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_hbaapi(Door& door) {
  door.on<Callback::kHbaAdapterAttributes>(adapter_attributes);
  door.on<Callback::kHbaPortAttributes>(port_attributes);
  door.on<Callback::kHbaWwpnPortAttributes>(named_port_attributes);
  door.on<Callback::kHbaDiscPortAttributes>(discovered_port_attributes);
  door.on<Callback::kHbaIndexPortAttributes>(indexed_port_attributes);
  door.on<Callback::kHbaRefreshInfo>(refresh_information);
}

}  // namespace simulator
