// Faults that a scenario injects into calls.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "driver/door.h"
#include "scenario/scenario.h"

namespace simulator {

// What faults do to one call.
struct Disturbance {
  std::optional<std::uint32_t> platform_status;
  std::optional<std::uint32_t> driver_status;
  std::map<std::string, std::uint32_t> header;
  std::uint32_t delay_ms = 0;
  std::optional<std::uint64_t> garbage_seed;

  // The driver itself is not asked.
  bool replaces_answer() const { return platform_status || driver_status; }
  void wait() const;
  void apply(const vaskdfc::CallbackFacts& callback, dfc_mgmt_hdr& header_record, const Payloads& payloads) const;
};

class Faults {
 public:
  explicit Faults(const std::vector<scenario::Fault>& faults);

  // Counts a call against every fault that matches it and merges the faults that hit it; the later one wins.
  Disturbance strike(const vaskdfc::CallbackFacts& callback, std::uint32_t board);

 private:
  struct Counted {
    scenario::Fault fault;
    std::uint64_t calls = 0;
  };
  std::vector<Counted> faults_;
};

}  // namespace simulator
