#include "support/adapter_test.h"
#include "vaskdfc/fabric.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr std::uint8_t kUntouched = 0xEE;
constexpr std::uint8_t kReplied = 0xF0;
constexpr std::uint8_t kRequested = 0x9D;
constexpr std::uint32_t kDoesNotFit = 0xBAD005D;

// A failed call and what it turns into.
struct FailedCall {
  std::uint32_t platform_status;
  std::uint32_t driver_status;
  std::int32_t result;
};

class FabricTest : public test::AdapterTest {
 protected:
  // A call that fails so.
  static test::ExpectedCall failing(test::ExpectedCall call, const FailedCall& failed) {
    call.platform_status = failed.platform_status;
    call.driver_status = failed.driver_status;
    return call;
  }
  // The reply starts with that many bytes of the driver's; nothing behind them was touched.
  void expect_reply(std::size_t bytes) {
    ByteVector expected(reply.size(), kUntouched);
    std::fill_n(expected.begin(), bytes, kReplied);
    EXPECT_TRUE(reply == expected);
  }

  const ByteVector request = ByteVector(245761, kRequested);
  ByteVector reply = ByteVector(245800, kUntouched);
  std::uint32_t reply_bytes = 77;
};

// --- ELS

class ElsTest : public FabricTest {
 protected:
  test::ExpectedCall call(std::uint32_t bytes, std::uint32_t replied) {
    return {.callback = Callback::kSendEls,
            .sent = {.brdno = kDriverBoard, .arg2 = bytes, .arg3 = 1024},
            .sent_payload = {bytes_of(descriptor), ByteVector(bytes, kRequested)},
            .arg3 = replied,
            .payload = {{}, {}, ByteVector(1024, kReplied)}};
  }
  std::uint32_t send(std::uint32_t bytes) {
    return DFC_SendELSCmd(kBoard, &descriptor, request.data(), bytes, reply.data(), &reply_bytes);
  }

  const dfc_els_descriptor descriptor{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
};

TEST_F(ElsTest, sends_a_request_and_receives_the_reply) {
  driver.expect(call(12, 20));
  start_log();
  EXPECT_EQ(send(12), DFC_OK);
  EXPECT_EQ(reply_bytes, 20u);
  expect_reply(20);
  EXPECT_EQ(log(), test::call_line("DFC_SendELSCmd", 96, "TREL_MGMT_SEND_ELS") +
                       test::ok_line("DFC_SendELSCmd", 100, "TREL_MGMT_SEND_ELS"));
}

TEST_F(ElsTest, takes_1024_bytes_and_receives_as_many) {
  driver.expect(call(1024, 2000));
  EXPECT_EQ(send(1024), DFC_OK);
  EXPECT_EQ(reply_bytes, 2000u);
  expect_reply(1024);
  EXPECT_EQ(send(1025), DFC_FAILED);
}

TEST_F(ElsTest, turns_driver_statuses_into_results) {
  const FailedCall kFailures[] = {{0, 0xBAD000A, 3}, {0, 0xBAD0020, 1}, {9, 0, 1}, {9, 0xBAD000A, 3}};
  for (const FailedCall& failed : kFailures) {
    driver.expect(failing(call(12, 2000), failed));
    EXPECT_EQ(send(12), static_cast<std::uint32_t>(failed.result));
    EXPECT_EQ(reply_bytes, 77u);
  }
  for (const std::uint32_t platform_status : {0u, 9u}) {
    reply_bytes = 77;
    driver.expect(failing(call(12, 2000), {platform_status, kDoesNotFit, 7}));
    EXPECT_EQ(send(12), DFC_TOO_SMALL);
    EXPECT_EQ(reply_bytes, 2000u);
  }
  test::c_library.refused_bytes = 2 * 1024;
  EXPECT_EQ(send(12), DFC_FAILED);
  expect_reply(0);
}

// --- CT

class CtTest : public FabricTest {
 protected:
  test::ExpectedCall call(std::uint32_t bytes, std::uint32_t room, std::uint32_t destination, std::uint32_t replied) {
    return {.callback = Callback::kSendCt,
            .sent = {.brdno = kDriverBoard, .arg2 = bytes, .arg3 = room, .arg4 = destination},
            .sent_payload = {ByteVector(bytes, kRequested)},
            .arg3 = replied,
            .payload = {{}, ByteVector(245760, kReplied)}};
  }
  std::int32_t get(std::int32_t destination, std::uint32_t bytes, std::uint32_t room = 4096) {
    return GetCTInfo(kBoard, destination, request.data(), bytes, reply.data(), room);
  }
};

TEST_F(CtTest, returns_the_length_of_the_reply) {
  driver.expect(call(16, 4096, 0xFFFFFC, 20));
  start_log();
  EXPECT_EQ(get(0xFFFFFC, 16), 20);
  expect_reply(20);
  EXPECT_EQ(log(), test::call_line("GetCTInfo", 178, "TREL_MGMT_SEND_CT") + test::ok_line("GetCTInfo", 182, "TREL_MGMT_SEND_CT"));
}

TEST_F(CtTest, trusts_the_drivers_length_and_not_its_own_buffers_end) {
  driver.expect(call(16, 4, 0xFFFFFC, 20));
  EXPECT_EQ(get(0xFFFFFC, 16, 4), 20);
  expect_reply(20);
  driver.expect(call(16, 4, 0xFFFFFC, 300000));
  EXPECT_EQ(get(0xFFFFFC, 16, 4), 300000);
  expect_reply(245760);
}

TEST_F(CtTest, takes_240_KiB_and_no_more) {
  driver.expect(call(245760, 4096, 0xFFFFFC, 0));
  EXPECT_EQ(get(0xFFFFFC, 245760), 0);
  EXPECT_EQ(get(0xFFFFFC, 245761), -3);
}

TEST_F(CtTest, goes_to_well_known_addresses_only) {
  for (const std::int32_t address : {0xFFFF00, 0xFFFFFF, -1, 0x01FFFFFC}) {
    driver.expect(call(16, 4096, static_cast<std::uint32_t>(address), 1));
    EXPECT_EQ(get(address, 16), 1);
  }
  for (const std::int32_t address : {0, 0xFFFE00, 0x7FFFFC, 0xFF00FC}) EXPECT_EQ(get(address, 245761), -4);
}

constexpr FailedCall kCtFailures[] = {{0, 0xBAD0021, 0},  {0, 0xBAD0014, -2}, {0, 0xBAD005A, -1}, {0, kDoesNotFit, -3},
                                      {0, 0xBAD0020, -4}, {9, 0, -4},         {9, 0xBAD0021, 0}};

TEST_F(CtTest, turns_driver_statuses_into_results) {
  for (const FailedCall& failed : kCtFailures) {
    driver.expect(failing(call(16, 4096, 0xFFFFFC, 20), failed));
    EXPECT_EQ(get(0xFFFFFC, 16), failed.result);
  }
  test::c_library.refused_bytes = 2 * 245760;
  EXPECT_EQ(get(0xFFFFFC, 16), -2);
  expect_reply(0);
}

class CtPassThroughTest : public CtTest {
 protected:
  std::uint32_t send(std::uint8_t gs_type, std::uint32_t destination, std::uint32_t replied) {
    ByteVector frame(16, kRequested);
    frame[4] = gs_type;
    auto expected = call(16, 77, destination, replied);
    expected.sent_payload[0] = frame;
    driver.expect(expected);
    return SendCTPassThru(kBoard, frame.data(), 16, reply.data(), &reply_bytes);
  }
};

TEST_F(CtPassThroughTest, goes_to_the_service_of_its_type) {
  const std::pair<std::uint8_t, std::uint32_t> kServices[] = {{0xFA, 0xFFFFFA}, {0xFB, 0xFFFFFB}, {0xFC, 0xFFFFFC},
                                                              {0xFD, 0xFFFFFD}, {0x20, 0xFFFFFC}, {0xF9, 0xFFFFFC},
                                                              {0xFE, 0xFFFFFC}, {0x00, 0xFFFFFC}};
  for (const auto& [type, destination] : kServices) {
    reply_bytes = 77;
    EXPECT_EQ(send(type, destination, 20), DFC_OK);
    EXPECT_EQ(reply_bytes, 20u);
  }
  expect_reply(20);
}

TEST_F(CtPassThroughTest, fails_for_every_result_that_is_no_length_and_leaves_the_length) {
  EXPECT_EQ(send(0xFC, 0xFFFFFC, 0), DFC_FAILED);
  EXPECT_EQ(send(0xFC, 0xFFFFFC, 0x80000000), DFC_FAILED);
  EXPECT_EQ(reply_bytes, 77u);
  for (const FailedCall& failed : kCtFailures) {
    driver.expect(failing(call(16, 77, 0xFFFFFC, 20), failed));
    EXPECT_EQ(SendCTPassThru(kBoard, request.data(), 16, reply.data(), &reply_bytes), DFC_FAILED);
    EXPECT_EQ(reply_bytes, 77u);
  }
}

// --- management

class ManagementTest : public FabricTest {
 protected:
  test::ExpectedCall command_call(std::uint32_t bytes, std::uint32_t replied) {
    return {.callback = Callback::kHbaSendMgmtCmd,
            .sent = {.brdno = kDriverBoard, .arg2 = bytes, .arg3 = 245760, .arg7 = 0x1234},
            .sent_payload = {bytes_of(command), ByteVector(bytes, kRequested)},
            .arg3 = replied,
            .payload = {{}, {}, ByteVector(245760, kReplied)}};
  }
  test::ExpectedCall response_call(std::uint32_t bytes) {
    return {.callback = Callback::kHbaSendMgmtRsp,
            .sent = {.brdno = kDriverBoard, .arg2 = 245760, .arg4 = 0x1234},
            .sent_payload = {ByteVector(bytes, kRequested)}};
  }
  std::uint32_t send_command(std::uint32_t bytes) {
    return SendMgmtCommand(kBoard, &command, request.data(), bytes, reply.data(), &reply_bytes, 0x1234);
  }
  std::uint32_t send_response(std::uint32_t bytes) { return SendMgmtResponse(kBoard, request.data(), bytes, 0x1234); }

  const dfc_mgmt_command command{{1, 2, 3, 4, 5, 6, 7, 8}};
};

TEST_F(ManagementTest, commands_receive_their_reply) {
  driver.expect(command_call(16, 20));
  start_log();
  EXPECT_EQ(send_command(16), DFC_OK);
  EXPECT_EQ(reply_bytes, 20u);
  expect_reply(20);
  constexpr const char* kCallback = "TREL_MGMT_HBA_SEND_MGMT_CMD";
  EXPECT_EQ(log(), test::call_line("SendMgmtCommand", 288, kCallback) + test::ok_line("SendMgmtCommand", 292, kCallback));

  driver.expect(command_call(245760, 300000));
  EXPECT_EQ(send_command(245760), DFC_OK);
  EXPECT_EQ(reply_bytes, 300000u);
  expect_reply(245760);
}

TEST_F(ManagementTest, responses_are_always_announced_at_full_length) {
  driver.expect(response_call(16));
  start_log();
  EXPECT_EQ(send_response(16), DFC_OK);
  constexpr const char* kCallback = "TREL_MGMT_HBA_SEND_MGMT_RSP";
  EXPECT_EQ(log(), test::call_line("SendMgmtResponse", 352, kCallback) + test::ok_line("SendMgmtResponse", 356, kCallback));
  driver.expect(response_call(245760));
  EXPECT_EQ(send_response(245760), DFC_OK);
}

TEST_F(ManagementTest, commands_and_responses_name_one_status_differently) {
  constexpr FailedCall kCommandFailures[] = {
      {0, 0xBAD0021, 254}, {0, 0xBAD005A, 253}, {0, 0xBAD0020, 252}, {9, 0, 252}, {9, 0xBAD0021, 254}};
  for (const FailedCall& failed : kCommandFailures) {
    driver.expect(failing(command_call(16, 2000), failed));
    EXPECT_EQ(send_command(16), static_cast<std::uint32_t>(failed.result));
    EXPECT_EQ(reply_bytes, 77u);
  }
  driver.expect(failing(command_call(16, 300000), {0, kDoesNotFit, 255}));
  EXPECT_EQ(send_command(16), 255u);
  EXPECT_EQ(reply_bytes, 300000u);
  expect_reply(0);

  constexpr FailedCall kResponseFailures[] = {
      {0, 0xBAD0021, 250}, {0, 0xBAD005A, 253}, {0, kDoesNotFit, 255}, {0, 0xBAD0020, 252}, {9, 0, 252}};
  for (const FailedCall& failed : kResponseFailures) {
    driver.expect(failing(response_call(16), failed));
    EXPECT_EQ(send_response(16), static_cast<std::uint32_t>(failed.result));
  }
}

TEST_F(ManagementTest, is_refused_above_240_KiB_and_without_memory) {
  EXPECT_EQ(send_command(245761), 252u);
  EXPECT_EQ(send_response(245761), 252u);
  test::c_library.refused_bytes = 2 * 245760;
  EXPECT_EQ(send_command(16), 252u);
  test::c_library.refused_bytes = 245760;
  EXPECT_EQ(send_response(16), 252u);
  EXPECT_EQ(reply_bytes, 77u);
}

}  // namespace
}  // namespace vaskdfc
