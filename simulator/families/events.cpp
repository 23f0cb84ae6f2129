// Events that wait for applications.
#include <algorithm>
#include <cstring>

#include "driver/driver.h"
#include "families/families.h"

namespace simulator {
namespace {

using vaskdfc::EventReply;

// What the scenario's fabric has brought until now.
void bring(Adapter& adapter, Clock::Time now) {
  const auto& events = adapter.card().events;
  EventQueue& queue = adapter.events();
  for (; queue.happened < events.size() && events[queue.happened].at_ms <= now.count(); ++queue.happened) {
    const scenario::Event& event = events[queue.happened];
    queue.push({.code = static_cast<std::uint32_t>(event.code), .fc_id = adapter.card().port.fc_id, .page = event.fc_id});
  }
}

DriverStatus take_events(BoardCall& call, EventReply& reply) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  bring(call.adapter, call.driver.clock().next());

  EventQueue& queue = call.adapter.events();
  const std::size_t room = std::min<std::size_t>(call.header.arg2, std::size(reply.events));
  std::uint32_t count = 0;
  for (; count < room && !queue.empty(); ++count) {
    const EventRecord event = queue.pop();
    std::memcpy(&reply.events[count], &event, sizeof(event));
  }
  call.header.arg3 = count;
  call.header.arg4 = queue.take_missed();
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_events(Door& door) { door.on<Callback::kHbaGetEvent>(take_events); }

}  // namespace simulator
