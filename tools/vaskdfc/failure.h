// Why a command could not do what it was asked.
#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include "driver_calls.h"
#include "output.h"

namespace vaskdfc::tool {

// The tool's exit codes.
enum class Exit { kDone = 0, kFailed = 1, kUsage = 2, kNoAdapter = 3 };

// Families of result codes, which give the same number different names.
enum class Results {
  kStatus,
  kDfc,
  kHba,
  kMailbox,
  kDump,
  kRegion,
  kVport,
  kEls,
  kMgmt,
  kVpd,
  kAccess,
  kReset,
  kInducedDump,
  kDumpRegion,
  kLoopbackMode,
  kLoopbackTest,
  kLoopbackEnd,
  kOas
};

// A result code's name; empty for a code that has none.
std::string result_name(Results family, std::uint32_t result);

struct Failure : std::exception {
  std::string message;
  std::optional<std::uint32_t> adapter;
  std::string operation;  // the library's function; empty if it is not the library that failed
  std::optional<DriverCall> call;
  std::optional<std::uint32_t> result;
  Results results = Results::kStatus;
  std::string hint;  // what to try
  Exit exit = Exit::kFailed;

  const char* what() const noexcept override { return message.c_str(); }
};

// A failure of the tool's own, without an operation of the library behind it.
Failure plain_failure(Exit exit, std::string message, std::string hint = "");
Failure usage_failure(std::string message, std::string hint = "");

// An operation on an adapter that returned `result`; the driver call that failed last, or else the
// last one, tells the statuses.
Failure operation_failure(std::string message, std::optional<std::uint32_t> adapter, std::string operation, Results results,
                          std::uint32_t result);

// The same, where something else helps than what helps most often.
Failure with_hint(Failure failure, std::string hint);

// The failure as the tool reports it on standard error.
std::string render_failure(const Failure& failure, Form form);

}  // namespace vaskdfc::tool
