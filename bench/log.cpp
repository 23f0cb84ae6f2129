// Calls with every class of log lines on. The library's files are in the program's own /scratch.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "figures.h"

namespace bench {
namespace {

constexpr const char* kConfiguration = "/scratch/libvaskdfc.conf";
constexpr const char* kLog = "/scratch/log/libvaskdfc.log";
constexpr const char* kOther = "/scratch/log/other.log";

// The log is on for this long.
class Logging {
 public:
  explicit Logging(const Library& library) : library_(library) {
    std::filesystem::create_directories("/scratch/log");
    std::ofstream(kConfiguration) << "LogLevel 0xf\n";
    restart();
  }
  ~Logging() {
    std::filesystem::remove(kConfiguration);
    restart();
  }
  Logging(const Logging&) = delete;
  Logging& operator=(const Logging&) = delete;

 private:
  void restart() {
    library_.DFC_FreeDiagEnv();
    library_.DFC_InitDiagEnv(nullptr, 0);
  }

  const Library& library_;
};

// The lines of one call.
std::vector<std::string> lines_of(const Library& library) {
  std::filesystem::resize_file(kLog, 0);
  std::uint32_t ready = 0;
  library.DFC_NPIVReadyTest(0, &ready);
  std::vector<std::string> lines;
  std::ifstream log(kLog);
  for (std::string line; std::getline(log, line);) lines.push_back(line + "\n");
  return lines;
}

}  // namespace

void measure_log(const Library& library, Figures& figures) {
  const Logging logging(library);
  const std::vector<std::string> lines = lines_of(library);
  if (lines.size() != 2) throw std::runtime_error("a call with the mask 0xf does not write two lines");

  const int other = open(kOther, O_WRONLY | O_CREAT | O_APPEND, 0600);
  std::uint32_t ready = 0;
  constexpr std::size_t kBatch = 200;
  const Times times = in_turns_of(
      kBatch, [&] { library.DFC_NPIVReadyTest(0, &ready); },
      [&] {
        for (const std::string& line : lines) static_cast<void>(!write(other, line.data(), line.size()));
      },
      [&] {
        std::filesystem::resize_file(kLog, 0);
        std::filesystem::resize_file(kOther, 0);
      });
  close(other);
  figures.push_back(ratio_of("call with mask 0xf", "two writes of its lines", times, 1.5));
}

}  // namespace bench
