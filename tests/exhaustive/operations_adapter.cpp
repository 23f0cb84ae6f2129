// Raw access, driver information, link, parameters, loopback, priorities, OAS rules, virtual ports.
#include "exhaustive/operation.h"
#include "vaskdfc.h"

namespace vaskdfc::test {
namespace {

// More than any operation accepts.
constexpr std::uint32_t kTooMany = 5000;

// A list with room for every rule that an operation accepts, two of which it has.
dfc_fcp_prio_list* rules(Caller& c) {
  dfc_fcp_prio_list list;
  std::memset(&list, 0x11, sizeof(list));
  std::memset(list.entries[1].match4, 0xFF, sizeof(list.entries[1].match4));
  list.count = c.number(2, DFC_FCP_PRIO_MOST_RULES + 1);
  return c.record(list, sizeof(std::uint32_t) + DFC_FCP_PRIO_MOST_RULES * sizeof(fcp_prio_entry));
}

}  // namespace

std::vector<Operation> access_operations() {
  constexpr std::uint32_t kBytes = DFC_ACCESS_BYTES;
  return {
      {.name = "ReadMem",
       .call = [](Caller& c) { return ReadMem(c.board(), c.bytes(kBytes), c.number(0x100), c.number(64, kTooMany)); },
       .generation = Generation::kSli3,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kReadMem, DFC_ACCESS_FAILED),
       .without_memory = {DFC_ACCESS_FAILED}},
      {.name = "WriteMem",
       .call = [](Caller& c) { return WriteMem(c.board(), c.bytes(kBytes), c.number(0x100), c.number(64, kTooMany)); },
       .generation = Generation::kSli3,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kWriteMem, DFC_ACCESS_FAILED),
       .without_memory = {DFC_ACCESS_FAILED}},
      {.name = "ReadCtlReg",
       .call = [](Caller& c) { return ReadCtlReg(c.board(), c.record<std::uint32_t>(), c.number(4)); },
       .generation = Generation::kSli3,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kReadCtlReg, DFC_ACCESS_FAILED)},
      {.name = "WriteCtlReg",
       .call = [](Caller& c) { return WriteCtlReg(c.board(), c.record<std::uint32_t>(), c.number(4)); },
       .generation = Generation::kSli3,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kWriteCtlReg, DFC_ACCESS_FAILED)},
      {.name = "DFC_ReadPciCfg",
       .call = [](Caller& c) { return DFC_ReadPciCfg(c.board(), c.bytes(kBytes), c.number(0), c.number(64)); },
       .steps = fails(Callback::kReadPci, DFC_FAILED),
       .without_memory = {DFC_FAILED}},
      {.name = "ReadPciCfg",
       .call = [](Caller& c) { return ReadPciCfg(c.board(), c.bytes(kBytes), c.number(0), c.number(64)); },
       .steps = fails(Callback::kReadPci, DFC_FAILED),
       .without_memory = {DFC_FAILED}},
      {.name = "WritePciCfg",
       .call = [](Caller& c) { return WritePciCfg(c.board(), c.bytes(kBytes), c.number(0), c.number(64, kTooMany)); },
       .steps = fails(Callback::kWritePci, DFC_ACCESS_FAILED),
       .without_memory = {DFC_ACCESS_FAILED}},
      {.name = "SwapPciData",
       .call =
           [](Caller& c) {
             SwapPciData(c.bytes(kBytes), c.number(64, kBytes));
             return DFC_OK;
           }},
  };
}

std::vector<Operation> info_operations() {
  return {
      {.name = "GetDfcRev", .call = [](Caller& c) { return GetDfcRev(c.record<std::uint32_t>(), c.record<std::uint32_t>()); }},
      {.name = "DFC_GetLibVer",
       .call = [](Caller& c) { return DFC_GetLibVer(reinterpret_cast<char*>(c.bytes(DFC_LIB_VERSION_BYTES))); }},
      {.name = "CallVer",
       .call = [](Caller& c) { return CallVer(c.record<dfc_interface_rev>(), c.record<dfc_interface_rev>()); },
       .steps = fails(Callback::kCallVer, Result::status()),
       .writes_on_failure = "the library's own revision is known before the driver is asked"},
      {.name = "DFC_GetDrvInfo",
       .call = [](Caller& c) { return DFC_GetDrvInfo(c.board(), c.record<dfc_drv_info>()); },
       .steps = sli_mode(DFC_UNSUPPORTED)},
      {.name = "ModInfo",
       .call = [](Caller& c) { return ModInfo(c.record<dfc_module_info>()); },
       .steps = fails(Callback::kModInfo, Result::status())},
      {.name = "LogMsg",
       .call = [](Caller& c) { return LogMsg(c.record<dfc_kernel_message>()); },
       .steps = fails(Callback::kLogMsg, Result::status())},
      {.name = "EventTest",
       .call = [](Caller& c) { return EventTest(c.board(), c.number(1), c.number(2)); },
       .steps = fails(Callback::kEventTest, Result::status())},
      {.name = "DFC_GetLinkInfo",
       .call = [](Caller& c) { return DFC_GetLinkInfo(c.board(), c.record<dfc_link_info>()); },
       .steps = fails(Callback::kLinkInfo, DFC_FAILED)},
      {.name = "GetLinkInfo",
       .call = [](Caller& c) { return GetLinkInfo(c.board(), c.record<dfc_link_info>()); },
       .steps = fails(Callback::kLinkInfo, DFC_FAILED)},
      {.name = "GetNodeInfo",
       .call = [](Caller& c) { return GetNodeInfo(c.board(), c.record<dfc_node_table>()); },
       .steps = fails(Callback::kNodeInfo, 0),
       .without_memory = {0},
       .writes_on_failure = "the table is cleared first"},
      {.name = "GetIOinfo",
       .call = [](Caller& c) { return GetIOinfo(c.board(), c.record<dfc_io_info>()); },
       .steps = fails(Callback::kIoInfo, DFC_FAILED)},
      {.name = "GetVPDInfo",
       .call = [](Caller& c) { return GetVPDInfo(c.board(), c.record<dfc_vpd_info>()); },
       .steps = fails(Callback::kGetVpd, DFC_VPD_FAILED, {{0xBAD0084, DFC_VPD_BAD0084}})},
      {.name = "GetCfgParam",
       .call = [](Caller& c) { return GetCfgParam(c.board(), c.record<dfc_cfg_table>()); },
       .steps = fails(Callback::kGetCfg, 0),
       .writes_on_failure = "the table is cleared first"},
      {.name = "SetCfgParam",
       .call = [](Caller& c) { return SetCfgParam(c.board(), c.number(3), c.number(64)); },
       .steps = fails(Callback::kSetCfg, DFC_FAILED)},
  };
}

std::vector<Operation> loopback_operations() {
  constexpr std::uint32_t kBytes = 600;
  return {
      {.name = "DFC_ConfigLoopback",
       .call = [](Caller& c) { return DFC_ConfigLoopback(c.board(), c.number(DFC_LOOPBACK_MODE_2), c.number(0)); },
       .steps = fails(Callback::kLoopbackMode, DFC_FAILED, {{0xBAD0021, DFC_LOOPBACK_BAD0021}})},
      {.name = "DFC_RunLoopbackTest",
       .call =
           [](Caller& c) {
             const std::uint32_t bytes = c.number(kBytes, DFC_LOOPBACK_BYTES);
             const dfc_loopback frames{.bufSize = bytes, .txBuf = c.bytes(bytes), .rxBuf = c.bytes(bytes)};
             return DFC_RunLoopbackTest(c.board(), &frames);
           },
       .steps = fails(Callback::kLoopbackTest, DFC_FAILED, {{0xBAD000A, DFC_LOOPBACK_BAD000A}, {0xBAD0039, DFC_LOOPBACK_BAD0039}}),
       .without_memory = {DFC_NO_MEMORY}},
      {.name = "DFC_EndLoopback",
       .call = [](Caller& c) { return DFC_EndLoopback(c.board()); },
       .generation = Generation::kSli4,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kDiagModeEnd, DFC_FAILED, {{0xBAD0021, DFC_LOOPBACK_BAD0021}})},
      {.name = "DFC_EndLoopback",
       .call = [](Caller& c) { return DFC_EndLoopback(c.board()); },
       .generation = Generation::kSli3,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kLip, DFC_FAILED)},
  };
}

std::vector<Operation> priority_operations() {
  return {
      {.name = "DFC_QoSSetGlobalFlag",
       .call = [](Caller& c) { return DFC_QoSSetGlobalFlag(c.board(), c.number(1)); },
       .steps = fails(Callback::kSetFcpPriorityFlag, DFC_FAILED)},
      {.name = "DFC_QoSGetGlobalFlag",
       .call = [](Caller& c) { return DFC_QoSGetGlobalFlag(c.board(), c.record<std::uint32_t>()); },
       .steps = fails(Callback::kGetFcpPriorityFlag, DFC_FAILED)},
      {.name = "DFC_QoSGetConfig",
       .call = [](Caller& c) { return DFC_QoSGetConfig(c.board(), rules(c)); },
       .steps = fails(Callback::kGetFcpPriority, DFC_FAILED),
       .without_memory = {DFC_FAILED}},
      {.name = "DFC_QoSSetConfig",
       .call = [](Caller& c) { return DFC_QoSSetConfig(c.board(), rules(c)); },
       .steps = fails(Callback::kSetFcpPriority, DFC_FAILED),
       .without_memory = {DFC_FAILED, DFC_FAILED},
       .writes_on_failure = "the caller's rules are put into order before they are sent"},
      {.name = "DFC_GetQoSLinkSpeed",
       .call = [](Caller& c) { return DFC_GetQoSLinkSpeed(c.board(), c.record<std::uint16_t>()); },
       .generation = Generation::kSli4,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kGetLogicalLinkSpeed, DFC_FAILED)},
  };
}

std::vector<Operation> oas_operations() {
  constexpr std::uint32_t kRoom = 16;
  return {
      {.name = "DFC_SetOASLun",
       .call =
           [](Caller& c) {
             return DFC_SetOASLun(c.board(), c.wwn(), c.wwn(), c.number(1), c.number(0), c.number(0),
                                  static_cast<std::uint8_t>(c.number(1, 2)));
           },
       .steps = Steps{{.callback = Callback::kOasVer, .platform = Result::as_ever(), .driver = DFC_OAS_BAD0020}} +
                fails(Callback::kOasSetRule, DFC_FAILED,
                      {{0xBAD0100, DFC_OK},
                       {0xBAD0006, DFC_OAS_BAD0006},
                       {0xBAD0020, DFC_OAS_BAD0020},
                       {0xBAD0030, DFC_OAS_BAD0030},
                       {0xBAD002B, DFC_OAS_BAD002B},
                       {0xBAD002C, DFC_OAS_BAD002B}}) +
                fails(Callback::kVportGetNodeInfo, DFC_OAS_NO_NODES),
       .without_memory = {DFC_OAS_BAD0006, DFC_OAS_NO_NODES, DFC_OAS_NO_NODES}},
      {.name = "DFC_GetOASLunList",
       .call =
           [](Caller& c) {
             const std::uint32_t room = c.number(kRoom, 300);
             return DFC_GetOASLunList(
                 c.board(), c.wwn(), c.wwn(), c.number(0),
                 c.record(dfc_oas_lun_list{.numEntries = room}, sizeof(dfc_oas_lun_list) + room * sizeof(oas_lun_entry)));
           },
       .steps = fails(Callback::kOasGet, DFC_FAILED,
                      {{0xBAD0010, DFC_OAS_BAD0010},
                       {0xBAD000F, DFC_OAS_BAD000F},
                       {0xBAD0020, DFC_OAS_BAD0020},
                       {0xBAD0030, DFC_OAS_BAD0030}}),
       .without_memory = {DFC_FAILED}},
  };
}

std::vector<Operation> vport_operations() {
  // Room for all that a driver reports.
  constexpr std::uint32_t kVports = 4096;
  constexpr std::uint32_t kNodes = 512;
  return {
      {.name = "DFC_NPIVReadyTest",
       .call = [](Caller& c) { return DFC_NPIVReadyTest(c.board(), c.record<std::uint32_t>()); },
       .steps = fails(Callback::kNpivReady, DFC_FAILED)},
      {.name = "DFC_VPGetResource",
       .call = [](Caller& c) { return DFC_VPGetResource(c.board(), c.record<dfc_vport_resource>()); },
       .steps = fails(Callback::kVportGetResrc, DFC_FAILED)},
      {.name = "DFC_VPGetAttrib",
       .call = [](Caller& c) { return DFC_VPGetAttrib(c.board(), c.wwn(), c.record<dfc_vport_attributes>()); },
       .steps = fails(Callback::kVportGetAttrib, DFC_NO_SUCH_VPORT)},
      {.name = "DFC_VPGetList",
       .call =
           [](Caller& c) {
             return DFC_VPGetList(c.board(), c.record(dfc_vport_list{.numEntries = c.number(kVports)},
                                                      sizeof(dfc_vport_list) + (kVports - 1) * sizeof(dfc_vport_entry)));
           },
       .steps = fails(Callback::kVportGetList, DFC_FAILED, {{0xBAD00B4, DFC_TOO_SMALL}}),
       .without_memory = {DFC_NO_MEMORY}},
      {.name = "DFC_GetAllNodeInfoByWWN",
       .call =
           [](Caller& c) {
             return DFC_GetAllNodeInfoByWWN(c.board(), c.wwn(),
                                            c.record(dfc_node_list{.numEntries = c.number(kNodes)},
                                                     sizeof(dfc_node_list) + (kNodes - 1) * sizeof(dfc_node_entry)));
           },
       // A driver that says that the list does not fit, although it does, has failed.
       .steps = fails(Callback::kVportGetNodeInfo, DFC_FAILED, {{0xBAD00B4, DFC_FAILED}, {0xBAD0020, DFC_UNSUPPORTED}}),
       .without_memory = {DFC_NO_MEMORY}},
  };
}

}  // namespace vaskdfc::test
