// A library that finds the adapters and does nothing else: what loading and starting costs at least.
#include <algorithm>

#include "library.h"

#pragma GCC visibility push(default)
extern "C" std::uint32_t bare_start(dfc_brd_info* boards, std::uint32_t capacity);
extern "C" void bare_stop();
#pragma GCC visibility pop

namespace {

vmk_MgmtUserHandle handle;

}  // namespace

std::uint32_t bare_start(dfc_brd_info* boards, std::uint32_t capacity) {
  constexpr dfc_mgmt_signature kSignature{};
  if (vmk_MgmtUserInit(&kSignature, 0, &handle) != 0) return 0;
  std::uint32_t found = 0;
  for (std::uint32_t board = 0; board < capacity; ++board) {
    dfc_mgmt_hdr header{.brdno = board};
    vaskdfc::dfc_initbrds_rsp reply{};
    if (bench::bare_call(vaskdfc::Callback::kInitBrds, header, &reply) != 0) continue;
    boards[found] = {};
    boards[found].pci_id = reply.pci_id;
    std::ranges::copy(reply.bytes_72, boards[found].bytes_72);
    ++found;
  }
  return found;
}

void bare_stop() { vmk_MgmtUserDestroy(handle); }
