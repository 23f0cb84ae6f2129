#include "report.h"

#include <fmt/format.h>

#include <cassert>

namespace vaskdfc::tool {
namespace {

// Numbers above this are not exact in a double, which is what many JSON readers make of them.
constexpr std::uint64_t kExactInADouble = std::uint64_t{1} << 53;

bool needs_a_string(const Json& value) { return value.is_number_unsigned() && value.get<std::uint64_t>() > kExactInADouble; }

}  // namespace

Cell absent() { return {nullptr, "-"}; }

Cell text_cell(std::string_view text) { return {std::string(text), text.empty() ? "-" : std::string(text)}; }

Cell number_cell(std::uint64_t number) { return {number, fmt::format("{}", number)}; }

Cell number_cell(std::uint64_t number, std::string_view unit) { return {number, fmt::format("{} {}", number, unit)}; }

Cell decimal_cell(double number, int digits) { return {number, fmt::format("{:.{}f}", number, digits)}; }

Cell flag_cell(bool flag) { return {flag, flag ? "yes" : "no"}; }

Cell list_cell(const std::vector<std::string>& words) {
  return {words, words.empty() ? "none" : fmt::format("{}", fmt::join(words, ", "))};
}

std::vector<Field> joined(std::vector<Field> first, std::vector<Field> second) {
  std::ranges::move(second, std::back_inserter(first));
  return first;
}

Section record_section(std::string key, std::string title, std::vector<Field> fields) {
  Section section{
      .key = std::move(key), .title = std::move(title), .shape = Section::Shape::kRecord, .columns = {}, .records = {{}}};
  for (Field& field : fields) {
    section.columns.push_back({std::move(field.key), std::move(field.title)});
    section.records.front().push_back(std::move(field.cell));
  }
  return section;
}

Section table_section(std::string key, std::string title, std::vector<Column> columns) {
  return {.key = std::move(key),
          .title = std::move(title),
          .shape = Section::Shape::kTable,
          .columns = std::move(columns),
          .records = {}};
}

Section blocks_section(std::string key, std::string title, std::vector<Column> columns) {
  return {.key = std::move(key),
          .title = std::move(title),
          .shape = Section::Shape::kBlocks,
          .columns = std::move(columns),
          .records = {}};
}

std::vector<std::pair<std::string, Json>> values_of(const Section& section, const Record& record) {
  assert(record.size() == section.columns.size());
  std::vector<std::pair<std::string, Json>> values;
  for (std::size_t i = 0; i < record.size(); ++i) {
    const std::string& key = section.columns[i].key;
    values.emplace_back(key, record[i].value);
    if (needs_a_string(record[i].value)) values.emplace_back(key + "_s", fmt::format("{}", record[i].value.get<std::uint64_t>()));
  }
  return values;
}

}  // namespace vaskdfc::tool
