// Requests with data of any length, through the library and bare.
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "library.h"

namespace bench {

inline constexpr HbaWwn kTarget{{0x50, 0x5A, 0x41, 0x00, 0x0C, 0x00, 0x10, 0x01}};
inline constexpr std::uint32_t kMostScsi = sizeof(vaskdfc::TransferData);
inline constexpr std::uint32_t kMostCt = 240 * 1024;
static_assert(kMostCt <= sizeof(vaskdfc::ServiceFrame));
inline constexpr int32_t kNameServer = 0xFFFFFC;

// The caller's memory: one object for each thread.
class Exchanges {
 public:
  explicit Exchanges(const Library& library, std::uint32_t board = 0) : library_(library), board_(board) {}

  void inquiry(std::uint32_t bytes) {
    std::uint32_t sense_bytes = sizeof(sense_);
    library_.SendScsiInquiry(board_, &kTarget, 0, 0, 0, data_.data(), &bytes, sense_, &sense_bytes);
  }

  void read(std::uint32_t bytes) {
    std::uint32_t sense_bytes = sizeof(sense_);
    library_.SendScsiRead(board_, &kTarget, 0, 0, data_.data(), &bytes, sense_, &sense_bytes);
  }

  void write(std::uint32_t bytes) {
    std::uint32_t sense_bytes = sizeof(sense_);
    library_.SendScsiWrite(board_, &kTarget, 0, 0, data_.data(), &bytes, sense_, &sense_bytes);
  }

  void ct(std::uint32_t bytes) { library_.GetCTInfo(board_, kNameServer, data_.data(), bytes, reply_.data(), bytes); }

  void loopback(std::uint32_t bytes) {
    const dfc_loopback buffers{.bufSize = bytes, .txBuf = data_.data(), .rxBuf = reply_.data()};
    library_.DFC_RunLoopbackTest(board_, &buffers);
  }

 private:
  const Library& library_;
  std::uint32_t board_;
  std::vector<std::uint8_t> data_ = std::vector<std::uint8_t>(kMostScsi);
  std::vector<std::uint8_t> reply_ = std::vector<std::uint8_t>(kMostScsi);
  std::uint8_t sense_[DFC_SCSI_SENSE_BYTES] = {};
};

// The same by somebody who keeps the memory that he needs, and makes the copies that the library makes.
class BareExchanges {
 public:
  void scsi(std::uint8_t opcode, std::uint8_t page_flag, std::uint32_t bytes) {
    std::memcpy(stage_.data(), data_.data(), bytes);
    dfc_mgmt_hdr header{.arg2 = bytes};
    vaskdfc::ScsiPassThruRequest request{.target = kTarget};
    request.command.CDB[0] = opcode;
    request.command.CDB[1] = page_flag;
    bare_call(vaskdfc::Callback::kHbaSendScsi, header, &request, stage_.data());
    std::memcpy(data_.data(), stage_.data(), bytes);
  }

  void ct(std::uint32_t bytes) {
    std::memcpy(stage_.data(), data_.data(), bytes);
    dfc_mgmt_hdr header{.arg2 = bytes, .arg3 = bytes};
    bare_call(vaskdfc::Callback::kSendCt, header, stage_.data(), reply_stage_.data());
    std::memcpy(reply_.data(), reply_stage_.data(), bytes);
  }

  // What the caller must not find again where an answer is shorter than the one before.
  void clear(std::uint32_t bytes) { std::memset(data_.data(), 0, bytes); }

  const std::uint8_t* data() const { return data_.data(); }

 private:
  std::vector<std::uint8_t> data_ = std::vector<std::uint8_t>(kMostScsi);
  std::vector<std::uint8_t> reply_ = std::vector<std::uint8_t>(kMostScsi);
  std::vector<std::uint8_t> stage_ = std::vector<std::uint8_t>(kMostScsi);
  std::vector<std::uint8_t> reply_stage_ = std::vector<std::uint8_t>(kMostScsi);
};

}  // namespace bench
