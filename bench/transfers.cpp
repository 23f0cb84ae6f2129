// The transports with large buffers, full and nearly empty.
#include "exchanges.h"
#include "figures.h"

namespace bench {
namespace {

constexpr std::uint8_t kInquiry = 0x12;
constexpr std::uint8_t kRead = 0x28;
constexpr std::uint8_t kWrite = 0x2A;

// What a request may cost more than the bare call when most of the buffers is not used.
constexpr double kAllowance = 100;

Figure short_request(std::string what, Times times) {
  times.bare += kAllowance;
  return ratio_of(std::move(what), "bare call + 100 ns", times, 1.5);
}

}  // namespace

void measure_transfers(const Library& library, Figures& figures) {
  Exchanges ours(library);
  BareExchanges bare;
  constexpr const char* kAgainst = "bare call, two copies";
  figures.push_back(ratio_of("SCSI READ of 256 KiB", kAgainst,
                             in_turns([&] { ours.read(kMostScsi); }, [&] { bare.scsi(kRead, 0, kMostScsi); }), 1.1));
  figures.push_back(ratio_of("SCSI WRITE of 256 KiB", kAgainst,
                             in_turns([&] { ours.write(kMostScsi); }, [&] { bare.scsi(kWrite, 0, kMostScsi); }), 1.1));
  figures.push_back(
      ratio_of("CT exchange of 240 KiB each way", kAgainst, in_turns([&] { ours.ct(kMostCt); }, [&] { bare.ct(kMostCt); }), 1.1));
  figures.push_back(short_request("INQUIRY of 36 bytes", in_turns([&] { ours.inquiry(36); }, [&] { bare.scsi(kInquiry, 0, 36); })));
  figures.push_back(short_request("CT exchange of 16 bytes", in_turns([&] { ours.ct(16); }, [&] { bare.ct(16); })));
}

}  // namespace bench
