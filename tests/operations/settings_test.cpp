// Mailboxes, configuration regions, raw access, loopback, priority and OAS rules, and what has no function here.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "calls.h"

namespace {

constexpr std::uint32_t kReadLink = 0x200;  // a mailbox with command 0x02
constexpr std::uint32_t kOlderReplyBytes = 128;
constexpr std::uint32_t kRegion = 23;

using Mailbox = std::array<std::uint32_t, DFC_MBOX_WORDS>;

TEST_F(Operations, send_mailboxes) {
  Mailbox once{kReadLink};
  EXPECT_EQ(OPERATION(IssueMbox)(kOlder, once.data(), 4, 16), DFC_OK);
  EXPECT_EQ(once[2], 0x010c00u) << "its FC id";
  EXPECT_EQ(OPERATION(IssueMbox)(kConverged, once.data(), 4, 16), DFC_MBOX_NOT_TAKEN);
  Mailbox extended{kReadLink};
  EXPECT_EQ(OPERATION(IssueMboxEx)(kOlder, extended.data(), nullptr, 0, 0, 0), DFC_OK);
  EXPECT_EQ(extended[2], once[2]);
  Mailbox retried{kReadLink};
  EXPECT_EQ(OPERATION(DFC_IssueMboxWithRetry)(kOlder, retried.data(), 32, kOlderReplyBytes, 1, 0), DFC_OK);
  EXPECT_EQ(retried[2], once[2]);
  Mailbox both{kReadLink};
  EXPECT_EQ(OPERATION(DFC_IssueMboxWithRetryEx)(kOlder, both.data(), nullptr, 0, 0, 0, 1, 0), DFC_OK);
  EXPECT_EQ(both[2], once[2]);
  Mailbox newer{kReadLink};
  EXPECT_EQ(OPERATION(DFC_IssueMboxWithRetryV2)(kConverged, newer.data(), DFC_MBOX_WORDS, 1, 0), DFC_OK);
  EXPECT_EQ(newer[2], 0x010a00u);
}

TEST_F(Operations, send_configuration_mailboxes) {
  constexpr std::uint32_t kRead = 1;
  std::array<std::uint32_t, 1024> mailbox{0x9B00, 1};
  mailbox[6] = 0xAC;
  std::memcpy(&mailbox[9], "nothing", 7);
  EXPECT_EQ(OPERATION(IssueExtendedSLIConfig)(kConverged, mailbox.data(), kRead, 0, DFC_MBOX_WORDS), DFC_OK);
  EXPECT_EQ(mailbox[0] >> 16, 0x0103u) << "there is no such object";
  EXPECT_EQ(OPERATION(IssueExtendedSLIConfig)(kOlder, mailbox.data(), kRead, 0, DFC_MBOX_WORDS), DFC_UNSUPPORTED);
}

TEST_F(Operations, write_and_dump_regions) {
  std::vector<std::uint8_t> image(DFC_REGION23_BYTES, 0x77);
  std::uint32_t reply_word = 9;
  EXPECT_EQ(
      OPERATION(DFC_IssueUpdateCfgMBox)(kConverged, DFC_UPDATE_TYPE_REGION, kRegion, image.data(), DFC_REGION23_BYTES, &reply_word),
      DFC_OK);
  EXPECT_EQ(reply_word, 0u);
  std::vector<std::uint8_t> dump(DFC_REGION23_BYTES);
  std::uint32_t length = DFC_REGION23_BYTES;
  EXPECT_EQ(OPERATION(DFC_IssueDumpMBox)(kConverged, DFC_DUMP_TYPE_REGION, 0, kRegion, 0, dump.data(), &length), DFC_OK);
  EXPECT_EQ(dump, image);
  EXPECT_EQ(OPERATION(LegacySetRegion23)(kOlder, image.data(), DFC_REGION23_BYTES), DFC_OK);
  std::vector<std::uint8_t> older(DFC_REGION23_BYTES);
  EXPECT_EQ(OPERATION(LEG_IssueDumpMBox)(kOlder, older.data(), &length, kRegion), DFC_OK);
  EXPECT_EQ(older, image);
}

TEST_F(Operations, keep_settings_in_region_23) {
  EXPECT_EQ(OPERATION(DFC_InitR23)(kConverged), DFC_OK);
  std::uint8_t* image = nullptr;
  std::uint32_t size = 0;
  EXPECT_EQ(OPERATION(GetRegion23)(kConverged, &image, &size, 4), DFC_OK);
  const std::unique_ptr<std::uint8_t, decltype(&std::free)> owned(image, &std::free);
  ASSERT_EQ(size, DFC_REGION23_BYTES);
  EXPECT_EQ(std::string(image, image + 4), "RG23");
  EXPECT_EQ(OPERATION(DFC_SetPersistLinkDown)(kConverged, 1), DFC_OK);
  std::uint16_t value = 0;
  EXPECT_EQ(OPERATION(DFC_GetPersistLinkDown)(kConverged, &value), DFC_OK);
  EXPECT_EQ(value, 1);
}

TEST_F(Operations, keep_settings_in_regions_22_and_14) {
  EXPECT_EQ(OPERATION(DFC_InitR22)(kConverged), DFC_OK);
  const dfc_region22_entry entry{{1, 2, 3}};
  EXPECT_EQ(OPERATION(DFC_SetRegion22)(kConverged, &entry, 1), DFC_OK);
  std::array<dfc_region22_entry, DFC_REGION22_ENTRIES> entries{};
  std::uint32_t count = 0;
  EXPECT_EQ(OPERATION(DFC_GetRegion22)(kConverged, entries.data(), &count), DFC_OK);
  EXPECT_EQ(count, DFC_REGION22_ENTRIES);
  EXPECT_EQ(entries[0].bytes[2], 3);
  const std::vector<std::uint8_t> opaque(DFC_REGION14_BYTES, 0x14);
  EXPECT_EQ(OPERATION(DFC_SetRegion14)(kConverged, opaque.data()), DFC_OK);
  EXPECT_EQ(OPERATION(DFC_SetRegion14)(kVirtual, opaque.data()), DFC_UNSUPPORTED) << "not of an FCoE type";
  std::vector<std::uint8_t> blank(DFC_REGION22_BYTES);
  EXPECT_EQ(OPERATION(LegacySetRegion22)(kOlder, blank.data(), DFC_REGION22_BYTES), DFC_OK);
  EXPECT_EQ(OPERATION(DFC_GetRegion22)(kOlder, entries.data(), &count), DFC_REGION22_NO_IMAGE);
}

TEST_F(Operations, set_fcoe_parameters) {
  EXPECT_EQ(OPERATION(DFC_InitR23)(kConverged), DFC_OK);
  const dfc_fcoe_params wanted{.version = 0, .caller_1 = {}, .fcMap = {0x0e, 0xfc, 0x01}, .vlanValid = 1, .vlanId = 7};
  EXPECT_EQ(OPERATION(DFC_FCoESetParams)(kConverged, &wanted), DFC_OK);
  dfc_fcoe_params params{};
  EXPECT_EQ(OPERATION(DFC_FCoEGetParams)(kConverged, &params), DFC_OK);
  EXPECT_EQ(params.fcMap[2], 1);
  EXPECT_EQ(params.vlanId, 7);
  dfc_fcf_conn_list list{};
  list.numEntries = 1;
  list.entries[0].vlan_id = 1002;
  EXPECT_EQ(OPERATION(DFC_FCoESetFCFConnectList)(kConverged, &list), DFC_OK);
  dfc_fcf_conn_list stored{};
  stored.numEntries = DFC_FCF_CONNECT_ENTRIES;
  EXPECT_EQ(OPERATION(DFC_FCoEGetFCFConnectList)(kConverged, &stored), DFC_OK);
  EXPECT_EQ(stored.numEntries, 1);
  EXPECT_EQ(stored.entries[0].vlan_id, 1002);
}

TEST_F(Operations, list_forwarders) {
  constexpr std::uint16_t kRoom = 4;
  const std::unique_ptr<void, decltype(&std::free)> memory(std::calloc(1, sizeof(dfc_fcf_list) + kRoom * sizeof(fcf_entry)),
                                                           &std::free);
  auto* const list = static_cast<dfc_fcf_list*>(memory.get());
  list->numEntries = kRoom;
  EXPECT_EQ(OPERATION(DFC_FCoEGetFCFList)(kConverged, list), DFC_OK);
  EXPECT_EQ(list->numEntries, 3);
  EXPECT_EQ(list->entries[0].macAddress[5], 1);
  EXPECT_EQ(OPERATION(DFC_FCoEGetFCFList)(kOlder, list), DFC_UNSUPPORTED);
}

TEST_F(Operations, reach_memory_and_registers) {
  constexpr std::uint32_t kScratch = 0x0C;
  const std::array<std::uint8_t, 4> written{4, 3, 2, 1};
  EXPECT_EQ(OPERATION(WriteMem)(kOlder, written.data(), 0x100, written.size()), DFC_OK);
  std::array<std::uint8_t, 4> read{};
  EXPECT_EQ(OPERATION(ReadMem)(kOlder, read.data(), 0x100, read.size()), DFC_OK);
  EXPECT_EQ(read, written);
  EXPECT_EQ(OPERATION(ReadMem)(kConverged, read.data(), 0x100, read.size()), DFC_ACCESS_NOT_SLI3);
  const std::uint32_t value = 0xCAFE;
  EXPECT_EQ(OPERATION(WriteCtlReg)(kOlder, &value, kScratch), DFC_OK);
  std::uint32_t kept = 0;
  EXPECT_EQ(OPERATION(ReadCtlReg)(kOlder, &kept, kScratch), DFC_OK);
  EXPECT_EQ(kept, value);
}

TEST_F(Operations, reach_configuration_space) {
  constexpr std::uint32_t kInterruptLine = 0x3C;
  std::uint32_t word = 0x42;
  EXPECT_EQ(OPERATION(WritePciCfg)(kOlder, &word, kInterruptLine, 1), DFC_OK);
  for (const auto operation : {OPERATION(DFC_ReadPciCfg), OPERATION(ReadPciCfg)}) {
    std::uint32_t found = 0;
    EXPECT_EQ(operation(kOlder, &found, kInterruptLine, sizeof(found)), DFC_OK);
    EXPECT_EQ(found & 0xFF, 0x42u);
    EXPECT_EQ(operation(kOlder, &found, 1, sizeof(found)), DFC_FAILED) << "not a multiple of 4";
  }
}

TEST_F(Operations, loop_data_back) {
  EXPECT_EQ(OPERATION(DFC_ConfigLoopback)(kPlugged, DFC_LOOPBACK_MODE_2, 0), DFC_OK);
  const std::array<std::uint8_t, 64> sent{'l', 'o', 'o', 'p'};
  std::array<std::uint8_t, 64> received{};
  const dfc_loopback loopback{.bufSize = sent.size(), .txBuf = sent.data(), .rxBuf = received.data()};
  EXPECT_EQ(OPERATION(DFC_RunLoopbackTest)(kPlugged, &loopback), DFC_OK);
  EXPECT_EQ(received, sent);
  EXPECT_EQ(OPERATION(DFC_EndLoopback)(kPlugged), DFC_OK);
  EXPECT_NE(OPERATION(DFC_RunLoopbackTest)(kPlugged, &loopback), DFC_OK) << "there is no loop any more";
}

TEST_F(Operations, keep_priorities) {
  EXPECT_EQ(OPERATION(DFC_QoSSetGlobalFlag)(kConverged, 1), DFC_OK);
  std::uint32_t flag = 0;
  EXPECT_EQ(OPERATION(DFC_QoSGetGlobalFlag)(kConverged, &flag), DFC_OK);
  EXPECT_EQ(flag, 1u);
  const auto list = std::make_unique<dfc_fcp_prio_list>();
  list->count = 1;
  list->entries[0].prio = 5;
  EXPECT_EQ(OPERATION(DFC_QoSSetConfig)(kConverged, list.get()), DFC_OK);
  const auto kept = std::make_unique<dfc_fcp_prio_list>();
  kept->count = 8;
  EXPECT_EQ(OPERATION(DFC_QoSGetConfig)(kConverged, kept.get()), DFC_OK);
  EXPECT_EQ(kept->count, 1u);
  EXPECT_EQ(kept->entries[0].prio, 5u);
  std::uint16_t speed = 0;
  EXPECT_EQ(OPERATION(DFC_GetQoSLinkSpeed)(kConverged, &speed), DFC_OK);
  EXPECT_EQ(speed, 1000);
  EXPECT_EQ(OPERATION(DFC_GetQoSLinkSpeed)(kOlder, &speed), DFC_UNSUPPORTED);
}

TEST_F(Operations, keep_rules_for_single_units) {
  EXPECT_EQ(OPERATION(DFC_SetOASLun)(kConverged, &kConvergedPort, &kArrayPort, 1, 0, 0, 1), DFC_OK);
  dfc_oas_lun_list list{};
  list.numEntries = 1;
  EXPECT_EQ(OPERATION(DFC_GetOASLunList)(kConverged, &kConvergedPort, &kArrayPort, 0, &list), DFC_OK);
  EXPECT_EQ(list.numEntries, 1u);
  EXPECT_EQ(list.entries[0].lun[1], 1);
}

TEST(Unimplemented, says_so) {
  const HbaWwn* const wwn = &kArrayPort;
  HbaWwn created{};
  std::uint32_t size = 0;
  EXPECT_EQ(OPERATION(AddBind)(0, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DelBind)(0, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_SendHaldeCommand)(0, nullptr, 0, nullptr, &size), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_VPCreate)(0, nullptr, &created), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_VPDelete)(0, wwn), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_VPDeleteV2)(0, wwn, 0), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_GetFcpTargetMappingByWWN)(0, wwn, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_GetAuthConfig)(0, nullptr, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_SetAuthConfig)(0, nullptr, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_DeleteAuthConfig)(0, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_GetAuthPassword)(0, nullptr, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_SetAuthPassword)(0, nullptr, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_InitiateAuthentication)(0, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_EnableAuthentication)(0), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_DisableAuthentication)(0), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_GetAuthStatus)(0, nullptr, nullptr), DFC_UNSUPPORTED);
  EXPECT_EQ(OPERATION(DFC_GetAuthConfigList)(0, nullptr, &size), DFC_UNSUPPORTED);
}

}  // namespace
