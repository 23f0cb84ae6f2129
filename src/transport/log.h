// The log of the library's traffic with the driver. Nothing else formats a log line.
//
// Every line starts with a timestamp, the writing function's name and a source line number, is one formatted write and is
// flushed at once. The configuration file selects classes of lines by the bits of LogLevel.
#pragma once

#include <cstdint>
#include <cstdio>

#include "vaskdfc/platform.h"

namespace vaskdfc {

struct Outcome;

// Bits of LogLevel.
inline constexpr std::uint32_t kLogHandle = 1;  // the management handle is opened and closed
inline constexpr std::uint32_t kLogOk = 2;      // "cmd ok"
inline constexpr std::uint32_t kLogError = 4;   // "cmd err" and "ERROR:"
inline constexpr std::uint32_t kLogCall = 8;    // "call"

extern std::FILE* fLogger;      // null while logging is off; once open it stays open
extern std::uint32_t LogLevel;  // enabled classes

// Reads the configuration and opens the log. Every initialisation does so, and the file's present content decides.
void OpenLogger();

// Where a line says that it comes from.
struct LogSite {
  const char* function;
  int line;
};

// Whether lines of a class are written. Looked at where a call is made, so that a log that is off costs next to nothing.
inline bool is_logged(std::uint32_t line_class) { return fLogger != nullptr && (LogLevel & line_class) != 0; }

// The lines of a call, which are only asked for where their class is logged.
void log_call(LogSite site, const char* callback);
void log_ok(LogSite site, const char* callback, std::uint32_t board);
void log_error(LogSite site, const char* callback, std::uint32_t board, const Outcome& outcome);

// All others look for themselves.
void log_init_handle(LogSite site, vmk_MgmtUserHandle handle, std::int32_t count);
void log_destroy_handle(LogSite site, vmk_MgmtUserHandle handle, std::int32_t count);
// The "ERROR:" lines.
void log_invalid_region(LogSite site, std::uint32_t region);
void log_record_found(LogSite site, std::uint8_t type);
void log_unsupported_sli_mode(LogSite site, std::uint32_t sli_mode);
// Written whatever LogLevel says, as long as the log is open.
void log_init_failure(LogSite site, std::uint32_t platform_status);

}  // namespace vaskdfc
