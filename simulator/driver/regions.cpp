#include "driver/regions.h"

#include <fmt/format.h>

#include <algorithm>

#include "driver/stored_name.h"
#include "transport/records/regions.h"

namespace simulator {

using vaskdfc::region_bytes;

Regions::Regions(const scenario::Adapter& card, StateStore& store) : card_(card), store_(store) {
  for (const auto& [region, bytes] : vaskdfc::kRegionSizes) written(region);
}

Regions::Piece Regions::read(std::uint32_t region, std::size_t offset, std::size_t bytes) const {
  if (region_bytes(region) == 0) return {.bytes = {}, .completion = VMKMGMT_SIM_REGION_EMPTY};

  const scenario::Region unwritten = initial(region);
  std::optional<std::string> image = written(region);
  if (!image) image = unwritten.image;
  if (!image) return {.bytes = {}, .completion = unwritten.missing};
  return {.bytes = image->substr(std::min(offset, image->size()), bytes)};
}

void Regions::write(std::uint32_t region, std::span<const std::uint8_t> image) {
  store_.update(name(region), [=, this](const std::optional<std::string>& present) {
    check(region, present);
    return std::string(image.begin(), image.end());
  });
}

std::string Regions::name(std::uint32_t region) const { return stored_name(fmt::format("region-{}", region), card_, "bin"); }

std::optional<std::string> Regions::written(std::uint32_t region) const {
  std::optional<std::string> image = store_.load(name(region));
  check(region, image);
  return image;
}

void Regions::check(std::uint32_t region, const std::optional<std::string>& present) const {
  if (!present || present->size() == region_bytes(region)) return;
  throw StateError::damaged(store_.describe(name(region)), "the whole file", fmt::format("{} bytes", region_bytes(region)));
}

scenario::Region Regions::initial(std::uint32_t region) const {
  const auto found = std::ranges::find(card_.regions, region, &scenario::Region::number);
  if (found != card_.regions.end()) return *found;
  return {.number = region, .image = std::nullopt, .missing = VMKMGMT_SIM_REGION_EMPTY};
}

}  // namespace simulator
