// The trace.
#include <signal.h>
#include <sys/resource.h>

#include <sstream>
#include <thread>
#include <vector>

#include "sim_process.h"

namespace {

std::vector<json> lines_of(const std::string& path) {
  std::vector<json> lines;
  std::istringstream text(read_file(path));
  for (std::string line; std::getline(text, line);) lines.push_back(json::parse(line));
  return lines;
}

TEST(Trace, a_line_tells_a_call_from_end_to_end) {
  const TemporaryFolder folder;
  in_process({{VMKMGMT_SIM_TRACE, folder.path("trace")}}, [] {
    Session session;
    vaskdfc::PortAttributesReply reply;
    const vaskdfc::WwnKey key{};
    session.call<Callback::kHbaWwpnPortAttributes>({.brdno = 3, .arg7 = 9}, reply, key);
  });
  const auto lines = lines_of(folder.path("trace"));
  ASSERT_EQ(lines.size(), 1u);
  json line = lines[0];
  EXPECT_TRUE(line["pid"].is_number_unsigned());
  EXPECT_TRUE(line["duration_us"].is_number_unsigned());
  line.erase("pid");
  line.erase("duration_us");
  EXPECT_EQ(line, json::parse(R"({
    "callback": "TREL_MGMT_HBA_WWPNPORTATTRIBUTES", "id": 319, "board": 3,
    "payloads": [{"size": 490, "usage": "out"}, {"size": 28, "usage": "in"}],
    "in": {"brdno": 3, "arg1": 0, "arg2": 0, "arg3": 0, "arg4": 0, "arg5": 0, "arg6": 0, "arg7": 9,
           "rsvd1": 0, "rsvd2": 0, "rsvd3": 0, "status": 0},
    "out": {"brdno": 3, "arg1": 0, "arg2": 0, "arg3": 0, "arg4": 0, "arg5": 0, "arg6": 0, "arg7": 9,
            "rsvd1": 0, "rsvd2": 0, "rsvd3": 0, "status": 195887107},
    "platform_status": 0, "driver_status": 195887107})"));
}

TEST(Trace, faults_show_with_their_statuses_words_and_delays) {
  const TemporaryFolder folder;
  json scenario = small_scenario();
  scenario["faults"] =
      json::parse(R"([{"callback": 123, "platform_status": 7, "driver_status": 8, "header": {"arg4": 9}, "delay_ms": 5}])");
  in_process({{VMKMGMT_SIM_SCENARIO, folder.write("scenario.json", scenario.dump())}, {VMKMGMT_SIM_TRACE, folder.path("trace")}},
             [] {
               Session session;
               dfc_mgmt_hdr header{.brdno = 2, .arg6 = 0x10};
               EXPECT_EQ(session.invoke<Callback::kSetDiag>(header), 7u);
             });
  const auto lines = lines_of(folder.path("trace"));
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0]["platform_status"], 7);
  EXPECT_EQ(lines[0]["driver_status"], 8);
  EXPECT_EQ(lines[0]["in"]["arg4"], 0);
  EXPECT_EQ(lines[0]["out"]["arg4"], 9);
  EXPECT_GE(lines[0]["duration_us"], 5000);
}

TEST(Trace, later_processes_append_and_refused_calls_leave_no_line) {
  const TemporaryFolder folder;
  for (int process = 0; process < 2; ++process) {
    in_process({{VMKMGMT_SIM_TRACE, folder.path("trace")}}, [] {
      Session session;
      dfc_mgmt_hdr header{};
      EXPECT_NE(vmk_MgmtUserCallbackInvokeInt(session.handle(), 0, 1, 1, &header), 0);
      session.call<Callback::k132>({});
    });
  }
  const auto lines = lines_of(folder.path("trace"));
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1]["callback"], "") << "this callback has no name";
  EXPECT_EQ(lines[1]["id"], 132);
  EXPECT_NE(lines[0]["pid"], lines[1]["pid"]);
}

TEST(Trace, lines_of_threads_do_not_mix) {
  const TemporaryFolder folder;
  in_process({{VMKMGMT_SIM_TRACE, folder.path("trace")}}, [] {
    Session session;
    std::vector<std::jthread> threads;
    for (std::uint32_t board = 0; board < 4; ++board) {
      threads.emplace_back([&session, board] {
        for (int call = 0; call < 50; ++call) session.call<Callback::kLip>({.brdno = board});
      });
    }
  });
  EXPECT_EQ(lines_of(folder.path("trace")).size(), 200u);
}

TEST(Trace, a_file_that_cannot_be_written_refuses_the_handle_and_says_so_once) {
  const TemporaryFolder folder;
  const std::string file = folder.path("missing/trace");
  const std::string message = in_process({{VMKMGMT_SIM_TRACE, file}}, [] {
    vmk_MgmtUserHandle handle = nullptr;
    for (const char* name : {"vaskfcoe-mgmt", "trel-mgmt"}) {
      EXPECT_EQ(open_handle(Signature(name), handle), std::uint32_t{VMKMGMT_SIM_BAD_TRACE});
    }
  });
  EXPECT_EQ(message, "vmkmgmt simulator: " + file + ": cannot be opened for appending: No such file or directory\n");
}

TEST(Trace, an_empty_file_name_is_a_mistake) {
  const std::string message = in_process({{VMKMGMT_SIM_TRACE, ""}}, [] {
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_TRACE});
  });
  EXPECT_EQ(message, "vmkmgmt simulator: VMKMGMT_SIM_TRACE is set but empty: name a path or unset it\n");
}

TEST(Trace, a_failing_write_does_not_fail_the_call_and_is_told_once) {
  const TemporaryFolder folder;
  const std::string file = folder.path("trace");
  const std::string message = in_process({{VMKMGMT_SIM_TRACE, file}}, [] {
    Session session;
    signal(SIGXFSZ, SIG_IGN);
    const rlimit nothing{0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &nothing), 0);
    for (int call = 0; call < 2; ++call) {
      EXPECT_EQ(session.call<Callback::kSetDiag>({.brdno = 1, .arg6 = 0x10}).arg4, 1u);
    }
  });
  EXPECT_EQ(message, "vmkmgmt simulator: " + file + ": cannot be written: File too large\n");
}

}  // namespace
