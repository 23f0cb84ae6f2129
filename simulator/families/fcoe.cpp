// FCFs that a converged adapter has discovered.
#include <algorithm>

#include "driver/driver.h"
#include "families/families.h"
#include "families/interface_generation.h"

namespace simulator {
namespace {

using vaskdfc::FcfReply;

// As a question the first FCF, as an answer the end of the list.
constexpr std::uint32_t kNoIndex = 0xFFFF;

enum class ListStatus : std::uint32_t { kCurrent = 0, kLinkNotUp = 1 };

void describe(const scenario::Fcf& fcf, FcfReply& reply) {
  reply.word_4 = fcf.word_4;
  reply.word_8 = fcf.word_8;
  std::ranges::copy(fcf.mac, reply.mac_address);
  reply.byte_18 = fcf.available ? 1 : 0;
  reply.name_20 = fcf.names[0];
  std::ranges::copy(fcf.fc_map, reply.fc_map);
  reply.is_valid = fcf.valid ? 1 : 0;
  for (const std::uint32_t vlan : fcf.vlans) {
    std::uint8_t& byte = reply.vlan_bitmap[vlan / 8];
    byte = static_cast<std::uint8_t>(byte | 1 << vlan % 8);
  }
  reply.name_548 = fcf.names[1];
}

ListStatus list_status(const Adapter& adapter) {
  const bool online = adapter.port_state(adapter.state()) == fc_hba::PortState::kOnline;
  return online ? ListStatus::kCurrent : ListStatus::kLinkNotUp;
}

DriverStatus fcf_list(BoardCall& call, FcfReply& reply) {
  const scenario::Adapter& card = call.adapter.card();
  if (card.protocol != scenario::Protocol::kFcoe) return VMKMGMT_SIM_DRIVER_NOT_SUPPORTED;
  if (const DriverStatus status = newer_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;

  const std::size_t index = call.header.arg1 == kNoIndex ? 0 : call.header.arg1;
  reply = {};
  call.header.arg4 = kNoIndex;
  call.header.arg5 = static_cast<std::uint32_t>(list_status(call.adapter));
  if (index >= card.fcfs.size()) return VMKMGMT_SIM_DRIVER_OK;

  describe(card.fcfs[index], reply);
  if (index + 1 < card.fcfs.size()) call.header.arg4 = static_cast<std::uint32_t>(index + 1);
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_fcoe(Door& door) { door.on<Callback::kHbaGetFcfList>(fcf_list); }

}  // namespace simulator
