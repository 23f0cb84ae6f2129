#include "driver/management_info.h"

#include <cstring>

#include "driver/stored_name.h"

namespace simulator {
namespace {

std::string text_of(const HbaMgmtInfo& info) { return {reinterpret_cast<const char*>(&info), sizeof(info)}; }

HbaMgmtInfo initial(const scenario::Adapter& card) {
  constexpr std::uint32_t kHost = 0x0B;
  HbaMgmtInfo info{};
  info.wwn = card.port.wwpn;
  info.unittype = kHost;
  info.PortId = card.port.fc_id;
  return info;
}

}  // namespace

ManagementInfo::ManagementInfo(const scenario::Adapter& card, StateStore& store)
    : kept_(store, stored_name("rnid", card, "bin"), text_of(initial(card)), KeptBytes::of_size(sizeof(HbaMgmtInfo))) {}

HbaMgmtInfo ManagementInfo::load() const {
  HbaMgmtInfo info;
  std::memcpy(&info, kept_.load().data(), sizeof(info));
  return info;
}

void ManagementInfo::set(const HbaMgmtInfo& info) {
  kept_.update([&](std::string& kept) { kept = text_of(info); });
}

}  // namespace simulator
