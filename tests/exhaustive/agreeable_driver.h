// A driver that agrees to everything it is asked. It keeps no state, so that any number of threads may ask it.
#pragma once

#include <array>
#include <cstdint>

#include "transport/callbacks.h"

namespace vaskdfc::test {

// The parameters of a callback as the platform hands them over, the header first.
using Parameters = std::array<void*, 4>;

class AgreeableDriver {
 public:
  // Driver boards below this one are of SLI mode 4 and of an FCoE type, the others of SLI mode 3 and not.
  static constexpr std::uint32_t kFirstOlder = 16;

  // The byte that fills what a board's replies do not say otherwise: a reply that reaches another board's caller is found out.
  static constexpr std::uint8_t filler(std::uint32_t driver_board) {
    return static_cast<std::uint8_t>(0x40 | (driver_board & 0x1F));
  }

  static void answer(Callback callback, const Parameters& parameters);
};

}  // namespace vaskdfc::test
