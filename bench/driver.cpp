// The driver's stand-in: the platform library whose driver answers at once. What it costs is paid alike by the library and by the
// bare calls that the library is measured against.
#include <algorithm>
#include <cstdarg>

#include "transport/callbacks.h"

using namespace vaskdfc;

namespace {

char handle;

// A device identification page with one NAA designator of 16 bytes.
constexpr std::uint8_t kIdentification[] = {0x00, 0x83, 0x00, 0x14, 0x01, 0x03, 0x00, 0x10, 0x60, 0x5A, 0x41, 0x00,
                                            0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C};
constexpr std::uint8_t kInquiry = 0x12;

// As much data comes back as was asked for; the data itself only where the library looks at it.
void answer_scsi(dfc_mgmt_hdr& header, const ScsiPassThruRequest& request, TransferData& data) {
  header.arg3 = header.arg2;
  const bool asks_for_page = request.command.CDB[0] == kInquiry && request.command.CDB[1] != 0;
  if (asks_for_page) std::ranges::copy(kIdentification, data.bytes);
}

}  // namespace

int vmk_MgmtUserInit(const void*, uint64_t, vmk_MgmtUserHandle* opened) {
  *opened = &handle;
  return 0;
}

int vmk_MgmtUserDestroy(vmk_MgmtUserHandle) { return 0; }

int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle, uint64_t, uint64_t callback, uint32_t count, ...) {
  std::va_list arguments;
  va_start(arguments, count);
  auto& header = *va_arg(arguments, dfc_mgmt_hdr*);
  switch (static_cast<Callback>(callback)) {
    case Callback::kInitBrds: va_arg(arguments, dfc_initbrds_rsp*)->pci_id = {{0x41, 0x5A, 0x02, 0x56}}; break;
    case Callback::kHbaSendScsi: {
      const auto& request = *va_arg(arguments, const ScsiPassThruRequest*);
      answer_scsi(header, request, *va_arg(arguments, TransferData*));
      break;
    }
    case Callback::kHbaFcpTargetMapping: header.arg3 = std::size(TargetMappingReply{}.entries); break;
    default: break;  // requests of link services come back as long as the room for them, which stands in arg3
  }
  va_end(arguments);
  return 0;
}
