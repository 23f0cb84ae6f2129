// Two threads on two boards against one.
#include <barrier>
#include <thread>

#include "exchanges.h"
#include "figures.h"

namespace bench {
namespace {

constexpr int kCalls = 20000;

// One thread's board and memory; run() makes so many rounds of calls, through the library and bare.
class Caller {
 public:
  Caller(const Library& library, std::uint32_t board) : library_(library), board_(board), exchanges_(library, board) {}

  void run() {
    for (int i = 0; i < kCalls; ++i) {
      std::uint32_t ready = 0;
      dfc_io_info counters;
      library_.DFC_NPIVReadyTest(board_, &ready);
      library_.GetIOinfo(board_, &counters);
      exchanges_.inquiry(36);
      exchanges_.ct(16);
    }
  }

 private:
  const Library& library_;
  std::uint32_t board_;
  Exchanges exchanges_;
};

class BareCaller {
 public:
  void run() {
    constexpr std::uint8_t kInquiry = 0x12;
    for (int i = 0; i < kCalls; ++i) {
      dfc_mgmt_hdr header{};
      bare_call(vaskdfc::Callback::kNpivReady, header);
      dfc_io_info counters{};
      bare_call(vaskdfc::Callback::kIoInfo, header, &counters);
      exchanges_.scsi(kInquiry, 0, 36);
      exchanges_.ct(16);
    }
  }

 private:
  BareExchanges exchanges_;
};

// How many times the calls of one thread two threads make in the same time.
template <typename MakeCaller>
double speedup(MakeCaller caller_for) {
  constexpr int kTurns = 41;
  std::vector<double> alone;
  std::vector<double> together;
  std::barrier meeting(2);
  std::thread second([&] {
    auto caller = caller_for(1);
    for (int turn = 0; turn < kTurns; ++turn) {
      meeting.arrive_and_wait();
      caller.run();
      meeting.arrive_and_wait();
    }
  });
  auto first = caller_for(0);
  for (int turn = 0; turn < kTurns; ++turn) {
    alone.push_back(seconds_of([&] { first.run(); }));
    meeting.arrive_and_wait();
    together.push_back(seconds_of([&] {
      first.run();
      meeting.arrive_and_wait();
    }));
  }
  second.join();
  return 2 * median_of(alone) / median_of(together);
}

}  // namespace

void measure_threads(const Library& library, Figures& figures) {
  constexpr const char* kAgainst = "calls of one thread";
  figures.push_back({.what = "calls of two threads on two boards",
                     .against = kAgainst,
                     .value = speedup([&](std::uint32_t board) { return Caller(library, board); }),
                     .limit = 1.9,
                     .goal = Goal::kAtLeast});
  // What the machine makes possible: its processors may share a core.
  figures.push_back({.what = "bare calls of two threads",
                     .against = kAgainst,
                     .value = speedup([](std::uint32_t) { return BareCaller(); }),
                     .goal = Goal::kNone});
}

}  // namespace bench
