// Revisions, driver information, kernel messages and test events.
#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "driver/driver.h"
#include "driver/interface.h"
#include "families/families.h"
#include "families/interface_generation.h"
#include "families/text.h"
#include "vaskdfc/regions.h"

namespace simulator {
namespace {

// A text of lines; the layout of this block is the driver's own.
DriverStatus module_information(Call& call, dfc_module_info& information) {
  const scenario::Scenario& scenario = call.driver.scenario();
  set_text(information.bytes,
           fmt::format("name: {}\nversion: {}\nvendor: {}\ninterfaces: {}\nadapters: {}\n", scenario.driver.name,
                       scenario.driver.version, kVendor, fmt::join(scenario.driver.interfaces, ", "), scenario.adapters.size()));
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus log_message(Call& call, const dfc_kernel_message& message) {
  const auto* const end = std::ranges::find(message.text, '\0');
  call.driver.kernel_log().append({message.text, static_cast<std::size_t>(end - message.text)});
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus call_version(Call& call, dfc_interface_rev& revision) {
  revision.version = kInterfaceVersion;
  set_text(revision.name, call.interface_name);
  set_text(revision.vendor, kVendor);
  revision.callback_count = Callbacks::kCount;
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus raise_test_event(BoardCall& call) {
  const TestEvent event{.first = call.header.arg6, .second = call.header.arg4};
  call.adapter.change([=](AdapterState& state) { state.raise(event); });
  return VMKMGMT_SIM_DRIVER_OK;
}

// Bits of the feature flags that applications have no names for.
constexpr std::uint32_t kFcpInitiator = 0x1;
constexpr std::uint32_t kNpiv = 0x2;
constexpr std::uint32_t kFcoe = 0x4;

std::uint32_t features(const scenario::Adapter& card) {
  std::uint32_t flags = kFcpInitiator;
  if (has_newer_interface(card)) flags |= kNpiv;
  if (card.protocol == scenario::Protocol::kFcoe) flags |= kFcoe;
  if (card.persistent_link_down) flags |= DFC_FEATURE_PERSISTENT_LINK_DOWN;
  return flags;
}

// Applications tell FCoE adapters by their type.
std::uint32_t adapter_type(scenario::Protocol protocol) { return protocol == scenario::Protocol::kFcoe ? 24 : 16; }

DriverStatus driver_information(BoardCall& call, vaskdfc::DriverInfoReply& reply) {
  const scenario::Adapter& card = call.adapter.card();
  reply = {};
  set_text(reply.bytes_0, card.firmware_version);
  std::ranges::copy(card.port.wwpn.wwn, reply.bytes_64);
  reply.sli_mode = card.sli_mode;
  reply.feature_flags = features(card);
  reply.word_108 = card.board;
  reply.adapter_type = adapter_type(card.protocol);
  call.header.arg3 = sizeof(reply);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus extended_mailbox_support(BoardCall& call) { return newer_interface(call.adapter); }

}  // namespace

void register_info(Door& door) {
  door.on<Callback::kModInfo>(module_information);
  door.on<Callback::kLogMsg>(log_message);
  door.on<Callback::kCallVer>(call_version);
  door.on<Callback::kEventTest>(raise_test_event);
  door.on<Callback::kGetTrelDfcInfo>(driver_information);
  door.on<Callback::kMboxSliCfgExtSup>(extended_mailbox_support);
}

}  // namespace simulator
