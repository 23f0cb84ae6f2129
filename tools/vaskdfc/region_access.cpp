#include "region_access.h"

#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>

#include "session.h"

namespace vaskdfc::tool {
namespace {

// No larger region can be read.
constexpr std::uint32_t kMostBytes = 4096;

// The driver's callback that reads regions.
constexpr std::uint64_t kDumpCallback = 167;

constexpr KnownRegion opaque(std::uint32_t number) { return {.number = number}; }

constexpr std::array kRegions{
    opaque(0),
    opaque(4),
    opaque(5),
    opaque(6),
    opaque(7),
    opaque(8),
    opaque(9),
    opaque(10),
    KnownRegion{.number = 14, .what = "block of FCoE adapters", .writable = true},
    opaque(17),
    opaque(19),
    opaque(21),
    KnownRegion{.number = 22, .what = "table of 16-byte entries", .shown = true, .writable = true},
    KnownRegion{.number = 23, .what = "FCoE parameters, FCF connect list, link down", .shown = true, .writable = true},
    opaque(30),
    opaque(32),
    opaque(160),
    opaque(162),
};

// The older generation's reader takes these two only.
std::optional<std::uint32_t> older_size(std::uint32_t region) {
  if (region == 22) return DFC_REGION22_BYTES;
  if (region == 23) return DFC_REGION23_BYTES;
  return std::nullopt;
}

bool is_missing(std::uint32_t result) {
  return result == DFC_DUMP_COMPLETED_FFFD || result == DFC_DUMP_COMPLETED_FFF7 || result == DFC_DUMP_COMPLETED_FFF6;
}

RegionRead::State state_of(std::uint32_t result, std::size_t bytes) {
  using enum RegionRead::State;
  if (is_missing(result)) return kMissing;
  if (result != DFC_OK) return kUnreadable;
  return bytes == 0 ? kMissing : kPresent;
}

RegionRead read_newer(std::uint32_t adapter, std::uint32_t region) {
  RegionRead read{.operation = "DFC_IssueDumpMBox"};
  read.bytes.resize(kMostBytes);
  std::uint32_t length = kMostBytes;
  watch_driver_calls();
  read.result = DFC_IssueDumpMBox(adapter, DFC_DUMP_TYPE_REGION, 0, region, 0, read.bytes.data(), &length);
  read.bytes.resize(read.result == DFC_OK ? length : 0);
  read.state = state_of(read.result, read.bytes.size());
  // The library asks the driver for the whole region, and for none that it does not know.
  const auto call = last_driver_call();
  if (call && call->callback == kDumpCallback) read.size = call->sent.arg2;
  return read;
}

RegionRead read_older(std::uint32_t adapter, std::uint32_t region) {
  RegionRead read;
  read.size = older_size(region);
  if (!read.size) return read;
  read.operation = "LEG_IssueDumpMBox";
  read.bytes.resize(*read.size);
  std::uint32_t length = *read.size;
  watch_driver_calls();
  read.result = LEG_IssueDumpMBox(adapter, read.bytes.data(), &length, region);
  if (read.result != DFC_OK) read.bytes.clear();
  read.state = state_of(read.result, read.bytes.size());
  return read;
}

}  // namespace

Results results_of_writes(std::uint32_t sli_mode) { return sli_mode >= kNewerSliMode ? Results::kRegion : Results::kMailbox; }

RegionRead read_region(std::uint32_t adapter, std::uint32_t sli_mode, std::uint32_t region) {
  return sli_mode >= kNewerSliMode ? read_newer(adapter, region) : read_older(adapter, region);
}

Failure region_failure(std::uint32_t adapter, std::uint32_t region, const RegionRead& read) {
  if (read.operation.empty()) {
    return plain_failure(Exit::kFailed, fmt::format("region {} cannot be read from an adapter of this generation", region),
                         "\"vaskdfc region list ADAPTER\" shows the regions that there are");
  }
  const bool missing = read.state == RegionRead::State::kMissing;
  return operation_failure(fmt::format("region {} {}", region, missing ? "is missing" : "cannot be read"), adapter, read.operation,
                           Results::kDump, read.result);
}

RegionRead read_region_or_missing(std::uint32_t adapter, std::uint32_t region) {
  RegionRead read = read_region(adapter, read_driver(adapter).sli_mode, region);
  if (read.state == RegionRead::State::kUnreadable) throw region_failure(adapter, region, read);
  return read;
}

RegionRead read_present_region(std::uint32_t adapter, std::uint32_t region) {
  RegionRead read = read_region_or_missing(adapter, region);
  if (read.state == RegionRead::State::kMissing) throw region_failure(adapter, region, read);
  return read;
}

std::vector<KnownRegion> known_regions(std::uint32_t sli_mode) {
  std::vector<KnownRegion> regions;
  std::ranges::copy_if(kRegions, std::back_inserter(regions), [&](const KnownRegion& region) {
    return sli_mode >= kNewerSliMode || older_size(region.number).has_value();
  });
  return regions;
}

}  // namespace vaskdfc::tool
