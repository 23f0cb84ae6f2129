#include "exhaustive/operation.h"

namespace vaskdfc::test {

Steps operator+(Steps first, const Steps& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Steps repeated(std::uint32_t times, const Steps& steps) {
  Steps all;
  for (std::uint32_t i = 0; i < times; ++i) all = std::move(all) + steps;
  return all;
}

Steps sli_mode(Result failure) {
  return fails(Callback::kGetTrelDfcInfo, failure) + does_not_matter(Callback::kHbaAdapterAttributes) +
         fails(Callback::kHbaPortAttributes, failure) + does_not_matter(Callback::kMboxSliCfgExtSup);
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all = [] {
    std::vector<Operation> rows;
    for (const auto family :
         {access_operations, event_operations, fabric_operations, fcoe_operations, hbaapi_operations, info_operations,
          loopback_operations, mailbox_operations, mapping_operations, oas_operations, priority_operations, region_operations,
          scsi_operations, transport_operations, unimplemented_operations, vport_operations}) {
      std::vector<Operation> more = family();
      rows.insert(rows.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
    return rows;
  }();
  return all;
}

}  // namespace vaskdfc::test
