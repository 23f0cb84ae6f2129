// Commands about the priority of FCP I/O: qos flag, qos list, qos set, qos speed.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "change_report.h"
#include "command_line.h"
#include "priority_rules.h"
#include "raw_file.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::optional<std::string> value;
  std::string file;
  bool keep_order = false;
};

Failure failure_of(const char* message, std::uint32_t adapter, const char* operation, std::uint32_t result) {
  return operation_failure(message, adapter, operation, Results::kDfc, result);
}

// --- qos flag

std::uint32_t read_flag(std::uint32_t adapter) {
  std::uint32_t flag = 0;
  watch_driver_calls();
  const std::uint32_t result = DFC_QoSGetGlobalFlag(adapter, &flag);
  if (result == DFC_OK) return flag;
  throw failure_of("the priority flag cannot be read", adapter, "DFC_QoSGetGlobalFlag", result);
}

std::uint32_t flag_argument(const std::string& spelling) {
  if (spelling == "on") return 1;
  if (spelling == "off") return 0;
  return number_argument("VALUE", spelling);
}

std::vector<Field> flag_fields(std::uint32_t flag) { return {{"flag", "Flag", number_cell(flag)}}; }

void set_flag(Context& context, std::uint32_t adapter, std::uint32_t wanted) {
  const Setting setting{.command = "qos flag",
                        .adapter = adapter,
                        .intent = fmt::format("set the priority flag to {}", wanted),
                        .place = "the priority flag",
                        .operation = "DFC_QoSSetGlobalFlag",
                        .results = Results::kDfc,
                        .read = [=] { return flag_fields(read_flag(adapter)); },
                        .write = [=] { return DFC_QoSSetGlobalFlag(adapter, wanted); }};
  change(context, setting, flag_fields(wanted));
}

void flag(Context& context, const Arguments& arguments) {
  const std::uint32_t wanted = flag_argument(arguments.value.value_or("on"));  // wrong usage, whatever the adapter
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  if (arguments.value) return set_flag(context, adapter, wanted);
  const std::uint32_t now = read_flag(adapter);
  context.print(
      {.command = "qos flag",
       .sections = {record_section(
           "priority", "Priority",
           joined({{"adapter", "Adapter", number_cell(adapter)}, {"on", "On", flag_cell(now != 0)}}, flag_fields(now)))}});
}

// --- qos list, qos set

struct DriverRules {
  PriorityRules rules;
  std::uint32_t count = 0;  // that the driver has, which may be more than travel
};

DriverRules read_rules(std::uint32_t adapter) {
  const auto list = std::make_unique<dfc_fcp_prio_list>();
  list->count = kMostRules;
  watch_driver_calls();
  const std::uint32_t result = DFC_QoSGetConfig(adapter, list.get());
  if (result != DFC_OK && result != DFC_TOO_SMALL) {
    throw failure_of("the priority rules cannot be read", adapter, "DFC_QoSGetConfig", result);
  }
  return {{list->entries, list->entries + std::min<std::size_t>(list->count, kMostRules)}, list->count};
}

std::uint32_t write_rules(std::uint32_t adapter, const PriorityRules& rules) {
  const auto list = std::make_unique<dfc_fcp_prio_list>();
  list->count = static_cast<std::uint32_t>(rules.size());
  std::ranges::copy(rules, list->entries);
  return DFC_QoSSetConfig(adapter, list.get());
}

void list(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const DriverRules found = read_rules(adapter);
  if (found.count > found.rules.size()) {
    context.remark(fmt::format("the driver has {} rules, of which {} can be read", found.count, found.rules.size()));
  }
  context.print({.command = "qos list", .sections = {rules_section(found.rules)}});
}

void set(Context& context, const Arguments& arguments) {
  constexpr std::size_t kMostFileBytes = 1U << 20;
  const auto bytes = read_file(arguments.file, kMostFileBytes);
  PriorityRules rules = parse_rules(arguments.file, {bytes.begin(), bytes.end()});
  if (arguments.keep_order) std::ranges::reverse(rules);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const Setting setting{.command = "qos set",
                        .adapter = adapter,
                        .intent = fmt::format("replace the priority rules by {}, in this order,", rules.size()),
                        .place = "the table of priority rules",
                        .operation = "DFC_QoSSetConfig",
                        .results = Results::kDfc,
                        .read = [=] { return rule_fields(read_rules(adapter).rules); },
                        .write = [=] { return write_rules(adapter, rules); }};
  change(context, setting, rule_fields(as_sent(rules)));
}

// --- qos speed

void speed(Context& context, const Arguments& arguments) {
  constexpr std::uint64_t kMegabits = 10;  // the library's unit, where the driver's is a megabit a second
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  std::uint16_t value = 0;
  watch_driver_calls();
  const std::uint32_t result = DFC_GetQoSLinkSpeed(adapter, &value);
  if (result != DFC_OK) {
    throw operation_failure("the logical link speed cannot be read", adapter, "DFC_GetQoSLinkSpeed", Results::kRegion, result);
  }
  const bool is_known = value != DFC_LINK_SPEED_UNKNOWN;
  context.print(
      {.command = "qos speed",
       .sections = {record_section("speed", "Speed",
                                   {{"adapter", "Adapter", number_cell(adapter)},
                                    {"megabits", "Link speed", is_known ? number_cell(value * kMegabits, "Mb/s") : absent()},
                                    {"value", "Value", number_cell(value)}})}});
}

}  // namespace

void add_qos_commands(CommandLine& commands) {
  commands.group("qos", "Priority of FCP I/O", {"vaskdfc qos list 0", "vaskdfc qos set 0 rules.csv", "vaskdfc qos flag 0 on"});
  auto arguments = std::make_shared<Arguments>();
  commands
      .add_for_adapter("qos flag", "Show whether the rules count, or set it", {"vaskdfc qos flag 0", "vaskdfc qos flag 0 on --yes"},
                       arguments, flag)
      .add_option("VALUE", arguments->value, "Whether they do, or a number for the driver")
      .type_name("on|off|NUMBER");
  commands.add_for_adapter("qos list", "List the rules in the driver's order",
                           {"vaskdfc qos list 0", "vaskdfc qos list 0 -o csv > rules.csv"}, arguments, list);
  const Command command = commands.add_for_adapter(
      "qos set", "Replace the rules by those of a file; the most specific ones go first, and each group is turned round",
      {"vaskdfc qos set 0 rules.csv --dry-run", "vaskdfc qos set 0 rules.json --keep-order"}, arguments, set);
  command.add_option("FILE", arguments->file, "CSV with the columns match1 to match4 and prio, or JSON if it is named *.json")
      .type_name("FILE")
      .required();
  command.add_flag("--keep-order", arguments->keep_order,
                   "Turn the rules round first, so that each group keeps its order in the file");
  commands.add_for_adapter("qos speed", "Show the logical link speed", {"vaskdfc qos speed 0"}, arguments, speed);
}

}  // namespace vaskdfc::tool
