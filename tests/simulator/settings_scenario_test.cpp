// Scenarios whose settings of an adapter are refused.
#include "sim_process.h"

namespace {

// What a process says after one change to the adapter of a good scenario, without the file's name.
std::string complaint_about(const char* field, const char* value) {
  json scenario = small_scenario();
  scenario["adapters"][0][json::json_pointer(field)] = json::parse(value);
  const TemporaryFolder folder;
  const std::string file = folder.write("scenario.json", scenario.dump(2));
  const std::string message = in_process({{VMKMGMT_SIM_SCENARIO, file}}, [] {
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_SCENARIO});
  });
  const std::string start = "vmkmgmt simulator: " + file + ": adapters[0].";
  EXPECT_EQ(message.substr(0, start.size()), start);
  return message.substr(start.size(), message.size() - start.size() - 1);
}

TEST(SettingsScenario, parameters_are_those_of_the_generation_within_their_ranges) {
  EXPECT_EQ(complaint_about("/parameters", R"({"wings": 1})"), "parameters: expected parameters of SLI mode 4, found \"wings\"");
  EXPECT_EQ(complaint_about("/parameters", R"({"interrupt_delay": 1})"),
            "parameters: expected parameters of SLI mode 4, found \"interrupt_delay\"");
  EXPECT_EQ(complaint_about("/parameters", R"({"lun_queue_depth": 0})"), "parameters.lun_queue_depth: expected 1 to 512, found 0");
  EXPECT_EQ(complaint_about("/parameters", R"({"lun_queue_depth": "8"})"),
            "parameters.lun_queue_depth: expected an integer from 0 to 4294967295, found \"8\"");
}

TEST(SettingsScenario, a_plug_and_a_cable_do_not_fit_into_one_port) {
  EXPECT_EQ(complaint_about("/loopback", R"({"plug": true})"), "loopback.plug: unexpected; only a port without a cable has it");
  EXPECT_EQ(complaint_about("/loopback", R"({"bit_errors": -1})"),
            "loopback.bit_errors: expected an integer from 0 to 4294967295, found -1");
}

TEST(SettingsScenario, priorities_have_eight_levels) {
  EXPECT_EQ(complaint_about("/priority", R"({"rules": [{"priority": 8}]})"),
            "priority.rules[0].priority: expected a priority: an integer from 0 to 7, found 8");
  EXPECT_EQ(complaint_about("/priority", R"({"rules": [{"lun": 1}]})"),
            "priority.rules[0].priority: missing; expected a priority: an integer from 0 to 7");
}

TEST(SettingsScenario, oas_rules_are_about_the_adapters_ports_and_stand_once) {
  EXPECT_EQ(
      complaint_about("/oas_rules", R"([{"initiator": "10:00:00:00:00:00:00:09", "target": "50:00:00:00:00:00:00:02", "lun": 0}])"),
      "oas_rules[0].initiator: expected the port WWN of the adapter or of its virtual port, found "
      "\"10:00:00:00:00:00:00:09\"");
  EXPECT_EQ(complaint_about("/oas_rules", R"([{"target": "50:00:00:00:00:00:00:0A", "lun": 0},
                                             {"target": "50:00:00:00:00:00:00:0a", "lun": 0}])"),
            "oas_rules[1]: expected each rule once");
  EXPECT_EQ(complaint_about("/oas_rules", R"([{"target": "50:00:00:00:00:00:00:02", "lun": 256}])"),
            "oas_rules[0].lun: expected a LUN: an integer from 0 to 255, found 256");
}

TEST(SettingsScenario, older_adapters_have_no_oas_rules) {
  json scenario = small_scenario();
  scenario["adapters"][0]["sli_mode"] = 3;
  scenario["adapters"][0]["oas_rules"] = json::parse(R"([{"target": "50:00:00:00:00:00:00:02", "lun": 0}])");
  const std::string message = under_scenario(scenario, [] {
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_SCENARIO});
  });
  EXPECT_NE(message.find(": adapters[0].oas_rules: unexpected; only an adapter of SLI mode 4 has them\n"), message.npos) << message;
}

}  // namespace
