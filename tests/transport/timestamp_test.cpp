#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "vaskdfc/transport.h"

namespace {

std::string text_of(std::int32_t seconds) {
  char text[32] = "";
  const int length = trel_GetTimeOfDay(&seconds, text, sizeof(text));
  EXPECT_EQ(static_cast<std::size_t>(length), std::string_view(text).size());
  return text;
}

TEST(Timestamp, prints_the_required_texts) {
  const std::pair<std::int32_t, const char*> kRequired[] = {
      {0, "1970-01-01T00:00:00"},          {86399, "1970-01-01T23:59:59"},      {31535999, "1970-12-31T23:59:59"},
      {31536000, "1970-12-32T00:00:00"},   {31536001, "1971-01-01T00:00:01"},   {63072000, "1971-12-32T00:00:00"},
      {63158400, "1971-13-02T00:00:00"},   {68169600, "1972-02-28T00:00:00"},   {94694400, "1972-12-31T00:00:00"},
      {94694401, "1973-01-01T00:00:01"},   {1700000000, "2023-11-14T22:13:20"}, {1704067201, "2023-13-01T00:00:01"},
      {1709251200, "2024-02-29T00:00:00"}, {1735689600, "2024-12-31T00:00:00"}, {1735776000, "2025-01-02T00:00:00"},
  };
  for (const auto& [seconds, text] : kRequired) EXPECT_EQ(text_of(seconds), text) << seconds;
}

// The calendar as its rules read, one year and one month after the other.
std::string plain_loops(std::uint64_t seconds) {
  constexpr std::uint64_t kDay = 86400;
  constexpr std::uint64_t kDays[24] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31,
                                       31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  std::uint32_t year = 1970;
  const auto length = [&] { return (trel_isLeap(year + 1) == 1 ? 366 : 365) * kDay; };
  while (seconds > length()) {
    seconds -= length();
    ++year;
  }
  int entry = trel_isLeap(year) == 1 ? 12 : 0;
  int month = 1;
  while (seconds > kDays[entry] * kDay) {
    seconds -= kDays[entry] * kDay;
    ++entry;
    ++month;
  }
  const auto rest = static_cast<int>(seconds % kDay);
  char text[32];
  std::snprintf(text, sizeof(text), "%04u-%02d-%02dT%02d:%02d:%02d", year, month, static_cast<int>(seconds / kDay + 1), rest / 3600,
                rest % 3600 / 60, rest % 60);
  return text;
}

TEST(Timestamp, agrees_with_the_plain_loops_for_times_up_to_2038) {
  std::mt19937 random(20231114);
  std::uniform_int_distribution<std::int32_t> any_time(0, INT32_MAX);
  for (int i = 0; i < 20000; ++i) {
    const std::int32_t seconds = any_time(random);
    ASSERT_EQ(text_of(seconds), plain_loops(static_cast<std::uint64_t>(seconds))) << seconds;
  }
  EXPECT_EQ(text_of(INT32_MAX), "2038-01-19T03:14:07");
}

TEST(Timestamp, agrees_with_the_plain_loops_around_every_boundary_of_a_day) {
  for (std::int32_t day = 0; day < INT32_MAX / 86400; day += 7) {
    for (const std::int32_t offset : {-1, 0, 1}) {
      const std::int32_t seconds = day * 86400 + offset;
      if (seconds < 0) continue;
      ASSERT_EQ(text_of(seconds), plain_loops(static_cast<std::uint64_t>(seconds))) << seconds;
    }
  }
}

// A negative time counts as 2^64 minus it. The years run through their 32 bits many times; the texts were computed with
// integers of any size.
TEST(Timestamp, ends_for_negative_times) {
  EXPECT_EQ(text_of(-1), "438498967-08-03T07:00:15");
  EXPECT_EQ(text_of(-2), "438498967-08-03T07:00:14");
  EXPECT_EQ(text_of(-86400), "438498967-08-02T07:00:16");
  EXPECT_EQ(text_of(-1700000000), "438498913-09-19T08:46:56");
  EXPECT_EQ(text_of(INT32_MIN), "438498899-07-15T03:46:08");
  EXPECT_EQ(text_of(-2147483647), "438498899-07-15T03:46:09");
}

TEST(Timestamp, cuts_the_text_to_the_buffer_and_tells_its_whole_length) {
  const std::int32_t seconds = 1700000000;
  char text[11] = "##########";
  EXPECT_EQ(trel_GetTimeOfDay(&seconds, text, sizeof(text)), 19);
  EXPECT_STREQ(text, "2023-11-14");
  EXPECT_EQ(trel_GetTimeOfDay(&seconds, nullptr, 0), 19);
}

TEST(Timestamp, knows_leap_years) {
  for (const std::uint32_t leap : {4u, 1972u, 2000u, 2024u, 2400u, 0u}) EXPECT_EQ(trel_isLeap(leap), 1u) << leap;
  for (const std::uint32_t common : {1u, 1900u, 1970u, 2023u, 2100u, 2200u, 0xFFFFFFFFu})
    EXPECT_EQ(trel_isLeap(common), 0u) << common;
}

}  // namespace
