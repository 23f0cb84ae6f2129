#include "driver/disks.h"

namespace simulator {

Disks::Disks(const scenario::Scenario& scenario, StateStore& store) {
  for (const scenario::Adapter& adapter : scenario.adapters) {
    if (!adapter.fabric) continue;
    for (const scenario::Port& port : adapter.fabric->ports) {
      for (const scenario::LogicalUnit& unit : port.units) {
        if (images_.contains(unit.serial)) continue;
        const std::uint64_t blocks = unit.blocks;
        images_[unit.serial] = store.disk("disk-" + unit.serial + ".img", blocks * scenario::kBlockBytes);
      }
    }
  }
}

}  // namespace simulator
