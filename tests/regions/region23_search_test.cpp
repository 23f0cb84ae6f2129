#include "regions/region23.h"
#include "support/region_test.h"
#include "vaskdfc/regions.h"

namespace vaskdfc {
namespace {

using test::ByteVector;
using test::Image;
using test::with_bytes;

constexpr std::ptrdiff_t kNowhere = -1;

struct Found {
  std::ptrdiff_t offset;
  SearchStatus status;
  bool operator==(const Found&) const = default;
};

class Region23SearchTest : public test::LibraryTest {
 protected:
  // The image is searched in memory of exactly its size, so that a sanitizer sees every step beyond it.
  static Found search(Image image, std::uint8_t wanted) {
    auto status = static_cast<SearchStatus>(99);
    const std::uint8_t* const record = searchRegion23(image, wanted, status);
    return {record == nullptr ? kNowhere : record - image.data(), status};
  }
  static std::string found_line(int line, const std::string& type) {
    return test::log_line("searchRegion23", line, "ERROR: " + type + " Found");
  }
};

TEST_F(Region23SearchTest, finds_the_records_of_the_default_image_and_logs_each_as_an_error) {
  const Image image = test::default_region23();
  start_log(kLogError);
  EXPECT_EQ(search(image, 0xA0), (Found{8, SearchStatus::kFound}));
  EXPECT_EQ(search(image, 0xA1), (Found{20, SearchStatus::kFound}));
  EXPECT_EQ(search(image, 0xA2), (Found{344, SearchStatus::kFound}));
  EXPECT_EQ(search(image, 0xA3), (Found{kNowhere, SearchStatus::kEnd}));
  EXPECT_EQ(log(), found_line(4423, "A0") + found_line(4423, "A1") + found_line(4423, "A2") + found_line(4417, "FF"));
}

TEST_F(Region23SearchTest, logs_nothing_without_the_class_of_errors) {
  start_log(0xB);
  EXPECT_EQ(search(test::default_region23(), 0xA0), (Found{8, SearchStatus::kFound}));
  EXPECT_EQ(log(), "");
}

TEST_F(Region23SearchTest, looks_at_signature_then_version_then_length) {
  const Image image = test::default_region23();
  EXPECT_EQ(search(with_bytes(image, 0, {'R', 'G', '2', '2'}), 0xA0), (Found{kNowhere, SearchStatus::kSignature}));
  EXPECT_EQ(search(with_bytes(image, 0, {'R', 'G', '2', '2', 2}), 0xA0), (Found{kNowhere, SearchStatus::kSignature}));
  EXPECT_EQ(search(with_bytes(image, 4, {2}), 0xA0), (Found{kNowhere, SearchStatus::kVersion}));
  EXPECT_EQ(search(with_bytes(image, 7, {1}), 0xA0), (Found{kNowhere, SearchStatus::kVersion}));
  EXPECT_EQ(search(test::first_bytes(image, 8), 0xA0), (Found{kNowhere, SearchStatus::kTooShort}));
  EXPECT_EQ(search({'R', 'G', '2', '2', 1}, 0xA0), (Found{kNowhere, SearchStatus::kSignature}));
  for (std::size_t bytes = 0; bytes < 12; ++bytes) {
    EXPECT_EQ(search(test::first_bytes(image, bytes), 0xA0), (Found{kNowhere, SearchStatus::kTooShort})) << bytes;
  }
}

TEST_F(Region23SearchTest, the_end_marker_ends_the_search_even_for_itself) {
  EXPECT_EQ(search(test::default_region23(), 0xFF), (Found{kNowhere, SearchStatus::kEnd}));
}

Image without_records() { return with_bytes(Image(1024, 0), 0, {'R', 'G', '2', '3', 1, 0, 0, 0}); }

TEST_F(Region23SearchTest, bounds_the_walk_by_the_data_without_the_headers) {
  // One record up to 1020, where the wanted one begins: 8 + 1008 bytes of data are within the image.
  const Image last = with_bytes(without_records(), 1020, {0xA0});
  EXPECT_EQ(search(with_bytes(last, 8, {0x01, 252}), 0xA0), (Found{1020, SearchStatus::kFound}));
  // With 8 + 1012 the walk goes on, but the next header would begin at 1024; 8 + 1016 is not within any more.
  for (const std::uint8_t words : {std::uint8_t{253}, std::uint8_t{254}}) {
    EXPECT_EQ(search(with_bytes(last, 8, {0x01, words}), 0xA0), (Found{kNowhere, SearchStatus::kTooShort}));
  }
}

TEST_F(Region23SearchTest, never_leaves_an_image_of_records_without_data) {
  const Image image = without_records();
  EXPECT_EQ(search(image, 0xA0), (Found{kNowhere, SearchStatus::kTooShort}));
  EXPECT_EQ(search(with_bytes(image, 1020, {0xA0}), 0xA0), (Found{1020, SearchStatus::kFound}));
}

TEST_F(Region23SearchTest, a_last_record_of_255_words_ends_the_walk) {
  EXPECT_EQ(search(with_bytes(without_records(), 1020, {0x01, 255}), 0xA0), (Found{kNowhere, SearchStatus::kTooShort}));
}

TEST_F(Region23SearchTest, a_header_that_straddles_the_end_is_no_record) {
  EXPECT_EQ(search(with_bytes(test::first_bytes(without_records(), 1023), 1020, {0xA0}), 0xA0),
            (Found{kNowhere, SearchStatus::kTooShort}));
}

TEST_F(Region23SearchTest, the_default_image_clears_its_bytes_and_leaves_the_others) {
  Image image(1024, 0xEE);
  EXPECT_EQ(initRegion23(image.data()), 0u);
  Image expected = test::default_region23();
  std::fill(expected.begin() + 359, expected.end(), std::uint8_t{0xEE});
  EXPECT_EQ(image, expected);
}

}  // namespace
}  // namespace vaskdfc
