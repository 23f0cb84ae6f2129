// What a command has to say, once: sections of records whose fields know how programs and how people read them. Every form of
// output is derived from it, so a field appears in all of them or in none.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vaskdfc::tool {

using Json = nlohmann::ordered_json;

// A value for programs, and the same for people.
struct Cell {
  Json value;
  std::string text;
};

// What is not known: null for programs, a dash for people.
Cell absent();
Cell text_cell(std::string_view text);
Cell number_cell(std::uint64_t number);
Cell number_cell(std::uint64_t number, std::string_view unit);
Cell decimal_cell(double number, int digits);  // of which people read so many behind the point
Cell flag_cell(bool flag);
Cell list_cell(const std::vector<std::string>& words);

struct Column {
  std::string key;    // snake_case, for programs
  std::string title;  // for people
};

using Record = std::vector<Cell>;  // one cell per column

struct Section {
  enum class Shape {
    kRecord,  // exactly one record
    kTable,   // any number of records, for people a line each
    kBlocks,  // any number of records with more fields than fit a line, for people a block each
  };

  std::string key;
  std::string title;
  Shape shape;
  std::vector<Column> columns;
  std::vector<Record> records;
};

struct Report {
  std::string command;
  std::vector<Section> sections;
};

struct Field {
  std::string key;
  std::string title;
  Cell cell;
};

// The fields of one list and then those of another.
std::vector<Field> joined(std::vector<Field> first, std::vector<Field> second);

Section record_section(std::string key, std::string title, std::vector<Field> fields);
Section table_section(std::string key, std::string title, std::vector<Column> columns);
Section blocks_section(std::string key, std::string title, std::vector<Column> columns);

// A record as programs read it: keys and values in order. A number that a double cannot hold exactly is followed by the same as a
// string, under the key with "_s".
std::vector<std::pair<std::string, Json>> values_of(const Section& section, const Record& record);

}  // namespace vaskdfc::tool
