#include "mapped_units.h"

#include <fmt/format.h>
#include <vaskdfc/result.h>
#include <vaskdfc/scsi.h>

#include <algorithm>
#include <array>

#include "driver_list.h"
#include "failure.h"
#include "scsi_sense.h"

namespace vaskdfc::tool {
namespace {

using Mapping = DriverList<HbaFcpTargetMapping, HbaFcpScsiEntry>;

constexpr std::uint8_t kDeviceIdentification = 0x83;
// The allocation length of an INQUIRY as the library sends it has 8 bits.
constexpr std::uint32_t kMostInquiryBytes = 255;

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
  std::array<std::uint8_t, kMostInquiryBytes> page{};
  std::array<std::uint8_t, DFC_SCSI_SENSE_BYTES> sense{};
  std::uint32_t page_bytes = kMostInquiryBytes;
  std::uint32_t sense_bytes = 0;
  const HbaWwn target = unit.FcpId.PortWWN;
  watch_driver_calls();
  const std::uint32_t result = SendScsiInquiry(adapter, &target, lun_in_memory(lun_of(unit)), 1, kDeviceIdentification, page.data(),
                                               &page_bytes, sense.data(), &sense_bytes);
  if (result != HBA_STATUS_OK) return {std::nullopt, fmt::format("cannot be asked: {}", result_name(Results::kHba, result))};
  if (sense_bytes != 0) return {std::nullopt, sense_text(part(sense, 0, sense_bytes))};
  auto designator = best_designator(parse_designators(part(page, 0, page_bytes)));
  std::string problem = designator ? "" : "tells no identifier";
  return {std::move(designator), std::move(problem)};
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
