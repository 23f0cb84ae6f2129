// Commands about events: events.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <optional>
#include <utility>

#include "code_names.h"
#include "command_line.h"
#include "decode.h"
#include "repetition.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::optional<std::string> adapter;
  bool follow = false;
};

// The event information of FC-HBA.
struct EventInformation {
  std::uint32_t code;
  std::uint32_t fc_id;
  std::uint32_t page;  // of an RSCN: which ports it is about
  std::array<std::uint32_t, 2> reserved;
};

constexpr std::uint32_t kRscn = 5;

std::string event_name(std::uint32_t code) {
  constexpr std::array<std::pair<std::uint32_t, const char*>, 6> kNames{
      {{1, "LIP"}, {2, "link up"}, {3, "link down"}, {4, "LIP reset"}, {kRscn, "RSCN"}, {0xFFFF, "proprietary"}}};
  return name_in(kNames, code, fmt::format("0x{:x}", code));
}

std::vector<HbaEvent> take_events(std::uint32_t adapter) {
  constexpr std::uint32_t kRoom = 32;
  std::vector<HbaEvent> events(kRoom);
  std::uint32_t count = kRoom;
  watch_driver_calls();
  const std::uint32_t result = GetEventBuffer(adapter, events.data(), &count);
  if (result != HBA_STATUS_OK) {
    throw operation_failure("the events cannot be read", adapter, "GetEventBuffer", Results::kHba, result);
  }
  events.resize(std::min(count, kRoom));
  return events;
}

std::vector<Column> event_columns() {
  return {{"adapter", "ADAPTER"}, {"event", "EVENT"}, {"fc_id", "FC ID"}, {"affected", "AFFECTED"}, {"missed", "MISSED"}};
}

// `missed`: events that the driver lost before it told of this one.
Record event_record(std::uint32_t adapter, const HbaEvent& event, std::uint32_t missed) {
  const auto information = std::bit_cast<EventInformation>(event);
  return {number_cell(adapter), text_cell(event_name(information.code)), fc_id_cell(information.fc_id),
          information.code == kRscn ? hex_cell(information.page) : absent(), number_cell(missed)};
}

// Everything that is queued.
std::vector<Record> drained(std::uint32_t adapter) {
  constexpr int kMostReads = 64;  // a driver that raises events faster than they are read must not hold the command up
  std::vector<Record> records;
  for (int i = 0; i < kMostReads; ++i) {
    const auto events = take_events(adapter);
    std::uint32_t missed = EventMissedCount;
    for (const HbaEvent& event : events) records.push_back(event_record(adapter, event, std::exchange(missed, 0)));
    if (events.empty()) break;
  }
  return records;
}

std::vector<std::uint32_t> adapters_of(const Session& session, const std::optional<std::string>& name) {
  if (name) return {session.find(*name)};
  std::vector<std::uint32_t> adapters;
  for (std::uint32_t adapter = 0; adapter < session.adapters(); ++adapter) adapters.push_back(adapter);
  return adapters;
}

// One adapter that fails does not hide the events of the others.
std::vector<Record> all_events(Context& context, const std::vector<std::uint32_t>& adapters) {
  std::vector<Record> records;
  for (const std::uint32_t adapter : adapters) {
    try {
      for (Record& record : drained(adapter)) records.push_back(std::move(record));
    } catch (const Failure& failure) {
      context.report_failure(failure);
    }
  }
  return records;
}

// An event a line, from now on.
void follow(Context& context, std::vector<std::uint32_t> adapters) {
  constexpr Seconds kPause(0.25);
  const Interruptible interruptible;
  do {
    std::erase_if(adapters, [&](std::uint32_t adapter) {
      try {
        for (const Record& record : drained(adapter)) {
          Section section = table_section("events", "Events", event_columns());
          section.records.push_back(record);
          context.print_next({.command = "events", .sections = {std::move(section)}});
        }
        return false;
      } catch (const Failure& failure) {
        context.report_failure(failure);
        return true;  // said once
      }
    });
    if (adapters.empty()) return;
  } while (interruptible.wait(kPause));
}

void events(Context& context, const Arguments& arguments) {
  const Session session;
  const auto adapters = adapters_of(session, arguments.adapter);
  if (arguments.follow) return follow(context, adapters);
  Section section = table_section("events", "Events", event_columns());
  section.records = all_events(context, adapters);
  context.print({.command = "events", .sections = {std::move(section)}});
}

}  // namespace

void add_events_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const Command command = commands.add("events", "Take the events that the driver has queued",
                                       {"vaskdfc events", "vaskdfc events 0", "vaskdfc events --follow -o json"},
                                       [arguments](Context& context) { events(context, *arguments); });
  command.add_option("ADAPTER", arguments->adapter, "Adapter: its index, or its port WWN; all of them unless it is given");
  command.add_flag("--follow", arguments->follow, "Wait for more until Ctrl-C, and show each as it comes");
}

}  // namespace vaskdfc::tool
