// Revisions, driver information, kernel messages and test events.
#include <cstring>
#include <vector>

#include "sim_process.h"

namespace {

TEST(Info, module_information_is_a_text_about_the_driver) {
  json scenario = small_scenario();
  scenario["driver"]["interfaces"] = {"vaskfcoe-mgmt", "trel-mgmt"};
  under_scenario(scenario, [] {
    Session session;
    auto information = garbage<dfc_module_info>();
    EXPECT_EQ(session.call<Callback::kModInfo>({}, information).status, 0u);
    EXPECT_EQ(text(information.bytes),
              "name: vaskfcoe\nversion: 1.2.3.4\nvendor: ZAV\ninterfaces: vaskfcoe-mgmt, trel-mgmt\nadapters: 1\n");
    EXPECT_EQ(information.bytes[sizeof(information.bytes) - 1], 0);
  });
}

TEST(Info, the_drivers_side_of_the_interface_names_the_interface_that_was_opened) {
  json scenario = small_scenario();
  scenario["driver"]["interfaces"] = {"trel-mgmt", "vaskfcoe-mgmt"};
  under_scenario(scenario, [] {
    Session session;
    auto revision = garbage<dfc_interface_rev>();
    EXPECT_EQ(session.call<Callback::kCallVer>({}, revision).status, 0u);
    EXPECT_EQ(revision.version, 0x2000101u);
    EXPECT_EQ(text(revision.name), "vaskfcoe-mgmt");
    EXPECT_EQ(text(revision.vendor), "ZAV");
    EXPECT_EQ(revision.callback_count, 77u);

    vmk_MgmtUserHandle inbox = nullptr;
    ASSERT_EQ(open_handle(Signature("trel-mgmt"), inbox), std::uint32_t{VMKMGMT_SIM_OK});
    dfc_mgmt_hdr header{};
    EXPECT_EQ(vmk_MgmtUserCallbackInvokeInt(inbox, 0, facts_of(Callback::kCallVer).id, 2, &header, &revision), 0);
    EXPECT_EQ(text(revision.name), "trel-mgmt");
  });
}

vaskdfc::DriverInfoReply driver_information(Session& session, std::uint32_t board) {
  auto reply = garbage<vaskdfc::DriverInfoReply>();
  const dfc_mgmt_hdr header = session.call<Callback::kGetTrelDfcInfo>({.brdno = board, .arg2 = sizeof(reply)}, reply);
  EXPECT_EQ(header.status, 0u);
  EXPECT_EQ(header.arg3, 120u);
  return reply;
}

TEST(Info, driver_information_tells_the_generation_and_the_kind_of_adapter) {
  in_process({}, [] {
    Session session;
    const auto converged = driver_information(session, 1);
    EXPECT_EQ(converged.sli_mode, 4u);
    EXPECT_EQ(converged.feature_flags, 0x407u);
    EXPECT_EQ(converged.word_108, 1u);
    EXPECT_EQ(converged.adapter_type, 24u);
    EXPECT_EQ(text(converged.bytes_0), "11.4.204.25");
    EXPECT_EQ(std::vector(converged.bytes_64, converged.bytes_64 + 8),
              (std::vector<std::uint8_t>{0x10, 0, 0, 0x5a, 0x41, 0x56, 0x02, 0x01}));

    const auto older = driver_information(session, 7);
    EXPECT_EQ(older.sli_mode, 3u);
    EXPECT_EQ(older.feature_flags, 0x401u);
    EXPECT_EQ(older.adapter_type, 16u);

    EXPECT_EQ(driver_information(session, 3).feature_flags, 0x403u);
    EXPECT_EQ(driver_information(session, 4).feature_flags, 0x3u) << "its driver cannot keep the link down";

    EXPECT_EQ(driver_information(session, 12).sli_mode, 3u) << "a failed adapter's driver still answers";
  });
}

TEST(Info, extended_mailboxes_are_supported_by_running_adapters_of_the_newer_interface) {
  json scenario = small_scenario();
  const auto support = [&](int sli_mode, const char* condition) {
    scenario["adapters"][0]["sli_mode"] = sli_mode;
    scenario["adapters"][0]["condition"] = condition;
    return [&](std::uint32_t status) {
      under_scenario(scenario, [=] {
        Session session;
        EXPECT_EQ(session.call<Callback::kMboxSliCfgExtSup>({.brdno = 2}).status, status);
      });
    };
  };
  support(4, "ok")(VMKMGMT_SIM_DRIVER_OK);
  support(4, "failed")(VMKMGMT_SIM_DRIVER_NOT_READY);
  support(3, "ok")(VMKMGMT_SIM_DRIVER_NOT_SUPPORTED);
  support(3, "failed")(VMKMGMT_SIM_DRIVER_NOT_SUPPORTED);
}

TEST(Info, kernel_messages_are_kept_as_printable_lines) {
  const TemporaryFolder folder;
  in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [] {
    Session session;
    for (const char* message : {"first", "", "tab\tback\\slash \xC3\xBC\n"}) {
      dfc_kernel_message record{};
      std::strcpy(record.text, message);
      EXPECT_EQ(session.call<Callback::kLogMsg>({}, record).status, 0u);
    }
    dfc_kernel_message full;
    std::memset(full.text, 'x', sizeof(full.text));
    EXPECT_EQ(session.call<Callback::kLogMsg>({}, full).status, 0u);
  });
  EXPECT_EQ(read_file(folder.path("kernel.log")),
            "first\n\ntab\\x09back\\x5Cslash \\xC3\\xBC\\x0A\n" + std::string(64, 'x') + "\n");
}

TEST(Info, the_kernel_log_keeps_the_newest_messages) {
  const TemporaryFolder folder;
  std::string old;
  std::string expected;
  for (int i = 0; i < 256; ++i) old += "message " + std::to_string(i) + "\n";
  for (int i = 1; i < 256; ++i) expected += "message " + std::to_string(i) + "\n";
  folder.write("kernel.log", old);
  in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [] {
    Session session;
    const dfc_kernel_message record{"the newest"};
    session.call<Callback::kLogMsg>({}, record);
  });
  EXPECT_EQ(read_file(folder.path("kernel.log")), expected + "the newest\n");
}

TEST(Info, test_events_are_counted_and_the_newest_are_queued) {
  const TemporaryFolder folder;
  in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [] {
    Session session;
    for (std::uint32_t i = 0; i < 66; ++i) {
      EXPECT_EQ(session.call<Callback::kEventTest>({.brdno = 1, .arg4 = 0xFFFFFFFF - i, .arg6 = i}).status, 0u);
    }
    EXPECT_EQ(session.call<Callback::kEventTest>({.brdno = 2}).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_BOARD});
  });
  const json state = json::parse(read_file(folder.path("adapter-1000005a41560201.json")));
  EXPECT_EQ(state["events_raised"], 66);
  EXPECT_EQ(state["events"].size(), 64u);
  EXPECT_EQ(state["events"].front(), json::array({2, 0xFFFFFFFD}));
  EXPECT_EQ(state["events"].back(), json::array({65, 0xFFFFFFBE}));
}

}  // namespace
