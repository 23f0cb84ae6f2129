// Priority of FCP I/O, and the logical link speed.
#include <algorithm>
#include <span>

#include "driver/driver.h"
#include "families/families.h"
#include "families/interface_generation.h"

namespace simulator {
namespace {

DriverStatus set_flag(BoardCall& call) {
  if (call.header.arg5 > 1) return VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;
  call.adapter.priority().enable(call.header.arg5);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus get_flag(BoardCall& call) {
  call.header.arg5 = call.adapter.priority().load().enabled;
  return VMKMGMT_SIM_DRIVER_OK;
}

// A caller with too little room gets the first rules and the full count.
DriverStatus get_rules(BoardCall& call, dfc_fcp_prio_list& reply) {
  const dfc_fcp_prio_list rules = call.adapter.priority().load().list;
  reply = {};
  reply.count = rules.count;
  std::copy_n(rules.entries, std::min(rules.count, call.header.arg2), reply.entries);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus set_rules(BoardCall& call, const dfc_fcp_prio_list& list) {
  if (list.count != call.header.arg2) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  if (list.count > PriorityRules::kMostRules) return VMKMGMT_SIM_DRIVER_NO_ROOM;
  const auto is_too_high = [](const fcp_prio_entry& rule) { return rule.prio > scenario::kHighestPriority; };
  if (std::ranges::any_of(std::span(list.entries).first(list.count), is_too_high)) return VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;

  call.adapter.priority().replace(list);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus logical_link_speed(BoardCall& call) {
  if (const DriverStatus status = newer_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const bool online = call.adapter.port_state(call.adapter.state()) == fc_hba::PortState::kOnline;
  call.header.arg4 = online ? fc_hba::megabits(call.adapter.card().port.speed) : 0;
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_priority(Door& door) {
  door.on<Callback::kSetFcpPriorityFlag>(set_flag);
  door.on<Callback::kGetFcpPriorityFlag>(get_flag);
  door.on<Callback::kGetFcpPriority>(get_rules);
  door.on<Callback::kSetFcpPriority>(set_rules);
  door.on<Callback::kGetLogicalLinkSpeed>(logical_link_speed);
}

}  // namespace simulator
