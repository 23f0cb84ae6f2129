// Configuration regions in a state folder.
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <random>

#include "region_calls.h"

namespace {

constexpr std::uint32_t kBoard = 1;
const std::string kFile = region_file(23, "1000005a41560201");

std::vector<std::uint8_t> image(std::size_t seed) { return pattern(1024, seed); }

std::string as_text(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(RegionState, what_one_process_writes_another_reads) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [&] {
    Session session;
    EXPECT_EQ(dump_region(session, kBoard, 23).completion, 0xFFFDu);
    in_process(environment, [] {
      Session other;
      EXPECT_EQ(update_region(other, kBoard, 23, image(1)), 0u);
    });
    EXPECT_EQ(dump_region(session, kBoard, 23).delivered(), image(1));
  });
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(dump_region(session, kBoard, 23).delivered(), image(1));
    EXPECT_EQ(dump_region(session, kBoard, 22).completion, 0xFFFDu);
  });
  EXPECT_EQ(read_file(folder.path(kFile)), as_text(image(1)));
}

TEST(RegionState, what_the_scenario_gives_is_not_written_anywhere) {
  const TemporaryFolder folder;
  in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [] {
    Session session;
    EXPECT_EQ(dump_region(session, kBoard, 23).completion, 0xFFFDu);
  });
  EXPECT_FALSE(std::filesystem::exists(folder.path(kFile)));
}

TEST(RegionState, a_file_of_another_size_refuses_the_handle_and_stays_as_it_is) {
  const TemporaryFolder folder;
  for (const std::size_t size : {0u, 1023u, 1025u}) {
    const std::string content(size, 'x');
    folder.write(kFile, content);
    const std::string message = in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [] {
      vmk_MgmtUserHandle handle = nullptr;
      EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_STATE});
    });
    EXPECT_EQ(message, "vmkmgmt simulator: " + folder.path(kFile) +
                           ": damaged: the whole file: expected 1024 bytes; remove the file to start with fresh state\n");
    EXPECT_EQ(read_file(folder.path(kFile)), content);
  }
}

TEST(RegionState, a_file_that_is_damaged_later_is_a_driver_status) {
  const TemporaryFolder folder;
  in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [&] {
    Session session;
    EXPECT_EQ(update_region(session, kBoard, 23, image(1)), 0u);
    folder.write(kFile, "torn");
    EXPECT_EQ(dump_region(session, kBoard, 23).header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_STATE_NOT_SAVED});
    EXPECT_EQ(update_region(session, kBoard, 23, image(2)), std::uint32_t{VMKMGMT_SIM_DRIVER_STATE_NOT_SAVED});
  });
  EXPECT_EQ(read_file(folder.path(kFile)), "torn");
}

// Writes an image, then another after the process has lost the means to: that one fails and changes nothing.
std::string failed_update(const TemporaryFolder& folder, const std::function<void()>& lose_the_means) {
  const std::string message = in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [&] {
    Session session;
    ASSERT_EQ(update_region(session, kBoard, 23, image(1)), 0u);
    lose_the_means();
    EXPECT_EQ(update_region(session, kBoard, 23, image(2)), std::uint32_t{VMKMGMT_SIM_DRIVER_STATE_NOT_SAVED});
    EXPECT_EQ(dump_region(session, kBoard, 23).delivered(), image(1));
  });
  EXPECT_EQ(read_file(folder.path(kFile)), as_text(image(1)));
  EXPECT_FALSE(std::filesystem::exists(folder.path(kFile + ".new")));
  return message;
}

TEST(RegionState, a_write_that_does_not_fit_leaves_the_old_image) {
  const TemporaryFolder folder;
  const std::string message = failed_update(folder, [] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit too_little{1023, 1023};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &too_little), 0);
  });
  EXPECT_EQ(message, "vmkmgmt simulator: " + folder.path(kFile) + ".new: cannot be written: File too large\n");
}

TEST(RegionState, a_folder_that_becomes_read_only_leaves_the_old_image) {
  const TemporaryFolder folder;
  const std::string message = failed_update(folder, [&] {
    std::filesystem::permissions(folder.path("lock"), std::filesystem::perms{0666});
    std::filesystem::permissions(folder.path(), std::filesystem::perms{0555});
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0) {  // to whom nothing is read-only
      ASSERT_EQ(seteuid(kNobody), 0);
    }
  });
  EXPECT_EQ(message, "vmkmgmt simulator: " + folder.path(kFile) + ".new: cannot be created: Permission denied\n");
  std::filesystem::permissions(folder.path(), std::filesystem::perms{0755});
}

// Writes one image after the other until it is killed; tells through the pipe when the first is stored.
[[noreturn]] void write_until_killed(Session& session, int pipe_end) {
  for (std::size_t seed = 1;; seed ^= 3) {
    if (update_region(session, kBoard, 23, image(seed)) != 0) _exit(1);
    if (pipe_end >= 0 && write(pipe_end, "", 1) != 1) _exit(1);
    pipe_end = -1;
  }
}

void kill_a_writer(Session& session, useconds_t microseconds) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t victim = fork();
  ASSERT_GE(victim, 0);
  if (victim == 0) write_until_killed(session, ends[1]);

  close(ends[1]);
  char at_work;
  EXPECT_EQ(read(ends[0], &at_work, 1), 1);
  close(ends[0]);
  usleep(microseconds);
  kill(victim, SIGKILL);
  int status = 0;
  ASSERT_EQ(waitpid(victim, &status, 0), victim);
  EXPECT_TRUE(WIFSIGNALED(status)) << "the writer ended by itself";
}

TEST(RegionState, a_killed_writer_leaves_one_of_its_images_whole) {
  constexpr unsigned kSeed = 2026;
  constexpr int kKills = 250;
  const TemporaryFolder folder;
  in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [] {
    Session session;
    std::minstd_rand random(kSeed);
    int left[2]{};
    for (int kills = 0; kills < kKills && !testing::Test::HasFailure(); ++kills) {
      SCOPED_TRACE("seed " + std::to_string(kSeed) + ", kill " + std::to_string(kills));
      kill_a_writer(session, static_cast<useconds_t>(random() % 5000));
      const RegionDump dump = dump_region(session, kBoard, 23);
      EXPECT_EQ(dump.completion, 0u);
      EXPECT_TRUE(dump.delivered() == image(1) || dump.delivered() == image(2)) << "neither image, or torn";
      ++left[dump.delivered() == image(2)];
    }
    EXPECT_GT(left[0], 0) << "no writer was killed between the second image and the first";
    EXPECT_GT(left[1], 0) << "no writer was killed between the first image and the second";
  });
}

}  // namespace
