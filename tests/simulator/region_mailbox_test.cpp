// Configuration regions in mailboxes of the older generation.
#include <algorithm>
#include <filesystem>

#include "mailbox_exchange.h"
#include "region_calls.h"

namespace {

TEST(RegionMailbox, an_older_adapters_region_is_written_whole_and_read_in_pieces) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(update_mailbox(23, pattern(1024, 3)).issue(session, kOlder), 0u);
    std::vector<std::uint8_t> gathered;
    for (int piece = 0; piece < 8; ++piece) {
      MailboxExchange dump = dump_mailbox(23, static_cast<std::uint16_t>(gathered.size()), 128);
      EXPECT_EQ(dump.issue(session, kOlder), 0u);
      ASSERT_EQ(dump.at(16), 128u);
      gathered.insert(gathered.end(), dump.extension.data, dump.extension.data + 128);
      EXPECT_EQ(dump.extension.data[128], 0xA5) << "beyond what was delivered";
    }
    EXPECT_EQ(gathered, pattern(1024, 3));
  });
}

TEST(RegionMailbox, a_dump_delivers_the_least_of_what_is_wanted_what_fits_and_what_is_left) {
  in_process({}, [] {
    Session session;
    ASSERT_EQ(update_mailbox(23, pattern(1024, 3)).issue(session, kOlder), 0u);
    struct Window {
      std::uint16_t offset;
      std::uint32_t wanted, room, delivered;
    };
    for (const Window& window :
         {Window{0, 128, 512, 128}, Window{0, 1024, 512, 512}, Window{1000, 128, 512, 24}, Window{1024, 128, 512, 0},
          Window{0xFFFF, 128, 512, 0}, Window{0, 0, 512, 0}, Window{0, 128, 0, 0}, Window{0, 0xFFFFFFFF, 0xFFFFFFFF, 1024}}) {
      MailboxExchange dump = dump_mailbox(23, window.offset, window.wanted);
      dump.extension.wanted_bytes = window.room;
      EXPECT_EQ(dump.issue(session, kOlder), 0u);
      EXPECT_EQ(dump.at(16), window.delivered) << window.offset << " " << window.wanted << " " << window.room;
    }
  });
}

TEST(RegionMailbox, a_large_region_is_dumped_no_further_than_the_extension_reaches) {
  json scenario = small_scenario();
  scenario["adapters"][0]["sli_mode"] = 3;
  scenario["adapters"][0]["regions"] = json::parse(R"([{"region": 160, "image": "01"}])");
  under_scenario(scenario, [] {
    Session session;
    MailboxExchange dump = dump_mailbox(160, 0, 4096);
    dump.extension.wanted_bytes = 4096;
    EXPECT_EQ(dump.issue(session, 2), 0u);
    EXPECT_EQ(dump.at(16), 2048u);
    EXPECT_EQ(dump.extension.data[0], 1);
    EXPECT_EQ(dump.extension.data[2047], 0);
  });
}

TEST(RegionMailbox, the_built_in_older_adapter_has_a_valid_region_22) {
  in_process({}, [] {
    Session session;
    MailboxExchange dump = dump_mailbox(22, 0, 512);
    EXPECT_EQ(dump.issue(session, kOlder), 0u);
    EXPECT_EQ(dump.at(16), 512u);
    EXPECT_EQ(std::string(dump.extension.data, dump.extension.data + 5), "RG22\x01");
    const auto* const end =
        std::ranges::find_if(std::rbegin(dump.extension.data) + 2048 - 512, std::rend(dump.extension.data), [](std::uint8_t byte) {
          return byte != 0;
        }).base();
    EXPECT_GT(end - dump.extension.data, 8 + 2 * 16) << "no third entry";
    EXPECT_LE(end - dump.extension.data, 8 + 3 * 16);
  });
}

TEST(RegionMailbox, a_dump_of_a_missing_region_completes_with_its_code) {
  json scenario = small_scenario();
  scenario["adapters"][0]["sli_mode"] = 3;
  scenario["adapters"][0]["regions"] = json::parse(R"([{"region": 22, "missing": "0xFFF7"}, {"region": 8, "missing": "0xFFF6"}])");
  under_scenario(scenario, [] {
    Session session;
    for (const auto& [region, code] :
         {std::pair{22, 0xFFF7u}, std::pair{8, 0xFFF6u}, std::pair{23, 0xFFFDu}, std::pair{31, 0xFFFDu}}) {
      MailboxExchange dump = dump_mailbox(static_cast<std::uint16_t>(region), 0, 128);
      EXPECT_EQ(dump.issue(session, 2), code) << region;
      EXPECT_EQ(dump.at(16), 0u);
    }
  });
}

TEST(RegionMailbox, an_update_that_does_not_fit_its_region_is_refused_and_writes_nothing) {
  in_process({}, [] {
    Session session;
    const auto refuse = [&](MailboxExchange update, const char* what) {
      EXPECT_EQ(update.issue(session, kOlder), std::uint32_t{VMKMGMT_SIM_MAILBOX_BAD_REQUEST}) << what;
    };
    for (const std::size_t size : {0u, 4u, 1020u, 1028u, 2048u}) refuse(update_mailbox(23, pattern(size, 1)), "another size");
    refuse(update_mailbox(31, {}), "no such region");
    refuse(update_mailbox(160, pattern(4096, 1)), "more than an extension holds");

    MailboxExchange too_short = update_mailbox(23, pattern(1024, 1));
    too_short.extension.sent_bytes = 1023;
    refuse(too_short, "not all sent");
    MailboxExchange unmarked = update_mailbox(23, pattern(1024, 1));
    unmarked.at(4) = 0x33;
    refuse(unmarked, "without the marker");
    EXPECT_EQ(dump_mailbox(23, 0, 128).issue(session, kOlder), 0xFFFDu);
  });
}

TEST(RegionMailbox, a_dump_without_the_marker_is_refused) {
  in_process({}, [] {
    Session session;
    MailboxExchange dump = dump_mailbox(22, 0, 128);
    dump.at(4) = 0x132;
    EXPECT_EQ(dump.issue(session, kOlder), 0u) << "only the byte counts";
    dump = dump_mailbox(22, 0, 128);
    dump.at(4) = 0x31;
    EXPECT_EQ(dump.issue(session, kOlder), std::uint32_t{VMKMGMT_SIM_MAILBOX_BAD_REQUEST});
  });
}

TEST(RegionMailbox, newer_adapters_do_not_know_the_region_commands) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(dump_mailbox(23, 0, 128).issue(session, kNewer), std::uint32_t{VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND});
    EXPECT_EQ(update_mailbox(23, pattern(1024, 1)).issue(session, kNewer), std::uint32_t{VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND});
  });
}

TEST(RegionMailbox, both_generations_keep_the_same_regions_in_a_state_folder) {
  const TemporaryFolder folder;
  json scenario = small_scenario();
  const auto process = [&](int sli_mode, const std::function<void(Session&)>& body) {
    scenario["adapters"][0]["sli_mode"] = sli_mode;
    in_process({{VMKMGMT_SIM_STATE, folder.path("state")}, {VMKMGMT_SIM_SCENARIO, folder.write("scenario", scenario.dump())}}, [&] {
      Session session;
      body(session);
    });
  };
  process(3, [](Session& session) { EXPECT_EQ(update_mailbox(23, pattern(1024, 6)).issue(session, 2), 0u); });
  process(4, [](Session& session) { EXPECT_EQ(dump_region(session, 2, 23).delivered(), pattern(1024, 6)); });
}

TEST(RegionMailbox, an_update_that_cannot_be_stored_is_a_driver_status) {
  const TemporaryFolder folder;
  const std::string file = region_file(22, "1000005a41560120");
  in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [&] {
    Session session;
    std::filesystem::create_directory(folder.path(file + ".new"));
    MailboxExchange update = update_mailbox(22, pattern(512, 1));
    update.header.brdno = kOlder;
    EXPECT_EQ(session.call<Callback::kMbox>(update.header, update.data, update.mailbox, update.extension).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_STATE_NOT_SAVED});
  });
  EXPECT_FALSE(std::filesystem::exists(folder.path(file)));
}

}  // namespace
