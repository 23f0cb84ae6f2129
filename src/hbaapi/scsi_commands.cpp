// SCSI commands that the library builds.
#include <algorithm>
#include <bit>
#include <cstring>

#include "hbaapi/scsi_transfer.h"
#include "vaskdfc/scsi.h"

namespace {

// What distinguishes one command from another: its code, its direction, and where in the CDB address and length go.
struct Command {
  uint8_t opcode;
  uint8_t direction = FCP_READ_DATA;
  uint8_t address_at = 0;  // of a block address of 4 bytes; 0: none
  uint8_t length_at = 0;   // of the length; 0: none
  uint8_t length_bytes = 0;
  uint32_t length_unit = 1;  // bytes
};

constexpr Command kInquiry{.opcode = 0x12, .length_at = 4, .length_bytes = 1};
constexpr Command kReadCapacity{.opcode = 0x25};
constexpr Command kReportLuns{.opcode = 0xA0, .length_at = 6, .length_bytes = 4};
constexpr Command kRead{.opcode = 0x28, .address_at = 2, .length_at = 7, .length_bytes = 2, .length_unit = 512};
constexpr Command kWrite{
    .opcode = 0x2A, .direction = FCP_WRITE_DATA, .address_at = 2, .length_at = 7, .length_bytes = 2, .length_unit = 512};

// The low bytes of a number, most significant first.
void put_big_endian(uint8_t* where, std::size_t bytes, uint32_t number) {
  for (std::size_t i = bytes; i-- > 0; number >>= 8) where[i] = static_cast<uint8_t>(number);
}

FcpCmndBlock block_of(const Command& command, uint64_t lun, uint32_t bytes, uint32_t block_address = 0) {
  FcpCmndBlock block{.DataDirection = command.direction};
  std::memcpy(block.FcpLun, &lun, sizeof(lun));
  block.CDB[0] = command.opcode;
  if (command.address_at != 0) put_big_endian(block.CDB + command.address_at, sizeof(block_address), block_address);
  if (command.length_at != 0) put_big_endian(block.CDB + command.length_at, command.length_bytes, bytes / command.length_unit);
  put_big_endian(block.DataLength, sizeof(block.DataLength), bytes);
  return block;
}

FcpCmndBlock inquiry_block(uint64_t lun, uint8_t evpd, uint8_t page, uint32_t bytes) {
  FcpCmndBlock block = block_of(kInquiry, lun, bytes);
  block.CDB[1] = evpd;
  block.CDB[2] = evpd != 0 ? page : 0;
  return block;
}

// Where a command goes, and what comes back.
struct Exchange {
  uint32_t board;
  const HbaWwn* target;
  void* data;
  uint32_t* data_bytes;
  void* sense;
  uint32_t* sense_bytes;
};

uint32_t send(const Exchange& exchange, const FcpCmndBlock& block) {
  const auto& [board, target, data, data_bytes, sense, sense_bytes] = exchange;
  return SendScsiCmd(board, target, &block, sizeof(block), data, data_bytes, sense, sense_bytes);
}

uint32_t send_from(const HbaWwn* local, const Exchange& exchange, const FcpCmndBlock& block) {
  const auto& [board, target, data, data_bytes, sense, sense_bytes] = exchange;
  return SendScsiCmdByWWN(board, local, target, &block, sizeof(block), data, data_bytes, sense, sense_bytes);
}

constexpr uint64_t kLun0 = 0;

}  // namespace

FcpCmndBlock vaskdfc::inquiry_for_page(uint64_t lun, uint8_t code, uint32_t bytes) {
  return inquiry_block(lun, /*evpd=*/1, code, bytes);
}

uint32_t SendScsiInquiry(uint32_t board, const HbaWwn* target, uint64_t lun, uint8_t evpd, uint8_t page, void* response,
                         uint32_t* response_bytes, void* sense, uint32_t* sense_bytes) {
  return send({board, target, response, response_bytes, sense, sense_bytes}, inquiry_block(lun, evpd, page, *response_bytes));
}

uint32_t DFC_SendScsiInquiryByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, uint64_t lun, uint8_t evpd,
                                  uint8_t page, void* response, uint32_t* response_bytes, void* sense, uint32_t* sense_bytes) {
  return send_from(local, {board, target, response, response_bytes, sense, sense_bytes},
                   inquiry_block(lun, evpd, page, *response_bytes));
}

uint32_t SendReadCapacity(uint32_t board, const HbaWwn* target, uint64_t lun, void* response, uint32_t* response_bytes, void* sense,
                          uint32_t* sense_bytes) {
  return send({board, target, response, response_bytes, sense, sense_bytes}, block_of(kReadCapacity, lun, *response_bytes));
}

uint32_t DFC_SendReadCapacityByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, uint32_t lun, void* response,
                                   uint32_t* response_bytes, void* sense, uint32_t* sense_bytes) {
  // Deliberate: the LUN is the eight bytes of arguments that begin with the LUN, and the response's address comes next.
  const uint64_t address = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(response));
  return send_from(local, {board, target, response, response_bytes, sense, sense_bytes},
                   block_of(kReadCapacity, address << 32 | lun, *response_bytes));
}

uint32_t SendReportLUNs(uint32_t board, const HbaWwn* target, void* response, uint32_t* response_bytes, void* sense,
                        uint32_t* sense_bytes) {
  return send({board, target, response, response_bytes, sense, sense_bytes}, block_of(kReportLuns, kLun0, *response_bytes));
}

uint32_t DFC_SendReportLUNsByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, void* response,
                                 uint32_t* response_bytes, void* sense, uint32_t* sense_bytes) {
  return send_from(local, {board, target, response, response_bytes, sense, sense_bytes},
                   block_of(kReportLuns, kLun0, *response_bytes));
}

uint32_t SendScsiRead(uint32_t board, const HbaWwn* target, uint64_t lun, uint32_t block_address, void* data, uint32_t* data_bytes,
                      void* sense, uint32_t* sense_bytes) {
  return send({board, target, data, data_bytes, sense, sense_bytes}, block_of(kRead, lun, *data_bytes, block_address));
}

uint32_t SendScsiWrite(uint32_t board, const HbaWwn* target, uint64_t lun, uint32_t block_address, void* data, uint32_t* data_bytes,
                       void* sense, uint32_t* sense_bytes) {
  return send({board, target, data, data_bytes, sense, sense_bytes}, block_of(kWrite, lun, *data_bytes, block_address));
}
