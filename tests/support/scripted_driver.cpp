#include "support/scripted_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <iomanip>
#include <sstream>

namespace vaskdfc::test {

ScriptedDriver* scripted_driver = nullptr;

namespace {

std::string hex(std::span<const std::uint8_t> bytes) {
  std::ostringstream text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text << (i % 16 == 0 ? "\n  " : " ") << std::hex << std::setw(2) << std::setfill('0') << int{bytes[i]};
  }
  return text.str();
}

constexpr std::array kWordNames{"brdno", "arg1", "arg2",  "arg3",  "arg4",  "arg5",
                                "arg6",  "arg7", "rsvd1", "rsvd2", "rsvd3", "status"};

void compare_header(const dfc_mgmt_hdr& got, const dfc_mgmt_hdr& expected, const char* name) {
  using Words = std::array<std::uint32_t, kWordNames.size()>;
  const auto got_words = std::bit_cast<Words>(got);
  const auto expected_words = std::bit_cast<Words>(expected);
  for (std::size_t i = 0; i < kWordNames.size(); ++i) {
    if (got_words[i] == expected_words[i]) continue;
    ADD_FAILURE() << name << ": header word " << kWordNames[i] << " is 0x" << std::hex << got_words[i] << ", expected 0x"
                  << expected_words[i];
  }
}

}  // namespace

vmk_MgmtUserHandle handle_number(std::uintptr_t n) {
  static std::array<char, 64> addresses;
  return addresses.data() + n;
}

void ScriptedDriver::expect_script_used() const {
  for (const ExpectedCall& call : script_) ADD_FAILURE() << "the library never issued " << facts_of(call.callback).name;
}

int ScriptedDriver::open(const dfc_mgmt_signature& signature, std::uint64_t cookie, vmk_MgmtUserHandle* handle) {
  EXPECT_EQ(cookie, 0u);
  opened_.emplace_back(signature.name);
  *handle = handle_number(opened_.size());
  if (open_statuses_.empty()) return 0;
  const int status = open_statuses_.front();
  open_statuses_.pop_front();
  return status;
}

int ScriptedDriver::destroy(vmk_MgmtUserHandle handle) {
  destroyed_.push_back(handle);
  return 0;
}

int ScriptedDriver::invoke(vmk_MgmtUserHandle, std::uint64_t instance, std::uint64_t id, std::uint32_t count,
                           const std::array<void*, 4>& parameter) {
  const std::size_t row = index_of(Callbacks::kFacts, id);
  if (row == Callbacks::kCount) {
    ADD_FAILURE() << "the library issued callback " << id << ", which does not exist";
    return -1;
  }
  const CallbackFacts& facts = Callbacks::kFacts[row];
  if (script_.empty() || static_cast<std::uint64_t>(script_.front().callback) != id) {
    ADD_FAILURE() << "the library issued " << facts.name << ", expected "
                  << (script_.empty() ? "nothing more" : facts_of(script_.front().callback).name);
    return -1;
  }
  const ExpectedCall call = std::move(script_.front());
  script_.pop_front();

  EXPECT_EQ(instance, 0u);
  EXPECT_EQ(count, facts.parameters) << facts.name;
  auto& header = *static_cast<dfc_mgmt_hdr*>(parameter[0]);
  compare_header(header, call.sent, facts.name);

  for (std::size_t i = 1; i < facts.parameters; ++i) {
    const std::span<std::uint8_t> payload{static_cast<std::uint8_t*>(parameter[i]), facts.sizes[i]};
    const auto usage = static_cast<Usage>(facts.usages[i]);
    if (usage != Usage::kOut) {
      const ByteVector& expected = call.sent_payload[i - 1];
      EXPECT_TRUE(std::ranges::equal(payload.first(std::min(expected.size(), payload.size())), expected))
          << facts.name << ": payload " << i << " is" << hex(payload) << "\nexpected" << hex(expected);
    }
    if (usage != Usage::kIn) std::ranges::copy(call.payload[i - 1], payload.begin());
  }
  header.arg1 = call.arg1.value_or(header.arg1);
  header.arg3 = call.arg3.value_or(header.arg3);
  header.arg4 = call.arg4.value_or(header.arg4);
  header.arg5 = call.arg5.value_or(header.arg5);
  header.status = call.driver_status;
  return static_cast<int>(call.platform_status);
}

}  // namespace vaskdfc::test

using vaskdfc::test::scripted_driver;

int vmk_MgmtUserInit(const void* signature, uint64_t cookie, vmk_MgmtUserHandle* handle) {
  return scripted_driver->open(*static_cast<const dfc_mgmt_signature*>(signature), cookie, handle);
}

int vmk_MgmtUserDestroy(vmk_MgmtUserHandle handle) { return scripted_driver->destroy(handle); }

int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle handle, uint64_t instance, uint64_t callback, uint32_t count, ...) {
  std::array<void*, 4> parameter{};
  std::va_list arguments;
  va_start(arguments, count);
  for (std::size_t i = 0; i < std::min<std::size_t>(count, parameter.size()); ++i) parameter[i] = va_arg(arguments, void*);
  va_end(arguments);
  return scripted_driver->invoke(handle, instance, callback, count, parameter);
}
