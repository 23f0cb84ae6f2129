// The driver's parameters of an adapter.
#include "vaskdfc/parameters.h"

#include <algorithm>
#include <iterator>

#include "transport/call_frame.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kGet{.function = "GetCfgParam", .callback = Callback::kGetCfg, .lines = {312, 316}};
constexpr CallSite kSet{.function = "SetCfgParam", .callback = Callback::kSetCfg, .lines = {344, 348}};

constexpr uint32_t kMostParameters = std::size(dfc_cfg_table{}.entries);

}  // namespace

uint32_t GetCfgParam(uint32_t board, dfc_cfg_table* table) {
  auto header = header_for(board);
  header.arg2 = sizeof(*table);
  *table = {};
  if (!invoke<kGet>(board, header, *table).ok()) return 0;
  return std::min<uint32_t>(header.arg3 / sizeof(dfc_cfg_entry), kMostParameters);
}

uint32_t SetCfgParam(uint32_t board, uint32_t entry, uint32_t value) {
  auto header = header_for(board);
  header.arg1 = entry;
  header.arg4 = value;
  return invoke<kSet>(board, header).ok() ? DFC_OK : DFC_FAILED;
}
