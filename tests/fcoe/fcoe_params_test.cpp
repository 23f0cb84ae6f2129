#include "support/region_test.h"
#include "vaskdfc/fcoe.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::call_line;
using test::default_region23;
using test::Image;
using test::log_line;
using test::ok_line;
using test::with_bytes;

constexpr std::size_t kRecord = 8;

class FcoeParamsTest : public test::RegionTest {
 protected:
  // One of the operations below, with what it asks before it reads the region.
  std::uint32_t get() { return DFC_FCoEGetParams(kBoard, &params); }
  std::uint32_t set() { return DFC_FCoESetParams(kBoard, &params); }
  void expect_read(const Image& image) {
    expect_driver_info(4);
    expect_dump(23, image);
  }

  dfc_fcoe_params params{0xEE, {0xEE, 0xEE, 0xEE}, {0xEE, 0xEE, 0xEE}, 0xEE, 0xEEEE};
  const dfc_fcoe_params untouched = params;
};

// The whole traffic and the whole log of one request: the SLI mode, the region, its record, the region written back.
TEST_F(FcoeParamsTest, setting_them_reads_rewrites_and_writes_the_region) {
  const Image present = with_bytes(default_region23(), kRecord, {0xA0, 2, 7, 0, 0x0E, 0xFC, 0x05, 0x99, 0xFF, 0xFF, 0xFF, 0xFF});
  const Image changed = with_bytes(default_region23(), kRecord, {0xA0, 2, 1, 1, 0x0E, 0xFC, 0x10, 0x99, 0xEA, 0x03, 0, 0});
  expect_read(present);
  expect_update(23, changed);
  start_log();

  params = {.fcMap = {0x0E, 0xFC, 0x10}, .vlanValid = 1, .vlanId = 1002};
  EXPECT_EQ(set(), DFC_OK);
  EXPECT_EQ(log(), driver_info_lines() +      // the adapter's SLI mode
                       driver_info_lines() +  // and the dump's own question
                       call_line("DFC_IssueDumpMBox", 3469, "TREL_MGMT_HBA_ISSUE_DMP_MBX") +
                       ok_line("DFC_IssueDumpMBox", 3472, "TREL_MGMT_HBA_ISSUE_DMP_MBX") +
                       log_line("searchRegion23", 4423, "ERROR: A0 Found") + driver_info_lines() +  // and the update's
                       call_line("DFC_IssueUpdateCfgMBox", 3559, "TREL_MGMT_HBA_ISSUE_UPD_MBX") +
                       ok_line("DFC_IssueUpdateCfgMBox", 3562, "TREL_MGMT_HBA_ISSUE_UPD_MBX"));
}

struct Setting {
  std::uint8_t vlan_valid;
  std::uint16_t vlan_id;
  test::ByteVector stored;  // flags, FC-MAP, the byte that is left as found, VLAN word
};

TEST_F(FcoeParamsTest, only_1_makes_a_vlan_id_valid_and_12_bits_of_it_are_kept) {
  const Setting kSettings[] = {{1, 0x1234, {1, 0xA, 0xB, 0xC, 0, 0x34, 0x02, 0, 0}},
                               {2, 0x1234, {0, 0xA, 0xB, 0xC, 0, 0, 0, 0, 0}},
                               {0, 0x0234, {0, 0xA, 0xB, 0xC, 0, 0, 0, 0, 0}}};
  for (const Setting& each : kSettings) {
    expect_read(default_region23());
    expect_update(23, with_bytes(default_region23(), kRecord + 3, each.stored), 0x77);
    params = {.fcMap = {0xA, 0xB, 0xC}, .vlanValid = each.vlan_valid, .vlanId = each.vlan_id};
    EXPECT_EQ(set(), 0x77u);
  }
}

TEST_F(FcoeParamsTest, reading_them_fills_the_record_byte_for_byte) {
  expect_read(with_bytes(default_region23(), kRecord, {0xA0, 2, 1, 0xFD, 0x0E, 0xFC, 0x10, 0x99, 0x34, 0xF2, 0xFF, 0xFF}));
  EXPECT_EQ(get(), DFC_OK);
  EXPECT_EQ(test::bytes_of(params), (test::ByteVector{1, 0xEE, 0xEE, 0xEE, 0x0E, 0xFC, 0x10, 1, 0x34, 0x02}));

  expect_read(with_bytes(default_region23(), kRecord + 3, {0xFE}));
  EXPECT_EQ(get(), DFC_OK);
  EXPECT_EQ(params.vlanValid, 0);
}

TEST_F(FcoeParamsTest, reading_knows_version_2_only_and_writing_makes_it_so) {
  // The version is the length of the record's data: with 83 words the next record is the third one, and the image needs a fourth.
  const Image other_version = with_bytes(with_bytes(default_region23(), kRecord, {0xA0, 83}), 360, {0xFF});
  expect_read(other_version);
  EXPECT_EQ(get(), DFC_TOO_SMALL);
  EXPECT_EQ(test::bytes_of(params), test::bytes_of(untouched));

  expect_read(other_version);
  expect_update(23, with_bytes(other_version, kRecord, {0xA0, 2, 1, 0, 1, 2, 3, 0, 0}));
  params = {.fcMap = {1, 2, 3}};
  EXPECT_EQ(set(), DFC_OK);
}

TEST_F(FcoeParamsTest, an_image_without_the_record_is_told_in_two_ways) {
  const Image image = with_bytes(default_region23(), kRecord, {0xA2});
  expect_read(image);
  EXPECT_EQ(get(), DFC_FAILED);
  expect_read(image);
  EXPECT_EQ(set(), DFC_RECORD_NOT_FOUND);
}

TEST_F(FcoeParamsTest, are_for_sli_mode_4_and_above) {
  const auto run_both = [&](std::uint32_t result, auto expect) {
    expect();
    EXPECT_EQ(get(), result);
    expect();
    EXPECT_EQ(set(), result);
  };
  run_both(DFC_UNSUPPORTED, [&] { expect_driver_info(3); });
  run_both(DFC_FAILED, [&] { expect_no_driver_info(); });
  run_both(DFC_FAILED, [&] {
    expect_driver_info(4);
    expect_no_driver_info();
  });
  test::c_library.refused_bytes = 1024;
  run_both(DFC_NO_MEMORY, [&] { expect_driver_info(4); });
  EXPECT_EQ(test::bytes_of(params), test::bytes_of(untouched));
}

}  // namespace
}  // namespace vaskdfc
