// The logical units that an adapter's driver has mapped.
#pragma once

#include <vaskdfc/mapping.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "scsi_data.h"

namespace vaskdfc::tool {

// A Failure where the mapping cannot be read.
std::vector<HbaFcpScsiEntry> read_mapping(std::uint32_t adapter);

Lun lun_of(const HbaFcpScsiEntry& unit);

// What a unit answers when it is asked for its identifier.
struct Identification {
  std::optional<Designator> designator;  // the one that names the unit best
  std::string problem;                   // why there is none; empty if there is one
};
Identification identify(std::uint32_t adapter, const HbaFcpScsiEntry& unit);

struct MappedUnit {
  HbaFcpScsiEntry entry;
  Identification identification;
};

// The mapping as the library makes it, which asks every unit itself and takes only what comes first in a unit's answer. It does not
// say why a unit has no identifier. A Failure where the mapping cannot be read.
std::vector<MappedUnit> read_mapping_by_library(std::uint32_t adapter);

// The designator of the unit itself that is known to be the most unique: NAA, EUI, T10, SCSI name, others.
std::optional<Designator> best_designator(const std::vector<Designator>& designators);

}  // namespace vaskdfc::tool
