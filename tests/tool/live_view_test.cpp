#include "live_view.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <map>

#include "live_view_rows.h"
#include "terminal.h"

namespace vaskdfc::tool {
namespace {

using Kind = Movement::Kind;

LiveRow busy_row(std::uint32_t adapter, double received, double sent, double frames, double errors) {
  return {.adapter = adapter,
          .model = "Kestar K5603-FC16",
          .state = "online",
          .speed = "16 Gbit/s",
          .rates = {.seconds = 1,
                    .received = Rate{.per_second = received},
                    .sent = Rate{.per_second = sent},
                    .frames = Rate{.per_second = frames},
                    .errors = Rate{.per_second = errors}},
          .problem = "",
          .history = {0.0, received + sent}};
}

LiveRow failing_row(std::uint32_t adapter) {
  return {.adapter = adapter, .model = "Kestar K5601-FC8", .state = "error", .problem = "the port counters cannot be read"};
}

std::vector<LiveRow> three_rows() {
  return {busy_row(0, 1.25e6, 2e6, 1500, 0), failing_row(1), busy_row(2, 400e6, 12e6, 200, 2.5)};
}

std::vector<std::uint32_t> order(SortKey key, bool reversed) {
  std::vector<std::uint32_t> adapters;
  for (const LiveRow& row : sorted(three_rows(), key, reversed)) adapters.push_back(row.adapter);
  return adapters;
}

// Columns on the screen: bytes that begin a character.
std::size_t columns_of(const std::string& line) {
  return static_cast<std::size_t>(
      std::ranges::count_if(line, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

TEST(LiveView, draws_a_line_for_each_adapter_between_titles_and_keys) {
  EXPECT_EQ(draw(three_rows(), "three adapters", {.columns = 80, .lines = 7}),
            (std::vector<std::string>{
                "three adapters",
                " # MODEL             LINK             RX MB/s TX MB/s FRAMES/s  ERR/s THROUGHPUT",
                " 0 Kestar K5603-FC16 online 16 Gbit/s     1.2     2.0   1500.0    0.0 _#",
                " 1 Kestar K5601-FC8  error            the port counters cannot be read",
                " 2 Kestar K5603-FC16 online 16 Gbit/s   400.0    12.0    200.0    2.5 _#",
                "",
                "q quit  r reverse  sort:  [a adapter]  t throughput  f frames  e errors",
            }));
}

TEST(LiveView, fills_the_screen_and_never_more) {
  std::vector<LiveRow> rows;
  for (std::uint32_t adapter = 0; adapter < 32; ++adapter) {
    rows.push_back(adapter % 3 == 0 ? failing_row(adapter) : busy_row(adapter, 1e18, 1e9, 1e12, 1e9));
    rows.back().history.assign(kMostHistory, 1.0);
  }
  for (const std::size_t columns : {1U, 20U, 64U, 70U, 80U, 200U}) {
    for (const std::size_t lines : {1U, 2U, 3U, 10U, 24U, 60U}) {
      const auto screen = draw(rows, "all adapters", {.columns = columns, .lines = lines, .sort = SortKey::kErrors, .utf8 = true});
      EXPECT_EQ(screen.size(), lines);
      for (const std::string& line : screen) EXPECT_LE(columns_of(line), columns) << line;
    }
  }
}

TEST(LiveView, says_what_there_is_no_rate_for) {
  LiveRow row = busy_row(0, 0, 0, 0, 0);
  row.speed.reset();
  row.state = "link down";
  row.rates.received = Rate{.per_second = std::nullopt, .kind = Kind::kReset};
  row.rates.sent = Rate{.per_second = 3e6, .kind = Kind::kWrapped};
  row.rates.frames.reset();
  EXPECT_EQ(draw({row}, "", {.columns = 69, .lines = 4})[2],
            " 0 Kestar K5603-FC16 link down          reset    3.0w        -    0.0");
}

TEST(LiveView, shortens_numbers_that_are_too_wide) {
  EXPECT_EQ(draw({busy_row(0, 123456.7e6, 12345678e6, 1234567890, 123456)}, "", {.columns = 69, .lines = 4})[2],
            " 0 Kestar K5603-FC16 online 16 Gbit/s  123457   12.3M  1234.6M 123456");
}

TEST(LiveView, pages_through_adapters_that_do_not_fit) {
  ViewOptions options{.columns = 80, .lines = 5};
  const auto adapters_shown = [&] {
    const auto screen = draw(three_rows(), "three adapters", options);
    return screen[0] + "|" + screen[2].substr(0, 2) + "|" + screen[3].substr(0, 2);
  };
  EXPECT_EQ(adapters_shown(), "three adapters  page 1 of 2 (space)| 0| 1");
  apply_key(' ', options);
  EXPECT_EQ(adapters_shown(), "three adapters  page 2 of 2 (space)| 2|");
  apply_key(' ', options);
  EXPECT_EQ(adapters_shown(), "three adapters  page 1 of 2 (space)| 0| 1");
}

TEST(LiveView, sorts_the_busiest_first_and_those_without_a_rate_last) {
  using Order = std::vector<std::uint32_t>;
  EXPECT_EQ(order(SortKey::kAdapter, false), (Order{0, 1, 2}));
  EXPECT_EQ(order(SortKey::kAdapter, true), (Order{2, 1, 0}));
  EXPECT_EQ(order(SortKey::kThroughput, false), (Order{2, 0, 1}));
  EXPECT_EQ(order(SortKey::kThroughput, true), (Order{0, 2, 1}));
  EXPECT_EQ(order(SortKey::kFrames, false), (Order{0, 2, 1}));
  EXPECT_EQ(order(SortKey::kErrors, false), (Order{2, 0, 1}));
}

TEST(LiveView, keys_choose_the_order_and_the_last_line_tells_it) {
  ViewOptions options{.columns = 80, .lines = 3};
  const auto keys = [&](char key) {
    apply_key(key, options);
    return draw({}, "", options).back();
  };
  EXPECT_EQ(keys('t'), "q quit  r reverse  sort:  a adapter  [t throughput]  f frames  e errors");
  EXPECT_EQ(keys('f'), "q quit  r reverse  sort:  a adapter  t throughput  [f frames]  e errors");
  EXPECT_EQ(keys('e'), "q quit  r reverse  sort:  a adapter  t throughput  f frames  [e errors]");
  EXPECT_EQ(keys('r'), "q quit  r [reverse]  sort:  a adapter  t throughput  f frames  [e errors]");
  EXPECT_EQ(keys('x'), "q quit  r [reverse]  sort:  a adapter  t throughput  f frames  [e errors]");
  EXPECT_EQ(keys('r'), "q quit  r reverse  sort:  a adapter  t throughput  f frames  [e errors]");
}

TEST(LiveView, colours_what_is_wrong_and_only_where_colour_is_wanted) {
  ViewOptions options{.columns = 80, .lines = 7};
  for (const std::string& line : draw(three_rows(), "", options)) EXPECT_EQ(line.find('\x1b'), std::string::npos) << line;
  options.colour = true;
  const auto screen = draw(three_rows(), "", options);
  EXPECT_TRUE(screen[1].starts_with("\x1b[7m"));
  EXPECT_EQ(screen[2].find('\x1b'), std::string::npos);
  EXPECT_TRUE(screen[3].ends_with("\x1b[31mthe port counters cannot be read\x1b[0m"));
  EXPECT_NE(screen[3].find("\x1b[33merror"), std::string::npos);
  EXPECT_NE(screen[4].find("\x1b[31m   2.5\x1b[0m"), std::string::npos);
}

TEST(LiveView, plain_lines_have_the_same_columns) {
  EXPECT_EQ(plain_titles(), "SAMPLE  # MODEL             LINK             RX MB/s TX MB/s FRAMES/s  ERR/s\n");
  EXPECT_EQ(plain_line(12, busy_row(3, 1e6, 2e6, 30, 0)),
            "    12  3 Kestar K5603-FC16 online 16 Gbit/s     1.0     2.0     30.0    0.0\n");
  EXPECT_EQ(plain_line(13, failing_row(3)), "    13  3 Kestar K5601-FC8  error            the port counters cannot be read\n");
}

TEST(Sparkline, is_relative_to_the_largest_value_that_it_shows) {
  EXPECT_EQ(sparkline({0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0}, 8, false), "_.:-=+*#");
  EXPECT_EQ(sparkline({0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0}, 8, true), "▁▂▃▄▅▆▇█");
  EXPECT_EQ(sparkline({100.0, 0.0, 2.0}, 2, false), "_#");
}

TEST(Sparkline, leaves_a_gap_where_nothing_is_known) {
  EXPECT_EQ(sparkline({1.0, std::nullopt, 1.0}, 8, false), "# #");
  EXPECT_EQ(sparkline({0.0, 0.0}, 8, false), "__");
  EXPECT_EQ(sparkline({}, 8, false), "");
  EXPECT_EQ(sparkline({1.0}, 0, false), "");
}

// --- rates

class LiveRatesTest : public testing::Test {
 protected:
  LiveRates rates(double seconds = 2) const { return rates_between(before_, now_, seconds, SupportedCounters(before_)); }

  HbaPortStatistics before_{};
  HbaPortStatistics now_{};
};

TEST_F(LiveRatesTest, are_bytes_each_way_and_frames_and_errors_of_all_kinds_together) {
  now_.RxWords = 1000;
  now_.TxWords = 500;
  now_.RxFrames = 30;
  now_.TxFrames = 10;
  now_.ErrorFrames = 1;
  now_.InvalidTxWordCount = 4;
  now_.LIPCount = 100;  // no error
  const LiveRates found = rates();
  EXPECT_EQ(found.received->per_second, 2000.0);
  EXPECT_EQ(found.sent->per_second, 1000.0);
  EXPECT_EQ(found.frames->per_second, 20.0);
  EXPECT_EQ(found.errors->per_second, 2.5);
  EXPECT_EQ(throughput(found), 3000.0);
}

TEST_F(LiveRatesTest, pass_the_end_of_a_counter) {
  before_.RxFrames = 0xFFFFFFF0;
  now_.RxFrames = 0x10;
  now_.TxFrames = 8;
  EXPECT_EQ(rates().frames->per_second, 20.0);
  EXPECT_EQ(rates().frames->kind, Kind::kWrapped);
  EXPECT_EQ(rates().received->kind, Kind::kForward);
}

TEST_F(LiveRatesTest, are_unknown_after_a_reset_of_any_of_their_counters) {
  before_.RxFrames = 0xFFFFFFF0;
  now_.RxFrames = 0x10;
  before_.TxFrames = 1000;
  EXPECT_EQ(rates().frames->per_second, std::nullopt);
  EXPECT_EQ(rates().frames->kind, Kind::kReset);
  before_.SecondsSinceLastReset = 9;
  EXPECT_EQ(rates().received->kind, Kind::kReset);
  EXPECT_EQ(throughput(rates()), std::nullopt);
}

TEST_F(LiveRatesTest, leave_out_counters_that_the_adapter_does_not_have) {
  before_.RxWords = -1;
  before_.TxFrames = -1;
  now_.RxFrames = 6;
  EXPECT_FALSE(rates().received.has_value());
  EXPECT_EQ(rates().frames->per_second, 3.0);
  EXPECT_EQ(throughput(rates()), std::nullopt);
}

// --- the terminal's abilities

using Environment = std::map<std::string, const char*>;

Variables variables(const Environment& environment) {
  return [environment](const char* name) {
    const auto found = environment.find(name);
    return found == environment.end() ? nullptr : found->second;
  };
}

TEST(TerminalAbilities, need_a_terminal_that_can_address_the_cursor) {
  EXPECT_TRUE(can_address_the_cursor(variables({{"TERM", "xterm"}})));
  EXPECT_FALSE(can_address_the_cursor(variables({{"TERM", "dumb"}})));
  EXPECT_FALSE(can_address_the_cursor(variables({})));
}

TEST(TerminalAbilities, include_blocks_where_the_locale_is_utf8) {
  EXPECT_TRUE(shows_utf8(variables({{"LANG", "en_GB.UTF-8"}})));
  EXPECT_TRUE(shows_utf8(variables({{"LC_ALL", ""}, {"LC_CTYPE", "C.utf8"}, {"LANG", "C"}})));
  EXPECT_FALSE(shows_utf8(variables({{"LC_ALL", "C"}, {"LANG", "en_GB.UTF-8"}})));
  EXPECT_FALSE(shows_utf8(variables({{"LANG", "de_DE.ISO-8859-1"}})));
  EXPECT_FALSE(shows_utf8(variables({})));
}

TEST(TerminalAbilities, include_colour_unless_somebody_objects) {
  EXPECT_TRUE(shows_colour(variables({{"TERM", "xterm-256color"}})));
  EXPECT_TRUE(shows_colour(variables({{"TERM", "linux"}, {"NO_COLOR", ""}})));
  EXPECT_FALSE(shows_colour(variables({{"TERM", "xterm"}, {"NO_COLOR", "1"}})));
  EXPECT_FALSE(shows_colour(variables({{"TERM", "vt100"}})));
  EXPECT_FALSE(shows_colour(variables({{"TERM", "xterm-mono"}})));
  EXPECT_FALSE(shows_colour(variables({{"TERM", "dumb"}})));
}

}  // namespace
}  // namespace vaskdfc::tool
