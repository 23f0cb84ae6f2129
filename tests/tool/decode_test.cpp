#include "decode.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace vaskdfc::tool {
namespace {

using Words = std::vector<std::string>;

TEST(Decode, knows_every_port_type) {
  const std::pair<std::uint32_t, const char*> kTypes[] = {{1, "unknown"}, {2, "other"},   {3, "not present"},    {5, "N_Port"},
                                                          {6, "NL_Port"}, {7, "FL_Port"}, {8, "F_Port"},         {9, "E_Port"},
                                                          {10, "G_Port"}, {20, "L_Port"}, {21, "point-to-point"}};
  for (const auto& [type, name] : kTypes) EXPECT_EQ(port_type_cell(type).value, name);
  EXPECT_EQ(port_type_cell(4).value, "4");
  EXPECT_EQ(port_type_cell(0xFFFFFFFF).value, "4294967295");
}

TEST(Decode, knows_every_port_state) {
  const char* const kStates[] = {"0",           "unknown",   "online", "offline",  "bypassed",
                                 "diagnostics", "link down", "error",  "loopback", "9"};
  for (std::uint32_t state = 0; state < std::size(kStates); ++state) EXPECT_EQ(port_state_cell(state).value, kStates[state]);
}

TEST(Decode, knows_every_speed) {
  const std::pair<std::uint32_t, const char*> kSpeeds[] = {
      {0, "unknown"},     {1, "1 Gbit/s"},     {2, "2 Gbit/s"},     {4, "10 Gbit/s"},           {8, "4 Gbit/s"},
      {0x10, "8 Gbit/s"}, {0x20, "16 Gbit/s"}, {0x40, "32 Gbit/s"}, {0x8000, "not negotiated"}, {0x100, "0x100"}};
  for (const auto& [speed, name] : kSpeeds) EXPECT_EQ(speed_cell(speed).value, name);
  EXPECT_EQ(speeds_cell(0x801F).value, (Words{"1 Gbit/s", "2 Gbit/s", "4 Gbit/s", "8 Gbit/s", "10 Gbit/s", "not negotiated"}));
  EXPECT_EQ(speeds_cell(0).value, Words{});
  EXPECT_EQ(speeds_cell(0).text, "none");
}

TEST(Decode, knows_classes_of_service_by_their_bit) {
  EXPECT_EQ(classes_of_service_cell(0xC).value, (Words{"class 2", "class 3"}));
  EXPECT_EQ(classes_of_service_cell(0x1).value, Words{"class F"});
  EXPECT_EQ(classes_of_service_cell(0).value, Words{});
}

TEST(Decode, finds_fc4_types_in_their_big_endian_words) {
  std::array<std::uint8_t, 32> map{};
  map[2] = 0x01;
  map[3] = 0x20;
  map[7] = 0x01;
  map[6] = 0x01;
  map[28] = 0x80;
  EXPECT_EQ(fc4_types_cell(map).value, (Words{"IP", "FCP", "CT", "NVMe", "0xff"}));
  EXPECT_EQ(fc4_types_cell(std::array<std::uint8_t, 32>{}).value, Words{});
}

TEST(Decode, names_the_features_that_are_known_and_keeps_the_other_bits) {
  EXPECT_EQ(feature_flags_cell(0x1000).value, Words{"extended SLI configuration mailboxes"});
  EXPECT_EQ(feature_flags_cell(0x1403).value, (Words{"extended SLI configuration mailboxes", "persistent link down", "0x3"}));
}

TEST(Decode, reads_texts_up_to_their_end_or_the_arrays) {
  const std::array<char, 4> full{'a', 'b', 'c', 'd'};
  EXPECT_EQ(text_of(full), "abcd");
  const std::array<char, 4> ended{'a', '\0', 'c', 'd'};
  EXPECT_EQ(text_of(ended), "a");
  EXPECT_EQ(text_of(std::array<char, 4>{'a', ' ', ' ', '\0'}), "a") << "padding";
}

TEST(Decode, shows_what_is_not_printable_as_hexadecimal) {
  EXPECT_EQ(text_of(std::array<char, 6>{'\x1b', '[', 'm', '\n', '\x7f', '\xe9'}), "\\x1b[m\\x0a\\x7f\\xe9");
}

TEST(Decode, tells_a_backslash_from_an_escape) {
  EXPECT_EQ(text_of(std::array<char, 4>{'\\', 'x', '4', '1'}), R"(\\x41)");
  EXPECT_EQ(text_of(std::array<char, 2>{'\x1b', '\\'}), R"(\x1b\\)");
}

TEST(Decode, splits_texts_into_lines) {
  const auto lines = [](const char* text) {
    return lines_of({reinterpret_cast<const std::uint8_t*>(text), std::strlen(text) + 1});
  };
  EXPECT_EQ(lines("one\ntwo\n"), (Words{"one", "two"}));
  EXPECT_EQ(lines("one\n\ntwo"), (Words{"one", "", "two"}));
  EXPECT_EQ(lines(""), Words{});
}

constexpr HbaWwn kWwn{{0x10, 0x00, 0x00, 0x11, 0x22, 0xAB, 0xCD, 0xEF}};

TEST(Decode, writes_wwns_with_colons) { EXPECT_EQ(wwn_text(kWwn), "10:00:00:11:22:ab:cd:ef"); }

TEST(Decode, reads_wwns_in_every_usual_spelling) {
  for (const char* const spelling : {"10:00:00:11:22:ab:cd:ef", "10-00-00-11-22-AB-CD-EF", "1000001122abcdef", "0x1000001122ABCDEF",
                                     "0X1000001122abcdef", "0x10:00:00:11:22:ab:cd:ef"}) {
    const auto wwn = parse_wwn(spelling);
    ASSERT_TRUE(wwn) << spelling;
    EXPECT_TRUE(*wwn == kWwn) << spelling;
  }
}

TEST(Decode, refuses_what_is_no_wwn) {
  for (const char* const spelling :
       {"", "0x", "10", "10:00:00:11:22:ab:cd", "10:00:00:11:22:ab:cd:ef:01", "10:00-00:11:22:ab:cd:ef", "10:00:00:11:22:ab:cd:eg",
        "1000001122abcde", "1000001122abcdefa", "10.00.00.11.22.ab.cd.ef"}) {
    EXPECT_FALSE(parse_wwn(spelling)) << spelling;
  }
}

TEST(Decode, reads_bytes_as_wwns_are_spelled) {
  for (const char* const spelling : {"0e:fc:0a", "0E-FC-0A", "0efc0a", "0x0efc0a"}) {
    EXPECT_EQ(parse_bytes(spelling, 3), (std::vector<std::uint8_t>{0x0E, 0xFC, 0x0A})) << spelling;
  }
  for (const char* const spelling : {"", "0e:fc", "0e:fc:0a:0b", "0e:fc-0a", "0efc0", "0e.fc.0a", "0e:fc:0g"}) {
    EXPECT_FALSE(parse_bytes(spelling, 3)) << spelling;
  }
}

TEST(Decode, reads_decimal_and_hexadecimal_numbers_within_their_limit) {
  EXPECT_EQ(parse_number("0"), 0u);
  EXPECT_EQ(parse_number("4294967295"), 0xFFFFFFFFu);
  EXPECT_EQ(parse_number("0xFFFFffff"), 0xFFFFFFFFu);
  EXPECT_EQ(parse_number("31", 31), 31u);
  for (const char* const spelling : {"", "0x", "-1", "+1", " 1", "1 ", "4294967296", "0x100000000", "1f", "0xg"}) {
    EXPECT_FALSE(parse_number(spelling)) << spelling;
  }
  EXPECT_FALSE(parse_number("32", 31));
}

TEST(Decode, writes_fc_ids_and_words_with_all_their_digits) {
  EXPECT_EQ(fc_id_cell(0x10203).value, "0x010203");
  EXPECT_EQ(hex_cell(0x1042).value, "0x00001042");
  EXPECT_EQ(hex_bytes_cell(kWwn.wwn).value, "10 00 00 11 22 ab cd ef");
}

}  // namespace
}  // namespace vaskdfc::tool
