#include "region_image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace vaskdfc::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kRegion22Bytes = 512;
constexpr std::size_t kRegion23Bytes = 1024;

Bytes joined(const Bytes& first, const Bytes& second) {
  Bytes both(first.size() + second.size());
  std::ranges::copy(second, std::ranges::copy(first, both.begin()).out);
  return both;
}

Bytes image23(const Bytes& records) { return joined({'R', 'G', '2', '3', 1, 0, 0, 0}, records); }

Region23Record fcoe_record(std::uint8_t flags, std::uint8_t vlan_low, std::uint8_t vlan_high) {
  return {.offset = 8, .bytes = {0xA0, 2, 1, flags, 0x0E, 0xFC, 0x07, 0, vlan_low, vlan_high, 0, 0}};
}

TEST(RegionImage, has_records_up_to_the_end_marker) {
  const Region23Image image = parse_region23(image23({0xA2, 1, 5, 6, 1, 2, 3, 4, 0x42, 0, 7, 8, 0xFF, 0, 0, 9}));
  EXPECT_EQ(image.problem, "");
  ASSERT_EQ(image.records.size(), 2u);
  EXPECT_EQ(image.records[0].offset, 8u);
  EXPECT_EQ(image.records[0].data_bytes(), 4u);
  EXPECT_EQ(image.records[0].flags()[1], 6);
  EXPECT_EQ(image.records[1].offset, 16u);
  EXPECT_EQ(image.records[1].data_bytes(), 0u);
  EXPECT_EQ(image.bytes_behind, 1u);
  EXPECT_EQ(image.find(0x42), &image.records[1]);
  EXPECT_EQ(image.find(0xA0), nullptr);
}

TEST(RegionImage, says_what_is_wrong_with_a_head) {
  EXPECT_EQ(parse_region23({}).problem, "0 bytes are no image");
  EXPECT_EQ(parse_region23(Bytes{'R', 'G', '2'}).signature, "RG2");
  EXPECT_EQ(parse_region23(Bytes(kRegion23Bytes)).problem, "the signature is not RG23");
  EXPECT_EQ(parse_region23(Bytes{'R', 'G', '2', '3', 1, 0, 0, 1}).problem, "the version is not 1");
  EXPECT_EQ(parse_region23(Bytes{'R', 'G', '2', '3', 1, 0, 0, 1}).version, 0x01000001u);
}

TEST(RegionImage, says_where_a_chain_breaks) {
  EXPECT_EQ(parse_region23(image23({})).problem, "the records have no end marker");
  EXPECT_EQ(parse_region23(image23({0xFF})).problem, "the records have no end marker");
  EXPECT_EQ(parse_region23(image23({0xA0, 0, 0, 0})).problem, "the records have no end marker");
  const Region23Image image = parse_region23(image23({0xA0, 0, 0, 0, 0xA1, 1, 0, 0, 1, 2, 3}));
  EXPECT_EQ(image.problem, "the record at offset 12 is longer than the image");
  EXPECT_EQ(image.records.size(), 1u);
}

TEST(RegionImage, is_read_at_any_length_whatever_it_holds) {
  std::mt19937 random(23);
  for (std::size_t length = 0; length <= kRegion23Bytes; ++length) {
    Bytes image(length);
    std::ranges::generate(image, [&] { return static_cast<std::uint8_t>(random()); });
    const Bytes head{'R', 'G', '2', static_cast<std::uint8_t>('2' + length % 2), 1, 0, 0, 0};
    std::copy_n(head.begin(), std::min(length, head.size()), image.begin());

    std::size_t end = head.size();
    for (const Region23Record& record : parse_region23(image).records) {
      EXPECT_EQ(record.offset, end);
      end += record.bytes.size();
      fcoe_parameters_in(record);
      connect_entries_in(record);
      link_kept_down_in(record);
    }
    EXPECT_LE(end, std::max(length, head.size()));
    for (const Region22Entry& entry : parse_region22(image).entries) EXPECT_LE(entry.offset + entry.bytes.size(), length);
  }
}

TEST(RegionImage, decodes_the_fcoe_parameters) {
  const auto parameters = fcoe_parameters_in(fcoe_record(1, 0x34, 0x12));
  ASSERT_TRUE(parameters);
  EXPECT_EQ(parameters->fc_map[2], 7);
  EXPECT_EQ(parameters->vlan, 0x234);
  EXPECT_FALSE(fcoe_parameters_in(fcoe_record(2, 0x34, 0x12))->vlan);
  EXPECT_FALSE(fcoe_parameters_in({.offset = 8, .bytes = {0xA0, 1, 1, 1, 0x0E, 0xFC, 0, 0}})) << "another version";
  EXPECT_FALSE(fcoe_parameters_in({.offset = 8, .bytes = {0xA1, 0, 0, 0}}));
}

TEST(RegionImage, decodes_the_connect_entries_in_use) {
  Region23Record record{.offset = 8, .bytes = Bytes(324)};
  record.bytes[0] = 0xA1;
  record.bytes[1] = 80;
  record.bytes[4] = 0x3F;
  record.bytes[6] = 0xE9;
  record.bytes[7] = 0x03;
  record.bytes[8] = 0x20;
  record.bytes[4 + 20] = 0x3E;
  record.bytes[4 + 15 * 20] = 0x01;
  const auto entries = connect_entries_in(record);
  ASSERT_TRUE(entries);
  ASSERT_EQ(entries->size(), 2u);
  EXPECT_EQ(entries->front().vlan, 1001);
  EXPECT_EQ(entries->front().flags, 0x3F);
  EXPECT_EQ(entries->front().names[0], 0x20);
  record.bytes.resize(320);
  EXPECT_FALSE(connect_entries_in(record));
}

TEST(RegionImage, decodes_the_link_flag_that_is_in_use) {
  const auto down = [](const Bytes& data) { return link_kept_down_in({.offset = 8, .bytes = joined({0xA2, 2, 0x20, 0}, data)}); };
  EXPECT_EQ(down({1, 0, 1, 0, 1, 0, 0, 0}), false);
  EXPECT_EQ(down({1, 0, 0, 0, 1, 0, 1, 0}), true);
  EXPECT_EQ(down({0, 0, 0, 0, 1, 0, 1, 0}), false);
  EXPECT_EQ(down({0, 0, 1, 0, 1, 0, 0, 0}), true);
  EXPECT_EQ(down({0, 0, 1, 0, 2, 0, 1, 0}), std::nullopt);
  EXPECT_EQ(down({}), std::nullopt);
}

TEST(RegionImage, has_31_entries_and_a_half_in_region_22) {
  Bytes image(kRegion22Bytes);
  std::ranges::copy(Bytes{'R', 'G', '2', '2', 1, 2, 3, 4}, image.begin());
  const Region22Image parsed = parse_region22(image);
  EXPECT_EQ(parsed.problem, "");
  EXPECT_EQ(parsed.head, (Bytes{1, 2, 3, 4}));
  ASSERT_EQ(parsed.entries.size(), 32u);
  EXPECT_EQ(parsed.entries[30].bytes.size(), 16u);
  EXPECT_EQ(parsed.entries[31].bytes.size(), 8u);
  EXPECT_EQ(parsed.entries[31].offset, 504u);
}

}  // namespace
}  // namespace vaskdfc::tool
