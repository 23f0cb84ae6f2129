#include "exhaustive/agreeable_driver.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "mailbox/mailbox_words.h"
#include "mailbox/region_mailbox.h"
#include "regions/region22.h"
#include "regions/region23.h"
#include "transport/records/regions.h"
#include "vaskdfc/regions.h"

namespace vaskdfc::test {
namespace {

template <typename T>
T& parameter(const Parameters& parameters, std::size_t at) {
  return *static_cast<T*>(parameters[at]);
}

// Fills what the driver writes, but no more of large buffers than the replies below make use of.
void fill(const CallbackFacts& facts, const Parameters& parameters, std::uint8_t filler) {
  constexpr std::uint32_t kMost = 4096;
  for (std::size_t at = 1; at < facts.parameters; ++at) {
    if (static_cast<Usage>(facts.usages[at]) != Usage::kOut) continue;
    std::memset(parameters[at], filler, std::min(facts.sizes[at], kMost));
  }
}

// The image of a configuration region, as far as it fits.
void put_region(std::uint32_t region, std::span<std::uint8_t> room) {
  std::array<std::uint8_t, DFC_REGION23_BYTES> image{};
  if (region == 23) initRegion23(image.data());
  if (region == 22) std::memcpy(image.data(), &kBlankRegion22, sizeof(kBlankRegion22));
  std::ranges::copy_n(image.begin(), static_cast<std::ptrdiff_t>(std::min(room.size(), image.size())), room.begin());
}

// Dumps of regions come in pieces of what the mailbox asks for; any other mailbox is completed as it was sent.
void answer_mailbox(const Parameters& parameters, std::uint8_t filler) {
  auto& mailbox = parameter<Mailbox>(parameters, 2);
  auto& extension = parameter<MailboxExtension>(parameters, 3);
  if (command_of(mailbox.words) != static_cast<std::uint8_t>(RegionCommand::kDump)) {
    std::memset(parameters[1], filler, sizeof(MailboxData));
    std::ranges::fill(extension.data, filler);
    return;
  }
  std::array<std::uint8_t, 4096> image{};
  put_region(mailbox.words[2] & 0xFFFF, image);
  const std::size_t offset = std::min<std::size_t>(mailbox.words[2] >> 16, image.size() / 2);
  std::copy_n(image.data() + offset, std::size(extension.data), extension.data);
}

void answer_scsi(dfc_mgmt_hdr& header, const Parameters& parameters, std::uint8_t filler) {
  header.arg3 = header.arg2;
  std::memset(parameters[2], filler, std::min<std::size_t>(header.arg2, sizeof(TransferData)));
}

}  // namespace

void AgreeableDriver::answer(Callback callback, const Parameters& parameters) {
  auto& header = parameter<dfc_mgmt_hdr>(parameters, 0);
  const bool is_older = header.brdno >= kFirstOlder;
  const std::uint8_t own = filler(header.brdno);
  fill(facts_of(callback), parameters, own);

  switch (callback) {
    case Callback::kInitBrds: parameter<dfc_initbrds_rsp>(parameters, 1) = {.pci_id = {{0x41, 0x5A, 0x02, 0x56}}}; break;
    case Callback::kGetTrelDfcInfo:
      parameter<DriverInfoReply>(parameters, 1) = {.bytes_0 = {own},
                                                   .bytes_64 = {own},
                                                   .sli_mode = is_older ? 3u : 4u,
                                                   .feature_flags = DFC_FEATURE_PERSISTENT_LINK_DOWN,
                                                   .word_108 = own,
                                                   .adapter_type = is_older ? 16u : 24u};
      break;
    case Callback::kSetDiag:
    case Callback::kNpivReady:
    case Callback::kOasVer: header.arg4 = 1; break;
    case Callback::kReadCtlReg:
    case Callback::kHbaRefreshInfo:
    case Callback::kGetLogicalLinkSpeed: header.arg4 = own * 10u; break;
    case Callback::kGetFcpPriorityFlag: header.arg5 = own; break;
    case Callback::kGetDumpRegion: header.arg3 = sizeof(DumpRegionReply); break;
    case Callback::kNodeInfo: header.arg3 = 2 * sizeof(dfc_node_info); break;
    case Callback::kGetCfg: header.arg3 = 2 * sizeof(dfc_cfg_entry); break;
    case Callback::kListBind: parameter<BindListReply>(parameters, 1).count = 2; break;
    case Callback::kVportGetList: parameter<VportListReply>(parameters, 1).count = 2; break;
    case Callback::kVportGetNodeInfo: parameter<NodeListReply>(parameters, 2).count = 2; break;
    case Callback::kGetFcpPriority: parameter<dfc_fcp_prio_list>(parameters, 1).count = 2; break;
    case Callback::kHbaFcpTargetMapping:
    case Callback::kOasGet: header.arg3 = 2; break;
    case Callback::kHbaGetEvent:
      header.arg3 = 2;
      header.arg4 = 5;
      break;
    case Callback::kHbaRnid:
    case Callback::kSendEls:
    case Callback::kSendCt:
    case Callback::kHbaSendMgmtCmd: header.arg3 = 36; break;
    case Callback::kHbaGetFcfList: header.arg4 = header.arg1 == 0xFFFF ? 7 : 0xFFFF; break;
    case Callback::kHbaIssueDmpMbx: {
      header.arg3 = header.arg2;
      auto& data = parameter<RegionData>(parameters, 2);
      put_region(parameter<DumpRequest>(parameters, 1).region, data.bytes);
      parameter<CompletionWord>(parameters, 3) = {};
      break;
    }
    case Callback::kHbaIssueUpdMbx: parameter<CompletionWord>(parameters, 2) = {}; break;
    case Callback::kMbox: answer_mailbox(parameters, own); break;
    case Callback::kHbaSendScsi:
    case Callback::kHbaSendFcp: answer_scsi(header, parameters, own); break;
    default: break;
  }
}

}  // namespace vaskdfc::test
