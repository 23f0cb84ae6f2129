// One adapter: the card that the scenario describes and what it remembers.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "driver/adapter_memory.h"
#include "driver/adapter_state.h"
#include "driver/clock.h"
#include "driver/event_queue.h"
#include "driver/io_counters.h"
#include "driver/management_info.h"
#include "driver/oas_rules.h"
#include "driver/parameters.h"
#include "driver/pci_space.h"
#include "driver/priority_rules.h"
#include "driver/regions.h"
#include "driver/state_store.h"
#include "scenario/fc_hba.h"
#include "scenario/scenario.h"

namespace simulator {

class Adapter {
 public:
  // Both must outlive the adapter. Throws StateError when what the store holds for this adapter is damaged.
  Adapter(const scenario::Adapter& card, StateStore& store);

  const scenario::Adapter& card() const { return card_; }

  // Both throw StateError.
  AdapterState state() const;
  AdapterState change(const std::function<void(AdapterState&)>& changes);

  Regions& regions() { return regions_; }
  // Named byte strings that applications leave with the firmware; they end with the process.
  std::map<std::string, std::string>& objects() { return objects_; }

  EventQueue& events() { return events_; }

  Parameters& parameters() { return parameters_; }
  const Parameters& parameters() const { return parameters_; }
  IoCounters& io() { return io_; }
  PriorityRules& priority() { return priority_; }
  OasRules& oas_rules() { return oas_rules_; }
  ManagementInfo& management_info() { return management_info_; }
  PciSpace& pci_space() { return pci_space_; }
  // Reached only on adapters of the older interface.
  AdapterMemory& memory() { return memory_; }

  // When the counters last started from nothing, on the driver's clock.
  std::optional<Clock::Time> restarted() const { return restarted_; }
  void restart_counters(Clock::Time now);

  // What becomes of the port in a given state.
  fc_hba::PortState port_state(const AdapterState& state) const;
  // The ports that the adapter discovers: none unless it is online.
  std::span<const scenario::Port> discovered_ports(const AdapterState& state) const;

 private:
  AdapterState parse(const std::optional<std::string>& text) const;

  const scenario::Adapter& card_;
  StateStore& store_;
  std::string name_;  // of what the store holds
  Regions regions_;
  std::map<std::string, std::string> objects_;
  EventQueue events_;
  Parameters parameters_;
  IoCounters io_;
  PriorityRules priority_;
  OasRules oas_rules_;
  ManagementInfo management_info_;
  PciSpace pci_space_;
  AdapterMemory memory_;
  std::optional<Clock::Time> restarted_;
};

}  // namespace simulator
