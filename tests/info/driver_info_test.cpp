#include <bit>
#include <cstring>
#include <numeric>

#include "info/sli_mode.h"
#include "support/library_test.h"
#include "vaskdfc/info.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

// What the driver says of board 5 in these tests.
DriverInfoReply driver_reply(std::uint32_t sli_mode) {
  std::array<std::uint8_t, sizeof(DriverInfoReply)> bytes;
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  auto reply = std::bit_cast<DriverInfoReply>(bytes);
  reply.sli_mode = sli_mode;
  reply.feature_flags = 0x00000042;
  reply.word_108 = 0xCAFE0108;
  return reply;
}

HbaAdapterAttributes adapter_reply() {
  HbaAdapterAttributes adapter{};
  std::strcpy(adapter.DriverVersion, "11.4.1080.0-longer-than-16");
  std::strcpy(adapter.DriverName, "vaskfcoe-driver");
  return adapter;
}

PortAttributesReply port_reply() {
  PortAttributesReply port{};
  port.identity = {.node_wwn = {{0x20, 1, 2, 3, 4, 5, 6, 7}}, .port_wwn = {{0x10, 1, 2, 3, 4, 5, 6, 7}}};
  port.identity.fc_id = 0x010203;
  return port;
}

class DriverInfoTest : public test::LibraryTest {
 protected:
  DriverInfoTest() { map_board(3, 5); }

  void expect_information(std::uint32_t sli_mode) {
    driver.expect({.callback = Callback::kGetTrelDfcInfo,
                   .sent = {.brdno = 5, .arg2 = 120},
                   .payload = {test::bytes_of(driver_reply(sli_mode))}});
  }
  void expect_attributes() {
    driver.expect(
        {.callback = Callback::kHbaAdapterAttributes, .sent = {.brdno = 5}, .payload = {test::bytes_of(adapter_reply())}});
    driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = 5}, .payload = {test::bytes_of(port_reply())}});
  }
  void expect_extended_probe(std::uint32_t platform_status = 0, std::uint32_t driver_status = 0) {
    driver.expect({.callback = Callback::kMboxSliCfgExtSup,
                   .sent = {.brdno = 5},
                   .platform_status = platform_status,
                   .driver_status = driver_status});
  }
  // The 148 bytes as the caller must find them; 0xEE is what the caller put there.
  static test::ByteVector expected_record(std::uint32_t sli_mode, std::uint32_t flags) {
    test::ByteVector bytes(148, 0);
    const auto put = [&](std::size_t at, const test::ByteVector& what) {
      std::ranges::copy(what, bytes.begin() + static_cast<std::ptrdiff_t>(at));
    };
    const auto put_text = [&](std::size_t at, std::string_view what) { put(at, {what.begin(), what.end()}); };
    const auto put_word = [&](std::size_t at, std::uint32_t word) { put(at, test::bytes_of(word)); };
    put(0, {0xEE, 21, 0xEE, 0xEE, 4, 0, 1, 0xEE});
    put_text(8, "11.4.1080.0-long");
    put_text(24, "vaskfcoe");
    for (std::uint8_t i = 0; i < 16; ++i) bytes[32 + i] = static_cast<std::uint8_t>(1 + i);
    for (std::uint8_t i = 0; i < 8; ++i) bytes[48 + i] = static_cast<std::uint8_t>(65 + i);
    put_word(80, 0x010203);
    put(84, {0x10, 1, 2, 3, 4, 5, 6, 7});
    put(92, {0x20, 1, 2, 3, 4, 5, 6, 7});
    put_text(100, "host-17");
    put_word(136, sli_mode);
    put_word(140, flags);
    put_word(144, 0xCAFE0108);
    return bytes;
  }
  static dfc_drv_info callers_record() {
    dfc_drv_info info;
    std::memset(&info, 0xEE, sizeof(info));
    return info;
  }
};

TEST_F(DriverInfoTest, fills_the_record_byte_for_byte) {
  expect_information(4);
  expect_attributes();
  expect_extended_probe();

  auto info = callers_record();
  EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_OK);
  EXPECT_EQ(test::bytes_of(info), expected_record(4, 0x1042));
}

TEST_F(DriverInfoTest, keeps_the_extended_bit_clear_in_sli_mode_3) {
  expect_information(3);
  expect_attributes();
  expect_extended_probe();

  auto info = callers_record();
  EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_OK);
  EXPECT_EQ(test::bytes_of(info), expected_record(3, 0x42));
}

TEST_F(DriverInfoTest, keeps_the_extended_bit_clear_when_the_probe_fails) {
  const std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{0, 0x0BAD0020}, {1, 0}};
  for (const auto& [platform_status, driver_status] : kFailures) {
    expect_information(5);
    expect_attributes();
    expect_extended_probe(platform_status, driver_status);

    auto info = callers_record();
    EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_OK);
    EXPECT_EQ(test::bytes_of(info), expected_record(5, 0x42));
  }
}

TEST_F(DriverInfoTest, passes_the_drivers_own_extended_bit_through) {
  DriverInfoReply reply = driver_reply(3);
  reply.feature_flags = DFC_FEATURE_EXTENDED_SLI_CONFIG;
  driver.expect({.callback = Callback::kGetTrelDfcInfo, .sent = {.brdno = 5, .arg2 = 120}, .payload = {test::bytes_of(reply)}});
  expect_attributes();
  expect_extended_probe(0, 1);

  auto info = callers_record();
  EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_OK);
  EXPECT_EQ(info.feature_flags, 0x1000u);
}

TEST_F(DriverInfoTest, returns_2_when_the_information_cannot_be_read) {
  const std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{0, 0x0BAD0011}, {8, 0}};
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect({.callback = Callback::kGetTrelDfcInfo,
                   .sent = {.brdno = 5, .arg2 = 120},
                   .platform_status = platform_status,
                   .driver_status = driver_status});
    auto info = callers_record();
    EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_UNSUPPORTED);
    EXPECT_EQ(test::bytes_of(info), test::bytes_of(callers_record()));
  }
}

TEST_F(DriverInfoTest, returns_2_when_the_port_attributes_cannot_be_read) {
  expect_information(4);
  driver.expect({.callback = Callback::kHbaAdapterAttributes, .sent = {.brdno = 5}});
  driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = 5}, .driver_status = 1});

  auto info = callers_record();
  EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_UNSUPPORTED);
  EXPECT_EQ(test::bytes_of(info), test::bytes_of(callers_record()));
}

// Adapter attributes report success whatever happens, so only the first call and the port attributes can make it fail.
TEST_F(DriverInfoTest, does_not_fail_when_the_adapter_attributes_fail) {
  expect_information(4);
  driver.expect({.callback = Callback::kHbaAdapterAttributes, .sent = {.brdno = 5}, .driver_status = 0x0BAD0001});
  driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = 5}, .payload = {test::bytes_of(port_reply())}});
  expect_extended_probe();

  auto info = callers_record();
  EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_OK);
  EXPECT_EQ(std::string(info.driver_version, 16), std::string(16, '\0'));
}

TEST_F(DriverInfoTest, cuts_a_long_host_name_at_its_field) {
  test::c_library.host_name = std::string(40, 'h');
  expect_information(4);
  expect_attributes();
  expect_extended_probe();

  auto info = callers_record();
  EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_OK);
  EXPECT_EQ(std::string(info.host_name, 32), std::string(32, 'h'));
  EXPECT_EQ(info.zero_132, 0u);
}

TEST_F(DriverInfoTest, tells_the_sli_mode) {
  expect_information(4);
  expect_attributes();
  expect_extended_probe();

  std::uint32_t mode = 99;
  EXPECT_EQ(get_sli_mode(3, mode), 0u);
  EXPECT_EQ(mode, 4u);
}

TEST_F(DriverInfoTest, leaves_the_sli_mode_untouched_when_the_driver_rejects_the_board) {
  map_board(30, 0xFFFFFFFF);
  driver.expect({.callback = Callback::kGetTrelDfcInfo, .sent = {.brdno = 0xFFFFFFFF, .arg2 = 120}, .driver_status = 0x0BAD0011});

  std::uint32_t mode = 99;
  EXPECT_EQ(get_sli_mode(30, mode), 2u);
  EXPECT_EQ(mode, 99u);
}

TEST_F(DriverInfoTest, logs_all_four_calls) {
  start_log();
  expect_information(4);
  expect_attributes();
  expect_extended_probe(0, 0x0BAD0020);

  auto info = callers_record();
  EXPECT_EQ(DFC_GetDrvInfo(3, &info), DFC_OK);
  EXPECT_EQ(log(),
            "2023-11-14T22:13:20            DFC_GetDrvInfo:  214 call: TREL_MGMT_GET_TRELDFC_INFO id[4711:4712]\n"
            "2023-11-14T22:13:20            DFC_GetDrvInfo:  218 cmd ok:    TREL_MGMT_GET_TRELDFC_INFO brd[3] id[4711:4712]\n"
            "2023-11-14T22:13:20      GetAdapterAttributes:   62 call: TREL_MGMT_HBA_ADAPTERATTRIBUTES id[4711:4712]\n"
            "2023-11-14T22:13:20      GetAdapterAttributes:   66 cmd ok:  TREL_MGMT_HBA_ADAPTERATTRIBUTES brd[3] id[4711:4712]\n"
            "2023-11-14T22:13:20  GetAdapterPortAttributes:  118 call: TREL_MGMT_HBA_PORTATTRIBUTES id[4711:4712]\n"
            "2023-11-14T22:13:20  GetAdapterPortAttributes:  122 cmd ok:  TREL_MGMT_HBA_PORTATTRIBUTES brd[3] id[4711:4712]\n"
            "2023-11-14T22:13:20            DFC_GetDrvInfo:  268 call: TREL_MGMT_MBOX_SLI_CFG_EXT_SUP id[4711:4712]\n"
            "2023-11-14T22:13:20            DFC_GetDrvInfo:  272 cmd err: TREL_MGMT_MBOX_SLI_CFG_EXT_SUP brd[3] stat[x0:xbad0020] "
            "id[4711:4712]\n");
}

}  // namespace
}  // namespace vaskdfc
