#include "vaskdfc/events.h"

#include <cstring>
#include <numeric>

#include "support/adapter_test.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr HbaWwn kWwn{{0x10, 1, 2, 3, 4, 5, 6, 7}};

ByteVector filled(std::size_t bytes, std::uint8_t value) { return ByteVector(bytes, value); }

// --- GetEventBuffer

class EventsTest : public test::AdapterTest {
 protected:
  EventsTest() { EventMissedCount = 5; }

  test::ExpectedCall call(std::uint32_t room, std::uint32_t received, std::uint32_t missed) {
    return {.callback = Callback::kHbaGetEvent,
            .sent = {.brdno = kDriverBoard, .arg2 = room},
            .arg3 = received,
            .arg4 = missed,
            .payload = {filled(640, 0xE5)}};
  }
  // Takes events into memory for that many; as many were received, and nothing behind them was touched.
  std::uint32_t take(std::uint32_t room, std::size_t received) {
    ByteVector memory(20 * room, 0xEE);
    count = room;
    const std::uint32_t result = GetEventBuffer(kBoard, reinterpret_cast<HbaEvent*>(memory.data()), &count);
    ByteVector expected(20 * room, 0xEE);
    std::fill_n(expected.begin(), 20 * received, std::uint8_t{0xE5});
    EXPECT_EQ(memory, expected);
    return result;
  }
  std::uint32_t count = 0;
};

TEST_F(EventsTest, go_through_a_temporary_where_the_room_is_below_32) {
  driver.expect(call(31, 2, 7));
  start_log();
  EXPECT_EQ(take(31, 2), HBA_STATUS_OK);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(EventMissedCount, 7u);
  EXPECT_EQ(log(), test::call_line("GetEventBuffer", 586, "TREL_MGMT_HBA_GETEVENT") +
                       test::ok_line("GetEventBuffer", 590, "TREL_MGMT_HBA_GETEVENT"));
}

TEST_F(EventsTest, go_straight_to_a_caller_with_room_for_32) {
  for (const std::uint32_t room : {32u, 33u}) {
    driver.expect(call(room, 2, 0));
    EXPECT_EQ(take(room, 32), HBA_STATUS_OK);  // the driver wrote 32
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(EventMissedCount, 0u);
  }
}

TEST_F(EventsTest, are_asked_for_even_without_any_room) {
  driver.expect(call(0, 0, 9));
  EXPECT_EQ(take(0, 0), HBA_STATUS_OK);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(EventMissedCount, 9u);
}

TEST_F(EventsTest, are_counted_as_the_driver_says_and_copied_as_far_as_they_can_be) {
  driver.expect(call(31, 1000, 0));
  ByteVector memory(640, 0xEE);
  count = 31;
  EXPECT_EQ(GetEventBuffer(kBoard, reinterpret_cast<HbaEvent*>(memory.data()), &count), HBA_STATUS_OK);
  EXPECT_EQ(count, 1000u);
  EXPECT_EQ(memory, filled(640, 0xE5));
}

TEST_F(EventsTest, and_their_counts_stay_as_they_were_when_the_call_fails) {
  for (const auto& [platform_status, driver_status] : {std::pair{9u, 0u}, {0u, 0xBAD0020u}}) {
    auto failure = call(3, 2, 7);
    failure.platform_status = platform_status;
    failure.driver_status = driver_status;
    driver.expect(failure);
    EXPECT_EQ(take(3, 0), HBA_STATUS_ERROR);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(EventMissedCount, 5u);
  }
}

TEST_F(EventsTest, need_memory_for_the_temporary_only) {
  test::c_library.refused_bytes = 640;
  EXPECT_EQ(take(31, 0), DFC_NO_MEMORY);
  driver.expect(call(32, 0, 0));
  EXPECT_EQ(take(32, 32), HBA_STATUS_OK);
}

// --- SendRNID

class RnidTest : public test::AdapterTest {
 protected:
  test::ExpectedCall call(std::uint32_t type, const ByteVector& key, std::uint32_t reply_bytes) {
    return {.callback = Callback::kHbaRnid,
            .sent = {.brdno = kDriverBoard, .arg2 = 64, .arg5 = type},
            .sent_payload = {key},
            .arg3 = reply_bytes,
            .payload = {{}, filled(64, 0xA5)}};
  }
  static ByteVector key(std::size_t offset) {
    ByteVector bytes(28, 0);
    if (offset != 0) std::ranges::copy(kWwn.wwn, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return bytes;
  }
  // Sends with that much room; that many bytes were received.
  std::uint32_t send(std::uint32_t type, std::uint32_t room, std::size_t received) {
    ByteVector reply(room, 0xEE);
    size = room;
    const std::uint32_t result = SendRNID(kBoard, &kWwn, type, reply.data(), &size);
    ByteVector expected(room, 0xEE);
    std::fill_n(expected.begin(), received, std::uint8_t{0xA5});
    EXPECT_EQ(reply, expected);
    return result;
  }
  std::uint32_t size = 0;
};

TEST_F(RnidTest, names_a_node_or_a_port_in_different_places_and_nothing_else_at_all) {
  start_log();
  driver.expect(call(0, key(16), 40));
  EXPECT_EQ(send(0, 63, 40), HBA_STATUS_OK);
  EXPECT_EQ(size, 40u);
  driver.expect(call(1, key(8), 40));
  EXPECT_EQ(send(1, 40, 40), HBA_STATUS_OK);
  driver.expect(call(2, key(0), 0));
  EXPECT_EQ(send(2, 40, 0), HBA_STATUS_OK);
  EXPECT_EQ(size, 0u);
  const std::string lines =
      test::call_line("SendRNID", 652, "TREL_MGMT_HBA_RNID") + test::ok_line("SendRNID", 656, "TREL_MGMT_HBA_RNID");
  EXPECT_EQ(log(), lines + lines + lines);
}

TEST_F(RnidTest, writes_straight_to_a_caller_with_64_bytes) {
  driver.expect(call(1, key(8), 40));
  EXPECT_EQ(send(1, 64, 64), HBA_STATUS_OK);  // the driver wrote 64
  EXPECT_EQ(size, 40u);
}

TEST_F(RnidTest, tells_the_length_of_a_reply_that_does_not_fit_and_copies_nothing) {
  driver.expect(call(1, key(8), 40));
  EXPECT_EQ(send(1, 16, 0), HBA_STATUS_ERROR_MORE_DATA);
  EXPECT_EQ(size, 40u);
  driver.expect(call(1, key(8), 0xFFFFFFFF));
  EXPECT_EQ(send(1, 63, 0), HBA_STATUS_ERROR_MORE_DATA);
  EXPECT_EQ(size, 0xFFFFFFFFu);
}

TEST_F(RnidTest, leaves_reply_and_size_alone_when_the_call_fails) {
  for (const auto& [platform_status, driver_status] : {std::pair{9u, 0u}, {0u, 0xBAD0020u}}) {
    auto failure = call(1, key(8), 40);
    failure.platform_status = platform_status;
    failure.driver_status = driver_status;
    driver.expect(failure);
    EXPECT_EQ(send(1, 48, 0), HBA_STATUS_ERROR);
    EXPECT_EQ(size, 48u);
  }
}

// --- RNID management information

class RnidInfoTest : public test::AdapterTest {
 protected:
  // Every byte different.
  static HbaMgmtInfo numbered() {
    std::array<std::uint8_t, sizeof(HbaMgmtInfo)> bytes;
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return std::bit_cast<HbaMgmtInfo>(bytes);
  }
  static ByteVector with_reserved(std::uint8_t value) {
    ByteVector bytes = bytes_of(numbered());
    bytes[40] = bytes[41] = value;
    return bytes;
  }
};

TEST_F(RnidInfoTest, is_received_but_for_the_reserved_bytes_and_logged_under_two_names) {
  driver.expect({.callback = Callback::kHbaGetMgmtInfo, .sent = {.brdno = kDriverBoard}, .payload = {bytes_of(numbered())}});
  start_log();
  HbaMgmtInfo info;
  std::memset(&info, 0xEE, sizeof(info));
  EXPECT_EQ(GetRNIDMgmtInfo(kBoard, &info), HBA_STATUS_OK);
  EXPECT_EQ(bytes_of(info), with_reserved(0xEE));
  EXPECT_EQ(log(), test::call_line("GetRNIDMgmtInfo", 708, "TREL_MGMT_HBA_GETMGMTINFO") +
                       test::ok_line("GetRNIDMgmtInfo", 712, "TREL_MGMT_HBA_SETMGMTINFO"));
}

TEST_F(RnidInfoTest, is_sent_with_reserved_bytes_of_0) {
  driver.expect({.callback = Callback::kHbaSetMgmtInfo, .sent = {.brdno = kDriverBoard}, .sent_payload = {with_reserved(0)}});
  start_log();
  const HbaMgmtInfo info = numbered();
  EXPECT_EQ(SetRNIDMgmtInfo(kBoard, &info), HBA_STATUS_OK);
  EXPECT_EQ(log(), test::call_line("SetRNIDMgmtInfo", 754, "TREL_MGMT_HBA_SETMGMTINFO") +
                       test::ok_line("SetRNIDMgmtInfo", 758, "TREL_MGMT_HBA_SETMGMTINFO"));
}

TEST_F(RnidInfoTest, collapses_every_failure) {
  start_log(kLogError);
  HbaMgmtInfo info = numbered();
  for (const auto& [platform_status, driver_status] : {std::pair{9u, 0u}, {0u, 0xBAD0020u}}) {
    driver.expect({.callback = Callback::kHbaGetMgmtInfo,
                   .sent = {.brdno = kDriverBoard},
                   .platform_status = platform_status,
                   .driver_status = driver_status});
    EXPECT_EQ(GetRNIDMgmtInfo(kBoard, &info), HBA_STATUS_ERROR);
    driver.expect({.callback = Callback::kHbaSetMgmtInfo,
                   .sent = {.brdno = kDriverBoard},
                   .sent_payload = {with_reserved(0)},
                   .platform_status = platform_status,
                   .driver_status = driver_status});
    EXPECT_EQ(SetRNIDMgmtInfo(kBoard, &info), HBA_STATUS_ERROR);
  }
  EXPECT_EQ(bytes_of(info), bytes_of(numbered()));
  EXPECT_TRUE(log().starts_with(test::error_line("GetRNIDMgmtInfo", 712, "TREL_MGMT_HBA_SETMGMTINFO", "x9:x0")));
}

}  // namespace
}  // namespace vaskdfc
