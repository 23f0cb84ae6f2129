#include <cstring>

#include "support/adapter_test.h"
#include "vaskdfc/mapping.h"
#include "vaskdfc/result.h"
#include "vaskdfc/scsi.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr HbaWwn kLocalWwn{{0x10, 0, 0, 0, 0, 0, 0, 0x42}};
constexpr std::uint32_t kDoesNotFit = 0x0BAD005D;

// A mapped unit, every part of which shows its number.
HbaFcpScsiEntry unit(std::uint8_t number) {
  HbaFcpScsiEntry entry{};
  std::memset(&entry, number, sizeof(entry));
  return entry;
}

// A reply with units 1, 2, 3 and so on. Its own count word is not to be used.
ByteVector reply_with(std::uint8_t units) {
  ByteVector bytes(4, 0xCC);
  for (std::uint8_t i = 1; i <= units; ++i) {
    const ByteVector entry = bytes_of(unit(i));
    bytes.insert(bytes.end(), entry.begin(), entry.end());
  }
  return bytes;
}

template <typename Mapping, std::size_t kEntryBytes>
class Caller {
 public:
  explicit Caller(std::uint32_t room, std::uint32_t count) : memory_(4 + kEntryBytes * room, 0xEE) {
    mapping().NumberOfEntries = count;
  }
  explicit Caller(std::uint32_t room) : Caller(room, room) {}

  Mapping& mapping() { return *reinterpret_cast<Mapping*>(memory_.data()); }
  std::uint32_t count() { return mapping().NumberOfEntries; }
  ByteVector entry(std::size_t position) const {
    const auto start = memory_.begin() + static_cast<std::ptrdiff_t>(4 + kEntryBytes * position);
    return {start, start + kEntryBytes};
  }

 private:
  ByteVector memory_;
};
using FirstForm = Caller<HbaFcpTargetMapping, 296>;
using SecondForm = Caller<HbaFcpTargetMappingV2, 552>;

class TargetMappingTest : public test::AdapterTest {
 protected:
  test::ExpectedCall call(std::uint32_t arg2, std::uint32_t count, std::uint8_t units) {
    return {.callback = Callback::kHbaFcpTargetMapping,
            .sent = {.brdno = kDriverBoard, .arg2 = arg2},
            .arg3 = count,
            .payload = {reply_with(units)}};
  }
};

TEST_F(TargetMappingTest, delivers_as_many_entries_as_the_header_says) {
  driver.expect(call(3, 2, 3));
  start_log();
  FirstForm caller(3);
  EXPECT_EQ(GetFcpTargetMapping(kBoard, &caller.mapping()), HBA_STATUS_OK);
  EXPECT_EQ(caller.count(), 2u);
  EXPECT_EQ(caller.entry(0), bytes_of(unit(1)));
  EXPECT_EQ(caller.entry(1), bytes_of(unit(2)));
  EXPECT_EQ(caller.entry(2), ByteVector(296, 0xEE));
  constexpr const char* kCallback = "TREL_MGMT_HBA_FCPTARGETMAPPING";
  EXPECT_EQ(log(), test::call_line("GetFcpTargetMapping", 418, kCallback) + test::ok_line("GetFcpTargetMapping", 422, kCallback));
}

TEST_F(TargetMappingTest, asks_for_1024_entries_at_most) {
  for (const std::uint32_t room : {1024u, 2000u, 0xFFFFFFFFu}) {
    driver.expect(call(1024, 0, 0));
    FirstForm caller(1, room);
    EXPECT_EQ(GetFcpTargetMapping(kBoard, &caller.mapping()), HBA_STATUS_OK);
    EXPECT_EQ(caller.count(), 0u);
  }
}

TEST_F(TargetMappingTest, copies_no_entry_when_not_all_fit) {
  driver.expect(call(3, 5, 5));
  FirstForm caller(3);
  EXPECT_EQ(GetFcpTargetMapping(kBoard, &caller.mapping()), HBA_STATUS_ERROR_MORE_DATA);
  EXPECT_EQ(caller.count(), 5u);
  EXPECT_EQ(caller.entry(0), ByteVector(296, 0xEE));
}

TEST_F(TargetMappingTest, copies_no_more_than_a_reply_can_hold) {
  driver.expect(call(1024, 1500, 0));
  FirstForm caller(1024, 2000);
  EXPECT_EQ(GetFcpTargetMapping(kBoard, &caller.mapping()), HBA_STATUS_OK);
  EXPECT_EQ(caller.count(), 1500u);
}

struct FailedCall {
  std::uint32_t platform_status;
  std::uint32_t driver_status;
  std::uint32_t count;
  std::uint32_t result;
};

TEST_F(TargetMappingTest, looks_at_the_count_after_failures_too) {
  const FailedCall kFailures[] = {{0, 0xBAD0020, 0, 1}, {0, 0xBAD0020, 3, 1},   {0, 0xBAD0020, 4, 7},   {9, 0, 0, 1},
                                  {9, 0, 4, 7},         {0, kDoesNotFit, 0, 7}, {0, kDoesNotFit, 2, 7}, {9, kDoesNotFit, 0, 7}};
  for (const FailedCall& failed : kFailures) {
    SCOPED_TRACE(testing::Message() << failed.driver_status << " " << failed.count);
    auto expected = call(3, failed.count, 3);
    expected.platform_status = failed.platform_status;
    expected.driver_status = failed.driver_status;
    driver.expect(expected);
    FirstForm caller(3);
    EXPECT_EQ(GetFcpTargetMapping(kBoard, &caller.mapping()), failed.result);
    EXPECT_EQ(caller.count(), failed.count);
    EXPECT_EQ(caller.entry(0), ByteVector(296, 0xEE));
  }
}

TEST_F(TargetMappingTest, sends_nothing_without_memory) {
  test::c_library.refused_bytes = 303108;
  FirstForm caller(3);
  EXPECT_EQ(GetFcpTargetMapping(kBoard, &caller.mapping()), HBA_STATUS_ERROR);
  EXPECT_EQ(caller.count(), 3u);
}

// --- second form

class TargetMappingV2Test : public TargetMappingTest {
 protected:
  void expect_port(std::uint32_t driver_status = 0) {
    PortAttributesReply port{};
    port.identity.port_wwn = kLocalWwn;
    driver.expect({.callback = Callback::kHbaPortAttributes,
                   .sent = {.brdno = kDriverBoard},
                   .driver_status = driver_status,
                   .payload = {bytes_of(port)}});
  }
  // An inquiry to a unit, answered with a page of that size and with sense.
  void expect_inquiry(std::uint8_t number, const ByteVector& page, std::uint32_t page_bytes, std::uint32_t sense_bytes = 0,
                      std::uint32_t driver_status = 0) {
    ScsiPassThruRequest request{};
    const HbaFcpScsiEntry entry = unit(number);
    request.target = entry.FcpId.PortWWN;
    std::ranges::copy(entry.FcpId.FcpLun, request.command.FcpLun);
    request.command.DataDirection = 2;
    request.command.CDB[0] = 0x12;
    request.command.CDB[1] = 1;
    request.command.CDB[2] = 0x83;
    request.command.CDB[4] = 255;
    request.command.DataLength[3] = 255;
    ScsiPassThruRequest answer = request;
    answer.sense_bytes = sense_bytes;
    driver.expect({.callback = Callback::kHbaSendScsi,
                   .sent = {.brdno = kDriverBoard, .arg2 = 255},
                   .sent_payload = {bytes_of(request), ByteVector(255, 0)},
                   .driver_status = driver_status,
                   .arg3 = page_bytes,
                   .payload = {bytes_of(answer), page}});
  }
  std::uint32_t get(SecondForm& caller) { return DFC_GetFcpTargetMappingV2(kBoard, &kLocalWwn, &caller.mapping()); }

  // A page whose first descriptor has these two bytes of flags and that many bytes of identifier.
  static ByteVector page(std::uint8_t association_and_type, std::uint8_t identifier_bytes) {
    ByteVector bytes{0, 0x83, 0, static_cast<std::uint8_t>(identifier_bytes + 4), 1, association_and_type, 0, identifier_bytes};
    bytes.resize(256, 0x1D);
    return bytes;
  }
  // An entry as the caller must find it: the unit, and that many bytes of the descriptor over the caller's own.
  static ByteVector expected_entry(std::uint8_t number, const ByteVector& page_bytes = {}, std::size_t bytes = 0) {
    ByteVector entry = bytes_of(unit(number));
    entry.resize(552, 0xEE);
    if (bytes != 0) std::copy_n(page_bytes.begin() + 4, bytes, entry.begin() + 296);
    return entry;
  }
};

TEST_F(TargetMappingV2Test, adds_the_identifier_that_each_unit_tells) {
  expect_port();
  driver.expect(call(3, 2, 2));
  expect_inquiry(1, page(0x03, 16), 24);
  expect_inquiry(2, page(0x01, 8), 16);
  SecondForm caller(3);
  EXPECT_EQ(get(caller), HBA_STATUS_OK);
  EXPECT_EQ(caller.count(), 2u);
  EXPECT_EQ(caller.entry(0), expected_entry(1, page(0x03, 16), 20));
  EXPECT_EQ(caller.entry(1), expected_entry(2, page(0x01, 8), 12));
  EXPECT_EQ(caller.entry(2), ByteVector(552, 0xEE));
}

struct Identification {
  ByteVector page;
  std::uint32_t page_bytes;
  std::uint32_t sense_bytes;
  std::uint32_t driver_status;
  std::size_t identifier;
};

TEST_F(TargetMappingV2Test, leaves_the_callers_identifier_where_a_unit_tells_none_of_use) {
  const Identification kIdentifications[] = {
      {page(0x13, 8), 16, 0, 0, 0},          // association with the target port
      {page(0x23, 8), 16, 0, 0, 0},          // with the target device
      {page(0x04, 8), 16, 0, 0, 0},          // types from 4 on
      {page(0x08, 8), 16, 0, 0, 0},          //
      {page(0x03, 8), 0, 0, 0, 0},           // nothing came back
      {page(0x03, 8), 16, 18, 0, 0},         // sense came back
      {page(0x03, 8), 16, 0, 0xBAD0020, 0},  // the inquiry failed
      {page(0x03, 8), 256, 0, 0, 0},         // more came back than was asked for
      {page(0xC3, 8), 16, 0, 0, 12},         // other bits are not looked at
      {page(0x03, 0), 8, 0, 0, 4},           // an identifier of no bytes
      {page(0x03, 255), 255, 0, 0, 252},     // one that runs to the end of the page
  };
  for (const Identification& each : kIdentifications) {
    expect_port();
    driver.expect(call(1, 1, 1));
    expect_inquiry(1, each.page, each.page_bytes, each.sense_bytes, each.driver_status);
    SecondForm caller(1);
    EXPECT_EQ(get(caller), HBA_STATUS_OK);
    ByteVector page_received = each.page;
    if (each.page_bytes < page_received.size()) {
      std::fill_n(page_received.data() + each.page_bytes, page_received.size() - each.page_bytes, std::uint8_t{0});
    }
    EXPECT_EQ(caller.entry(0), expected_entry(1, page_received, each.identifier));
  }
}

TEST_F(TargetMappingV2Test, is_for_the_adapters_own_port) {
  expect_port();
  SecondForm caller(1);
  const HbaWwn other{{0x10, 0, 0, 0, 0, 0, 0, 0x43}};
  EXPECT_EQ(DFC_GetFcpTargetMappingV2(kBoard, &other, &caller.mapping()), HBA_STATUS_ERROR_ILLEGAL_WWN);
  expect_port(0xBAD0020);
  EXPECT_EQ(get(caller), HBA_STATUS_ERROR);
  EXPECT_EQ(caller.count(), 1u);
}

TEST_F(TargetMappingV2Test, tells_how_many_units_there_are_when_not_all_fit) {
  expect_port();
  driver.expect(call(3, 5, 5));
  SecondForm caller(3);
  EXPECT_EQ(get(caller), HBA_STATUS_ERROR_MORE_DATA);
  EXPECT_EQ(caller.count(), 5u);
  EXPECT_EQ(caller.entry(0), ByteVector(552, 0xEE));
}

TEST_F(TargetMappingV2Test, fails_with_the_mapping_and_keeps_the_count) {
  expect_port();
  auto failure = call(3, 0, 0);
  failure.driver_status = 0xBAD0020;
  driver.expect(failure);
  SecondForm caller(3);
  EXPECT_EQ(get(caller), HBA_STATUS_ERROR);
  EXPECT_EQ(caller.count(), 3u);
}

TEST_F(TargetMappingV2Test, asks_no_unit_when_there_is_none) {
  for (const std::uint32_t room : {0u, 0xFFFFFFFFu}) {
    expect_port();
    driver.expect(call(std::min(room, 1024u), 0, 0));
    SecondForm caller(0, room);
    EXPECT_EQ(get(caller), HBA_STATUS_OK);
    EXPECT_EQ(caller.count(), 0u);
  }
}

TEST_F(TargetMappingV2Test, lists_units_without_identifiers_when_there_is_no_memory_to_ask_them) {
  test::c_library.refused_bytes = 262144;
  expect_port();
  driver.expect(call(2, 2, 2));
  SecondForm caller(2);
  EXPECT_EQ(get(caller), HBA_STATUS_OK);
  EXPECT_EQ(caller.count(), 2u);
  EXPECT_EQ(caller.entry(0), expected_entry(1, {}, 0));
  EXPECT_EQ(caller.entry(1), expected_entry(2, {}, 0));
}

TEST_F(TargetMappingV2Test, fails_without_memory_for_the_list) {
  test::c_library.refused_bytes = 303108;
  expect_port();
  SecondForm caller(7);
  EXPECT_EQ(get(caller), HBA_STATUS_ERROR);
  EXPECT_EQ(caller.count(), 7u);
}

}  // namespace
}  // namespace vaskdfc
