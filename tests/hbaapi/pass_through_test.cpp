#include <cstring>
#include <numeric>

#include "support/adapter_test.h"
#include "vaskdfc/result.h"
#include "vaskdfc/scsi.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr HbaWwn kLocal{{0x10, 9, 9, 9, 9, 9, 9, 9}};
constexpr HbaWwn kTarget{{0x50, 1, 2, 3, 4, 5, 6, 7}};
constexpr std::uint8_t kUntouched = 0xEE;
constexpr std::uint8_t kRead = 0xD0;
constexpr std::uint8_t kSense = 0x5E;

FcpCmndBlock numbered_block() {
  std::array<std::uint8_t, sizeof(FcpCmndBlock)> bytes;
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  return std::bit_cast<FcpCmndBlock>(bytes);
}

// What a caller hands over and gets back.
struct Buffers {
  explicit Buffers(std::uint32_t room) : data(std::max(room, 1024u), kUntouched), data_bytes(room) {}
  bool operator==(const Buffers&) const = default;

  ByteVector data;
  std::uint32_t data_bytes;
  ByteVector back = ByteVector(300, kUntouched);  // sense or FCP response
  std::uint32_t back_bytes = 17;
};

class PassThroughTest : public test::AdapterTest {
 protected:
  const FcpCmndBlock block = numbered_block();
};

// --- SCSI

class ScsiTest : public PassThroughTest {
 protected:
  test::ExpectedCall call(std::uint32_t arg2, const ByteVector& data, std::uint32_t produced, std::uint32_t sense_bytes) {
    const ScsiPassThruRequest sent{.target = kTarget, .command = block};
    ScsiPassThruRequest answer = sent;
    std::ranges::fill(answer.sense, kSense);
    answer.sense_bytes = sense_bytes;
    return {.callback = Callback::kHbaSendScsi,
            .sent = {.brdno = kDriverBoard, .arg2 = arg2},
            .sent_payload = {bytes_of(sent), data},
            .arg3 = produced,
            .payload = {bytes_of(answer), ByteVector(262144, kRead)}};
  }
  std::uint32_t send(Buffers& buffers) {
    return SendScsiCmdByWWN(kBoard, &kLocal, &kTarget, &block, 99, buffers.data.data(), &buffers.data_bytes, buffers.back.data(),
                            &buffers.back_bytes);
  }
};

TEST_F(ScsiTest, sends_the_buffer_and_receives_data_and_sense) {
  driver.expect(call(512, ByteVector(512, kUntouched), 300, 18));
  start_log();
  Buffers buffers(512);
  EXPECT_EQ(send(buffers), HBA_STATUS_OK);
  Buffers expected(512);
  expected.data_bytes = 300;
  std::fill_n(expected.data.begin(), 300, kRead);
  expected.back_bytes = 18;
  std::fill_n(expected.back.begin(), 18, kSense);
  EXPECT_EQ(buffers, expected);
  EXPECT_EQ(log(), test::call_line("SendScsiCmdByWWN", 826, "TREL_MGMT_HBA_SEND_SCSI") +
                       test::ok_line("SendScsiCmdByWWN", 830, "TREL_MGMT_HBA_SEND_SCSI"));
}

TEST_F(ScsiTest, caps_the_length_that_it_sends_and_every_copy) {
  for (const std::uint32_t room : {262143u, 262144u, 300000u}) {
    driver.expect(call(std::min(room, 262144u), ByteVector(std::min(room, 262144u), kUntouched), room, 0xFFFFFFFF));
    Buffers buffers(room);
    EXPECT_EQ(send(buffers), HBA_STATUS_OK);
    EXPECT_EQ(buffers.data_bytes, room);
    EXPECT_EQ(std::ranges::count(buffers.data, kRead), std::min(room, 262144u));
    EXPECT_EQ(buffers.back_bytes, 0xFFFFFFFFu);
    EXPECT_EQ(std::ranges::count(buffers.back, kSense), 128);
  }
}

TEST_F(ScsiTest, tells_how_much_data_there_are_when_they_do_not_fit) {
  driver.expect(call(256, ByteVector(256, kUntouched), 512, 18));
  Buffers buffers(256);
  EXPECT_EQ(send(buffers), HBA_STATUS_ERROR_MORE_DATA);
  Buffers expected(256);
  expected.data_bytes = 512;
  EXPECT_EQ(buffers, expected);
}

TEST_F(ScsiTest, needs_no_data_buffer_for_no_data) {
  driver.expect(call(0, {}, 0, 0));
  std::uint32_t data_bytes = 0;
  std::uint32_t sense_bytes = 9;
  EXPECT_EQ(SendScsiCmd(kBoard, &kTarget, &block, 32, nullptr, &data_bytes, nullptr, &sense_bytes), HBA_STATUS_OK);
  EXPECT_EQ(sense_bytes, 0u);
}

TEST_F(ScsiTest, collapses_every_failure_and_touches_nothing) {
  start_log(kLogError);
  for (const auto& [platform_status, driver_status] : {std::pair{9u, 0u}, {0u, 0x0BAD005Du}}) {
    auto failure = call(256, ByteVector(256, kUntouched), 512, 18);
    failure.platform_status = platform_status;
    failure.driver_status = driver_status;
    driver.expect(failure);
    Buffers buffers(256);
    EXPECT_EQ(send(buffers), HBA_STATUS_ERROR);
    EXPECT_EQ(buffers, Buffers(256));
  }
  test::c_library.refused_bytes = 262144;
  Buffers buffers(256);
  EXPECT_EQ(send(buffers), HBA_STATUS_ERROR);
  EXPECT_EQ(buffers, Buffers(256));
  EXPECT_EQ(log(), test::error_line("SendScsiCmdByWWN", 830, "TREL_MGMT_HBA_SEND_SCSI", "x9:x0") +
                       test::error_line("SendScsiCmdByWWN", 830, "TREL_MGMT_HBA_SEND_SCSI", "x0:xbad005d"));
}

// --- FCP

class FcpTest : public PassThroughTest {
 protected:
  // The response is the request's bytes from 40 on, its own length among them.
  test::ExpectedCall call(std::uint32_t arg2, std::uint32_t extra, std::uint32_t produced, std::uint32_t response_bytes) {
    const FcpPassThruRequest sent{.target = kTarget, .command = block, .response_bytes = 17};
    FcpPassThruRequest answer = sent;
    std::ranges::fill(answer.response, kSense);
    std::ranges::fill(answer.response_60, kSense);
    answer.response_bytes = response_bytes;
    return {.callback = Callback::kHbaSendFcp,
            .sent = {.brdno = kDriverBoard, .arg2 = arg2, .arg7 = extra},
            .sent_payload = {bytes_of(sent), ByteVector(arg2, kUntouched)},
            .arg3 = produced,
            .payload = {bytes_of(answer), ByteVector(262144, kRead)}};
  }
  std::uint32_t send(Buffers& buffers, std::uint32_t extra = 0) {
    return SendFcpCmdByWWN(kBoard, &kLocal, &kTarget, &block, 99, buffers.data.data(), &buffers.data_bytes, buffers.back.data(),
                           &buffers.back_bytes, extra);
  }
};

TEST_F(FcpTest, sends_the_buffer_and_receives_data_and_response) {
  driver.expect(call(512, 0x77, 300, 24));
  start_log();
  Buffers buffers(512);
  EXPECT_EQ(send(buffers, 0x77), HBA_STATUS_OK);
  Buffers expected(512);
  expected.data_bytes = 300;
  std::fill_n(expected.data.begin(), 300, kRead);
  expected.back_bytes = 24;
  std::fill_n(expected.back.begin(), 24, kSense);
  std::ranges::copy(bytes_of(std::uint32_t{24}), expected.back.begin() + 16);
  EXPECT_EQ(buffers, expected);
  EXPECT_EQ(log(), test::call_line("SendFcpCmdByWWN", 912, "TREL_MGMT_HBA_SEND_FCP") +
                       test::ok_line("SendFcpCmdByWWN", 916, "TREL_MGMT_HBA_SEND_FCP"));
}

TEST_F(FcpTest, caps_the_length_that_it_sends_and_every_copy) {
  driver.expect(call(262144, 0, 300000, 0xFFFFFFFF));
  Buffers buffers(300000);
  EXPECT_EQ(send(buffers), HBA_STATUS_OK);
  EXPECT_EQ(buffers.data_bytes, 300000u);
  EXPECT_EQ(std::ranges::count(buffers.data, kRead), 262144);
  EXPECT_EQ(buffers.back_bytes, 0xFFFFFFFFu);
  EXPECT_EQ(std::ranges::count(buffers.back, kUntouched), 300 - 160);
}

TEST_F(FcpTest, tells_both_lengths_when_the_data_do_not_fit) {
  driver.expect(call(256, 0, 512, 24));
  Buffers buffers(256);
  EXPECT_EQ(send(buffers), HBA_STATUS_ERROR_MORE_DATA);
  Buffers expected(256);
  expected.data_bytes = 512;
  expected.back_bytes = 24;
  EXPECT_EQ(buffers, expected);
}

TEST_F(FcpTest, knows_one_driver_status_also_when_the_platform_failed) {
  const std::tuple<std::uint32_t, std::uint32_t, std::uint32_t> kFailures[] = {
      {0, 0x0BAD005D, 7}, {9, 0x0BAD005D, 7}, {0, 0xBAD0020, 1}, {9, 0, 1}};
  for (const auto& [platform_status, driver_status, result] : kFailures) {
    auto failure = call(256, 0, 512, 24);
    failure.platform_status = platform_status;
    failure.driver_status = driver_status;
    driver.expect(failure);
    Buffers buffers(256);
    EXPECT_EQ(send(buffers), result);
    EXPECT_EQ(buffers, Buffers(256));
  }
  test::c_library.refused_bytes = 262144;
  Buffers buffers(256);
  EXPECT_EQ(send(buffers), HBA_STATUS_ERROR);
}

TEST_F(FcpTest, has_three_shorter_forms) {
  const auto expect_form = [&](std::uint32_t extra, auto send_form) {
    driver.expect(call(256, extra, 8, 4));
    Buffers buffers(256);
    EXPECT_EQ(send_form(buffers), HBA_STATUS_OK);
    EXPECT_EQ(buffers.data_bytes, 8u);
    EXPECT_EQ(buffers.back_bytes, 4u);
  };
  expect_form(0, [&](Buffers& b) {
    return DFC_SendFcpCmd(kBoard, &kTarget, &block, 32, b.data.data(), &b.data_bytes, b.back.data(), &b.back_bytes);
  });
  expect_form(0, [&](Buffers& b) {
    return SendFcpCmd(kBoard, &kTarget, &block, 32, b.data.data(), &b.data_bytes, b.back.data(), &b.back_bytes);
  });
  expect_form(5, [&](Buffers& b) {
    return SendFcpCmdEx(kBoard, &kTarget, &block, 32, b.data.data(), &b.data_bytes, b.back.data(), &b.back_bytes, 5);
  });
}

}  // namespace
}  // namespace vaskdfc
