// ELS and CT requests, management commands and responses: payloads out, payloads back.
#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/fabric.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kEls{.function = "DFC_SendELSCmd", .callback = Callback::kSendEls, .lines = {96, 100}};
constexpr CallSite kCt{.function = "GetCTInfo", .callback = Callback::kSendCt, .lines = {178, 182}};
constexpr CallSite kCommand{.function = "SendMgmtCommand", .callback = Callback::kHbaSendMgmtCmd, .lines = {288, 292}};
constexpr CallSite kResponse{.function = "SendMgmtResponse", .callback = Callback::kHbaSendMgmtRsp, .lines = {352, 356}};

// Every operation has names of its own for the same statuses.
constexpr uint32_t kDoesNotFit = 0xBAD005D;

constexpr StatusMap kElsResults{{{kDoesNotFit, DFC_TOO_SMALL}, {0xBAD000A, DFC_ELS_BAD000A}}, DFC_FAILED};
static_assert(kElsResults(kDoesNotFit) == 7 && kElsResults(0xBAD000A) == 3);
static_assert(kElsResults(0) == 1);

constexpr StatusMap kCtResults{{{0xBAD0021, static_cast<uint32_t>(DFC_CT_BAD0021)},
                                {0xBAD0014, static_cast<uint32_t>(DFC_CT_NO_MEMORY)},
                                {0xBAD005A, static_cast<uint32_t>(DFC_CT_BAD005A)},
                                {kDoesNotFit, static_cast<uint32_t>(DFC_CT_TOO_LONG)}},
                               static_cast<uint32_t>(DFC_CT_FAILED)};
static_assert(kCtResults(0xBAD0021) == 0 && static_cast<int32_t>(kCtResults(0xBAD005A)) == -1);
static_assert(static_cast<int32_t>(kCtResults(0)) == -4);

constexpr StatusMap kCommandResults{
    {{kDoesNotFit, DFC_MGMT_TOO_LONG}, {0xBAD0021, DFC_MGMT_COMMAND_BAD0021}, {0xBAD005A, DFC_MGMT_BAD005A}}, DFC_MGMT_FAILED};
static_assert(kCommandResults(kDoesNotFit) == 255 && kCommandResults(0xBAD0021) == 254);
static_assert(kCommandResults(0xBAD005A) == 253 && kCommandResults(0) == 252);

// Deliberate: one status differs from the command's.
constexpr StatusMap kResponseResults{
    {{kDoesNotFit, DFC_MGMT_TOO_LONG}, {0xBAD0021, DFC_MGMT_RESPONSE_BAD0021}, {0xBAD005A, DFC_MGMT_BAD005A}}, DFC_MGMT_FAILED};
static_assert(kResponseResults(kDoesNotFit) == 255 && kResponseResults(0xBAD0021) == 250);
static_assert(kResponseResults(0xBAD005A) == 253 && kResponseResults(0) == 252);

// The service that a CT request is for, by its GS_TYPE.
constexpr int32_t service_address(uint8_t gs_type) {
  constexpr uint8_t kDirectory = 0xFC;
  const bool has_address = gs_type >= 0xFA && gs_type <= 0xFD;
  return 0xFFFF00 | (has_address ? gs_type : kDirectory);
}
static_assert(service_address(0xFA) == 0xFFFFFA && service_address(0xFD) == 0xFFFFFD);
static_assert(service_address(0xF9) == 0xFFFFFC && service_address(0xFE) == 0xFFFFFC);

constexpr bool is_well_known(int32_t address) { return (address & 0xFFFF00) == 0xFFFF00; }

}  // namespace

uint32_t DFC_SendELSCmd(uint32_t board, const dfc_els_descriptor* descriptor, const void* request, uint32_t request_bytes,
                        void* reply, uint32_t* reply_bytes) {
  if (request_bytes > sizeof(ElsFrame)) return DFC_FAILED;
  const StagingBuffer<RequestAndReply<ElsFrame>> stage;
  if (!stage) return DFC_FAILED;

  copy_at_most(stage->request.bytes, request, request_bytes, sizeof(stage->request));
  auto header = header_for(board);
  header.arg2 = request_bytes;
  header.arg3 = sizeof(stage->reply);
  const Outcome outcome = invoke<kEls>(board, header, *descriptor, stage->request, stage->reply);
  if (outcome.ok() || outcome.driver == kDoesNotFit) *reply_bytes = header.arg3;
  if (!outcome.ok()) return kElsResults(outcome.driver);
  copy_at_most(reply, stage->reply.bytes, header.arg3, sizeof(stage->reply));
  return DFC_OK;
}

int32_t GetCTInfo(uint32_t board, int32_t destination, const void* request, uint32_t request_bytes, void* reply,
                  uint32_t reply_room) {
  if (!is_well_known(destination)) return DFC_CT_FAILED;
  if (request_bytes > sizeof(ServiceFrame)) return DFC_CT_TOO_LONG;
  const StagingBuffer<RequestAndReply<ServiceFrame>> stage;
  if (!stage) return DFC_CT_NO_MEMORY;

  copy_at_most(stage->request.bytes, request, request_bytes, sizeof(stage->request));
  auto header = header_for(board);
  header.arg2 = request_bytes;
  header.arg3 = reply_room;
  header.arg4 = static_cast<uint32_t>(destination);
  const Outcome outcome = invoke<kCt>(board, header, stage->request, stage->reply);
  if (!outcome.ok()) return static_cast<int32_t>(kCtResults(outcome.driver));
  copy_at_most(reply, stage->reply.bytes, header.arg3, sizeof(stage->reply));
  return static_cast<int32_t>(header.arg3);
}

uint32_t SendCTPassThru(uint32_t board, const void* request, uint32_t request_bytes, void* reply, uint32_t* reply_bytes) {
  constexpr std::size_t kGsType = 4;
  const int32_t destination = service_address(static_cast<const uint8_t*>(request)[kGsType]);
  const int32_t result = GetCTInfo(board, destination, request, request_bytes, reply, *reply_bytes);
  if (result <= 0) return DFC_FAILED;
  *reply_bytes = static_cast<uint32_t>(result);
  return DFC_OK;
}

uint32_t SendMgmtCommand(uint32_t board, const dfc_mgmt_command* command, const void* request, uint32_t request_bytes, void* reply,
                         uint32_t* reply_bytes, uint32_t argument) {
  if (request_bytes > sizeof(ServiceFrame)) return DFC_MGMT_FAILED;
  const StagingBuffer<RequestAndReply<ServiceFrame>> stage;
  if (!stage) return DFC_MGMT_FAILED;

  copy_at_most(stage->request.bytes, request, request_bytes, sizeof(stage->request));
  auto header = header_for(board);
  header.arg2 = request_bytes;
  header.arg3 = sizeof(stage->reply);
  header.arg7 = argument;
  const Outcome outcome = invoke<kCommand>(board, header, *command, stage->request, stage->reply);
  if (outcome.ok() || outcome.driver == kDoesNotFit) *reply_bytes = header.arg3;
  if (!outcome.ok()) return kCommandResults(outcome.driver);
  copy_at_most(reply, stage->reply.bytes, header.arg3, sizeof(stage->reply));
  return DFC_OK;
}

uint32_t SendMgmtResponse(uint32_t board, const void* response, uint32_t response_bytes, uint32_t argument) {
  if (response_bytes > sizeof(ServiceFrame)) return DFC_MGMT_FAILED;
  const StagingBuffer<ServiceFrame> sent;
  if (!sent) return DFC_MGMT_FAILED;

  copy_at_most(sent->bytes, response, response_bytes, sizeof(*sent));
  auto header = header_for(board);
  header.arg2 = sizeof(*sent);
  header.arg4 = argument;
  const Outcome outcome = invoke<kResponse>(board, header, *sent);
  return outcome.ok() ? DFC_OK : kResponseResults(outcome.driver);
}
