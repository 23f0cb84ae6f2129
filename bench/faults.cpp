// Page faults in a steady stream of one operation: memory that is given back to the system comes back as pages of zeros.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "exchanges.h"
#include "figures.h"

namespace bench {
namespace {

constexpr std::uint32_t kUnits = std::size(vaskdfc::TargetMappingReply{}.entries);

long page_faults() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt + usage.ru_majflt;
}

template <typename Operation>
double faults_of_stream(Operation operation) {
  constexpr int kCalls = 1000;
  for (int i = 0; i < 10; ++i) operation();  // until the stream is steady
  const long before = page_faults();
  for (int i = 0; i < kCalls; ++i) operation();
  return static_cast<double>(page_faults() - before) / kCalls;
}

// A figure from a process of its own, whose heap has seen nothing else.
template <typename Measure>
Figure faults_of(const char* what, const std::string& path, Measure measure) {
  int ends[2];
  double faults = -1;
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child == 0) {
    const Library library(path);
    library.DFC_InitDiagEnv(nullptr, 0);
    faults = measure(library);
    _exit(write(ends[1], &faults, sizeof(faults)) == sizeof(faults) ? 0 : 1);
  }
  close(ends[1]);
  const bool has_told = read(ends[0], &faults, sizeof(faults)) == sizeof(faults);
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (!has_told) throw std::runtime_error(std::string("no faults can be counted: ") + what);
  return {.what = what, .against = "none", .value = faults, .limit = 1, .unit = "faults a call"};
}

// Target mappings of either form.
template <typename Mapping, typename Entry>
double faults_of_mapping(auto operation) {
  std::vector<std::uint8_t> memory(sizeof(Mapping) + kUnits * sizeof(Entry));
  auto& mapping = *reinterpret_cast<Mapping*>(memory.data());
  return faults_of_stream([&] {
    mapping.NumberOfEntries = kUnits;
    operation(&mapping);
  });
}

}  // namespace

void measure_faults(const std::string& path, Figures& figures) {
  figures.push_back(faults_of("SCSI READ of 256 KiB", path, [](const Library& library) {
    Exchanges ours(library);
    return faults_of_stream([&] { ours.read(kMostScsi); });
  }));
  figures.push_back(faults_of("CT exchange of 240 KiB each way", path, [](const Library& library) {
    Exchanges ours(library);
    return faults_of_stream([&] { ours.ct(kMostCt); });
  }));
  figures.push_back(faults_of("loopback of 64 KiB", path, [](const Library& library) {
    Exchanges ours(library);
    return faults_of_stream([&] { ours.loopback(65536); });
  }));
  figures.push_back(faults_of("target mapping of 1024 units", path, [](const Library& library) {
    return faults_of_mapping<HbaFcpTargetMapping, HbaFcpScsiEntry>([&](auto* mapping) { library.GetFcpTargetMapping(0, mapping); });
  }));
  figures.push_back(faults_of("second mapping of 1024 units", path, [](const Library& library) {
    constexpr HbaWwn kLocalPort{};  // the name that the driver's stand-in gives its ports
    return faults_of_mapping<HbaFcpTargetMappingV2, HbaFcpScsiEntryV2>(
        [&](auto* mapping) { library.DFC_GetFcpTargetMappingV2(0, &kLocalPort, mapping); });
  }));
}

}  // namespace bench
