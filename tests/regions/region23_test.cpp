#include "regions/region23.h"

#include "support/region_test.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;
using test::default_region23;
using test::Image;
using test::with_bytes;

// An image that is valid and not the default one.
Image other_image() { return with_bytes(default_region23(), 400, {1, 2, 3}); }

class Region23Test : public test::RegionTest {
 protected:
  struct Delivered {
    std::uint32_t result;
    Image image;
    bool operator==(const Delivered&) const = default;
  };
  Delivered get(std::uint32_t sli_mode = 4) {
    auto* image = reinterpret_cast<std::uint8_t*>(this);
    std::uint32_t size = 99;
    const std::uint32_t result = GetRegion23(kBoard, &image, &size, sli_mode);
    EXPECT_EQ(image == nullptr, size == 0);
    Image delivered(image, image + size);
    std::free(image);
    return {result, delivered};
  }
  // The default image over what was read.
  static Image default_over(Image read) {
    read.resize(1024, 0);
    std::copy_n(default_region23().begin(), 359, read.begin());
    return read;
  }
};

TEST_F(Region23Test, delivers_a_valid_image_as_it_was_read) {
  expect_dump(23, other_image());
  EXPECT_EQ(get(), (Delivered{DFC_OK, other_image()}));
}

TEST_F(Region23Test, reads_older_adapters_in_pieces) {
  expect_legacy_dump(23, other_image());
  EXPECT_EQ(get(3), (Delivered{DFC_OK, other_image()}));
}

TEST_F(Region23Test, the_mode_that_the_caller_names_decides_the_path) {
  expect_legacy_dump(23, other_image());
  EXPECT_EQ(get(0), (Delivered{DFC_OK, other_image()}));
  expect_dump(23, other_image());
  EXPECT_EQ(get(7), (Delivered{DFC_OK, other_image()}));
}

TEST_F(Region23Test, delivers_the_default_image_where_there_is_none) {
  for (const std::uint32_t completion : {0xFFFDu, 0xFFF7u, 0xFFF6u}) {
    expect_dump(23, {}, completion);
    EXPECT_EQ(get(), (Delivered{DFC_OK, default_region23()}));
    expect_legacy_dump(23, {}, completion);
    EXPECT_EQ(get(3), (Delivered{DFC_OK, default_region23()}));
  }
}

TEST_F(Region23Test, writes_the_default_image_over_the_start_of_an_invalid_one) {
  const Image kInvalid[] = {
      test::first_bytes(other_image(), 1020),
      with_bytes(other_image(), 0, {'R', 'G', '2', '2'}),
      with_bytes(other_image(), 4, {2}),
      with_bytes(other_image(), 8, {0xA3}),
      with_bytes(other_image(), 344, {0xA3}),
      with_bytes(other_image(), 356, {0xA3}),
      with_bytes(other_image(), 356, {0x00}),
      Image(1024, 0),
      Image(1024, 0xFF),
  };
  for (const Image& image : kInvalid) {
    expect_dump(23, image);
    EXPECT_EQ(get(), (Delivered{DFC_OK, default_over(image)}));
  }
}

TEST_F(Region23Test, accepts_an_end_marker_as_the_first_record_when_three_known_types_follow) {
  Image image(1024, 0);
  image = with_bytes(image, 0, {'R', 'G', '2', '3', 1, 0, 0, 0, 0xFF, 0, 0, 0, 0xA2, 0, 0, 0, 0xA1, 0, 0, 0, 0xA0});
  expect_dump(23, image);
  EXPECT_EQ(get(), (Delivered{DFC_OK, image}));
}

// Three records of data words, then one of a known type.
Image with_lengths(std::uint8_t first, std::uint8_t second, std::uint8_t third, std::uint8_t fourth) {
  Image image(1024, 0);
  image = with_bytes(image, 0, {'R', 'G', '2', '3', 1, 0, 0, 0});
  std::size_t offset = 8;
  for (const std::uint8_t words : {first, second, third, fourth}) {
    if (offset + 2 > image.size()) break;
    image = with_bytes(image, offset, {0xA0, words});
    offset += 4u + 4u * words;
  }
  return image;
}

TEST_F(Region23Test, bounds_the_lengths_of_the_first_three_records_and_not_the_fourth) {
  const std::pair<Image, bool> kImages[] = {
      {with_lengths(100, 100, 50, 255), true},  // 8 + 1000, the fourth at 1020
      {with_lengths(100, 100, 51, 0), false},   // 8 + 1004 is within, but the fourth header is not
      {with_lengths(253, 0, 0, 0), false},      // the second header is not within
      {with_lengths(252, 0, 0, 0), false},      // the third is not
      {with_lengths(254, 0, 0, 0), false},      // 8 + 1016 is not below 1024
      {with_lengths(255, 255, 255, 255), false},
  };
  for (const auto& [image, is_valid] : kImages) {
    expect_dump(23, image);
    EXPECT_EQ(get(), (Delivered{DFC_OK, is_valid ? image : default_over(image)}));
  }
}

TEST_F(Region23Test, fails_when_the_region_cannot_be_read) {
  expect_no_driver_info();
  EXPECT_EQ(get(), (Delivered{DFC_FAILED, {}}));
  expect_driver_info(3);
  EXPECT_EQ(get(), (Delivered{DFC_FAILED, {}}));
  for (const std::uint32_t status : {0xFFFEu, 1u, 0x8000u}) {
    expect_legacy_dump(23, {}, status);
    EXPECT_EQ(get(3), (Delivered{DFC_FAILED, {}}));
  }
}

TEST_F(Region23Test, fails_without_memory) {
  test::c_library.refused_bytes = 1024;
  EXPECT_EQ(get(), (Delivered{DFC_NO_MEMORY, {}}));
}

// --- writing

TEST_F(Region23Test, writes_1024_bytes_of_a_longer_image) {
  Image image(2000, 0xD1);
  expect_update(23, Image(1024, 0xD1), 0x5678);
  EXPECT_EQ(fcoeSetRegion23(kBoard, image.data(), 2000), 0x5678u);
}

TEST_F(Region23Test, loses_the_result_of_a_refused_update) {
  expect_update(23, Image(8, 0xD1), 0x5678, 0xBAD0020);
  EXPECT_EQ(fcoeSetRegion23(kBoard, Image(8, 0xD1).data(), 8), 0u);
  expect_driver_info(3);
  EXPECT_EQ(fcoeSetRegion23(kBoard, Image(8, 0xD1).data(), 8), 0u);
}

TEST_F(Region23Test, writes_older_adapters_with_one_mailbox) {
  expect_legacy_update(23, other_image());
  EXPECT_EQ(LegacySetRegion23(kBoard, other_image().data(), 1024), DFC_OK);
  expect_legacy_update(23, other_image(), 0xBAD0039);
  EXPECT_EQ(LegacySetRegion23(kBoard, other_image().data(), 1024), 2u);
  EXPECT_EQ(test::c_library.sleeps, std::vector<std::string>{"usleep 100000"});
}

TEST_F(Region23Test, resets_the_region_to_the_default_image) {
  expect_driver_info(4);
  expect_update(23, default_region23(), 3);
  EXPECT_EQ(DFC_InitR23(kBoard), 3u);
  expect_driver_info(3);
  expect_legacy_update(23, default_region23());
  EXPECT_EQ(DFC_InitR23(kBoard), DFC_OK);
}

TEST_F(Region23Test, resets_nothing_without_the_mode_or_memory) {
  expect_no_driver_info();
  EXPECT_EQ(DFC_InitR23(kBoard), DFC_FAILED);
  test::c_library.refused_bytes = 1024;
  expect_driver_info(4);
  EXPECT_EQ(DFC_InitR23(kBoard), DFC_NO_MEMORY);
}

}  // namespace
}  // namespace vaskdfc
