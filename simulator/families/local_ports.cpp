#include "families/local_ports.h"

#include <algorithm>

#include "families/wwn.h"

namespace simulator {

using scenario::Port;

const Port* find_virtual(const Adapter& adapter, const HbaWwn& wwpn) {
  const auto& ports = adapter.card().virtual_ports;
  const auto found = std::ranges::find_if(ports, [&](const Port& port) { return port.wwpn == wwpn; });
  return found == ports.end() ? nullptr : &*found;
}

const Port* find_local(const Adapter& adapter, const HbaWwn& wwpn) {
  const Port& own = adapter.card().port;
  return own.wwpn == wwpn ? &own : find_virtual(adapter, wwpn);
}

std::vector<const Port*> nodes_of(const Adapter& adapter, const Port& port) {
  std::vector<const Port*> result;
  for (const Port& discovered : adapter.discovered_ports(adapter.state())) {
    const auto is_it = [&](const HbaWwn& wwpn) { return wwpn == discovered.wwpn; };
    if (!port.nodes || std::ranges::any_of(*port.nodes, is_it)) result.push_back(&discovered);
  }
  return result;
}

}  // namespace simulator
