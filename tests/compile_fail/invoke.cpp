// Calls of the driver that do not fit the callback's row.
#include "transport/call_frame.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kReadByWwn{.function = "ReadByWwn", .callback = Callback::kHbaWwpnPortAttributes, .lines = {1, 2}};
constexpr CallSite kSendFcp{.function = "SendFcp", .callback = Callback::kHbaSendFcp, .lines = {3, 4}};
constexpr CallSite kRefresh{.function = "Refresh", .callback = Callback::kHbaRefreshInfo, .lines = {5, 6}};

}  // namespace

// The driver writes the first record and reads the second.
Outcome read_by_wwn(dfc_mgmt_hdr& header, PortAttributesReply& reply, const WwnKey& key) {
#ifdef PARAMETER_MISSING  // refused: wrong number of parameters: see this callback's row in callbacks.h
  return invoke<kReadByWwn>(0, header, reply);
#endif
#ifdef PARAMETER_TOO_MANY  // refused: wrong number of parameters: see this callback's row in callbacks.h
  return invoke<kReadByWwn>(0, header, reply, key, key);
#endif
#ifdef RECORDS_SWAPPED  // refused: wrong record: see this callback's row in callbacks.h
  return invoke<kReadByWwn>(0, header, key, reply);
#endif
#ifdef RECORD_OF_ANOTHER_CALLBACK  // refused: wrong record: see this callback's row in callbacks.h
  DriverInfoReply other{};
  return invoke<kReadByWwn>(0, header, other, key);
#endif
#ifdef OTHER_RECORD_OF_THE_SAME_SIZE  // refused: wrong record: see this callback's row in callbacks.h
  Bytes<sizeof(PortAttributesReply)> bytes{};
  return invoke<kReadByWwn>(0, header, bytes, key);
#endif
#ifdef REPLY_IS_CONST  // refused: wrong direction: the driver writes this record, it must not be const
  const PortAttributesReply& sealed = reply;
  return invoke<kReadByWwn>(0, header, sealed, key);
#endif
  return invoke<kReadByWwn>(0, header, reply, key);
}

// The driver reads and writes both records.
Outcome send_fcp(dfc_mgmt_hdr& header, FcpPassThruRequest& command, TransferData& data) {
#ifdef RECORD_OF_BOTH_DIRECTIONS_IS_CONST  // refused: wrong direction: the driver writes this record, it must not be const
  const FcpPassThruRequest& sealed = command;
  return invoke<kSendFcp>(0, header, sealed, data);
#endif
  return invoke<kSendFcp>(0, header, command, data);
}

// The driver takes the header alone.
Outcome refresh(dfc_mgmt_hdr& header) {
#ifdef PARAMETER_BESIDE_THE_HEADER  // refused: wrong number of parameters: see this callback's row in callbacks.h
  WwnKey key{};
  return invoke<kRefresh>(0, header, key);
#endif
  return invoke<kRefresh>(0, header);
}
