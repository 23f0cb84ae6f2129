// An adapter's configuration regions: what was written last, else what the scenario gives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "driver/state_store.h"
#include "scenario/scenario.h"
#include "vmkmgmt_sim.h"

namespace simulator {

class Regions {
 public:
  // Both must outlive the regions. Throws StateError when what the store holds for one of them is damaged.
  Regions(const scenario::Adapter& card, StateStore& store);

  // Some bytes of a region, or the code with which a dump completes that finds none.
  struct Piece {
    std::string bytes;
    std::uint32_t completion = VMKMGMT_SIM_MAILBOX_OK;
  };

  // At most so many bytes from an offset on; fewer at the region's end. Throws StateError.
  Piece read(std::uint32_t region, std::size_t offset, std::size_t bytes) const;

  // Replaces the whole region; the image is as long as the region. Throws StateError.
  void write(std::uint32_t region, std::span<const std::uint8_t> image);

 private:
  std::string name(std::uint32_t region) const;  // of what the store holds
  std::optional<std::string> written(std::uint32_t region) const;
  void check(std::uint32_t region, const std::optional<std::string>& present) const;
  scenario::Region initial(std::uint32_t region) const;

  const scenario::Adapter& card_;
  StateStore& store_;
};

}  // namespace simulator
