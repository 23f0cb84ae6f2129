// What an adapter tells about itself in an RNID.
#pragma once

#include "driver/kept_bytes.h"
#include "scenario/scenario.h"
#include "vaskdfc/events.h"

namespace simulator {

class ManagementInfo {
 public:
  // The store must outlive the object. Throws StateError when what it holds is damaged.
  ManagementInfo(const scenario::Adapter& card, StateStore& store);

  // What was set last. Both throw StateError.
  HbaMgmtInfo load() const;
  void set(const HbaMgmtInfo& info);

 private:
  KeptBytes kept_;
};

}  // namespace simulator
