#include "vaskdfc/unimplemented.h"

#include <string_view>
#include <utility>

#include "support/library_test.h"

namespace {

using vaskdfc::test::LibraryTest;

class UnimplementedTest : public LibraryTest {};

TEST_F(UnimplementedTest, every_entry_point_returns_2_without_a_call_or_a_log_line) {
  start_log();

  const std::pair<std::string_view, uint32_t> kResults[] = {
      {"AddBind", AddBind(0, nullptr)},
      {"DelBind", DelBind(0, nullptr)},
      {"DFC_SendHaldeCommand", DFC_SendHaldeCommand(0, nullptr, 0, nullptr, nullptr)},
      {"DFC_VPCreate", DFC_VPCreate(0, nullptr, nullptr)},
      {"DFC_VPDelete", DFC_VPDelete(0, nullptr)},
      {"DFC_VPDeleteV2", DFC_VPDeleteV2(0, nullptr, 0)},
      {"DFC_GetFcpTargetMappingByWWN", DFC_GetFcpTargetMappingByWWN(0, nullptr, nullptr)},
      {"DFC_GetAuthConfig", DFC_GetAuthConfig(0, nullptr, nullptr)},
      {"DFC_SetAuthConfig", DFC_SetAuthConfig(0, nullptr, nullptr)},
      {"DFC_DeleteAuthConfig", DFC_DeleteAuthConfig(0, nullptr)},
      {"DFC_GetAuthPassword", DFC_GetAuthPassword(0, nullptr, nullptr)},
      {"DFC_SetAuthPassword", DFC_SetAuthPassword(0, nullptr, nullptr)},
      {"DFC_InitiateAuthentication", DFC_InitiateAuthentication(0, nullptr)},
      {"DFC_EnableAuthentication", DFC_EnableAuthentication(0)},
      {"DFC_DisableAuthentication", DFC_DisableAuthentication(0)},
      {"DFC_GetAuthStatus", DFC_GetAuthStatus(0, nullptr, nullptr)},
      {"DFC_GetAuthConfigList", DFC_GetAuthConfigList(0, nullptr, nullptr)},
  };
  EXPECT_EQ(std::size(kResults), 17u);
  for (const auto& [name, result] : kResults) EXPECT_EQ(result, 2u) << name;
  EXPECT_EQ(log(), "");
  EXPECT_TRUE(driver.opened().empty());
}

}  // namespace
