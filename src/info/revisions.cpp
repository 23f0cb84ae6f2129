// Revisions of the library and of both sides of the management interface.
#include <cstdio>

#include "transport/call_frame.h"
#include "transport/mgmt_interface.h"
#include "vaskdfc/info.h"
#include "vaskdfc/result.h"
#include "version.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kVersion{.function = "CallVer", .callback = Callback::kCallVer, .lines = {148, 152}};

}  // namespace

uint32_t GetDfcRev(uint32_t* major, uint32_t* minor) {
  *major = 4;
  *minor = 0;
  return DFC_OK;
}

uint32_t DFC_GetLibVer(char* text) {
  return static_cast<uint32_t>(std::snprintf(text, DFC_LIB_VERSION_BYTES, "%d.%d.%d.%d", VASKDFC_VERSION_MAJOR,
                                             VASKDFC_VERSION_MINOR, VASKDFC_VERSION_PATCH, VASKDFC_VERSION_BUILD));
}

uint32_t CallVer(dfc_interface_rev* driver, dfc_interface_rev* library) {
  library->version = trel_mgmt_signature.version;
  // As texts: what a caller has behind the NUL stays.
  std::snprintf(library->name, sizeof(library->name), "%s", trel_mgmt_signature.name);
  std::snprintf(library->vendor, sizeof(library->vendor), "%s", trel_mgmt_signature.vendor);
  library->callback_count = trel_mgmt_signature.callback_count;

  dfc_mgmt_hdr header{};
  return invoke<kVersion>(kNoBoard, header, *driver).status();
}
