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

}  // namespace

std::vector<HbaFcpScsiEntry> read_mapping(std::uint32_t adapter) {
  constexpr std::uint32_t kRoom = 1024;  // as many as the library receives
  Mapping mapping(kRoom);
  watch_driver_calls();
  const std::uint32_t result = GetFcpTargetMapping(adapter, mapping.get());
  if (result == HBA_STATUS_OK) return mapping.entries();
  throw operation_failure("the mapping cannot be read", adapter, "GetFcpTargetMapping", Results::kHba, result);
}

Lun lun_of(const HbaFcpScsiEntry& unit) { return std::to_array(unit.FcpId.FcpLun); }

Identification identify(std::uint32_t adapter, const HbaFcpScsiEntry& unit) {
  try {
    const Answer answer = inquiry({adapter, unit.FcpId.PortWWN, lun_of(unit)}, kDeviceIdentification);
    if (!answer.sense.empty()) return {std::nullopt, sense_text(answer.sense)};
    auto designator = best_designator(parse_designators(answer.data));
    std::string problem = designator ? "" : "tells no identifier";
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
