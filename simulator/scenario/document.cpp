#include "scenario/document.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <set>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>
#include <vector>

#include "scenario/embedded.h"
#include "scenario/escaped.h"

namespace simulator::scenario {
namespace {

using nlohmann::json;

constexpr std::size_t kLongestValue = 60;    // of a scenario, in a message
constexpr std::size_t kLongestReason = 400;  // of the parser's, which quote what they are about

std::string cut(const std::string& text, std::size_t longest) {
  return text.size() <= longest ? text : text.substr(0, longest) + "...";
}

// A key that no field could have is shown as the text that it is.
std::string member_path(const std::string& object, const std::string& key) {
  const bool is_plain = !key.empty() && key.size() <= kLongestValue && std::ranges::all_of(key, [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9') ||
           letter == '_' || letter == '$';
  });
  if (!is_plain) return fmt::format("{}[{}]", object, shown(key));
  return object.empty() ? key : object + "." + key;
}

std::string item_path(const std::string& array, std::size_t index) { return fmt::format("{}[{}]", array, index); }

// "FILE:LINE:COLUMN" of a byte, counted from 1.
std::string position(std::string_view file, std::string_view text, std::size_t byte) {
  const std::string_view before = text.substr(0, byte);
  const auto line = 1 + std::ranges::count(before, '\n');
  const auto line_start = before.rfind('\n');
  const std::size_t column = line_start == before.npos ? before.size() + 1 : before.size() - line_start;
  return fmt::format("{}:{}:{}", file, line, column);
}

// The parser's own words without its "[code] parse error at POSITION: ".
std::string reason(const json::exception& error) {
  const std::string_view what = error.what();
  const auto position_end = what.find(": ");
  const auto code_end = what.find("] ");
  return cut(escaped(what.substr((position_end != what.npos ? position_end : code_end) + 2), is_printable), kLongestReason);
}

// Follows the parser and refuses a key that stands twice in one object, where the parser itself would keep the last.
class KeyWatch {
 public:
  explicit KeyWatch(std::string_view file) : file_(file) {}

  bool operator()(int, json::parse_event_t event, const json& parsed) {
    switch (event) {
      case json::parse_event_t::object_start: open(false); break;
      case json::parse_event_t::array_start: open(true); break;
      case json::parse_event_t::key: enter(parsed.get<std::string>()); break;
      case json::parse_event_t::object_end:
      case json::parse_event_t::array_end:
        levels_.pop_back();
        next();
        break;
      case json::parse_event_t::value: next(); break;
    }
    return true;
  }

  // Of the value that the parser is at.
  std::string path() const { return levels_.empty() ? "" : levels_.back().child(); }

 private:
  struct Level {
    std::string path;  // of the object or array itself
    bool is_array;
    std::size_t index = 0;
    std::string key;
    std::set<std::string> keys;

    std::string child() const { return is_array ? item_path(path, index) : member_path(path, key); }
  };

  void open(bool is_array) {
    constexpr std::size_t kDeepest = 32;  // more than twice what the deepest field needs
    if (levels_.size() == kDeepest) throw ScenarioError::at(file_, path(), "stands deeper than any field of a scenario");
    levels_.push_back({path(), is_array});
  }
  void next() {
    if (!levels_.empty()) ++levels_.back().index;
  }
  void enter(std::string key) {
    Level& object = levels_.back();
    object.key = std::move(key);
    if (!object.keys.insert(object.key).second) throw ScenarioError::at(file_, object.child(), "stands twice in its object");
  }

  std::string_view file_;
  std::vector<Level> levels_;
};

json parse(std::string_view file, std::string_view text) {
  KeyWatch watch(file);
  try {
    return json::parse(text, std::ref(watch));
  } catch (const json::parse_error& error) {
    // The parser names the byte after the one at fault, counted from 1.
    throw ScenarioError(fmt::format("{}: {}", position(file, text, error.byte == 0 ? 0 : error.byte - 1), reason(error)));
  } catch (const json::out_of_range& error) {
    throw ScenarioError::at(file, watch.path(), reason(error));
  }
}

const json& schema_document() {
  static const json document = json::parse(kSchemaText);
  return document;
}

const json& resolve(const json& node) {
  const auto reference = node.find("$ref");
  if (reference == node.end()) return node;
  return schema_document().at(json::json_pointer(reference->get<std::string>().substr(1)));
}

// The schema of a member; null for one that the schema does not know. Objects with names of any kind have one for all members.
const json* member_schema(const json& schema, const std::string& key) {
  const json& others = schema.at("additionalProperties");
  if (others.is_object()) return &resolve(others);
  const json& members = schema.at("properties");
  return members.contains(key) ? &resolve(members[key]) : nullptr;
}

std::string expected(const json& schema) { return "expected " + schema.at("description").get<std::string>(); }

std::string member_names(const json& schema) {
  std::vector<std::string> names;
  for (const auto& member : schema.at("properties").items()) names.push_back(member.key());
  return fmt::format("{}", fmt::join(names, ", "));
}

// Says what is wrong with a value that its schema refuses, in the schema's own words.
ScenarioError refusal(std::string_view file, const std::string& path, const json& value, const json& schema) {
  const bool object_wanted = schema.at("type") == "object";
  if (!object_wanted || !value.is_object()) {
    return ScenarioError::at(file, path, fmt::format("{}, found {}", expected(schema), shown(value)));
  }
  for (const auto& [key, member] : value.items()) {
    if (member_schema(schema, key) != nullptr) continue;
    return ScenarioError::at(file, member_path(path, key), "unknown field; expected one of " + member_names(schema));
  }
  for (const json& key : schema.value("required", json::array())) {
    if (value.contains(key)) continue;
    const json& member = *member_schema(schema, key);
    return ScenarioError::at(file, member_path(path, key), "missing; " + expected(member));
  }
  return ScenarioError::at(file, path, expected(schema));
}

// Finds the value that an error is about. A context is "<root>", "[adapters]", "[1]", "[wwpn]".
ScenarioError describe(std::string_view file, const json& document, const std::vector<std::string>& context) {
  std::string path;
  const json* value = &document;
  const json* schema = &schema_document();
  for (std::size_t step = 1; step < context.size(); ++step) {
    const std::string name = context[step].substr(1, context[step].size() - 2);
    if (value->is_array()) {
      const std::size_t index = std::stoul(name);
      path = item_path(path, index);
      value = &value->at(index);
      schema = &resolve(schema->at("items"));
    } else {
      path = member_path(path, name);
      value = &value->at(name);
      schema = member_schema(*schema, name);
    }
  }
  return refusal(file, path, *value, *schema);
}

constexpr const char* kEachItemOnce = "uniqueItems";

// The validator compares every item with every other, for which a list may be too long.
json schema_for_validator(json node) {
  if (node.is_object()) node.erase(kEachItemOnce);
  for (json& child : node) {
    if (child.is_structured()) child = schema_for_validator(std::move(child));
  }
  return node;
}

void check_each_item_once(std::string_view file, const std::string& path, const json& value, const json& schema) {
  if (value.is_object()) {
    for (const auto& [key, member] : value.items()) {
      check_each_item_once(file, member_path(path, key), member, *member_schema(schema, key));
    }
  }
  if (!value.is_array()) return;

  std::set<json> items;
  for (std::size_t index = 0; index < value.size(); ++index) {
    const bool is_new = !schema.contains(kEachItemOnce) || items.insert(value[index]).second;
    if (!is_new) throw refusal(file, path, value, schema);
    check_each_item_once(file, item_path(path, index), value[index], resolve(schema.at("items")));
  }
}

const valijson::Schema& compiled_schema() {
  static const auto compiled = [] {
    auto schema = std::make_unique<valijson::Schema>();
    const json rules = schema_for_validator(schema_document());
    valijson::SchemaParser().populateSchema(valijson::adapters::NlohmannJsonAdapter(rules), *schema);
    return schema;
  }();
  return *compiled;
}

void check(std::string_view file, const json& document) {
  valijson::Validator validator(valijson::Validator::kStrongTypes);
  valijson::ValidationResults results;
  if (!validator.validate(compiled_schema(), valijson::adapters::NlohmannJsonAdapter(document), &results)) {
    throw describe(file, document, results.begin()->context);  // of a chain of errors the first is the innermost
  }
  check_each_item_once(file, "", document, schema_document());
}

}  // namespace

std::string shown(const json& value) {
  if (value.is_object()) return "an object";
  if (value.is_array()) return "a list";
  return cut(value.dump(-1, ' ', true, json::error_handler_t::replace), kLongestValue);
}

ScenarioError ScenarioError::at(std::string_view file, std::string_view path, std::string_view problem) {
  if (path.empty()) return ScenarioError(fmt::format("{}: {}", file, problem));
  return ScenarioError(fmt::format("{}: {}: {}", file, path, problem));
}

json read_document(std::string_view file, std::string_view text) {
  json document = parse(file, text);
  check(file, document);
  return document;
}

}  // namespace simulator::scenario
