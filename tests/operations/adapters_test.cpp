// Start and stop, what the driver tells about itself and its adapters, parameters, states, resets.
#include <sys/time.h>

#include <memory>

#include "calls.h"

namespace {

TEST(Start, describes_every_adapter) {
  std::array<dfc_brd_info, DFC_MAX_BOARDS> boards{};
  EXPECT_EQ(OPERATION(DFC_InitDiagEnv)(boards.data(), DFC_MAX_BOARDS), kAdapters);
  EXPECT_EQ(boards[kConverged].pci_id, 0x56025A41u);
  std::array<dfc_brd_info_short, DFC_MAX_BOARDS> older{};
  EXPECT_EQ(OPERATION(InitDiagEnv)(older.data()), kAdapters);
  EXPECT_EQ(older[kOlder].pci_id, 0x56015A41u);
  EXPECT_EQ(OPERATION(DFC_FreeDiagEnv)(), 0u);
  EXPECT_EQ(OPERATION(FreeDiagEnv)(), 0u);
}

TEST(Start, is_not_needed_for_what_the_library_knows_itself) {
  std::uint32_t major = 9;
  std::uint32_t minor = 9;
  EXPECT_EQ(OPERATION(GetDfcRev)(&major, &minor), 0u);
  EXPECT_EQ(major, 4u);
  EXPECT_EQ(minor, 0u);
  std::array<char, DFC_LIB_VERSION_BYTES> version{};
  const std::uint32_t length = OPERATION(DFC_GetLibVer)(version.data());
  EXPECT_GT(length, 0u);
  EXPECT_EQ(length, std::strlen(version.data()));
  const timeval noon{.tv_sec = 43200, .tv_usec = 0};
  std::array<char, 20> text{};
  EXPECT_EQ(OPERATION(trel_GetTimeOfDay)(&noon, text.data(), text.size()), 19);
  EXPECT_STREQ(text.data(), "1970-01-01T12:00:00");
  EXPECT_EQ(OPERATION(trel_isLeap)(2000), 1u);
  EXPECT_EQ(OPERATION(trel_isLeap)(1900), 0u);
  std::array<std::uint8_t, 4> data{1, 2, 3, 4};
  OPERATION(SwapPciData)(data.data(), data.size());
  EXPECT_EQ(data, (std::array<std::uint8_t, 4>{1, 2, 3, 4})) << "every supported host is little-endian";
}

TEST_F(Operations, tell_about_the_driver) {
  dfc_interface_rev driver{};
  dfc_interface_rev library{};
  EXPECT_EQ(OPERATION(CallVer)(&driver, &library), 0u);
  EXPECT_STREQ(driver.name, "vaskfcoe-mgmt");
  EXPECT_EQ(driver.callback_count, library.callback_count);
  dfc_module_info module{};
  EXPECT_EQ(OPERATION(ModInfo)(&module), 0u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(module.bytes), 15), "name: vaskfcoe\n");
  dfc_kernel_message message{"every operation"};
  EXPECT_EQ(OPERATION(LogMsg)(&message), 0u);
  dfc_drv_info info{};
  EXPECT_EQ(OPERATION(DFC_GetDrvInfo)(kOlder, &info), DFC_OK);
  EXPECT_EQ(info.sli_mode, 3u);
  EXPECT_EQ(info.port_fc_id, 0x010c00u);
  EXPECT_EQ(OPERATION(EventTest)(kConverged, 1, 2), 0u);
}

TEST_F(Operations, change_parameters) {
  const auto table = std::make_unique<dfc_cfg_table>();
  EXPECT_EQ(OPERATION(GetCfgParam)(kOlder, table.get()), 18u);
  constexpr std::uint32_t kLunQueueDepth = 3;
  EXPECT_STREQ(reinterpret_cast<const char*>(table->entries[kLunQueueDepth].bytes), "lun_queue_depth");
  EXPECT_EQ(word_at(table->entries[kLunQueueDepth], 44), 30u);
  EXPECT_EQ(OPERATION(SetCfgParam)(kOlder, kLunQueueDepth, 64), DFC_OK);
  EXPECT_EQ(OPERATION(SetCfgParam)(kOlder, kLunQueueDepth, 0), DFC_FAILED) << "below the minimum";
  EXPECT_EQ(OPERATION(GetCfgParam)(kOlder, table.get()), 18u);
  EXPECT_EQ(word_at(table->entries[kLunQueueDepth], 44), 64u);
}

TEST_F(Operations, tell_about_link_and_nodes) {
  for (const auto operation : {OPERATION(DFC_GetLinkInfo), OPERATION(GetLinkInfo)}) {
    dfc_link_info link{};
    EXPECT_EQ(operation(kConverged, &link), DFC_OK);
    EXPECT_EQ(link.words_0[2], 0x010a00u);
  }
  const auto nodes = std::make_unique<dfc_node_table>();
  EXPECT_EQ(OPERATION(GetNodeInfo)(kConverged, nodes.get()), 3u);
  EXPECT_EQ(name_text(nodes->entries[0].name_8), name_text(kArrayPort));
  dfc_io_info io{};
  EXPECT_EQ(OPERATION(GetIOinfo)(kPlugged, &io), DFC_OK);
  EXPECT_EQ(io.counters[0], 0u) << "no unit can be reached";
  dfc_vpd_info vpd{};
  EXPECT_EQ(OPERATION(GetVPDInfo)(kConverged, &vpd), DFC_OK);
  EXPECT_STREQ(vpd.text_340, "ZK56020A1174");
  vpd.selector = 9;
  EXPECT_EQ(OPERATION(GetVPDInfo)(kConverged, &vpd), DFC_VPD_BAD0084);
}

TEST_F(Operations, switch_states) {
  EXPECT_EQ(OPERATION(SetBrdEnv)(kConverged, 0), 1u) << "online";
  EXPECT_EQ(OPERATION(SetDiagEnv)(0), 2u) << "the last adapter is not ready";
}

TEST_F(Operations, reset_and_dump) {
  EXPECT_EQ(OPERATION(DFC_ResetAdapter)(kPlugged, DFC_RESET_TYPE_3), DFC_OK);
  EXPECT_EQ(OPERATION(DFC_ResetAdapter)(kPlugged, 9), DFC_RESET_NO_SUCH_TYPE);
  std::array<std::uint32_t, DFC_DUMP_REGION_BYTES / 4> descriptor{};
  std::uint32_t length = DFC_DUMP_REGION_BYTES;
  EXPECT_NE(OPERATION(DFC_GetDriverDumpRegion)(kOlder, 1, descriptor.data(), &length), DFC_OK) << "there is no dump yet";
  EXPECT_EQ(OPERATION(DFC_SetDumpEnv)(kOlder, DFC_DUMP_MODE_INDUCE), DFC_DUMP_INDUCED);
  length = DFC_DUMP_REGION_BYTES;
  EXPECT_EQ(OPERATION(DFC_GetDriverDumpRegion)(kOlder, 1, descriptor.data(), &length), DFC_OK);
  EXPECT_EQ(length, DFC_DUMP_REGION_BYTES);
  EXPECT_EQ(descriptor[0], 1u);
}

}  // namespace
