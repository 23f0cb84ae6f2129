#include "transport/log.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

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

// What lines of one thread have in common, kept because asking costs as much as writing. A process that was forked off has other
// numbers: `owner` is 0 there until the first line.
struct LineFacts {
  pid_t process;
  long thread;
  std::int32_t second;
  char timestamp[24];  // of that second, cut where it is longer; empty before the first line
};
constinit thread_local LineFacts line_facts{};
constinit std::atomic<pid_t> owner{0};

void forget_owner() { owner = 0; }

// A line, built in place and written at once when it is whole. Nothing that is written here is near its limit.
class Line {
 public:
  explicit Line(LogSite site) {
    char line[12] = {};
    const std::string_view line_number(line, std::to_chars(line, std::end(line), site.line).ptr);
    text(timestamp()).text("  ").right(site.function, 24).text(":").right(line_number, 5).text(" ");
  }
  ~Line() {
    text("\n");
    std::fwrite(text_, 1, size_, fLogger);
    std::fflush(fLogger);
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  Line& text(std::string_view text) {
    const std::size_t bytes = std::min(text.size(), sizeof(text_) - size_);
    std::memcpy(text_ + size_, text.data(), bytes);
    size_ += bytes;
    return *this;
  }
  // Blanks first, up to a width; a longer text is not cut.
  Line& right(std::string_view text, std::size_t width) {
    constexpr std::string_view kBlanks = "                            ";
    return this->text(kBlanks.substr(0, width - std::min(width, text.size()))).text(text);
  }
  Line& number(long number) { return goes_on_at(std::to_chars(text_ + size_, std::end(text_), number)); }
  Line& hexadecimal(std::uintptr_t number) { return goes_on_at(std::to_chars(text_ + size_, std::end(text_), number, 16)); }
  Line& callback(std::string_view prefix, std::string_view name) { return text(prefix).right(name, 28); }
  Line& board(std::uint32_t board) { return text(" brd[").number(static_cast<std::int32_t>(board)).text("]"); }
  Line& handle(vmk_MgmtUserHandle handle) {
    return handle == nullptr ? text("(nil)") : text("0x").hexadecimal(reinterpret_cast<std::uintptr_t>(handle));
  }
  Line& ids() {
    if (owner.load(std::memory_order_relaxed) == 0) owner.store(getpid(), std::memory_order_relaxed);
    const pid_t process = owner.load(std::memory_order_relaxed);
    if (line_facts.process != process) {
      line_facts.thread = syscall(SYS_gettid);
      line_facts.process = process;
    }
    return text(" id[").number(process).text(":").number(line_facts.thread).text("]");
  }

 private:
  Line& goes_on_at(std::to_chars_result end) {
    size_ = static_cast<std::size_t>(end.ptr - text_);
    return *this;
  }

  static std::string_view timestamp() {
    timeval now{};
    gettimeofday(&now, nullptr);
    const auto second = static_cast<std::int32_t>(now.tv_sec);
    if (second != line_facts.second || line_facts.timestamp[0] == '\0') {
      trel_GetTimeOfDay(&now, line_facts.timestamp, sizeof(line_facts.timestamp));
      line_facts.second = second;
    }
    return line_facts.timestamp;
  }

  std::size_t size_ = 0;
  char text_[512];
};

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
  Line({kFunction, 252}).text("**Start log conf[").text(name.text).text(" x").hexadecimal(LogLevel).text("]");

  char version[DFC_LIB_VERSION_BYTES];
  DFC_GetLibVer(version);
  const dfc_mgmt_signature& primary = trel_mgmt_signature;
  const auto component = [&](int shift) { return static_cast<long>(primary.version >> shift & 0xFF); };
  Line line({kFunction, 262});
  line.text("Lib[").text(version).text("] Vendor[").text(primary.vendor).text(":").text(primary.name);
  line.text("] Version[").number(component(24)).text(".").number(component(16)).text(".").number(component(8));
  line.text("-").number(component(0)).text("] Callbacks[").number(static_cast<long>(primary.callback_count)).text("]");
}

void log_handle(LogSite site, std::string_view what, vmk_MgmtUserHandle handle, std::int32_t count) {
  Line line(site);
  line.text(what).handle(handle).text("] refcnt[").number(count).text(":").number(refcnt).text("]").ids();
}

}  // namespace

void OpenLogger() {
  // Opened anew every time: a stream that stayed open would serve the bytes that it once buffered, also after a seek.
  std::FILE* const configuration = std::fopen(kConfigurationPath, "r");
  if (configuration == nullptr) {
    LogLevel = 0;
    if (fLogger != nullptr) Line({"OpenLogger", 235}).text("\t**Stop  x").hexadecimal(LogLevel);
    return;
  }
  const Token name = read_token(configuration);
  const Token value = name.whole ? read_token(configuration) : Token{};
  std::fclose(configuration);

  // Whatever cannot be read as a mask leaves the mask as it was.
  std::uint32_t mask = 0;
  // NOLINTNEXTLINE(cert-err34-c): a mask is whatever %x makes of the token
  if (value.whole && std::sscanf(value.text, "%x", &mask) == 1) LogLevel = mask;

  if (fLogger == nullptr) {
    fLogger = std::fopen(kLogPath, "a+");
    if (fLogger != nullptr) pthread_atfork(nullptr, nullptr, forget_owner);
  }
  if (fLogger != nullptr) write_start(name);
}

void log_call(LogSite site, const char* callback) { Line(site).text("call: ").text(callback).ids(); }

void log_ok(LogSite site, const char* callback, std::uint32_t board) {
  Line(site).callback("cmd ok:  ", callback).board(board).ids();
}

void log_error(LogSite site, const char* callback, std::uint32_t board, const Outcome& outcome) {
  Line line(site);
  line.callback("cmd err: ", callback).board(board);
  line.text(" stat[x").hexadecimal(outcome.platform).text(":x").hexadecimal(outcome.driver).text("]").ids();
}

void log_init_handle(LogSite site, vmk_MgmtUserHandle handle, std::int32_t count) {
  if (is_logged(kLogHandle)) log_handle(site, "Init handle[", handle, count);
}

void log_destroy_handle(LogSite site, vmk_MgmtUserHandle handle, std::int32_t count) {
  if (is_logged(kLogHandle)) log_handle(site, "Destroy handle[", handle, count);
}

void log_invalid_region(LogSite site, std::uint32_t region) {
  if (is_logged(kLogError)) Line(site).text("ERROR: Invalid region ").number(static_cast<std::int32_t>(region));
}

void log_record_found(LogSite site, std::uint8_t type) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  if (!is_logged(kLogError)) return;
  Line(site).text("ERROR: ").text(kDigits.substr(type >> 4, 1)).text(kDigits.substr(type & 0xF, 1)).text(" Found");
}

void log_unsupported_sli_mode(LogSite site, std::uint32_t sli_mode) {
  if (!is_logged(kLogError)) return;
  Line(site).text("ERROR: sliMode ").number(static_cast<std::int32_t>(sli_mode)).text(" not supported");
}

void log_init_failure(LogSite site, std::uint32_t platform_status) {
  if (fLogger == nullptr) return;
  Line line(site);
  line.text("Management init failure: x").hexadecimal(platform_status);
  line.text(". Check if driver is loaded and Kestar cards are installed.  Else a possible reason would ");
  line.text("be incompatible driver and application versions.\n");
}

}  // namespace vaskdfc
