#include "mapped_units.h"

#include <fmt/format.h>
#include <vaskdfc/result.h>

#include <algorithm>
#include <array>

#include "driver_list.h"
#include "failure.h"
#include "scsi_exchange.h"
#include "scsi_sense.h"

namespace vaskdfc::tool {
namespace {

using Mapping = DriverList<HbaFcpTargetMapping, HbaFcpScsiEntry>;
using MappingByLibrary = DriverList<HbaFcpTargetMappingV2, HbaFcpScsiEntryV2>;

constexpr std::uint32_t kRoom = 1024;  // as many as the library receives

constexpr const char* kNoIdentifier = "tells no identifier";

}  // namespace

std::vector<HbaFcpScsiEntry> read_mapping(std::uint32_t adapter) {
  Mapping mapping(kRoom);
  watch_driver_calls();
  const std::uint32_t result = GetFcpTargetMapping(adapter, mapping.get());
  if (result == HBA_STATUS_OK) return mapping.entries();
  throw operation_failure("the mapping cannot be read", adapter, "GetFcpTargetMapping", Results::kHba, result);
}

std::vector<MappedUnit> read_mapping_by_library(std::uint32_t adapter) {
  const HbaWwn wwn = read_port(adapter).PortWWN;
  MappingByLibrary mapping(kRoom);
  watch_driver_calls();
  const std::uint32_t result = DFC_GetFcpTargetMappingV2(adapter, &wwn, mapping.get());
  if (result != HBA_STATUS_OK) {
    throw operation_failure("the mapping cannot be read", adapter, "DFC_GetFcpTargetMappingV2", Results::kHba, result);
  }
  std::vector<MappedUnit> units;
  for (const HbaFcpScsiEntryV2& entry : mapping.entries()) {
    auto designator = parse_designator(entry.LUID);
    std::string problem = designator ? "" : kNoIdentifier;
    units.push_back({{entry.ScsiId, entry.FcpId}, {std::move(designator), std::move(problem)}});
  }
  return units;
}

Lun lun_of(const HbaFcpScsiEntry& unit) { return std::to_array(unit.FcpId.FcpLun); }

Identification identify(std::uint32_t adapter, const HbaFcpScsiEntry& unit) {
  try {
    const Answer answer = inquiry({adapter, unit.FcpId.PortWWN, lun_of(unit)}, kDeviceIdentification);
    if (!answer.sense.empty()) return {std::nullopt, sense_text(answer.sense)};
    auto designator = best_designator(parse_designators(answer.data));
    std::string problem = designator ? "" : kNoIdentifier;
    return {std::move(designator), std::move(problem)};
  } catch (const Failure& failure) {
    return {std::nullopt, fmt::format("cannot be asked: {}", result_name(failure.results, failure.result.value_or(HBA_STATUS_OK)))};
  }
}

std::optional<Designator> best_designator(const std::vector<Designator>& designators) {
  constexpr std::array kBestFirst{"NAA", "EUI-64", "T10", "SCSI name"};
  const auto rank = [&](const Designator& designator) {
    return std::ranges::find(kBestFirst, designator.kind) - kBestFirst.begin();
  };
  std::optional<Designator> best;
  for (const Designator& designator : designators) {
    if (designator.association != kOfTheUnit) continue;
    if (!best || rank(designator) < rank(*best)) best = designator;
  }
  return best;
}

}  // namespace vaskdfc::tool
