// The disks behind all logical units, by serial number.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "driver/disk_image.h"
#include "driver/state_store.h"
#include "scenario/scenario.h"

namespace simulator {

class Disks {
 public:
  // The store must outlive the disks. Throws StateError when a disk that it holds has another size.
  Disks(const scenario::Scenario& scenario, StateStore& store);

  DiskImage& of(const scenario::LogicalUnit& unit) { return *images_.at(unit.serial); }

 private:
  std::map<std::string, std::unique_ptr<DiskImage>> images_;
};

}  // namespace simulator
