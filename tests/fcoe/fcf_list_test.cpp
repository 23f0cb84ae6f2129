#include <cstring>
#include <numeric>
#include <optional>

#include "support/adapter_test.h"
#include "vaskdfc/fcoe.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr const char* kFunction = "DFC_FCoEGetFCFList";
constexpr const char* kCallback = "TREL_MGMT_HBA_GET_FCF_LIST";

// A reply whose bytes are all different from their neighbours.
FcfReply numbered_reply() {
  std::array<std::uint8_t, sizeof(FcfReply)> bytes;
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  return std::bit_cast<FcfReply>(bytes);
}

FcfReply reply(std::uint8_t name, std::uint8_t is_valid = 1) {
  FcfReply result{.is_valid = is_valid};
  std::ranges::fill(result.name_20.wwn, name);
  return result;
}

class FcfListTest : public test::AdapterTest {
 protected:
  // A list with room for that many entries, in memory of exactly its size.
  dfc_fcf_list& list(std::uint16_t room) {
    memory_.assign(8 + sizeof(fcf_entry) * room, 0xEE);
    auto& result = *reinterpret_cast<dfc_fcf_list*>(memory_.data());
    result.numEntries = room;
    result.listStatus = 100;
    return result;
  }
  ByteVector entry_bytes(std::size_t position) const {
    const auto start = memory_.begin() + static_cast<std::ptrdiff_t>(8 + sizeof(fcf_entry) * position);
    return {start, start + sizeof(fcf_entry)};
  }

  // Requests in order. What the driver leaves in the header travels with the next one.
  void expect_request(const FcfReply& answer, std::uint32_t next, std::optional<std::uint32_t> list_status = {}) {
    driver.expect({.callback = Callback::kHbaGetFcfList,
                   .sent = {.brdno = kDriverBoard, .arg1 = arg1_, .arg4 = arg4_, .arg5 = arg5_},
                   .arg4 = next,
                   .arg5 = list_status,
                   .payload = {bytes_of(answer)}});
    arg1_ = arg4_ = next;
    arg5_ = list_status.value_or(arg5_);
  }
  void expect_failure(std::uint32_t platform_status, std::uint32_t driver_status) {
    driver.expect({.callback = Callback::kHbaGetFcfList,
                   .sent = {.brdno = kDriverBoard, .arg1 = arg1_, .arg4 = arg4_, .arg5 = arg5_},
                   .platform_status = platform_status,
                   .driver_status = driver_status});
  }
  void start_walk(std::uint32_t sli_mode = 4) {
    expect_driver_info(sli_mode);
    arg1_ = 0xFFFF;
    arg4_ = arg5_ = 0;
  }

 private:
  ByteVector memory_;
  std::uint32_t arg1_ = 0;
  std::uint32_t arg4_ = 0;
  std::uint32_t arg5_ = 0;
};

TEST_F(FcfListTest, converts_a_reply_byte_for_byte) {
  start_walk();
  expect_request(numbered_reply(), 0xFFFF, 7);
  start_log();
  dfc_fcf_list& fcfs = list(1);
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_OK);

  const ByteVector from = bytes_of(numbered_reply());
  ByteVector expected(552, 0);
  const auto copy = [&](std::ptrdiff_t source, std::ptrdiff_t bytes, std::ptrdiff_t target) {
    std::copy_n(from.begin() + source, bytes, expected.begin() + target);
  };
  copy(20, 8, 0);
  copy(548, 8, 8);
  copy(12, 6, 16);
  copy(36, 512, 24);
  copy(28, 3, 536);
  copy(4, 4, 540);
  copy(8, 4, 548);
  EXPECT_EQ(entry_bytes(0), expected);
  EXPECT_EQ(fcfs.numEntries, 1);
  EXPECT_EQ(fcfs.listStatus, 7);
  EXPECT_EQ(fcfs.caller_0[0], 0xEE);
  EXPECT_EQ(log(), driver_info_lines() + test::call_line(kFunction, 148, kCallback) + test::ok_line(kFunction, 152, kCallback));
}

TEST_F(FcfListTest, only_1_sets_the_flag) {
  for (const auto& [byte, flag] : {std::pair<std::uint8_t, std::uint16_t>{0, 0}, {1, 1}, {2, 0}, {0xFF, 0}}) {
    FcfReply answer = reply(1);
    answer.byte_18 = byte;
    start_walk();
    expect_request(answer, 0xFFFF);
    dfc_fcf_list& fcfs = list(1);
    EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_OK);
    EXPECT_EQ(fcfs.entries[0].flag_22, flag);
  }
}

TEST_F(FcfListTest, walks_from_index_to_index_and_skips_replies_without_an_fcf) {
  start_walk();
  expect_request(reply(1), 4);
  expect_request(reply(2, 0), 9, 50);
  expect_request(reply(3, 0x80), 0xFFFF);
  dfc_fcf_list& fcfs = list(5);
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_OK);
  EXPECT_EQ(fcfs.numEntries, 2);
  EXPECT_EQ(fcfs.listStatus, 50);
  EXPECT_EQ(fcfs.entries[0].name_0.wwn[0], 1);
  EXPECT_EQ(entry_bytes(1)[0], 3);
  EXPECT_EQ(entry_bytes(2), ByteVector(552, 0xEE));
}

TEST_F(FcfListTest, counts_fcfs_beyond_the_room) {
  start_walk();
  expect_request(reply(1), 1);
  expect_request(reply(2), 2);
  expect_request(reply(3), 0xFFFF);
  dfc_fcf_list& fcfs = list(2);
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_TOO_SMALL);
  EXPECT_EQ(fcfs.numEntries, 3);
  EXPECT_EQ(entry_bytes(1)[0], 2);
}

TEST_F(FcfListTest, ends_with_a_blank_reply) {
  start_walk();
  expect_request(FcfReply{}, 5, 3);
  dfc_fcf_list& fcfs = list(2);
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_OK);
  EXPECT_EQ(fcfs.numEntries, 0);
  EXPECT_EQ(fcfs.listStatus, 3);
  EXPECT_EQ(entry_bytes(0), ByteVector(552, 0xEE));
}

TEST_F(FcfListTest, a_failure_ends_the_walk_silently) {
  start_log(kLogError);
  for (const auto& [platform_status, driver_status] : {std::pair{7u, 0u}, {0u, 0xBAD0020u}}) {
    start_walk();
    expect_request(reply(1), 1);
    expect_request(reply(2), 2, 5);
    expect_failure(platform_status, driver_status);
    dfc_fcf_list& fcfs = list(1);
    EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_TOO_SMALL);
    EXPECT_EQ(fcfs.numEntries, 2);
    EXPECT_EQ(fcfs.listStatus, 5);
  }
  start_walk();
  expect_failure(0, 0xBAD0020);
  dfc_fcf_list& fcfs = list(1);
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_OK);
  EXPECT_EQ(fcfs.numEntries, 0);
  EXPECT_EQ(fcfs.listStatus, 100);  // nothing cleared it
  EXPECT_EQ(log(), test::error_line(kFunction, 152, kCallback, "x7:x0") +
                       test::error_line(kFunction, 152, kCallback, "x0:xbad0020") +
                       test::error_line(kFunction, 152, kCallback, "x0:xbad0020"));
}

TEST_F(FcfListTest, ends_after_65536_requests_to_a_driver_whose_indices_run_in_a_circle) {
  start_walk();
  for (int i = 0; i < 65536; ++i) expect_request(reply(1), i % 2 == 0 ? 8u : 9u);
  dfc_fcf_list& fcfs = list(1);
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_TOO_SMALL);
  EXPECT_EQ(fcfs.numEntries, 65535);  // as many as the field can say
}

TEST_F(FcfListTest, does_not_log_an_older_sli_mode_without_the_class_of_errors) {
  start_log(kLogHandle);
  expect_driver_info(3);
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &list(1)), DFC_UNSUPPORTED);
  EXPECT_EQ(log(), "");
}

TEST_F(FcfListTest, is_for_sli_mode_4_and_above) {
  start_log(kLogError);
  dfc_fcf_list& fcfs = list(1);
  expect_driver_info(3);
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_UNSUPPORTED);
  EXPECT_EQ(log(), test::log_line(kFunction, 126, "ERROR: sliMode 3 not supported"));
  expect_no_driver_info();
  EXPECT_EQ(DFC_FCoEGetFCFList(kBoard, &fcfs), DFC_FAILED);
  EXPECT_EQ(fcfs.numEntries, 1);
  EXPECT_EQ(fcfs.listStatus, 100);
}

}  // namespace
}  // namespace vaskdfc
