#include "support/region_test.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

class Region14Test : public test::RegionTest {
 protected:
  const test::Image data = test::Image(1000, 0xD1);
};

TEST_F(Region14Test, writes_1000_bytes_to_fcoe_adapters_and_returns_the_reply_word) {
  for (const std::uint32_t type : {kFcoe, kLastFcoe}) {
    expect_adapter_type(type);
    expect_update(14, data, 0x77);
    EXPECT_EQ(DFC_SetRegion14(kBoard, data.data()), 0x77u);
  }
}

TEST_F(Region14Test, loses_the_result_of_a_refused_update) {
  expect_adapter_type(kFcoe);
  expect_update(14, data, 0x77, 0xBAD0020);
  EXPECT_EQ(DFC_SetRegion14(kBoard, data.data()), 0u);
}

TEST_F(Region14Test, sends_nothing_to_other_adapters_and_to_those_of_unknown_type) {
  expect_adapter_type(kFc);
  EXPECT_EQ(DFC_SetRegion14(kBoard, data.data()), DFC_UNSUPPORTED);
  expect_adapter_type(kFcoe, 0, 0xBAD0020);
  EXPECT_EQ(DFC_SetRegion14(kBoard, data.data()), 0xBAD0020u);
}

}  // namespace
}  // namespace vaskdfc
