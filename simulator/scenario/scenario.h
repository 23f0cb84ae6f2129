// What a scenario says, after every check and in the encodings of FC-HBA: the driver, its adapters, what they are connected to,
// and the faults that are injected.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "scenario/counters.h"
#include "scenario/settings.h"
#include "scenario/targets.h"
#include "vaskdfc/hbaapi.h"

namespace simulator::scenario {

inline constexpr std::uint32_t kBoardNumbers = 32;
inline constexpr std::uint32_t kBlockBytes = 512;  // of every disk

// A port of a fabric: an adapter's own, a virtual or a remote one.
struct Port {
  HbaWwn wwnn{};
  HbaWwn wwpn{};
  std::uint32_t fc_id = 0;  // 0: the fabric has assigned none
  std::string symbolic_name;
  std::array<std::uint8_t, 32> fc4_types{};
  std::uint32_t supported_speeds = 0;
  std::uint32_t speed = 0;
  std::vector<LogicalUnit> units;
  std::optional<std::vector<HbaWwn>> nodes;  // of a virtual port: the ports that it sees; none: all
};

struct Fabric {
  std::string name;
  HbaWwn wwn{};
  std::vector<Port> ports;
};

enum class Protocol : std::uint8_t { kFc, kFcoe };

struct PciIdentity {
  std::uint16_t vendor = 0;
  std::uint16_t device = 0;
  std::string address;
};

// What a configuration region holds before anything writes it.
struct Region {
  std::uint32_t number = 0;
  std::optional<std::string> image;  // as long as the region; none: the region is missing
  std::uint32_t missing = 0;         // the completion code of a dump that finds no image
};

// An FCF that the port has discovered. The words are named after their offset in the driver's reply.
struct Fcf {
  std::array<HbaWwn, 2> names{};
  std::array<std::uint8_t, 6> mac{};
  std::array<std::uint8_t, 3> fc_map{};
  std::vector<std::uint32_t> vlans;
  std::uint32_t word_4 = 0;
  std::uint32_t word_8 = 0;
  bool available = true;
  bool valid = true;  // false: an entry of the adapter's table that holds no FCF
};

struct Adapter {
  std::uint32_t board = 0;
  PciIdentity pci;
  Protocol protocol = Protocol::kFc;
  std::uint32_t sli_mode = 0;
  bool failed = false;
  std::string model;
  std::string description;
  std::string serial_number;
  std::string hardware_version;
  std::string firmware_version;
  std::string option_rom_version;
  std::string os_device_name;
  Port port;
  std::uint32_t max_frame_size = 0;
  std::optional<Fabric> fabric;  // none: no cable is connected
  std::vector<Port> virtual_ports;
  std::uint32_t max_virtual_ports = 0;
  std::uint32_t generation = 0;
  std::uint32_t not_ready_reports = 0;
  bool persistent_link_down = true;  // the driver offers to keep the link down across restarts
  std::vector<Region> regions;
  std::vector<Fcf> fcfs;
  Counters counters;
  ParameterValues parameters;  // those that begin with another value than the driver's
  Vpd vpd;
  Loopback loopback;
  Priority priority;
  std::vector<OasRule> oas_rules;
  std::vector<Binding> bindings;
  std::vector<Event> events;  // in the order of their times
};

// A function of another family that answers at a driver board number.
struct ForeignBoard {
  std::uint32_t board = 0;
  PciIdentity pci;
};

struct Driver {
  std::string name;
  std::string version;
  std::vector<std::string> interfaces;
  bool reset_type_3 = true;  // the driver offers it
};

// What the platform or the driver answers instead of, or on top of, its own answer.
struct Fault {
  std::uint64_t callback = 0;
  std::optional<std::uint32_t> board;
  std::uint32_t first_call = 1;
  std::optional<std::uint32_t> times;  // none: for ever
  std::optional<std::uint32_t> platform_status;
  std::optional<std::uint32_t> driver_status;
  std::map<std::string, std::uint32_t> header;
  std::uint32_t delay_ms = 0;
  std::optional<std::uint32_t> garbage_seed;
};

struct Scenario {
  Driver driver;
  std::optional<std::uint32_t> clock_step_ms;  // none: the clock is the host's
  std::vector<Adapter> adapters;
  std::vector<ForeignBoard> foreign_boards;
  std::vector<Fault> faults;
};

}  // namespace simulator::scenario
