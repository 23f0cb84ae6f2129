// Loopback: each call stands alone, and only the driver knows whether a port is in loopback.
#include "vaskdfc/loopback.h"

#include "info/sli_mode.h"
#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/insist.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

// The call line names another callback than the one that is issued; log readers match this name.
constexpr CallSite kConfigure{.function = "DFC_ConfigLoopback",
                              .callback = Callback::kLoopbackMode,
                              .lines = {72, 76},
                              .call_name = facts_of(Callback::kHbaWwpnPortAttributes).name,
                              .result_name = facts_of(Callback::kLoopbackMode).name};
constexpr CallSite kTest{.function = "DFC_RunLoopbackTest", .callback = Callback::kLoopbackTest, .lines = {132, 136}};
constexpr CallSite kEndDiagnostics{.function = "dfc_EndLoopback_sli4", .callback = Callback::kDiagModeEnd, .lines = {178, 182}};
constexpr CallSite kInitialiseLoop{.function = "dfc_EndLoopback", .callback = Callback::kLip, .lines = {212, 216}};

constexpr StatusMap kModeFailures{{{0xBAD0021, DFC_LOOPBACK_BAD0021}}, DFC_FAILED};
static_assert(kModeFailures(0xBAD0021) == 2);
static_assert(kModeFailures(0) == 1);

constexpr StatusMap kTestFailures{{{0xBAD000A, DFC_LOOPBACK_BAD000A}, {0xBAD0039, DFC_LOOPBACK_BAD0039}}, DFC_FAILED};
static_assert(kTestFailures(0xBAD000A) == 6 && kTestFailures(0xBAD0039) == 3);
static_assert(kTestFailures(0) == 1);

// The driver's code for a mode; that of the second differs on purpose.
constexpr uint32_t code_of(uint32_t mode) { return mode == DFC_LOOPBACK_MODE_2 ? 4 : mode; }

uint32_t dfc_EndLoopback_sli4(uint32_t board) {
  auto header = header_for(board);
  header.arg7 = 15;
  const Outcome outcome = invoke<kEndDiagnostics>(board, header);
  return outcome.ok() ? DFC_OK : kModeFailures(outcome.driver);
}

uint32_t dfc_EndLoopback(uint32_t board) {
  auto header = header_for(board);
  return invoke<kInitialiseLoop>(board, header).ok() ? DFC_OK : DFC_FAILED;
}

}  // namespace

uint32_t DFC_ConfigLoopback(uint32_t board, uint32_t mode, uint32_t value) {
  if (mode != DFC_LOOPBACK_MODE_1 && mode != DFC_LOOPBACK_MODE_2) return DFC_LOOPBACK_NO_SUCH_MODE;
  auto header = header_for(board);
  header.arg5 = code_of(mode);
  header.arg7 = value;
  const Outcome outcome = invoke<kConfigure>(board, header);
  return outcome.ok() ? DFC_OK : kModeFailures(outcome.driver);
}

uint32_t DFC_RunLoopbackTest(uint32_t board, const dfc_loopback* pLoopback) {
  INSIST(pLoopback->bufSize <= 65536, 108);
  const StagingBuffer<RequestAndReply<LoopbackData>> stage;
  if (!stage) return DFC_NO_MEMORY;

  auto header = header_for(board);
  header.arg2 = pLoopback->bufSize;
  copy_at_most(stage->request.bytes, pLoopback->txBuf, pLoopback->bufSize, sizeof(stage->request));
  const Outcome outcome = invoke<kTest>(board, header, stage->request, stage->reply);
  if (!outcome.ok()) return kTestFailures(outcome.driver);
  copy_at_most(pLoopback->rxBuf, stage->reply.bytes, pLoopback->bufSize, sizeof(stage->reply));
  return DFC_OK;
}

uint32_t DFC_EndLoopback(uint32_t board) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  return sli_mode >= kSli4 ? dfc_EndLoopback_sli4(board) : dfc_EndLoopback(board);
}
