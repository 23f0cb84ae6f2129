#include "output.h"

#include <gtest/gtest.h>

namespace vaskdfc::tool {
namespace {

constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53;

// One record and one table, with every kind of cell.
Report sample() {
  Section table = table_section("ports", "Ports", {{"name", "NAME"}, {"frames", "FRAMES"}});
  table.records.push_back({text_cell("first"), number_cell(kLargestExact)});
  table.records.push_back({text_cell("with \"quotes\", and commas"), number_cell(kLargestExact + 1, "frames")});
  Section record = record_section("adapter", "Adapter",
                                  {{"model", "Model", text_cell("K5602")},
                                   {"speeds", "Supported speeds", list_cell({"8 Gbit/s", "16 Gbit/s"})},
                                   {"online", "Online", flag_cell(true)},
                                   {"fabric", "Fabric", absent()}});
  return {.command = "sample", .sections = {std::move(record), std::move(table)}};
}

TEST(Output, tables_show_records_as_lines_of_title_and_text) {
  EXPECT_EQ(render_table(sample(), true),
            "Adapter\n"
            "Model             K5602\n"
            "Supported speeds  8 Gbit/s, 16 Gbit/s\n"
            "Online            yes\n"
            "Fabric            -\n"
            "\n"
            "Ports\n"
            "NAME                       FRAMES\n"
            "first                      9007199254740992\n"
            "with \"quotes\", and commas  9007199254740993 frames\n");
}

TEST(Output, tables_without_header_have_no_titles) {
  Report report = sample();
  report.sections.erase(report.sections.begin());
  EXPECT_EQ(render_table(report, false),
            "first                      9007199254740992\n"
            "with \"quotes\", and commas  9007199254740993 frames\n");
}

TEST(Output, json_keeps_values_and_adds_a_string_to_numbers_that_a_double_cannot_hold) {
  EXPECT_EQ(render_json(sample()), R"({
  "schema": 1,
  "command": "sample",
  "adapter": {
    "model": "K5602",
    "speeds": [
      "8 Gbit/s",
      "16 Gbit/s"
    ],
    "online": true,
    "fabric": null
  },
  "ports": [
    {
      "name": "first",
      "frames": 9007199254740992
    },
    {
      "name": "with \"quotes\", and commas",
      "frames": 9007199254740993,
      "frames_s": "9007199254740993"
    }
  ]
}
)");
}

TEST(Output, csv_of_several_sections_is_a_list_of_fields) {
  EXPECT_EQ(render_csv(sample(), true),
            "field,value\r\n"
            "adapter.model,K5602\r\n"
            "adapter.speeds,8 Gbit/s; 16 Gbit/s\r\n"
            "adapter.online,true\r\n"
            "adapter.fabric,\r\n"
            "ports.0.name,first\r\n"
            "ports.0.frames,9007199254740992\r\n"
            "ports.1.name,\"with \"\"quotes\"\", and commas\"\r\n"
            "ports.1.frames,9007199254740993\r\n"
            "ports.1.frames_s,9007199254740993\r\n");
}

TEST(Output, csv_of_one_section_is_its_table) {
  Report report = sample();
  report.sections.pop_back();
  EXPECT_EQ(render_csv(report, true), "model,speeds,online,fabric\r\nK5602,8 Gbit/s; 16 Gbit/s,true,\r\n");
  EXPECT_EQ(render_csv(report, false), "K5602,8 Gbit/s; 16 Gbit/s,true,\r\n");
}

// A column that any record wants, all records have, so that every line has as many fields as the first.
TEST(Output, csv_has_a_column_for_the_strings_of_large_numbers) {
  Report report = sample();
  report.sections.erase(report.sections.begin());
  EXPECT_EQ(render_csv(report, true),
            "name,frames,frames_s\r\n"
            "first,9007199254740992,\r\n"
            "\"with \"\"quotes\"\", and commas\",9007199254740993,9007199254740993\r\n");
}

TEST(Output, key_values_are_a_line_for_every_field) {
  EXPECT_EQ(render_key_value(sample()),
            "adapter.model: K5602\n"
            "adapter.speeds: 8 Gbit/s; 16 Gbit/s\n"
            "adapter.online: true\n"
            "adapter.fabric: \n"
            "ports.0.name: first\n"
            "ports.0.frames: 9007199254740992\n"
            "ports.1.name: with \"quotes\", and commas\n"
            "ports.1.frames: 9007199254740993\n"
            "ports.1.frames_s: 9007199254740993\n");
}

TEST(Output, blocks_are_records_one_below_the_other) {
  Section blocks = blocks_section("ports", "Ports", {{"name", "Name"}, {"wwn", "WWN"}});
  blocks.records.push_back({text_cell("a"), text_cell("1")});
  blocks.records.push_back({text_cell("b"), text_cell("2")});
  EXPECT_EQ(render_table({.command = "ports", .sections = {blocks}}, true), "Name  a\nWWN   1\n\nName  b\nWWN   2\n");
}

TEST(Output, an_empty_table_shows_its_titles) {
  const Report report{.command = "ports", .sections = {table_section("ports", "Ports", {{"name", "NAME"}, {"wwn", "WWN"}})}};
  EXPECT_EQ(render_table(report, true), "NAME  WWN\n");
  EXPECT_EQ(render_csv(report, true), "name,wwn\r\n");
  EXPECT_EQ(render_key_value(report), "");
}

std::string one_line_table(const std::string& first, const std::string& second) {
  Section table = table_section("t", "T", {{"first", "FIRST"}, {"second", "SECOND"}});
  table.records.push_back({text_cell(first), text_cell(second)});
  return render_table({.command = "t", .sections = {table}}, false);
}

TEST(Output, cells_too_wide_continue_below_at_a_blank) {
  const std::string a(50, 'a');
  const std::string b(30, 'b');
  const std::string c(45, 'c');
  EXPECT_EQ(one_line_table(a + " " + b, c), a + "     " + c + "\n" + b + "\n");
}

TEST(Output, words_are_broken_only_where_no_line_could_hold_them) {
  EXPECT_EQ(one_line_table(std::string(60, 'a'), std::string(45, 'c')),
            std::string(53, 'a') + "  " + std::string(45, 'c') + "\n" + std::string(7, 'a') + "\n");
}

}  // namespace
}  // namespace vaskdfc::tool
