#include "transport/log.h"

#include <sys/wait.h>
#include <unistd.h>

#include <thread>
#include <utility>

#include "support/library_test.h"
#include "transport/mgmt_interface.h"

namespace vaskdfc {
namespace {

constexpr std::string_view kBanner =
    "2023-11-14T22:13:20                OpenLogger:  262 Lib[11.4.1080.0] Vendor[ZAV:vaskfcoe-mgmt] Version[2.0.1-1] "
    "Callbacks[77]\n";

// What one successful initialisation writes.
std::string started(std::string_view name, std::string_view mask) {
  return "2023-11-14T22:13:20                OpenLogger:  252 **Start log conf[" + std::string(name) + " x" + std::string(mask) +
         "]\n" + std::string(kBanner);
}

class LogTest : public test::LibraryTest {
 protected:
  void configure(std::string_view text) { write_file("libvaskdfc.conf", text); }
  bool log_exists() const { return std::filesystem::exists(test::c_library.scratch / "log/libvaskdfc.log"); }
};

TEST_F(LogTest, stays_off_without_a_configuration_file) {
  LogLevel = 5;
  OpenLogger();
  EXPECT_EQ(LogLevel, 0u);
  EXPECT_EQ(fLogger, nullptr);
  EXPECT_FALSE(log_exists());
}

TEST_F(LogTest, reads_the_mask_and_writes_start_and_banner) {
  configure("LogLevel 0xf\n");
  OpenLogger();
  EXPECT_EQ(LogLevel, 0xFu);
  EXPECT_EQ(log(), started("LogLevel", "f"));
  EXPECT_EQ(test::c_library.opened_files,
            (std::vector<std::string>{"/scratch/libvaskdfc.conf r", "/scratch/log/libvaskdfc.log a+"}));
}

TEST_F(LogTest, compares_the_name_with_nothing_and_takes_any_whitespace) {
  configure("\n\t anything \n\n  3 and more text\n");
  OpenLogger();
  EXPECT_EQ(LogLevel, 3u);
  EXPECT_EQ(log(), started("anything", "3"));
}

TEST_F(LogTest, reads_a_mask_that_ends_with_the_file) {
  configure("LogLevel 0xf");
  OpenLogger();
  EXPECT_EQ(LogLevel, 0xFu);
  EXPECT_EQ(log(), started("LogLevel", "f"));
}

TEST_F(LogTest, one_token_keeps_the_mask) {
  LogLevel = 6;
  configure("LogLevel\n");
  OpenLogger();
  EXPECT_EQ(LogLevel, 6u);
  EXPECT_EQ(log(), started("LogLevel", "6"));
}

TEST_F(LogTest, an_empty_file_keeps_the_mask) {
  LogLevel = 6;
  configure("");
  OpenLogger();
  EXPECT_EQ(LogLevel, 6u);
  EXPECT_EQ(log(), started("", "6"));
}

TEST_F(LogTest, a_value_that_is_not_hexadecimal_keeps_the_mask) {
  LogLevel = 6;
  configure("LogLevel verbose\n");
  OpenLogger();
  EXPECT_EQ(LogLevel, 6u);
  EXPECT_EQ(log(), started("LogLevel", "6"));
}

TEST_F(LogTest, tokens_of_any_length_are_safe) {
  LogLevel = 6;
  const std::string exactly_31(31, 'n');
  configure(exactly_31 + " " + std::string(27, '0') + "0x0c\n");  // 31 characters, but "000...0x0c" reads as 0
  OpenLogger();
  EXPECT_EQ(LogLevel, 0u);

  LogLevel = 6;
  configure("LogLevel " + std::string(31, '0') + "f\n");
  OpenLogger();
  EXPECT_EQ(LogLevel, 6u) << "a value that was cut is no value";

  configure(std::string(5000, 'n') + " 0xf\n");
  OpenLogger();
  EXPECT_EQ(LogLevel, 6u) << "a name that was cut leaves the mask alone, and its tail is not taken for the value";
  EXPECT_EQ(log(), started(exactly_31, "0") + started("LogLevel", "6") + started(exactly_31, "6"));
}

TEST_F(LogTest, a_file_edited_in_place_changes_the_mask_also_with_a_text_of_the_same_length) {
  configure("LogLevel 0xf\n");
  OpenLogger();
  configure("LogLevel 0x2\n");
  OpenLogger();
  EXPECT_EQ(LogLevel, 2u);
  EXPECT_EQ(log(), started("LogLevel", "f") + started("LogLevel", "2"));
}

TEST_F(LogTest, a_file_replaced_under_its_name_changes_the_mask) {
  configure("LogLevel 0xf\n");
  OpenLogger();
  write_file("new.conf", "LogLevel 0x4\n");
  std::filesystem::rename(test::c_library.scratch / "new.conf", test::c_library.scratch / "libvaskdfc.conf");
  OpenLogger();
  EXPECT_EQ(LogLevel, 4u);
}

TEST_F(LogTest, a_removed_file_stops_the_log_and_its_return_starts_it_again) {
  configure("LogLevel 0xf\n");
  OpenLogger();
  std::filesystem::remove(test::c_library.scratch / "libvaskdfc.conf");
  OpenLogger();
  EXPECT_EQ(LogLevel, 0u);
  EXPECT_NE(fLogger, nullptr);
  configure("LogLevel 0x8\n");
  OpenLogger();
  EXPECT_EQ(log(), started("LogLevel", "f") + "2023-11-14T22:13:20                OpenLogger:  235 \t**Stop  x0\n" +
                       started("LogLevel", "8"));
}

TEST_F(LogTest, keeps_the_mask_and_writes_nothing_when_the_log_cannot_be_opened) {
  std::filesystem::remove(test::c_library.scratch / "log");
  configure("LogLevel 0xf\n");
  OpenLogger();
  EXPECT_EQ(LogLevel, 0xFu);
  EXPECT_EQ(fLogger, nullptr);
}

TEST_F(LogTest, appends_to_what_other_processes_wrote) {
  write_file("log/libvaskdfc.log", "earlier line\n");
  configure("LogLevel 0xf\n");
  OpenLogger();
  EXPECT_EQ(log(), "earlier line\n" + started("LogLevel", "f"));
}

TEST_F(LogTest, a_mask_of_2_leaves_only_successes_and_the_init_failure) {
  configure("LogLevel 2\n");
  driver.open_statuses({0x77, 0x78});
  EXPECT_EQ(DFC_InitDiagEnv(nullptr, 0), 0u);
  EXPECT_EQ(log(),
            started("LogLevel", "2") +
                "2023-11-14T22:13:20             dfc_mgmt_init:  118 Management init failure: x77. Check if driver is loaded and "
                "Kestar cards are installed.  Else a possible reason would be incompatible driver and application versions.\n\n"
                "2023-11-14T22:13:20       dfc_mgmt_inbox_init:  152 Management init failure: x78. Check if driver is loaded and "
                "Kestar cards are installed.  Else a possible reason would be incompatible driver and application versions.\n\n");
}

TEST_F(LogTest, a_handle_that_was_never_opened_is_nil) {
  start_log();
  refcnt = 0;
  log_init_handle({"function", 7}, nullptr, 1);
  EXPECT_EQ(log(), "2023-11-14T22:13:20                  function:    7 Init handle[(nil)] refcnt[1:0] id[4711:4712]\n");
}

// --- what the library keeps of a thread and a second

TEST_F(LogTest, lines_of_every_thread_have_its_own_number) {
  start_log();
  const LogSite site{"function", 7};
  log_call(site, "CALLBACK");
  test::c_library.thread_id = 4713;
  std::thread([&] { log_call(site, "CALLBACK"); }).join();
  log_call(site, "CALLBACK");
  const std::string start = "2023-11-14T22:13:20                  function:    7 call: CALLBACK id[4711:";
  EXPECT_EQ(log(), start + "4712]\n" + start + "4713]\n" + start + "4712]\n");
}

TEST_F(LogTest, lines_of_a_forked_process_have_its_own_numbers) {
  write_file("libvaskdfc.conf", "LogLevel f");
  OpenLogger();
  const std::string before = log();
  const LogSite site{"function", 7};
  log_call(site, "CALLBACK");
  const pid_t child = fork();
  if (child == 0) {
    test::c_library.process_id = 5000;
    test::c_library.thread_id = 5001;
    log_call(site, "CALLBACK");
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  log_call(site, "CALLBACK");
  const std::string start = "2023-11-14T22:13:20                  function:    7 call: CALLBACK id[";
  EXPECT_EQ(log(), before + start + "4711:4712]\n" + start + "5000:5001]\n" + start + "4711:4712]\n");
}

TEST_F(LogTest, lines_have_the_time_at_which_they_are_written) {
  start_log();
  std::string expected;
  for (const auto& [seconds, timestamp] : {std::pair{0, "1970-01-01T00:00:00"}, std::pair{1, "1970-01-01T00:00:01"},
                                           std::pair{0, "1970-01-01T00:00:00"}, std::pair{-1, "438498967-08-03T07:00:1"}}) {
    test::c_library.seconds = seconds;
    log_record_found({"function", 7}, 0xA0);
    expected += std::string(timestamp) + "                  function:    7 ERROR: A0 Found\n";
  }
  EXPECT_EQ(log(), expected);
}

TEST_F(LogTest, a_name_wider_than_its_column_is_not_cut) {
  start_log();
  log_call({"A_function_name_longer_than_24_columns", 123456}, "TREL_MGMT_MBOX");
  EXPECT_EQ(log(), "2023-11-14T22:13:20  A_function_name_longer_than_24_columns:123456 call: TREL_MGMT_MBOX id[4711:4712]\n");
}

}  // namespace
}  // namespace vaskdfc
