// Commands that watch all adapters at once: top.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "command_line.h"
#include "live_view.h"
#include "live_view_rows.h"
#include "repetition.h"
#include "session.h"
#include "terminal.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string interval = "1";
  std::optional<std::string> count;
};

struct Pace {
  Seconds interval;
  std::optional<std::uint32_t> count;  // of samples; without it there is no end

  bool goes_on_after(std::uint32_t sample) const { return !count || sample < *count; }
};

// --- without a terminal

Cell rate_cell(const std::optional<Rate>& rate) { return rate && rate->per_second ? decimal_cell(*rate->per_second, 1) : absent(); }

Cell text_or_absent(const std::optional<std::string>& text) { return text ? text_cell(*text) : absent(); }

// What happened to any of the counters.
Cell mark_of(const LiveRates& rates) {
  Movement::Kind kind = Movement::Kind::kForward;
  for (const auto& rate : {rates.received, rates.sent, rates.frames, rates.errors}) kind = std::max(kind, rate ? rate->kind : kind);
  return mark_cell(kind);
}

Section sample_section(std::uint32_t sample, const std::vector<LiveRow>& rows) {
  Section section = table_section("adapters", "Adapters",
                                  {{"sample", "SAMPLE"},
                                   {"adapter", "ADAPTER"},
                                   {"model", "MODEL"},
                                   {"state", "STATE"},
                                   {"speed", "SPEED"},
                                   {"seconds", "SECONDS"},
                                   {"received_bytes_per_second", "RX BYTES/s"},
                                   {"sent_bytes_per_second", "TX BYTES/s"},
                                   {"frames_per_second", "FRAMES/s"},
                                   {"errors_per_second", "ERRORS/s"},
                                   {"mark", "MARK"},
                                   {"problem", "ERROR"}});
  for (const LiveRow& row : rows) {
    const LiveRates& rates = row.rates;
    section.records.push_back({number_cell(sample), number_cell(row.adapter), text_or_absent(row.model), text_or_absent(row.state),
                               text_or_absent(row.speed), rates.seconds ? decimal_cell(*rates.seconds, 3) : absent(),
                               rate_cell(rates.received), rate_cell(rates.sent), rate_cell(rates.frames), rate_cell(rates.errors),
                               mark_of(rates), row.problem.empty() ? absent() : text_cell(row.problem)});
  }
  return section;
}

void print_sample(Context& context, std::uint32_t sample, const std::vector<LiveRow>& rows) {
  if (context.options().output.form != Form::kTable) {
    return context.print_next({.command = "top", .sections = {sample_section(sample, rows)}});
  }
  std::string lines = sample == 1 && context.options().output.header ? plain_titles() : "";
  for (const LiveRow& row : rows) lines += plain_line(sample, row);
  context.write(lines);
}

void print_samples(Context& context, LiveRows& adapters, const Pace& pace) {
  const Interruptible interruptible;
  const auto read = [&] {
    for (const Failure& failure : adapters.read()) context.report_failure(failure);
  };
  read();
  for (std::uint32_t sample = 1; interruptible.wait(pace.interval); ++sample) {
    read();
    print_sample(context, sample, adapters.rows());
    if (!pace.goes_on_after(sample)) return;
  }
}

// --- on a terminal

std::string heading(std::size_t adapters, const Pace& pace, std::uint32_t sample) {
  return fmt::format("vaskdfc top: {} adapter{}, every {:g} s{}", adapters, adapters == 1 ? "" : "s", pace.interval.count(),
                     sample == 0 ? "" : fmt::format(", sample {}", sample));
}

// What the adapters' failures are, their rows say.
void view_samples(LiveRows& adapters, const Pace& pace) {
  using Happening = Terminal::Happening;
  ViewOptions options{.utf8 = shows_utf8(environment_variable), .colour = shows_colour(environment_variable)};
  const auto wait = std::chrono::duration_cast<Terminal::Clock::duration>(pace.interval);
  const Terminal terminal;
  adapters.read();
  auto next = Terminal::Clock::now() + wait;
  std::uint32_t sample = 0;
  while (true) {
    const auto [columns, lines] = terminal.size();
    options.columns = columns;
    options.lines = lines;
    terminal.show(draw(adapters.rows(), heading(adapters.rows().size(), pace, sample), options));
    const Terminal::Event event = terminal.wait_until(next);
    if (event.happening == Happening::kEnd || (event.happening == Happening::kKey && event.key == kQuitKey)) return;
    if (event.happening == Happening::kKey) apply_key(event.key, options);
    if (event.happening != Happening::kTime) continue;
    adapters.read();
    if (!pace.goes_on_after(++sample)) return;
    next = Terminal::Clock::now() + wait;
  }
}

void top(Context& context, const Arguments& arguments) {
  const Pace pace{seconds_argument("--interval", arguments.interval), times_argument("--count", arguments.count)};
  const Session session;
  LiveRows adapters(session.adapters());
  const bool is_for_people = context.options().output.form == Form::kTable;
  // Driver calls that are shown would be written all over the screen.
  if (is_for_people && !context.options().verbose && Terminal::is_there()) return view_samples(adapters, pace);
  print_samples(context, adapters, pace);
}

}  // namespace

void add_top_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const Command command =
      commands.add("top", "Watch the throughput, frames, errors and links of all adapters",
                   {"vaskdfc top", "vaskdfc top --interval 5", "vaskdfc top --count 10 -o csv", "vaskdfc top -o json | jq ."},
                   [arguments](Context& context) { top(context, *arguments); });
  command.add_option("--interval", arguments->interval, "Time between two samples; 1 unless it is given").type_name("SECONDS");
  command.add_option("--count", arguments->count, "End after so many samples").type_name("N");
}

}  // namespace vaskdfc::tool
