// The driver's parameters.
#include <algorithm>

#include "record_fields.h"

namespace {

struct Parameter {
  std::string name;
  std::uint32_t minimum, maximum, initial, current, flags;
  std::string meaning;
};

Parameter parameter_in(const dfc_cfg_entry& entry) {
  return {text_at(entry, 0), word(entry, 32), word(entry, 36),   word(entry, 40),
          word(entry, 44),   word(entry, 48), text_at(entry, 52)};
}

dfc_mgmt_hdr get_table(Session& session, std::uint32_t board, dfc_cfg_table& table) {
  return session.call<Callback::kGetCfg>({.brdno = board, .arg2 = sizeof(table)}, table);
}

std::vector<Parameter> table(Session& session, std::uint32_t board) {
  auto reply = garbage<dfc_cfg_table>();
  const dfc_mgmt_hdr header = get_table(session, board, reply);
  EXPECT_EQ(header.status, 0u);
  EXPECT_EQ(header.arg3 % sizeof(dfc_cfg_entry), 0u);
  std::vector<Parameter> result;
  for (std::size_t i = 0; i < header.arg3 / sizeof(dfc_cfg_entry); ++i) result.push_back(parameter_in(reply.entries[i]));
  EXPECT_EQ(parameter_in(reply.entries[result.size()]).name, "") << "beyond the last";
  return result;
}

std::uint32_t position(Session& session, std::uint32_t board, const std::string& name) {
  const auto parameters = table(session, board);
  const auto found = std::ranges::find(parameters, name, &Parameter::name);
  EXPECT_NE(found, parameters.end()) << name;
  return static_cast<std::uint32_t>(found - parameters.begin());
}

Parameter parameter(Session& session, std::uint32_t board, const std::string& name) {
  return table(session, board)[position(session, board, name)];
}

std::uint32_t set(Session& session, std::uint32_t board, const std::string& name, std::uint32_t value) {
  return session.call<Callback::kSetCfg>({.brdno = board, .arg1 = position(session, board, name), .arg4 = value}).status;
}

constexpr std::uint32_t kNeedsRestart = 1;
constexpr std::uint32_t kPending = 2;

TEST(Parameters, have_names_ranges_and_meanings_and_differ_between_generations) {
  in_process({}, [] {
    Session session;
    const Parameter depth = parameter(session, 1, "lun_queue_depth");
    EXPECT_EQ(depth.minimum, 1u);
    EXPECT_EQ(depth.maximum, 512u);
    EXPECT_EQ(depth.initial, 30u);
    EXPECT_EQ(depth.current, 30u);
    EXPECT_EQ(depth.flags, 0u);
    EXPECT_EQ(depth.meaning, "commands at a time to one logical unit");
    EXPECT_EQ(parameter(session, 1, "topology").flags, kNeedsRestart);
    for (const std::uint32_t board : {1u, 7u, 12u}) {
      for (const Parameter& one : table(session, board)) {
        EXPECT_FALSE(one.meaning.empty()) << one.name;
        EXPECT_TRUE(one.minimum <= one.initial && one.initial <= one.maximum) << one.name;
        EXPECT_EQ(one.current, one.initial) << one.name;
      }
    }
    EXPECT_EQ(parameter(session, 1, "oas_enabled").maximum, 1u);
    EXPECT_EQ(parameter(session, 7, "interrupt_delay").maximum, 63u);
    EXPECT_NE(table(session, 7).size(), table(session, 1).size());
  });
}

TEST(Parameters, that_do_not_fit_say_how_much_there_is) {
  in_process({}, [] {
    Session session;
    auto reply = garbage<dfc_cfg_table>();
    const std::uint32_t bytes = get_table(session, 1, reply).arg3;
    reply = garbage<dfc_cfg_table>();
    const dfc_mgmt_hdr tight = session.call<Callback::kGetCfg>({.brdno = 1, .arg2 = bytes - 1}, reply);
    EXPECT_EQ(tight.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NO_ROOM});
    EXPECT_EQ(tight.arg3, bytes);
    EXPECT_EQ(reply.entries[0].bytes[0], 0xA5);
    EXPECT_EQ(session.call<Callback::kGetCfg>({.brdno = 1, .arg2 = bytes}, reply).status, 0u);
  });
}

TEST(Parameters, that_are_set_are_listed_and_values_out_of_range_are_refused) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t value : {1u, 512u, 77u}) {
      EXPECT_EQ(set(session, 1, "lun_queue_depth", value), 0u);
      EXPECT_EQ(parameter(session, 1, "lun_queue_depth").current, value);
    }
    for (const std::uint32_t value : {0u, 513u, 0xFFFFFFFFu}) {
      EXPECT_EQ(set(session, 1, "lun_queue_depth", value), std::uint32_t{VMKMGMT_SIM_DRIVER_OUT_OF_RANGE});
    }
    const Parameter depth = parameter(session, 1, "lun_queue_depth");
    EXPECT_EQ(depth.current, 77u);
    EXPECT_EQ(depth.initial, 30u);
    EXPECT_EQ(parameter(session, 3, "lun_queue_depth").current, 30u) << "another adapter";
    EXPECT_EQ(set(session, 1, "log_mask", 0xFFFFFFFF), 0u);

    const auto count = static_cast<std::uint32_t>(table(session, 1).size());
    for (const std::uint32_t entry : {count, 64u, 0xFFFFFFFFu}) {
      EXPECT_EQ(session.call<Callback::kSetCfg>({.brdno = 1, .arg1 = entry}).status,
                std::uint32_t{VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE});
    }
  });
}

TEST(Parameters, that_need_a_restart_wait_for_it) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(set(session, 1, "topology", 2), 0u);
    EXPECT_EQ(parameter(session, 1, "topology").flags, kNeedsRestart | kPending);
    EXPECT_EQ(parameter(session, 1, "topology").current, 2u);
    EXPECT_EQ(set(session, 1, "lun_queue_depth", 2), 0u);
    EXPECT_EQ(parameter(session, 1, "lun_queue_depth").flags, 0u);
    session.call<Callback::kSetDiag>({.brdno = 1, .arg6 = 0x14});
    EXPECT_EQ(parameter(session, 1, "topology").flags, kNeedsRestart);
    EXPECT_EQ(parameter(session, 1, "topology").current, 2u);
  });
}

TEST(Parameters, survive_the_process_in_the_state_folder) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(set(session, 1, "lun_queue_depth", 99), 0u);
    EXPECT_EQ(set(session, 1, "topology", 1), 0u);
  });
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(parameter(session, 1, "lun_queue_depth").current, 99u);
    EXPECT_EQ(parameter(session, 1, "topology").flags, kNeedsRestart | kPending);
  });
  EXPECT_EQ(json::parse(read_file(folder.path("parameters-1000005a41560201.json"))),
            json::parse(R"({"values": {"lun_queue_depth": 99, "topology": 1}, "pending": ["topology"]})"));
}

TEST(Parameters, in_a_damaged_file_refuse_the_handle) {
  const TemporaryFolder folder;
  const std::string file = "parameters-1000005a41560201.json";
  for (const auto& [content, problem] :
       {std::pair{"[", "the whole file: expected a JSON object"}, std::pair{"{}", "values: expected an object of parameters"},
        std::pair{R"({"values": {"lun_queue_depth": 513}, "pending": []})",
                  "values: expected parameters of the adapter within their ranges"},
        std::pair{R"({"values": {"wings": 1}, "pending": []})", "values: expected parameters of the adapter within their ranges"},
        std::pair{R"({"values": {}})", "pending: expected a list of names"},
        std::pair{R"({"values": {}, "pending": ["topology"]})", "pending: expected names of values"}}) {
    folder.write(file, content);
    const std::string message = in_process({{VMKMGMT_SIM_STATE, folder.path()}}, [] {
      vmk_MgmtUserHandle handle = nullptr;
      EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_STATE});
    });
    EXPECT_EQ(message, "vmkmgmt simulator: " + folder.path(file) + ": damaged: " + problem +
                           "; remove the file to start with fresh state\n");
  }
}

TEST(Parameters, begin_as_the_scenario_says) {
  json scenario = small_scenario();
  scenario["adapters"][0]["parameters"] = {{"lun_queue_depth", 64}, {"topology", 2}};
  under_scenario(scenario, [] {
    Session session;
    EXPECT_EQ(parameter(session, 2, "lun_queue_depth").current, 64u);
    EXPECT_EQ(parameter(session, 2, "lun_queue_depth").initial, 30u);
    EXPECT_EQ(parameter(session, 2, "topology").flags, kNeedsRestart);
    EXPECT_EQ(set(session, 2, "lun_queue_depth", 30), 0u);
    EXPECT_EQ(parameter(session, 2, "lun_queue_depth").current, 30u);
  });
}

}  // namespace
