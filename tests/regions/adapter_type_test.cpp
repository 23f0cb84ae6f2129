#include "regions/adapter_type.h"

#include "support/region_test.h"

namespace vaskdfc {
namespace {

constexpr const char* kCallback = "TREL_MGMT_GET_TRELDFC_INFO";

class AdapterTypeTest : public test::RegionTest {};

TEST_F(AdapterTypeTest, tells_the_type) {
  expect_adapter_type(0x12345678);
  start_log();
  std::uint32_t type = 99;
  EXPECT_EQ(get_hba_type(kBoard, type), 0u);
  EXPECT_EQ(type, 0x12345678u);
  EXPECT_EQ(log(), test::call_line("get_hba_type", 4976, kCallback) + test::ok_line("get_hba_type", 4979, kCallback));
}

TEST_F(AdapterTypeTest, tells_failures_of_platform_and_driver_apart) {
  start_log(kLogError);
  std::uint32_t type = 99;
  expect_adapter_type(24, 7, 0xBAD0020);
  EXPECT_EQ(get_hba_type(kBoard, type), 1u);
  EXPECT_EQ(type, 0u);

  type = 99;
  expect_adapter_type(24, 0, 0xBAD0020);
  EXPECT_EQ(get_hba_type(kBoard, type), 0xBAD0020u);
  EXPECT_EQ(type, 0u);
  EXPECT_EQ(log(), test::error_line("get_hba_type", 4979, kCallback, "x7:xbad0020") +
                       test::error_line("get_hba_type", 4979, kCallback, "x0:xbad0020"));
}

TEST_F(AdapterTypeTest, knows_the_two_fcoe_types_among_17) {
  for (std::uint32_t type = 0; type < 64; ++type) EXPECT_EQ(is_fcoe_type(type), type == 24 || type == 40) << type;
}

}  // namespace
}  // namespace vaskdfc
