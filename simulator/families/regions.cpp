// Configuration regions on adapters of the newer interface, which have callbacks of their own for them.
#include <algorithm>
#include <span>

#include "driver/driver.h"
#include "families/families.h"
#include "families/interface_generation.h"
#include "transport/records/regions.h"

namespace simulator {
namespace {

using vaskdfc::CompletionWord;
using vaskdfc::DumpRequest;
using vaskdfc::RegionData;

// Dump types; the adapter knows four and has something to say for one.
constexpr std::uint32_t kFirstDumpType = 1;
constexpr std::uint32_t kRegionDump = 2;
constexpr std::uint32_t kLastDumpType = 4;

DriverStatus dump(BoardCall& call, const DumpRequest& request, RegionData& data, CompletionWord& completion) {
  if (const DriverStatus status = newer_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  if (request.type < kFirstDumpType || request.type > kLastDumpType) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;

  data = {};
  call.header.arg3 = 0;
  completion.word = VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND;
  if (request.type != kRegionDump) return VMKMGMT_SIM_DRIVER_OK;

  const auto [bytes, word] = call.adapter.regions().read(request.region, request.region_offset, call.header.arg2);
  std::ranges::copy(bytes, data.bytes);
  call.header.arg3 = static_cast<std::uint32_t>(bytes.size());
  completion.word = word;
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus update(BoardCall& call, const RegionData& data, CompletionWord& reply) {
  if (const DriverStatus status = newer_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const std::uint32_t region = call.header.arg4;
  const std::uint32_t size = vaskdfc::region_bytes(region);
  if (size == 0 || call.header.arg2 != size) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;

  call.adapter.regions().write(region, std::span(data.bytes).first(size));
  reply.word = VMKMGMT_SIM_MAILBOX_OK;
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_regions(Door& door) {
  door.on<Callback::kHbaIssueDmpMbx>(dump);
  door.on<Callback::kHbaIssueUpdMbx>(update);
}

}  // namespace simulator
