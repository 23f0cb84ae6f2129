#include <cstring>

#include "support/library_test.h"
#include "vaskdfc/info.h"

namespace vaskdfc {
namespace {

class RevisionsTest : public test::LibraryTest {};

TEST_F(RevisionsTest, tells_the_revision_of_the_interface) {
  uint32_t major = 99;
  uint32_t minor = 99;
  EXPECT_EQ(GetDfcRev(&major, &minor), 0u);
  EXPECT_EQ(major, 4u);
  EXPECT_EQ(minor, 0u);
}

TEST_F(RevisionsTest, tells_the_version_within_31_bytes) {
  char text[DFC_LIB_VERSION_BYTES + 1];
  std::memset(text, '#', sizeof(text));
  EXPECT_EQ(DFC_GetLibVer(text), 11u);
  EXPECT_STREQ(text, "11.4.1080.0");
  EXPECT_EQ(text[DFC_LIB_VERSION_BYTES], '#');
}

// The library's side as its 72 bytes must be where the caller had 0xEE.
test::ByteVector library_side() {
  test::ByteVector bytes(72, 0xEE);
  const std::uint8_t kVersion[] = {0x01, 0x01, 0x00, 0x02};
  std::ranges::copy(kVersion, bytes.begin());
  std::ranges::copy("vaskfcoe-mgmt", bytes.begin() + 4);
  std::ranges::copy("ZAV", bytes.begin() + 36);
  const std::uint8_t kCount[] = {77, 0, 0, 0};
  std::ranges::copy(kCount, bytes.begin() + 68);
  return bytes;
}

dfc_interface_rev callers_record() {
  dfc_interface_rev record;
  std::memset(&record, 0xEE, sizeof(record));
  return record;
}

TEST_F(RevisionsTest, tells_both_sides) {
  start_log();
  dfc_interface_rev drivers{.version = 0x03000201, .name = "vaskfcoe-mgmt", .vendor = "ZAV", .callback_count = 80};
  driver.expect({.callback = Callback::kCallVer, .payload = {test::bytes_of(drivers)}});

  dfc_interface_rev driver_side{};
  dfc_interface_rev library_rev = callers_record();
  EXPECT_EQ(CallVer(&driver_side, &library_rev), 0u);
  EXPECT_EQ(test::bytes_of(driver_side), test::bytes_of(drivers));
  EXPECT_EQ(test::bytes_of(library_rev), library_side());
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                   CallVer:  148 call: TREL_MGMT_CALL_VER id[4711:4712]\n"
            "2023-11-14T22:13:20                   CallVer:  152 cmd ok:            TREL_MGMT_CALL_VER brd[-1] id[4711:4712]\n");
}

TEST_F(RevisionsTest, tells_the_librarys_side_also_when_the_call_fails) {
  dfc_interface_rev driver_side{};
  dfc_interface_rev library_rev = callers_record();
  driver.expect({.callback = Callback::kCallVer, .driver_status = 0x0BAD0001});
  EXPECT_EQ(CallVer(&driver_side, &library_rev), 0x0BAD0001u);
  EXPECT_EQ(test::bytes_of(library_rev), library_side());

  driver.expect({.callback = Callback::kCallVer, .platform_status = 7, .driver_status = 0x0BAD0001});
  EXPECT_EQ(CallVer(&driver_side, &library_rev), 7u);
}

TEST_F(RevisionsTest, names_the_primary_interface_also_when_the_fallback_is_in_use) {
  driver.open_statuses({1, 0});
  expect_discovery({});
  DFC_InitDiagEnv(nullptr, 0);
  driver.expect({.callback = Callback::kCallVer});

  dfc_interface_rev driver_side{};
  dfc_interface_rev library_rev = callers_record();
  EXPECT_EQ(CallVer(&driver_side, &library_rev), 0u);
  EXPECT_STREQ(library_rev.name, "vaskfcoe-mgmt");
}

}  // namespace
}  // namespace vaskdfc
