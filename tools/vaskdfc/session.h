// One use of the library: open, the adapters, close. Every query that can fail throws a Failure that says why.
#pragma once

#include <vaskdfc.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "failure.h"

namespace vaskdfc::tool {

class Session {
 public:
  enum class Needs { kDriver, kAdapter };

  // Throws a Failure with exit code 3 where there is no driver, or no adapter although one is needed.
  explicit Session(Needs needs = Needs::kAdapter);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  std::uint32_t adapters() const { return count_; }

  // Whether the adapter was in a failed state when the library found it.
  bool has_failed(std::uint32_t adapter) const { return boards_[adapter].condition < 0; }

  // The adapter that an index or a port WWN names; a Failure with exit code 3 says which there are.
  std::uint32_t find(const std::string& name) const;

 private:
  std::array<dfc_brd_info, DFC_MAX_BOARDS> boards_{};
  std::uint32_t count_ = 0;
};

// The driver board number of an adapter, as the last call to the driver carried it.
std::uint32_t last_driver_board();

HbaAdapterAttributes read_adapter(std::uint32_t adapter);
HbaPortAttributes read_port(std::uint32_t adapter);
dfc_drv_info read_driver(std::uint32_t adapter);

}  // namespace vaskdfc::tool
