// Commands about port counters: stats, once or watched.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <memory>
#include <optional>

#include "command_line.h"
#include "counters.h"
#include "repetition.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  bool reset = false;
  std::optional<std::string> watch;
  std::optional<std::string> count;
};

using Clock = std::chrono::steady_clock;

struct Reading {
  Clock::time_point time;
  HbaPortStatistics statistics;
};

Reading read(std::uint32_t adapter) { return {Clock::now(), read_statistics(adapter)}; }

// The driver keeps counting as before: only this process takes the counters from here.
void reset(std::uint32_t adapter) {
  watch_driver_calls();
  const std::uint32_t result = ResetStatistics(adapter);
  if (result == HBA_STATUS_OK) return;
  throw operation_failure("the port counters cannot be started again", adapter, "ResetStatistics", Results::kHba, result);
}

Cell value_cell(const std::optional<std::uint64_t>& value) { return value ? number_cell(*value) : Cell{nullptr, "not supported"}; }

Cell bytes_cell(const Counter& counter, const std::optional<std::uint64_t>& value) {
  return value && counts_words(counter) ? number_cell(*value * kWordBytes) : absent();
}

Section counters_section(const HbaPortStatistics& statistics, const SupportedCounters& supported) {
  Section section =
      table_section("counters", "Counters",
                    {{"counter", "COUNTER"}, {"supported", "SUPPORTED"}, {"value", "VALUE"}, {"unit", "UNIT"}, {"bytes", "BYTES"}});
  for (const Counter& counter : kPortCounters) {
    const auto value = value_of(statistics, counter, supported);
    section.records.push_back({{counter.key, counter.title},
                               flag_cell(value.has_value()),
                               value_cell(value),
                               text_cell(counter.unit),
                               bytes_cell(counter, value)});
  }
  return section;
}

// Rates are of the time between the two readings; a tenth is as much as people read.
Cell rate_cell(std::uint64_t distance, Seconds time) { return decimal_cell(static_cast<double>(distance) / time.count(), 1); }

Record rate_record(const Counter& counter, const Reading& before, const Reading& now, const SupportedCounters& supported) {
  const Cell name{counter.key, counter.title};
  const auto from = value_of(before.statistics, counter, supported);
  const auto to = value_of(now.statistics, counter, supported);
  if (!from || !to) return {name, value_cell(to), absent(), text_cell(counter.unit), absent(), absent(), absent()};
  const Movement moved = movement(*from, *to, was_restarted(before.statistics, now.statistics));
  const bool known = moved.kind != Movement::Kind::kReset;
  const Seconds time = now.time - before.time;
  return {name,
          value_cell(to),
          known ? number_cell(moved.distance) : absent(),
          text_cell(counter.unit),
          known ? rate_cell(moved.distance, time) : absent(),
          known && counts_words(counter) ? rate_cell(moved.distance * kWordBytes, time) : absent(),
          mark_cell(moved.kind)};
}

Section rates_section(const Reading& before, const Reading& now, const SupportedCounters& supported) {
  Section section = table_section("rates", "Rates",
                                  {{"counter", "COUNTER"},
                                   {"value", "VALUE"},
                                   {"change", "CHANGE"},
                                   {"unit", "UNIT"},
                                   {"per_second", "PER SECOND"},
                                   {"bytes_per_second", "BYTES PER SECOND"},
                                   {"mark", "MARK"}});
  for (const Counter& counter : kPortCounters) section.records.push_back(rate_record(counter, before, now, supported));
  return section;
}

Report rates_report(std::uint32_t adapter, std::uint32_t sample, const Reading& before, const Reading& now,
                    const SupportedCounters& supported) {
  const double time = Seconds(now.time - before.time).count();
  return {.command = "stats",
          .sections = {record_section("sample", "Sample",
                                      {{"adapter", "Adapter", number_cell(adapter)},
                                       {"number", "Number", number_cell(sample)},
                                       {"seconds", "Seconds", decimal_cell(time, 3)}}),
                       rates_section(before, now, supported)}};
}

void watch(Context& context, std::uint32_t adapter, Seconds interval, std::optional<std::uint32_t> count,
           const SupportedCounters& supported) {
  const Interruptible interruptible;
  Reading before = read(adapter);
  for (std::uint32_t sample = 1; !count || sample <= *count; ++sample) {
    if (!interruptible.wait(interval)) return;
    const Reading now = read(adapter);
    context.print_next(rates_report(adapter, sample, before, now, supported));
    before = now;
  }
}

void stats(Context& context, const Arguments& arguments) {
  const auto interval = arguments.watch ? std::optional(seconds_argument("--watch", *arguments.watch)) : std::nullopt;
  const auto count = times_argument("--count", arguments.count);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  // Before a reset, which hides what the driver says.
  const SupportedCounters supported(read_statistics(adapter));
  if (arguments.reset) reset(adapter);
  if (interval) return watch(context, adapter, *interval, count, supported);
  context.print({.command = "stats",
                 .sections = {record_section("port", "Port",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"since_reset", "Since reset", flag_cell(arguments.reset)}}),
                              counters_section(read_statistics(adapter), supported)}});
}

}  // namespace

void add_stats_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const Command command = commands.add_for_adapter(
      "stats", "Show the port counters, or how fast they move",
      {"vaskdfc stats 0", "vaskdfc stats 0 --watch 5", "vaskdfc stats 0 --reset --watch 1 --count 60 -o json"}, arguments, stats);
  command.add_flag("--reset", arguments->reset, "Count from now on; the driver and other programs count on as before");
  const auto watched =
      command.add_option("--watch", arguments->watch, "Show rates again and again, every so many seconds").type_name("SECONDS");
  command.add_option("--count", arguments->count, "With --watch: end after so many times").type_name("N").needs(watched);
}

}  // namespace vaskdfc::tool
