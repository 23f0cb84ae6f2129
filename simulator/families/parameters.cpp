// The driver's parameters. An entry's layout is this driver's choice.
#include "driver/driver.h"
#include "families/families.h"
#include "families/layout.h"
#include "families/text.h"

namespace simulator {
namespace {

using scenario::Parameter;

constexpr std::uint32_t kNeedsRestart = 0x1;
constexpr std::uint32_t kPending = 0x2;  // was set and waits for the restart

struct Entry {
  char name[32];
  std::uint32_t minimum;
  std::uint32_t maximum;
  std::uint32_t initial;
  std::uint32_t current;
  std::uint32_t flags;
  char meaning[80];
};

DriverStatus list(BoardCall& call, dfc_cfg_table& table) {
  const auto parameters = scenario::parameters_of(call.adapter.card().sli_mode);
  call.header.arg3 = static_cast<std::uint32_t>(parameters.size() * sizeof(Entry));
  if (call.header.arg3 > call.header.arg2) return VMKMGMT_SIM_DRIVER_NO_ROOM;

  const Parameters::Changes changes = call.adapter.parameters().changes();
  table = {};
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const Parameter& parameter = parameters[i];
    Entry entry{.minimum = parameter.minimum, .maximum = parameter.maximum, .initial = parameter.initial};
    set_text(entry.name, parameter.name);
    set_text(entry.meaning, parameter.meaning);
    entry.current = call.adapter.parameters().value_in(changes, parameter);
    if (parameter.needs_restart) entry.flags |= kNeedsRestart;
    if (changes.pending.contains(parameter.name)) entry.flags |= kPending;
    fill(table.entries[i].bytes, entry);
  }
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus set(BoardCall& call) {
  const auto parameters = scenario::parameters_of(call.adapter.card().sli_mode);
  if (call.header.arg1 >= parameters.size()) return VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE;
  const Parameter& parameter = parameters[call.header.arg1];
  const std::uint32_t value = call.header.arg4;
  if (value < parameter.minimum || value > parameter.maximum) return VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;

  call.adapter.parameters().set(parameter, value);
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_parameters(Door& door) {
  door.on<Callback::kGetCfg>(list);
  door.on<Callback::kSetCfg>(set);
}

}  // namespace simulator
