// SCSI commands to units of the simulated platform.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <vector>

#include "sim_process.h"

using Bytes = std::vector<std::uint8_t>;

inline HbaWwn wwn(std::initializer_list<std::uint8_t> bytes) {
  HbaWwn result{};
  std::ranges::copy(bytes, result.wwn);
  return result;
}

// A command as an application describes it.
struct ScsiCommand {
  std::uint32_t board = 1;
  HbaWwn target = wwn({0x50, 0x5a, 0x41, 0, 0x0c, 0, 0x10, 0x01});
  Bytes lun;  // the rest is zero, as in the CDB
  Bytes cdb;
  std::uint32_t room = 0;  // of the caller, and what the command announces
  Bytes data;              // to the unit; its length is what the command announces
};

inline FcpCmndBlock block_of(const ScsiCommand& command) {
  FcpCmndBlock block{};
  std::ranges::copy(command.lun, block.FcpLun);
  std::ranges::copy(command.cdb, block.CDB);
  block.DataDirection = command.data.empty() ? FCP_READ_DATA : FCP_WRITE_DATA;
  const auto length = command.data.empty() ? command.room : static_cast<std::uint32_t>(command.data.size());
  for (unsigned i = 0; i < 4; ++i) block.DataLength[i] = static_cast<std::uint8_t>(length >> 8 * (3 - i));
  return block;
}

struct ScsiResult {
  std::uint32_t status = 0;
  Bytes data;
  Bytes sense;
};

inline ScsiResult send(Session& session, const ScsiCommand& command) {
  vaskdfc::ScsiPassThruRequest request{.target = command.target, .command = block_of(command), .sense = {}, .sense_bytes = 77};
  const auto data = std::make_unique<vaskdfc::TransferData>();
  std::ranges::copy(command.data, data->bytes);
  const auto length = command.data.empty() ? command.room : static_cast<std::uint32_t>(command.data.size());
  const dfc_mgmt_hdr header =
      session.call<Callback::kHbaSendScsi>({.brdno = command.board, .arg2 = length, .arg3 = 99}, request, *data);
  if (header.status != 0) return {.status = header.status, .data = {}, .sense = {}};
  return {.status = 0,
          .data = Bytes(data->bytes, data->bytes + header.arg3),
          .sense = Bytes(request.sense, request.sense + request.sense_bytes)};
}
