// The simulator reads its environment once per process, so a test runs what it tests in a process of its own.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "transport/callbacks.h"
#include "vaskdfc/platform.h"
#include "vmkmgmt_sim.h"

using nlohmann::json;
using vaskdfc::Callback;
using vaskdfc::Callbacks;

using Environment = std::map<std::string, std::string>;

// Runs a body in a forked process with this environment and no other simulator settings. Failures inside fail the test. Returns
// what the process wrote to standard error.
std::string in_process(const Environment& environment, const std::function<void()>& body);

// A folder that goes with the object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& name = "") const { return name.empty() ? path_ : path_ + "/" + name; }
  std::string write(const std::string& name, const std::string& content) const;

 private:
  std::string path_;
};

std::string read_file(const std::string& path);

// A signature that the simulator accepts.
struct Signature {
  explicit Signature(const char* interface_name = "vaskfcoe-mgmt");
  Signature(const Signature&) = delete;
  Signature& operator=(const Signature&) = delete;

  std::array<dfc_mgmt_callback, Callbacks::kCount> callbacks{};
  dfc_mgmt_signature record{};
};

std::uint32_t open_handle(const Signature& signature, vmk_MgmtUserHandle& handle);

// An open handle on the primary interface.
class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  vmk_MgmtUserHandle handle() const { return handle_; }

  // Invokes a callback; the header goes both ways. Returns the platform status.
  template <Callback kCallback, typename... Records>
  std::uint32_t invoke(dfc_mgmt_hdr& header, Records&... records) {
    using Row = Callbacks::At<kCallback>;
    static_assert(Row::template records_match<Records...>() && Row::template directions_match<Records...>());
    return static_cast<std::uint32_t>(
        vmk_MgmtUserCallbackInvokeInt(handle_, 0, Row::kFacts.id, Row::kFacts.parameters, &header, &records...));
  }

  // Invokes a callback that the platform must let through and returns the header that comes back.
  template <Callback kCallback, typename... Records>
  dfc_mgmt_hdr call(dfc_mgmt_hdr header, Records&... records) {
    EXPECT_EQ(invoke<kCallback>(header, records...), std::uint32_t{VMKMGMT_SIM_OK});
    return header;
  }

 private:
  vmk_MgmtUserHandle handle_ = nullptr;
};

// The shortest scenario with one adapter, at board 2, connected to a fabric with one remote port.
json small_scenario();

// The scenarios that the simulator's page shows, in their order.
std::vector<json> documented_examples();

// Runs a body under a scenario.
std::string under_scenario(const json& scenario, const std::function<void()>& body);

// A record whose every byte is one that a test would not expect.
template <typename Record>
Record garbage() {
  Record record;
  std::memset(&record, 0xA5, sizeof(record));
  return record;
}

// Bytes that follow from their positions and a seed; every seed gives others at every position.
std::vector<std::uint8_t> pattern(std::size_t bytes, std::size_t seed);

// A field's text, which must be terminated.
template <typename Byte, std::size_t N>
std::string text(const Byte (&field)[N]) {
  static_assert(sizeof(Byte) == 1);
  std::string result;
  for (const Byte letter : field) {
    if (letter == 0) return result;
    result += static_cast<char>(letter);
  }
  ADD_FAILURE() << "not terminated: " << result;
  return result;
}

std::string text(const HbaWwn& wwn);
