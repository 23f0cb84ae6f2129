// Port counters.
#include <array>
#include <bit>

#include "driver/driver.h"
#include "families/families.h"
#include "families/port_counters.h"

namespace simulator {
namespace {

using scenario::Counter;

constexpr std::int64_t kNotSupported = -1;

std::int64_t wrapped(const Counter& counter, std::uint64_t value) {
  const std::uint64_t mask = counter.wraps ? (std::uint64_t{1} << *counter.wraps) - 1 : ~std::uint64_t{0};
  return static_cast<std::int64_t>(value & mask);
}

// Whole seconds and the rest apart, so that no product overflows before the counter itself does.
std::uint64_t growth(const Counter& counter, Clock::Time elapsed) {
  const std::uint64_t milliseconds = elapsed.count();
  return milliseconds / 1000 * counter.per_second + milliseconds % 1000 * counter.per_second / 1000;
}

// A restart of the adapter makes its counters begin at 0 instead of where the scenario lets them begin.
std::int64_t value_of(const Counter& counter, const Adapter& adapter, Clock::Time now) {
  if (!counter.supported) return kNotSupported;
  const auto restarted = adapter.restarted();
  if (restarted) return wrapped(counter, growth(counter, now - *restarted));
  return wrapped(counter, counter.start + growth(counter, now));
}

DriverStatus port_statistics(BoardCall& call, HbaPortStatistics& statistics) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  statistics = counters_at(call.adapter, call.driver.clock().next());
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

HbaPortStatistics counters_at(const Adapter& adapter, Clock::Time now) {
  const scenario::Counters& counters = adapter.card().counters;
  std::array<std::int64_t, scenario::kCounterNames.size()> values;
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = value_of(counters[i], adapter, now);
  return std::bit_cast<HbaPortStatistics>(values);
}

void register_statistics(Door& door) { door.on<Callback::kHbaPortStatistics>(port_statistics); }

}  // namespace simulator
