// Priority of FCP I/O: the rules of an adapter, and whether they count.
#pragma once

#include <cstdint>

#include "driver/kept_bytes.h"
#include "scenario/scenario.h"
#include "vaskdfc/priority.h"

namespace simulator {

class PriorityRules {
 public:
  static constexpr std::uint32_t kMostRules = std::extent_v<decltype(dfc_fcp_prio_list::entries)>;

  // What lasts. Entries beyond the count are zeros.
  struct Content {
    std::uint32_t enabled;
    dfc_fcp_prio_list list;
  };

  // The store must outlive the rules. Throws StateError when what it holds is damaged.
  PriorityRules(const scenario::Adapter& card, StateStore& store);

  // All of these throw StateError.
  Content load() const;
  void enable(std::uint32_t flag);
  void replace(const dfc_fcp_prio_list& list);

 private:
  KeptBytes kept_;
};

}  // namespace simulator
