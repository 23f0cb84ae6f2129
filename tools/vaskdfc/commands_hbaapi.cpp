// Commands about adapters and their ports: list, show, ports, refresh.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <memory>
#include <optional>

#include "command_line.h"
#include "decode.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

// Runs a query that may fail. A failure goes to `report`, and the answer is missing.
template <typename Query, typename ReportFailure>
auto attempt(Query query, ReportFailure report) -> std::optional<decltype(query())> {
  try {
    return query();
  } catch (const Failure& failure) {
    report(failure);
    return std::nullopt;
  }
}

// A field of an answer that may be missing.
template <typename Answer, typename MakeCell>
Cell of(const std::optional<Answer>& answer, MakeCell make_cell) {
  return answer ? make_cell(*answer) : absent();
}

// Short, because the other columns of the table need room as well.
std::string problem_of(const Failure& failure) {
  if (!failure.call) return failure.message;
  const bool is_platform = failure.call->platform_status != 0;
  return fmt::format("{}: {} status 0x{:x}", failure.message, is_platform ? "platform" : "driver",
                     is_platform ? failure.call->platform_status : failure.call->header.status);
}

// --- list

Record list_record(Context& context, std::uint32_t adapter) {
  Cell problem = absent();
  const auto note = [&](const Failure& failure) {
    if (!problem.value.is_null()) return;  // what fails first mostly says it all
    context.report_failure(failure);
    problem = text_cell(problem_of(failure));
  };
  const auto driver = attempt([=] { return read_driver(adapter); }, note);
  const std::uint32_t board = last_driver_board();
  const auto attributes = attempt([=] { return read_adapter(adapter); }, note);
  const auto port = attempt([=] { return read_port(adapter); }, note);

  return {number_cell(adapter),
          number_cell(board),
          of(attributes, [](const auto& a) { return text_cell(text_of(a.Model)); }),
          of(port, [](const auto& p) { return wwn_cell(p.PortWWN); }),
          of(port, [](const auto& p) { return port_state_cell(p.PortState); }),
          of(port, [](const auto& p) { return speed_cell(p.PortSpeed); }),
          of(driver, [](const auto& d) { return number_cell(d.sli_mode); }),
          of(attributes, [](const auto& a) { return text_cell(text_of(a.FirmwareVersion)); }),
          problem};
}

void list(Context& context) {
  const Session session;
  Section adapters = table_section("adapters", "Adapters",
                                   {{"index", "#"},
                                    {"driver_board", "BOARD"},
                                    {"model", "MODEL"},
                                    {"port_wwn", "PORT WWN"},
                                    {"state", "STATE"},
                                    {"speed", "SPEED"},
                                    {"sli_mode", "SLI"},
                                    {"firmware", "FIRMWARE"},
                                    {"problem", "ERROR"}});
  for (std::uint32_t adapter = 0; adapter < session.adapters(); ++adapter) {
    adapters.records.push_back(list_record(context, adapter));
  }
  context.print({.command = "list", .sections = {std::move(adapters)}});
}

// --- ports

// The fields of a port, whosever it is.
std::vector<Field> port_fields(const std::optional<HbaPortAttributes>& port) {
  const auto field = [&](const char* key, const char* title, auto make_cell) { return Field{key, title, of(port, make_cell)}; };
  using Port = const HbaPortAttributes&;
  return {field("port_wwn", "Port WWN", [](Port p) { return wwn_cell(p.PortWWN); }),
          field("node_wwn", "Node WWN", [](Port p) { return wwn_cell(p.NodeWWN); }),
          field("fc_id", "FC ID", [](Port p) { return fc_id_cell(p.PortFcId); }),
          field("type", "Type", [](Port p) { return port_type_cell(p.PortType); }),
          field("state", "State", [](Port p) { return port_state_cell(p.PortState); }),
          field("speed", "Speed", [](Port p) { return speed_cell(p.PortSpeed); }),
          field("supported_speeds", "Supported speeds", [](Port p) { return speeds_cell(p.PortSupportedSpeed); }),
          field("classes_of_service", "Classes of service",
                [](Port p) { return classes_of_service_cell(p.PortSupportedClassofService); }),
          field("supported_fc4_types", "Supported FC-4 types", [](Port p) { return fc4_types_cell(p.PortSupportedFc4Types); }),
          field("active_fc4_types", "Active FC-4 types", [](Port p) { return fc4_types_cell(p.PortActiveFc4Types); }),
          field("symbolic_name", "Symbolic name", [](Port p) { return text_cell(text_of(p.PortSymbolicName)); }),
          field("os_device_name", "OS device name", [](Port p) { return text_cell(text_of(p.OSDeviceName)); }),
          field("max_frame_size", "Maximum frame size", [](Port p) { return number_cell(p.PortMaxFrameSize, "bytes"); }),
          field("fabric_name", "Fabric name", [](Port p) { return wwn_cell(p.FabricName); }),
          field("discovered_ports", "Discovered ports", [](Port p) { return number_cell(p.NumberofDiscoveredPorts); })};
}

struct PortsArguments {
  std::string adapter;
  bool discovered = false;
  std::optional<std::string> index;
  std::optional<std::string> wwn;
};

// Which ports were asked for; without any of these the adapter's own.
struct Selection {
  bool discovered = false;
  std::optional<std::uint32_t> index;
  std::optional<HbaWwn> wwn;
};

Selection selection_of(const PortsArguments& arguments) {
  Selection selection{.discovered = arguments.discovered};
  if (arguments.index) selection.index = number_argument("--index", *arguments.index);
  if (arguments.wwn) selection.wwn = wwn_argument("--wwn", *arguments.wwn);
  return selection;
}

// Asks about ports of a list. The driver refuses when they have changed since the last refresh; then the view is renewed, once.
template <typename Query>
std::uint32_t query_fresh(Context& context, std::uint32_t adapter, Query query) {
  watch_driver_calls();
  const std::uint32_t result = query();
  if (result != HBA_STATUS_ERROR_STALE_DATA) return result;
  if (context.options().verbose) context.remark(fmt::format("adapter {}: the view of the ports was out of date; renewed", adapter));
  watch_driver_calls();
  const std::uint32_t refreshed = RefreshInformation(adapter);
  if (refreshed != HBA_STATUS_OK) {
    throw operation_failure("the view of the ports is out of date and cannot be renewed", adapter, "RefreshInformation",
                            Results::kHba, refreshed);
  }
  watch_driver_calls();
  return query();
}

// Reads discovered ports from the first to the last: what an index means holds only until the ports change.
std::uint32_t read_discovered_ports(std::uint32_t adapter, std::vector<HbaPortAttributes>& ports) {
  constexpr std::uint32_t kMost = 65536;  // far beyond any fabric; a driver whose list has no end must not fill the memory
  ports.clear();
  for (std::uint32_t index = 0; index < kMost; ++index) {
    HbaPortAttributes port{};
    const std::uint32_t result = GetDiscoveredPortAttributes(adapter, 0, index, &port);
    if (result == HBA_STATUS_ERROR_ILLEGAL_INDEX) return HBA_STATUS_OK;
    if (result != HBA_STATUS_OK) return result;
    ports.push_back(port);
  }
  return HBA_STATUS_ERROR;
}

std::vector<HbaPortAttributes> discovered_ports(Context& context, std::uint32_t adapter) {
  std::vector<HbaPortAttributes> ports;
  const std::uint32_t result = query_fresh(context, adapter, [&] { return read_discovered_ports(adapter, ports); });
  if (result != HBA_STATUS_OK) {
    throw operation_failure(fmt::format("discovered port {} cannot be read", ports.size()), adapter, "GetDiscoveredPortAttributes",
                            Results::kHba, result);
  }
  return ports;
}

HbaPortAttributes port_at(Context& context, std::uint32_t adapter, std::uint32_t index) {
  HbaPortAttributes port{};
  const std::uint32_t result = query_fresh(context, adapter, [&] { return GetPortAttributesByIndex(adapter, 0, index, &port); });
  if (result != HBA_STATUS_OK) {
    throw operation_failure(fmt::format("the port at position {} cannot be read", index), adapter, "GetPortAttributesByIndex",
                            Results::kHba, result);
  }
  return port;
}

HbaPortAttributes port_named(std::uint32_t adapter, const HbaWwn& wwn) {
  HbaPortAttributes port{};
  watch_driver_calls();
  const std::uint32_t result = GetPortAttributesByWWN(adapter, &wwn, &port);
  if (result != HBA_STATUS_OK) {
    throw operation_failure(fmt::format("the port {} cannot be read", wwn_text(wwn)), adapter, "GetPortAttributesByWWN",
                            Results::kHba, result);
  }
  return port;
}

std::vector<HbaPortAttributes> selected_ports(Context& context, std::uint32_t adapter, const Selection& selection) {
  if (selection.discovered) return discovered_ports(context, adapter);
  if (selection.index) return {port_at(context, adapter, *selection.index)};
  if (selection.wwn) return {port_named(adapter, *selection.wwn)};
  return {read_port(adapter)};
}

void ports(Context& context, const PortsArguments& arguments) {
  const Selection selection = selection_of(arguments);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  Section section = blocks_section("ports", fmt::format("Ports of adapter {}", adapter), {});
  for (const Field& field : port_fields(std::nullopt)) section.columns.push_back({field.key, field.title});
  for (const HbaPortAttributes& port : selected_ports(context, adapter, selection)) {
    Record record;
    for (Field& field : port_fields(port)) record.push_back(std::move(field.cell));
    section.records.push_back(std::move(record));
  }
  context.print({.command = "ports", .sections = {std::move(section)}});
}

// --- show

Section adapter_section(std::uint32_t index, std::uint32_t board, const std::optional<HbaAdapterAttributes>& adapter) {
  using Adapter = const HbaAdapterAttributes&;
  const auto field = [&](const char* key, const char* title, auto make_cell) { return Field{key, title, of(adapter, make_cell)}; };
  return record_section(
      "adapter", "Adapter",
      {{"index", "Index", number_cell(index)},
       {"driver_board", "Driver board", number_cell(board)},
       field("manufacturer", "Manufacturer", [](Adapter a) { return text_cell(text_of(a.Manufacturer)); }),
       field("model", "Model", [](Adapter a) { return text_cell(text_of(a.Model)); }),
       field("model_description", "Description", [](Adapter a) { return text_cell(text_of(a.ModelDescription)); }),
       field("serial_number", "Serial number", [](Adapter a) { return text_cell(text_of(a.SerialNumber)); }),
       field("node_wwn", "Node WWN", [](Adapter a) { return wwn_cell(a.NodeWWN); }),
       field("node_symbolic_name", "Node symbolic name", [](Adapter a) { return text_cell(text_of(a.NodeSymbolicName)); }),
       field("hardware_version", "Hardware version", [](Adapter a) { return text_cell(text_of(a.HardwareVersion)); }),
       field("firmware_version", "Firmware version", [](Adapter a) { return text_cell(text_of(a.FirmwareVersion)); }),
       field("option_rom_version", "Option ROM version", [](Adapter a) { return text_cell(text_of(a.OptionROMVersion)); }),
       field("vendor_specific_id", "Vendor-specific id", [](Adapter a) { return hex_cell(a.VendorSpecificID); }),
       field("number_of_ports", "Number of ports", [](Adapter a) { return number_cell(a.NumberOfPorts); }),
       field("driver_name", "Driver name", [](Adapter a) { return text_cell(text_of(a.DriverName)); }),
       field("driver_version", "Driver version", [](Adapter a) { return text_cell(text_of(a.DriverVersion)); })});
}

// The driver's name and version are attributes of the adapter, whose failure does not fail the driver information.
Section driver_section(const std::optional<dfc_drv_info>& driver, bool is_named) {
  using Driver = const dfc_drv_info&;
  const std::optional<dfc_drv_info> named = is_named ? driver : std::nullopt;
  const auto field = [&](const char* key, const char* title, auto make_cell) { return Field{key, title, of(driver, make_cell)}; };
  return record_section("driver", "Driver",
                        {{"name", "Name", of(named, [](Driver d) { return text_cell(text_of(d.driver_name)); })},
                         {"version", "Version", of(named, [](Driver d) { return text_cell(text_of(d.driver_version)); })},
                         field("host_name", "Host name", [](Driver d) { return text_cell(text_of(d.host_name)); }),
                         field("sli_mode", "SLI mode", [](Driver d) { return number_cell(d.sli_mode); }),
                         field("feature_flags", "Feature flags", [](Driver d) { return hex_cell(d.feature_flags); }),
                         field("features", "Features", [](Driver d) { return feature_flags_cell(d.feature_flags); }),
                         field("reply_0", "Reply bytes 0-15", [](Driver d) { return hex_bytes_cell(d.reply_0); }),
                         field("reply_64", "Reply bytes 64-71", [](Driver d) { return hex_bytes_cell(d.reply_64); }),
                         field("reply_108", "Reply word 108", [](Driver d) { return hex_cell(d.reply_108); })});
}

void show(Context& context, const std::string& name) {
  const Session session;
  const std::uint32_t index = session.find(name);
  const auto note = [&](const Failure& failure) { context.report_failure(failure); };
  const auto adapter = attempt([=] { return read_adapter(index); }, note);
  const std::uint32_t board = last_driver_board();
  const auto driver = attempt([=] { return read_driver(index); }, note);
  const auto port = attempt([=] { return read_port(index); }, note);
  context.print({.command = "show",
                 .sections = {adapter_section(index, board, adapter), driver_section(driver, adapter.has_value()),
                              record_section("port", "Port", port_fields(port))}});
}

// --- refresh

void refresh(Context& context, const std::string& name) {
  const Session session;
  const std::uint32_t adapter = session.find(name);
  const bool changes = context.may_send(fmt::format("renew the driver's view of the ports of adapter {}", adapter));
  if (changes) {
    watch_driver_calls();
    const std::uint32_t result = RefreshInformation(adapter);
    if (result != HBA_STATUS_OK) {
      throw operation_failure("the view of the ports cannot be renewed", adapter, "RefreshInformation", Results::kHba, result);
    }
  }
  context.print(
      {.command = "refresh",
       .sections = {record_section(
           "refresh", "Refresh", {{"adapter", "Adapter", number_cell(adapter)}, {"refreshed", "Refreshed", flag_cell(changes)}})}});
}

}  // namespace

void add_hbaapi_commands(CommandLine& commands) {
  commands.add("list", "List all adapters", {"vaskdfc list", "vaskdfc list -o json", "vaskdfc list -o csv --no-header"}, list);

  auto shown = std::make_shared<std::string>();
  commands.add_for_adapter("show", "Show all attributes of an adapter, its driver and its port",
                           {"vaskdfc show 0", "vaskdfc show 10:00:00:11:22:33:44:55 -o keyvalue"}, shown, show);

  auto arguments = std::make_shared<PortsArguments>();
  const Command command = commands.add_for_adapter("ports", "Show an adapter's own port, or ports that it has discovered",
                                                   {"vaskdfc ports 0", "vaskdfc ports 0 --discovered", "vaskdfc ports 0 --index 2",
                                                    "vaskdfc ports 0 --wwn 50:5a:41:00:0c:00:10:01"},
                                                   arguments, ports);
  const auto which = command.add_alternatives("Which ports; without one of these the adapter's own");
  which.add_flag("--discovered", arguments->discovered, "All ports that the adapter has discovered");
  which.add_option("--index", arguments->index, "The port at this position of the driver's port list").type_name("N");
  which.add_option("--wwn", arguments->wwn, "The port of this port WWN").type_name("WWN");

  auto refreshed = std::make_shared<std::string>();
  commands.add_for_adapter("refresh", "Renew the driver's view of the discovered ports", {"vaskdfc refresh 0"}, refreshed, refresh);
}

}  // namespace vaskdfc::tool
