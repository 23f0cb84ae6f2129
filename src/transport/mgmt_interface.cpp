#include "transport/mgmt_interface.h"

#include <algorithm>
#include <array>

#include "transport/callbacks.h"
#include "transport/log.h"

namespace vaskdfc {
namespace {

constexpr auto trel_mgmt_callbacks = [] {
  std::array<dfc_mgmt_callback, Callbacks::kCount> descriptors{};
  std::ranges::transform(Callbacks::kFacts, descriptors.begin(), descriptor_of);
  return descriptors;
}();

template <std::size_t N>
consteval dfc_mgmt_signature signature_of(const char (&interface_name)[N]) {
  dfc_mgmt_signature signature{
      .version = 0x2000101, .vendor = "ZAV", .callback_count = trel_mgmt_callbacks.size(), .callbacks = trel_mgmt_callbacks.data()};
  std::ranges::copy(interface_name, signature.name);
  return signature;
}

// One way of opening the handle: the function that does it and where it writes its lines.
struct OpenSite {
  const char* function;
  int already_open;
  int opened;
  int failed;
};

std::uint32_t open(const dfc_mgmt_signature& signature, const OpenSite& site) {
  ++refcnt;
  if (refcnt >= 2) {
    log_init_handle({site.function, site.already_open}, trel_mgmt_handle, refcnt);
    return 0;
  }
  const int platform = vmk_MgmtUserInit(&signature, 0, &trel_mgmt_handle);
  log_init_handle({site.function, site.opened}, trel_mgmt_handle, refcnt);
  if (platform != 0) {
    refcnt = 0;
    log_init_failure({site.function, site.failed}, static_cast<std::uint32_t>(platform));
    return 1;
  }
  return 0;
}

}  // namespace

constinit const dfc_mgmt_signature trel_mgmt_signature = signature_of("vaskfcoe-mgmt");
constinit const dfc_mgmt_signature trel_mgmt_inbox_signature = signature_of("trel-mgmt");

vmk_MgmtUserHandle trel_mgmt_handle;
std::int32_t refcnt;

std::uint32_t dfc_mgmt_init() {
  return open(trel_mgmt_signature, {.function = "dfc_mgmt_init", .already_open = 104, .opened = 112, .failed = 118});
}

std::uint32_t dfc_mgmt_inbox_init() {
  return open(trel_mgmt_inbox_signature, {.function = "dfc_mgmt_inbox_init", .already_open = 138, .opened = 146, .failed = 152});
}

void dfc_mgmt_close() {
  --refcnt;
  log_destroy_handle({"DFC_FreeDiagEnv", 176}, trel_mgmt_handle, refcnt);
  if (refcnt == 0) vmk_MgmtUserDestroy(trel_mgmt_handle);
}

}  // namespace vaskdfc
