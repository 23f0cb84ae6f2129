#include "driver/disks.h"

namespace simulator {

Disks::Disks(const scenario::Scenario& scenario, StateStore& store) {
  for (const scenario::Adapter& adapter : scenario.adapters) {
    if (!adapter.fabric) continue;
    for (const scenario::Port& port : adapter.fabric->ports) {
      for (const scenario::LogicalUnit& unit : port.units) {
        auto& image = images_[unit.serial];
        if (!image) image = store.disk("disk-" + unit.serial + ".img", std::uint64_t{unit.blocks} * scenario::kBlockBytes);
      }
    }
  }
}

}  // namespace simulator
