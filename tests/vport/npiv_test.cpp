#include <cstring>

#include "support/adapter_test.h"
#include "vaskdfc/result.h"
#include "vaskdfc/vport.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr HbaWwn kWwn{{0x10, 1, 2, 3, 4, 5, 6, 7}};
constexpr std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{9, 0}, {0, 0xBAD0020}};

class NpivTest : public test::AdapterTest {};

TEST_F(NpivTest, readiness_is_the_drivers_word) {
  start_log();
  for (const std::uint32_t word : {0u, 1u, 0xFFFFFFFFu}) {
    driver.expect({.callback = Callback::kNpivReady, .sent = {.brdno = kDriverBoard}, .arg4 = word});
    std::uint32_t ready = 99;
    EXPECT_EQ(DFC_NPIVReadyTest(kBoard, &ready), DFC_OK);
    EXPECT_EQ(ready, word);
  }
  constexpr const char* kCallback = "TREL_MGMT_NPIV_READY";
  const std::string lines = test::call_line("DFC_NPIVReadyTest", 61, kCallback) + test::ok_line("DFC_NPIVReadyTest", 64, kCallback);
  EXPECT_EQ(log(), lines + lines + lines);
}

TEST_F(NpivTest, readiness_stays_unknown_when_the_call_fails) {
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect({.callback = Callback::kNpivReady,
                   .sent = {.brdno = kDriverBoard},
                   .platform_status = platform_status,
                   .driver_status = driver_status,
                   .arg4 = 1});
    std::uint32_t ready = 99;
    EXPECT_EQ(DFC_NPIVReadyTest(kBoard, &ready), DFC_FAILED);
    EXPECT_EQ(ready, 99u);
  }
}

TEST_F(NpivTest, resources_go_straight_to_the_caller_and_are_logged_under_two_names) {
  driver.expect({.callback = Callback::kVportGetResrc, .sent = {.brdno = kDriverBoard}, .payload = {ByteVector(16, 0xA5)}});
  start_log();
  dfc_vport_resource resource{};
  EXPECT_EQ(DFC_VPGetResource(kBoard, &resource), DFC_OK);
  EXPECT_EQ(bytes_of(resource), ByteVector(16, 0xA5));
  for (const auto& [platform_status, driver_status] : kFailures) {
    driver.expect({.callback = Callback::kVportGetResrc,
                   .sent = {.brdno = kDriverBoard},
                   .platform_status = platform_status,
                   .driver_status = driver_status});
    EXPECT_EQ(DFC_VPGetResource(kBoard, &resource), DFC_FAILED);
  }
  const std::string call = test::call_line("DFC_VPGetResource", 92, "TREL_MGMT_VPORT_GET_RESRC");
  EXPECT_EQ(log(), call + test::ok_line("DFC_VPGetResource", 95, "TREL_MGMT_VPORT_GET_LIST") + call +
                       test::error_line("DFC_VPGetResource", 95, "TREL_MGMT_VPORT_GET_LIST", "x9:x0") + call +
                       test::error_line("DFC_VPGetResource", 95, "TREL_MGMT_VPORT_GET_LIST", "x0:xbad0020"));
}

class VportAttributesTest : public test::AdapterTest {
 protected:
  test::ExpectedCall call() {
    ByteVector key(28, 0);
    std::ranges::copy(kWwn.wwn, key.begin() + 8);
    return {.callback = Callback::kVportGetAttrib,
            .sent = {.brdno = kDriverBoard},
            .sent_payload = {key},
            .payload = {{}, ByteVector(340, 0xA5)}};
  }
  dfc_vport_attributes attributes{};
};

TEST_F(VportAttributesTest, go_straight_to_the_caller) {
  driver.expect(call());
  start_log();
  EXPECT_EQ(DFC_VPGetAttrib(kBoard, &kWwn, &attributes), DFC_OK);
  EXPECT_EQ(bytes_of(attributes), ByteVector(340, 0xA5));
  constexpr const char* kCallback = "TREL_MGMT_VPORT_GET_ATTRIB";
  EXPECT_EQ(log(), test::call_line("DFC_VPGetAttrib", 128, kCallback) + test::ok_line("DFC_VPGetAttrib", 131, kCallback));
}

TEST_F(VportAttributesTest, of_no_virtual_port_are_told_by_the_third_argument) {
  for (const auto& [platform_status, driver_status] : kFailures) {
    for (const auto& [arg3, result] : {std::pair{0u, 5u}, {1u, 1u}, {0xFFFFFFFFu, 1u}}) {
      auto failure = call();
      failure.platform_status = platform_status;
      failure.driver_status = driver_status;
      failure.arg3 = arg3;
      driver.expect(failure);
      EXPECT_EQ(DFC_VPGetAttrib(kBoard, &kWwn, &attributes), result);
    }
  }
}

}  // namespace
}  // namespace vaskdfc
