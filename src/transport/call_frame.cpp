#include "transport/call_frame.h"

#include "transport/board_table.h"
#include "transport/log.h"
#include "transport/mgmt_interface.h"

namespace vaskdfc {

std::uint32_t getDrvBrdNum(std::uint32_t board) { return dfc_brdno[board]; }

dfc_mgmt_hdr header_for(std::uint32_t board) { return {.brdno = getDrvBrdNum(board)}; }

Outcome issue(const CallSite& site, std::uint32_t board, dfc_mgmt_hdr& header, const Payloads& payloads) {
  const CallbackFacts& callback = facts_of(site.callback);
  log_call({site.function, site.lines.call}, site.call_name);

  // The callee takes as many parameters as the count says; the others are null.
  const int platform = vmk_MgmtUserCallbackInvokeInt(trel_mgmt_handle, 0, callback.id, callback.parameters, &header,
                                                     payloads.address[0], payloads.address[1], payloads.address[2]);

  const Outcome outcome{.platform = static_cast<std::uint32_t>(platform), .driver = header.status};
  if (outcome.ok()) {
    log_ok({site.function, site.lines.result}, site.result_name, board);
  } else if (site.logs_failure) {
    log_error({site.function, site.lines.result}, site.result_name, board, outcome);
  }
  return outcome;
}

}  // namespace vaskdfc
