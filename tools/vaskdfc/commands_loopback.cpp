// Commands about loopback: loopback run, loopback end.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <optional>

#include "command_line.h"
#include "decode.h"
#include "loopback_pattern.h"
#include "progress.h"
#include "raw_file.h"
#include "repetition.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

using Clock = std::chrono::steady_clock;

struct Arguments {
  std::string adapter;
  std::string mode = "internal";
  std::string pattern = "prbs31";
  std::string argument = "0";
  std::optional<std::string> size;
  std::optional<std::string> count;
  std::optional<std::string> file;
};

// What is asked for, as far as it can be judged without an adapter.
struct Plan {
  std::uint32_t mode;
  std::string pattern_name;
  Pattern pattern;
  std::uint32_t argument;
  std::uint32_t size;
  std::uint32_t tests;
};

const char* mode_name(std::uint32_t mode) { return mode == DFC_LOOPBACK_MODE_1 ? "internal" : "external"; }

std::uint32_t mode_argument(const std::string& spelling) {
  for (const std::uint32_t mode : {DFC_LOOPBACK_MODE_1, DFC_LOOPBACK_MODE_2}) {
    if (spelling == mode_name(mode) || parse_number(spelling) == mode) return mode;
  }
  throw usage_failure(fmt::format("--mode: \"{}\" is no loopback mode", spelling), "the modes are internal (1) and external (2)");
}

std::uint32_t size_argument(const Arguments& arguments, std::size_t otherwise) {
  if (!arguments.size) return static_cast<std::uint32_t>(otherwise);
  const std::uint32_t size = number_argument("--size", *arguments.size, DFC_LOOPBACK_BYTES);
  if (size == 0) throw usage_failure("--size: 0 bytes are nothing to compare");
  return size;
}

Plan plan_of(const Arguments& arguments) {
  constexpr std::size_t kUsualSize = 2048;
  const std::uint32_t mode = mode_argument(arguments.mode);
  const std::uint32_t argument = number_argument("--argument", arguments.argument);
  const std::uint32_t tests = times_argument("--count", arguments.count).value_or(1);
  if (arguments.file) {
    auto bytes = read_file(*arguments.file, DFC_LOOPBACK_BYTES);
    if (bytes.empty()) throw usage_failure(fmt::format("the file \"{}\" is empty", *arguments.file));
    const std::uint32_t size = size_argument(arguments, bytes.size());
    return {mode, "file", Pattern(Pattern::Kind::kBytes, std::move(bytes)), argument, size, tests};
  }
  const auto kind = pattern_named(arguments.pattern);
  if (!kind) {
    throw usage_failure(fmt::format("--pattern: \"{}\" is no pattern", arguments.pattern),
                        fmt::format("the patterns are {}; --file takes bytes from a file", fmt::join(pattern_names(), ", ")));
  }
  return {mode, arguments.pattern, Pattern(*kind), argument, size_argument(arguments, kUsualSize), tests};
}

std::uint32_t end_loopback(std::uint32_t adapter) {
  watch_driver_calls();
  return DFC_EndLoopback(adapter);
}

Failure end_failure(std::uint32_t adapter, std::uint32_t result) {
  return operation_failure("the loopback cannot be ended; the port may still be out of the fabric", adapter, "DFC_EndLoopback",
                           Results::kLoopbackEnd, result);
}

// The port is in loopback while this lives, and not a moment longer, whatever becomes of the tests.
class Loopback {
 public:
  Loopback(Context& context, std::uint32_t adapter, const Plan& plan) : context_(context), adapter_(adapter) {
    watch_driver_calls();
    const std::uint32_t result = DFC_ConfigLoopback(adapter, plan.mode, plan.argument);
    if (result == DFC_OK) return;
    throw operation_failure(fmt::format("the port cannot be put into {} loopback", mode_name(plan.mode)), adapter,
                            "DFC_ConfigLoopback", Results::kLoopbackMode, result);
  }
  ~Loopback() { end(); }
  Loopback(const Loopback&) = delete;
  Loopback& operator=(const Loopback&) = delete;

  // Whether it is ended, now or before.
  bool end() {
    if (ended_) return *ended_;
    const std::uint32_t result = end_loopback(adapter_);
    ended_ = result == DFC_OK;
    if (*ended_) {
      context_.remark(fmt::format("the loopback of adapter {} is ended", adapter_));
    } else {
      context_.report_failure(end_failure(adapter_, result));
    }
    return *ended_;
  }

 private:
  Context& context_;
  std::uint32_t adapter_;
  std::optional<bool> ended_;
};

struct Difference {
  std::uint32_t test;
  Comparison comparison;
};

struct Outcome {
  bool sent = false;
  std::uint32_t tests = 0;  // that came back
  std::uint32_t differing_tests = 0;
  std::uint64_t differing_bytes = 0;
  std::uint64_t differing_bits = 0;
  std::vector<Difference> differences;  // the first of them
  Seconds time{0};                      // in which data were on their way
  std::optional<Failure> failure;
  std::optional<bool> ended;
};

void run_test(std::uint32_t adapter, const std::vector<std::uint8_t>& sent, Outcome& outcome) {
  constexpr std::size_t kMostDifferences = 16;
  std::vector<std::uint8_t> received(sent.size());
  const dfc_loopback loopback{.bufSize = static_cast<std::uint32_t>(sent.size()), .txBuf = sent.data(), .rxBuf = received.data()};
  watch_driver_calls();
  const auto start = Clock::now();
  const std::uint32_t result = DFC_RunLoopbackTest(adapter, &loopback);
  outcome.time += Clock::now() - start;
  if (result != DFC_OK) {
    throw operation_failure(fmt::format("loopback test {} failed", outcome.tests + 1), adapter, "DFC_RunLoopbackTest",
                            Results::kLoopbackTest, result);
  }
  ++outcome.tests;
  const Comparison comparison = compare(sent, received);
  outcome.differing_bytes += comparison.bytes;
  outcome.differing_bits += comparison.bits;
  if (!comparison.first) return;
  ++outcome.differing_tests;
  if (outcome.differences.size() < kMostDifferences) outcome.differences.push_back({outcome.tests, comparison});
}

Failure differences_failure(std::uint32_t adapter, const Outcome& outcome) {
  const auto& [test, comparison] = outcome.differences.front();
  return operation_failure(
      fmt::format("{} of {} tests did not bring back what was sent; the first difference is in test {} at offset {}: 0x{:02x} was "
                  "sent, 0x{:02x} received",
                  outcome.differing_tests, outcome.tests, test, *comparison.first, comparison.sent, comparison.received),
      adapter, "DFC_RunLoopbackTest", Results::kLoopbackTest, DFC_OK);
}

// The tests, between the beginning of loopback and its end.
Outcome run_tests(Context& context, std::uint32_t adapter, Plan& plan) {
  const Interruptible interruptible;
  std::signal(SIGPIPE, SIG_IGN);  // whoever reads what -v shows may go away first
  Loopback loopback(context, adapter, plan);
  Outcome outcome{.sent = true};
  {
    Progress progress("loopback tests", plan.tests);
    try {
      while (outcome.tests < plan.tests) {
        progress.reached(outcome.tests);
        run_test(adapter, plan.pattern.next(plan.size), outcome);
        if (interruptible.wait(Seconds(0)) || outcome.tests == plan.tests) continue;
        outcome.failure = plain_failure(Exit::kFailed, fmt::format("ended early, after {} of {} tests", outcome.tests, plan.tests));
        break;
      }
    } catch (const Failure& failure) {
      outcome.failure = failure;
    }
  }
  if (!outcome.failure && outcome.differing_tests > 0) outcome.failure = differences_failure(adapter, outcome);
  outcome.ended = loopback.end();
  return outcome;
}

Cell rate_cell(const Outcome& outcome, std::uint64_t bytes) {
  if (outcome.time.count() <= 0) return absent();
  const double rate = static_cast<double>(bytes) / outcome.time.count();
  return {rate, fmt::format("{:.1f} MB/s", rate / 1e6)};
}

Report report_of(std::uint32_t adapter, const Plan& plan, const Outcome& outcome) {
  const std::uint64_t bytes = std::uint64_t{outcome.tests} * plan.size;
  Section differences = table_section("differences", "First differences",
                                      {{"test", "TEST"}, {"offset", "OFFSET"}, {"sent", "SENT"}, {"received", "RECEIVED"}});
  for (const auto& [test, comparison] : outcome.differences) {
    const auto byte_cell = [](std::uint8_t byte) { return text_cell(fmt::format("0x{:02x}", byte)); };
    differences.records.push_back(
        {number_cell(test), number_cell(*comparison.first), byte_cell(comparison.sent), byte_cell(comparison.received)});
  }
  return {.command = "loopback run",
          .sections = {record_section("loopback", "Loopback",
                                      {{"adapter", "Adapter", number_cell(adapter)},
                                       {"mode", "Mode", text_cell(mode_name(plan.mode))},
                                       {"pattern", "Pattern", text_cell(plan.pattern_name)},
                                       {"size", "Size", number_cell(plan.size, "bytes")},
                                       {"tests_wanted", "Tests wanted", number_cell(plan.tests)},
                                       {"sent", "Sent", flag_cell(outcome.sent)},
                                       {"tests", "Tests done", number_cell(outcome.tests)},
                                       {"bytes", "Bytes", number_cell(bytes)},
                                       {"seconds", "Time", {outcome.time.count(), fmt::format("{:.6f} s", outcome.time.count())}},
                                       {"bytes_per_second", "Throughput", rate_cell(outcome, bytes)},
                                       {"differing_tests", "Differing tests", number_cell(outcome.differing_tests)},
                                       {"differing_bytes", "Differing bytes", number_cell(outcome.differing_bytes)},
                                       {"differing_bits", "Differing bits", number_cell(outcome.differing_bits)},
                                       {"ended", "Ended", outcome.ended ? flag_cell(*outcome.ended) : absent()}}),
                       std::move(differences)}};
}

void run(Context& context, const Arguments& arguments) {
  Plan plan = plan_of(arguments);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const bool goes_ahead = context.may_change(
      fmt::format("put adapter {} into {} loopback, which takes its port out of the fabric", adapter, mode_name(plan.mode)));
  const Outcome outcome = goes_ahead ? run_tests(context, adapter, plan) : Outcome{};
  if (outcome.failure) context.report_failure(*outcome.failure);
  context.print(report_of(adapter, plan, outcome));
}

void end(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const bool goes_ahead = context.may_change(fmt::format("end the loopback of adapter {}", adapter));
  const std::uint32_t result = goes_ahead ? end_loopback(adapter) : DFC_OK;
  if (result != DFC_OK) throw end_failure(adapter, result);
  context.print(
      {.command = "loopback end",
       .sections = {record_section("loopback", "Loopback",
                                   {{"adapter", "Adapter", number_cell(adapter)}, {"sent", "Sent", flag_cell(goes_ahead)}})}});
}

}  // namespace

void add_loopback_commands(CommandLine& commands) {
  commands.group("loopback", "Loopback tests, during which a port is out of the fabric",
                 {"vaskdfc loopback run 0 --count 1000", "vaskdfc loopback run 0 --mode external --pattern walking-ones --yes"});
  auto arguments = std::make_shared<Arguments>();
  const Command command = commands.add_for_adapter(
      "loopback run", "Send data through the loop and compare what comes back; always ends the loopback, also on Ctrl-C",
      {"vaskdfc loopback run 0 --count 1000 --size 65536", "vaskdfc loopback run 0 --mode external --pattern walking-ones --yes",
       "vaskdfc loopback run 0 --file frames.bin --yes"},
      arguments, run);
  command.add_option("--mode", arguments->mode, "internal (1), the default, or external (2), which needs a loopback plug")
      .type_name("internal|external");
  command.add_option("--size", arguments->size, "Bytes of a test; 2048, or as many as the file has, unless it is given")
      .type_name("N");
  command.add_option("--count", arguments->count, "How many tests; 1 unless it is given").type_name("N");
  const auto pattern = command.add_option("--pattern", arguments->pattern, "What to send")
                           .type_name(fmt::format("{}", fmt::join(pattern_names(), "|")));
  command.add_option("-f,--file", arguments->file, "Send the bytes of this file, again and again")
      .type_name("FILE")
      .excludes(pattern);
  command.add_option("--argument", arguments->argument, "A number for the driver; 0 unless it is given").type_name("N");
  commands.add_for_adapter("loopback end", "End a loopback that somebody left behind", {"vaskdfc loopback end 0 --yes"}, arguments,
                           end);
}

}  // namespace vaskdfc::tool
