// Virtual ports. The layouts of what is said about them are this driver's choice.
#include <algorithm>
#include <cstddef>
#include <vector>

#include "driver/driver.h"
#include "families/families.h"
#include "families/layout.h"
#include "families/local_ports.h"
#include "families/text.h"

namespace simulator {
namespace {

using scenario::Port;
using vaskdfc::NodeListReply;
using vaskdfc::VportListReply;
using vaskdfc::WwnKey;

// Entry of the list.
struct Entry {
  HbaWwn port_wwn;
  HbaWwn node_wwn;
  std::uint32_t fc_id;  // 0 unless the port is online
};

struct Resource {
  std::uint32_t most_ports;
  std::uint32_t ports;
  std::uint32_t most_nodes;
  std::uint32_t nodes;
};

struct Attributes {
  HbaWwn node_wwn;
  HbaWwn port_wwn;
  std::uint32_t fc_id;
  std::uint32_t type;
  std::uint32_t state;
  std::uint32_t speed;
  std::uint8_t fc4_types[32];
  char symbolic_name[256];
  HbaWwn fabric_name;
  std::uint32_t max_frame_size;
  std::uint32_t nodes;
  std::uint32_t zero_336;
};

// The port's WWN stands where applications look for it.
struct Node {
  std::uint32_t fc_id;
  std::uint32_t type;
  std::uint32_t state;
  std::uint32_t classes_of_service;
  std::uint8_t fc4_types[32];
  char symbolic_name[224];
  std::uint32_t speed;
  HbaWwn node_wwn;
  HbaWwn port_wwn;
  HbaWwn fabric_name;
  std::uint32_t units;
};
static_assert(offsetof(Node, port_wwn) == vaskdfc::kNodePortWwn);

constexpr std::size_t kMostNodes = std::extent_v<decltype(NodeListReply::entries)>;

bool is_online(const Adapter& adapter) { return adapter.port_state(adapter.state()) == fc_hba::PortState::kOnline; }

DriverStatus ready(BoardCall& call) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  call.header.arg4 = call.adapter.card().max_virtual_ports > 0 && is_online(call.adapter) ? 1 : 0;
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus resources(BoardCall& call, dfc_vport_resource& reply) {
  const scenario::Adapter& card = call.adapter.card();
  if (card.failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  const Resource resource{.most_ports = card.max_virtual_ports,
                          .ports = static_cast<std::uint32_t>(card.virtual_ports.size()),
                          .most_nodes = kMostNodes,
                          .nodes = static_cast<std::uint32_t>(call.adapter.discovered_ports(call.adapter.state()).size())};
  fill(reply.bytes, resource);
  return VMKMGMT_SIM_DRIVER_OK;
}

// A failure that is not about the WWN has a third argument word other than 0.
DriverStatus attributes(BoardCall& call, const WwnKey& key, dfc_vport_attributes& reply) {
  const scenario::Adapter& card = call.adapter.card();
  call.header.arg3 = 1;
  if (card.failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  call.header.arg3 = 0;
  const Port* const port = find_virtual(call.adapter, key.wwn);
  if (port == nullptr) return VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;

  Attributes result{.node_wwn = port->wwnn, .port_wwn = port->wwpn};
  result.state = static_cast<std::uint32_t>(call.adapter.port_state(call.adapter.state()));
  result.type = static_cast<std::uint32_t>(fc_hba::PortType::kUnknown);
  std::ranges::copy(port->fc4_types, result.fc4_types);
  set_text(result.symbolic_name, port->symbolic_name);
  result.max_frame_size = card.max_frame_size;
  if (is_online(call.adapter)) {
    result.fc_id = port->fc_id;
    result.type = static_cast<std::uint32_t>(fc_hba::PortType::kNPort);
    result.speed = port->speed;
    result.fabric_name = card.fabric->wwn;
    result.nodes = static_cast<std::uint32_t>(nodes_of(call.adapter, *port).size());
  }
  fill(reply.bytes, result);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus list(BoardCall& call, VportListReply& reply) {
  const scenario::Adapter& card = call.adapter.card();
  if (card.failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  reply.count = static_cast<std::uint32_t>(card.virtual_ports.size());
  call.header.arg3 = reply.count;
  if (reply.count > call.header.arg2) return VMKMGMT_SIM_DRIVER_NO_ROOM;

  const bool online = is_online(call.adapter);
  for (std::size_t i = 0; i < card.virtual_ports.size(); ++i) {
    const Port& port = card.virtual_ports[i];
    fill(reply.entries[i].bytes, Entry{.port_wwn = port.wwpn, .node_wwn = port.wwnn, .fc_id = online ? port.fc_id : 0});
  }
  return VMKMGMT_SIM_DRIVER_OK;
}

Node describe(const Port& port, const scenario::Adapter& card) {
  Node node{.fc_id = port.fc_id, .node_wwn = port.wwnn, .port_wwn = port.wwpn};
  node.type = static_cast<std::uint32_t>(fc_hba::PortType::kNPort);
  node.state = static_cast<std::uint32_t>(fc_hba::PortState::kOnline);
  node.classes_of_service = fc_hba::kClass3;
  std::ranges::copy(port.fc4_types, node.fc4_types);
  set_text(node.symbolic_name, port.symbolic_name);
  node.fabric_name = card.fabric->wwn;
  node.speed = port.speed;
  node.units = static_cast<std::uint32_t>(port.units.size());
  return node;
}

DriverStatus nodes(BoardCall& call, const WwnKey& key, NodeListReply& reply) {
  const scenario::Adapter& card = call.adapter.card();
  reply.count = 0;
  if (card.failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  const Port* const port = find_local(call.adapter, key.wwn);
  if (port == nullptr) return VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;

  const std::vector<const Port*> found = nodes_of(call.adapter, *port);
  reply.count = static_cast<std::uint32_t>(found.size());
  call.header.arg3 = reply.count;
  if (reply.count > call.header.arg2) return VMKMGMT_SIM_DRIVER_NO_ROOM;
  for (std::size_t i = 0; i < found.size(); ++i) fill(reply.entries[i].bytes, describe(*found[i], card));
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_virtual_ports(Door& door) {
  door.on<Callback::kNpivReady>(ready);
  door.on<Callback::kVportGetResrc>(resources);
  door.on<Callback::kVportGetAttrib>(attributes);
  door.on<Callback::kVportGetList>(list);
  door.on<Callback::kVportGetNodeInfo>(nodes);
}

}  // namespace simulator
