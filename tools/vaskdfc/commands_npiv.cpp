// Commands about virtual ports: npiv status, npiv list, npiv show, npiv nodes.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <bit>
#include <memory>
#include <optional>

#include "command_line.h"
#include "decode.h"
#include "driver_list.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

// --- What the driver fills in; these layouts are its own.

struct Resources {
  std::uint32_t most_ports;
  std::uint32_t ports;
  std::uint32_t most_nodes;
  std::uint32_t nodes;
};

struct Entry {
  HbaWwn port_wwn;
  HbaWwn node_wwn;
  std::uint32_t fc_id;
};

struct Attributes {
  HbaWwn node_wwn;
  HbaWwn port_wwn;
  std::uint32_t fc_id;
  std::uint32_t type;
  std::uint32_t state;
  std::uint32_t speed;
  std::array<std::uint8_t, 32> fc4_types;
  std::array<char, 256> symbolic_name;
  HbaWwn fabric_name;
  std::uint32_t max_frame_size;
  std::uint32_t nodes;
  std::uint32_t not_used;
};

struct Node {
  std::uint32_t fc_id;
  std::uint32_t type;
  std::uint32_t state;
  std::uint32_t classes_of_service;
  std::array<std::uint8_t, 32> fc4_types;
  std::array<char, 224> symbolic_name;
  std::uint32_t speed;
  HbaWwn node_wwn;
  HbaWwn port_wwn;
  HbaWwn fabric_name;
  std::uint32_t units;
  std::uint32_t not_received;
};

// As many as the library receives.
constexpr std::uint32_t kMostVirtualPorts = 4096;
constexpr std::uint32_t kMostNodes = 512;

struct Arguments {
  std::string adapter;
  std::optional<std::string> wwn;
};

std::optional<HbaWwn> named_port(const Arguments& arguments) {
  return arguments.wwn ? std::optional(wwn_argument("WWN", *arguments.wwn)) : std::nullopt;
}

void expect_success(std::uint32_t result, std::uint32_t adapter, const char* operation, const std::string& message) {
  if (result != DFC_OK) throw operation_failure(message, adapter, operation, Results::kVport, result);
}

// --- npiv status

void status(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  std::uint32_t ready = 0;
  watch_driver_calls();
  expect_success(DFC_NPIVReadyTest(adapter, &ready), adapter, "DFC_NPIVReadyTest", "the readiness cannot be read");
  dfc_vport_resource record{};
  watch_driver_calls();
  expect_success(DFC_VPGetResource(adapter, &record), adapter, "DFC_VPGetResource", "the resources cannot be read");
  const auto resources = std::bit_cast<Resources>(record);
  context.print({.command = "npiv status",
                 .sections = {record_section("npiv", "Virtual ports",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"ready", "Ready", flag_cell(ready != 0)},
                                              {"readiness_word", "Readiness word", hex_cell(ready)},
                                              {"virtual_ports", "Virtual ports", number_cell(resources.ports)},
                                              {"most_virtual_ports", "Most virtual ports", number_cell(resources.most_ports)},
                                              {"nodes", "Nodes", number_cell(resources.nodes)},
                                              {"most_nodes", "Most nodes", number_cell(resources.most_nodes)}})}});
}

// --- npiv list

void list(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  DriverList<dfc_vport_list, dfc_vport_entry> ports(kMostVirtualPorts);
  watch_driver_calls();
  expect_success(DFC_VPGetList(adapter, ports.get()), adapter, "DFC_VPGetList", "the virtual ports cannot be listed");
  Section section =
      table_section("virtual_ports", "Virtual ports", {{"port_wwn", "PORT WWN"}, {"node_wwn", "NODE WWN"}, {"fc_id", "FC ID"}});
  for (const dfc_vport_entry& record : ports.entries()) {
    const auto entry = std::bit_cast<Entry>(record);
    section.records.push_back({wwn_cell(entry.port_wwn), wwn_cell(entry.node_wwn), fc_id_cell(entry.fc_id)});
  }
  context.print({.command = "npiv list", .sections = {std::move(section)}});
}

// --- npiv show

void show(Context& context, const Arguments& arguments) {
  const HbaWwn wwn = *named_port(arguments);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  dfc_vport_attributes record{};
  watch_driver_calls();
  expect_success(DFC_VPGetAttrib(adapter, &wwn, &record), adapter, "DFC_VPGetAttrib",
                 fmt::format("the virtual port {} cannot be read", wwn_text(wwn)));
  const auto port = std::bit_cast<Attributes>(record);
  context.print({.command = "npiv show",
                 .sections = {record_section("virtual_port", "Virtual port",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"port_wwn", "Port WWN", wwn_cell(port.port_wwn)},
                                              {"node_wwn", "Node WWN", wwn_cell(port.node_wwn)},
                                              {"fc_id", "FC ID", fc_id_cell(port.fc_id)},
                                              {"type", "Type", port_type_cell(port.type)},
                                              {"state", "State", port_state_cell(port.state)},
                                              {"speed", "Speed", speed_cell(port.speed)},
                                              {"fc4_types", "FC-4 types", fc4_types_cell(port.fc4_types)},
                                              {"symbolic_name", "Symbolic name", text_cell(text_of(port.symbolic_name))},
                                              {"fabric_name", "Fabric name", wwn_cell(port.fabric_name)},
                                              {"max_frame_size", "Maximum frame size", number_cell(port.max_frame_size, "bytes")},
                                              {"nodes", "Nodes", number_cell(port.nodes)}})}});
}

// --- npiv nodes

void nodes(Context& context, const Arguments& arguments) {
  const auto named = named_port(arguments);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const HbaWwn wwn = named ? *named : read_port(adapter).PortWWN;
  DriverList<dfc_node_list, dfc_node_entry> found(kMostNodes);
  watch_driver_calls();
  expect_success(DFC_GetAllNodeInfoByWWN(adapter, &wwn, found.get()), adapter, "DFC_GetAllNodeInfoByWWN",
                 fmt::format("the nodes that port {} sees cannot be listed", wwn_text(wwn)));
  Section section = blocks_section("nodes", fmt::format("Nodes that port {} sees", wwn_text(wwn)),
                                   {{"port_wwn", "Port WWN"},
                                    {"node_wwn", "Node WWN"},
                                    {"fc_id", "FC ID"},
                                    {"type", "Type"},
                                    {"state", "State"},
                                    {"speed", "Speed"},
                                    {"classes_of_service", "Classes of service"},
                                    {"fc4_types", "FC-4 types"},
                                    {"symbolic_name", "Symbolic name"},
                                    {"fabric_name", "Fabric name"},
                                    {"units", "Logical units"}});
  for (const dfc_node_entry& record : found.entries()) {
    const auto node = std::bit_cast<Node>(record);
    section.records.push_back({wwn_cell(node.port_wwn), wwn_cell(node.node_wwn), fc_id_cell(node.fc_id), port_type_cell(node.type),
                               port_state_cell(node.state), speed_cell(node.speed),
                               classes_of_service_cell(node.classes_of_service), fc4_types_cell(node.fc4_types),
                               text_cell(text_of(node.symbolic_name)), wwn_cell(node.fabric_name), number_cell(node.units)});
  }
  context.print({.command = "npiv nodes", .sections = {std::move(section)}});
}

}  // namespace

void add_npiv_commands(CommandLine& commands) {
  commands.group("npiv", "Virtual ports (N_Port ID virtualisation)",
                 {"vaskdfc npiv status 0", "vaskdfc npiv list 0", "vaskdfc npiv nodes 0"});
  auto arguments = std::make_shared<Arguments>();
  commands.add_for_adapter("npiv status", "Show whether a port can carry virtual ports, and how many", {"vaskdfc npiv status 0"},
                           arguments, status);
  commands.add_for_adapter("npiv list", "List the virtual ports", {"vaskdfc npiv list 0"}, arguments, list);
  commands
      .add_for_adapter("npiv show", "Show the attributes of a virtual port", {"vaskdfc npiv show 0 10:00:00:11:22:33:44:55"},
                       arguments, show)
      .add_option("WWN", arguments->wwn, "Port WWN of the virtual port")
      .required();
  commands
      .add_for_adapter("npiv nodes", "List the nodes that a virtual port sees, or the adapter's own port",
                       {"vaskdfc npiv nodes 0", "vaskdfc npiv nodes 0 10:00:00:11:22:33:44:55"}, arguments, nodes)
      .add_option("WWN", arguments->wwn, "Port WWN of the virtual port; without it the adapter's own");
}

}  // namespace vaskdfc::tool
