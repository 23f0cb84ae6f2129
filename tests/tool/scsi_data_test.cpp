#include "scsi_data.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "failure.h"
#include "fields.h"
#include "mapped_units.h"
#include "scsi_sense.h"

namespace vaskdfc::tool {
namespace {

using Buffer = std::vector<std::uint8_t>;

// Every decoder must take bytes that end anywhere.
template <typename Decode>
void expect_no_byte_beyond_the_end(const Buffer& whole, Decode decode) {
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    const Buffer shorter(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    decode(shorter);
  }
}

TEST(SenseData, of_the_fixed_form_tell_key_code_and_information) {
  Buffer bytes(18);
  bytes[0] = 0xF0;
  bytes[2] = 0x05;
  bytes[5] = 0x12;
  bytes[6] = 0x34;
  bytes[12] = 0x21;
  const auto sense = parse_sense(bytes);
  ASSERT_TRUE(sense);
  EXPECT_EQ(sense->information, 0x1234U);
  EXPECT_EQ(sense_text(bytes), "ILLEGAL REQUEST: logical block address out of range (5/21/00)");
  expect_no_byte_beyond_the_end(bytes, [](const Buffer& shorter) { sense_text(shorter); });
}

TEST(SenseData, without_a_valid_bit_have_no_information) {
  Buffer bytes(18);
  bytes[0] = 0x70;
  bytes[6] = 0x34;
  EXPECT_EQ(parse_sense(bytes)->information, std::nullopt);
}

TEST(SenseData, of_the_descriptor_form_tell_the_same) {
  const Buffer bytes{0x72, 0x03, 0x11, 0x00, 0, 0, 0, 16, 0x02, 0x02, 0, 0, 0x00, 0x0A, 0x80, 0, 0, 0, 0, 0, 0, 0, 0x12, 0x34};
  ASSERT_TRUE(parse_sense(bytes));
  EXPECT_EQ(parse_sense(bytes)->information, 0x1234U);
  EXPECT_EQ(sense_text(bytes), "MEDIUM ERROR: unrecovered read error (3/11/00)");
  expect_no_byte_beyond_the_end(bytes, [](const Buffer& shorter) { sense_text(shorter); });
}

TEST(SenseData, may_be_about_an_earlier_command) {
  EXPECT_EQ(sense_text(Buffer{0x71, 0, 0x06}), "deferred UNIT ATTENTION: no additional sense information (6/00/00)");
  EXPECT_EQ(sense_text(Buffer{0x73, 0x06, 0xEE, 0x01}), "deferred UNIT ATTENTION (6/ee/01)");
}

TEST(SenseData, of_other_forms_are_shown_as_they_are) {
  EXPECT_FALSE(parse_sense(Buffer{}));
  EXPECT_FALSE(parse_sense(Buffer{0x00, 0x05}));
  EXPECT_EQ(sense_text(Buffer{0x7F, 0x05}), "sense data of an unknown form: 7f 05");
}

TEST(Luns, are_numbers_where_one_level_says_it_all) {
  const std::pair<const char*, Lun> kCases[] = {{"0", {}},
                                                {"255", {0x00, 0xFF}},
                                                {"256", {0x41, 0x00}},
                                                {"16383", {0x7F, 0xFF}},
                                                {"0x4000000100000000", {0x40, 0x00, 0x00, 0x01}},
                                                {"0xc101000000000000", {0xC1, 0x01}}};
  for (const auto& [text, lun] : kCases) {
    EXPECT_EQ(lun_text(lun), text);
    EXPECT_EQ(lun_argument(text), lun);
  }
  // Flat addressing of a number that has a shorter spelling must not be taken for the other.
  EXPECT_EQ(lun_text({0x40, 0x05}), "0x4005000000000000");
}

TEST(Luns, are_spelled_in_no_other_way) {
  for (const char* spelling : {"", "16384", "-1", "x", "1 "}) EXPECT_THROW(lun_argument(spelling), Failure) << spelling;
}

TEST(Luns, may_be_numbers_in_hexadecimal) { EXPECT_EQ(lun_argument("0x40"), (Lun{0x00, 0x40})); }

TEST(Luns, travel_with_their_bytes_in_order) {
  const Lun lun{1, 2, 3, 4, 5, 6, 7, 8};
  const std::uint64_t memory = lun_in_memory(lun);
  EXPECT_TRUE(std::equal(lun.begin(), lun.end(), reinterpret_cast<const std::uint8_t*>(&memory)));
}

TEST(Inquiry, tells_what_a_unit_is) {
  Buffer bytes(36);
  const std::string text = "KESTAR  DISK UNIT       0042";
  std::copy(text.begin(), text.end(), bytes.begin() + 8);
  bytes[0] = 0x2D;
  bytes[1] = 0x80;
  bytes[2] = 6;
  const auto fields = inquiry_fields(bytes);
  EXPECT_EQ(text_in(fields, "device_type"), "enclosure services");
  EXPECT_EQ(text_in(fields, "qualifier"), "1");
  EXPECT_EQ(text_in(fields, "removable"), "yes");
  EXPECT_EQ(text_in(fields, "version"), "6");
  EXPECT_EQ(text_in(fields, "vendor"), "KESTAR");
  EXPECT_EQ(text_in(fields, "product"), "DISK UNIT");
  EXPECT_EQ(text_in(fields, "revision"), "0042");
  expect_no_byte_beyond_the_end(bytes, [](const Buffer& shorter) { inquiry_fields(shorter); });
  EXPECT_TRUE(std::ranges::all_of(inquiry_fields({}), [](const Field& field) { return field.cell.value.is_null(); }));
}

// A device identification page of these descriptors.
Buffer page83(std::initializer_list<Buffer> descriptors) {
  Buffer page{0x00, 0x83, 0, 0};
  for (const Buffer& descriptor : descriptors) page.insert(page.end(), descriptor.begin(), descriptor.end());
  page[3] = static_cast<std::uint8_t>(page.size() - 4);
  return page;
}

const Buffer kNaa{0x01, 0x03, 0, 8, 0x50, 0x5A, 0x41, 0, 0, 0, 0, 1};
const Buffer kEui{0x01, 0x02, 0, 8, 0x00, 0x5A, 0x41, 0, 0, 0, 0, 2};
const Buffer kT10{0x02, 0x01, 0, 10, 'K', 'E', 'S', 'T', 'A', 'R', ' ', ' ', '4', '2'};
const Buffer kPort{0x01, 0x14, 0, 4, 0, 0, 0, 7};

TEST(Designators, are_decoded_by_their_type) {
  const auto found = parse_designators(page83({kPort, kT10, kEui, kNaa}));
  ASSERT_EQ(found.size(), 4U);
  EXPECT_EQ(found[0].kind + " " + found[0].text + " " + found[0].association, "relative target port 7 target port");
  EXPECT_EQ(found[1].kind + " " + found[1].text + " " + found[1].association, "T10 t10.KESTAR  42 logical unit");
  EXPECT_EQ(found[2].text, "eui.005a410000000002");
  EXPECT_EQ(found[3].text, "naa.505a410000000001");
}

TEST(Designators, are_ranked_and_only_those_of_the_unit_count) {
  EXPECT_EQ(best_designator(parse_designators(page83({kPort, kT10, kEui, kNaa})))->kind, "NAA");
  EXPECT_EQ(best_designator(parse_designators(page83({kT10, kEui})))->kind, "EUI-64");
  EXPECT_FALSE(best_designator(parse_designators(page83({kPort}))));
}

TEST(Designators, end_where_the_bytes_end) {
  const Buffer page = page83({kNaa, kT10, kPort});
  expect_no_byte_beyond_the_end(page, [](const Buffer& shorter) { EXPECT_LE(parse_designators(shorter).size(), 3U); });
  Buffer endless = page83({kNaa});
  endless[2] = 0xFF;
  EXPECT_EQ(parse_designators(endless).size(), 1U);
  EXPECT_TRUE(parse_designators(page83({Buffer{0x01, 0x03, 0, 0}})).empty());
}

TEST(Pages, list_pages_and_serial_numbers) {
  EXPECT_EQ(supported_pages(Buffer{0, 0, 0, 2, 0x00, 0x83, 0x99}), (std::vector<std::string>{"0x00", "0x83"}));
  EXPECT_EQ(serial_number(Buffer{0, 0x80, 0, 4, ' ', 'A', '1', ' '}), " A1");
  EXPECT_EQ(serial_number(Buffer{0, 0x80}), "");
}

TEST(Capacities, count_from_the_last_block) {
  const auto capacity = parse_capacity(Buffer{0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 2, 0});
  ASSERT_TRUE(capacity);
  EXPECT_EQ(capacity->bytes(), std::uint64_t{0x100000000} * 512);
  EXPECT_FALSE(parse_capacity(Buffer(7)));
}

TEST(LunLists, tell_how_long_they_are_even_where_they_are_cut) {
  const Buffer bytes{0, 0, 0, 24, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0x41, 0, 0, 0, 0, 0, 0, 0};
  const LunList list = parse_luns(bytes);
  EXPECT_EQ(list.bytes, 32U);
  ASSERT_EQ(list.luns.size(), 2U);
  EXPECT_EQ(lun_text(list.luns[1]), "256");
  expect_no_byte_beyond_the_end(bytes, [](const Buffer& shorter) { parse_luns(shorter); });
}

}  // namespace
}  // namespace vaskdfc::tool
