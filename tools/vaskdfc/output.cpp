#include "output.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace vaskdfc::tool {
namespace {

// A value in a form that has only text. Elements of a list may hold blanks and commas.
std::string plain(const Json& value) {
  if (value.is_null()) return "";
  if (value.is_string()) return value.get<std::string>();
  if (!value.is_array()) return value.dump();
  std::string joined;
  for (const Json& element : value) joined += (joined.empty() ? "" : "; ") + plain(element);
  return joined;
}

// RFC 4180.
std::string csv_field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

std::string csv_line(const std::vector<std::string>& fields) {
  std::vector<std::string> quoted;
  for (const std::string& field : fields) quoted.push_back(csv_field(field));
  return fmt::format("{}\r\n", fmt::join(quoted, ","));
}

// Where a field stands in the report: section, position in a table, key.
std::string path_of(const Section& section, std::size_t position, const std::string& key) {
  if (section.shape == Section::Shape::kRecord) return fmt::format("{}.{}", section.key, key);
  return fmt::format("{}.{}.{}", section.key, position, key);
}

// Calls visit(path, value) for every field of the report.
template <typename Visit>
void for_each_field(const Report& report, Visit visit) {
  for (const Section& section : report.sections) {
    for (std::size_t position = 0; position < section.records.size(); ++position) {
      for (const auto& [key, value] : values_of(section, section.records[position])) visit(path_of(section, position, key), value);
    }
  }
}

// The keys that any record of a section has, in order: a line of CSV has a place for each.
std::vector<std::string> keys_of(const Section& section) {
  std::vector<std::string> keys;
  for (const Column& column : section.columns) keys.push_back(column.key);
  for (const Record& record : section.records) {
    auto place = keys.begin();
    for (const auto& [key, value] : values_of(section, record)) {
      const auto found = std::find(keys.begin(), keys.end(), key);
      place = std::next(found == keys.end() ? keys.insert(place, key) : found);
    }
  }
  return keys;
}

}  // namespace

Json object_of(const Section& section, const Record& record) {
  Json object = Json::object();
  for (auto& [key, value] : values_of(section, record)) object[key] = std::move(value);
  return object;
}

Json json_of(const Report& report) {
  Json document{{"schema", 1}, {"command", report.command}};
  for (const Section& section : report.sections) {
    if (section.shape == Section::Shape::kRecord) {
      document[section.key] = object_of(section, section.records.front());
      continue;
    }
    Json& list = document[section.key] = Json::array();
    for (const Record& record : section.records) list.push_back(object_of(section, record));
  }
  return document;
}

std::string render_json(const Report& report) { return json_of(report).dump(2) + "\n"; }

// One section is one CSV table. Several sections have different columns, so each of their fields is a line.
std::string render_csv(const Report& report, bool header) {
  std::string csv;
  if (report.sections.size() > 1) {
    if (header) csv += csv_line({"field", "value"});
    for_each_field(report, [&](const std::string& path, const Json& value) { csv += csv_line({path, plain(value)}); });
    return csv;
  }
  for (const Section& section : report.sections) {
    const std::vector<std::string> keys = keys_of(section);
    if (header) csv += csv_line(keys);
    for (const Record& record : section.records) {
      const Json object = object_of(section, record);
      std::vector<std::string> fields;
      for (const std::string& key : keys) fields.push_back(plain(object.value(key, Json(nullptr))));
      csv += csv_line(fields);
    }
  }
  return csv;
}

std::string render_key_value(const Report& report) {
  std::string lines;
  for_each_field(report, [&](const std::string& path, const Json& value) { lines += fmt::format("{}: {}\n", path, plain(value)); });
  return lines;
}

std::string render(const Report& report, const OutputOptions& options) {
  switch (options.form) {
    case Form::kTable: return render_table(report, options.header);
    case Form::kJson: return render_json(report);
    case Form::kCsv: return render_csv(report, options.header);
    case Form::kKeyValue: return render_key_value(report);
  }
  return {};
}

}  // namespace vaskdfc::tool
