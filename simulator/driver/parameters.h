// An adapter's parameters: what was set last, else what the scenario or the driver gives.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "driver/state_store.h"
#include "scenario/parameters.h"
#include "scenario/scenario.h"

namespace simulator {

class Parameters {
 public:
  // Both must outlive the parameters. Throws StateError when what the store holds is damaged.
  Parameters(const scenario::Adapter& card, StateStore& store);

  // What was set since the adapter's parameters began.
  struct Changes {
    std::map<std::string, std::uint32_t, std::less<>> values;
    std::set<std::string, std::less<>> pending;  // names of those that wait for a restart
  };

  // All of these throw StateError.
  Changes changes() const;
  std::uint32_t value(std::string_view name) const;
  void set(const scenario::Parameter& parameter, std::uint32_t value);
  // The adapter starts again: nothing waits any more.
  void restart();

  std::uint32_t value_in(const Changes& changes, const scenario::Parameter& parameter) const;

 private:
  Changes parse(const std::optional<std::string>& text) const;

  const scenario::Adapter& card_;
  StateStore& store_;
  std::string name_;  // of what the store holds
};

}  // namespace simulator
