// The driver's callbacks: the one table of their numbers, names, parameters and directions, in registration order. A row is
// also the check on every call: invoke() refuses another parameter count, record or direction.
#pragma once

#include "transport/callback_table.h"
#include "transport/records/access.h"
#include "transport/records/board.h"
#include "transport/records/events.h"
#include "transport/records/fabric.h"
#include "transport/records/fcoe.h"
#include "transport/records/hbaapi.h"
#include "transport/records/info.h"
#include "transport/records/loopback.h"
#include "transport/records/mailbox.h"
#include "transport/records/mapping.h"
#include "transport/records/oas.h"
#include "transport/records/reset.h"
#include "transport/records/scsi.h"
#include "transport/records/vport.h"
#include "vaskdfc/hbaapi.h"
#include "vaskdfc/info.h"
#include "vaskdfc/link.h"
#include "vaskdfc/parameters.h"
#include "vaskdfc/priority.h"
#include "vaskdfc/statistics.h"

namespace vaskdfc {

// Driver numbering. A callback that no operation issues is called after its number; it is registered all the same.
enum class Callback : std::uint16_t {
  kModInfo = 95,
  kLogMsg = 96,
  kCallVer = 97,
  kEventTest = 98,
  kReadPci = 116,
  kWritePci = 115,
  kReadMem = 117,
  kWriteMem = 126,
  kInitBrds = 122,
  kGetDfcRev = 119,
  kWriteCtlReg = 120,
  kReadCtlReg = 121,
  kGetVpd = 127,
  kGetTrelDfcInfo = 128,
  k132 = 132,
  kSetDiag = 123,
  kMbox = 118,
  kMboxSliCfgExt = 156,
  kMboxSliCfgExtSup = 157,
  kInduceDump = 21,
  kReset = 20,
  kGetDumpRegion = 129,
  kSetFcpPriorityFlag = 175,
  kGetFcpPriorityFlag = 174,
  kGetFcpPriority = 172,
  kSetFcpPriority = 173,
  kGetLogicalLinkSpeed = 169,
  kLinkInfo = 138,
  kIoInfo = 139,
  kNodeInfo = 140,
  kGetCfg = 124,
  kSetCfg = 125,
  kListBind = 150,
  k170 = 170,
  kDiagModeEnd = 171,
  k154 = 154,
  k155 = 155,
  kVportGetAttrib = 133,
  kNpivReady = 137,
  kVportGetResrc = 135,
  kVportGetList = 134,
  kHbaAdapterAttributes = 315,
  kHbaPortAttributes = 316,
  kHbaPortStatistics = 317,
  kHbaWwpnPortAttributes = 319,
  kHbaDiscPortAttributes = 318,
  kHbaIndexPortAttributes = 320,
  kHbaSetMgmtInfo = 323,
  kHbaGetMgmtInfo = 324,
  kHbaRefreshInfo = 326,
  kHbaGetEvent = 327,
  k322 = 322,
  kLip = 16,
  k19 = 19,
  k151 = 151,
  k152 = 152,
  k147 = 147,
  k146 = 146,
  k153 = 153,
  k4111 = 4111,
  kHbaSendFcp = 145,
  kHbaSendScsi = 144,
  kHbaRnid = 325,
  kSendEls = 143,
  kSendCt = 142,
  kHbaSendMgmtCmd = 148,
  kHbaSendMgmtRsp = 149,
  kHbaIssueDmpMbx = 167,
  kHbaIssueUpdMbx = 168,
  kVportGetNodeInfo = 136,
  kHbaGetFcfList = 162,
  kHbaFcpTargetMapping = 321,
  kLoopbackTest = 130,
  kLoopbackMode = 131,
  kOasGet = 4117,
  kOasSetRule = 4118,
  kOasVer = 4119,
};

// One callback a line.
// clang-format off
struct Callbacks : Table<
    Row<Callback::kModInfo, "TREL_MGMT_MOD_INFO", Out<dfc_module_info>>,
    Row<Callback::kLogMsg, "TREL_MGMT_LOG_MSG", In<dfc_kernel_message>>,
    Row<Callback::kCallVer, "TREL_MGMT_CALL_VER", Out<dfc_interface_rev>>,
    Row<Callback::kEventTest, "TREL_MGMT_EVENT_TEST">,
    Row<Callback::kReadPci, "TREL_MGMT_READ_PCI", Out<AccessData>>,
    Row<Callback::kWritePci, "TREL_MGMT_WRITE_PCI", In<AccessData>>,
    Row<Callback::kReadMem, "TREL_MGMT_READ_MEM", Out<AccessData>>,
    Row<Callback::kWriteMem, "TREL_MGMT_WRITE_MEM", In<AccessData>>,
    Row<Callback::kInitBrds, "TREL_MGMT_INITBRDS", Out<dfc_initbrds_rsp>>,
    Row<Callback::kGetDfcRev, "TREL_MGMT_GET_DFC_REV", Out<RevisionReply>>,
    Row<Callback::kWriteCtlReg, "TREL_MGMT_WRITE_CTLREG">,
    Row<Callback::kReadCtlReg, "TREL_MGMT_READ_CTLREG">,
    Row<Callback::kGetVpd, "TREL_MGMT_GET_VPD", Out<dfc_vpd_info>>,
    Row<Callback::kGetTrelDfcInfo, "TREL_MGMT_GET_TRELDFC_INFO", Out<DriverInfoReply>>,
    Row<Callback::k132, "">,
    Row<Callback::kSetDiag, "TREL_MGMT_SETDIAG">,
    Row<Callback::kMbox, "TREL_MGMT_MBOX", InOut<MailboxData>, InOut<Mailbox>, InOut<MailboxExtension>>,
    Row<Callback::kMboxSliCfgExt, "TREL_MGMT_MBOX_SLI_CFG_EXT", InOut<MailboxData>>,
    Row<Callback::kMboxSliCfgExtSup, "TREL_MGMT_MBOX_SLI_CFG_EXT_SUP">,
    Row<Callback::kInduceDump, "TREL_MGMT_INDUCE_DUMP">,
    Row<Callback::kReset, "TREL_MGMT_RESET">,
    Row<Callback::kGetDumpRegion, "TREL_MGMT_GET_DUMPREGION", Out<DumpRegionReply>>,
    Row<Callback::kSetFcpPriorityFlag, "TREL_MGMT_SET_FCP_PRIORITY_FLAG">,
    Row<Callback::kGetFcpPriorityFlag, "TREL_MGMT_GET_FCP_PRIORITY_FLAG">,
    Row<Callback::kGetFcpPriority, "TREL_MGMT_GET_FCP_PRIORITY", Out<dfc_fcp_prio_list>>,
    Row<Callback::kSetFcpPriority, "TREL_MGMT_SET_FCP_PRIORITY", In<dfc_fcp_prio_list>>,
    Row<Callback::kGetLogicalLinkSpeed, "TREL_MGMT_GET_LOGICAL_LINK_SPEED">,
    Row<Callback::kLinkInfo, "TREL_MGMT_LINKINFO", Out<dfc_link_info>>,
    Row<Callback::kIoInfo, "TREL_MGMT_IOINFO", Out<dfc_io_info>>,
    Row<Callback::kNodeInfo, "TREL_MGMT_NODEINFO", Out<dfc_node_table>>,
    Row<Callback::kGetCfg, "TREL_MGMT_GETCFG", Out<dfc_cfg_table>>,
    Row<Callback::kSetCfg, "TREL_MGMT_SETCFG">,
    Row<Callback::kListBind, "TREL_MGMT_LIST_BIND", Out<BindListReply>>,
    Row<Callback::k170, "", In<Bytes<24>>, Out<Bytes<12>>>,
    Row<Callback::kDiagModeEnd, "TREL_MGMT_DIAG_MODE_END">,
    Row<Callback::k154, "", In<Bytes<28>>>,
    Row<Callback::k155, "", In<Bytes<28>>>,
    Row<Callback::kVportGetAttrib, "TREL_MGMT_VPORT_GET_ATTRIB", In<WwnKey>, Out<dfc_vport_attributes>>,
    Row<Callback::kNpivReady, "TREL_MGMT_NPIV_READY">,
    Row<Callback::kVportGetResrc, "TREL_MGMT_VPORT_GET_RESRC", Out<dfc_vport_resource>>,
    Row<Callback::kVportGetList, "TREL_MGMT_VPORT_GET_LIST", Out<VportListReply>>,
    Row<Callback::kHbaAdapterAttributes, "TREL_MGMT_HBA_ADAPTERATTRIBUTES", Out<HbaAdapterAttributes>>,
    Row<Callback::kHbaPortAttributes, "TREL_MGMT_HBA_PORTATTRIBUTES", Out<PortAttributesReply>>,
    Row<Callback::kHbaPortStatistics, "TREL_MGMT_HBA_PORTSTATISTICS", Out<HbaPortStatistics>>,
    Row<Callback::kHbaWwpnPortAttributes, "TREL_MGMT_HBA_WWPNPORTATTRIBUTES", Out<PortAttributesReply>, In<WwnKey>>,
    Row<Callback::kHbaDiscPortAttributes, "TREL_MGMT_HBA_DISCPORTATTRIBUTES", Out<PortAttributesReply>>,
    Row<Callback::kHbaIndexPortAttributes, "TREL_MGMT_HBA_INDEXPORTATTRIBUTES", Out<PortAttributesReply>>,
    Row<Callback::kHbaSetMgmtInfo, "TREL_MGMT_HBA_SETMGMTINFO", In<HbaMgmtInfo>>,
    Row<Callback::kHbaGetMgmtInfo, "TREL_MGMT_HBA_GETMGMTINFO", Out<HbaMgmtInfo>>,
    Row<Callback::kHbaRefreshInfo, "TREL_MGMT_HBA_REFRESHINFO">,
    Row<Callback::kHbaGetEvent, "TREL_MGMT_HBA_GETEVENT", Out<EventReply>>,
    Row<Callback::k322, "">,
    Row<Callback::kLip, "TREL_MGMT_LIP">,
    Row<Callback::k19, "", In<Bytes<14336>>, Out<Bytes<491528>>>,
    Row<Callback::k151, "", Out<Bytes<8448>>>,
    Row<Callback::k152, "">,
    Row<Callback::k147, "">,
    Row<Callback::k146, "">,
    Row<Callback::k153, "">,
    Row<Callback::k4111, "">,
    Row<Callback::kHbaSendFcp, "TREL_MGMT_HBA_SEND_FCP", InOut<FcpPassThruRequest>, InOut<TransferData>>,
    Row<Callback::kHbaSendScsi, "TREL_MGMT_HBA_SEND_SCSI", InOut<ScsiPassThruRequest>, InOut<TransferData>>,
    Row<Callback::kHbaRnid, "TREL_MGMT_HBA_RNID", In<RnidKey>, Out<RnidReply>>,
    Row<Callback::kSendEls, "TREL_MGMT_SEND_ELS", In<dfc_els_descriptor>, In<ElsFrame>, Out<ElsFrame>>,
    Row<Callback::kSendCt, "TREL_MGMT_SEND_CT", In<ServiceFrame>, Out<ServiceFrame>>,
    Row<Callback::kHbaSendMgmtCmd, "TREL_MGMT_HBA_SEND_MGMT_CMD", In<dfc_mgmt_command>, In<ServiceFrame>, Out<ServiceFrame>>,
    Row<Callback::kHbaSendMgmtRsp, "TREL_MGMT_HBA_SEND_MGMT_RSP", In<ServiceFrame>>,
    Row<Callback::kHbaIssueDmpMbx, "TREL_MGMT_HBA_ISSUE_DMP_MBX", In<DumpRequest>, Out<RegionData>, Out<CompletionWord>>,
    Row<Callback::kHbaIssueUpdMbx, "TREL_MGMT_HBA_ISSUE_UPD_MBX", In<RegionData>, Out<CompletionWord>>,
    Row<Callback::kVportGetNodeInfo, "TREL_MGMT_VPORT_GET_NODE_INFO", In<WwnKey>, Out<NodeListReply>>,
    Row<Callback::kHbaGetFcfList, "TREL_MGMT_HBA_GET_FCF_LIST", Out<FcfReply>>,
    Row<Callback::kHbaFcpTargetMapping, "TREL_MGMT_HBA_FCPTARGETMAPPING", Out<TargetMappingReply>>,
    Row<Callback::kLoopbackTest, "TREL_MGMT_LOOPBACK_TEST", In<LoopbackData>, Out<LoopbackData>>,
    Row<Callback::kLoopbackMode, "TREL_MGMT_LOOPBACK_MODE">,
    Row<Callback::kOasGet, "TREL_MGMT_OAS_GET", In<HbaWwn>, In<HbaWwn>, Out<OasListReply>>,
    Row<Callback::kOasSetRule, "TREL_MGMT_OAS_SET_RULE", In<OasRuleKey>>,
    Row<Callback::kOasVer, "TREL_MGMT_OAS_VER">> {};
// clang-format on

static_assert(Callbacks::kCount == 77, "the driver registers 77 callbacks: a row of Callbacks is missing or superfluous");
static_assert(ids_are_unique(Callbacks::kFacts), "two rows of Callbacks describe the same callback");

constexpr const CallbackFacts& facts_of(Callback callback) {
  return Callbacks::kFacts[index_of(Callbacks::kFacts, static_cast<std::uint64_t>(callback))];
}

}  // namespace vaskdfc
