#include <cstring>
#include <functional>

#include "support/adapter_test.h"
#include "vaskdfc/result.h"
#include "vaskdfc/scsi.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr HbaWwn kLocal{{0x10, 9, 9, 9, 9, 9, 9, 9}};
constexpr HbaWwn kTarget{{0x50, 1, 2, 3, 4, 5, 6, 7}};
constexpr std::uint64_t kLun = 0x8877665544332211;

// The 32 bytes of a command: LUN, direction, CDB, data length, as they travel.
ByteVector block(const ByteVector& lun, std::uint8_t direction, const ByteVector& cdb, const ByteVector& data_length) {
  ByteVector bytes(32, 0);
  std::ranges::copy(lun, bytes.begin());
  bytes[11] = direction;
  std::ranges::copy(cdb, bytes.begin() + 12);
  std::ranges::copy(data_length, bytes.begin() + 28);
  return bytes;
}

const ByteVector kLunBytes{0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};
const ByteVector kLun0(8, 0);

class ScsiCommandsTest : public test::AdapterTest {
 protected:
  using Send = std::function<std::uint32_t(void*, std::uint32_t*, void*, std::uint32_t*)>;

  // Sends a command with room for that many bytes; the driver must see the block.
  void expect_block(std::uint32_t room, const ByteVector& expected, const Send& send) {
    ByteVector data(room, 0xEE);
    expect_block_for(data, expected, send);
  }
  void expect_block_for(ByteVector& data, const ByteVector& expected, const Send& send) {
    auto data_bytes = static_cast<std::uint32_t>(data.size());
    ByteVector request = bytes_of(ScsiPassThruRequest{.target = kTarget});
    std::ranges::copy(expected, request.begin() + 8);
    ByteVector answer = request;
    answer[168] = 2;
    driver.expect({.callback = Callback::kHbaSendScsi,
                   .sent = {.brdno = kDriverBoard, .arg2 = data_bytes},
                   .sent_payload = {request, data},
                   .arg3 = 4,
                   .payload = {answer, {1, 2, 3, 4}}});
    std::uint32_t sense_bytes = 0;
    ByteVector sense(8, 0xEE);
    EXPECT_EQ(send(data.data(), &data_bytes, sense.data(), &sense_bytes), HBA_STATUS_OK);
    EXPECT_EQ(data_bytes, 4u);
    EXPECT_EQ(data[3], 4);
    EXPECT_EQ(sense_bytes, 2u);
  }
};

TEST_F(ScsiCommandsTest, inquiry_carries_the_low_byte_of_the_length_in_its_cdb) {
  const ByteVector expected = block(kLunBytes, 2, {0x12, 1, 0x83, 0, 0x2C}, {0, 0, 0x01, 0x2C});
  expect_block(300, expected, [](auto... buffers) { return SendScsiInquiry(kBoard, &kTarget, kLun, 1, 0x83, buffers...); });
  expect_block(300, expected,
               [](auto... buffers) { return DFC_SendScsiInquiryByWWN(kBoard, &kLocal, &kTarget, kLun, 1, 0x83, buffers...); });
}

TEST_F(ScsiCommandsTest, inquiry_for_standard_data_has_no_page_and_passes_the_bit_as_given) {
  expect_block(36, block(kLunBytes, 2, {0x12, 0, 0, 0, 36}, {0, 0, 0, 36}),
               [](auto... buffers) { return SendScsiInquiry(kBoard, &kTarget, kLun, 0, 0x83, buffers...); });
  expect_block(36, block(kLunBytes, 2, {0x12, 3, 0x80, 0, 36}, {0, 0, 0, 36}),
               [](auto... buffers) { return SendScsiInquiry(kBoard, &kTarget, kLun, 3, 0x80, buffers...); });
}

TEST_F(ScsiCommandsTest, read_capacity_has_no_length_in_its_cdb) {
  expect_block(8, block(kLunBytes, 2, {0x25}, {0, 0, 0, 8}),
               [](auto... buffers) { return SendReadCapacity(kBoard, &kTarget, kLun, buffers...); });
}

TEST_F(ScsiCommandsTest, read_capacity_by_wwn_completes_its_lun_with_the_address_of_the_response) {
  ByteVector response(8, 0xEE);
  ByteVector lun{0x44, 0x33, 0x22, 0x11};
  const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(response.data()));
  for (int shift = 0; shift < 32; shift += 8) lun.push_back(static_cast<std::uint8_t>(address >> shift));
  expect_block_for(response, block(lun, 2, {0x25}, {0, 0, 0, 8}),
                   [](auto... buffers) { return DFC_SendReadCapacityByWWN(kBoard, &kLocal, &kTarget, 0x11223344, buffers...); });
}

TEST_F(ScsiCommandsTest, report_luns_is_for_lun_0_and_carries_the_length_twice) {
  const ByteVector expected = block(kLun0, 2, {0xA0, 0, 0, 0, 0, 0, 0x00, 0x01, 0x02, 0x08}, {0x00, 0x01, 0x02, 0x08});
  expect_block(0x10208, expected, [](auto... buffers) { return SendReportLUNs(kBoard, &kTarget, buffers...); });
  expect_block(0x10208, expected, [](auto... buffers) { return DFC_SendReportLUNsByWWN(kBoard, &kLocal, &kTarget, buffers...); });
}

TEST_F(ScsiCommandsTest, read_and_write_count_blocks_of_512_bytes) {
  expect_block(4096, block(kLunBytes, 2, {0x28, 0, 1, 2, 3, 4, 0, 0, 8, 0}, {0, 0, 0x10, 0}),
               [](auto... buffers) { return SendScsiRead(kBoard, &kTarget, kLun, 0x01020304, buffers...); });
  expect_block(4096, block(kLunBytes, 1, {0x2A, 0, 1, 2, 3, 4, 0, 0, 8, 0}, {0, 0, 0x10, 0}),
               [](auto... buffers) { return SendScsiWrite(kBoard, &kTarget, kLun, 0x01020304, buffers...); });
}

TEST_F(ScsiCommandsTest, read_cuts_a_remainder_in_its_cdb_only) {
  expect_block(1023, block(kLunBytes, 2, {0x28, 0, 0, 0, 0, 0, 0, 0, 1, 0}, {0, 0, 0x03, 0xFF}),
               [](auto... buffers) { return SendScsiRead(kBoard, &kTarget, kLun, 0, buffers...); });
  expect_block(262144, block(kLunBytes, 2, {0x28, 0, 0, 0, 0, 0, 0, 0x02, 0, 0}, {0, 4, 0, 0}),
               [](auto... buffers) { return SendScsiRead(kBoard, &kTarget, kLun, 0, buffers...); });
}

}  // namespace
}  // namespace vaskdfc
