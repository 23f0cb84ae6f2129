// Commands about Request Node Identification Data: rnid get, rnid set, rnid send.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "change_report.h"
#include "command_line.h"
#include "decode.h"
#include "link_services.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::string wwn;
  bool is_node = false;
  std::optional<std::string> unit_type;
  std::optional<std::string> attached_nodes;
  std::optional<std::string> ip_version;
  std::optional<std::string> udp_port;
  std::optional<std::string> ip_address;
  std::optional<std::string> flags;
};

std::vector<Field> info_fields(const HbaMgmtInfo& info) {
  return {{"wwn", "WWN", wwn_cell(info.wwn)},
          {"unit_type", "Unit type", number_cell(info.unittype)},
          {"port_id", "Port id", hex_cell(info.PortId)},
          {"attached_nodes", "Attached nodes", number_cell(info.NumberOfAttachedNodes)},
          {"ip_version", "IP version", number_cell(info.IPVersion)},
          {"udp_port", "UDP port", number_cell(info.UDPPort)},
          {"ip_address", "IP address", hex_bytes_cell(info.IPAddress)},
          {"discovery_flags", "Discovery flags", number_cell(info.TopologyDiscoveryFlags)}};
}

HbaMgmtInfo read_info(std::uint32_t adapter) {
  HbaMgmtInfo info{};
  watch_driver_calls();
  const std::uint32_t result = GetRNIDMgmtInfo(adapter, &info);
  if (result == HBA_STATUS_OK) return info;
  throw operation_failure("the identification data cannot be read", adapter, "GetRNIDMgmtInfo", Results::kHba, result);
}

void get(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  auto fields = joined({{"adapter", "Adapter", number_cell(adapter)}}, info_fields(read_info(adapter)));
  context.print({.command = "rnid get", .sections = {record_section("rnid", "Identification data", std::move(fields))}});
}

// What the arguments ask for; what they do not name stays.
HbaMgmtInfo with(HbaMgmtInfo info, const Arguments& arguments) {
  const auto word = [](const char* name, const std::optional<std::string>& spelling, std::uint32_t& value) {
    if (spelling) value = number_argument(name, *spelling);
  };
  const auto half = [](const char* name, const std::optional<std::string>& spelling, std::uint16_t& value) {
    if (spelling) value = static_cast<std::uint16_t>(number_argument(name, *spelling, UINT16_MAX));
  };
  word("--unit-type", arguments.unit_type, info.unittype);
  word("--attached-nodes", arguments.attached_nodes, info.NumberOfAttachedNodes);
  half("--ip-version", arguments.ip_version, info.IPVersion);
  half("--udp-port", arguments.udp_port, info.UDPPort);
  half("--flags", arguments.flags, info.TopologyDiscoveryFlags);
  if (!arguments.ip_address) return info;
  const auto bytes = parse_bytes(*arguments.ip_address, sizeof(info.IPAddress));
  if (!bytes) {
    throw usage_failure(fmt::format("--ip-address: \"{}\" is no 16 bytes", *arguments.ip_address), "32 hexadecimal digits");
  }
  std::ranges::copy(*bytes, info.IPAddress);
  return info;
}

void set(Context& context, const Arguments& arguments) {
  const std::array given{arguments.unit_type, arguments.attached_nodes, arguments.ip_version,
                         arguments.udp_port,  arguments.ip_address,     arguments.flags};
  if (std::ranges::none_of(given, [](const auto& argument) { return argument.has_value(); })) {
    throw usage_failure("nothing to set", "\"vaskdfc rnid set --help\" lists what can be set");
  }
  with({}, arguments);  // what is spelled wrongly is wrong whatever the adapter holds
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const HbaMgmtInfo before = read_info(adapter);
  const HbaMgmtInfo wanted = with(before, arguments);
  const Setting setting{.command = "rnid set",
                        .adapter = adapter,
                        .intent = "set the identification data",
                        .place = "the driver",
                        .operation = "SetRNIDMgmtInfo",
                        .results = Results::kHba,
                        .read = [=] { return info_fields(read_info(adapter)); },
                        .write = [=] { return SetRNIDMgmtInfo(adapter, &wanted); }};
  change(context, setting, info_fields(before), info_fields(wanted));
}

// --- rnid send

constexpr std::size_t kReplyBytes = 64;

std::vector<Field> answer_fields(std::uint32_t adapter, const HbaWwn& wwn, Bytes reply) {
  const auto answer = parse_link_answer(reply);
  const Bytes payload = answer && answer->accepted ? answer->payload : Bytes{};
  return joined(
      joined({{"adapter", "Adapter", number_cell(adapter)}, {"wwn", "WWN", wwn_cell(wwn)}}, identification_fields(payload)),
      {{"reply", "Reply", hex_bytes_cell(reply)}});
}

void send(Context& context, const Arguments& arguments) {
  const HbaWwn wwn = wwn_argument("WWN", arguments.wwn, "\"vaskdfc ports ADAPTER --discovered\" shows those that there are");
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  std::array<std::uint8_t, kReplyBytes> reply{};
  std::uint32_t bytes = kReplyBytes;
  watch_driver_calls();
  const std::uint32_t result =
      SendRNID(adapter, &wwn, arguments.is_node ? HBA_RNID_NODE_WWN : HBA_RNID_PORT_WWN, reply.data(), &bytes);
  if (result != HBA_STATUS_OK) {
    throw operation_failure(fmt::format("{} did not identify itself", wwn_text(wwn)), adapter, "SendRNID", Results::kHba, result);
  }
  auto fields = answer_fields(adapter, wwn, part(reply, 0, bytes));
  context.print({.command = "rnid send", .sections = {record_section("answer", "Answer", std::move(fields))}});
}

}  // namespace

void add_rnid_commands(CommandLine& commands) {
  commands.group("rnid", "Node identification data (RNID): what the adapter tells, and what others tell",
                 {"vaskdfc rnid get 0", "vaskdfc rnid set 0 --udp-port 7000", "vaskdfc rnid send 0 50:5a:41:00:0c:00:20:01"});
  auto arguments = std::make_shared<Arguments>();
  commands.add_for_adapter("rnid get", "Show what the adapter tells when others ask it", {"vaskdfc rnid get 0"}, arguments, get);
  const Command changed = commands.add_for_adapter("rnid set", "Change what the adapter tells; what is not named stays",
                                                   {"vaskdfc rnid set 0 --unit-type 10 --udp-port 7000"}, arguments, set);
  changed.add_option("--unit-type", arguments->unit_type, "Unit type").type_name("N");
  changed.add_option("--attached-nodes", arguments->attached_nodes, "Number of attached nodes").type_name("N");
  changed.add_option("--ip-version", arguments->ip_version, "IP version").type_name("N");
  changed.add_option("--udp-port", arguments->udp_port, "UDP port").type_name("N");
  changed.add_option("--ip-address", arguments->ip_address, "All 16 bytes of the IP address").type_name("BYTES");
  changed.add_option("--flags", arguments->flags, "Topology discovery flags").type_name("N");
  const Command sent =
      commands.add_for_adapter("rnid send", "Ask a remote port for its identification",
                               {"vaskdfc rnid send 0 50:5a:41:00:0c:00:20:01", "vaskdfc rnid send 0 WWN --node"}, arguments, send);
  sent.add_option("WWN", arguments->wwn, "Port WWN, or with --node a node WWN").required();
  sent.add_flag("--node", arguments->is_node, "WWN is that of a node");
}

}  // namespace vaskdfc::tool
