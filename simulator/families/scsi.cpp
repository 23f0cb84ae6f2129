// SCSI commands to units behind remote ports, over either transport.
#include <algorithm>
#include <cstddef>

#include "driver/driver.h"
#include "families/families.h"
#include "families/wwn.h"
#include "scsi/target.h"

namespace simulator {
namespace {

using scenario::Port;
using vaskdfc::FcpPassThruRequest;
using vaskdfc::ScsiPassThruRequest;
using vaskdfc::TransferData;

// A port that serves FCP among those that the adapter has discovered, and its position there; null if there is none.
const Port* find_target(std::span<const Port> ports, const HbaWwn& wwpn) {
  const auto found =
      std::ranges::find_if(ports, [&](const Port& port) { return port.wwpn == wwpn && fc_hba::serves_fcp(port.fc4_types); });
  return found == ports.end() ? nullptr : &*found;
}

struct Exchange {
  scsi::Answer answer;
  std::uint32_t announced = 0;  // bytes, by the command block
  std::size_t moved = 0;        // bytes, had they all been announced
};

scsi::Command command_of(const FcpCmndBlock& block, std::span<const std::uint8_t> data) {
  scsi::Command command{.lun = {}, .cdb = {}, .data = data};
  std::ranges::copy(block.FcpLun, command.lun.begin());
  std::ranges::copy(block.CDB, command.cdb.begin());
  return command;
}

void count(const scsi::Answer& answer, IoCounters& io) {
  ++io.commands;
  if (answer.sense) ++io.commands_with_sense;
  io.bytes_read += answer.data.size();
  io.bytes_written += answer.taken;
}

// The third argument word becomes the number of bytes that came from the target, so it is 0 after a write.
DriverStatus perform(BoardCall& call, const HbaWwn& wwpn, const FcpCmndBlock& block, TransferData& data, Exchange& exchange) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  if (block.TaskManagementFlags != 0) return VMKMGMT_SIM_DRIVER_NOT_SUPPORTED;
  const auto ports = call.adapter.discovered_ports(call.adapter.state());
  const Port* const port = find_target(ports, wwpn);
  if (port == nullptr) return VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;

  exchange.announced = big_endian<std::uint32_t>(block.DataLength, 0);
  const std::size_t room = std::min<std::size_t>(exchange.announced, sizeof(data.bytes));
  const std::size_t sent = block.DataDirection == FCP_WRITE_DATA ? std::min<std::size_t>(room, call.header.arg2) : 0;
  const scsi::Target target(*port, static_cast<std::uint32_t>(port - ports.data()) + 1, call.driver.disks(), sizeof(data.bytes));
  exchange.answer = target.execute(command_of(block, std::span(data.bytes).first(sent)));
  exchange.moved = exchange.answer.data.size() + exchange.answer.taken;

  scsi::Bytes& produced = exchange.answer.data;
  produced.resize(std::min(produced.size(), room));
  std::ranges::copy(produced, data.bytes);
  call.header.arg3 = static_cast<std::uint32_t>(produced.size());
  count(exchange.answer, call.adapter.io());
  return VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus send_scsi(BoardCall& call, ScsiPassThruRequest& request, TransferData& data) {
  Exchange exchange;
  const DriverStatus status = perform(call, request.target, request.command, data, exchange);
  if (status != VMKMGMT_SIM_DRIVER_OK) return status;
  request.sense_bytes = 0;
  if (!exchange.answer.sense) return status;

  const scsi::FixedSense sense = scsi::fixed_format(*exchange.answer.sense);
  std::ranges::copy(sense, request.sense);
  request.sense_bytes = sense.size();
  return status;
}

// The response information unit, with the sense behind it.
constexpr std::size_t kResponseBytes = 24;

scsi::Bytes response_of(const Exchange& exchange) {
  constexpr std::uint8_t kHasSense = 0x02;
  constexpr std::uint8_t kTooMuch = 0x04;
  constexpr std::uint8_t kTooLittle = 0x08;
  constexpr std::uint8_t kCheckCondition = 0x02;
  scsi::Bytes response(kResponseBytes);
  if (exchange.moved != exchange.announced) {
    const bool too_much = exchange.moved > exchange.announced;
    response[10] = too_much ? kTooMuch : kTooLittle;
    const std::size_t residue = too_much ? exchange.moved - exchange.announced : exchange.announced - exchange.moved;
    put_big_endian(response, 12, static_cast<std::uint32_t>(residue));
  }
  if (!exchange.answer.sense) return response;

  const scsi::FixedSense sense = scsi::fixed_format(*exchange.answer.sense);
  response[10] |= kHasSense;
  response[11] = kCheckCondition;
  put_big_endian(response, 16, static_cast<std::uint32_t>(sense.size()));
  response.insert(response.end(), sense.begin(), sense.end());
  return response;
}

// The record's own length stands in the middle of the response and hides the length of the sense.
DriverStatus send_fcp(BoardCall& call, FcpPassThruRequest& request, TransferData& data) {
  const std::size_t room = request.response_bytes;
  if (room < kResponseBytes) return VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE;
  Exchange exchange;
  const DriverStatus status = perform(call, request.target, request.command, data, exchange);
  if (status != VMKMGMT_SIM_DRIVER_OK) return status;

  scsi::Bytes response = response_of(exchange);
  response.resize(std::min(response.size(), room));
  const std::span record(reinterpret_cast<std::uint8_t*>(&request), sizeof(request));
  std::ranges::copy(response, record.subspan(offsetof(FcpPassThruRequest, response)).begin());
  request.response_bytes = static_cast<std::uint32_t>(response.size());
  return status;
}

}  // namespace

void register_scsi(Door& door) {
  door.on<Callback::kHbaSendScsi>(send_scsi);
  door.on<Callback::kHbaSendFcp>(send_fcp);
}

}  // namespace simulator
