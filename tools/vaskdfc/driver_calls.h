// What the library asked of the driver, and what came back.
//
// The library turns the statuses of platform and driver into small results. An executable may define the platform's functions
// itself and then takes precedence, so this one passes every call on and takes notes.
#pragma once

#include <vaskdfc/platform.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace vaskdfc::tool {

// The driver status that asks to try again.
inline constexpr std::uint32_t kDriverBusy = 0x0BAD0039;

struct DriverCall {
  std::uint64_t callback;
  dfc_mgmt_hdr sent;    // as the library sent it
  dfc_mgmt_hdr header;  // as the driver left it
  std::uint32_t platform_status;
  std::chrono::microseconds duration;

  bool failed() const { return platform_status != 0 || header.status != 0; }
};

// Forgets everything so far. Every observation below counts from here.
void watch_driver_calls();

std::optional<DriverCall> last_driver_call();
std::optional<DriverCall> last_failed_driver_call();

// Also calls `observer` after every call.
void on_driver_call(std::function<void(const DriverCall&)> observer);

}  // namespace vaskdfc::tool
