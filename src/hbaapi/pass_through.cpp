// SCSI and FCP commands on their way to a remote port and back.
#include <algorithm>

#include "hbaapi/scsi_transfer.h"
#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/result.h"
#include "vaskdfc/scsi.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kScsi{.function = "SendScsiCmdByWWN", .callback = Callback::kHbaSendScsi, .lines = {826, 830}};
constexpr CallSite kFcp{.function = "SendFcpCmdByWWN", .callback = Callback::kHbaSendFcp, .lines = {912, 916}};

// The SCSI transport knows no status of the driver's, on purpose.
constexpr StatusMap kFcpFailures{{{0x0BAD005D, HBA_STATUS_ERROR_MORE_DATA}}, HBA_STATUS_ERROR};
static_assert(kFcpFailures(0x0BAD005D) == 7);
static_assert(kFcpFailures(0) == 1);

constexpr HbaWwn kNoLocalPort{};

constexpr uint32_t within(uint32_t bytes, std::size_t most) { return static_cast<uint32_t>(std::min<std::size_t>(bytes, most)); }

}  // namespace

uint32_t vaskdfc::send_scsi(uint32_t board, const HbaWwn& target, const FcpCmndBlock& command, void* data, uint32_t* data_bytes,
                            void* sense, uint32_t* sense_bytes, TransferData& stage) {
  const uint32_t room = *data_bytes;
  copy_at_most(stage.bytes, data, room, sizeof(stage));
  auto header = header_for(board);
  header.arg2 = within(room, sizeof(stage));
  ScsiPassThruRequest request{.target = target, .command = command};
  if (!invoke<kScsi>(board, header, request, stage).ok()) return HBA_STATUS_ERROR;

  *data_bytes = header.arg3;
  if (room < header.arg3) return HBA_STATUS_ERROR_MORE_DATA;
  *sense_bytes = request.sense_bytes;
  copy_at_most(sense, request.sense, request.sense_bytes, sizeof(request.sense));
  copy_at_most(data, stage.bytes, header.arg3, sizeof(stage));
  return HBA_STATUS_OK;
}

uint32_t SendScsiCmdByWWN(uint32_t board, const HbaWwn*, const HbaWwn* target, const FcpCmndBlock* command, uint32_t, void* data,
                          uint32_t* data_bytes, void* sense, uint32_t* sense_bytes) {
  const StagingBuffer<TransferData> stage;
  if (!stage) return HBA_STATUS_ERROR;
  return send_scsi(board, *target, *command, data, data_bytes, sense, sense_bytes, *stage);
}

uint32_t SendScsiCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                     uint32_t* data_bytes, void* sense, uint32_t* sense_bytes) {
  return SendScsiCmdByWWN(board, &kNoLocalPort, target, command, command_bytes, data, data_bytes, sense, sense_bytes);
}

uint32_t SendFcpCmdByWWN(uint32_t board, const HbaWwn*, const HbaWwn* target, const FcpCmndBlock* command, uint32_t, void* data,
                         uint32_t* data_bytes, void* response, uint32_t* response_bytes, uint32_t extra) {
  const StagingBuffer<TransferData> stage;
  if (!stage) return HBA_STATUS_ERROR;
  const uint32_t room = *data_bytes;
  copy_at_most(stage->bytes, data, room, sizeof(*stage));
  auto header = header_for(board);
  header.arg2 = within(room, sizeof(*stage));
  header.arg7 = extra;
  FcpPassThruRequest request{.target = *target, .command = *command, .response_bytes = *response_bytes};
  const Outcome outcome = invoke<kFcp>(board, header, request, *stage);
  if (!outcome.ok()) return kFcpFailures(outcome.driver);

  *response_bytes = request.response_bytes;
  *data_bytes = header.arg3;
  if (room < header.arg3) return HBA_STATUS_ERROR_MORE_DATA;
  // The response runs on over its own length, up to the end of the request.
  constexpr std::size_t kResponse = offsetof(FcpPassThruRequest, response);
  copy_at_most(response, reinterpret_cast<const uint8_t*>(&request) + kResponse, request.response_bytes,
               sizeof(request) - kResponse);
  copy_at_most(data, stage->bytes, header.arg3, sizeof(*stage));
  return HBA_STATUS_OK;
}

uint32_t DFC_SendFcpCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                        uint32_t* data_bytes, void* response, uint32_t* response_bytes) {
  return SendFcpCmdEx(board, target, command, command_bytes, data, data_bytes, response, response_bytes, /*extra=*/0);
}

uint32_t SendFcpCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                    uint32_t* data_bytes, void* response, uint32_t* response_bytes) {
  return DFC_SendFcpCmd(board, target, command, command_bytes, data, data_bytes, response, response_bytes);
}

uint32_t SendFcpCmdEx(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                      uint32_t* data_bytes, void* response, uint32_t* response_bytes, uint32_t extra) {
  return SendFcpCmdByWWN(board, &kNoLocalPort, target, command, command_bytes, data, data_bytes, response, response_bytes, extra);
}
