#include "fabric/members.h"

#include <algorithm>

namespace simulator::fabric {

std::vector<Member> members(Driver& driver, const scenario::Fabric& fabric) {
  std::vector<Member> result;
  for (const scenario::Port& port : fabric.ports) result.push_back({&port, nullptr});
  for (const scenario::Adapter& card : driver.scenario().adapters) {
    Adapter* const adapter = driver.find_adapter(card.board);
    if (!card.fabric || card.fabric->name != fabric.name) continue;
    if (adapter->port_state(adapter->state()) != fc_hba::PortState::kOnline) continue;
    result.push_back({&card.port, adapter});
    for (const scenario::Port& port : card.virtual_ports) result.push_back({&port, adapter});
  }
  std::ranges::sort(result, {}, [](const Member& member) { return member.port->fc_id; });
  return result;
}

}  // namespace simulator::fabric
