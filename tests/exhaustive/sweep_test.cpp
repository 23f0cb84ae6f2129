// Every exported operation, with each of its callbacks and each of its allocations failing in turn.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>

#include "exhaustive/operation.h"
#include "exhaustive/platform.h"
#include "support/c_library.h"
#include "support/exported_names.h"
#include "transport/log.h"

namespace vaskdfc {

void PrintTo(Callback callback, std::ostream* out) { *out << facts_of(callback).name; }

namespace test {

void PrintTo(const Operation& row, std::ostream* out) { *out << row.name; }

namespace {

constexpr std::uint32_t kPlatformFailure = 0x0BAD0001;
constexpr std::uint32_t kDriverFailure = 0x0BAD7777;  // means nothing to any operation

// One callback that fails: which one of a call, counted from 0, and how. A driver or platform that fails has written nothing.
struct Fault {
  std::size_t position = SIZE_MAX;
  std::uint32_t platform = 0;
  std::uint32_t driver = 0;
};
Fault fault;
std::vector<Callback> issued;

int answer_or_fail(Callback callback, const Parameters& parameters) {
  issued.push_back(callback);
  if (issued.size() - 1 != fault.position) {
    AgreeableDriver::answer(callback, parameters);
    return 0;
  }
  static_cast<dfc_mgmt_hdr*>(parameters[0])->status = fault.driver;
  return static_cast<int>(fault.platform);
}

class Sweep : public testing::TestWithParam<Operation> {
 protected:
  Sweep() {
    answer = answer_or_fail;
    c_library = {};
    log_ = std::tmpfile();
  }
  ~Sweep() override {
    fLogger = nullptr;
    std::fclose(log_);
  }

  // Calls the operation as often as the test likes, each time with a fresh library and a fresh caller.
  std::uint32_t call(const Fault& wanted, std::size_t refused_allocation = 0) {
    start_library();
    fLogger = log_;
    LogLevel = 0xF;
    fault = wanted;
    issued.clear();
    const auto live = c_library.live_allocations;
    c_library.allocations = 0;
    c_library.refused_allocation = refused_allocation;

    Caller caller(board_of(GetParam().generation));
    const std::uint32_t result = GetParam().call(caller);
    c_library.refused_allocation = 0;
    untouched_ = caller.is_untouched();
    EXPECT_TRUE(caller.guards_are_whole()) << "something was written beside the caller's memory";
    EXPECT_EQ(c_library.live_allocations, live) << "memory was not released";
    return result;
  }

  // A call that failed must have left the caller's memory alone, unless its row says why not.
  void expect_untouched(std::uint32_t result, std::uint32_t without_failure) const {
    if (result == without_failure || !GetParam().writes_on_failure.empty()) return;
    EXPECT_TRUE(untouched_) << "a failed call wrote to the caller's memory";
  }

 private:
  std::FILE* log_;
  bool untouched_ = false;
};

TEST_P(Sweep, issues_its_callbacks_in_order) {
  call({});
  std::vector<Callback> expected;
  for (const Step& step : GetParam().steps) expected.push_back(step.callback);
  EXPECT_EQ(issued, expected);
  EXPECT_EQ(c_library.allocations, GetParam().without_memory.size());
}

TEST_P(Sweep, tells_every_failure_of_every_callback) {
  const std::uint32_t without_failure = call({});
  const auto expect = [&](const Fault& wanted, const Result& expected) {
    const std::uint32_t status = wanted.platform != 0 ? wanted.platform : wanted.driver;
    SCOPED_TRACE(testing::Message() << "callback " << wanted.position << ", "
                                    << facts_of(GetParam().steps[wanted.position].callback).name << ", platform " << std::hex
                                    << wanted.platform << ", driver " << wanted.driver);
    const std::uint32_t result = call(wanted);
    EXPECT_EQ(result, expected.of(status, without_failure));
    expect_untouched(result, without_failure);
  };
  for (std::size_t position = 0; position < GetParam().steps.size(); ++position) {
    const Step& step = GetParam().steps[position];
    expect({.position = position, .platform = kPlatformFailure}, step.platform);
    expect({.position = position, .driver = kDriverFailure}, step.driver);
    for (const auto& [status, result] : step.mapped) expect({.position = position, .driver = status}, result);
  }
}

TEST_P(Sweep, tells_every_failure_of_memory) {
  const std::uint32_t without_failure = call({});
  for (std::size_t allocation = 1; allocation <= GetParam().without_memory.size(); ++allocation) {
    SCOPED_TRACE(testing::Message() << "allocation " << allocation);
    const std::uint32_t result = call({}, allocation);
    EXPECT_EQ(result, GetParam().without_memory[allocation - 1].of(0, without_failure));
    expect_untouched(result, without_failure);
  }
}

std::string name_of(const testing::TestParamInfo<Operation>& row) {
  return std::string(row.param.name) + "_" + std::to_string(row.index);
}

INSTANTIATE_TEST_SUITE_P(EveryOperation, Sweep, testing::ValuesIn(operations()), name_of);

TEST(Operations, are_all_exported_names_and_no_others) {
  std::set<std::string> in_table;
  for (const Operation& row : operations()) in_table.insert(std::string(row.name));
  const std::vector<std::string> names = exported_names();
  EXPECT_FALSE(names.empty());
  EXPECT_EQ(in_table, std::set<std::string>(names.begin(), names.end()));
}

}  // namespace
}  // namespace test
}  // namespace vaskdfc
