#include <algorithm>
#include <memory>

#include "support/library_test.h"
#include "vaskdfc/info.h"

namespace vaskdfc {
namespace {

class KernelMessagesTest : public test::LibraryTest {};

TEST_F(KernelMessagesTest, sends_a_message_as_it_is) {
  start_log();
  dfc_kernel_message message;
  std::ranges::fill(message.text, 'm');
  driver.expect({.callback = Callback::kLogMsg, .sent_payload = {test::ByteVector(64, 'm')}});

  EXPECT_EQ(LogMsg(&message), 0u);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                    LogMsg:   86 call: TREL_MGMT_LOG_MSG id[4711:4712]\n"
            "2023-11-14T22:13:20                    LogMsg:   90 cmd ok:             TREL_MGMT_LOG_MSG brd[-1] id[4711:4712]\n");
}

TEST_F(KernelMessagesTest, returns_the_status_of_a_refused_message) {
  const dfc_kernel_message message{};
  driver.expect({.callback = Callback::kLogMsg, .sent_payload = {test::ByteVector(64, 0)}, .driver_status = 0x0BAD0020});
  EXPECT_EQ(LogMsg(&message), 0x0BAD0020u);
}

TEST_F(KernelMessagesTest, returns_module_information_as_the_driver_filled_it) {
  start_log();
  test::ByteVector answer(6276, 0x5C);
  driver.expect({.callback = Callback::kModInfo, .payload = {answer}});

  const auto info = std::make_unique<dfc_module_info>();
  EXPECT_EQ(ModInfo(info.get()), 0u);
  EXPECT_EQ(test::bytes_of(*info), answer);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                   ModInfo:   58 call: TREL_MGMT_MOD_INFO id[4711:4712]\n"
            "2023-11-14T22:13:20                   ModInfo:   62 cmd ok:            TREL_MGMT_MOD_INFO brd[-1] id[4711:4712]\n");
}

TEST_F(KernelMessagesTest, leaves_what_a_failing_driver_wrote) {
  driver.expect({.callback = Callback::kModInfo, .platform_status = 9, .driver_status = 3, .payload = {{1, 2, 3}}});

  const auto info = std::make_unique<dfc_module_info>();
  EXPECT_EQ(ModInfo(info.get()), 9u);
  EXPECT_EQ(info->bytes[2], 3);
}

TEST_F(KernelMessagesTest, raises_a_test_event_with_both_values) {
  start_log();
  map_board(1, 4);
  driver.expect({.callback = Callback::kEventTest, .sent = {.brdno = 4, .arg4 = 22, .arg6 = 11}});

  EXPECT_EQ(EventTest(1, 11, 22), 0u);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20                 EventTest:  116 call: TREL_MGMT_EVENT_TEST id[4711:4712]\n"
            "2023-11-14T22:13:20                 EventTest:  120 cmd ok:          TREL_MGMT_EVENT_TEST brd[1] id[4711:4712]\n");
}

TEST_F(KernelMessagesTest, returns_the_status_of_a_refused_event) {
  driver.expect({.callback = Callback::kEventTest, .driver_status = 0x0BAD0011});
  EXPECT_EQ(EventTest(0, 0, 0), 0x0BAD0011u);
  driver.expect({.callback = Callback::kEventTest, .platform_status = 2, .driver_status = 0x0BAD0011});
  EXPECT_EQ(EventTest(0, 0, 0), 2u);
}

}  // namespace
}  // namespace vaskdfc
