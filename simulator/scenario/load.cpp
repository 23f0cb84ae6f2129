#include "scenario/load.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "scenario/consistency.h"
#include "scenario/embedded.h"
#include "scenario/fc_hba.h"
#include "scenario/hexadecimal.h"
#include "scenario/values.h"
#include "transport/callbacks.h"
#include "transport/records/regions.h"
#include "vmkmgmt_sim.h"

namespace simulator::scenario {
namespace {

using nlohmann::json;

// The vendor of every adapter of the family.
constexpr std::uint16_t kFamilyVendor = 0x5A41;

// Room for every adapter with all the virtual ports that it can carry. What never ends, as some devices, is not read for ever.
constexpr std::size_t kMostBytes = 64 << 20;

// Values are converted only after the schema has accepted the document, so their form is known here.

std::uint32_t word(const json& value) {
  return value.is_string() ? prefixed_hexadecimal(value.get<std::string>()) : value.get<std::uint32_t>();
}

// What becomes of each item of an optional list.
template <typename Item>
std::vector<Item> list(const json& object, const char* key, Item (*convert)(const json&)) {
  std::vector<Item> result;
  std::ranges::transform(object.value(key, json::array()), std::back_inserter(result), convert);
  return result;
}

std::uint32_t speed_bit(const std::string& name) { return std::ranges::find(fc_hba::kSpeeds, name, &fc_hba::Speed::name)->bit; }

std::uint32_t speed_bits(const json& names) {
  std::uint32_t bits = 0;
  for (const json& name : names) bits |= speed_bit(name.get<std::string>());
  return bits;
}

std::uint32_t fastest(std::uint32_t speeds) {
  const auto fast = std::ranges::find_if(fc_hba::kSpeeds.rbegin(), fc_hba::kSpeeds.rend(),
                                         [=](const fc_hba::Speed& speed) { return (speed.bit & speeds) != 0; });
  return fast == fc_hba::kSpeeds.rend() ? fc_hba::kSpeedUnknown : fast->bit;
}

std::array<std::uint8_t, 32> fc4_map(const json& names) {
  std::array<std::uint8_t, 32> map{};
  for (const json& name : names) {
    const std::uint8_t code = std::ranges::find(fc_hba::kFc4Types, name.get<std::string>(), &fc_hba::Fc4Type::name)->code;
    map[fc_hba::fc4_byte(code)] |= fc_hba::fc4_bit(code);
  }
  return map;
}

std::optional<std::vector<HbaWwn>> nodes(const json& port) {
  if (!port.contains("nodes")) return std::nullopt;
  return list(port, "nodes", wwn);
}

Port port(const json& value) {
  const std::string speed = value.value("speed", "auto");
  const std::uint32_t supported = speed_bits(value.value("supported_speeds", json::array()));
  return {
      .wwnn = wwn(value.at("wwnn")),
      .wwpn = wwn(value.at("wwpn")),
      .fc_id = value.contains("fc_id") ? prefixed_hexadecimal(value["fc_id"]) : 0,
      .symbolic_name = value.value("symbolic_name", ""),
      .fc4_types = fc4_map(value.value("fc4_types", json::array({"FCP"}))),
      .supported_speeds = supported,
      .speed = speed == "auto" ? fastest(supported) : speed_bit(speed),
      .units = logical_units(value),
      .nodes = nodes(value),
  };
}

std::vector<Port> ports(const json& values) {
  std::vector<Port> result;
  std::ranges::transform(values, std::back_inserter(result), port);
  return result;
}

Fabric fabric(const json& value) {
  return {.name = value.at("name"), .wwn = wwn(value.at("wwn")), .ports = ports(value.value("ports", json::array()))};
}

// A virtual port is its adapter's own port under another name.
std::vector<Port> virtual_ports(const json& values, const Port& own) {
  std::vector<Port> result = ports(values);
  for (Port& port : result) {
    port.fc4_types = own.fc4_types;
    port.supported_speeds = own.supported_speeds;
    port.speed = own.speed;
  }
  return result;
}

std::optional<Fabric> fabric_named(const std::vector<Fabric>& fabrics, const json& adapter) {
  if (!adapter.contains("fabric")) return std::nullopt;
  return *std::ranges::find(fabrics, adapter["fabric"].get<std::string>(), &Fabric::name);
}

Region region(const json& value) {
  Region result{.number = value.at("region"), .missing = VMKMGMT_SIM_REGION_EMPTY};
  if (value.contains("missing")) result.missing = prefixed_hexadecimal(value["missing"]);
  if (!value.contains("image")) return result;
  result.image = bytes_of(value["image"].get<std::string>());
  result.image->resize(vaskdfc::region_bytes(result.number));
  return result;
}

Fcf fcf(const json& value) {
  Fcf result{.names = {wwn(value.at("names")[0]), wwn(value.at("names")[1])},
             .vlans = value.value("vlans", std::vector<std::uint32_t>{}),
             .word_4 = value.value("word_4", 0u),
             .word_8 = value.value("word_8", 0u),
             .available = value.value("available", true),
             .valid = value.value("valid", true)};
  std::ranges::copy(*bytes_of(value.at("mac").get<std::string>()), result.mac.begin());
  std::ranges::copy(*bytes_of(value.value("fc_map", "0e:fc:00")), result.fc_map.begin());
  return result;
}

Adapter adapter(const json& value, const std::vector<Fabric>& fabrics) {
  const std::uint32_t board = value.at("board");
  const Port own = port(value);
  return {
      .board = board,
      .pci = {.vendor = kFamilyVendor,
              .device = static_cast<std::uint16_t>(prefixed_hexadecimal(value.at("device"))),
              .address = value.value("pci_address", fmt::format("0000:{:02x}:00.0", 0x10 + board))},
      .protocol = value.value("protocol", "fc") == "fcoe" ? Protocol::kFcoe : Protocol::kFc,
      .sli_mode = value.at("sli_mode"),
      .failed = value.value("condition", "ok") == "failed",
      .model = value.at("model"),
      .description = value.value("description", value.at("model").get<std::string>()),
      .serial_number = value.at("serial_number"),
      .hardware_version = value.value("hardware_version", ""),
      .firmware_version = value.value("firmware_version", ""),
      .option_rom_version = value.value("option_rom_version", ""),
      .os_device_name = value.value("os_device_name", fmt::format("vmhba{}", board)),
      .port = own,
      .max_frame_size = value.value("max_frame_size", 2048u),
      .fabric = fabric_named(fabrics, value),
      .virtual_ports = virtual_ports(value.value("virtual_ports", json::array()), own),
      .max_virtual_ports = max_virtual_ports(value),
      .generation = value.value("generation", 0u),
      .not_ready_reports = value.value("not_ready_reports", 0u),
      .persistent_link_down = value.value("persistent_link_down", true),
      .regions = list(value, "regions", region),
      .fcfs = list(value, "fcfs", fcf),
      .counters = counters(value),
      .parameters = value.value("parameters", ParameterValues{}),
      .vpd = vpd(value),
      .loopback = loopback(value),
      .priority = priority(value),
      .oas_rules = oas_rules(value),
      .bindings = bindings(value),
      .events = events(value),
  };
}

ForeignBoard foreign_board(const json& value) {
  const std::uint32_t board = value.at("board");
  return {.board = board,
          .pci = {.vendor = static_cast<std::uint16_t>(prefixed_hexadecimal(value.at("vendor"))),
                  .device = static_cast<std::uint16_t>(prefixed_hexadecimal(value.at("device"))),
                  .address = value.value("pci_address", fmt::format("0000:{:02x}:00.0", 0x10 + board))}};
}

std::optional<std::uint32_t> optional_word(const json& object, const char* key) {
  if (!object.contains(key)) return std::nullopt;
  return word(object[key]);
}

Fault fault(const json& value) {
  Fault result{
      .callback = find_callback(value.at("callback"))->id,
      .board = optional_word(value, "board"),
      .first_call = value.value("call", 1u),
      .times = optional_word(value, "times"),
      .platform_status = optional_word(value, "platform_status"),
      .driver_status = optional_word(value, "driver_status"),
      .delay_ms = value.value("delay_ms", 0u),
      .garbage_seed = optional_word(value, "garbage_seed"),
  };
  const json header = value.value("header", json::object());
  for (const auto& [name, content] : header.items()) result.header[name] = word(content);
  return result;
}

Driver driver(const json& value) {
  return {.name = value.at("name"),
          .version = value.at("version"),
          .interfaces = value.value("interfaces", std::vector<std::string>{"vaskfcoe-mgmt"}),
          .reset_type_3 = value.value("reset_type_3", true)};
}

std::string read_file(const char* path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rbe"), &std::fclose);
  if (!file) throw ScenarioError::at(path, "", fmt::format("cannot be opened: {}", std::strerror(errno)));

  std::string text;
  char piece[4096];
  while (const std::size_t size = std::fread(piece, 1, sizeof(piece), file.get())) {
    text.append(piece, size);
    if (text.size() > kMostBytes) throw ScenarioError::at(path, "", fmt::format("has more than {} bytes", kMostBytes));
  }
  if (std::ferror(file.get()) != 0) throw ScenarioError::at(path, "", fmt::format("cannot be read: {}", std::strerror(errno)));
  return text;
}

}  // namespace

Scenario load_text(std::string_view file, std::string_view text) {
  const json document = read_document(file, text);
  check_consistency(file, document);

  std::vector<Fabric> fabrics;
  std::ranges::transform(document.value("fabrics", json::array()), std::back_inserter(fabrics), fabric);

  Scenario scenario{.driver = driver(document.at("driver")),
                    .clock_step_ms = optional_word(document.value("clock", json::object()), "step_ms")};
  for (const json& value : document.at("adapters")) scenario.adapters.push_back(adapter(value, fabrics));
  for (const json& value : document.value("foreign_boards", json::array())) scenario.foreign_boards.push_back(foreign_board(value));
  for (const json& value : document.value("faults", json::array())) scenario.faults.push_back(fault(value));
  return scenario;
}

Scenario load_file(const char* path) {
  try {
    return load_text(path, read_file(path));
  } catch (const std::bad_alloc&) {
    throw ScenarioError::at(path, "", "needs more memory than there is");
  }
}

Scenario load_default() { return load_text("the built-in scenario", kDefaultScenarioText); }

}  // namespace simulator::scenario
