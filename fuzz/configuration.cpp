// The library's configuration file: any bytes as what the file holds, and the log that comes of it. Parts of an input that 0x1E
// separates are the file at one initialisation after the other; an empty part is a file that is not there.
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "exhaustive/platform.h"
#include "promise.h"
#include "transport/callbacks.h"
#include "transport/log.h"
#include "vaskdfc.h"

namespace vaskdfc::fuzz {
namespace {

constexpr char kSeparator = 0x1E;
constexpr std::string_view kSpaces = " \t\n\v\f\r";
constexpr std::size_t kLongestToken = 31;
constexpr std::uint32_t kFailure = 0x0BAD0001;
constexpr std::uint32_t kUnknownBoard = 1;

// The file and the log, which are served from memory.
std::string_view configuration;
char* log_bytes = nullptr;
std::size_t log_size = 0;

std::string format(const char* text, ...) {
  char line[256];
  std::va_list arguments;
  va_start(arguments, text);
  std::vsnprintf(line, sizeof(line), text, arguments);
  va_end(arguments);
  return line;
}

std::string line(const char* function, int number, const std::string& message) {
  return format("  %24s:%5d ", function, number) + message + "\n";
}

std::string ids() { return format(" id[%d:%ld]", getpid(), syscall(SYS_gettid)); }

std::string call_line(const char* function, int number, const char* callback) {
  return line(function, number, format("call: %s", callback) + ids());
}

// --- what the file says

std::string_view take_token(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(kSpaces), rest.size()));
  const std::string_view token = rest.substr(0, rest.find_first_of(kSpaces));
  rest.remove_prefix(token.size());
  return token;
}

bool is_usable(std::string_view token) { return !token.empty() && token.size() <= kLongestToken; }

std::string_view until_nul(std::string_view text) { return text.substr(0, text.find('\0')); }

// Whether the mask that came of a value is right. Signs, numbers of more than 32 bits and a bare 0x are the C library's business.
bool is_right(std::uint32_t mask, std::string_view value, std::uint32_t before) {
  constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
  value = until_nul(value);
  if (value.starts_with('+') || value.starts_with('-')) return true;
  const bool is_prefixed = value.starts_with("0x") || value.starts_with("0X");
  if (is_prefixed) value.remove_prefix(2);
  std::string_view digits = value.substr(0, value.find_first_not_of(kDigits));
  if (digits.empty()) return is_prefixed || mask == before;
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  if (digits.size() > 2 * sizeof(mask)) return true;
  return mask == std::strtoul(std::string(digits.empty() ? "0" : digits).c_str(), nullptr, 16);
}

bool is_right_after(std::uint32_t mask, std::string_view file, std::uint32_t before) {
  std::string_view rest = file;
  const std::string_view name = take_token(rest);
  const std::string_view value = take_token(rest);
  return is_usable(name) && is_usable(value) ? is_right(mask, value, before) : mask == before;
}

// --- what the log says

std::string started(std::string_view file) {
  std::string_view rest = file;
  const std::string name(until_nul(take_token(rest).substr(0, kLongestToken)));
  char version[DFC_LIB_VERSION_BYTES];
  DFC_GetLibVer(version);
  return line("OpenLogger", 252, format("**Start log conf[%s x%x]", name.c_str(), LogLevel)) +
         line("OpenLogger", 262, format("Lib[%s] Vendor[ZAV:vaskfcoe-mgmt] Version[2.0.1-1] Callbacks[77]", version));
}

std::string initialised() {
  std::string text;
  if ((LogLevel & kLogHandle) != 0)
    text += line("dfc_mgmt_init", 112, format("Init handle[%p] refcnt[1:1]", &test::answer) + ids());
  for (std::uint32_t board = 0; board < DFC_MAX_BOARDS; ++board) {
    if ((LogLevel & kLogCall) != 0) text += call_line("DFC_InitDiagEnv", 312, "TREL_MGMT_INITBRDS");
    if (board != 0 || (LogLevel & kLogOk) == 0) continue;
    text += line("DFC_InitDiagEnv", 316, format("cmd ok:  %28s brd[0]", "TREL_MGMT_INITBRDS") + ids());
  }
  return text;
}

std::string asked() {
  constexpr const char* kFunction = "DFC_NPIVReadyTest";
  constexpr const char* kName = "TREL_MGMT_NPIV_READY";
  const std::string call = (LogLevel & kLogCall) != 0 ? call_line(kFunction, 61, kName) : "";
  std::string text = call;
  if ((LogLevel & kLogOk) != 0) text += line(kFunction, 64, format("cmd ok:  %28s brd[0]", kName) + ids());
  text += call;
  if ((LogLevel & kLogError) == 0) return text;
  return text + line(kFunction, 64, format("cmd err: %28s brd[%u] stat[x0:x%x]", kName, kUnknownBoard, kFailure) + ids());
}

std::string freed() {
  if ((LogLevel & kLogHandle) == 0) return "";
  return line("DFC_FreeDiagEnv", 176, format("Destroy handle[%p] refcnt[0:0]", &test::answer) + ids());
}

// The log without its timestamps, which every line must begin with.
std::string without_timestamps(std::string_view log) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00";
  std::string text;
  while (!log.empty()) {
    const std::size_t end = log.find('\n');
    promise(end != log.npos, "lines of the log are whole");
    const std::string_view whole = log.substr(0, end + 1);
    promise(whole.size() > kForm.size() && std::ranges::equal(whole.substr(0, kForm.size()), kForm, std::equal_to<>{},
                                                              [](char c) { return c >= '0' && c <= '9' ? '0' : c; }),
            "a line of the log begins with a timestamp");
    text += whole.substr(kForm.size());
    log.remove_prefix(whole.size());
  }
  return text;
}

// What was logged since the last look.
std::string logged(std::size_t& seen) {
  if (fLogger == nullptr) return "";
  std::fflush(fLogger);
  const std::string text = without_timestamps({log_bytes + seen, log_size - seen});
  seen = log_size;
  return text;
}

void initialise(std::string_view file, std::size_t& seen) {
  configuration = file;
  const bool was_open = fLogger != nullptr;
  const std::uint32_t before = LogLevel;
  promise(DFC_InitDiagEnv(nullptr, 0) == 1, "the one adapter that there is was found");
  std::uint32_t ready = 0;
  promise(DFC_NPIVReadyTest(0, &ready) == DFC_OK && DFC_NPIVReadyTest(kUnknownBoard, &ready) == DFC_FAILED, "adapters are asked");
  DFC_FreeDiagEnv();

  if (file.empty()) {
    promise(LogLevel == 0, "without a file nothing is logged");
    promise(logged(seen) == (was_open ? line("OpenLogger", 235, "\t**Stop  x0") : ""), "the log says that it stops");
    return;
  }
  promise(is_right_after(LogLevel, file, before), "the mask is the file's, or stays where the file has none");
  promise(logged(seen) == started(file) + initialised() + asked() + freed(), "the log has the lines that the mask selects");
}

void close_log() {
  if (fLogger != nullptr) std::fclose(fLogger);
  fLogger = nullptr;
  LogLevel = 0;
  std::free(log_bytes);
  log_bytes = nullptr;
}

// Board 0 is a supported adapter; the driver knows no other.
int answer_as_one_adapter(Callback callback, const test::Parameters& parameters) {
  auto& header = *static_cast<dfc_mgmt_hdr*>(parameters[0]);
  header.status = header.brdno == 0 ? 0 : kFailure;
  if (callback == Callback::kInitBrds) static_cast<dfc_initbrds_rsp*>(parameters[1])->pci_id = 0x56015A41;
  return 0;
}

}  // namespace
}  // namespace vaskdfc::fuzz

using namespace vaskdfc::fuzz;

extern "C" {

std::FILE* __real_fopen64(const char* path, const char* mode);

std::FILE* __wrap_fopen64(const char* path, const char* mode) {
  if (std::strcmp(path, "/scratch/log/libvaskdfc.log") == 0) return open_memstream(&log_bytes, &log_size);
  if (std::strcmp(path, "/scratch/libvaskdfc.conf") != 0) return __real_fopen64(path, mode);
  if (configuration.empty()) return nullptr;
  return fmemopen(const_cast<char*>(configuration.data()), configuration.size(), mode);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  std::size_t seen = 0;
  vaskdfc::test::answer = answer_as_one_adapter;
  for (;;) {
    const std::size_t end = std::min(rest.find(kSeparator), rest.size());
    initialise(rest.substr(0, end), seen);
    if (end == rest.size()) break;
    rest.remove_prefix(end + 1);
  }
  close_log();
  return 0;
}

}  // extern "C"
