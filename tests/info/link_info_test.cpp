#include <array>
#include <cstring>

#include "support/adapter_test.h"
#include "vaskdfc/link.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{9, 0}, {0, 5}, {9, 0xBAD0084}};

// Bytes that differ from their neighbours, and across the 256 of a field.
ByteVector numbered(std::size_t bytes) {
  ByteVector result(bytes);
  for (std::size_t i = 0; i < bytes; ++i) result[i] = static_cast<std::uint8_t>(i % 251 + 1);
  return result;
}

template <typename T>
T untouched() {
  T record;
  std::memset(&record, 0xEE, sizeof(record));
  return record;
}

class LinkInfoTest : public test::AdapterTest {
 protected:
  static test::ExpectedCall failing(test::ExpectedCall call, std::uint32_t platform_status, std::uint32_t driver_status) {
    call.platform_status = platform_status;
    call.driver_status = driver_status;
    return call;
  }
  // What a function writes into the log whose call succeeds once and then fails in the ways of kFailures.
  static std::string lines(const char* function, int call, int result, const char* callback) {
    std::string text = test::call_line(function, call, callback) + test::ok_line(function, result, callback);
    for (const char* const statuses : {"x9:x0", "x0:x5", "x9:xbad0084"}) {
      text += test::call_line(function, call, callback) + test::error_line(function, result, callback, statuses);
    }
    return text;
  }
};

// --- DFC_GetLinkInfo and GetLinkInfo

TEST_F(LinkInfoTest, of_the_link_is_passed_on_byte_for_byte_under_both_names) {
  for (const auto operation : {DFC_GetLinkInfo, GetLinkInfo}) {
    driver.expect({.callback = Callback::kLinkInfo, .sent = {.brdno = kDriverBoard}, .payload = {numbered(168)}});
    auto info = untouched<dfc_link_info>();
    EXPECT_EQ(operation(kBoard, &info), DFC_OK);
    EXPECT_EQ(bytes_of(info), numbered(168));
  }
}

TEST_F(LinkInfoTest, of_the_link_is_logged_under_the_newer_name_and_lost_when_the_call_fails) {
  const test::ExpectedCall call{.callback = Callback::kLinkInfo, .sent = {.brdno = kDriverBoard}, .payload = {numbered(168)}};
  start_log();
  for (const auto operation : {DFC_GetLinkInfo, GetLinkInfo}) {
    const std::size_t logged = log().size();
    auto info = untouched<dfc_link_info>();
    driver.expect(call);
    EXPECT_EQ(operation(kBoard, &info), DFC_OK);
    info = untouched<dfc_link_info>();
    for (const auto& [platform_status, driver_status] : kFailures) {
      driver.expect(failing(call, platform_status, driver_status));
      EXPECT_EQ(operation(kBoard, &info), DFC_FAILED);
    }
    EXPECT_EQ(bytes_of(info), ByteVector(168, 0xEE));
    EXPECT_EQ(log().substr(logged), lines("DFC_GetLinkInfo", 388, 392, "TREL_MGMT_LINKINFO"));
  }
}

// --- GetNodeInfo

class NodeInfoTest : public LinkInfoTest {
 protected:
  test::ExpectedCall call(std::uint32_t returned) {
    return {.callback = Callback::kNodeInfo,
            .sent = {.brdno = kDriverBoard, .arg2 = 14336},
            .arg3 = returned,
            .payload = {numbered(14336)}};
  }
  static ByteVector first_bytes(std::size_t bytes) {
    ByteVector result = numbered(14336);
    std::fill(result.begin() + static_cast<std::ptrdiff_t>(bytes), result.end(), std::uint8_t{0});
    return result;
  }
  dfc_node_table nodes = untouched<dfc_node_table>();
};

TEST_F(NodeInfoTest, is_counted_by_the_bytes_that_the_driver_returns) {
  constexpr std::pair<std::uint32_t, std::uint32_t> kCounts[] = {{0, 0}, {27, 0}, {28, 1}, {55, 1}, {56, 2}, {14336, 512}};
  for (const auto& [returned, count] : kCounts) {
    driver.expect(call(returned));
    EXPECT_EQ(GetNodeInfo(kBoard, &nodes), count);
    EXPECT_EQ(bytes_of(nodes), first_bytes(28 * count));
  }
}

TEST_F(NodeInfoTest, is_no_more_than_the_table_holds) {
  for (const std::uint32_t returned : {14337u, 14364u, 0xFFFFFFFFu}) {
    driver.expect(call(returned));
    EXPECT_EQ(GetNodeInfo(kBoard, &nodes), 512u);
    EXPECT_EQ(bytes_of(nodes), numbered(14336));
  }
}

TEST_F(NodeInfoTest, is_empty_when_the_call_fails) {
  start_log();
  driver.expect(call(56));
  EXPECT_EQ(GetNodeInfo(kBoard, &nodes), 2u);
  for (const auto& [platform_status, driver_status] : kFailures) {
    nodes = untouched<dfc_node_table>();
    driver.expect(failing(call(56), platform_status, driver_status));
    EXPECT_EQ(GetNodeInfo(kBoard, &nodes), 0u);
    EXPECT_EQ(bytes_of(nodes), first_bytes(0));
  }
  EXPECT_EQ(log(), lines("GetNodeInfo", 436, 440, "TREL_MGMT_NODEINFO"));
}

TEST_F(NodeInfoTest, is_empty_without_memory) {
  test::c_library.refused_bytes = 14336;
  EXPECT_EQ(GetNodeInfo(kBoard, &nodes), 0u);
  EXPECT_EQ(bytes_of(nodes), first_bytes(0));
}

// --- GetIOinfo

TEST_F(LinkInfoTest, of_io_is_passed_on_word_for_word) {
  start_log();
  const test::ExpectedCall call{.callback = Callback::kIoInfo, .sent = {.brdno = kDriverBoard}, .payload = {numbered(96)}};
  driver.expect(call);
  auto info = untouched<dfc_io_info>();
  EXPECT_EQ(GetIOinfo(kBoard, &info), DFC_OK);
  EXPECT_EQ(bytes_of(info), numbered(96));
  info = untouched<dfc_io_info>();
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect(failing(call, platform_status, driver_status));
    EXPECT_EQ(GetIOinfo(kBoard, &info), DFC_FAILED);
  }
  EXPECT_EQ(bytes_of(info), ByteVector(96, 0xEE));
  EXPECT_EQ(log(), lines("GetIOinfo", 482, 486, "TREL_MGMT_IOINFO"));
}

// --- GetVPDInfo

class VpdInfoTest : public LinkInfoTest {
 protected:
  VpdInfoTest() { info.selector = 0x12345678; }

  const test::ExpectedCall call{
      .callback = Callback::kGetVpd, .sent = {.brdno = kDriverBoard, .arg6 = 0x12345678}, .payload = {numbered(616)}};
  dfc_vpd_info info = untouched<dfc_vpd_info>();
};

TEST_F(VpdInfoTest, is_asked_for_by_its_first_word_and_passed_on_byte_for_byte) {
  driver.expect(call);
  EXPECT_EQ(GetVPDInfo(kBoard, &info), DFC_OK);
  EXPECT_EQ(bytes_of(info), numbered(616));
}

TEST_F(VpdInfoTest, takes_texts_as_bytes) {
  auto with_nuls = call;
  with_nuls.payload[0] = ByteVector(616, 0);
  with_nuls.payload[0][4 + 255] = 'a';
  with_nuls.payload[0][260 + 79] = 'b';
  with_nuls.payload[0][340 + 255] = 'c';
  driver.expect(with_nuls);
  EXPECT_EQ(GetVPDInfo(kBoard, &info), DFC_OK);
  EXPECT_EQ(bytes_of(info), with_nuls.payload[0]);
}

TEST_F(VpdInfoTest, fails_with_results_of_its_own_and_stays_as_it_was) {
  constexpr std::array<std::array<std::uint32_t, 3>, 5> kResults{
      {{0, 0xBAD0084, 1}, {0, 5, 3}, {0, 0xBAD0083, 3}, {9, 0, 3}, {9, 0xBAD0084, 1}}};
  const ByteVector before = bytes_of(info);
  for (const auto& [platform_status, driver_status, result] : kResults) {
    driver.expect(failing(call, platform_status, driver_status));
    EXPECT_EQ(GetVPDInfo(kBoard, &info), result);
    EXPECT_EQ(bytes_of(info), before);
  }
}

TEST_F(VpdInfoTest, logs_both_statuses) {
  start_log();
  driver.expect(call);
  EXPECT_EQ(GetVPDInfo(kBoard, &info), DFC_OK);
  for (const auto& [platform_status, driver_status] : kFailures) {
    info.selector = 0x12345678;
    driver.expect(failing(call, platform_status, driver_status));
    EXPECT_NE(GetVPDInfo(kBoard, &info), DFC_OK);
  }
  EXPECT_EQ(log(), lines("GetVPDInfo", 524, 528, "TREL_MGMT_GET_VPD"));
}

}  // namespace
}  // namespace vaskdfc
