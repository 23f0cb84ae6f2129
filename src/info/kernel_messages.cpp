// What an application tells or asks the driver as a whole: messages, module information, test events.
#include "transport/call_frame.h"
#include "vaskdfc/info.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kModuleInformation{.function = "ModInfo", .callback = Callback::kModInfo, .lines = {58, 62}};
constexpr CallSite kMessage{.function = "LogMsg", .callback = Callback::kLogMsg, .lines = {86, 90}};
constexpr CallSite kEvent{.function = "EventTest", .callback = Callback::kEventTest, .lines = {116, 120}};

}  // namespace

uint32_t ModInfo(dfc_module_info* info) {
  dfc_mgmt_hdr header{};
  return invoke<kModuleInformation>(kNoBoard, header, *info).status();
}

uint32_t LogMsg(const dfc_kernel_message* message) {
  dfc_mgmt_hdr header{};
  return invoke<kMessage>(kNoBoard, header, *message).status();
}

uint32_t EventTest(uint32_t board, uint32_t first, uint32_t second) {
  auto header = header_for(board);
  header.arg6 = first;
  header.arg4 = second;
  return invoke<kEvent>(board, header).status();
}
