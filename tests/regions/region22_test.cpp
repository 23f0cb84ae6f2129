#include "regions/region22.h"

#include <numeric>

#include "support/region_test.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;
using test::Image;
using test::with_bytes;
using Entries = std::vector<dfc_region22_entry>;

Image blank_image() { return with_bytes(Image(512, 0), 0, {'R', 'G', '2', '2', 1}); }

// A valid image whose entries are all different.
Image full_image() {
  Image image = blank_image();
  std::iota(image.begin() + 8, image.end(), std::uint8_t{1});
  return image;
}

Entries entries_of(std::size_t count, std::uint8_t value) {
  Entries entries(count);
  for (dfc_region22_entry& entry : entries) std::ranges::fill(entry.bytes, value);
  return entries;
}

ByteVector bytes_of(const Entries& entries) {
  ByteVector bytes;
  for (const dfc_region22_entry& entry : entries) bytes.insert(bytes.end(), std::begin(entry.bytes), std::end(entry.bytes));
  return bytes;
}

class Region22Test : public test::RegionTest {
 protected:
  // An update through fcoeSetRegion22, which asks for the type once more.
  void expect_fcoe_update(const Image& image, std::uint32_t reply_word = 0) {
    expect_adapter_type(kFcoe);
    expect_update(22, image, reply_word);
  }
  std::uint32_t get() { return DFC_GetRegion22(kBoard, entries.data(), &count); }

  Entries entries = entries_of(32, 0xEE);
  std::uint32_t count = 99;
};

// --- writers

TEST_F(Region22Test, writes_512_bytes_of_a_longer_image) {
  expect_fcoe_update(Image(512, 0xD1), 0x77);
  EXPECT_EQ(fcoeSetRegion22(kBoard, Image(600, 0xD1).data(), 600), 0x77u);
}

TEST_F(Region22Test, takes_the_callback_on_fcoe_adapters_only) {
  expect_adapter_type(kFc);
  EXPECT_EQ(fcoeSetRegion22(kBoard, blank_image().data(), 512), DFC_UNSUPPORTED);
  expect_adapter_type(kFcoe, 1);
  EXPECT_EQ(fcoeSetRegion22(kBoard, blank_image().data(), 512), DFC_FAILED);
}

TEST_F(Region22Test, loses_the_result_of_a_refused_update) {
  expect_adapter_type(kFcoe);
  expect_update(22, blank_image(), 0x77, 0xBAD0020);
  EXPECT_EQ(fcoeSetRegion22(kBoard, blank_image().data(), 512), 0u);
}

TEST_F(Region22Test, writes_other_adapters_with_one_mailbox) {
  expect_legacy_update(22, full_image());
  EXPECT_EQ(LegacySetRegion22(kBoard, full_image().data(), 512), DFC_OK);
}

TEST_F(Region22Test, writes_a_blank_image) {
  expect_adapter_type(kLastFcoe);
  expect_fcoe_update(blank_image(), 0x77);
  EXPECT_EQ(DFC_InitR22(kBoard), 0x77u);
  expect_adapter_type(kFc);
  expect_legacy_update(22, blank_image());
  EXPECT_EQ(DFC_InitR22(kBoard), DFC_OK);
}

TEST_F(Region22Test, writes_nothing_without_the_type_or_memory) {
  expect_adapter_type(kFc, 0, 0xBAD0020);
  EXPECT_EQ(DFC_InitR22(kBoard), 0xBAD0020u);
  expect_adapter_type(kFc, 0, 0xBAD0020);
  EXPECT_EQ(DFC_SetRegion22(kBoard, entries.data(), 1), 0xBAD0020u);
  test::c_library.refused_bytes = 512;
  expect_adapter_type(kFc);
  EXPECT_EQ(DFC_InitR22(kBoard), DFC_NO_MEMORY);
  expect_adapter_type(kFc);
  EXPECT_EQ(DFC_SetRegion22(kBoard, entries.data(), 1), DFC_NO_MEMORY);
}

// --- DFC_GetRegion22

TEST_F(Region22Test, reads_32_entries_of_which_the_last_ends_with_zeros) {
  const Image image = full_image();
  Image expected(image.begin() + 8, image.end());
  expected.resize(512, 0);
  expect_adapter_type(kFcoe);
  expect_dump(22, image);
  EXPECT_EQ(get(), DFC_OK);
  EXPECT_EQ(count, 32u);
  EXPECT_EQ(bytes_of(entries), expected);

  entries = entries_of(32, 0xEE);
  expect_adapter_type(kFc);
  expect_legacy_dump(22, image);
  EXPECT_EQ(get(), DFC_OK);
  EXPECT_EQ(bytes_of(entries), expected);
}

TEST_F(Region22Test, knows_no_image_of_another_size_or_signature) {
  const Image kNone[] = {test::first_bytes(full_image(), 508), with_bytes(full_image(), 3, {'3'}), Image(512, 0)};
  for (const Image& image : kNone) {
    expect_adapter_type(kFcoe);
    expect_dump(22, image);
    EXPECT_EQ(get(), DFC_REGION22_NO_IMAGE);
  }
  // A short read of an older adapter leaves zeros behind; the signature decides.
  expect_adapter_type(kFc);
  expect_legacy_dump(22, Image(4, 0));
  driver.expect({.callback = Callback::kMbox,
                 .sent = {.brdno = kDriverBoard, .arg2 = 128, .arg3 = 256},
                 .payload = {{}, test::bytes_of(Mailbox{{0x1700}})}});
  EXPECT_EQ(get(), DFC_REGION22_NO_IMAGE);
  EXPECT_EQ(bytes_of(entries), ByteVector(512, 0xEE));
  EXPECT_EQ(count, 99u);
}

TEST_F(Region22Test, passes_on_why_it_cannot_be_read) {
  expect_adapter_type(kFc, 0, 0xBAD0020);
  EXPECT_EQ(get(), 0xBAD0020u);
  expect_adapter_type(kFcoe);
  expect_dump(22, {}, 0xFFF7);
  EXPECT_EQ(get(), 5u);
  expect_adapter_type(kFc);
  expect_legacy_dump(22, {}, 0x8001);
  EXPECT_EQ(get(), 0x8001u);
  test::c_library.refused_bytes = 512;
  expect_adapter_type(kFc);
  EXPECT_EQ(get(), DFC_NO_MEMORY);
  EXPECT_EQ(bytes_of(entries), ByteVector(512, 0xEE));
}

// --- DFC_SetRegion22

TEST_F(Region22Test, keeps_what_a_valid_image_holds_beside_the_entries) {
  const Entries two = entries_of(2, 0xD2);
  const Image expected = with_bytes(full_image(), 8, bytes_of(two));
  expect_adapter_type(kFcoe);
  expect_dump(22, full_image());
  expect_fcoe_update(expected, 0x77);
  EXPECT_EQ(DFC_SetRegion22(kBoard, two.data(), 2), 0x77u);

  expect_adapter_type(kFc);
  expect_legacy_dump(22, full_image());
  expect_legacy_update(22, expected);
  EXPECT_EQ(DFC_SetRegion22(kBoard, two.data(), 2), DFC_OK);
}

TEST_F(Region22Test, cuts_entries_at_the_end_of_the_image) {
  const Entries many = entries_of(40, 0xD2);
  for (const std::uint32_t entry_count : {32u, 40u}) {
    expect_adapter_type(kFcoe);
    expect_dump(22, full_image());
    expect_fcoe_update(with_bytes(blank_image(), 8, ByteVector(504, 0xD2)));
    EXPECT_EQ(DFC_SetRegion22(kBoard, many.data(), entry_count), DFC_OK);
  }
  expect_adapter_type(kFcoe);
  expect_dump(22, full_image());
  expect_fcoe_update(with_bytes(full_image(), 8, ByteVector(496, 0xD2)));
  EXPECT_EQ(DFC_SetRegion22(kBoard, many.data(), 31), DFC_OK);
}

TEST_F(Region22Test, writes_the_image_as_it_was_where_there_are_no_entries) {
  expect_adapter_type(kFcoe);
  expect_dump(22, full_image());
  expect_fcoe_update(full_image());
  EXPECT_EQ(DFC_SetRegion22(kBoard, nullptr, 0), DFC_OK);
}

TEST_F(Region22Test, writes_a_blank_image_first_where_there_is_none) {
  const Entries one = entries_of(1, 0xD2);
  const Image expected = with_bytes(blank_image(), 8, bytes_of(one));
  for (const Image& read : {Image{}, Image(508, 1), with_bytes(full_image(), 0, {'X'})}) {
    expect_adapter_type(kFcoe);
    expect_dump(22, read);
    expect_fcoe_update(blank_image());
    expect_fcoe_update(expected);
    EXPECT_EQ(DFC_SetRegion22(kBoard, one.data(), 1), DFC_OK);
  }
  expect_adapter_type(kFcoe);
  expect_dump(22, {}, 0xFFFD);  // result 4
  expect_fcoe_update(blank_image());
  expect_fcoe_update(expected);
  EXPECT_EQ(DFC_SetRegion22(kBoard, one.data(), 1), DFC_OK);
}

TEST_F(Region22Test, writes_older_adapters_a_blank_image_after_these_statuses) {
  const Entries one = entries_of(1, 0xD2);
  for (const std::uint32_t status : {0xFFFCu, 0xFFFEu, 0xFFFDu}) {
    expect_adapter_type(kFc);
    expect_legacy_dump(22, {}, status);
    expect_legacy_update(22, blank_image());
    expect_legacy_update(22, with_bytes(blank_image(), 8, bytes_of(one)));
    EXPECT_EQ(DFC_SetRegion22(kBoard, one.data(), 1), DFC_OK);
  }
}

TEST_F(Region22Test, returns_a_nonzero_result_of_the_blank_write_and_goes_no_further) {
  expect_adapter_type(kFcoe);
  expect_dump(22, {});
  expect_fcoe_update(blank_image(), 0x77);
  EXPECT_EQ(DFC_SetRegion22(kBoard, entries.data(), 1), 0x77u);
}

TEST_F(Region22Test, writes_nothing_when_another_result_ends_the_read) {
  for (const std::uint32_t completion : {0xFFF7u, 0xFFF6u}) {  // results 5 and 6
    expect_adapter_type(kFcoe);
    expect_dump(22, {}, completion);
    EXPECT_EQ(DFC_SetRegion22(kBoard, entries.data(), 1), DFC_FAILED);
  }
  for (const std::uint32_t status : {0x8001u, 0xFFFBu, 3u}) {
    expect_adapter_type(kFc);
    expect_legacy_dump(22, {}, status);
    EXPECT_EQ(DFC_SetRegion22(kBoard, entries.data(), 1), DFC_FAILED);
  }
}

}  // namespace
}  // namespace vaskdfc
