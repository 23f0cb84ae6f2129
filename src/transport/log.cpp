#include "transport/log.h"

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cctype>
#include <cstdarg>

#include "transport/call_frame.h"
#include "transport/mgmt_interface.h"
#include "vaskdfc/info.h"
#include "vaskdfc/transport.h"

namespace vaskdfc {

std::FILE* fLogger;
std::uint32_t LogLevel;

namespace {

constexpr const char* kConfigurationPath = "/scratch/libvaskdfc.conf";
constexpr const char* kLogPath = "/scratch/log/libvaskdfc.log";

// The start of every line; what follows it is joined to one format, so that a line is one write.
#define LINE_START "%s  %24s:%5d "

struct Timestamp {
  char text[24];
  Timestamp() {
    timeval now{};
    gettimeofday(&now, nullptr);
    trel_GetTimeOfDay(&now, text, sizeof(text));
  }
};

int process_id() { return getpid(); }
long thread_id() { return syscall(SYS_gettid); }

bool enabled(std::uint32_t line_class) { return fLogger != nullptr && (LogLevel & line_class) != 0; }

[[gnu::format(printf, 1, 2)]] void write_line(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::vfprintf(fLogger, format, arguments);
  va_end(arguments);
  std::fflush(fLogger);
}

// A word of the configuration file. Of a word longer than the buffer only the start is read, and then `whole` is false.
struct Token {
  char text[32] = "";
  bool whole = false;
};

Token read_token(std::FILE* file) {
  Token token;
  int c = std::fgetc(file);
  while (std::isspace(c) != 0) c = std::fgetc(file);
  std::size_t length = 0;
  for (; c != EOF && std::isspace(c) == 0 && length < sizeof(token.text) - 1; c = std::fgetc(file)) {
    token.text[length++] = static_cast<char>(c);
  }
  token.whole = length > 0 && (c == EOF || std::isspace(c) != 0);
  return token;
}

void write_start(const Token& name) {
  constexpr const char* kFunction = "OpenLogger";
  write_line(LINE_START "**Start log conf[%s x%x]\n", Timestamp().text, kFunction, 252, name.text, LogLevel);

  char version[DFC_LIB_VERSION_BYTES];
  DFC_GetLibVer(version);
  const dfc_mgmt_signature& primary = trel_mgmt_signature;
  const auto component = [&](int shift) { return static_cast<int>(primary.version >> shift & 0xFF); };
  write_line(LINE_START "Lib[%s] Vendor[%s:%s] Version[%d.%d.%d-%d] Callbacks[%d]\n", Timestamp().text, kFunction, 262, version,
             primary.vendor, primary.name, component(24), component(16), component(8), component(0),
             static_cast<int>(primary.callback_count));
}

}  // namespace

void OpenLogger() {
  // Opened anew every time: a stream that stayed open would serve the bytes that it once buffered, also after a seek.
  std::FILE* const configuration = std::fopen(kConfigurationPath, "r");
  if (configuration == nullptr) {
    LogLevel = 0;
    if (fLogger != nullptr) {
      write_line(LINE_START "\t**Stop %s x%x\n", Timestamp().text, "OpenLogger", 235, "", LogLevel);
    }
    return;
  }
  const Token name = read_token(configuration);
  const Token value = name.whole ? read_token(configuration) : Token{};
  std::fclose(configuration);

  // Whatever cannot be read as a mask leaves the mask as it was.
  std::uint32_t mask = 0;
  // NOLINTNEXTLINE(cert-err34-c): a mask is whatever %x makes of the token
  if (value.whole && std::sscanf(value.text, "%x", &mask) == 1) LogLevel = mask;

  if (fLogger == nullptr) fLogger = std::fopen(kLogPath, "a+");
  if (fLogger != nullptr) write_start(name);
}

void log_call(LogSite site, const char* callback) {
  if (!enabled(kLogCall)) return;
  write_line(LINE_START "call: %s id[%d:%ld]\n", Timestamp().text, site.function, site.line, callback, process_id(), thread_id());
}

void log_ok(LogSite site, const char* callback, std::uint32_t board) {
  if (!enabled(kLogOk)) return;
  write_line(LINE_START "cmd ok:  %28s brd[%d] id[%d:%ld]\n", Timestamp().text, site.function, site.line, callback,
             static_cast<int>(board), process_id(), thread_id());
}

void log_error(LogSite site, const char* callback, std::uint32_t board, const Outcome& outcome) {
  if (!enabled(kLogError)) return;
  write_line(LINE_START "cmd err: %28s brd[%d] stat[x%x:x%x] id[%d:%ld]\n", Timestamp().text, site.function, site.line, callback,
             static_cast<int>(board), outcome.platform, outcome.driver, process_id(), thread_id());
}

void log_init_handle(LogSite site, vmk_MgmtUserHandle handle, std::int32_t count) {
  if (!enabled(kLogHandle)) return;
  write_line(LINE_START "Init handle[%p] refcnt[%d:%d] id[%d:%ld]\n", Timestamp().text, site.function, site.line, handle, count,
             refcnt, process_id(), thread_id());
}

void log_destroy_handle(LogSite site, vmk_MgmtUserHandle handle, std::int32_t count) {
  if (!enabled(kLogHandle)) return;
  write_line(LINE_START "Destroy handle[%p] refcnt[%d:%d] id[%d:%ld]\n", Timestamp().text, site.function, site.line, handle, count,
             refcnt, process_id(), thread_id());
}

void log_invalid_region(LogSite site, std::uint32_t region) {
  if (!enabled(kLogError)) return;
  write_line(LINE_START "ERROR: Invalid region %d\n", Timestamp().text, site.function, site.line, static_cast<int>(region));
}

void log_record_found(LogSite site, std::uint8_t type) {
  if (!enabled(kLogError)) return;
  write_line(LINE_START "ERROR: %02X Found\n", Timestamp().text, site.function, site.line, unsigned{type});
}

void log_unsupported_sli_mode(LogSite site, std::uint32_t sli_mode) {
  if (!enabled(kLogError)) return;
  write_line(LINE_START "ERROR: sliMode %d not supported\n", Timestamp().text, site.function, site.line,
             static_cast<int>(sli_mode));
}

void log_init_failure(LogSite site, std::uint32_t platform_status) {
  if (fLogger == nullptr) return;
  write_line(
      LINE_START
      "Management init failure: x%x. Check if driver is loaded and Kestar cards are installed.  Else a possible reason would "
      "be incompatible driver and application versions.\n\n",
      Timestamp().text, site.function, site.line, platform_status);
}

}  // namespace vaskdfc
