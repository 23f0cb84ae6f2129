#include "regions/adapter_type.h"

#include "transport/call_frame.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kType{.function = "get_hba_type", .callback = Callback::kGetTrelDfcInfo, .lines = {4976, 4979}};

}  // namespace

uint32_t vaskdfc::get_hba_type(uint32_t board, uint32_t& type) {
  type = 0;
  auto header = header_for(board);
  DriverInfoReply reply{};
  const Outcome outcome = invoke<kType>(board, header, reply);
  if (outcome.platform != 0) return DFC_FAILED;
  if (outcome.driver != 0) return outcome.driver;

  type = reply.adapter_type;
  return DFC_OK;
}
