#include "loopback_pattern.h"

#include <gtest/gtest.h>

#include <set>

namespace vaskdfc::tool {
namespace {

using Data = std::vector<std::uint8_t>;

std::vector<int> bits_of(const Data& data) {
  std::vector<int> bits;
  for (const std::uint8_t byte : data) {
    for (int bit = 7; bit >= 0; --bit) bits.push_back(byte >> bit & 1);
  }
  return bits;
}

TEST(Pattern, walks_with_a_one_through_every_byte) {
  Pattern pattern(Pattern::Kind::kWalkingOnes);
  EXPECT_EQ(pattern.next(9), (Data{1, 2, 4, 8, 16, 32, 64, 128, 1}));
  EXPECT_EQ(pattern.next(2), (Data{2, 4}));
}

TEST(Pattern, of_15_bits_follows_its_polynomial_and_begins_anew_after_all_states) {
  Pattern pattern(Pattern::Kind::kPrbs15);
  constexpr std::size_t kPeriod = 32767;
  const auto bits = bits_of(pattern.next(8 * 1024));
  for (std::size_t i = 15; i < bits.size(); ++i) ASSERT_EQ(bits[i], bits[i - 15] ^ bits[i - 14]) << i;
  std::set<unsigned> states;
  unsigned state = 0;
  for (std::size_t i = 0; i < kPeriod + 14; ++i) {
    state = (state << 1 | static_cast<unsigned>(bits[i])) & 0x7FFF;
    if (i >= 14) states.insert(state);
  }
  EXPECT_EQ(states.size(), kPeriod);
}

TEST(Pattern, of_31_bits_follows_its_polynomial_from_one_test_to_the_next) {
  Pattern pattern(Pattern::Kind::kPrbs31);
  Data data = pattern.next(1000);
  const Data more = pattern.next(1000);
  data.insert(data.end(), more.begin(), more.end());
  const auto bits = bits_of(data);
  for (std::size_t i = 31; i < bits.size(); ++i) ASSERT_EQ(bits[i], bits[i - 31] ^ bits[i - 28]) << i;
  EXPECT_NE(std::ranges::count(bits, 1), 0);
}

TEST(Pattern, of_bytes_repeats_them_and_begins_every_test_with_the_first) {
  Pattern pattern(Pattern::Kind::kBytes, {1, 2, 3});
  EXPECT_EQ(pattern.next(5), (Data{1, 2, 3, 1, 2}));
  EXPECT_EQ(pattern.next(2), (Data{1, 2}));
}

TEST(Pattern, goes_by_its_name) {
  for (const std::string& name : pattern_names()) EXPECT_TRUE(pattern_named(name)) << name;
  EXPECT_EQ(pattern_named("prbs15"), Pattern::Kind::kPrbs15);
  EXPECT_FALSE(pattern_named("prbs"));
}

TEST(Comparison, finds_the_first_byte_and_counts_bytes_and_bits) {
  const Comparison comparison = compare(Data{1, 2, 3, 4}, Data{1, 0, 3, 0xFB});
  EXPECT_EQ(comparison.bytes, 2);
  EXPECT_EQ(comparison.bits, 9);
  EXPECT_EQ(comparison.first, 1);
  EXPECT_EQ(comparison.sent, 2);
  EXPECT_EQ(comparison.received, 0);
}

TEST(Comparison, of_the_same_finds_nothing) {
  EXPECT_FALSE(compare(Data{1, 2}, Data{1, 2}).first);
  EXPECT_EQ(compare(Data{}, Data{}).bytes, 0);
}

TEST(Comparison, counts_what_one_side_does_not_have) {
  const Comparison shorter = compare(Data{1, 2, 3}, Data{1});
  EXPECT_EQ(shorter.first, 1);
  EXPECT_EQ(shorter.bytes, 2);
  EXPECT_EQ(shorter.bits, 16);
  EXPECT_EQ(compare(Data{}, Data{0}).bytes, 1);
}

}  // namespace
}  // namespace vaskdfc::tool
