#include "mailbox/valid_region.h"

#include <map>

#include "support/adapter_test.h"

namespace vaskdfc {
namespace {

class ValidRegionTest : public test::LibraryTest {};

TEST_F(ValidRegionTest, knows_the_size_of_every_region_and_of_no_other) {
  const std::map<std::uint32_t, std::uint32_t> kSizes{{0, 60},   {4, 120},   {5, 200},   {6, 200},  {7, 200},    {8, 60},
                                                      {9, 256},  {10, 256},  {14, 1000}, {17, 100}, {19, 2028},  {21, 200},
                                                      {22, 512}, {23, 1024}, {30, 12},   {32, 8},   {160, 4096}, {162, 4096}};
  for (std::uint32_t region = 0; region < 300; ++region) {
    const auto size = kSizes.find(region);
    EXPECT_EQ(valid_region(region), size == kSizes.end() ? 0 : size->second) << region;
  }
  EXPECT_EQ(valid_region(0xFFFFFFFF), 0u);
}

TEST_F(ValidRegionTest, logs_a_region_that_does_not_exist) {
  start_log(kLogError);
  valid_region(24);
  valid_region(23);
  EXPECT_EQ(log(), test::log_line("valid_region", 5063, "ERROR: Invalid region 24"));
}

TEST_F(ValidRegionTest, logs_nothing_without_the_class_of_errors) {
  start_log(0xB);
  EXPECT_EQ(valid_region(24), 0u);
  EXPECT_EQ(log(), "");
}

}  // namespace
}  // namespace vaskdfc
