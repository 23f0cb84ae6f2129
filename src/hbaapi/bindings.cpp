// Persistent bindings.
#include <algorithm>
#include <cstring>

#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "vaskdfc/mapping.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kBindings{.function = "GetFcpBindList", .callback = Callback::kListBind, .lines = {528, 532}};

constexpr uint32_t kMostBindings = std::size(BindListReply{}.entries);

// Asks for the list. `list` is as large as a reply, the caller's own or a temporary.
uint32_t fetch(uint32_t board, FcpBindList& caller, BindListReply& list) {
  auto header = header_for(board);
  header.arg2 = sizeof(list);
  header.arg4 = caller.count;
  const Outcome outcome = invoke<kBindings>(board, header, list);
  if (outcome.ok()) return HBA_STATUS_OK;
  if (outcome.platform == 0) caller.count = header.arg1;
  return HBA_STATUS_ERROR;
}

}  // namespace

uint32_t GetFcpBindList(uint32_t board, FcpBindList* list) {
  if (list->count >= kMostBindings) return fetch(board, *list, *reinterpret_cast<BindListReply*>(list));

  const auto temporary = StagingBuffer<BindListReply>::cleared();
  if (!temporary) return DFC_NO_MEMORY;
  if (const uint32_t result = fetch(board, *list, *temporary); result != HBA_STATUS_OK) return result;
  list->count = temporary->count;
  std::copy_n(temporary->entries, std::min(temporary->count, kMostBindings), list->entries);
  return HBA_STATUS_OK;
}

uint32_t GetFcpPersistentBinding(uint32_t, void* binding) {
  constexpr uint32_t kNone = 0;
  std::memcpy(binding, &kNone, sizeof(kNone));
  return HBA_STATUS_OK;
}
