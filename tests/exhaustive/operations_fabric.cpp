// Attributes, statistics, events, mapping, SCSI and FCP, ELS, CT and management traffic.
#include "exhaustive/operation.h"
#include "vaskdfc.h"

namespace vaskdfc::test {
namespace {

constexpr std::uint32_t kDoesNotFit = 0x0BAD005D;

constexpr std::uint32_t kCommandBytes = sizeof(FcpCmndBlock);

std::uint64_t lun(Caller& c) { return std::uint64_t{c.number(2)} << 32 | c.number(1); }
std::uint8_t byte(Caller& c, std::uint32_t ordinary) { return static_cast<std::uint8_t>(c.number(ordinary)); }

// What a command comes back in: data, and sense data or a response of as much as a driver may write.
struct Buffers {
  static constexpr std::uint32_t kOther = 160;

  explicit Buffers(Caller& c, std::uint32_t ordinary = 512)
      : room(c.number(ordinary, DFC_SCSI_DATA_BYTES + 1000)),
        data(c.bytes(room)),
        data_bytes(c.record(room)),
        other(c.bytes(kOther)),
        other_bytes(c.record<std::uint32_t>(kOther)) {}

  std::uint32_t room;
  std::uint8_t* data;
  std::uint32_t* data_bytes;
  std::uint8_t* other;
  std::uint32_t* other_bytes;
};

}  // namespace

std::vector<Operation> hbaapi_operations() {
  return {
      {.name = "GetAdapterAttributes",
       .call = [](Caller& c) { return GetAdapterAttributes(c.board(), c.record<HbaAdapterAttributes>()); },
       .steps = fails(Callback::kHbaAdapterAttributes, HBA_STATUS_OK)},
      {.name = "GetAdapterPortAttributes",
       .call = [](Caller& c) { return GetAdapterPortAttributes(c.board(), c.number(0), c.record<HbaPortAttributes>()); },
       .steps = fails(Callback::kHbaPortAttributes, HBA_STATUS_ERROR)},
      {.name = "GetPortAttributesByIndex",
       .call =
           [](Caller& c) { return GetPortAttributesByIndex(c.board(), c.number(0), c.number(1), c.record<HbaPortAttributes>()); },
       .steps = fails(Callback::kHbaIndexPortAttributes, HBA_STATUS_ERROR, {{kDoesNotFit, HBA_STATUS_ERROR_ILLEGAL_INDEX}})},
      {.name = "GetDiscoveredPortAttributes",
       .call =
           [](Caller& c) {
             return GetDiscoveredPortAttributes(c.board(), c.number(0), c.number(1), c.record<HbaPortAttributes>());
           },
       .steps = fails(Callback::kHbaDiscPortAttributes, HBA_STATUS_ERROR, {{0x0BAD0003, HBA_STATUS_ERROR_ILLEGAL_INDEX}})},
      {.name = "GetPortAttributesByWWN",
       .call = [](Caller& c) { return GetPortAttributesByWWN(c.board(), c.wwn(), c.record<HbaPortAttributes>()); },
       .steps = fails(Callback::kHbaWwpnPortAttributes, HBA_STATUS_ERROR, {{0x0BAD0003, HBA_STATUS_ERROR_ILLEGAL_WWN}})},
      {.name = "RefreshInformation",
       .call = [](Caller& c) { return RefreshInformation(c.board()); },
       .steps = fails(Callback::kHbaRefreshInfo, HBA_STATUS_ERROR)},
      {.name = "GetPortStatistics",
       .call = [](Caller& c) { return GetPortStatistics(c.board(), c.number(0), c.record<HbaPortStatistics>()); },
       .steps = fails(Callback::kHbaPortStatistics, HBA_STATUS_ERROR)},
      {.name = "ResetStatistics",
       .call = [](Caller& c) { return ResetStatistics(c.board()); },
       .steps = fails(Callback::kHbaPortStatistics, HBA_STATUS_ERROR)},
  };
}

std::vector<Operation> event_operations() {
  constexpr std::uint32_t kMostEvents = 32;
  return {
      {.name = "GetEventBuffer",
       .call =
           [](Caller& c) {
             return GetEventBuffer(c.board(), reinterpret_cast<HbaEvent*>(c.bytes(kMostEvents * sizeof(HbaEvent))),
                                   c.record(c.number(kMostEvents)));
           },
       .steps = fails(Callback::kHbaGetEvent, HBA_STATUS_ERROR)},
      {.name = "GetEventBuffer",
       .call =
           [](Caller& c) {
             return GetEventBuffer(c.board(), reinterpret_cast<HbaEvent*>(c.bytes(kMostEvents * sizeof(HbaEvent))),
                                   c.record<std::uint32_t>(4));
           },
       .steps = fails(Callback::kHbaGetEvent, HBA_STATUS_ERROR),
       .without_memory = {DFC_NO_MEMORY}},
      {.name = "EventMissedCount", .call = [](Caller&) { return EventMissedCount; }},
      {.name = "SendRNID",
       .call =
           [](Caller& c) {
             const std::uint32_t room = c.number(64, 100);
             return SendRNID(c.board(), c.wwn(), c.number(HBA_RNID_PORT_WWN), c.bytes(room), c.record(room));
           },
       .steps = fails(Callback::kHbaRnid, HBA_STATUS_ERROR)},
      {.name = "GetRNIDMgmtInfo",
       .call = [](Caller& c) { return GetRNIDMgmtInfo(c.board(), c.record<HbaMgmtInfo>()); },
       .steps = fails(Callback::kHbaGetMgmtInfo, HBA_STATUS_ERROR)},
      {.name = "SetRNIDMgmtInfo",
       .call = [](Caller& c) { return SetRNIDMgmtInfo(c.board(), c.record<HbaMgmtInfo>()); },
       .steps = fails(Callback::kHbaSetMgmtInfo, HBA_STATUS_ERROR)},
  };
}

std::vector<Operation> mapping_operations() {
  constexpr std::uint32_t kUnits = 1024;
  constexpr std::uint32_t kBindings = 4096;
  constexpr std::size_t kListBytes = sizeof(FcpBindList) + (kBindings - 1) * sizeof(FcpBinding);
  return {
      {.name = "GetFcpTargetMapping",
       .call =
           [](Caller& c) {
             return GetFcpTargetMapping(c.board(), c.record(HbaFcpTargetMapping{.NumberOfEntries = c.number(4)},
                                                            sizeof(HbaFcpTargetMapping) + kUnits * sizeof(HbaFcpScsiEntry)));
           },
       .steps = fails(Callback::kHbaFcpTargetMapping, HBA_STATUS_ERROR, {{kDoesNotFit, HBA_STATUS_ERROR_MORE_DATA}}),
       .without_memory = {HBA_STATUS_ERROR},
       .writes_on_failure = "the count is the driver's"},
      {.name = "DFC_GetFcpTargetMappingV2",
       .call =
           [](Caller& c) {
             return DFC_GetFcpTargetMappingV2(c.board(), c.wwn(),
                                              c.record(HbaFcpTargetMappingV2{.NumberOfEntries = c.number(4)},
                                                       sizeof(HbaFcpTargetMappingV2) + kUnits * sizeof(HbaFcpScsiEntryV2)));
           },
       .steps = fails(Callback::kHbaPortAttributes, HBA_STATUS_ERROR) +
                fails(Callback::kHbaFcpTargetMapping, HBA_STATUS_ERROR, {{kDoesNotFit, HBA_STATUS_ERROR_MORE_DATA}}) +
                repeated(2, does_not_matter(Callback::kHbaSendScsi)),
       .without_memory = {HBA_STATUS_ERROR, HBA_STATUS_OK},
       .writes_on_failure = "the count is the driver's"},
      {.name = "GetFcpBindList",
       .call = [](Caller& c) { return GetFcpBindList(c.board(), c.record(FcpBindList{.count = c.number(4)}, kListBytes)); },
       .steps = fails(Callback::kListBind, HBA_STATUS_ERROR),
       .without_memory = {DFC_NO_MEMORY},
       .writes_on_failure = "a driver that failed tells how many there are"},
      {.name = "GetFcpBindList",
       .call = [](Caller& c) { return GetFcpBindList(c.board(), c.record(FcpBindList{.count = kBindings}, kListBytes)); },
       .steps = fails(Callback::kListBind, HBA_STATUS_ERROR),
       .writes_on_failure = "a driver that failed tells how many there are"},
      {.name = "GetFcpPersistentBinding",
       .call = [](Caller& c) { return GetFcpPersistentBinding(c.board(), c.record<std::uint32_t>()); }},
  };
}

std::vector<Operation> scsi_operations() {
  std::vector<Operation> rows{
      {.name = "SendScsiCmdByWWN",
       .call =
           [](Caller& c) {
             const Buffers b(c);
             return SendScsiCmdByWWN(c.board(), c.wwn(), c.wwn(), c.record<FcpCmndBlock>(), kCommandBytes, b.data, b.data_bytes,
                                     b.other, b.other_bytes);
           }},
      {.name = "SendScsiCmd",
       .call =
           [](Caller& c) {
             const Buffers b(c);
             return SendScsiCmd(c.board(), c.wwn(), c.record<FcpCmndBlock>(), kCommandBytes, b.data, b.data_bytes, b.other,
                                b.other_bytes);
           }},
      {.name = "SendScsiInquiry",
       .call =
           [](Caller& c) {
             const Buffers b(c, 36);
             return SendScsiInquiry(c.board(), c.wwn(), lun(c), byte(c, 1), byte(c, 0x83), b.data, b.data_bytes, b.other,
                                    b.other_bytes);
           }},
      {.name = "DFC_SendScsiInquiryByWWN",
       .call =
           [](Caller& c) {
             const Buffers b(c, 36);
             return DFC_SendScsiInquiryByWWN(c.board(), c.wwn(), c.wwn(), lun(c), byte(c, 0), byte(c, 0), b.data, b.data_bytes,
                                             b.other, b.other_bytes);
           }},
      {.name = "SendReadCapacity",
       .call =
           [](Caller& c) {
             const Buffers b(c, 8);
             return SendReadCapacity(c.board(), c.wwn(), lun(c), b.data, b.data_bytes, b.other, b.other_bytes);
           }},
      {.name = "DFC_SendReadCapacityByWWN",
       .call =
           [](Caller& c) {
             const Buffers b(c, 8);
             return DFC_SendReadCapacityByWWN(c.board(), c.wwn(), c.wwn(), c.number(1), b.data, b.data_bytes, b.other,
                                              b.other_bytes);
           }},
      {.name = "SendReportLUNs",
       .call =
           [](Caller& c) {
             const Buffers b(c);
             return SendReportLUNs(c.board(), c.wwn(), b.data, b.data_bytes, b.other, b.other_bytes);
           }},
      {.name = "DFC_SendReportLUNsByWWN",
       .call =
           [](Caller& c) {
             const Buffers b(c);
             return DFC_SendReportLUNsByWWN(c.board(), c.wwn(), c.wwn(), b.data, b.data_bytes, b.other, b.other_bytes);
           }},
      {.name = "SendScsiRead",
       .call =
           [](Caller& c) {
             const Buffers b(c, 4096);
             return SendScsiRead(c.board(), c.wwn(), lun(c), c.number(64), b.data, b.data_bytes, b.other, b.other_bytes);
           }},
      {.name = "SendScsiWrite",
       .call =
           [](Caller& c) {
             const Buffers b(c, 4096);
             return SendScsiWrite(c.board(), c.wwn(), lun(c), c.number(64), b.data, b.data_bytes, b.other, b.other_bytes);
           }},
  };
  for (Operation& row : rows) {
    row.steps = fails(Callback::kHbaSendScsi, HBA_STATUS_ERROR);
    row.without_memory = {HBA_STATUS_ERROR};
  }

  std::vector<Operation> fcp_rows{
      {.name = "SendFcpCmdByWWN",
       .call =
           [](Caller& c) {
             const Buffers b(c);
             return SendFcpCmdByWWN(c.board(), c.wwn(), c.wwn(), c.record<FcpCmndBlock>(), kCommandBytes, b.data, b.data_bytes,
                                    b.other, b.other_bytes, c.number(0));
           }},
      {.name = "DFC_SendFcpCmd",
       .call =
           [](Caller& c) {
             const Buffers b(c);
             return DFC_SendFcpCmd(c.board(), c.wwn(), c.record<FcpCmndBlock>(), kCommandBytes, b.data, b.data_bytes, b.other,
                                   b.other_bytes);
           }},
      {.name = "SendFcpCmd",
       .call =
           [](Caller& c) {
             const Buffers b(c);
             return SendFcpCmd(c.board(), c.wwn(), c.record<FcpCmndBlock>(), kCommandBytes, b.data, b.data_bytes, b.other,
                               b.other_bytes);
           }},
      {.name = "SendFcpCmdEx",
       .call =
           [](Caller& c) {
             const Buffers b(c);
             return SendFcpCmdEx(c.board(), c.wwn(), c.record<FcpCmndBlock>(), kCommandBytes, b.data, b.data_bytes, b.other,
                                 b.other_bytes, c.number(0));
           }},
  };
  for (Operation& row : fcp_rows) {
    row.steps = fails(Callback::kHbaSendFcp, HBA_STATUS_ERROR, {{kDoesNotFit, HBA_STATUS_ERROR_MORE_DATA}});
    row.without_memory = {HBA_STATUS_ERROR};
    rows.push_back(row);
  }
  return rows;
}

std::vector<Operation> fabric_operations() {
  constexpr auto code = [](std::int32_t result) { return static_cast<std::uint32_t>(result); };
  constexpr std::int32_t kNameServer = 0xFFFFFC;
  // Requests of more bytes than an operation accepts.
  constexpr std::uint32_t kLongerElsFrame = DFC_ELS_BYTES + 10;
  constexpr std::uint32_t kLongerFrame = DFC_SERVICE_BYTES + 10;
  return {
      {.name = "DFC_SendELSCmd",
       .call =
           [](Caller& c) {
             const std::uint32_t bytes = c.number(16, kLongerElsFrame);
             return DFC_SendELSCmd(c.board(), c.record<dfc_els_descriptor>(), c.bytes(bytes), bytes, c.bytes(DFC_ELS_BYTES),
                                   c.record<std::uint32_t>());
           },
       .steps = fails(Callback::kSendEls, DFC_FAILED, {{kDoesNotFit, DFC_TOO_SMALL}, {0xBAD000A, DFC_ELS_BAD000A}}),
       .without_memory = {DFC_FAILED},
       .writes_on_failure = "a reply that does not fit tells its length"},
      {.name = "GetCTInfo",
       .call =
           [](Caller& c) {
             const std::uint32_t bytes = c.number(16, kLongerFrame);
             return static_cast<std::uint32_t>(GetCTInfo(c.board(), static_cast<std::int32_t>(c.number(kNameServer)),
                                                         c.bytes(bytes), bytes, c.bytes(DFC_SERVICE_BYTES),
                                                         c.number(DFC_SERVICE_BYTES)));
           },
       .steps = fails(Callback::kSendCt, code(DFC_CT_FAILED),
                      {{0xBAD0021, code(DFC_CT_BAD0021)},
                       {0xBAD0014, code(DFC_CT_NO_MEMORY)},
                       {0xBAD005A, code(DFC_CT_BAD005A)},
                       {kDoesNotFit, code(DFC_CT_TOO_LONG)}}),
       .without_memory = {code(DFC_CT_NO_MEMORY)}},
      {.name = "SendCTPassThru",
       .call =
           [](Caller& c) {
             const std::uint32_t bytes = 5 + c.number(11, kLongerFrame);
             return SendCTPassThru(c.board(), c.bytes(bytes), bytes, c.bytes(DFC_SERVICE_BYTES),
                                   c.record(c.number(DFC_SERVICE_BYTES)));
           },
       .steps = fails(Callback::kSendCt, DFC_FAILED),
       .without_memory = {DFC_FAILED}},
      {.name = "SendMgmtCommand",
       .call =
           [](Caller& c) {
             const std::uint32_t bytes = c.number(16, kLongerFrame);
             return SendMgmtCommand(c.board(), c.record<dfc_mgmt_command>(), c.bytes(bytes), bytes, c.bytes(DFC_SERVICE_BYTES),
                                    c.record<std::uint32_t>(), c.number(0));
           },
       .steps = fails(Callback::kHbaSendMgmtCmd, DFC_MGMT_FAILED,
                      {{kDoesNotFit, DFC_MGMT_TOO_LONG}, {0xBAD0021, DFC_MGMT_COMMAND_BAD0021}, {0xBAD005A, DFC_MGMT_BAD005A}}),
       .without_memory = {DFC_MGMT_FAILED},
       .writes_on_failure = "a reply that does not fit tells its length"},
      {.name = "SendMgmtResponse",
       .call =
           [](Caller& c) {
             const std::uint32_t bytes = c.number(16, kLongerFrame);
             return SendMgmtResponse(c.board(), c.bytes(bytes), bytes, c.number(0));
           },
       .steps = fails(Callback::kHbaSendMgmtRsp, DFC_MGMT_FAILED,
                      {{kDoesNotFit, DFC_MGMT_TOO_LONG}, {0xBAD0021, DFC_MGMT_RESPONSE_BAD0021}, {0xBAD005A, DFC_MGMT_BAD005A}}),
       .without_memory = {DFC_MGMT_FAILED}},
  };
}

}  // namespace vaskdfc::test
