// Request Node Identification Data: asking others, and what the adapter tells when it is asked.
#include <algorithm>

#include "driver/driver.h"
#include "fabric/link_services.h"
#include "families/families.h"
#include "families/wwn.h"

namespace simulator {
namespace {

using fabric::Member;
using vaskdfc::RnidKey;
using vaskdfc::RnidReply;

// Only the field that the type selects counts; the rest of a key may be anything.
bool is_asked(const RnidKey& key, std::uint32_t type, const Member& member) {
  if (type == HBA_RNID_NODE_WWN) return member.port->wwnn == key.node_wwn;
  return member.port->wwpn == key.port_wwn;
}

DriverStatus identify(BoardCall& call, const RnidKey& key, RnidReply& reply) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  if (call.header.arg5 > HBA_RNID_PORT_WWN) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  if (call.adapter.port_state(call.adapter.state()) != fc_hba::PortState::kOnline) return VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;
  const auto members = fabric::members(call.driver, *call.adapter.card().fabric);
  const auto found = std::ranges::find_if(members, [&](const Member& member) { return is_asked(key, call.header.arg5, member); });
  if (found == members.end()) return VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;

  const fabric::Bytes accept = fabric::identification(*found, fabric::kCommonIdentification);
  std::ranges::copy(accept, reply.bytes);
  call.header.arg3 = static_cast<std::uint32_t>(accept.size());
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus get_management_info(BoardCall& call, HbaMgmtInfo& info) {
  info = call.adapter.management_info().load();
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus set_management_info(BoardCall& call, const HbaMgmtInfo& info) {
  call.adapter.management_info().set(info);
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_rnid(Door& door) {
  door.on<Callback::kHbaRnid>(identify);
  door.on<Callback::kHbaGetMgmtInfo>(get_management_info);
  door.on<Callback::kHbaSetMgmtInfo>(set_management_info);
}

}  // namespace simulator
