// The link, the nodes that the adapter knows, and its I/O. What the fields hold is this driver's choice.
#include <bit>

#include "driver/driver.h"
#include "families/families.h"
#include "families/layout.h"
#include "families/port_counters.h"
#include "families/text.h"

namespace simulator {
namespace {

using scenario::Port;

enum class Topology : std::uint32_t { kUnknown = 0, kFabric = 2, kLoopback = 4 };

struct Link {
  std::uint32_t state;
  Topology topology;
  std::uint32_t fc_id;
  std::uint32_t speed;  // Mb/s
  std::uint32_t generation;
  std::uint8_t loopback_mode;
  std::uint8_t protocol;
  std::uint8_t configured_topology;
  std::uint8_t configured_speed;  // Gb/s
  HbaWwn port_wwn;
  HbaWwn node_wwn;
  HbaWwn fabric_wwn;
  char fabric_name[32];
  std::uint8_t zero_80[72];
  std::uint32_t supported_speeds;
  std::uint32_t active_speed;
  std::uint32_t max_frame_size;
  std::uint32_t discovered_ports;
};

Topology topology(fc_hba::PortState state) {
  if (state == fc_hba::PortState::kOnline) return Topology::kFabric;
  return state == fc_hba::PortState::kLoopback ? Topology::kLoopback : Topology::kUnknown;
}

void connect(const scenario::Adapter& card, Link& link) {
  link.fc_id = card.port.fc_id;
  link.fabric_wwn = card.fabric->wwn;
  link.discovered_ports = static_cast<std::uint32_t>(card.fabric->ports.size());
  set_text(link.fabric_name, card.fabric->name);
}

DriverStatus link_information(BoardCall& call, dfc_link_info& reply) {
  const scenario::Adapter& card = call.adapter.card();
  const AdapterState state = call.adapter.state();
  const fc_hba::PortState port_state = call.adapter.port_state(state);
  Link link{.state = static_cast<std::uint32_t>(port_state), .topology = topology(port_state), .generation = state.generation};
  link.loopback_mode = static_cast<std::uint8_t>(state.loopback);
  link.protocol = static_cast<std::uint8_t>(card.protocol);
  link.configured_topology = static_cast<std::uint8_t>(call.adapter.parameters().value(scenario::kTopologyParameter));
  link.configured_speed = static_cast<std::uint8_t>(call.adapter.parameters().value(scenario::kLinkSpeedParameter));
  link.port_wwn = card.port.wwpn;
  link.node_wwn = card.port.wwnn;
  link.supported_speeds = card.port.supported_speeds;
  link.max_frame_size = card.max_frame_size;
  if (link.topology != Topology::kUnknown) {
    link.active_speed = card.port.speed;
    link.speed = fc_hba::megabits(card.port.speed);
  }
  if (link.topology == Topology::kFabric) connect(card, link);
  fill(reply, link);
  return VMKMGMT_SIM_DRIVER_OK;
}

// What half_2 of a node says about it.
constexpr std::uint16_t kServesFcp = 0x1;
constexpr std::uint16_t kHasUnits = 0x2;

dfc_node_info describe(const Port& port, std::size_t position) {
  dfc_node_info node{.half_0 = static_cast<std::uint16_t>(position),
                     .half_2 = 0,
                     .word_4 = port.fc_id,
                     .name_8 = port.wwpn,
                     .name_16 = port.wwnn,
                     .word_24 = static_cast<std::uint32_t>(port.units.size())};
  if (fc_hba::serves_fcp(port.fc4_types)) node.half_2 |= kServesFcp;
  if (!port.units.empty()) node.half_2 |= kHasUnits;
  return node;
}

DriverStatus node_information(BoardCall& call, dfc_node_table& table) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  const auto ports = call.adapter.discovered_ports(call.adapter.state());
  call.header.arg3 = static_cast<std::uint32_t>(ports.size() * sizeof(dfc_node_info));
  if (call.header.arg3 > call.header.arg2) return VMKMGMT_SIM_DRIVER_NO_ROOM;

  table = {};
  for (std::size_t i = 0; i < ports.size(); ++i) table.entries[i] = describe(ports[i], i);
  return VMKMGMT_SIM_DRIVER_OK;
}

struct InputOutput {
  IoCounters exchanges;
  std::uint64_t frames_sent;
  std::uint64_t frames_received;
  std::uint64_t words_sent;
  std::uint64_t words_received;
  std::uint32_t link_failures;
  std::uint32_t losses_of_sync;
  std::uint32_t losses_of_signal;
  std::uint32_t protocol_errors;
  std::uint32_t invalid_words;
  std::uint32_t invalid_crcs;
  std::uint32_t seconds;
  std::uint32_t generation;
};

DriverStatus io_information(BoardCall& call, dfc_io_info& reply) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  const HbaPortStatistics port = counters_at(call.adapter, call.driver.clock().next());
  fill(reply, InputOutput{.exchanges = call.adapter.io(),
                          .frames_sent = static_cast<std::uint64_t>(port.TxFrames),
                          .frames_received = static_cast<std::uint64_t>(port.RxFrames),
                          .words_sent = static_cast<std::uint64_t>(port.TxWords),
                          .words_received = static_cast<std::uint64_t>(port.RxWords),
                          .link_failures = static_cast<std::uint32_t>(port.LinkFailureCount),
                          .losses_of_sync = static_cast<std::uint32_t>(port.LossOfSyncCount),
                          .losses_of_signal = static_cast<std::uint32_t>(port.LossOfSignalCount),
                          .protocol_errors = static_cast<std::uint32_t>(port.PrimitiveSeqProtocolErrCount),
                          .invalid_words = static_cast<std::uint32_t>(port.InvalidTxWordCount),
                          .invalid_crcs = static_cast<std::uint32_t>(port.InvalidCRCCount),
                          .seconds = static_cast<std::uint32_t>(port.SecondsSinceLastReset),
                          .generation = call.adapter.state().generation});
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_link(Door& door) {
  door.on<Callback::kLinkInfo>(link_information);
  door.on<Callback::kNodeInfo>(node_information);
  door.on<Callback::kIoInfo>(io_information);
}

}  // namespace simulator
