// The driver behind an adapter, and the adapter's SLI mode.
#include <unistd.h>

#include <algorithm>

#include "info/sli_mode.h"
#include "transport/call_frame.h"
#include "vaskdfc/hbaapi.h"
#include "vaskdfc/info.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kInformation{.function = "DFC_GetDrvInfo", .callback = Callback::kGetTrelDfcInfo, .lines = {214, 218}};
constexpr CallSite kExtendedSupport{.function = "DFC_GetDrvInfo", .callback = Callback::kMboxSliCfgExtSup, .lines = {268, 272}};

// Everything but the host name and what the extended mailbox probe adds.
void fill(dfc_drv_info& info, const DriverInfoReply& reply, const HbaAdapterAttributes& adapter, const HbaPortAttributes& port) {
  info.constant_21 = 21;
  info.constant_4 = 4;
  info.constant_0 = 0;
  info.constant_1 = 1;
  std::copy_n(adapter.DriverVersion, sizeof(info.driver_version), info.driver_version);
  std::copy_n(adapter.DriverName, sizeof(info.driver_name), info.driver_name);
  std::ranges::copy(reply.bytes_0, info.reply_0);
  std::ranges::copy(reply.bytes_64, info.reply_64);
  std::ranges::fill(info.zero_56, 0);
  info.port_fc_id = port.PortFcId;
  info.port_wwn = port.PortWWN;
  info.node_wwn = port.NodeWWN;
  info.zero_132 = 0;
  info.sli_mode = reply.sli_mode;
  info.feature_flags = reply.feature_flags;
  info.reply_108 = reply.word_108;
}

}  // namespace

uint32_t DFC_GetDrvInfo(uint32_t board, dfc_drv_info* info) {
  auto header = header_for(board);
  DriverInfoReply reply{};
  header.arg2 = sizeof(reply);
  if (!invoke<kInformation>(board, header, reply).ok()) return DFC_UNSUPPORTED;

  HbaAdapterAttributes adapter;
  HbaPortAttributes port;
  if (GetAdapterAttributes(board, &adapter) != HBA_STATUS_OK) return DFC_UNSUPPORTED;
  if (GetAdapterPortAttributes(board, 0, &port) != HBA_STATUS_OK) return DFC_UNSUPPORTED;

  fill(*info, reply, adapter, port);
  gethostname(info->host_name, sizeof(info->host_name));

  header = header_for(board);
  const bool extended = invoke<kExtendedSupport>(board, header).ok();
  if (extended && info->sli_mode >= kSli4) info->feature_flags |= DFC_FEATURE_EXTENDED_SLI_CONFIG;
  return DFC_OK;
}

uint32_t vaskdfc::get_sli_mode(uint32_t board, uint32_t& mode) {
  dfc_drv_info info{.caller_0 = 2};
  if (const uint32_t result = DFC_GetDrvInfo(board, &info); result != DFC_OK) return result;

  mode = info.sli_mode;
  return DFC_OK;
}
