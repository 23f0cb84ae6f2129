// Tables for people. Cells that would make a line too wide are continued on the lines below.
#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "output.h"

namespace vaskdfc::tool {
namespace {

constexpr std::string_view kGap = "  ";

// Cuts a text into lines of at most `width` characters, at blanks where there are any.
std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (text.size() > width) {
    const std::size_t blank = text.rfind(' ', width);
    const bool at_blank = blank != std::string_view::npos && blank > 0;
    lines.emplace_back(text.substr(0, at_blank ? blank : width));
    text.remove_prefix(at_blank ? blank + 1 : width);
  }
  lines.emplace_back(text);
  return lines;
}

std::size_t longest_word(std::string_view text) {
  std::size_t longest = 0;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find(' '), text.size());
    longest = std::max(longest, length);
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return longest;
}

// A column's width, and how much of it may go before a word has to be broken.
struct Width {
  std::size_t columns = 1;
  std::size_t unbroken = 1;

  void make_room_for(std::string_view text) {
    columns = std::max(columns, text.size());
    unbroken = std::max(unbroken, longest_word(text));
  }
};

// Narrows columns until a line fits: the widest that can be narrowed without breaking a word, and where there is none the widest.
void shrink_to_fit(std::vector<Width>& widths) {
  const auto line = [&] {
    return std::accumulate(widths.begin(), widths.end(), kGap.size() * (widths.size() - 1),
                           [](std::size_t sum, const Width& width) { return sum + width.columns; });
  };
  while (line() > kTableWidth) {
    const auto widest = std::ranges::max_element(
        widths, {}, [](const Width& width) { return std::pair(width.columns > width.unbroken, width.columns); });
    --widest->columns;
  }
}

std::string table_line(const std::vector<std::string_view>& cells, const std::vector<Width>& widths) {
  std::vector<std::vector<std::string>> columns;
  std::size_t height = 1;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    columns.push_back(wrapped(cells[i], widths[i].columns));
    height = std::max(height, columns.back().size());
  }
  std::string text;
  for (std::size_t line = 0; line < height; ++line) {
    std::string row;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const std::string_view cell = line < columns[i].size() ? std::string_view(columns[i][line]) : "";
      row += fmt::format("{}{:<{}}", i == 0 ? "" : kGap, cell, widths[i].columns);
    }
    row.erase(row.find_last_not_of(' ') + 1);
    text += row + "\n";
  }
  return text;
}

std::string table(const Section& section, bool header) {
  std::vector<Width> widths(section.columns.size());
  std::vector<std::string_view> titles;
  for (std::size_t i = 0; i < section.columns.size(); ++i) {
    titles.emplace_back(section.columns[i].title);
    if (header) widths[i].make_room_for(section.columns[i].title);
    for (const Record& record : section.records) widths[i].make_room_for(record[i].text);
  }
  shrink_to_fit(widths);

  std::string text = header ? table_line(titles, widths) : "";
  for (const Record& record : section.records) {
    std::vector<std::string_view> cells;
    for (const Cell& cell : record) cells.emplace_back(cell.text);
    text += table_line(cells, widths);
  }
  return text;
}

// Records one below the other, a field a line.
std::string listing(const Section& section) {
  if (section.records.empty()) return "none\n";
  std::size_t width = 0;
  for (const Column& column : section.columns) width = std::max(width, column.title.size());
  const std::vector<Width> widths{{.columns = width}, {.columns = kTableWidth - width - kGap.size()}};
  std::string text;
  for (const Record& record : section.records) {
    if (!text.empty()) text += "\n";
    for (std::size_t i = 0; i < record.size(); ++i) text += table_line({section.columns[i].title, record[i].text}, widths);
  }
  return text;
}

}  // namespace

std::string render_table(const Report& report, bool header) {
  std::string text;
  for (const Section& section : report.sections) {
    if (!text.empty()) text += "\n";
    if (header && report.sections.size() > 1) text += section.title + "\n";
    text += section.shape == Section::Shape::kTable ? table(section, header) : listing(section);
  }
  return text;
}

}  // namespace vaskdfc::tool
