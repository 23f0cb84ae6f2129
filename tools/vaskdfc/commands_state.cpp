// Commands about the diagnostic state of adapters: set-state.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "command_line.h"
#include "decode.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

// The mode that asks for the state and changes nothing.
constexpr std::uint32_t kReportMode = 0;
constexpr std::array<std::uint32_t, 5> kModes{kReportMode, 1, DFC_MODE_WAITING, 3, 5};

struct Arguments {
  std::string adapter;
  std::string mode;
};

std::uint32_t parse_mode(const std::string& spelling) {
  const auto mode = parse_number(spelling);
  if (mode && std::ranges::count(kModes, *mode) != 0) return *mode;
  throw usage_failure(fmt::format("MODE: \"{}\" is no mode", spelling), fmt::format("the modes are {}", fmt::join(kModes, ", ")));
}

// Watches the library set one adapter after another.
class Watch {
 public:
  Watch(const Context& context, const Session& session, std::uint32_t first_adapter)
      : context_(context), session_(session), first_adapter_(first_adapter) {}

  void note(const DriverCall& call);
  // From now on nothing is set; states are asked for only.
  void end() { ended_ = true; }
  bool has_set(std::uint32_t board) const { return boards_set_.contains(board); }

 private:
  const Context& context_;
  const Session& session_;
  std::uint32_t first_adapter_;
  std::vector<std::uint32_t> boards_;  // driver board numbers, in the order of the adapters
  std::set<std::uint32_t> boards_set_;
  bool ended_ = false;
};

void Watch::note(const DriverCall& call) {
  constexpr std::uint32_t kReport = 0x10;  // the sub-command that asks for the state
  constexpr std::uint32_t kNotReady = 2;
  if (ended_) return;
  const std::uint32_t board = call.sent.brdno;
  const bool is_new = boards_.empty() || boards_.back() != board;
  if (is_new) boards_.push_back(board);
  if (call.failed()) return;
  if (call.sent.arg6 != kReport) {
    boards_set_.insert(board);
    return;
  }
  // The library asks once a second until the adapter leaves this state, but only once where the adapter has failed.
  const auto adapter = static_cast<std::uint32_t>(first_adapter_ + boards_.size() - 1);
  if (!is_new || call.header.arg4 != kNotReady || session_.has_failed(adapter)) return;
  context_.remark(fmt::format("waiting while driver board {} reports state {}", board, kNotReady));
}

// Whether a call failed that yielded 0. The library's 0 may as well be a state; only the call itself tells.
bool failed(std::uint32_t result) { return result == 0 && last_failed_driver_call().has_value(); }

std::uint32_t set_state(std::uint32_t adapter, std::uint32_t mode) {
  watch_driver_calls();
  const std::uint32_t state = SetBrdEnv(adapter, mode);
  if (failed(state)) {
    const std::string message = mode == kReportMode ? "the state cannot be read" : fmt::format("mode {} cannot be set", mode);
    throw operation_failure(message, adapter, "SetBrdEnv", Results::kStatus, state);
  }
  return state;
}

void set_all_states(Context& context, std::uint32_t mode) {
  watch_driver_calls();
  const std::uint32_t state = SetDiagEnv(mode);
  if (!failed(state)) return;
  context.report_failure(operation_failure(
      fmt::format("mode {} cannot be set on driver board {}; the adapters after it were left alone", mode, last_driver_board()),
      std::nullopt, "SetDiagEnv", Results::kStatus, state));
}

// An adapter after the command. Without a call to the driver nothing is known of it.
struct Outcome {
  std::uint32_t adapter;
  std::optional<std::uint32_t> board;
  bool is_set = false;
  std::optional<std::uint32_t> state;
};

Outcome set_one(std::uint32_t adapter, std::uint32_t mode, const Watch& watch) {
  const std::uint32_t state = set_state(adapter, mode);
  const std::uint32_t board = last_driver_board();
  return {.adapter = adapter, .board = board, .is_set = watch.has_set(board), .state = state};
}

// Sets all adapters as far as the library gets, then asks each for its state.
std::vector<Outcome> set_all(Context& context, std::uint32_t adapters, std::uint32_t mode, Watch& watch) {
  if (mode != kReportMode) set_all_states(context, mode);
  watch.end();
  std::vector<Outcome> outcomes;
  for (std::uint32_t adapter = 0; adapter < adapters; ++adapter) {
    Outcome outcome{.adapter = adapter};
    try {
      outcome.state = set_state(adapter, kReportMode);
    } catch (const Failure& failure) {
      context.report_failure(failure);
    }
    outcome.board = last_driver_board();
    outcome.is_set = watch.has_set(*outcome.board);
    outcomes.push_back(outcome);
  }
  return outcomes;
}

std::vector<Outcome> not_set(std::uint32_t first, std::uint32_t end) {
  std::vector<Outcome> outcomes;
  for (std::uint32_t adapter = first; adapter < end; ++adapter) outcomes.push_back({.adapter = adapter});
  return outcomes;
}

// The library passes over adapters without a word: in the waiting mode those that have failed, and all that follow one whose
// new state is 0.
void tell_who_was_left_alone(Context& context, const std::vector<Outcome>& outcomes) {
  std::vector<std::uint32_t> left_alone;
  for (const Outcome& outcome : outcomes) {
    if (!outcome.is_set) left_alone.push_back(outcome.adapter);
  }
  if (left_alone.empty()) return;
  context.report_failure(plain_failure(
      Exit::kFailed,
      fmt::format("not set, because it has failed or follows one in state 0: adapter {}", fmt::join(left_alone, ", ")),
      "\"vaskdfc list\" shows the states of the ports"));
}

Section section_of(const std::vector<Outcome>& outcomes, std::uint32_t mode) {
  const auto cell = [](const std::optional<std::uint32_t>& number) { return number ? number_cell(*number) : absent(); };
  Section section =
      table_section("states", "States",
                    {{"adapter", "ADAPTER"}, {"driver_board", "BOARD"}, {"mode", "MODE"}, {"set", "SET"}, {"state", "STATE"}});
  for (const Outcome& outcome : outcomes) {
    section.records.push_back(
        {number_cell(outcome.adapter), cell(outcome.board), number_cell(mode), flag_cell(outcome.is_set), cell(outcome.state)});
  }
  return section;
}

void run(Context& context, const Arguments& arguments) {
  const std::uint32_t mode = parse_mode(arguments.mode);
  const Session session;
  const bool all = arguments.adapter == "all";
  const std::uint32_t first = all ? 0 : session.find(arguments.adapter);
  const std::uint32_t end = all ? session.adapters() : first + 1;

  const auto finish = [&](const std::vector<Outcome>& outcomes) {
    context.print({.command = "set-state", .sections = {section_of(outcomes, mode)}});
  };
  const std::string whom = all ? "all adapters" : fmt::format("adapter {}", first);
  const bool changes = mode != kReportMode;
  if (changes && !context.may_change(fmt::format("set {} to mode {}", whom, mode))) return finish(not_set(first, end));

  const auto watch = std::make_shared<Watch>(context, session, first);
  if (changes) on_driver_call([watch](const DriverCall& call) { watch->note(call); });
  const auto outcomes = all ? set_all(context, end, mode, *watch) : std::vector{set_one(first, mode, *watch)};
  if (changes && context.exit() == Exit::kDone) tell_who_was_left_alone(context, outcomes);
  finish(outcomes);
}

}  // namespace

void add_state_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const Command command = commands.add(
      "set-state", "Set the diagnostic state of an adapter, or of all of them until one fails",
      {"vaskdfc set-state 0 0          # asks for the state", "vaskdfc set-state 0 1 --yes", "vaskdfc set-state all 3 --dry-run"},
      [arguments](Context& context) { run(context, *arguments); });
  command.add_option("ADAPTER", arguments->adapter, std::string(kAdapterHelp) + "; or \"all\"").type_name("ADAPTER|all").required();
  command
      .add_option("MODE", arguments->mode,
                  fmt::format("{}: {} shows the state, {} sets it once the adapter is ready", fmt::join(kModes, ", "), kReportMode,
                              DFC_MODE_WAITING))
      .type_name(fmt::format("{}", fmt::join(kModes, "|")))
      .required();
}

}  // namespace vaskdfc::tool
