#include <cstring>

#include "support/region_test.h"
#include "vaskdfc/fcoe.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;
using test::default_region23;
using test::Image;
using test::with_bytes;

constexpr std::size_t kRecord = 20;
constexpr std::size_t kEntries = kRecord + 4;

// An entry as region 23 keeps it: flags, VLAN id, names that are all the same byte.
ByteVector stored(std::uint16_t flags, std::uint16_t vlan_id, std::uint8_t name) {
  ByteVector entry{static_cast<std::uint8_t>(flags), static_cast<std::uint8_t>(flags >> 8), static_cast<std::uint8_t>(vlan_id),
                   static_cast<std::uint8_t>(vlan_id >> 8)};
  entry.resize(20, name);
  return entry;
}

Image with_entry(const Image& image, std::size_t position, const ByteVector& entry) {
  return with_bytes(image, kEntries + 20 * position, entry);
}

class FcfConnectListTest : public test::RegionTest {
 protected:
  FcfConnectListTest() { std::memset(&list, 0xEE, sizeof(list)); }

  void expect_read(const Image& image) {
    expect_driver_info(4);
    expect_dump(23, image);
  }
  std::uint32_t get(std::uint8_t room) {
    list.numEntries = room;
    return DFC_FCoEGetFCFConnectList(kBoard, &list);
  }
  std::uint32_t set(std::uint8_t entries) {
    list.numEntries = entries;
    return DFC_FCoESetFCFConnectList(kBoard, &list);
  }
  static dfc_fcf_connect_entry entry(std::uint16_t flags, std::uint16_t vlan_id, std::uint8_t name) {
    dfc_fcf_connect_entry result{.flags = flags, .vlan_id = vlan_id, .names = {}, .caller_20 = {0xEE, 0xEE}};
    std::ranges::fill(result.names, name);
    return result;
  }
  void expect_entry(std::size_t position, const dfc_fcf_connect_entry& expected) {
    EXPECT_EQ(test::bytes_of(list.entries[position]), test::bytes_of(expected)) << position;
  }

  dfc_fcf_conn_list list;
  // Entries 1, 4 and 15 are valid.
  const Image three =
      with_entry(with_entry(with_entry(with_entry(default_region23(), 0, stored(0xFFFE, 9, 9)), 1, stored(0x1201, 100, 1)), 4,
                            stored(0x003F, 4094, 2)),
                 15, stored(0x0001, 0, 3));
};

TEST_F(FcfConnectListTest, delivers_the_valid_entries_in_order) {
  expect_read(three);
  EXPECT_EQ(get(3), DFC_OK);
  EXPECT_EQ(list.numEntries, 3);
  EXPECT_EQ(list.maxEntries, 16);
  expect_entry(0, entry(0x01, 100, 1));  // the high half of the flags is not delivered
  expect_entry(1, entry(0x3F, 4094, 2));
  expect_entry(2, entry(0x01, 0, 3));
  dfc_fcf_connect_entry untouched;
  std::memset(&untouched, 0xEE, sizeof(untouched));
  for (std::size_t i = 3; i < 16; ++i) expect_entry(i, untouched);
  EXPECT_EQ(list.caller_0[0], 0xEE);
  EXPECT_EQ(list.caller_0[1], 0xEE);
}

TEST_F(FcfConnectListTest, counts_entries_beyond_the_room) {
  expect_read(three);
  EXPECT_EQ(get(2), DFC_TOO_SMALL);
  EXPECT_EQ(list.numEntries, 3);
  expect_entry(1, entry(0x3F, 4094, 2));
  EXPECT_EQ(list.entries[2].flags, 0xEEEE);
  expect_read(three);
  EXPECT_EQ(get(0), DFC_TOO_SMALL);
  expect_read(default_region23());
  EXPECT_EQ(get(0), DFC_OK);
  EXPECT_EQ(list.numEntries, 0);
}

TEST_F(FcfConnectListTest, delivers_a_full_list_into_more_room_than_there_can_be) {
  Image full = default_region23();
  for (std::size_t i = 0; i < 16; ++i) full = with_entry(full, i, stored(1, 7, static_cast<std::uint8_t>(i)));
  expect_read(full);
  EXPECT_EQ(get(255), DFC_OK);
  EXPECT_EQ(list.numEntries, 16);
  for (std::uint8_t i = 0; i < 16; ++i) expect_entry(i, entry(1, 7, i));
}

TEST_F(FcfConnectListTest, stores_the_entries_with_bits_0_to_5_of_their_flags) {
  list.entries[0] = entry(0xFFFF, 0x1234, 1);
  list.entries[1] = entry(0, 2, 2);
  list.entries[2] = entry(0x0024, 3, 3);
  Image expected = with_entry(default_region23(), 0, stored(0x3F, 0x1234, 1));
  expected = with_entry(expected, 1, stored(0x01, 2, 2));
  expected = with_entry(expected, 2, stored(0x25, 3, 3));
  expect_read(three);
  expect_update(23, expected, 0x77);
  EXPECT_EQ(set(3), 0x77u);
  EXPECT_EQ(list.maxEntries, 16);
  EXPECT_EQ(list.numEntries, 3);
}

TEST_F(FcfConnectListTest, no_entries_clear_the_list) {
  const Image left_as_found = with_bytes(three, kRecord + 2, {0x12, 0x34});
  expect_read(left_as_found);
  expect_update(23, with_bytes(default_region23(), kRecord + 2, {0x12, 0x34}));
  EXPECT_EQ(set(0), DFC_OK);
}

TEST_F(FcfConnectListTest, takes_16_entries_and_no_more) {
  Image full = default_region23();
  for (std::size_t i = 0; i < 16; ++i) {
    list.entries[i] = entry(1, 7, static_cast<std::uint8_t>(i));
    full = with_entry(full, i, stored(1, 7, static_cast<std::uint8_t>(i)));
  }
  expect_read(three);
  expect_update(23, full);
  EXPECT_EQ(set(16), DFC_OK);

  list.maxEntries = 0xEE;
  expect_read(three);
  EXPECT_EQ(set(17), DFC_TOO_SMALL);
  EXPECT_EQ(list.maxEntries, 16);
}

TEST_F(FcfConnectListTest, knows_one_layout_of_the_record) {
  // With 81 words the record reaches to the third one's data, where an end marker stands in for a record.
  const Image image = with_bytes(with_bytes(default_region23(), kRecord + 1, {0x51}), 348, {0xFF, 0});
  expect_read(image);
  EXPECT_EQ(get(16), DFC_TOO_SMALL);
  EXPECT_EQ(list.numEntries, 16);
  EXPECT_EQ(list.maxEntries, 0xEE);
  expect_read(image);
  EXPECT_EQ(set(1), DFC_TOO_SMALL);
}

TEST_F(FcfConnectListTest, an_image_without_the_record_is_told_in_two_ways) {
  const Image image = with_bytes(default_region23(), kRecord, {0xA0});
  expect_read(image);
  EXPECT_EQ(get(16), DFC_FAILED);
  expect_read(image);
  EXPECT_EQ(set(1), DFC_RECORD_NOT_FOUND);
  EXPECT_EQ(list.maxEntries, 0xEE);
}

TEST_F(FcfConnectListTest, is_for_sli_mode_4_and_above) {
  expect_driver_info(3);
  EXPECT_EQ(get(16), DFC_UNSUPPORTED);
  expect_driver_info(3);
  EXPECT_EQ(set(1), DFC_UNSUPPORTED);
  expect_no_driver_info();
  EXPECT_EQ(get(16), DFC_FAILED);
  expect_no_driver_info();
  EXPECT_EQ(set(1), DFC_FAILED);
  EXPECT_EQ(list.maxEntries, 0xEE);
}

}  // namespace
}  // namespace vaskdfc
