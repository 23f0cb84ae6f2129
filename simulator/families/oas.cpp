// OAS rules: logical units behind remote ports that get the fast way.
#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

#include "driver/driver.h"
#include "families/families.h"
#include "families/interface_generation.h"
#include "families/local_ports.h"
#include "families/wwn.h"

namespace simulator {
namespace {

using scenario::OasRule;
using scenario::Port;
using vaskdfc::OasListReply;
using vaskdfc::OasRuleKey;
using vaskdfc::OasRuleRecord;

constexpr std::uint32_t kVersion = 1;

static_assert(scenario::kMostOasRules <= std::extent_v<decltype(OasListReply::rules)>);

// Success, or why a callback is not served; it carries its own number, too.
DriverStatus serves(const BoardCall& call, Callback callback) {
  if (const DriverStatus status = newer_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  return call.header.arg6 == static_cast<std::uint32_t>(callback) ? VMKMGMT_SIM_DRIVER_OK : VMKMGMT_SIM_DRIVER_BAD_COMMAND;
}

DriverStatus may_change(const BoardCall& call, Callback callback) {
  if (const DriverStatus status = serves(call, callback); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const bool enabled = call.adapter.parameters().value(scenario::kOasParameter) != 0;
  return enabled ? VMKMGMT_SIM_DRIVER_OK : VMKMGMT_SIM_DRIVER_SWITCHED_OFF;
}

DriverStatus version(BoardCall& call) {
  if (const DriverStatus status = serves(call, Callback::kOasVer); status != VMKMGMT_SIM_DRIVER_OK) return status;
  call.header.arg4 = kVersion;
  return VMKMGMT_SIM_DRIVER_OK;
}

// Reads hexadecimal digits of a rule's key from its start on.
struct KeyReader {
  std::string_view text;
  bool sound = true;

  std::uint64_t number(std::size_t digits) {
    const std::string_view part = text.substr(0, digits);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value, 16);
    sound = sound && part.size() == digits && error == std::errc() && end == part.data() + digits;
    text.remove_prefix(part.size());
    return value;
  }

  HbaWwn name() {
    HbaWwn result;
    for (std::uint8_t& byte : result.wwn) byte = static_cast<std::uint8_t>(number(2));
    return result;
  }
};

// None for a text that names no rule which this driver keeps.
std::optional<OasRule> rule_of(const OasRuleKey& key) {
  KeyReader reader{{key.text, strnlen(key.text, sizeof(key.text))}};
  const std::uint64_t rule_version = reader.number(2);
  OasRule rule{.initiator = reader.name(), .target = reader.name(), .lun = 0};
  const std::uint64_t lun = reader.number(16);
  if (!reader.sound || !reader.text.empty() || rule_version > kVersion || lun > scenario::kLastOasLun) return std::nullopt;
  rule.lun = static_cast<std::uint32_t>(lun);
  return rule;
}

// The node of this WWN that a local port sees; null if it sees none.
const Port* find_target(const Adapter& adapter, const Port& local, const HbaWwn& wwpn) {
  const auto nodes = nodes_of(adapter, local);
  const auto found = std::ranges::find_if(nodes, [&](const Port* node) { return node->wwpn == wwpn; });
  return found == nodes.end() ? nullptr : *found;
}

DriverStatus enable(Adapter& adapter, const OasRule& rule) {
  if (!adapter.oas_rules().add(rule)) return VMKMGMT_SIM_DRIVER_NO_RULE_ROOM;
  const bool waits = find_target(adapter, *find_local(adapter, rule.initiator), rule.target) == nullptr;
  return waits ? VMKMGMT_SIM_DRIVER_RULE_WAITS : VMKMGMT_SIM_DRIVER_OK;
}

DriverStatus set_rule(BoardCall& call, const OasRuleKey& key) {
  constexpr std::uint32_t kEnable = 1;
  constexpr std::uint32_t kDisable = 2;
  if (const DriverStatus status = may_change(call, Callback::kOasSetRule); status != VMKMGMT_SIM_DRIVER_OK) return status;
  if (call.header.arg5 != kEnable && call.header.arg5 != kDisable) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  const std::optional<OasRule> rule = rule_of(key);
  if (!rule || find_local(call.adapter, rule->initiator) == nullptr) return VMKMGMT_SIM_DRIVER_BAD_RULE;

  if (call.header.arg5 == kEnable) return enable(call.adapter, *rule);
  return call.adapter.oas_rules().remove(*rule) ? VMKMGMT_SIM_DRIVER_OK : VMKMGMT_SIM_DRIVER_NO_SUCH_RULE;
}

// What a record says besides the LUN is this driver's choice.
OasRuleRecord record_of(const OasRule& rule, const Port* target) {
  constexpr std::uint8_t kEnabled = 0x1;
  constexpr std::uint8_t kHasUnit = 0x2;
  OasRuleRecord record{};
  record.word_16 = rule.lun;
  record.flags = kEnabled;
  if (target == nullptr) return record;

  std::ranges::copy(target->wwnn.wwn, record.bytes_0);
  std::ranges::copy(target->wwpn.wwn, record.bytes_0 + sizeof(HbaWwn));
  const auto unit = std::ranges::find(target->units, rule.lun, &scenario::LogicalUnit::lun);
  if (unit == target->units.end()) return record;
  record.word_20 = unit->blocks;
  record.flags |= kHasUnit;
  return record;
}

DriverStatus list_rules(BoardCall& call, const HbaWwn& initiator, const HbaWwn& target, OasListReply& reply) {
  if (const DriverStatus status = may_change(call, Callback::kOasGet); status != VMKMGMT_SIM_DRIVER_OK) return status;
  const Port* const local = find_local(call.adapter, initiator);
  if (local == nullptr) return VMKMGMT_SIM_DRIVER_NO_SUCH_LOCAL_PORT;

  const Port* const node = find_target(call.adapter, *local, target);
  std::vector<OasRuleRecord> records;
  for (const OasRule& rule : call.adapter.oas_rules().load()) {
    if (rule.initiator == initiator && rule.target == target) records.push_back(record_of(rule, node));
  }
  if (records.empty() && node == nullptr) return VMKMGMT_SIM_DRIVER_NO_SUCH_TARGET;
  reply = {};
  std::ranges::copy(records, reply.rules);
  call.header.arg3 = static_cast<std::uint32_t>(records.size());
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_oas(Door& door) {
  door.on<Callback::kOasVer>(version);
  door.on<Callback::kOasSetRule>(set_rule);
  door.on<Callback::kOasGet>(list_rules);
}

}  // namespace simulator
