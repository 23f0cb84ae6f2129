#include <array>
#include <cstring>

#include "support/library_test.h"
#include "transport/board_table.h"
#include "transport/call_frame.h"
#include "transport/mgmt_interface.h"
#include "vaskdfc/transport.h"

namespace vaskdfc {
namespace {

using test::supported_board;

constexpr std::uint8_t kUntouched = 0xEE;

template <typename Record>
auto untouched_records() {
  std::array<Record, 33> records;
  std::memset(records.data(), kUntouched, sizeof(records));
  return records;
}

template <typename Record>
bool is_untouched(const Record& record) {
  const auto bytes = test::bytes_of(record);
  return std::ranges::count(bytes, kUntouched) == static_cast<std::ptrdiff_t>(bytes.size());
}

class DiscoveryTest : public test::LibraryTest {};

TEST_F(DiscoveryTest, numbers_the_boards_densely) {
  expect_discovery({{1, supported_board()}, {3, supported_board()}});
  auto boards = untouched_records<dfc_brd_info>();

  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 32), 2u);
  EXPECT_EQ(dftrel_brdCnt, 2u);
  EXPECT_EQ(dfc_brdno[0], 1u);
  EXPECT_EQ(dfc_brdno[1], 3u);
  for (std::size_t i = 2; i < 32; ++i) EXPECT_EQ(dfc_brdno[i], 0xFFFFFFFFu) << i;
  EXPECT_EQ(dfc_state[0], kStateUsable);
  EXPECT_EQ(dfc_state[1], kStateUsable);
  EXPECT_TRUE(is_untouched(boards[2]));
}

TEST_F(DiscoveryTest, finds_nothing_where_no_board_is_supported) {
  auto foreign = supported_board();
  foreign.pci_id = 0x56045A41;
  expect_discovery({{4, foreign}});
  auto boards = untouched_records<dfc_brd_info>();

  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 32), 0u);
  EXPECT_EQ(dftrel_brdCnt, 0u);
  for (const std::uint32_t entry : dfc_brdno) EXPECT_EQ(entry, 0xFFFFFFFFu);
  EXPECT_TRUE(is_untouched(boards[0]));
}

TEST_F(DiscoveryTest, accepts_the_three_devices_of_any_vendor) {
  std::map<std::uint32_t, dfc_initbrds_rsp> replies;
  const std::uint32_t kIds[] = {0x56015A41, 0x56025A41, 0x56031111, 0x56005A41, 0x56045A41, 0x5A415601};
  for (std::uint32_t i = 0; i < std::size(kIds); ++i) (replies[i] = supported_board()).pci_id = kIds[i];
  expect_discovery(replies);
  auto boards = untouched_records<dfc_brd_info>();

  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 32), 3u);
  EXPECT_EQ(boards[2].pci_id, 0x56031111u);
}

TEST_F(DiscoveryTest, compares_the_capacity_with_the_drivers_board_number) {
  expect_discovery({{1, supported_board()}, {3, supported_board()}});
  auto boards = untouched_records<dfc_brd_info>();
  dfc_state[1] = 77;

  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 2), 2u);
  EXPECT_FALSE(is_untouched(boards[0]));
  EXPECT_TRUE(is_untouched(boards[1]));
  EXPECT_EQ(dfc_brdno[1], 3u) << "counted and mapped all the same";
  EXPECT_EQ(dfc_state[0], kStateUsable);
  EXPECT_EQ(dfc_state[1], 77u);
}

TEST_F(DiscoveryTest, describes_a_board_field_by_field) {
  const dfc_initbrds_rsp reply = supported_board(-5);
  const auto sent = test::bytes_of(reply);
  expect_discovery({{0, reply}});
  auto boards = untouched_records<dfc_brd_info>();
  ASSERT_EQ(DFC_InitDiagEnv(boards.data(), 1), 1u);

  const auto bytes = test::bytes_of(boards[0]);
  const auto expect_copied = [&](std::size_t from, std::size_t count, std::size_t to) {
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(bytes[to + i], sent[from + i]) << "record offset " << to + i;
  };
  for (std::size_t i = 0; i < 28; ++i) EXPECT_EQ(bytes[i], kUntouched) << i;
  expect_copied(0, 12, 28);
  expect_copied(80, 1, 40);
  EXPECT_EQ(bytes[41], 10);
  expect_copied(12, 2, 42);
  expect_copied(16, 8, 44);
  expect_copied(24, 16, 52);
  expect_copied(40, 32, 68);
  expect_copied(72, 8, 100);
  EXPECT_EQ(boards[0].condition, -5);
  EXPECT_EQ(dfc_state[0], kStateFailed);
}

TEST_F(DiscoveryTest, describes_a_board_in_the_older_record) {
  const dfc_initbrds_rsp reply = supported_board(-1);
  const auto sent = test::bytes_of(reply);
  expect_discovery({{9, reply}});
  auto boards = untouched_records<dfc_brd_info_short>();
  ASSERT_EQ(InitDiagEnv(boards.data()), 1u);

  const auto bytes = test::bytes_of(boards[0]);
  const auto expect_copied = [&](std::size_t from, std::size_t count, std::size_t to) {
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(bytes[to + i], sent[from + i]) << "record offset " << to + i;
  };
  for (std::size_t i = 0; i < 28; ++i) EXPECT_EQ(bytes[i], kUntouched) << i;
  expect_copied(0, 12, 28);
  for (std::size_t i = 40; i < 43; ++i) EXPECT_EQ(bytes[i], kUntouched) << i;
  expect_copied(12, 1, 43);
  expect_copied(16, 8, 44);
  expect_copied(24, 48, 52);
  EXPECT_EQ(dfc_state[0], kStateFailed);
  EXPECT_TRUE(is_untouched(boards[1]));
}

TEST_F(DiscoveryTest, the_older_form_keeps_the_board_numbers_above_the_new_count) {
  dfc_brdno[0] = 20;
  dfc_brdno[1] = 21;
  expect_discovery({{6, supported_board()}});
  auto boards = untouched_records<dfc_brd_info_short>();

  EXPECT_EQ(InitDiagEnv(boards.data()), 1u);
  EXPECT_EQ(dfc_brdno[0], 6u);
  EXPECT_EQ(dfc_brdno[1], 21u);
}

TEST_F(DiscoveryTest, clears_the_baselines_and_refresh_counters_of_all_boards) {
  for (auto& baseline : dfc_rststatistics) std::memset(&baseline, 1, sizeof(baseline));
  dfc_refresh_timer.fill(9);
  expect_discovery({});

  EXPECT_EQ(DFC_InitDiagEnv(nullptr, 32), 0u);
  for (const auto& baseline : dfc_rststatistics) EXPECT_EQ(test::bytes_of(baseline), test::ByteVector(120, 0));
  for (const std::uint32_t counter : dfc_refresh_timer) EXPECT_EQ(counter, 0u);
}

TEST_F(DiscoveryTest, probes_again_at_every_initialisation) {
  expect_discovery({{1, supported_board()}});
  expect_discovery({{2, supported_board()}, {5, supported_board()}});
  auto boards = untouched_records<dfc_brd_info>();

  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 32), 1u);
  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 32), 2u);
  EXPECT_EQ(dfc_brdno[0], 2u);
  EXPECT_EQ(refcnt, 2);
}

TEST_F(DiscoveryTest, changes_no_table_when_no_interface_opens) {
  driver.open_statuses({1, 1});
  dfc_brdno[0] = 5;
  dfc_refresh_timer[0] = 6;
  dftrel_brdCnt = 7;

  EXPECT_EQ(DFC_InitDiagEnv(nullptr, 32), 0u);
  EXPECT_EQ(dfc_brdno[0], 5u);
  EXPECT_EQ(dfc_refresh_timer[0], 6u);
  EXPECT_EQ(dftrel_brdCnt, 7u);
  EXPECT_EQ(refcnt, 0);
}

TEST_F(DiscoveryTest, the_older_form_changes_no_table_either_when_no_interface_opens) {
  driver.open_statuses({1, 1});
  dfc_brdno[0] = 5;
  dftrel_brdCnt = 7;
  auto boards = untouched_records<dfc_brd_info_short>();

  EXPECT_EQ(InitDiagEnv(boards.data()), 0u);
  EXPECT_EQ(dfc_brdno[0], 5u);
  EXPECT_EQ(dftrel_brdCnt, 7u);
  EXPECT_EQ(refcnt, 0);
  EXPECT_TRUE(is_untouched(boards[0]));
}

TEST_F(DiscoveryTest, skips_probes_that_fail_in_the_platform) {
  for (std::uint32_t probe = 0; probe < 32; ++probe) {
    driver.expect({.callback = Callback::kInitBrds,
                   .sent = {.brdno = probe},
                   .platform_status = 1,
                   .payload = {test::bytes_of(supported_board())}});
  }
  auto boards = untouched_records<dfc_brd_info>();
  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 32), 0u);
  EXPECT_TRUE(is_untouched(boards[0]));
}

TEST_F(DiscoveryTest, fills_all_32_boards) {
  std::map<std::uint32_t, dfc_initbrds_rsp> replies;
  for (std::uint32_t probe = 0; probe < 32; ++probe) replies[probe] = supported_board();
  expect_discovery(replies);
  auto boards = untouched_records<dfc_brd_info>();

  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 32), 32u);
  EXPECT_FALSE(is_untouched(boards[31]));
  EXPECT_TRUE(is_untouched(boards[32]));
}

// The whole log of one initialisation: every probe's "call" line, "cmd ok" with the probed number, and no "cmd err".
std::string discovery_log(std::string_view function, int call_line, int result_line, std::uint32_t answering) {
  std::string text;
  char line[160];
  for (std::uint32_t probe = 0; probe < 32; ++probe) {
    std::snprintf(line, sizeof(line), "2023-11-14T22:13:20  %24s:%5d call: TREL_MGMT_INITBRDS id[4711:4712]\n", function.data(),
                  call_line);
    text += line;
    if (probe != answering) continue;
    std::snprintf(line, sizeof(line), "2023-11-14T22:13:20  %24s:%5d cmd ok:            TREL_MGMT_INITBRDS brd[%u] id[4711:4712]\n",
                  function.data(), result_line, probe);
    text += line;
  }
  return text;
}

constexpr std::string_view kStartLines =
    "2023-11-14T22:13:20                OpenLogger:  252 **Start log conf[LogLevel xe]\n"
    "2023-11-14T22:13:20                OpenLogger:  262 Lib[11.4.1080.0] Vendor[ZAV:vaskfcoe-mgmt] Version[2.0.1-1] "
    "Callbacks[77]\n";

TEST_F(DiscoveryTest, logs_calls_and_successes_but_no_failed_probe) {
  write_file("libvaskdfc.conf", "LogLevel 0xe\n");
  expect_discovery({{30, supported_board()}});
  auto boards = untouched_records<dfc_brd_info>();

  EXPECT_EQ(DFC_InitDiagEnv(boards.data(), 32), 1u);
  EXPECT_EQ(log(), std::string(kStartLines) + discovery_log("DFC_InitDiagEnv", 312, 316, 30));
}

TEST_F(DiscoveryTest, the_older_form_logs_its_own_name) {
  write_file("libvaskdfc.conf", "LogLevel 0xe\n");
  expect_discovery({{0, supported_board()}});
  auto boards = untouched_records<dfc_brd_info_short>();

  EXPECT_EQ(InitDiagEnv(boards.data()), 1u);
  EXPECT_EQ(log(), std::string(kStartLines) + discovery_log("InitDiagEnv", 396, 400, 0));
}

}  // namespace
}  // namespace vaskdfc
