// Loading, starting and stopping, from nothing to nothing.
#include "figures.h"

namespace bench {

void measure_start(const std::string& path, const std::string& bare_path, Figures& figures) {
  constexpr int kRoundsOfLoading = 101;
  const auto ours = [&] {
    const SharedObject library(path);
    dfc_brd_info boards[DFC_MAX_BOARDS];
    if (library.function<decltype(::DFC_InitDiagEnv)>("DFC_InitDiagEnv")(boards, DFC_MAX_BOARDS) != DFC_MAX_BOARDS)
      throw std::runtime_error(path + " does not find all adapters");
    library.function<decltype(::DFC_FreeDiagEnv)>("DFC_FreeDiagEnv")();
  };
  const auto bare = [&] {
    const SharedObject object(bare_path);
    dfc_brd_info boards[DFC_MAX_BOARDS];
    if (object.function<std::uint32_t(dfc_brd_info*, std::uint32_t)>("bare_start")(boards, DFC_MAX_BOARDS) != DFC_MAX_BOARDS)
      throw std::runtime_error(bare_path + " does not find all adapters");
    object.function<void()>("bare_stop")();
  };
  figures.push_back(ratio_of("load, start, stop with 32 boards", "the same by a bare library",
                             in_turns_of(
                                 1, ours, bare, [] {}, kRoundsOfLoading),
                             1.3));
}

}  // namespace bench
