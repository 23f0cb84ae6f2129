#include "sim_process.h"

#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

[[noreturn]] void run(const Environment& environment, const std::function<void()>& body) {
  for (const char* variable : {VMKMGMT_SIM_SCENARIO, VMKMGMT_SIM_STATE, VMKMGMT_SIM_TRACE}) unsetenv(variable);
  for (const auto& [variable, value] : environment) setenv(variable.c_str(), value.c_str(), 1);
  body();
  std::fflush(nullptr);
  _exit(testing::Test::HasFailure() ? 1 : 0);
}

std::string drain(int file) {
  std::string content;
  char piece[512];
  for (ssize_t size = read(file, piece, sizeof(piece)); size > 0; size = read(file, piece, sizeof(piece))) {
    content.append(piece, static_cast<std::size_t>(size));
  }
  return content;
}

}  // namespace

std::string in_process(const Environment& environment, const std::function<void()>& body) {
  int errors[2];
  EXPECT_EQ(pipe(errors), 0);
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    close(errors[0]);
    dup2(errors[1], STDERR_FILENO);
    close(errors[1]);
    run(environment, body);
  }
  close(errors[1]);
  const std::string written = drain(errors[0]);
  close(errors[0]);

  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "the forked process failed; its standard error:\n" << written;
  return written;
}

TemporaryFolder::TemporaryFolder() : path_(testing::TempDir() + "simulator-XXXXXX") { EXPECT_NE(mkdtemp(path_.data()), nullptr); }

TemporaryFolder::~TemporaryFolder() { std::filesystem::remove_all(path_); }

std::string TemporaryFolder::write(const std::string& name, const std::string& content) const {
  std::ofstream(path(name)) << content;
  return path(name);
}

std::string read_file(const std::string& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

Signature::Signature(const char* interface_name)
    : record{.version = 0x2000101, .vendor = "ZAV", .callback_count = Callbacks::kCount, .callbacks = callbacks.data()} {
  std::ranges::transform(Callbacks::kFacts, callbacks.begin(), vaskdfc::descriptor_of);
  std::snprintf(record.name, sizeof(record.name), "%s", interface_name);
}

std::uint32_t open_handle(const Signature& signature, vmk_MgmtUserHandle& handle) {
  return static_cast<std::uint32_t>(vmk_MgmtUserInit(&signature.record, 0, &handle));
}

Session::Session() { EXPECT_EQ(open_handle(Signature(), handle_), std::uint32_t{VMKMGMT_SIM_OK}); }

Session::~Session() { EXPECT_EQ(vmk_MgmtUserDestroy(handle_), int{VMKMGMT_SIM_OK}); }

json small_scenario() {
  return json::parse(R"({
    "driver": {"name": "vaskfcoe", "version": "1.2.3.4"},
    "fabrics": [
      {
        "name": "san",
        "wwn": "10:00:00:00:00:00:0f:0b",
        "ports": [{"wwnn": "50:00:00:00:00:00:00:01", "wwpn": "50:00:00:00:00:00:00:02", "fc_id": "0x010200"}]
      }
    ],
    "adapters": [
      {
        "board": 2,
        "model": "Kestar K5603-FC16",
        "device": "0x5603",
        "sli_mode": 4,
        "serial_number": "S2",
        "wwnn": "20:00:00:00:00:00:00:02",
        "wwpn": "10:00:00:00:00:00:00:02",
        "fabric": "san",
        "fc_id": "0x010a00",
        "supported_speeds": ["4G", "8G", "16G"]
      }
    ]
  })");
}

std::vector<json> documented_examples() {
  const std::string page = read_file(SIMULATOR_PAGE);
  const std::string fence = "```json\n";
  std::vector<json> examples;
  for (auto start = page.find(fence); start != page.npos; start = page.find(fence, start)) {
    start += fence.size();
    examples.push_back(json::parse(page.substr(start, page.find("```", start) - start)));
  }
  return examples;
}

std::string under_scenario(const json& scenario, const std::function<void()>& body) {
  const TemporaryFolder folder;
  return in_process({{VMKMGMT_SIM_SCENARIO, folder.write("scenario.json", scenario.dump(2))}}, body);
}

std::vector<std::uint8_t> pattern(std::size_t bytes, std::size_t seed) {
  std::vector<std::uint8_t> result(bytes);
  for (std::size_t i = 0; i < bytes; ++i) result[i] = static_cast<std::uint8_t>(seed + i * 7 + i / 256);
  return result;
}

std::string text(const HbaWwn& wwn) {
  std::string result;
  for (const std::uint8_t byte : wwn.wwn) {
    char digits[4];
    std::snprintf(digits, sizeof(digits), "%s%02x", result.empty() ? "" : ":", unsigned{byte});
    result += digits;
  }
  return result;
}
