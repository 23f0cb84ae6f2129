// What an application tells or asks the driver as a whole: messages, module information.
#include "transport/call_frame.h"
#include "vaskdfc/info.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kModuleInformation{.function = "ModInfo", .callback = Callback::kModInfo, .lines = {58, 62}};
constexpr CallSite kMessage{.function = "LogMsg", .callback = Callback::kLogMsg, .lines = {86, 90}};

}  // namespace

uint32_t ModInfo(dfc_module_info* info) {
  dfc_mgmt_hdr header{};
  return invoke<kModuleInformation>(kNoBoard, header, *info).status();
}

uint32_t LogMsg(const dfc_kernel_message* message) {
  dfc_mgmt_hdr header{};
  return invoke<kMessage>(kNoBoard, header, *message).status();
}
