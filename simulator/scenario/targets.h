// What stands behind ports: logical units, bindings to them, and events that a fabric brings.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "vaskdfc/hbaapi.h"

namespace simulator::scenario {

// The descriptor with which a unit's device identification begins.
enum class Identifier : std::uint8_t { kNaa, kEui, kT10, kUnusable };

// A disk of blocks of 512 bytes. Units of the same serial number are one disk, seen through several ports.
struct LogicalUnit {
  std::uint32_t lun = 0;
  std::uint32_t blocks = 0;
  std::string vendor;
  std::string product;
  std::string revision;
  std::string serial;
  Identifier identifier = Identifier::kNaa;
  bool read_only = false;
};

// Fixes the SCSI address of a port that its port WWN, its node WWN or its FC id names.
struct Binding {
  enum class Key : std::uint32_t { kPortWwn = 1, kNodeWwn = 2, kFcId = 3 };
  Key key = Key::kPortWwn;
  HbaWwn wwn{};
  std::uint32_t fc_id = 0;
  std::uint32_t bus = 0;
  std::uint32_t target = 0;
};

// With the codes of FC-HBA.
struct Event {
  enum class Code : std::uint32_t { kLip = 1, kLinkUp = 2, kLinkDown = 3, kRscn = 5 };
  std::uint32_t at_ms = 0;
  Code code = Code::kRscn;
  std::uint32_t fc_id = 0;  // the port that an RSCN is about
};

// Of a port of a fabric.
std::vector<LogicalUnit> logical_units(const nlohmann::json& port);
// Both of an adapter.
std::vector<Binding> bindings(const nlohmann::json& adapter);
std::vector<Event> events(const nlohmann::json& adapter);

}  // namespace simulator::scenario
