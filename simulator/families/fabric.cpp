// What travels through the fabric by itself: CT requests, link services and management traffic.
#include <algorithm>
#include <cstring>

#include "driver/driver.h"
#include "fabric/link_services.h"
#include "fabric/members.h"
#include "fabric/name_server.h"
#include "families/families.h"
#include "families/wwn.h"

namespace simulator {
namespace {

using fabric::Bytes;
using fabric::Member;
using vaskdfc::ElsFrame;
using vaskdfc::ServiceFrame;

// Success, or why nothing can be sent.
DriverStatus reachable(const Adapter& adapter) {
  const fc_hba::PortState state = adapter.port_state(adapter.state());
  if (state == fc_hba::PortState::kError) return VMKMGMT_SIM_DRIVER_NOT_READY;
  return state == fc_hba::PortState::kOnline ? VMKMGMT_SIM_DRIVER_OK : VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;
}

// The third argument word is the room for a reply and becomes its length, also where it does not fit.
template <typename Frame>
DriverStatus deliver(dfc_mgmt_hdr& header, const Bytes& reply, Frame& frame) {
  const std::size_t room = std::min<std::size_t>(header.arg3, sizeof(frame.bytes));
  header.arg3 = static_cast<std::uint32_t>(reply.size());
  if (reply.size() > room) return VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE;
  std::ranges::copy(reply, frame.bytes);
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus send_ct(BoardCall& call, const ServiceFrame& request, ServiceFrame& reply) {
  const std::size_t length = call.header.arg2;
  if (length < fabric::kPreambleBytes || length > sizeof(request.bytes)) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  if (const DriverStatus status = reachable(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const auto members = fabric::members(call.driver, *call.adapter.card().fabric);
  return deliver(call.header, fabric::answer_ct(call.header.arg4, std::span(request.bytes).first(length), members), reply);
}

// Whom a descriptor names: by port WWN, or by FC id where the name is all zero. The layout is this driver's choice.
struct Destination {
  HbaWwn wwpn;
  std::uint32_t fc_id;
  std::uint32_t zero_12;
};
static_assert(sizeof(Destination) == sizeof(dfc_els_descriptor));

bool is_destination(const Destination& destination, const Member& member) {
  if (destination.wwpn == HbaWwn{}) return member.port->fc_id == destination.fc_id;
  return member.port->wwpn == destination.wwpn;
}

DriverStatus send_els(BoardCall& call, const dfc_els_descriptor& descriptor, const ElsFrame& request, ElsFrame& reply) {
  constexpr std::size_t kShortest = 4;
  const std::size_t length = call.header.arg2;
  if (length < kShortest || length > sizeof(request.bytes)) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  if (const DriverStatus status = reachable(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;

  Destination destination;
  std::memcpy(&destination, &descriptor, sizeof(destination));
  const auto members = fabric::members(call.driver, *call.adapter.card().fabric);
  const auto found = std::ranges::find_if(members, [&](const Member& member) { return is_destination(destination, member); });
  if (found == members.end()) return VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;
  return deliver(call.header, fabric::answer_els(*found, std::span(request.bytes).first(length), call.driver.clock().now()), reply);
}

// The only management command is 1, whose reply is what was sent.
DriverStatus send_management_command(BoardCall& call, const dfc_mgmt_command& command, const ServiceFrame& request,
                                     ServiceFrame& reply) {
  constexpr std::uint32_t kEcho = 1;
  std::uint32_t code = 0;
  std::memcpy(&code, command.bytes, sizeof(code));
  const std::size_t length = call.header.arg2;
  if (code != kEcho || length > sizeof(request.bytes)) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  if (const DriverStatus status = reachable(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  return deliver(call.header, Bytes(request.bytes, request.bytes + length), reply);
}

DriverStatus send_management_response(BoardCall& call, const ServiceFrame& response) {
  if (call.header.arg2 > sizeof(response.bytes)) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  return reachable(call.adapter);
}

}  // namespace

void register_fabric(Door& door) {
  door.on<Callback::kSendCt>(send_ct);
  door.on<Callback::kSendEls>(send_els);
  door.on<Callback::kHbaSendMgmtCmd>(send_management_command);
  door.on<Callback::kHbaSendMgmtRsp>(send_management_response);
}

}  // namespace simulator
