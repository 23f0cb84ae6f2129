#include "change_report.h"

#include <fmt/format.h>
#include <vaskdfc/result.h>

#include <algorithm>
#include <optional>

#include "driver_calls.h"

namespace vaskdfc::tool {
namespace {

Cell cell_in(const std::vector<Field>& fields, const std::string& key) {
  const auto found = std::ranges::find(fields, key, &Field::key);
  return found == fields.end() ? absent() : found->cell;
}

Section changes_section(const std::vector<Change>& changes) {
  Section section = table_section("changes", "Changes", {{"field", "FIELD"}, {"old", "OLD"}, {"new", "NEW"}});
  for (const Change& change : changes) section.records.push_back({{change.key, change.title}, change.before, change.after});
  return section;
}

// How far a change got. Without a read-back nothing is verified.
struct Outcome {
  bool sent = false;
  std::optional<bool> verified;
};

void print(const Context& context, const Setting& setting, const std::vector<Change>& changes, const Outcome& outcome) {
  context.print(
      {.command = setting.command,
       .sections = {record_section("write", "Write",
                                   {{"adapter", "Adapter", number_cell(setting.adapter)},
                                    {"sent", "Sent", flag_cell(outcome.sent)},
                                    {"verified", "Verified", outcome.verified ? flag_cell(*outcome.verified) : absent()}}),
                    changes_section(changes)}});
}

std::string contents(const std::vector<Change>& not_as_wanted) {
  std::vector<std::string> fields;
  for (const Change& change : not_as_wanted) fields.push_back(fmt::format("{} {}", change.title, change.before.text));
  return fmt::format("{}", fmt::join(fields, ", "));
}

// Why a write cannot count as done; empty for one that can.
std::string complaint(const Setting& setting, const std::vector<Field>& before, const std::vector<Field>& wanted,
                      const std::vector<Field>& now, std::uint32_t result) {
  const auto missed = changes_between(now, wanted);
  const std::string what = contents(missed);
  if (missed.empty()) {
    return result == DFC_OK ? ""
                            : fmt::format("the write did not succeed, although {} holds what was to be written", setting.place);
  }
  if (!changes_between(before, now).empty()) {
    return fmt::format("after the write {} holds something else than was written: {}", setting.place, what);
  }
  if (result != DFC_OK) return fmt::format("the write failed; {} still holds: {}", setting.place, what);
  return fmt::format("the driver accepted nothing, although the write was reported as done; {} still holds: {}", setting.place,
                     what);
}

void write_and_verify(Context& context, const Setting& setting, const std::vector<Field>& before,
                      const std::vector<Field>& wanted) {
  const auto changes = changes_between(before, wanted);
  watch_driver_calls();
  const std::uint32_t result = setting.write();
  // The calls of the read-back must not hide those of the write.
  Failure failure = operation_failure("", setting.adapter, setting.operation, setting.results, result);
  std::vector<Field> now;
  try {
    now = setting.read();
  } catch (const Failure& unreadable) {
    print(context, setting, changes, {.sent = true, .verified = std::nullopt});
    context.report_failure(unreadable);
    failure.message = fmt::format("the write cannot be verified: {} cannot be read back", setting.place);
    throw Failure(failure);
  }
  failure.message = complaint(setting, before, wanted, now, result);
  print(context, setting, changes, {.sent = true, .verified = changes_between(now, wanted).empty()});
  if (!failure.message.empty()) throw Failure(failure);
}

}  // namespace

std::vector<Change> changes_between(const std::vector<Field>& before, const std::vector<Field>& after) {
  std::vector<Change> changes;
  const auto compare = [&](const Field& field) {
    Change change{field.key, field.title, cell_in(before, field.key), cell_in(after, field.key)};
    if (change.before.text != change.after.text) changes.push_back(std::move(change));
  };
  for (const Field& field : before) compare(field);
  for (const Field& field : after) {
    if (std::ranges::find(before, field.key, &Field::key) == before.end()) compare(field);
  }
  return changes;
}

void change(Context& context, const Setting& setting, const std::vector<Field>& before, const std::vector<Field>& wanted) {
  const auto changes = changes_between(before, wanted);
  const std::string intent = fmt::format("{} of adapter {}", setting.intent, setting.adapter);
  if (changes.empty()) {
    context.remark(fmt::format("nothing to change: {} of adapter {} is as asked for already", setting.place, setting.adapter));
    return print(context, setting, changes, {});
  }
  const std::string preview = render_table({.command = setting.command, .sections = {changes_section(changes)}}, true);
  if (!context.may_change(intent, preview)) return print(context, setting, changes, {});
  write_and_verify(context, setting, before, wanted);
}

void change(Context& context, const Setting& setting, const std::vector<Field>& wanted) {
  change(context, setting, setting.read(), wanted);
}

}  // namespace vaskdfc::tool
