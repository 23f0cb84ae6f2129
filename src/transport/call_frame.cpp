#include "transport/call_frame.h"

#include "transport/log.h"
#include "transport/mgmt_interface.h"

namespace vaskdfc {

Outcome invoke_logged(const CallSite& site, std::uint32_t board, dfc_mgmt_hdr& header, const Payloads& payloads) {
  if (is_logged(kLogCall)) log_call({site.function, site.lines.call}, site.call_name);

  // The callee takes as many parameters as the count says; the others are null.
  const int platform =
      vmk_MgmtUserCallbackInvokeInt(trel_mgmt_handle, 0, static_cast<std::uint64_t>(site.callback), site.parameters, &header,
                                    payloads.address[0], payloads.address[1], payloads.address[2]);

  const Outcome outcome{.platform = static_cast<std::uint32_t>(platform), .driver = header.status};
  if (outcome.ok()) {
    if (is_logged(kLogOk)) log_ok({site.function, site.lines.result}, site.result_name, board);
  } else if (site.logs_failure && is_logged(kLogError)) {
    log_error({site.function, site.lines.result}, site.result_name, board, outcome);
  }
  return outcome;
}

}  // namespace vaskdfc
