// A driver that follows a script: which call it expects, down to every header word and payload byte, and what it answers.
//
// It stands in for the platform's three functions. A call that the script does not expect, or expects otherwise, fails the
// test, and so does an entry that is left over.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "transport/callbacks.h"
#include "vaskdfc/platform.h"

namespace vaskdfc::test {

using ByteVector = std::vector<std::uint8_t>;

// The bytes of a record, as a payload.
template <Record T>
ByteVector bytes_of(const T& record) {
  ByteVector bytes(sizeof(T));
  std::memcpy(bytes.data(), &record, sizeof(T));
  return bytes;
}

// One callback: what the driver must see, and what it answers. Words and payloads that are not named are 0 and untouched.
struct ExpectedCall {
  Callback callback;
  dfc_mgmt_hdr sent{};
  // Payloads after the header, as the driver must see them from their start on; only those that travel to the driver are
  // compared, and only as far as they are given here.
  ByteVector sent_payload[3]{};
  std::uint32_t platform_status = 0;
  std::uint32_t driver_status = 0;
  // Header words that the driver changes.
  std::optional<std::uint32_t> arg1{};
  std::optional<std::uint32_t> arg3{};
  std::optional<std::uint32_t> arg4{};
  std::optional<std::uint32_t> arg5{};
  // Written to the start of the payloads that travel from the driver.
  ByteVector payload[3]{};
};

class ScriptedDriver {
 public:
  void expect(ExpectedCall call) { script_.push_back(std::move(call)); }

  // The next opens of the management handle are answered with these statuses; later ones succeed.
  void open_statuses(std::deque<int> statuses) { open_statuses_ = std::move(statuses); }

  // Interface names that were opened and handles that were destroyed, in order.
  const std::vector<std::string>& opened() const { return opened_; }
  const std::vector<vmk_MgmtUserHandle>& destroyed() const { return destroyed_; }

  // Fails the test for every entry that no call has used.
  void expect_script_used() const;

  // The platform's side.
  int open(const dfc_mgmt_signature& signature, std::uint64_t cookie, vmk_MgmtUserHandle* handle);
  int destroy(vmk_MgmtUserHandle handle);
  int invoke(vmk_MgmtUserHandle handle, std::uint64_t instance, std::uint64_t id, std::uint32_t count,
             const std::array<void*, 4>& parameter);

 private:
  std::deque<ExpectedCall> script_;
  std::deque<int> open_statuses_;
  std::vector<std::string> opened_;
  std::vector<vmk_MgmtUserHandle> destroyed_;
};

// The handle that the n-th successful or refused open hands out, from 1.
vmk_MgmtUserHandle handle_number(std::uintptr_t n);

// The driver that answers at present.
extern ScriptedDriver* scripted_driver;

}  // namespace vaskdfc::test
