// What a port can do for virtual ports, and the attributes of one.
#include "transport/call_frame.h"
#include "vaskdfc/result.h"
#include "vaskdfc/vport.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kReadyTest{.function = "DFC_NPIVReadyTest", .callback = Callback::kNpivReady, .lines = {61, 64}};
// The result line names the list's callback; log readers match this name.
constexpr CallSite kResource{.function = "DFC_VPGetResource",
                             .callback = Callback::kVportGetResrc,
                             .lines = {92, 95},
                             .result_name = facts_of(Callback::kVportGetList).name};
constexpr CallSite kAttributes{.function = "DFC_VPGetAttrib", .callback = Callback::kVportGetAttrib, .lines = {128, 131}};

}  // namespace

uint32_t DFC_NPIVReadyTest(uint32_t board, uint32_t* ready) {
  auto header = header_for(board);
  if (!invoke<kReadyTest>(board, header).ok()) return DFC_FAILED;
  *ready = header.arg4;
  return DFC_OK;
}

uint32_t DFC_VPGetResource(uint32_t board, dfc_vport_resource* resource) {
  auto header = header_for(board);
  return invoke<kResource>(board, header, *resource).ok() ? DFC_OK : DFC_FAILED;
}

uint32_t DFC_VPGetAttrib(uint32_t board, const HbaWwn* wwn, dfc_vport_attributes* attributes) {
  auto header = header_for(board);
  const WwnKey key{.wwn = *wwn};
  if (invoke<kAttributes>(board, header, key, *attributes).ok()) return DFC_OK;
  return header.arg3 == 0 ? DFC_NO_SUCH_VPORT : DFC_FAILED;
}
