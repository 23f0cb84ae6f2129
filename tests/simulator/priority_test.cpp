// Priority of FCP I/O, and the logical link speed.
#include "vaskdfc/priority.h"

#include <algorithm>
#include <memory>

#include "record_fields.h"

namespace {

using List = dfc_fcp_prio_list;

std::uint32_t flag(Session& session, std::uint32_t board) {
  const dfc_mgmt_hdr header = session.call<Callback::kGetFcpPriorityFlag>({.brdno = board, .arg5 = 77});
  EXPECT_EQ(header.status, 0u);
  return header.arg5;
}

std::uint32_t set_flag(Session& session, std::uint32_t board, std::uint32_t value) {
  return session.call<Callback::kSetFcpPriorityFlag>({.brdno = board, .arg5 = value}).status;
}

std::unique_ptr<List> rules(Session& session, std::uint32_t board, std::uint32_t room) {
  auto list = std::make_unique<List>(garbage<List>());
  EXPECT_EQ(session.call<Callback::kGetFcpPriority>({.brdno = board, .arg2 = room}, *list).status, 0u);
  return list;
}

std::uint32_t set_rules(Session& session, std::uint32_t board, std::uint32_t count, const List& list) {
  return session.call<Callback::kSetFcpPriority>({.brdno = board, .arg2 = count}, list).status;
}

// So many rules whose keys and priorities follow from a seed.
std::unique_ptr<List> list_of(std::uint32_t count, std::size_t seed) {
  auto list = std::make_unique<List>(garbage<List>());
  list->count = count;
  for (std::size_t i = 0; i < std::min<std::size_t>(count, std::size(list->entries)); ++i) {
    std::ranges::copy(pattern(8, seed + i), list->entries[i].match1);
    list->entries[i].prio = static_cast<std::uint32_t>((seed + i) % 8);
  }
  return list;
}

bool same_rules(const List& left, const List& right, std::size_t count) {
  return std::memcmp(left.entries, right.entries, count * sizeof(fcp_prio_entry)) == 0;
}

TEST(Priority, flag_is_what_was_set) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(flag(session, 1), 0u);
    EXPECT_EQ(flag(session, 3), 1u) << "as the scenario says";
    EXPECT_EQ(set_flag(session, 1, 1), 0u);
    EXPECT_EQ(flag(session, 1), 1u);
    for (const std::uint32_t value : {2u, 0xFFFFFFFFu}) {
      EXPECT_EQ(set_flag(session, 1, value), std::uint32_t{VMKMGMT_SIM_DRIVER_OUT_OF_RANGE});
    }
    EXPECT_EQ(flag(session, 1), 1u);
    EXPECT_EQ(set_flag(session, 1, 0), 0u);
    EXPECT_EQ(flag(session, 1), 0u);
  });
}

TEST(Priority, rules_of_the_built_in_scenario_have_keys_and_wildcards) {
  in_process({}, [] {
    Session session;
    const auto list = rules(session, 3, 998);
    ASSERT_EQ(list->count, 3u);
    const fcp_prio_entry& first = list->entries[0];
    EXPECT_EQ(text(at<HbaWwn>(first.match1, 0)), "10:01:00:5a:41:56:03:10");
    EXPECT_EQ(text(at<HbaWwn>(first.match2, 0)), "50:5a:41:00:0c:00:10:03");
    EXPECT_EQ(text(at<HbaWwn>(first.match3, 0)), "00:00:00:00:00:00:00:00");
    EXPECT_EQ(text(at<HbaWwn>(first.match4, 0)), "ff:ff:ff:ff:ff:ff:ff:ff");
    EXPECT_EQ(first.prio, 6u);
    EXPECT_EQ(text(at<HbaWwn>(list->entries[2].match1, 0)), "ff:ff:ff:ff:ff:ff:ff:ff");
    EXPECT_EQ(list->entries[2].prio, 2u);
    EXPECT_EQ(word(list->entries[3], 0), 0u);
  });
}

TEST(Priority, rules_may_name_a_unit_and_an_application) {
  json scenario = small_scenario();
  scenario["adapters"][0]["priority"] =
      json::parse(R"({"rules": [{"lun": 300, "application": "00:00:00:00:00:00:00:2A", "priority": 7}]})");
  under_scenario(scenario, [] {
    Session session;
    const auto list = rules(session, 2, 1);
    EXPECT_EQ(text(at<HbaWwn>(list->entries[0].match3, 0)), "41:2c:00:00:00:00:00:00");
    EXPECT_EQ(text(at<HbaWwn>(list->entries[0].match4, 0)), "00:00:00:00:00:00:00:2a");
    EXPECT_EQ(flag(session, 2), 0u);
  });
}

TEST(Priority, rules_are_replaced_in_whole_and_read_back) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t count : {0u, 3u, 998u, 2u}) {
      const auto sent = list_of(count, count);
      EXPECT_EQ(set_rules(session, 1, count, *sent), 0u);
      const auto read = rules(session, 1, 998);
      EXPECT_EQ(read->count, count);
      EXPECT_TRUE(same_rules(*read, *sent, count));
      if (count < 998) {
        EXPECT_EQ(read->entries[count].prio, 0u);
      }
    }
  });
}

TEST(Priority, rules_that_do_not_fit_say_how_many_there_are) {
  in_process({}, [] {
    Session session;
    const auto sent = list_of(12, 5);
    set_rules(session, 1, 12, *sent);
    const auto read = rules(session, 1, 10);
    EXPECT_EQ(read->count, 12u);
    EXPECT_TRUE(same_rules(*read, *sent, 10));
    EXPECT_EQ(word(read->entries[10], 0), 0u);
    EXPECT_EQ(rules(session, 1, 0xFFFFFFFF)->count, 12u);
  });
}

TEST(Priority, rules_that_cannot_be_are_refused) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(set_rules(session, 1, 999, *list_of(999, 0)), std::uint32_t{VMKMGMT_SIM_DRIVER_NO_ROOM});
    EXPECT_EQ(set_rules(session, 1, 0xFFFFFFFF, *list_of(0xFFFFFFFF, 0)), std::uint32_t{VMKMGMT_SIM_DRIVER_NO_ROOM});
    EXPECT_EQ(set_rules(session, 1, 2, *list_of(3, 0)), std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
    const auto list = list_of(3, 0);
    list->entries[2].prio = 8;
    EXPECT_EQ(set_rules(session, 1, 3, *list), std::uint32_t{VMKMGMT_SIM_DRIVER_OUT_OF_RANGE});
    EXPECT_EQ(rules(session, 1, 998)->count, 0u);
  });
}

TEST(Priority, survives_the_process_in_the_state_folder) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(set_rules(session, 1, 3, *list_of(3, 9)), 0u);
    EXPECT_EQ(set_flag(session, 1, 1), 0u);
  });
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(flag(session, 1), 1u);
    EXPECT_TRUE(same_rules(*rules(session, 1, 3), *list_of(3, 9), 3));
  });
  const std::string file = "priority-1000005a41560201.bin";
  std::string content = read_file(folder.path(file));
  content[4] = content[5] = '\x7F';
  folder.write(file, content);
  EXPECT_EQ(in_process(environment,
                       [] {
                         vmk_MgmtUserHandle handle = nullptr;
                         EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_STATE});
                       }),
            "vmkmgmt simulator: " + folder.path(file) +
                ": damaged: the whole file: expected 35936 bytes with at most 998 rules; remove the file to start with fresh "
                "state\n");
}

TEST(LogicalLinkSpeed, is_in_megabits_and_of_newer_adapters_that_are_online) {
  in_process({}, [] {
    Session session;
    const auto ask = [&](std::uint32_t board) {
      return session.call<Callback::kGetLogicalLinkSpeed>({.brdno = board, .arg4 = 77});
    };
    EXPECT_EQ(ask(1).arg4, 10000u);
    EXPECT_EQ(ask(3).arg4, 16000u);
    EXPECT_EQ(ask(4).arg4, 0u) << "no cable";
    EXPECT_EQ(ask(7).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_SUPPORTED});
  });
}

}  // namespace
