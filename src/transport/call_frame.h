// The frame of every driver call: a zeroed header, one "call" line, the platform's call, one result line, two statuses.
//
// An operation states its call site as data and then calls
//
//   auto header = header_for(board);
//   const Outcome outcome = invoke<kSite>(board, header, payload...);
//
// invoke() checks the payloads against the callback's row in callbacks.h when it is compiled.
#pragma once

#include <cstdint>

#include "transport/board_table.h"
#include "transport/callbacks.h"
#include "transport/log.h"
#include "transport/mgmt_interface.h"
#include "vaskdfc/platform.h"

namespace vaskdfc {

// Stands for "no board" in result lines, where it prints as -1, and for "no such driver board" in the board table.
inline constexpr std::uint32_t kNoBoard = 0xFFFFFFFF;

// Source lines as the log shows them. They are part of the log's contract: fixed numbers, never the compiler's.
struct Lines {
  int call;
  int result;
};

// A name as the log shows it, held in place: a pointer to it would have to be relocated whenever the library is loaded.
class SiteName {
 public:
  // cppcheck-suppress noExplicitConstructor ; a call site is written down with literals
  constexpr SiteName(const char* name) {
    for (char* to = text_; *name != '\0'; ++name) *to++ = *name;
  }
  constexpr operator const char*() const { return text_; }

 private:
  char text_[36] = {};  // a longer name does not compile
};

// One place in the library that issues a callback.
struct CallSite {
  SiteName function;
  Callback callback;
  Lines lines;
  std::uint32_t parameters = facts_of(callback).parameters;
  // Some sites log another name than the callback's own; log readers match these names.
  SiteName call_name = facts_of(callback).name;
  SiteName result_name = call_name;
  // Board discovery probes numbers that mostly do not exist; those failures are no news.
  bool logs_failure = true;
};

// What came of a call: the status of the platform and the status of the driver.
struct [[nodiscard]] Outcome {
  std::uint32_t platform;
  std::uint32_t driver;

  constexpr bool ok() const { return platform == 0 && driver == 0; }
  // The general rule for results: the platform's status if it is nonzero, otherwise the driver's.
  constexpr std::uint32_t status() const { return platform != 0 ? platform : driver; }
};

// The driver's board number for a board index. The index is not checked: callers rely on the driver to reject what it does not
// know, and an index that was never filled sends 0xFFFFFFFF.
inline std::uint32_t getDrvBrdNum(std::uint32_t board) { return dfc_brdno[board]; }

// A zeroed header that addresses a board.
inline dfc_mgmt_hdr header_for(std::uint32_t board) { return {.brdno = getDrvBrdNum(board)}; }

// Parameters after the header.
struct Payloads {
  const void* address[3];
};

// Does the work of invoke() when lines are written. `board` is the caller's board index, shown on the result lines.
Outcome invoke_logged(const CallSite& site, std::uint32_t board, dfc_mgmt_hdr& header, const Payloads& payloads);

template <const CallSite& kSite, typename... Arguments>
Outcome invoke(std::uint32_t board, dfc_mgmt_hdr& header, Arguments&... arguments) {
  using Row = Callbacks::At<kSite.callback>;
  static_assert(sizeof...(Arguments) == Row::kPayloads, "wrong number of parameters: see this callback's row in callbacks.h");
  if constexpr (sizeof...(Arguments) == Row::kPayloads) {
    static_assert(Row::template records_match<Arguments...>(), "wrong record: see this callback's row in callbacks.h");
    static_assert(Row::template directions_match<Arguments...>(),
                  "wrong direction: the driver writes this record, it must not be const");
  }
  if (LogLevel != 0) [[unlikely]]
    return invoke_logged(kSite, board, header, {{&arguments...}});
  // The frame costs as much as the call itself where it is a function of its own.
  const int platform = vmk_MgmtUserCallbackInvokeInt(trel_mgmt_handle, 0, Row::kFacts.id, std::uint32_t{Row::kFacts.parameters},
                                                     &header, &arguments...);
  return {.platform = static_cast<std::uint32_t>(platform), .driver = header.status};
}

}  // namespace vaskdfc
