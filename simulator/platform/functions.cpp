// The platform's three functions. No exception leaves them.
#include <algorithm>
#include <cstdarg>

#include "driver/complaint.h"
#include "platform/platform.h"

namespace {

using namespace simulator;

// Never destroyed: threads may still call while the process ends.
Platform& platform() {
  static Platform& only = *new Platform;
  return only;
}

template <typename Work>
int guarded(Work work) {
  try {
    return static_cast<int>(work());
  } catch (const std::exception& error) {
    complain(error.what());
    return VMKMGMT_SIM_INTERNAL;
  }
}

}  // namespace

int vmk_MgmtUserInit(const void* signature, uint64_t cookie, vmk_MgmtUserHandle* handle) {
  if (signature == nullptr || cookie != 0 || handle == nullptr) return VMKMGMT_SIM_BAD_ARGUMENT;
  return guarded([=] { return platform().open(*static_cast<const dfc_mgmt_signature*>(signature), *handle); });
}

int vmk_MgmtUserDestroy(vmk_MgmtUserHandle handle) {
  return guarded([=] { return platform().close(handle); });
}

int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle handle, uint64_t instance, uint64_t callback, uint32_t count, ...) {
  const std::size_t row = index_of(Callbacks::kFacts, callback);
  std::array<void*, 4> parameters{};
  if (row < Callbacks::kCount && count == Callbacks::kFacts[row].parameters) {
    va_list arguments;
    va_start(arguments, count);
    std::generate_n(parameters.begin(), count, [&] { return va_arg(arguments, void*); });
    va_end(arguments);
  }
  return guarded([&]() -> std::uint32_t {
    const auto interface_name = platform().interface_of(handle);
    if (!interface_name) return VMKMGMT_SIM_BAD_HANDLE;
    if (instance != 0) return VMKMGMT_SIM_BAD_INSTANCE;
    if (row == Callbacks::kCount) return VMKMGMT_SIM_UNKNOWN_CALLBACK;
    if (count != Callbacks::kFacts[row].parameters) return VMKMGMT_SIM_BAD_COUNT;
    if (std::ranges::find(parameters.begin(), parameters.begin() + count, nullptr) != parameters.begin() + count) {
      return VMKMGMT_SIM_BAD_ARGUMENT;
    }
    return platform().driver().invoke(*interface_name, Callbacks::kFacts[row], *static_cast<dfc_mgmt_hdr*>(parameters[0]),
                                      {parameters[1], parameters[2], parameters[3]});
  });
}
