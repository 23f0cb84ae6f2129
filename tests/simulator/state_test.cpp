// State that outlives handles and processes.
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <random>
#include <thread>
#include <vector>

#include "sim_process.h"

namespace {

constexpr const char* kStateFile = "adapter-1000005a41560201.json";  // of board 1

dfc_mgmt_hdr set_diag(Session& session, std::uint32_t command) {
  return session.call<Callback::kSetDiag>({.brdno = 1, .arg6 = command});
}

void raise_events(Session& session, std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    EXPECT_EQ(session.call<Callback::kEventTest>({.brdno = 1, .arg6 = i}).status, 0u);
  }
}

TEST(State, survives_handles_but_not_the_process_without_a_folder) {
  for (int process = 0; process < 2; ++process) {
    in_process({}, [] {
      {
        Session session;
        EXPECT_EQ(set_diag(session, 0x10).arg4, 1u);
        EXPECT_EQ(set_diag(session, 0x12).arg4, 3u);
      }
      Session session;
      EXPECT_EQ(set_diag(session, 0x10).arg4, 3u);
    });
  }
}

TEST(State, survives_the_process_in_a_folder_that_is_created) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path("state")}};
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(set_diag(session, 0x13).arg4, 4u);
    raise_events(session, 2);
  });
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(set_diag(session, 0x10).arg4, 4u);
    EXPECT_EQ(session.call<Callback::kHbaRefreshInfo>({.brdno = 1}).arg4, 1u);
  });
  EXPECT_EQ(json::parse(read_file(folder.path(std::string("state/") + kStateFile))), json::parse(R"({
    "diagnostic_state": "diagnostic", "loopback": "none", "not_ready_reports": 0, "generation": 1,
    "events_raised": 2, "events": [[0, 0], [1, 0]]})"));
}

TEST(State, belongs_to_the_adapter_wherever_it_is_plugged_in) {
  const TemporaryFolder folder;
  json scenario = small_scenario();
  for (const auto& [board, state] : {std::pair{2u, 1u}, std::pair{5u, 3u}}) {
    scenario["adapters"][0]["board"] = board;
    const Environment environment{{VMKMGMT_SIM_SCENARIO, folder.write("scenario.json", scenario.dump())},
                                  {VMKMGMT_SIM_STATE, folder.path("state")}};
    in_process(environment, [at = board, expected = state] {
      Session session;
      EXPECT_EQ(session.call<Callback::kSetDiag>({.brdno = at, .arg6 = 0x10}).arg4, expected);
      session.call<Callback::kSetDiag>({.brdno = at, .arg6 = 0x12});
    });
  }
}

TEST(State, what_one_process_changes_another_sees_at_once) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [&] {
    Session session;
    EXPECT_EQ(set_diag(session, 0x10).arg4, 1u);
    in_process(environment, [] {
      Session other;
      EXPECT_EQ(set_diag(other, 0x12).arg4, 3u);
    });
    EXPECT_EQ(set_diag(session, 0x10).arg4, 3u);
  });
}

TEST(State, two_processes_at_once_lose_nothing) {
  constexpr std::uint32_t kEvents = 100;
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  const auto process = [&] {
    in_process(environment, [] {
      Session session;
      std::vector<std::jthread> threads;
      for (int thread = 0; thread < 2; ++thread) threads.emplace_back([&] { raise_events(session, kEvents / 2); });
    });
  };
  in_process(environment, [&] {
    const pid_t other = fork();
    process();
    if (other == 0) _exit(testing::Test::HasFailure() ? 1 : 0);
    int status = 0;
    EXPECT_EQ(waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
  });
  EXPECT_EQ(json::parse(read_file(folder.path(kStateFile)))["events_raised"], 2 * kEvents);
}

// Raises events until it is killed; tells through the pipe when the first one is stored.
[[noreturn]] void raise_events_until_killed(int pipe_end) {
  Session session;
  raise_events(session, 1);
  if (write(pipe_end, "", 1) != 1) _exit(1);
  for (;;) raise_events(session, 1);
}

void kill_a_process_at_work(useconds_t microseconds) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t victim = fork();
  if (victim == 0) raise_events_until_killed(ends[1]);

  char at_work;
  ASSERT_EQ(read(ends[0], &at_work, 1), 1);
  usleep(microseconds);
  kill(victim, SIGKILL);
  int status = 0;
  EXPECT_EQ(waitpid(victim, &status, 0), victim);
  EXPECT_TRUE(WIFSIGNALED(status));
}

TEST(State, a_killed_process_leaves_whole_files_and_no_lock) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  std::minstd_rand random(2026);
  std::uint32_t raised = 0;
  for (int round = 0; round < 25; ++round) {
    in_process(environment, [&] {
      kill_a_process_at_work(static_cast<useconds_t>(random() % 3000));
      Session session;
      raise_events(session, 1);
    });
    const std::uint32_t now = json::parse(read_file(folder.path(kStateFile)))["events_raised"];
    EXPECT_GE(now, raised + 2);
    raised = now;
    random.discard(1);  // the process drew from a copy
  }
}

TEST(State, a_failed_write_is_a_driver_status_and_leaves_the_old_file) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [] {
    Session session;
    set_diag(session, 0x12);
  });
  const std::string before = read_file(folder.path(kStateFile));
  const std::string message = in_process(environment, [] {
    Session session;
    signal(SIGXFSZ, SIG_IGN);
    const rlimit nothing{0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &nothing), 0);
    for (int call = 0; call < 2; ++call) {
      EXPECT_EQ(set_diag(session, 0x11).status, std::uint32_t{VMKMGMT_SIM_DRIVER_STATE_NOT_SAVED});
    }
    EXPECT_EQ(set_diag(session, 0x10).arg4, 3u);
  });
  EXPECT_EQ(message, "vmkmgmt simulator: " + folder.path(kStateFile) + ".new: cannot be written: File too large\n");
  EXPECT_EQ(read_file(folder.path(kStateFile)), before);
  EXPECT_FALSE(std::filesystem::exists(folder.path(std::string(kStateFile) + ".new")));
}

// What a process says that cannot open a handle because of its state folder.
std::string complaint(const std::string& state_folder) {
  return in_process({{VMKMGMT_SIM_STATE, state_folder}}, [] {
    vmk_MgmtUserHandle handle = nullptr;
    for (int attempt = 0; attempt < 2; ++attempt) {
      EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_STATE});
    }
  });
}

TEST(State, a_folder_that_cannot_be_used_refuses_the_handle) {
  const TemporaryFolder folder;
  folder.write("file", "");
  EXPECT_EQ(complaint(folder.path("none/state")),
            "vmkmgmt simulator: " + folder.path("none/state") + ": cannot be created: No such file or directory\n");
  EXPECT_EQ(complaint(folder.path("file")), "vmkmgmt simulator: " + folder.path("file") + ": cannot be opened: Not a directory\n");
  EXPECT_EQ(complaint(""), "vmkmgmt simulator: VMKMGMT_SIM_STATE is set but empty: name a path or unset it\n");
}

TEST(State, a_folder_that_is_read_only_refuses_the_handle) {
  const TemporaryFolder folder;
  folder.write("lock", "");
  std::filesystem::permissions(folder.path(), std::filesystem::perms{0555});
  std::filesystem::permissions(folder.path("lock"), std::filesystem::perms{0666});
  const std::string message = in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [] {
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0) {  // to whom nothing is read-only
      ASSERT_EQ(seteuid(kNobody), 0);
    }
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_STATE});
  });
  EXPECT_EQ(message, "vmkmgmt simulator: " + folder.path() + ": cannot be written: Permission denied\n");
  std::filesystem::permissions(folder.path(), std::filesystem::perms{0755});
}

TEST(State, a_lock_that_cannot_be_opened_refuses_the_handle) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("lock"));
  EXPECT_EQ(complaint(folder.path()), "vmkmgmt simulator: " + folder.path("lock") + ": cannot be opened: Is a directory\n");
}

TEST(State, damaged_files_refuse_the_handle_and_stay_as_they_are) {
  struct Damage {
    const char* content;
    const char* complaint;
  };
  constexpr Damage kDamages[]{
      {"", "the whole file: expected a JSON object"},
      {"{\"diagnostic_state\": \"online\"", "the whole file: expected a JSON object"},
      {"[]", "the whole file: expected a JSON object"},
      {"{}", "diagnostic_state: expected a value"},
      {R"({"diagnostic_state": "up"})", "diagnostic_state: expected \"online\", \"offline\" or \"diagnostic\""},
      {R"({"diagnostic_state": "online", "not_ready_reports": -1})", "not_ready_reports: expected an integer from 0 to 4294967295"},
      {R"({"diagnostic_state": "online", "not_ready_reports": 0, "generation": 4294967296})",
       "generation: expected an integer from 0 to 4294967295"},
      {R"({"diagnostic_state": "online", "not_ready_reports": 0, "generation": 0, "events_raised": 0, "events": {}})",
       "events: expected a list of at most 64 events"},
      {R"({"diagnostic_state": "online", "not_ready_reports": 0, "generation": 0, "events_raised": 0, "events": [[1]]})",
       "events: expected pairs of test values"},
      {R"({"diagnostic_state": "online", "not_ready_reports": 0, "generation": 0, "events_raised": 0, "events": [[1, "2"]]})",
       "events: expected an integer from 0 to 4294967295"},
  };
  const TemporaryFolder folder;
  for (const Damage& damage : kDamages) {
    folder.write(kStateFile, damage.content);
    EXPECT_EQ(complaint(folder.path()), "vmkmgmt simulator: " + folder.path(kStateFile) + ": damaged: " + damage.complaint +
                                            "; remove the file to start with fresh state\n");
    EXPECT_EQ(read_file(folder.path(kStateFile)), damage.content);
  }
}

TEST(State, a_file_that_is_damaged_later_is_a_driver_status) {
  const TemporaryFolder folder;
  in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [&] {
    Session session;
    EXPECT_EQ(set_diag(session, 0x10).status, 0u);
    folder.write(kStateFile, "torn");
    EXPECT_EQ(set_diag(session, 0x12).status, std::uint32_t{VMKMGMT_SIM_DRIVER_STATE_NOT_SAVED});
    EXPECT_EQ(read_file(folder.path(kStateFile)), "torn");
  });
}

}  // namespace
