#include "exhaustive/platform.h"

#include <algorithm>
#include <cstdarg>
#include <numeric>

#include "transport/board_table.h"
#include "transport/log.h"
#include "transport/mgmt_interface.h"

namespace vaskdfc::test {

Answer answer = [](Callback callback, const Parameters& parameters) {
  AgreeableDriver::answer(callback, parameters);
  return 0;
};

void start_library() {
  std::iota(dfc_brdno.begin(), dfc_brdno.end(), 0u);
  dfc_state.fill(kStateUsable);
  dfc_rststatistics.fill({});
  dfc_refresh_timer.fill(0);
  dftrel_brdCnt = DFC_MAX_BOARDS;
  trel_mgmt_handle = &answer;
  refcnt = 1;
  LogLevel = 0;
}

}  // namespace vaskdfc::test

int vmk_MgmtUserInit(const void*, uint64_t, vmk_MgmtUserHandle* handle) {
  *handle = &vaskdfc::test::answer;
  return 0;
}

int vmk_MgmtUserDestroy(vmk_MgmtUserHandle) { return 0; }

int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle, uint64_t, uint64_t callback, uint32_t count, ...) {
  vaskdfc::test::Parameters parameters{};
  std::va_list arguments;
  va_start(arguments, count);
  for (std::size_t at = 0; at < std::min<std::size_t>(count, parameters.size()); ++at) parameters[at] = va_arg(arguments, void*);
  va_end(arguments);
  return vaskdfc::test::answer(static_cast<vaskdfc::Callback>(callback), parameters);
}
