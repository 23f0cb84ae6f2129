// The library's life: initialisation with board discovery, diagnostic states, shutdown.
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "transport/board_table.h"
#include "transport/call_frame.h"
#include "transport/log.h"
#include "transport/mgmt_interface.h"
#include "vaskdfc/result.h"
#include "vaskdfc/transport.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kProbe{
    .function = "DFC_InitDiagEnv", .callback = Callback::kInitBrds, .lines = {312, 316}, .logs_failure = false};
constexpr CallSite kShortProbe{
    .function = "InitDiagEnv", .callback = Callback::kInitBrds, .lines = {396, 400}, .logs_failure = false};
constexpr CallSite kAskState{.function = "SetBrdEnv", .callback = Callback::kSetDiag, .lines = {452, 456}};
constexpr CallSite kSetState{.function = "SetBrdEnv", .callback = Callback::kSetDiag, .lines = {486, 490}};

bool open_library() {
  OpenLogger();
  return dfc_mgmt_init() == 0 || dfc_mgmt_inbox_init() == 0;
}

// Probes every driver board number and gives the adapters that it accepts the board indices 0, 1, 2 and so on. `describe` is
// called for each with its board index, its driver board number and what the driver said.
template <const CallSite& kSite, typename Describe>
uint32_t discover(Describe describe) {
  uint32_t count = 0;
  for (uint32_t probe = 0; probe < DFC_MAX_BOARDS; ++probe) {
    dfc_rststatistics[probe] = {};
    dfc_refresh_timer[probe] = 0;

    dfc_mgmt_hdr header{.brdno = probe};
    dfc_initbrds_rsp reply{};
    if (!invoke<kSite>(probe, header, reply).ok()) continue;
    if (!is_supported(reply.pci_id)) continue;

    dfc_brdno[count] = probe;
    describe(count, probe, reply);
    ++count;
  }
  dftrel_brdCnt = count;
  return count;
}

// What both forms of discovery keep of an adapter: the fields that their records share, and its state.
template <typename BoardRecord>
void describe_board(uint32_t board, const dfc_initbrds_rsp& reply, BoardRecord& record) {
  record.pci_id = reply.pci_id;
  record.word_4 = reply.word_4;
  record.word_8 = reply.word_8;
  record.word_16 = reply.word_16;
  record.condition = static_cast<int32_t>(uint32_t{reply.condition});
  std::ranges::copy(reply.bytes_24, record.bytes_24);
  std::ranges::copy(reply.bytes_40, record.bytes_40);
  dfc_state[board] = record.condition < 0 ? kStateFailed : kStateUsable;
}

// Sub-commands of TREL_MGMT_SETDIAG.
constexpr uint32_t kAsk = 0x10;
constexpr uint32_t kNoCommand = 0;

constexpr uint32_t command_for(uint32_t mode) {
  switch (mode) {
    case 0: return kAsk;
    case 1: return 0x11;
    case DFC_MODE_WAITING: return 0x12;
    case 3: return 0x13;
    case 5: return 0x14;
    default: return kNoCommand;
  }
}

// The state that the driver reports; nothing when the call fails.
template <const CallSite& kSite>
std::optional<uint32_t> set_diag(uint32_t board, uint32_t command) {
  auto header = header_for(board);
  header.arg6 = command;
  if (!invoke<kSite>(board, header).ok()) return std::nullopt;
  return header.arg4;
}

// A state in which an adapter is not ready for the waiting mode.
constexpr uint32_t kNotReady = 2;

}  // namespace

uint32_t DFC_InitDiagEnv(dfc_brd_info* boards, uint32_t capacity) {
  if (!open_library()) return 0;

  dfc_brdno.fill(kNoBoard);
  return discover<kProbe>([=](uint32_t board, uint32_t probe, const dfc_initbrds_rsp& reply) {
    // Deliberate: applications size their arrays by the driver's board numbers, not by the number of adapters.
    if (capacity <= probe) return;
    dfc_brd_info& record = boards[board];
    describe_board(board, reply, record);
    record.byte_80 = reply.byte_80;
    record.constant_10 = 10;
    record.half_12 = reply.half_12;
    std::ranges::copy(reply.bytes_72, record.bytes_72);
  });
}

uint32_t InitDiagEnv(dfc_brd_info_short* boards) {
  if (!open_library()) return 0;

  // Deliberate: board indices above the new count keep the driver board numbers of an earlier initialisation.
  return discover<kShortProbe>([=](uint32_t board, uint32_t, const dfc_initbrds_rsp& reply) {
    dfc_brd_info_short& record = boards[board];
    describe_board(board, reply, record);
    record.half_12_low = static_cast<uint8_t>(reply.half_12);
  });
}

uint32_t SetBrdEnv(uint32_t board, uint32_t mode) {
  const uint32_t command = command_for(mode);
  if (command == kNoCommand) return 0;

  if (mode == DFC_MODE_WAITING) {
    for (;;) {
      const auto state = set_diag<kAskState>(board, kAsk);
      if (!state) return 0;
      if (*state != kNotReady) break;
      if (dfc_state[board] == kStateFailed) return *state;
      sleep(1);
    }
  }
  const auto state = set_diag<kSetState>(board, command);
  if (!state) return 0;
  dfc_state[board] = *state;
  return *state;
}

uint32_t SetDiagEnv(uint32_t mode) {
  uint32_t state = 0;
  for (uint32_t board = 0; board < dftrel_brdCnt; ++board) {
    state = SetBrdEnv(board, mode);
    if (state == 0) break;
  }
  return state;
}

uint32_t DFC_FreeDiagEnv() {
  dfc_mgmt_close();
  return DFC_OK;
}

uint32_t FreeDiagEnv() { return DFC_FreeDiagEnv(); }
