#include "priority_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "decode.h"
#include "failure.h"

namespace vaskdfc::tool {
namespace {

constexpr const char* kWildcard = "*";
constexpr const char* kPriorityColumn = "prio";
constexpr const char* kPositionColumn = "position";  // which lists have and files may have

struct Key {
  const char* column;
  const char* title;  // what this driver matches with it
  std::uint8_t (fcp_prio_entry::*bytes)[8];
};

constexpr std::array kKeys{Key{"match1", "INITIATOR", &fcp_prio_entry::match1}, Key{"match2", "TARGET", &fcp_prio_entry::match2},
                           Key{"match3", "LUN", &fcp_prio_entry::match3}, Key{"match4", "APPLICATION", &fcp_prio_entry::match4}};

bool is_wildcard(const fcp_prio_entry& rule, const Key& key) {
  return std::ranges::all_of(rule.*key.bytes, [](std::uint8_t byte) { return byte == 0xFF; });
}

std::string key_text(const fcp_prio_entry& rule, const Key& key) {
  return is_wildcard(rule, key) ? kWildcard : colon_text(rule.*key.bytes);
}

// For people without the colons, with which four keys would not fit a line.
Cell key_cell(const fcp_prio_entry& rule, const Key& key) {
  std::string bare_text = key_text(rule, key);
  std::erase(bare_text, ':');
  return {key_text(rule, key), bare_text};
}

// --- Reading files

Failure mistake(const std::string& where, const std::string& what) {
  return usage_failure(fmt::format("{}: {}", where, what),
                       "a rule has the keys match1 to match4, each * or 8 bytes as in 10:00:00:11:22:33:44:55, and a number, prio");
}

void set_field(fcp_prio_entry& rule, const std::string& column, const std::string& spelling, const std::string& where) {
  if (column == kPriorityColumn) {
    const auto number = parse_number(spelling);
    if (!number) throw mistake(where, fmt::format("\"{}\" is no number", spelling));
    rule.prio = *number;
    return;
  }
  const auto* const key = std::ranges::find(kKeys, column, &Key::column);
  if (key == kKeys.end()) return;
  const auto bytes = spelling == kWildcard ? std::vector<std::uint8_t>(8, 0xFF) : parse_bytes(spelling, 8);
  if (!bytes) throw mistake(where, fmt::format("\"{}\" is neither * nor 8 bytes", spelling));
  std::ranges::copy(*bytes, rule.*key->bytes);
}

void expect_columns(const std::vector<std::string>& columns, const std::string& where) {
  std::vector<std::string> needed{kPriorityColumn};
  for (const Key& key : kKeys) needed.emplace_back(key.column);
  for (const std::string& column : needed) {
    if (std::ranges::count(columns, column) != 1) throw mistake(where, fmt::format("\"{}\" is not there once", column));
  }
  for (const std::string& column : columns) {
    if (column != kPositionColumn && std::ranges::count(needed, column) == 0) {
      throw mistake(where, fmt::format("\"{}\" is no column of a rule", column));
    }
  }
}

void expect_room(const PriorityRules& rules, const std::string& where) {
  if (rules.size() >= kMostRules) throw mistake(where, fmt::format("there are more than {} rules", kMostRules));
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (true) {
    const std::size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

// A cell without the blanks and the quotes around it. No cell of a rule has a comma or a quote of its own.
std::string bare(std::string_view cell) {
  constexpr std::string_view kAround = " \t\r\"";
  const std::size_t first = cell.find_first_not_of(kAround);
  if (first == std::string_view::npos) return "";
  return std::string(cell.substr(first, cell.find_last_not_of(kAround) - first + 1));
}

std::vector<std::string> cells_of(const std::string& line) {
  std::vector<std::string> cells = split(line, ',');
  for (std::string& cell : cells) cell = bare(cell);
  return cells;
}

PriorityRules parse_csv(const std::string& name, const std::string& content) {
  PriorityRules rules;
  std::vector<std::string> columns;
  std::size_t number = 0;
  for (const std::string& line : split(content, '\n')) {
    const std::string where = fmt::format("{}: line {}", name, ++number);
    if (bare(line).empty()) continue;
    const std::vector<std::string> cells = cells_of(line);
    if (columns.empty()) {
      columns = cells;
      expect_columns(columns, where);
      continue;
    }
    if (cells.size() != columns.size()) {
      throw mistake(where, fmt::format("there are {} columns instead of {}", cells.size(), columns.size()));
    }
    expect_room(rules, where);
    fcp_prio_entry rule{};
    for (std::size_t i = 0; i < cells.size(); ++i)
      set_field(rule, columns[i], cells[i], fmt::format("{}, column {}", where, columns[i]));
    rules.push_back(rule);
  }
  if (columns.empty()) throw mistake(name, "there is no line with the names of the columns");
  return rules;
}

Json parsed_json(const std::string& name, const std::string& content) {
  try {
    return Json::parse(content);
  } catch (const Json::exception& error) {
    // The parser's own words, from the place on where it tells one, without its code in brackets.
    const std::string_view text = error.what();
    const std::size_t place = text.find("line ");
    throw mistake(name, std::string(text.substr(place != std::string_view::npos ? place : text.find("] ") + 2)));
  }
}

// A value as text that names numbers and bytes. Lists and objects name neither; they may be nested too deeply to be written.
std::string spelling_of(const Json& value) {
  if (value.is_structured()) return value.type_name();
  return value.is_string() ? value.get<std::string>() : value.dump();
}

fcp_prio_entry rule_in(const Json& object, const std::string& where) {
  if (!object.is_object()) throw mistake(where, "this is no object");
  std::vector<std::string> columns;
  for (const auto& [column, value] : object.items()) columns.push_back(column);
  expect_columns(columns, where);
  fcp_prio_entry rule{};
  for (const auto& [column, value] : object.items()) {
    set_field(rule, column, spelling_of(value), fmt::format("{}.{}", where, column));
  }
  return rule;
}

PriorityRules parse_json(const std::string& name, const std::string& content) {
  constexpr const char* kList = "rules";
  const Json document = parsed_json(name, content);
  const bool is_wrapped = document.is_object() && document.contains(kList);
  const Json& list = is_wrapped ? document[kList] : document;
  if (!list.is_array()) throw mistake(name, fmt::format("there is no list of rules, by itself or as \"{}\"", kList));
  PriorityRules rules;
  for (const Json& object : list) {
    const std::string where = fmt::format("{}: {}[{}]", name, kList, rules.size());
    expect_room(rules, where);
    rules.push_back(rule_in(object, where));
  }
  return rules;
}

// Groups are numbered in the order in which they are sent.
std::size_t group_of(const fcp_prio_entry& rule) {
  for (std::size_t i = 0; i < kKeys.size(); ++i) {
    if (is_wildcard(rule, kKeys[i])) return kKeys.size() - i;
  }
  return 0;
}

}  // namespace

PriorityRules parse_rules(const std::string& name, const std::string& content) {
  return name.ends_with(".json") ? parse_json(name, content) : parse_csv(name, content);
}

PriorityRules as_sent(const PriorityRules& rules) {
  PriorityRules sent(rules.rbegin(), rules.rend());
  std::ranges::stable_sort(sent, {}, group_of);
  return sent;
}

Section rules_section(const PriorityRules& rules) {
  std::vector<Column> columns{{kPositionColumn, "POSITION"}};
  for (const Key& key : kKeys) columns.push_back({key.column, key.title});
  columns.push_back({kPriorityColumn, "PRIORITY"});
  Section section = table_section("rules", "Rules", std::move(columns));
  for (const fcp_prio_entry& rule : rules) {
    Record record{number_cell(section.records.size())};
    for (const Key& key : kKeys) record.push_back(key_cell(rule, key));
    record.push_back(number_cell(rule.prio));
    section.records.push_back(std::move(record));
  }
  return section;
}

std::vector<Field> rule_fields(const PriorityRules& rules) {
  std::vector<Field> fields;
  for (const fcp_prio_entry& rule : rules) {
    std::vector<std::string> keys;
    for (const Key& key : kKeys) keys.push_back(key_text(rule, key));
    const std::size_t position = fields.size();
    fields.push_back({fmt::format("rule_{}", position), fmt::format("Rule {}", position),
                      text_cell(fmt::format("{}, priority {}", fmt::join(keys, " "), rule.prio))});
  }
  return fields;
}

}  // namespace vaskdfc::tool
