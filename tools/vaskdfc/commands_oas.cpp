// Commands about OAS rules, which are for single logical units: oas list, oas add, oas remove.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <span>

#include "change_report.h"
#include "command_line.h"
#include "decode.h"
#include "driver_list.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::string target;
  std::string lun;
  std::optional<std::string> initiator;
};

// Whose units the rules are about, and for whom.
struct Ports {
  std::uint32_t adapter;
  HbaWwn initiator;
  HbaWwn target;
};

void check(const Arguments& arguments) {
  wwn_argument("TARGET", arguments.target);
  if (arguments.initiator) wwn_argument("--initiator", *arguments.initiator);
}

Ports ports_of(const Session& session, const Arguments& arguments) {
  const std::uint32_t adapter = session.find(arguments.adapter);
  const HbaWwn initiator = arguments.initiator ? wwn_argument("--initiator", *arguments.initiator) : read_port(adapter).PortWWN;
  return {adapter, initiator, wwn_argument("TARGET", arguments.target)};
}

using Rules = std::vector<oas_lun_entry>;

// A target that nobody knows has no rules, which for a change is no reason to fail.
Rules read_rules(const Ports& ports, bool unknown_will_do) {
  constexpr std::uint32_t kRoom = 256;  // as many as the library receives
  DriverList<dfc_oas_lun_list, oas_lun_entry> list(kRoom);
  watch_driver_calls();
  const std::uint32_t result = DFC_GetOASLunList(ports.adapter, &ports.initiator, &ports.target, 0, list.get());
  if (result == DFC_OK) return list.entries();
  if (result == DFC_OAS_BAD000F && unknown_will_do) return {};
  throw operation_failure("the OAS rules cannot be read", ports.adapter, "DFC_GetOASLunList", Results::kOas, result);
}

std::uint8_t lun_of(const oas_lun_entry& rule) { return rule.lun[1]; }

// What the driver knows of the unit behind a rule, by this driver's layout.
Record rule_record(const oas_lun_entry& rule) {
  const std::span bytes(rule.bytes_0);
  return {number_cell(lun_of(rule)), flag_cell(rule.flag_bit_0 != 0),      flag_cell(rule.flag_bit_1 != 0),
          number_cell(rule.word_20), text_cell(colon_text(bytes.last(8))), text_cell(colon_text(bytes.first(8))),
          hex_cell(rule.word_16)};
}

void list(Context& context, const Arguments& arguments) {
  check(arguments);
  const Session session;
  const Ports ports = ports_of(session, arguments);
  Section section = table_section("rules", "Rules",
                                  {{"lun", "LUN"},
                                   {"enabled", "ENABLED"},
                                   {"unit_present", "UNIT"},
                                   {"blocks", "BLOCKS"},
                                   {"target_port", "TARGET PORT"},
                                   {"target_node", "TARGET NODE"},
                                   {"word_16", "WORD 16"}});
  for (const oas_lun_entry& rule : read_rules(ports, false)) section.records.push_back(rule_record(rule));
  context.print({.command = "oas list",
                 .sections = {record_section("ports", "Ports",
                                             {{"adapter", "Adapter", number_cell(ports.adapter)},
                                              {"initiator", "Initiator", wwn_cell(ports.initiator)},
                                              {"target", "Target", wwn_cell(ports.target)}}),
                              std::move(section)}});
}

// Whether the port knows the target is of no interest to a rule that is to go.
std::uint32_t switch_rule(const Ports& ports, std::uint8_t lun, bool enable) {
  const std::uint32_t result = DFC_SetOASLun(ports.adapter, &ports.initiator, &ports.target, lun, 0, 0, enable ? 1 : 0);
  const bool is_about_target = result == DFC_OAS_NO_NODES || result == DFC_OAS_NO_REMOTE_PORT;
  return is_about_target && !enable ? DFC_OK : result;
}

std::vector<Field> lun_fields(const std::vector<std::uint8_t>& luns) {
  std::vector<Field> fields;
  for (const std::uint8_t lun : luns)
    fields.push_back({fmt::format("lun_{}", lun), fmt::format("LUN {}", lun), text_cell("rule set")});
  return fields;
}

std::vector<std::uint8_t> luns_of(const Rules& rules) {
  std::vector<std::uint8_t> luns(rules.size());
  std::ranges::transform(rules, luns.begin(), lun_of);
  return luns;
}

void set(Context& context, const Arguments& arguments, const char* command, bool enable) {
  check(arguments);
  const auto lun = static_cast<std::uint8_t>(number_argument("LUN", arguments.lun, UINT8_MAX));
  const Session session;
  const Ports ports = ports_of(session, arguments);
  const auto before = luns_of(read_rules(ports, true));
  auto wanted = before;
  std::erase(wanted, lun);
  if (enable) wanted.push_back(lun);
  const Setting setting{
      .command = command,
      .adapter = ports.adapter,
      .intent = fmt::format("{} the OAS rule for LUN {} of {}", enable ? "set" : "remove", lun, wwn_text(ports.target)),
      .place = "the list of OAS rules",
      .operation = "DFC_SetOASLun",
      .results = Results::kOas,
      .read = [=] { return lun_fields(luns_of(read_rules(ports, true))); },
      .write = [=] { return switch_rule(ports, lun, enable); }};
  change(context, setting, lun_fields(before), lun_fields(wanted));
}

void add_rule(Context& context, const Arguments& arguments) { set(context, arguments, "oas add", true); }

void remove_rule(Context& context, const Arguments& arguments) { set(context, arguments, "oas remove", false); }

}  // namespace

void add_oas_commands(CommandLine& commands) {
  const std::string target = "50:5a:41:00:0c:00:10:01";
  commands.group("oas", "OAS rules for single logical units, in SLI mode 4",
                 {fmt::format("vaskdfc oas list 0 {}", target), fmt::format("vaskdfc oas add 0 {} 1", target)});
  auto arguments = std::make_shared<Arguments>();
  const auto command = [&](const char* name, const char* summary, const std::vector<std::string>& examples, auto action) {
    const Command added = commands.add_for_adapter(name, summary, examples, arguments, action);
    added.add_option("TARGET", arguments->target, "Port WWN of the remote port").required();
    added.add_option("--initiator", arguments->initiator, "Port WWN of the adapter's or of a virtual port; the adapter's otherwise")
        .type_name("WWN");
    return added;
  };
  command("oas list", "List the rules about a remote port", {fmt::format("vaskdfc oas list 0 {}", target)}, list);
  command("oas add", "Set a rule", {fmt::format("vaskdfc oas add 0 {} 1 --yes", target)}, add_rule)
      .add_option("LUN", arguments->lun, "0 to 255")
      .required();
  command("oas remove", "Remove a rule", {fmt::format("vaskdfc oas remove 0 {} 1 --dry-run", target)}, remove_rule)
      .add_option("LUN", arguments->lun, "0 to 255")
      .required();
}

}  // namespace vaskdfc::tool
