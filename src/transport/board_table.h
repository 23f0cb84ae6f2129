// What the library knows about the adapters: process-wide tables, written by initialisation and shutdown, read by every call.
// Entry k belongs to the caller's board index k.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "transport/callbacks.h"
#include "vaskdfc/transport.h"

namespace vaskdfc {

// Values of dfc_state that the library sets itself; later entries are whatever the driver reports.
inline constexpr std::uint32_t kStateUsable = 1;
inline constexpr std::uint32_t kStateFailed = 2;

// PCI device identifiers of the supported adapter family.
inline constexpr std::array<std::uint16_t, 3> kSupportedDevices{0x5601, 0x5602, 0x5603};

// The vendor half of the PCI identity is not examined.
constexpr bool is_supported(std::uint32_t pci_id) { return std::ranges::count(kSupportedDevices, pci_id >> 16) != 0; }

extern std::array<std::uint32_t, DFC_MAX_BOARDS> dfc_brdno;              // driver board number
extern std::array<std::uint32_t, DFC_MAX_BOARDS> dfc_state;              // state at discovery, later as SetBrdEnv was told
extern std::array<HbaPortStatistics, DFC_MAX_BOARDS> dfc_rststatistics;  // baseline of the port statistics
extern std::array<std::uint32_t, DFC_MAX_BOARDS> dfc_refresh_timer;      // refresh counter of the discovered ports
extern std::uint32_t dftrel_brdCnt;                                      // adapters accepted at the last initialisation

}  // namespace vaskdfc
