// SCSI commands for operations that send many of them.
#pragma once

#include <cstdint>

#include "transport/records/scsi.h"

namespace vaskdfc {

// INQUIRY for a vital product data page.
FcpCmndBlock inquiry_for_page(std::uint64_t lun, std::uint8_t code, std::uint32_t bytes);

// SendScsiCmdByWWN with the memory through which the data travels.
std::uint32_t send_scsi(std::uint32_t board, const HbaWwn& target, const FcpCmndBlock& command, void* data,
                        std::uint32_t* data_bytes, void* sense, std::uint32_t* sense_bytes, TransferData& stage);

}  // namespace vaskdfc
