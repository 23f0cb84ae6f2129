#include "driver_calls.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <utility>
#include <vector>

namespace vaskdfc::tool {
namespace {

struct Notes {
  std::optional<DriverCall> last;
  std::optional<DriverCall> last_failed;
  std::vector<std::function<void(const DriverCall&)>> observers;
};
Notes notes;

// A driver refuses this query where there are no extended configuration mailboxes, and no operation fails for that.
constexpr std::uint64_t kExtendedMailboxQuery = 157;

void take_note(const DriverCall& call) {
  notes.last = call;
  if (call.failed() && call.callback != kExtendedMailboxQuery) notes.last_failed = call;
  for (const auto& observer : notes.observers) observer(call);
}

using Invoke = decltype(&vmk_MgmtUserCallbackInvokeInt);

// The definition that would have been called without this one.
Invoke next_definition() {
  static const auto next = reinterpret_cast<Invoke>(dlsym(RTLD_NEXT, "vmk_MgmtUserCallbackInvokeInt"));
  return next;
}

}  // namespace

void watch_driver_calls() { notes.last = notes.last_failed = std::nullopt; }

std::optional<DriverCall> last_driver_call() { return notes.last; }

std::optional<DriverCall> last_failed_driver_call() { return notes.last_failed; }

void on_driver_call(std::function<void(const DriverCall&)> observer) { notes.observers.push_back(std::move(observer)); }

}  // namespace vaskdfc::tool

using namespace vaskdfc::tool;

int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle handle, uint64_t instance, uint64_t callback, uint32_t count, ...) {
  std::array<void*, 4> parameters{};
  std::va_list arguments;
  va_start(arguments, count);
  std::generate_n(parameters.begin(), std::min<std::size_t>(count, parameters.size()), [&] { return va_arg(arguments, void*); });
  va_end(arguments);

  const auto* const header = static_cast<const dfc_mgmt_hdr*>(parameters[0]);
  const dfc_mgmt_hdr sent = *header;
  const auto start = std::chrono::steady_clock::now();
  const int status =
      next_definition()(handle, instance, callback, count, parameters[0], parameters[1], parameters[2], parameters[3]);
  const auto duration = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
  take_note({.callback = callback,
             .sent = sent,
             .header = *header,
             .platform_status = static_cast<std::uint32_t>(status),
             .duration = duration});
  return status;
}
