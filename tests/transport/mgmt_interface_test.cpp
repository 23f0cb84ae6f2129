#include "transport/mgmt_interface.h"

#include <cstdio>

#include "support/library_test.h"
#include "vaskdfc/transport.h"

namespace vaskdfc {
namespace {

using test::handle_number;

// A handle as the log prints it.
std::string printed(vmk_MgmtUserHandle handle) {
  char text[32];
  std::snprintf(text, sizeof(text), "%p", handle);
  return text;
}

class MgmtInterfaceTest : public test::LibraryTest {};

TEST_F(MgmtInterfaceTest, opens_the_primary_interface_once_and_then_only_counts) {
  EXPECT_EQ(dfc_mgmt_init(), 0u);
  EXPECT_EQ(dfc_mgmt_init(), 0u);
  EXPECT_EQ(driver.opened(), std::vector<std::string>{"vaskfcoe-mgmt"});
  EXPECT_EQ(refcnt, 2);
  EXPECT_EQ(trel_mgmt_handle, handle_number(1));
}

TEST_F(MgmtInterfaceTest, destroys_the_handle_at_the_close_that_matches_the_first_open) {
  dfc_mgmt_init();
  dfc_mgmt_init();
  EXPECT_EQ(DFC_FreeDiagEnv(), 0u);
  EXPECT_TRUE(driver.destroyed().empty());
  EXPECT_EQ(DFC_FreeDiagEnv(), 0u);
  EXPECT_EQ(driver.destroyed(), std::vector{handle_number(1)});
  EXPECT_EQ(trel_mgmt_handle, handle_number(1)) << "the handle keeps its last value";
}

TEST_F(MgmtInterfaceTest, a_close_before_any_open_only_counts) {
  EXPECT_EQ(FreeDiagEnv(), 0u);
  EXPECT_EQ(refcnt, -1);
  EXPECT_TRUE(driver.destroyed().empty());
}

TEST_F(MgmtInterfaceTest, opens_after_a_close_too_many_ask_the_platform_until_the_count_is_2) {
  FreeDiagEnv();
  FreeDiagEnv();
  for (int i = 0; i < 4; ++i) EXPECT_EQ(dfc_mgmt_init(), 0u);
  EXPECT_EQ(refcnt, 2);
  EXPECT_EQ(driver.opened().size(), 3u) << "counts -1, 0 and 1 open, count 2 does not";
}

TEST_F(MgmtInterfaceTest, a_refused_open_resets_the_count) {
  driver.open_statuses({0x1234});
  EXPECT_EQ(dfc_mgmt_init(), 1u);
  EXPECT_EQ(refcnt, 0);
}

TEST_F(MgmtInterfaceTest, falls_back_to_the_other_interface) {
  driver.open_statuses({0x1234, 0});
  expect_discovery({});

  EXPECT_EQ(DFC_InitDiagEnv(nullptr, 0), 0u);
  EXPECT_EQ(driver.opened(), (std::vector<std::string>{"vaskfcoe-mgmt", "trel-mgmt"}));
  EXPECT_EQ(refcnt, 1);
  EXPECT_EQ(trel_mgmt_handle, handle_number(2));
}

TEST_F(MgmtInterfaceTest, logs_every_open_and_close_with_the_counts) {
  start_log(1);
  dfc_mgmt_init();
  dfc_mgmt_init();
  dfc_mgmt_inbox_init();
  DFC_FreeDiagEnv();

  const std::string handle = printed(handle_number(1));
  EXPECT_EQ(log(), "2023-11-14T22:13:20             dfc_mgmt_init:  112 Init handle[" + handle +
                       "] refcnt[1:1] id[4711:4712]\n"
                       "2023-11-14T22:13:20             dfc_mgmt_init:  104 Init handle[" +
                       handle +
                       "] refcnt[2:2] id[4711:4712]\n"
                       "2023-11-14T22:13:20       dfc_mgmt_inbox_init:  138 Init handle[" +
                       handle +
                       "] refcnt[3:3] id[4711:4712]\n"
                       "2023-11-14T22:13:20           DFC_FreeDiagEnv:  176 Destroy handle[" +
                       handle + "] refcnt[2:2] id[4711:4712]\n");
}

TEST_F(MgmtInterfaceTest, logs_a_refused_open_whatever_the_mask) {
  start_log(0);
  driver.open_statuses({0xBAD, 0x1F});
  EXPECT_EQ(dfc_mgmt_init(), 1u);
  EXPECT_EQ(dfc_mgmt_inbox_init(), 1u);
  EXPECT_EQ(
      log(),
      "2023-11-14T22:13:20             dfc_mgmt_init:  118 Management init failure: xbad. Check if driver is loaded and Kestar "
      "cards are installed.  Else a possible reason would be incompatible driver and application versions.\n\n"
      "2023-11-14T22:13:20       dfc_mgmt_inbox_init:  152 Management init failure: x1f. Check if driver is loaded and Kestar "
      "cards are installed.  Else a possible reason would be incompatible driver and application versions.\n\n");
}

TEST_F(MgmtInterfaceTest, writes_no_handle_lines_with_bit_1_clear) {
  start_log(0xE);
  dfc_mgmt_init();
  DFC_FreeDiagEnv();
  EXPECT_EQ(log(), "");
}

TEST_F(MgmtInterfaceTest, both_signatures_share_everything_but_the_name) {
  EXPECT_STREQ(trel_mgmt_signature.name, "vaskfcoe-mgmt");
  EXPECT_STREQ(trel_mgmt_inbox_signature.name, "trel-mgmt");
  for (const dfc_mgmt_signature* signature : {&trel_mgmt_signature, &trel_mgmt_inbox_signature}) {
    EXPECT_EQ(signature->version, 0x2000101u);
    EXPECT_STREQ(signature->vendor, "ZAV");
    EXPECT_EQ(signature->callback_count, 77u);
    EXPECT_EQ(signature->callbacks, trel_mgmt_signature.callbacks);
  }
}

}  // namespace
}  // namespace vaskdfc
