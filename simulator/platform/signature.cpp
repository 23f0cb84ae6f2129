#include "platform/signature.h"

#include <algorithm>
#include <string_view>

#include "driver/interface.h"
#include "transport/callbacks.h"

namespace simulator {
namespace {

using vaskdfc::CallbackFacts;
using vaskdfc::Callbacks;

template <std::size_t N>
std::string_view text(const char (&field)[N]) {
  return {field, static_cast<std::size_t>(std::ranges::find(field, '\0') - field)};
}

vmkmgmt_sim_platform_status check_descriptor(const dfc_mgmt_callback& descriptor, const CallbackFacts& row) {
  const dfc_mgmt_callback expected = descriptor_of(row);
  if (descriptor.id != expected.id) return VMKMGMT_SIM_BAD_CALLBACK_ID;
  if (descriptor.location != expected.location) return VMKMGMT_SIM_BAD_LOCATION;
  if (descriptor.handler != expected.handler) return VMKMGMT_SIM_BAD_HANDLER;
  if (descriptor.synchronous != expected.synchronous) return VMKMGMT_SIM_BAD_SYNCHRONOUS;
  if (descriptor.parameter_count != expected.parameter_count) return VMKMGMT_SIM_BAD_PARAMETER_COUNT;
  if (!std::ranges::equal(descriptor.parameter_size, expected.parameter_size)) return VMKMGMT_SIM_BAD_PARAMETER_SIZE;
  if (!std::ranges::equal(descriptor.parameter_usage, expected.parameter_usage)) return VMKMGMT_SIM_BAD_PARAMETER_USAGE;
  return VMKMGMT_SIM_OK;
}

}  // namespace

vmkmgmt_sim_platform_status check_signature(const dfc_mgmt_signature& signature, std::span<const std::string> interface_names) {
  if (std::ranges::find(interface_names, text(signature.name)) == interface_names.end()) return VMKMGMT_SIM_NOT_REGISTERED;
  if (signature.version != kInterfaceVersion) return VMKMGMT_SIM_BAD_VERSION;
  if (text(signature.vendor) != kVendor) return VMKMGMT_SIM_BAD_VENDOR;
  if (signature.callback_count != Callbacks::kCount) return VMKMGMT_SIM_BAD_CALLBACK_COUNT;
  if (signature.callbacks == nullptr) return VMKMGMT_SIM_BAD_ARGUMENT;
  for (std::size_t i = 0; i < Callbacks::kCount; ++i) {
    const auto status = check_descriptor(signature.callbacks[i], Callbacks::kFacts[i]);
    if (status != VMKMGMT_SIM_OK) return status;
  }
  return VMKMGMT_SIM_OK;
}

}  // namespace simulator
