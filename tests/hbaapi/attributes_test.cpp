#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>
#include <ostream>

#include "support/library_test.h"
#include "transport/board_table.h"
#include "vaskdfc/hbaapi.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

constexpr std::uint32_t kStatusNoSuchPort = 0x0BAD0003;
constexpr std::uint32_t kStatusIndexOutOfRange = 0x0BAD005D;

// A record in which every byte differs from its neighbours.
template <Record T>
T numbered_bytes() {
  std::array<std::uint8_t, sizeof(T)> bytes;
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  return std::bit_cast<T>(bytes);
}

template <Record T>
T untouched() {
  T record;
  std::memset(&record, 0xEE, sizeof(record));
  return record;
}

// What a caller's untouched record holds after a port query that was answered with `reply`.
HbaPortAttributes converted(const PortAttributesReply& reply) {
  const auto from = test::bytes_of(reply);
  test::ByteVector to(sizeof(HbaPortAttributes), 0xEE);
  std::copy_n(from.begin(), 466, to.begin());             // up to the end of the OS device name
  to[466] = to[467] = 0;                                  // two bytes more than the driver knows
  std::copy_n(from.begin() + 466, 24, to.begin() + 608);  // speeds, frame size, fabric name, discovered ports
  HbaPortAttributes record;
  std::memcpy(&record, to.data(), sizeof(record));
  return record;
}

template <Record T>
void expect_equal(const T& got, const T& expected) {
  EXPECT_EQ(test::bytes_of(got), test::bytes_of(expected));
}

class AttributesTest : public test::LibraryTest {
 protected:
  AttributesTest() { map_board(2, 9); }

  const PortAttributesReply reply_ = numbered_bytes<PortAttributesReply>();
  HbaPortAttributes port_ = untouched<HbaPortAttributes>();
};

// --- adapter attributes

TEST_F(AttributesTest, adapter_attributes_are_copied_whole) {
  const auto reply = numbered_bytes<HbaAdapterAttributes>();
  driver.expect({.callback = Callback::kHbaAdapterAttributes, .sent = {.brdno = 9}, .payload = {test::bytes_of(reply)}});

  auto adapter = untouched<HbaAdapterAttributes>();
  EXPECT_EQ(GetAdapterAttributes(2, &adapter), HBA_STATUS_OK);
  expect_equal(adapter, reply);
}

TEST_F(AttributesTest, adapter_attributes_report_success_and_overwrite_the_record_whatever_happens) {
  const auto reply = numbered_bytes<HbaAdapterAttributes>();
  driver.expect(
      {.callback = Callback::kHbaAdapterAttributes, .sent = {.brdno = 9}, .driver_status = 1, .payload = {test::bytes_of(reply)}});
  auto adapter = untouched<HbaAdapterAttributes>();
  EXPECT_EQ(GetAdapterAttributes(2, &adapter), HBA_STATUS_OK);
  expect_equal(adapter, reply);

  driver.expect({.callback = Callback::kHbaAdapterAttributes, .sent = {.brdno = 9}, .platform_status = 1});
  EXPECT_EQ(GetAdapterAttributes(2, &adapter), HBA_STATUS_OK);
  expect_equal(adapter, HbaAdapterAttributes{});
}

TEST_F(AttributesTest, a_failure_of_adapter_attributes_is_logged) {
  start_log();
  driver.expect({.callback = Callback::kHbaAdapterAttributes, .sent = {.brdno = 9}, .driver_status = 0x0BAD0001});

  HbaAdapterAttributes adapter;
  EXPECT_EQ(GetAdapterAttributes(2, &adapter), HBA_STATUS_OK);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20      GetAdapterAttributes:   62 call: TREL_MGMT_HBA_ADAPTERATTRIBUTES id[4711:4712]\n"
            "2023-11-14T22:13:20      GetAdapterAttributes:   66 cmd err: TREL_MGMT_HBA_ADAPTERATTRIBUTES brd[2] "
            "stat[x0:xbad0001] id[4711:4712]\n");
}

// --- own port

TEST_F(AttributesTest, own_port_is_converted) {
  driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = 9}, .payload = {test::bytes_of(reply_)}});
  EXPECT_EQ(GetAdapterPortAttributes(2, 77, &port_), HBA_STATUS_OK);
  expect_equal(port_, converted(reply_));
}

TEST_F(AttributesTest, os_device_name_keeps_the_callers_bytes_from_116) {
  driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = 9}, .payload = {test::bytes_of(reply_)}});
  EXPECT_EQ(GetAdapterPortAttributes(2, 0, &port_), HBA_STATUS_OK);
  EXPECT_TRUE(std::all_of(port_.OSDeviceName + 116, port_.OSDeviceName + 256, [](char c) { return c == '\xEE'; }));
  EXPECT_TRUE(std::equal(port_.OSDeviceName, port_.OSDeviceName + 114, reply_.os_device_name));
}

TEST_F(AttributesTest, own_port_fails_with_1_and_leaves_the_record_alone) {
  for (const std::uint32_t status : {1u, kStatusNoSuchPort, kStatusIndexOutOfRange}) {
    driver.expect({.callback = Callback::kHbaPortAttributes,
                   .sent = {.brdno = 9},
                   .driver_status = status,
                   .payload = {test::bytes_of(reply_)}});
    EXPECT_EQ(GetAdapterPortAttributes(2, 0, &port_), HBA_STATUS_ERROR);
  }
  driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = 9}, .platform_status = 5});
  EXPECT_EQ(GetAdapterPortAttributes(2, 0, &port_), HBA_STATUS_ERROR);
  expect_equal(port_, untouched<HbaPortAttributes>());
}

TEST_F(AttributesTest, own_port_has_no_stale_data) {
  PortAttributesReply reply = reply_;
  reply.identity.fc_id = 0xFFFFFFFF;
  driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = 9}, .payload = {test::bytes_of(reply)}});
  EXPECT_EQ(GetAdapterPortAttributes(2, 0, &port_), HBA_STATUS_OK);
  expect_equal(port_, converted(reply));
}

// --- ports of a list: by index, and discovered

struct ListQuery {
  const char* function;
  uint32_t (*query)(uint32_t board, uint32_t port, uint32_t index, HbaPortAttributes* attributes);
  Callback callback;
  std::uint32_t illegal_index;  // the driver's status for an index that does not exist
  std::uint32_t of_the_other;   // what the other query takes for that, and this one does not
  int call_line;
};

// How a test names its query when it fails.
void PrintTo(const ListQuery& query, std::ostream* out) { *out << query.function; }

class ListedPortTest : public AttributesTest, public ::testing::WithParamInterface<ListQuery> {
 protected:
  test::ExpectedCall call(std::uint32_t index, std::uint32_t refresh_counter) const {
    return {.callback = GetParam().callback,
            .sent = {.brdno = 9, .arg1 = index, .arg4 = refresh_counter},
            .payload = {test::bytes_of(reply_)}};
  }
  uint32_t query(std::uint32_t index) { return GetParam().query(2, 77, index, &port_); }
};

TEST_P(ListedPortTest, is_converted) {
  driver.expect(call(5, 0));
  EXPECT_EQ(query(5), HBA_STATUS_OK);
  expect_equal(port_, converted(reply_));
}

TEST_P(ListedPortTest, carries_the_boards_own_refresh_counter) {
  dfc_refresh_timer[2] = 0x01020304;
  dfc_refresh_timer[9] = 99;
  driver.expect(call(0, 0x01020304));
  EXPECT_EQ(query(0), HBA_STATUS_OK);
}

TEST_P(ListedPortTest, maps_its_own_status_to_illegal_index) {
  auto refused = call(5, 0);
  refused.driver_status = GetParam().illegal_index;
  driver.expect(refused);
  EXPECT_EQ(query(5), HBA_STATUS_ERROR_ILLEGAL_INDEX);

  refused.platform_status = 3;  // the driver's status decides also when the platform failed
  driver.expect(refused);
  EXPECT_EQ(query(5), HBA_STATUS_ERROR_ILLEGAL_INDEX);
  expect_equal(port_, untouched<HbaPortAttributes>());
}

TEST_P(ListedPortTest, maps_every_other_failure_to_1) {
  for (const std::uint32_t status : {GetParam().of_the_other, 1u}) {
    auto refused = call(5, 0);
    refused.driver_status = status;
    driver.expect(refused);
    EXPECT_EQ(query(5), HBA_STATUS_ERROR);
  }
  auto refused = call(5, 0);
  refused.platform_status = 3;
  driver.expect(refused);
  EXPECT_EQ(query(5), HBA_STATUS_ERROR);
  expect_equal(port_, untouched<HbaPortAttributes>());
}

TEST_P(ListedPortTest, reports_stale_data_and_leaves_the_record_alone) {
  PortAttributesReply stale = reply_;
  stale.identity.fc_id = 0xFFFFFFFF;
  auto answered = call(5, 0);
  answered.payload[0] = test::bytes_of(stale);
  driver.expect(answered);
  EXPECT_EQ(query(5), HBA_STATUS_ERROR_STALE_DATA);
  expect_equal(port_, untouched<HbaPortAttributes>());
}

TEST_P(ListedPortTest, logs_its_own_name) {
  start_log();
  driver.expect(call(0, 0));
  EXPECT_EQ(query(0), HBA_STATUS_OK);

  const std::string callback = facts_of(GetParam().callback).name;
  char expected[400];
  std::snprintf(expected, sizeof(expected),
                "2023-11-14T22:13:20  %24s:%5d call: %s id[4711:4712]\n"
                "2023-11-14T22:13:20  %24s:%5d cmd ok:  %28s brd[2] id[4711:4712]\n",
                GetParam().function, GetParam().call_line, callback.c_str(), GetParam().function, GetParam().call_line + 4,
                callback.c_str());
  EXPECT_EQ(log(), expected);
}

INSTANTIATE_TEST_SUITE_P(Queries, ListedPortTest,
                         ::testing::Values(ListQuery{.function = "GetPortAttributesByIndex",
                                                     .query = GetPortAttributesByIndex,
                                                     .callback = Callback::kHbaIndexPortAttributes,
                                                     .illegal_index = kStatusIndexOutOfRange,
                                                     .of_the_other = kStatusNoSuchPort,
                                                     .call_line = 176},
                                           ListQuery{.function = "GetDiscoveredPortAttributes",
                                                     .query = GetDiscoveredPortAttributes,
                                                     .callback = Callback::kHbaDiscPortAttributes,
                                                     .illegal_index = kStatusNoSuchPort,
                                                     .of_the_other = kStatusIndexOutOfRange,
                                                     .call_line = 238}),
                         [](const auto& query) { return query.param.function; });

// --- by WWN

constexpr HbaWwn kWwn{{0x10, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55}};

test::ByteVector wwn_key() {
  test::ByteVector key(28, 0);
  std::ranges::copy(kWwn.wwn, key.begin() + 8);
  return key;
}

TEST_F(AttributesTest, a_port_is_found_by_its_wwn_without_the_refresh_counter) {
  dfc_refresh_timer[2] = 5;
  driver.expect({.callback = Callback::kHbaWwpnPortAttributes,
                 .sent = {.brdno = 9},
                 .sent_payload = {{}, wwn_key()},
                 .payload = {test::bytes_of(reply_)}});
  EXPECT_EQ(GetPortAttributesByWWN(2, &kWwn, &port_), HBA_STATUS_OK);
  expect_equal(port_, converted(reply_));
}

TEST_F(AttributesTest, a_wwn_query_maps_no_such_port_to_illegal_wwn_and_all_else_to_1) {
  const std::tuple<std::uint32_t, std::uint32_t, std::uint32_t> kFailures[] = {{0, kStatusNoSuchPort, HBA_STATUS_ERROR_ILLEGAL_WWN},
                                                                               {4, kStatusNoSuchPort, HBA_STATUS_ERROR_ILLEGAL_WWN},
                                                                               {0, kStatusIndexOutOfRange, HBA_STATUS_ERROR},
                                                                               {4, 0, HBA_STATUS_ERROR}};
  for (const auto& [platform, status, result] : kFailures) {
    driver.expect({.callback = Callback::kHbaWwpnPortAttributes,
                   .sent = {.brdno = 9},
                   .sent_payload = {{}, wwn_key()},
                   .platform_status = platform,
                   .driver_status = status,
                   .payload = {test::bytes_of(reply_)}});
    EXPECT_EQ(GetPortAttributesByWWN(2, &kWwn, &port_), result);
  }
  expect_equal(port_, untouched<HbaPortAttributes>());
}

TEST_F(AttributesTest, a_wwn_query_has_no_stale_data) {
  PortAttributesReply reply = reply_;
  reply.identity.fc_id = 0xFFFFFFFF;
  driver.expect({.callback = Callback::kHbaWwpnPortAttributes,
                 .sent = {.brdno = 9},
                 .sent_payload = {{}, wwn_key()},
                 .payload = {test::bytes_of(reply)}});
  EXPECT_EQ(GetPortAttributesByWWN(2, &kWwn, &port_), HBA_STATUS_OK);
  expect_equal(port_, converted(reply));
}

// --- refresh

TEST_F(AttributesTest, a_refresh_stores_the_drivers_counter_for_its_board_only) {
  map_board(3, 11);
  driver.expect({.callback = Callback::kHbaRefreshInfo, .sent = {.brdno = 9}, .arg4 = 41});
  EXPECT_EQ(RefreshInformation(2), HBA_STATUS_OK);

  driver.expect(
      {.callback = Callback::kHbaDiscPortAttributes, .sent = {.brdno = 9, .arg4 = 41}, .payload = {test::bytes_of(reply_)}});
  EXPECT_EQ(GetDiscoveredPortAttributes(2, 0, 0, &port_), HBA_STATUS_OK);
  driver.expect({.callback = Callback::kHbaIndexPortAttributes, .sent = {.brdno = 11}, .payload = {test::bytes_of(reply_)}});
  EXPECT_EQ(GetPortAttributesByIndex(3, 0, 0, &port_), HBA_STATUS_OK);
}

TEST_F(AttributesTest, a_failed_refresh_keeps_the_counter) {
  dfc_refresh_timer[2] = 6;
  driver.expect({.callback = Callback::kHbaRefreshInfo, .sent = {.brdno = 9}, .driver_status = 1, .arg4 = 41});
  EXPECT_EQ(RefreshInformation(2), HBA_STATUS_ERROR);
  driver.expect({.callback = Callback::kHbaRefreshInfo, .sent = {.brdno = 9}, .platform_status = 1, .arg4 = 41});
  EXPECT_EQ(RefreshInformation(2), HBA_STATUS_ERROR);
  EXPECT_EQ(dfc_refresh_timer[2], 6u);
}

TEST_F(AttributesTest, the_remaining_operations_log_their_own_names) {
  start_log();
  driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = 9}});
  driver.expect(
      {.callback = Callback::kHbaWwpnPortAttributes, .sent = {.brdno = 9}, .sent_payload = {{}, wwn_key()}, .driver_status = 1});
  driver.expect({.callback = Callback::kHbaRefreshInfo, .sent = {.brdno = 9}});

  GetAdapterPortAttributes(2, 0, &port_);
  GetPortAttributesByWWN(2, &kWwn, &port_);
  RefreshInformation(2);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20  GetAdapterPortAttributes:  118 call: TREL_MGMT_HBA_PORTATTRIBUTES id[4711:4712]\n"
            "2023-11-14T22:13:20  GetAdapterPortAttributes:  122 cmd ok:  TREL_MGMT_HBA_PORTATTRIBUTES brd[2] id[4711:4712]\n"
            "2023-11-14T22:13:20    GetPortAttributesByWWN:  302 call: TREL_MGMT_HBA_WWPNPORTATTRIBUTES id[4711:4712]\n"
            "2023-11-14T22:13:20    GetPortAttributesByWWN:  306 cmd err: TREL_MGMT_HBA_WWPNPORTATTRIBUTES brd[2] stat[x0:x1] "
            "id[4711:4712]\n"
            "2023-11-14T22:13:20        RefreshInformation:  358 call: TREL_MGMT_HBA_REFRESHINFO id[4711:4712]\n"
            "2023-11-14T22:13:20        RefreshInformation:  362 cmd ok:     TREL_MGMT_HBA_REFRESHINFO brd[2] id[4711:4712]\n");
}

}  // namespace
}  // namespace vaskdfc
