// The forms of output. Each is a way to write the same report.
#pragma once

#include <string>

#include "report.h"

namespace vaskdfc::tool {

enum class Form { kTable, kJson, kCsv, kKeyValue };

struct OutputOptions {
  Form form = Form::kTable;
  bool header = true;  // column titles of tables, and the first line of CSV
};

std::string render(const Report& report, const OutputOptions& options);

// Widest line of a table, in columns.
inline constexpr std::size_t kTableWidth = 100;

// The report as programs read it.
Json json_of(const Report& report);

// The forms one by one.
std::string render_table(const Report& report, bool header);
std::string render_json(const Report& report);
std::string render_csv(const Report& report, bool header);
std::string render_key_value(const Report& report);

// A record as a JSON object.
Json object_of(const Section& section, const Record& record);

}  // namespace vaskdfc::tool
