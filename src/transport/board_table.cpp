#include "transport/board_table.h"

namespace vaskdfc {

std::array<std::uint32_t, DFC_MAX_BOARDS> dfc_brdno;
std::array<std::uint32_t, DFC_MAX_BOARDS> dfc_state;
std::array<HbaPortStatistics, DFC_MAX_BOARDS> dfc_rststatistics;
std::array<std::uint32_t, DFC_MAX_BOARDS> dfc_refresh_timer;
std::uint32_t dftrel_brdCnt;

}  // namespace vaskdfc
