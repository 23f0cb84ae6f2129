#include "support/region_test.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::default_region23;
using test::Image;
using test::with_bytes;

constexpr std::uint32_t kFeature = 0x400;
constexpr std::uint16_t kUntouched = 0xEEEE;

// Offsets in region 23's default image: where the record begins, and its fields.
constexpr std::size_t kRecord = 344;
constexpr std::size_t kUsesFirst = kRecord + 4;
constexpr std::size_t kFirst = kRecord + 6;
constexpr std::size_t kUsesSecond = kRecord + 8;
constexpr std::size_t kSecond = kRecord + 10;

// An image in which the second flag is the one in use.
Image second_in_use(std::uint8_t flag) {
  return with_bytes(with_bytes(with_bytes(default_region23(), kUsesFirst, {0}), kUsesSecond, {1}), kSecond, {flag});
}

class PersistentLinkDownTest : public test::RegionTest {
 protected:
  // What both operations ask before they read the region.
  void expect_asked(std::uint32_t sli_mode = 4) {
    expect_driver_info(sli_mode, kFeature);
    expect_driver_info(sli_mode, kFeature);
  }
  std::uint32_t get() { return DFC_GetPersistLinkDown(kBoard, &value); }

  std::uint16_t value = kUntouched;
};

TEST_F(PersistentLinkDownTest, is_off_where_the_region_has_no_image) {
  expect_asked();
  expect_dump(23, {}, 0xFFFD);
  EXPECT_EQ(get(), DFC_OK);
  EXPECT_EQ(value, 0);
}

TEST_F(PersistentLinkDownTest, is_the_inverse_of_the_flag_in_use) {
  const std::pair<Image, std::uint16_t> kImages[] = {{default_region23(), 0},
                                                     {with_bytes(default_region23(), kFirst, {0}), 1},
                                                     {with_bytes(default_region23(), kFirst, {7}), 0},
                                                     {second_in_use(1), 0},
                                                     {second_in_use(0), 1}};
  for (const auto& [image, expected] : kImages) {
    expect_asked();
    expect_dump(23, image);
    EXPECT_EQ(get(), DFC_OK);
    EXPECT_EQ(value, expected);
  }
}

TEST_F(PersistentLinkDownTest, is_read_from_older_adapters_too) {
  expect_asked(3);
  expect_legacy_dump(23, with_bytes(default_region23(), kFirst, {0}));
  EXPECT_EQ(get(), DFC_OK);
  EXPECT_EQ(value, 1);
}

TEST_F(PersistentLinkDownTest, is_written_into_the_default_image_where_there_is_none) {
  expect_asked();
  expect_dump(23, {}, 0xFFFD);
  expect_update(23, with_bytes(default_region23(), kFirst, {0}));
  EXPECT_EQ(DFC_SetPersistLinkDown(kBoard, 1), DFC_OK);
}

TEST_F(PersistentLinkDownTest, any_nonzero_value_keeps_the_link_down) {
  for (const auto& [wanted, flag] : {std::pair<std::uint16_t, std::uint8_t>{0, 1}, {1, 0}, {2, 0}, {0x100, 0}}) {
    expect_asked();
    expect_dump(23, default_region23());
    expect_update(23, with_bytes(default_region23(), kFirst, {flag}), 0x77);
    EXPECT_EQ(DFC_SetPersistLinkDown(kBoard, wanted), 0x77u);
  }
}

TEST_F(PersistentLinkDownTest, is_written_into_the_flag_in_use_and_nothing_else_changes) {
  expect_asked();
  expect_dump(23, second_in_use(1));
  expect_update(23, second_in_use(0));
  EXPECT_EQ(DFC_SetPersistLinkDown(kBoard, 1), DFC_OK);
}

TEST_F(PersistentLinkDownTest, is_written_to_older_adapters_with_a_mailbox) {
  expect_asked(3);
  expect_legacy_dump(23, default_region23());
  expect_legacy_update(23, with_bytes(default_region23(), kFirst, {0}));
  EXPECT_EQ(DFC_SetPersistLinkDown(kBoard, 1), DFC_OK);
}

TEST_F(PersistentLinkDownTest, is_unsupported_without_the_feature_and_reads_no_region) {
  expect_driver_info(4, ~kFeature & 0xFFF);
  EXPECT_EQ(get(), DFC_UNSUPPORTED);
  expect_driver_info(4, 0);
  EXPECT_EQ(DFC_SetPersistLinkDown(kBoard, 1), DFC_UNSUPPORTED);
}

TEST_F(PersistentLinkDownTest, is_unsupported_where_no_flag_is_in_use) {
  for (int set = 0; set < 2; ++set) {
    expect_asked();
    expect_dump(23, with_bytes(default_region23(), kUsesFirst, {2}));
    EXPECT_EQ(set == 1 ? DFC_SetPersistLinkDown(kBoard, 1) : get(), DFC_UNSUPPORTED);
  }
}

TEST_F(PersistentLinkDownTest, tells_an_image_without_the_record_in_two_ways) {
  const Image image = with_bytes(default_region23(), kRecord, {0xA0});
  expect_asked();
  expect_dump(23, image);
  EXPECT_EQ(get(), DFC_FAILED);
  expect_asked();
  expect_dump(23, image);
  EXPECT_EQ(DFC_SetPersistLinkDown(kBoard, 1), DFC_RECORD_NOT_FOUND);
}

TEST_F(PersistentLinkDownTest, does_not_see_a_record_whose_fields_lie_outside_of_the_image) {
  // Three records of known types, and the last 4 bytes are the header of the wanted one.
  Image image(1024, 0);
  image = with_bytes(image, 0, {'R', 'G', '2', '3', 1, 0, 0, 0, 0xA0, 250});
  image = with_bytes(image, 8 + 4 + 1000, {0xA1, 0, 0, 0, 0xA1, 0, 0, 0, 0xA2, 2, 0, 0});
  expect_asked();
  expect_dump(23, image);
  EXPECT_EQ(get(), DFC_FAILED);
  expect_asked();
  expect_dump(23, image);
  EXPECT_EQ(DFC_SetPersistLinkDown(kBoard, 1), DFC_RECORD_NOT_FOUND);
}

TEST_F(PersistentLinkDownTest, fails_when_driver_or_region_cannot_be_read) {
  for (int set = 0; set < 2; ++set) {
    const auto run = [&] { return set == 1 ? DFC_SetPersistLinkDown(kBoard, 1) : get(); };
    expect_no_driver_info();
    EXPECT_EQ(run(), DFC_FAILED);
    expect_driver_info(4, kFeature);
    expect_no_driver_info();
    EXPECT_EQ(run(), DFC_FAILED);
    expect_asked();
    expect_no_driver_info();
    EXPECT_EQ(run(), DFC_FAILED);
    expect_asked();
    test::c_library.refused_bytes = 1024;
    EXPECT_EQ(run(), DFC_NO_MEMORY);
    test::c_library.refused_bytes = 0;
  }
  EXPECT_EQ(value, kUntouched);
}

}  // namespace
}  // namespace vaskdfc
