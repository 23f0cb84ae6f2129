// A daemon's life in short: very many calls of all operations with all log lines, some of them failing, after which the process
// must have neither grown nor kept memory or a descriptor, and every line of the log must be whole.
//
//   soak_test [CALLS]
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "exhaustive/log_reading.h"
#include "exhaustive/operation.h"
#include "exhaustive/platform.h"
#include "support/c_library.h"
#include "transport/log.h"
#include "vaskdfc/transport.h"

namespace vaskdfc::test {
namespace {

std::minstd_rand random_number;
std::uint64_t callbacks = 0;
std::uint64_t silent_failures = 0;  // of board discovery, which writes no line about them

std::uint32_t below(std::size_t limit) { return static_cast<std::uint32_t>(random_number() % limit); }

// Every sixteenth callback fails.
int answer_mostly(Callback callback, const Parameters& parameters) {
  ++callbacks;
  const std::uint32_t chance = below(32);
  if (chance >= 2) {
    AgreeableDriver::answer(callback, parameters);
    return 0;
  }
  if (callback == Callback::kInitBrds) ++silent_failures;
  constexpr std::uint32_t kFailure = 0x0BAD0001;
  if (chance == 0) return kFailure;
  static_cast<dfc_mgmt_hdr*>(parameters[0])->status = kFailure + below(256);
  return 0;
}

struct Footprint {
  long resident_kib;
  long descriptors;
  std::ptrdiff_t allocations;
};

Footprint footprint() {
  std::ifstream status("/proc/self/status");
  std::string word;
  long kib = 0;
  while (status >> word && word != "VmRSS:") continue;
  status >> kib;
  status.close();
  const auto open = std::filesystem::directory_iterator("/proc/self/fd");
  return {.resident_kib = kib, .descriptors = std::distance(begin(open), end(open)), .allocations = c_library.live_allocations};
}

// The library as it is installed: a configuration file that asks for all classes of lines, and a log.
void prepare_files(const std::filesystem::path& scratch) {
  c_library.scratch = scratch;
  std::filesystem::create_directory(scratch / "log");
  std::ofstream(scratch / "libvaskdfc.conf") << "soak xf\n";
}

bool call_any() {
  const std::vector<Operation>& all = operations();
  const Operation& operation = all[below(all.size())];
  start_library();
  LogLevel = kLogHandle | kLogOk | kLogError | kLogCall;
  Caller caller(board_of(operation.generation));
  operation.call(caller);
  c_library.opened_files.clear();
  c_library.sleeps.clear();
  return caller.guards_are_whole();
}

bool complain(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  return false;
}

bool log_is_whole() {
  const LogContents contents = take_log(fLogger);
  if (!contents.broken.empty()) return complain(("a line of the log is broken: " + contents.broken).c_str());
  if (contents.calls != callbacks) return complain("the log does not have a call line for every callback");
  if (contents.results + silent_failures != callbacks) return complain("the log does not have a result line for every callback");
  callbacks = silent_failures = 0;
  return true;
}

bool soak(std::uint64_t calls) {
  constexpr std::uint64_t kBatch = 10000;
  Footprint first{};
  for (std::uint64_t done = 0; done < calls; done += kBatch) {
    for (std::uint64_t i = 0; i < kBatch; ++i) {
      if (!call_any()) return complain("something was written beside the caller's memory");
    }
    if (!log_is_whole()) return false;
    if (done == 0) first = footprint();
  }
  const Footprint last = footprint();
  std::printf("%llu calls: resident %ld KiB, then %ld KiB; descriptors %ld, then %ld; live allocations %td, then %td\n",
              static_cast<unsigned long long>(calls), first.resident_kib, last.resident_kib, first.descriptors, last.descriptors,
              first.allocations, last.allocations);
  // The C library's heap settles within this much.
  constexpr long kSettlingKib = 1024;
  if (last.resident_kib > first.resident_kib + kSettlingKib) return complain("the process has grown");
  if (last.descriptors != first.descriptors) return complain("a descriptor was kept");
  return last.allocations == first.allocations || complain("memory was kept");
}

int run(std::uint64_t calls) {
  std::string folder = std::filesystem::temp_directory_path() / "vaskdfc-soak-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) std::abort();
  prepare_files(folder);
  answer = answer_mostly;
  if (DFC_InitDiagEnv(nullptr, 0) == 0 || fLogger == nullptr) std::abort();
  take_log(fLogger);
  callbacks = silent_failures = 0;
  const bool passed = soak(calls);
  std::filesystem::remove_all(folder);
  return passed ? 0 : 1;
}

}  // namespace
}  // namespace vaskdfc::test

int main(int count, char** arguments) { return vaskdfc::test::run(count > 1 ? std::strtoull(arguments[1], nullptr, 10) : 50000); }
