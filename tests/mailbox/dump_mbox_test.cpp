#include <cstring>
#include <numeric>

#include "support/adapter_test.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr const char* kFunction = "DFC_IssueDumpMBox";
constexpr const char* kCallback = "TREL_MGMT_HBA_ISSUE_DMP_MBX";
constexpr std::uint8_t kUntouched = 0xEE;

ByteVector numbered(std::size_t bytes) {
  ByteVector data(bytes);
  std::iota(data.begin(), data.end(), std::uint8_t{0});
  return data;
}

class DumpMboxTest : public test::AdapterTest {
 protected:
  // A dump of region 23 of which the driver returns `returned` bytes.
  test::ExpectedCall call(std::uint32_t data_offset, std::uint32_t returned, std::uint32_t completion = 0) {
    return {.callback = Callback::kHbaIssueDmpMbx,
            .sent = {.brdno = kDriverBoard, .arg1 = data_offset, .arg2 = 1024},
            .sent_payload = {bytes_of(DumpRequest{.type = 2, .region = 23, .region_offset = 6})},
            .arg3 = returned,
            .payload = {{}, numbered(4096), bytes_of(CompletionWord{completion})}};
  }
  std::uint32_t dump(std::uint32_t data_offset = 0) {
    return DFC_IssueDumpMBox(kBoard, DFC_DUMP_TYPE_REGION, 6, 23, data_offset, buffer.data(), &length);
  }
  // That many bytes were delivered, and no further one was touched.
  void expect_delivered(std::uint32_t bytes, std::uint32_t data_offset = 0) {
    EXPECT_EQ(length, bytes);
    ByteVector expected(buffer.size(), kUntouched);
    std::copy_n(numbered(4096).data() + data_offset, bytes, expected.begin());
    EXPECT_EQ(buffer, expected);
  }

  ByteVector buffer = ByteVector(5000, kUntouched);
  std::uint32_t length = 1024;
};

TEST_F(DumpMboxTest, delivers_what_the_driver_returned) {
  expect_driver_info(4);
  driver.expect(call(0, 1024));
  start_log();
  EXPECT_EQ(dump(), DFC_OK);
  expect_delivered(1024);
  EXPECT_EQ(log(), driver_info_lines() + test::call_line(kFunction, 3469, kCallback) + test::ok_line(kFunction, 3472, kCallback));
}

struct Delivery {
  std::uint32_t capacity;
  std::uint32_t data_offset;
  std::uint32_t returned;
  std::uint32_t delivered;
};

TEST_F(DumpMboxTest, delivers_from_the_data_offset_as_far_as_there_is_data_and_room) {
  const Delivery kDeliveries[] = {{1024, 1000, 1024, 24}, {1024, 1024, 1024, 0}, {1024, 0, 1020, 1020},
                                  {100, 0, 1024, 100},    {1, 1023, 1024, 1},    {5000, 0, 0xFFFFFFFF, 4096},
                                  {5000, 4095, 5000, 1},  {5000, 4096, 5000, 0}, {5000, 0xFFFFFFFF, 0xFFFFFFFF, 0}};
  for (const Delivery& each : kDeliveries) {
    SCOPED_TRACE(testing::Message() << each.capacity << " " << each.data_offset << " " << each.returned);
    std::ranges::fill(buffer, kUntouched);
    length = each.capacity;
    expect_driver_info(4);
    driver.expect(call(each.data_offset, each.returned));
    EXPECT_EQ(dump(each.data_offset), DFC_OK);
    expect_delivered(each.delivered, each.delivered == 0 ? 0 : each.data_offset);
  }
}

TEST_F(DumpMboxTest, delivers_data_of_a_failed_call_too) {
  start_log(kLogError);
  for (const auto& [platform_status, driver_status] : {std::pair{7u, 0u}, {0u, 0xBAD0020u}}) {
    expect_driver_info(4);
    auto expected = call(0, 8);
    expected.platform_status = platform_status;
    expected.driver_status = driver_status;
    driver.expect(expected);
    length = 1024;
    EXPECT_EQ(dump(), DFC_FAILED);
    expect_delivered(8);
  }
  EXPECT_EQ(log(),
            test::error_line(kFunction, 3472, kCallback, "x7:x0") + test::error_line(kFunction, 3472, kCallback, "x0:xbad0020"));
}

struct Completion {
  std::uint32_t word;
  std::uint32_t platform_status;
  std::uint32_t result;
};

TEST_F(DumpMboxTest, turns_completion_words_into_results_and_delivers_nothing) {
  const Completion kCompletions[] = {{0xFFFD, 0, 4},     {0xFFF7, 0, 5}, {0xFFF6, 0, 6}, {0xFFFD, 9, 4},
                                     {0xFFFFFFFD, 0, 0}, {1, 0, 0},      {1, 9, 9}};
  for (const Completion& each : kCompletions) {
    SCOPED_TRACE(each.word);
    expect_driver_info(4);
    auto expected = call(0, 1024, each.word);
    expected.platform_status = each.platform_status;
    driver.expect(expected);
    length = 1024;
    EXPECT_EQ(dump(), each.result);
    expect_delivered(0);
  }
}

struct Refusal {
  std::uint32_t sli_mode;  // 0: not known
  std::uint32_t type;
  std::uint32_t capacity;
  bool has_buffer;
  std::uint32_t region;
  std::uint32_t result;
};

TEST_F(DumpMboxTest, checks_its_arguments_in_order_and_sends_nothing) {
  const Refusal kRefusals[] = {{0, 9, 0, false, 31, 1},  {3, 9, 0, false, 31, 2}, {4, 0, 0, false, 31, 2},
                               {4, 5, 0, false, 31, 2},  {4, 1, 0, false, 31, 7}, {4, 4, 1024, false, 31, 4},
                               {4, 2, 1024, true, 31, 3}};
  for (const Refusal& each : kRefusals) {
    SCOPED_TRACE(each.result);
    if (each.sli_mode == 0) {
      expect_no_driver_info();
    } else {
      expect_driver_info(each.sli_mode);
    }
    length = each.capacity;
    EXPECT_EQ(DFC_IssueDumpMBox(kBoard, each.type, 0, each.region, 0, each.has_buffer ? buffer.data() : nullptr, &length),
              each.result);
    EXPECT_EQ(length, each.capacity);
  }
  EXPECT_EQ(buffer, ByteVector(5000, kUntouched));
}

TEST_F(DumpMboxTest, accepts_the_largest_region) {
  expect_driver_info(4);
  driver.expect({.callback = Callback::kHbaIssueDmpMbx,
                 .sent = {.brdno = kDriverBoard, .arg2 = 4096},
                 .sent_payload = {bytes_of(DumpRequest{.type = 1, .region = 160})},
                 .arg3 = 4096,
                 .payload = {{}, numbered(4096)}});
  length = 5000;
  EXPECT_EQ(DFC_IssueDumpMBox(kBoard, 1, 0, 160, 0, buffer.data(), &length), DFC_OK);
  expect_delivered(4096);
}

TEST_F(DumpMboxTest, fails_without_memory) {
  test::c_library.refused_bytes = sizeof(RegionData);
  expect_driver_info(4);
  EXPECT_EQ(dump(), DFC_FAILED);
}

// --- LEG_IssueDumpMBox

class LegacyDumpTest : public test::AdapterTest {
 protected:
  // One piece: asked for at `offset`, answered with a count of bytes, 512 bytes of data and a mailbox status.
  void expect_piece(std::uint32_t region, std::uint32_t offset, std::uint32_t delivered, std::uint8_t data,
                    std::uint32_t status = 0, std::uint32_t driver_status = 0) {
    const Mailbox sent{{0x00001700, 0x32, region | offset << 16, 0, 128}};
    Mailbox reply = sent;
    reply.words[0] |= status << 16;
    reply.words[4] = delivered;
    MailboxExtension asked{.flag = 5};
    asked.wanted_bytes = 512;
    MailboxExtension answered = asked;
    std::fill_n(answered.data, 512, data);
    driver.expect({.callback = Callback::kMbox,
                   .sent = {.brdno = kDriverBoard, .arg2 = 128, .arg3 = 256},
                   .sent_payload = {{}, bytes_of(sent), bytes_of(asked)},
                   .driver_status = driver_status,
                   .payload = {{}, bytes_of(reply), bytes_of(answered)}});
  }
  std::uint32_t dump(std::uint32_t region) { return LEG_IssueDumpMBox(kBoard, buffer.data(), &length, region); }
  // The buffer starts with runs of bytes; nothing behind them was touched.
  void expect_runs(std::initializer_list<std::pair<std::size_t, std::uint8_t>> runs) {
    ByteVector expected;
    for (const auto& [bytes, value] : runs) expected.insert(expected.end(), bytes, value);
    expected.resize(buffer.size(), kUntouched);
    EXPECT_EQ(buffer, expected);
    EXPECT_EQ(length, 0xABCDu);
  }

  ByteVector buffer = ByteVector(5000, kUntouched);
  std::uint32_t length = 0xABCD;
};

TEST_F(LegacyDumpTest, gathers_a_region_in_pieces) {
  expect_piece(22, 0, 128, 1);
  expect_piece(22, 128, 128, 2);
  expect_piece(22, 256, 128, 3);
  expect_piece(22, 384, 128, 4);
  EXPECT_EQ(dump(22), DFC_OK);
  expect_runs({{128, 1}, {128, 2}, {128, 3}, {128, 4}});
}

TEST_F(LegacyDumpTest, ends_early_with_a_piece_of_nothing) {
  expect_piece(22, 0, 128, 1);
  expect_piece(22, 128, 0, 2);
  EXPECT_EQ(dump(22), DFC_OK);
  expect_runs({{128, 1}});
}

TEST_F(LegacyDumpTest, ends_at_the_regions_size_when_pieces_overshoot_it) {
  expect_piece(22, 0, 500, 1);
  expect_piece(22, 500, 0xFFFFFFFF, 2);
  EXPECT_EQ(dump(22), DFC_OK);
  expect_runs({{500, 1}, {12, 2}});
}

TEST_F(LegacyDumpTest, delivers_zeros_where_the_adapter_claims_more_than_a_piece_holds) {
  expect_piece(23, 0, 1024, 1);
  EXPECT_EQ(dump(23), DFC_OK);
  expect_runs({{512, 1}, {512, 0}});
}

TEST_F(LegacyDumpTest, stays_within_its_gathering_area_for_larger_regions) {
  for (std::uint32_t offset = 0; offset < 2048; offset += 512) expect_piece(160, offset, 512, 7);
  EXPECT_EQ(dump(160), DFC_OK);
  expect_runs({{2048, 7}});
}

TEST_F(LegacyDumpTest, delivers_nothing_of_a_region_that_does_not_exist) {
  expect_piece(24, 0, 128, 1);
  EXPECT_EQ(dump(24), DFC_OK);
  expect_runs({});
}

TEST_F(LegacyDumpTest, turns_mailbox_statuses_into_results_and_delivers_nothing) {
  const std::pair<std::uint32_t, std::uint32_t> kStatuses[] = {{0xFFFD, 4}, {0xFFF7, 5}, {0xFFF6, 6}, {0xFFFE, 0xFFFE}, {1, 1}};
  for (const auto& [status, result] : kStatuses) {
    expect_piece(22, 0, 128, 1);
    expect_piece(22, 128, 128, 2, status);
    EXPECT_EQ(dump(22), result);
    expect_runs({});
  }
}

TEST_F(LegacyDumpTest, returns_the_librarys_own_statuses_of_failed_calls) {
  const std::pair<std::uint32_t, std::uint32_t> kStatuses[] = {{0xBAD005A, 252}, {0xBAD0039, 253}, {0xBAD0004, 254}};
  for (const auto& [driver_status, result] : kStatuses) {
    expect_piece(22, 0, 128, 1, 0, driver_status);
    EXPECT_EQ(dump(22), result);
  }
  EXPECT_EQ(test::c_library.sleeps, std::vector<std::string>{"usleep 100000"});
  expect_runs({});
}

TEST_F(LegacyDumpTest, returns_the_result_of_sending_where_the_status_is_0) {
  test::c_library.refused_bytes = sizeof(MailboxData);
  EXPECT_EQ(dump(22), DFC_NO_MEMORY);
  expect_runs({});
}

}  // namespace
}  // namespace vaskdfc
