#include "calls.h"

#include <dlfcn.h>

#include <cstdlib>
#include <set>
#include <stdexcept>
#include <vector>

#include "support/exported_names.h"

namespace {

std::set<std::string>& called() {
  static std::set<std::string> names;
  return names;
}

void* library() {
  static void* const library = dlopen(VASKDFC_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  return library;
}

class EveryOperation : public testing::Environment {
 public:
  void SetUp() override {
    for (const char* name : {"VMKMGMT_SIM_SCENARIO", "VMKMGMT_SIM_STATE", "VMKMGMT_SIM_TRACE"}) unsetenv(name);
  }

  void TearDown() override {
    const std::vector<std::string> names = vaskdfc::test::exported_names();
    EXPECT_FALSE(names.empty());
    for (const std::string& name : names) EXPECT_TRUE(called().contains(name)) << name << " is exported and was not called";
    EXPECT_EQ(called().size(), names.size()) << "something was called that the version script does not name";
  }
};

const auto* const kEveryOperation = testing::AddGlobalTestEnvironment(new EveryOperation);

}  // namespace

void* exported(const char* name) {
  void* const symbol = dlsym(library(), name);
  if (symbol == nullptr) throw std::runtime_error(dlerror());
  called().insert(name);
  return symbol;
}

void Operations::SetUp() {
  std::array<dfc_brd_info, DFC_MAX_BOARDS> boards;
  ASSERT_EQ(OPERATION(DFC_InitDiagEnv)(boards.data(), DFC_MAX_BOARDS), kAdapters);
}

void Operations::TearDown() { EXPECT_EQ(OPERATION(DFC_FreeDiagEnv)(), 0u); }
