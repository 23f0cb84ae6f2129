// Resets of an adapter and dumps of its firmware.
#include <cstring>

#include "record_fields.h"

namespace {

using vaskdfc::AccessData;
using vaskdfc::DumpRegionReply;

constexpr std::uint32_t kOlder = 7;
constexpr std::uint32_t kNewer = 1;

std::uint32_t reset(Session& session, std::uint32_t board, std::uint32_t type) {
  return session.call<Callback::kReset>({.brdno = board, .arg6 = type}).status;
}

std::uint32_t generation(Session& session, std::uint32_t board) {
  return session.call<Callback::kHbaRefreshInfo>({.brdno = board}).arg4;
}

// The first word at a place in the memory of the older adapter; before that, what is written there.
std::uint32_t memory_word(Session& session, std::uint32_t address) {
  AccessData data{};
  session.call<Callback::kReadMem>({.brdno = kOlder, .arg1 = address, .arg2 = 4}, data);
  return word(data, 0);
}

void leave_traces(Session& session) {
  AccessData data{.bytes = {0x44, 0x33, 0x22, 0x11}};
  EXPECT_EQ(session.call<Callback::kWriteMem>({.brdno = kOlder, .arg1 = 0x100, .arg2 = 4}, data).status, 0u);
  EXPECT_EQ(session.call<Callback::kWriteCtlReg>({.brdno = kOlder, .arg1 = 0x0C, .arg4 = 5}).status, 0u);
  EXPECT_EQ(session.call<Callback::kWritePci>({.brdno = kOlder, .arg1 = 0x3C, .arg2 = 1}, data).status, 0u);
  EXPECT_EQ(session.call<Callback::kSetDiag>({.brdno = kOlder, .arg6 = 0x12}).arg4, 3u);
}

TEST(Reset, of_each_type_goes_further_than_the_one_before) {
  in_process({}, [] {
    Session session;
    for (std::uint32_t type = 1; type <= 3; ++type) {
      leave_traces(session);
      const std::uint32_t before = generation(session, kOlder);
      EXPECT_EQ(reset(session, kOlder, type), 0u);
      EXPECT_EQ(generation(session, kOlder), before + 1);
      EXPECT_EQ(session.call<Callback::kSetDiag>({.brdno = kOlder, .arg6 = 0x10}).arg4, 1u) << "online";
      EXPECT_EQ(memory_word(session, 0x100), type < 2 ? 0x11223344u : 0u) << type;
      EXPECT_EQ(session.call<Callback::kReadCtlReg>({.brdno = kOlder, .arg1 = 0x0C}).arg4, type < 2 ? 5u : 0u) << type;
      AccessData data{};
      session.call<Callback::kReadPci>({.brdno = kOlder, .arg1 = 0x3C, .arg2 = 1}, data);
      EXPECT_EQ(data.bytes[0], type < 3 ? 0x44 : 0x0B) << type;
    }
  });
}

TEST(Reset, begins_the_counters_anew_and_tells_that_the_link_went_and_came) {
  json scenario = small_scenario();
  scenario["clock"] = {{"step_ms", 1000}};
  scenario["adapters"][0]["counters"] = {{"tx_frames", {{"start", 100}, {"per_second", 1}}}};
  scenario["adapters"][0]["not_ready_reports"] = 1;
  under_scenario(scenario, [] {
    Session session;
    HbaPortStatistics statistics;
    session.call<Callback::kSetDiag>({.brdno = 2, .arg6 = 0x10});
    session.call<Callback::kHbaPortStatistics>({.brdno = 2}, statistics);
    EXPECT_EQ(statistics.TxFrames, 101);
    EXPECT_EQ(reset(session, 2, 1), 0u);
    session.call<Callback::kHbaPortStatistics>({.brdno = 2}, statistics);
    EXPECT_EQ(statistics.TxFrames, 1);
    vaskdfc::EventReply events;
    EXPECT_EQ(session.call<Callback::kHbaGetEvent>({.brdno = 2, .arg2 = 9}, events).arg3, 2u);
    EXPECT_EQ(word(events, 0), 3u);
    EXPECT_EQ(word(events, 20), 2u);
    EXPECT_EQ(session.call<Callback::kSetDiag>({.brdno = 2, .arg6 = 0x10}).arg4, 2u) << "not ready yet";
  });
}

TEST(Reset, types_that_the_driver_does_not_offer_are_refused) {
  json scenario = small_scenario();
  for (const bool offered : {true, false}) {
    scenario["driver"]["reset_type_3"] = offered;
    under_scenario(scenario, [=] {
      Session session;
      auto revision = garbage<vaskdfc::RevisionReply>();
      EXPECT_EQ(session.call<Callback::kGetDfcRev>({}, revision).status, 0u);
      EXPECT_EQ(revision.unread_0, 0x2000101u);
      EXPECT_EQ(revision.unread_4, 77u);
      EXPECT_EQ(revision.supports_reset_type_3, offered ? 1u : 0u);
      EXPECT_EQ(reset(session, 2, 3), offered ? 0u : std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
      for (const std::uint32_t type : {0u, 4u, 0xFFFFFFFFu}) {
        EXPECT_EQ(reset(session, 2, type), std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
      }
    });
  }
}

TEST(Reset, and_dump_of_a_failed_adapter_are_refused) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(reset(session, 12, 3), std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    EXPECT_EQ(session.call<Callback::kInduceDump>({.brdno = 12}).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
  });
}

dfc_mgmt_hdr dump_region(Session& session, std::uint32_t region, std::uint32_t room, DumpRegionReply& reply,
                         std::uint32_t board = kOlder) {
  return session.call<Callback::kGetDumpRegion>({.brdno = board, .arg2 = room, .arg3 = 99, .arg6 = region}, reply);
}

TEST(Dump, of_an_older_adapter_lies_in_its_memory_where_the_region_says) {
  in_process({}, [] {
    Session session;
    auto reply = garbage<DumpRegionReply>();
    EXPECT_EQ(dump_region(session, 1, 16, reply).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_DUMP});
    for (std::uint32_t number = 1; number <= 2; ++number) {
      const std::uint32_t before = generation(session, kOlder);
      EXPECT_EQ(session.call<Callback::kInduceDump>({.brdno = kOlder}).status, 0u);
      EXPECT_EQ(generation(session, kOlder), before + 1) << "the firmware started again";
      EXPECT_EQ(dump_region(session, 1, 16, reply).arg3, 16u);
      EXPECT_EQ(word(reply, 0), 1u);
      EXPECT_EQ(word(reply, 12), number);
      AccessData data{};
      session.call<Callback::kReadMem>({.brdno = kOlder, .arg1 = word(reply, 4), .arg2 = word(reply, 8)}, data);
      EXPECT_EQ(std::string(reinterpret_cast<const char*>(data.bytes), 4), "DUMP");
      EXPECT_EQ(word(data, 4), word(reply, 8));
      EXPECT_EQ(word(data, 12), before);
      EXPECT_EQ(std::string(reinterpret_cast<const char*>(data.bytes) + 16, word(data, 4) - 16),
                "model: Kestar K5601-FC8\nserial number: ZK56010C4420\nfirmware: 2.10a7\nport state: 2\ngeneration: " +
                    std::to_string(before) + "\n");
    }
    EXPECT_EQ(reset(session, kOlder, 1), 0u);
    EXPECT_EQ(dump_region(session, 1, 16, reply).status, 0u);
    EXPECT_EQ(reset(session, kOlder, 2), 0u);
    EXPECT_EQ(dump_region(session, 1, 16, reply).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_DUMP});
  });
}

TEST(Dump, regions_are_those_of_older_adapters_and_need_room) {
  in_process({}, [] {
    Session session;
    auto reply = garbage<DumpRegionReply>();
    session.call<Callback::kInduceDump>({.brdno = kOlder});
    const dfc_mgmt_hdr tight = dump_region(session, 1, 15, reply);
    EXPECT_EQ(tight.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_DUMP_ROOM});
    EXPECT_EQ(tight.arg3, 16u);
    for (const std::uint32_t region : {0u, 2u, 0xFFFFFFFFu}) {
      const dfc_mgmt_hdr none = dump_region(session, region, 16, reply);
      EXPECT_EQ(none.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_SUCH_REGION});
      EXPECT_EQ(none.arg3, 0u);
    }
    EXPECT_EQ(dump_region(session, 1, 16, reply, kNewer).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_SUPPORTED});
    EXPECT_EQ(word(reply, 0), 0xA5A5A5A5u);
  });
}

// An embedded read of the object `dump`; empty if there is none.
std::string dump_object(Session& session) {
  vaskdfc::MailboxData data{};
  const auto put = [&](std::size_t offset, std::uint32_t value) { std::memcpy(data.bytes + offset, &value, sizeof(value)); };
  put(0, 0x9B00);
  put(4, 1);
  data.bytes[24] = 0xAC;
  put(32, 512);
  std::strcpy(reinterpret_cast<char*>(data.bytes) + 36, "dump");
  EXPECT_EQ(session.call<Callback::kMboxSliCfgExt>({.brdno = kNewer, .arg2 = 256, .arg3 = 4096, .arg6 = 1}, data).status, 0u);
  if (word(data, 0) >> 16 != 0) return "";
  return {reinterpret_cast<const char*>(data.bytes) + 256, word(data, 32)};
}

TEST(Dump, of_a_newer_adapter_is_an_object_until_a_reset_deletes_it) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(dump_object(session), "");
    EXPECT_EQ(session.call<Callback::kInduceDump>({.brdno = kNewer}).status, 0u);
    EXPECT_EQ(session.call<Callback::kInduceDump>({.brdno = kNewer}).status, 0u);
    const std::string dump = dump_object(session);
    ASSERT_GT(dump.size(), 16u);
    EXPECT_EQ(dump.substr(0, 4), "DUMP");
    EXPECT_EQ(word(*dump.data(), 8), 2u);
    EXPECT_EQ(dump.substr(16, 23), "model: Kestar K5602-CNA");
    EXPECT_EQ(reset(session, kNewer, 1), 0u);
    EXPECT_EQ(dump_object(session), dump);
    EXPECT_EQ(reset(session, kNewer, 2), 0u);
    EXPECT_EQ(dump_object(session), "");
  });
}

}  // namespace
