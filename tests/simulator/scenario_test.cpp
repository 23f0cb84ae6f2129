// Scenarios that are refused, each with its whole message.
#include "sim_process.h"

namespace {

// What a process says that is given this text as its scenario.
std::string complaint(const std::string& scenario) {
  const TemporaryFolder folder;
  const std::string file = folder.write("scenario.json", scenario);
  const std::string message = in_process({{VMKMGMT_SIM_SCENARIO, file}}, [] {
    vmk_MgmtUserHandle handle = nullptr;
    for (const char* name : {"vaskfcoe-mgmt", "trel-mgmt"}) {
      EXPECT_EQ(open_handle(Signature(name), handle), std::uint32_t{VMKMGMT_SIM_BAD_SCENARIO});
    }
    EXPECT_EQ(handle, nullptr);
  });
  const std::string start = "vmkmgmt simulator: " + file;
  EXPECT_EQ(message.substr(0, start.size()), start);
  EXPECT_EQ(message.back(), '\n');
  return message.substr(start.size(), message.size() - start.size() - 1);
}

// The same after one change to a good scenario; `pointer` names what is changed, null stands for removal.
std::string complaint_about(const char* pointer, const json& value) {
  json scenario = small_scenario();
  const json::json_pointer place(pointer);
  if (value.is_null()) {
    scenario[place.parent_pointer()].erase(place.back());
  } else {
    scenario[place] = value;
  }
  return complaint(scenario.dump(2));
}

constexpr const char* kWwn = R"(expected a WWN: eight bytes in hexadecimal such as "10:00:00:11:22:33:44:55")";
constexpr const char* kSpeed = R"(expected one speed: "1G", "2G", "4G", "8G", "10G", "16G" or "32G")";
constexpr const char* kFcId = R"(expected an FC id: 24 bits in hexadecimal such as "0x010400", not 0)";
constexpr const char* kWord = R"(expected a word: 32 bits as an integer or in hexadecimal such as "0x0BAD0039")";

TEST(Scenario, the_small_scenario_of_these_tests_is_accepted) {
  EXPECT_EQ(under_scenario(small_scenario(), [] { Session session; }), "");
}

TEST(Scenario, the_built_in_scenario_is_accepted_from_a_file_too) {
  EXPECT_EQ(in_process({{VMKMGMT_SIM_SCENARIO, DEFAULT_SCENARIO}}, [] { Session session; }), "");
}

TEST(Scenario, the_example_in_the_documentation_is_accepted_and_its_mistake_is_told_as_documented) {
  const std::string page = read_file(SIMULATOR_PAGE);
  const std::string example = documented_examples().at(0).dump();
  EXPECT_EQ(under_scenario(json::parse(example), [] { Session session; }), "");

  json mistaken = json::parse(example);
  mistaken["adapters"][0]["fc_id"] = "0x10a00";
  const std::string message = complaint(mistaken.dump());
  EXPECT_NE(page.find("\nvmkmgmt simulator: busy.json" + message + "\n"), page.npos) << message;
}

TEST(Scenario, syntax_errors_name_line_and_column) {
  EXPECT_EQ(complaint("{\n  \"driver\": tru\n}"),
            ":2:16: syntax error while parsing value - invalid literal; last read: '\"driver\": tru<U+000A>'");
  EXPECT_EQ(complaint("{\"driver\": {},}"),
            ":1:15: syntax error while parsing object key - unexpected '}'; expected string literal");
  EXPECT_EQ(complaint(""), ":1:1: syntax error while parsing value - unexpected end of input; expected '[', '{', or a literal");
  EXPECT_EQ(complaint("{\"\xff\": 1}"),
            ":1:3: syntax error while parsing object key - invalid string: ill-formed UTF-8 byte; last read: '\"\\xFF'; expected "
            "string literal");
}

TEST(Scenario, numbers_that_no_computer_holds_are_refused_where_they_stand) {
  EXPECT_EQ(complaint(R"({"adapters": [1, {"board": 1e999}]})"), ": adapters[1].board: number overflow parsing '1e999'");
}

TEST(Scenario, a_key_that_stands_twice_is_refused) {
  EXPECT_EQ(complaint(R"({"adapters": [[], {"a": {}, "b": [{"x": 1}, {"x": 1, "y": 2, "x": 3}]}]})"),
            ": adapters[1].b[1].x: stands twice in its object");
}

TEST(Scenario, missing_fields_are_named_with_what_they_hold) {
  EXPECT_EQ(complaint_about("/adapters/0/wwpn", nullptr), std::string(": adapters[0].wwpn: missing; ") + kWwn);
  EXPECT_EQ(complaint_about("/adapters", nullptr), ": adapters: missing; expected a list of at most 32 adapters");
  EXPECT_EQ(complaint_about("/driver/version", nullptr), ": driver.version: missing; expected 1 to 31 printable ASCII characters");
}

TEST(Scenario, unknown_fields_are_refused_with_those_that_are_known) {
  EXPECT_EQ(complaint_about("/driver/color", "red"),
            ": driver.color: unknown field; expected one of interfaces, name, reset_type_3, version");
  EXPECT_EQ(complaint_about("/fabrics/0/ports/0/lun", 1),
            ": fabrics[0].ports[0].lun: unknown field; expected one of fc4_types, fc_id, luns, speed, supported_speeds, "
            "symbolic_name, wwnn, wwpn");
}

TEST(Scenario, values_of_the_wrong_form_are_shown) {
  EXPECT_EQ(
      complaint("[1]"),
      ": expected a scenario object with the fields driver, fabrics, adapters, clock, foreign_boards and faults, found a list");
  EXPECT_EQ(complaint_about("/driver", 7), ": driver: expected the driver as an object with name and version, found 7");
  EXPECT_EQ(complaint_about("/adapters/0/wwnn", "20:00"), std::string(": adapters[0].wwnn: ") + kWwn + ", found \"20:00\"");
  EXPECT_EQ(complaint_about("/adapters/0/board", 32),
            ": adapters[0].board: expected a driver board number: an integer from 0 to 31, found 32");
  EXPECT_EQ(complaint_about("/adapters/0/board", -1),
            ": adapters[0].board: expected a driver board number: an integer from 0 to 31, found -1");
  EXPECT_EQ(complaint_about("/adapters/0/board", 1.5),
            ": adapters[0].board: expected a driver board number: an integer from 0 to 31, found 1.5");
  EXPECT_EQ(complaint_about("/adapters/0/generation", std::uint64_t{1} << 32),
            ": adapters[0].generation: expected how often the fabric has changed already: an integer from 0 to 4294967295, found "
            "4294967296");
  EXPECT_EQ(complaint_about("/adapters/0/fc_id", "0x000000"),
            std::string(": adapters[0].fc_id: ") + kFcId + ", found \"0x000000\"");
  EXPECT_EQ(complaint_about("/adapters/0/device", "0x5604"),
            ": adapters[0].device: expected a PCI device identifier of the family: \"0x5601\", \"0x5602\" or \"0x5603\", found "
            "\"0x5604\"");
  EXPECT_EQ(complaint_about("/adapters/0/supported_speeds/1", "9G"),
            std::string(": adapters[0].supported_speeds[1]: ") + kSpeed + ", found \"9G\"");
  EXPECT_EQ(complaint_about("/adapters/0/supported_speeds", json::array()),
            ": adapters[0].supported_speeds: expected a list of speeds, at least one and each once, found a list");
  EXPECT_EQ(complaint_about("/adapters/0/model", std::string(80, 'x')),
            ": adapters[0].model: expected 1 to 31 printable ASCII characters, found \"" + std::string(59, 'x') + "...");
}

TEST(Scenario, values_that_must_be_unique_name_the_other_place) {
  json scenario = small_scenario();
  scenario["adapters"].push_back(scenario["adapters"][0]);
  EXPECT_EQ(complaint(scenario.dump()),
            ": adapters[1].board: expected a driver board number of its own, 2 is that of adapters[0].board");

  scenario["adapters"][1]["board"] = 3;
  EXPECT_EQ(complaint(scenario.dump()),
            ": adapters[1].wwpn: expected a port WWN of its own, 10:00:00:00:00:00:00:02 is that of adapters[0].wwpn");

  scenario["adapters"][1]["wwpn"] = "10:00:00:00:00:00:00:AB";
  EXPECT_EQ(complaint(scenario.dump()), ": adapters[1].fc_id: expected an FC id of its own, 0x010a00 is that of adapters[0].fc_id");

  scenario["adapters"][1]["fc_id"] = "0x010b00";
  scenario["adapters"][1]["virtual_ports"] = {
      {{"wwnn", "20:00:00:00:00:00:00:ab"}, {"wwpn", "10:00:00:00:00:00:00:ab"}, {"fc_id", "0x010b01"}}};
  EXPECT_EQ(complaint(scenario.dump()),
            ": adapters[1].virtual_ports[0].wwpn: expected a port WWN of its own, 10:00:00:00:00:00:00:ab is that of "
            "adapters[1].wwpn");

  scenario["adapters"][1].erase("virtual_ports");
  scenario["foreign_boards"] = {{{"board", 3}, {"vendor", "0x1234"}, {"device", "0x5678"}}};
  EXPECT_EQ(complaint(scenario.dump()),
            ": foreign_boards[0].board: expected a driver board number of its own, 3 is that of adapters[1].board");

  scenario["foreign_boards"][0]["board"] = 4;
  scenario["fabrics"].push_back({{"name", "san"}, {"wwn", "10:00:00:00:00:00:0f:0c"}});
  EXPECT_EQ(complaint(scenario.dump()), ": fabrics[1].name: expected a name of its own, san is that of fabrics[0].name");
}

TEST(Scenario, fabrics_and_speeds_must_fit) {
  EXPECT_EQ(complaint_about("/adapters/0/fabric", "lan"), ": adapters[0].fabric: expected the name of a fabric, found \"lan\"");
  EXPECT_EQ(complaint_about("/adapters/0/fc_id", nullptr), ": adapters[0].fc_id: missing; an adapter in a fabric has one");
  EXPECT_EQ(complaint_about("/adapters/0/fabric", nullptr), ": adapters[0].fc_id: unexpected; only an adapter in a fabric has it");
  EXPECT_EQ(complaint_about("/adapters/0/speed", "32G"), ": adapters[0].speed: expected one of supported_speeds, found \"32G\"");
  EXPECT_EQ(complaint_about("/fabrics/0/ports/0/speed", "8G"),
            ": fabrics[0].ports[0].speed: expected one of supported_speeds, found \"8G\"");
}

TEST(Scenario, regions_must_be_known_fit_and_stand_once) {
  const auto region = [](const char* text) { return complaint_about("/adapters/0/regions", json::parse(text)); };
  EXPECT_EQ(region(R"([{"region": 22, "missing": "0xFFFD"}, {"region": 24, "image": ""}])"),
            ": adapters[0].regions[1].region: expected the number of a region: one of 0, 4, 5, 6, 7, 8, 9, 10, 14, 17, 19, 21, 22, "
            "23, 30, 32, 160, 162, found 24");
  EXPECT_EQ(region(R"([{"region": 256, "image": ""}])"),
            ": adapters[0].regions[0].region: expected the number of a region: an integer from 0 to 255, found 256");
  EXPECT_EQ(region(R"([{"region": 23, "image": ""}, {"region": 22, "image": ""}, {"region": 23, "missing": "0xFFF6"}])"),
            ": adapters[0].regions[2].region: expected a region of its own, 23 is that of adapters[0].regions[0].region");
  for (const char* digits : {"52 4", "5", "0x52", "52,47", "RG23", "5g"}) {
    EXPECT_EQ(complaint_about("/adapters/0/regions", {{{"region", 23}, {"image", digits}}}),
              ": adapters[0].regions[0].image: expected hexadecimal digits, two a byte");
  }
  EXPECT_EQ(region(R"([{"region": 32, "image": "00 01 02 03 04 05 06 07 08"}])"),
            ": adapters[0].regions[0].image: expected at most 8 bytes, found 9");
  EXPECT_EQ(region(R"([{"region": 23, "missing": "0xFFFE"}])"),
            ": adapters[0].regions[0].missing: expected the code of a region without an image: \"0xFFFD\", \"0xFFF7\" or "
            "\"0xFFF6\", found \"0xFFFE\"");
  EXPECT_EQ(region(R"([{"region": 23}])"), ": adapters[0].regions[0]: expected either image or missing");
  EXPECT_EQ(region(R"([{"region": 23, "image": "", "missing": "0xFFFD"}])"),
            ": adapters[0].regions[0]: expected either image or missing");
}

TEST(Scenario, fcfs_belong_to_converged_adapters_and_have_their_forms) {
  const auto fcf = [](const char* pointer, const json& value) {
    json scenario = small_scenario();
    json& adapter = scenario["adapters"][0];
    adapter["protocol"] = "fcoe";
    adapter["fcfs"] = json::parse(
        R"([{"names": ["10:00:00:00:00:00:00:aa", "20:00:00:00:00:00:00:bb"], "mac": "00:11:22:33:44:55", "vlans": [1]}])");
    adapter[json::json_pointer(pointer)] = value;
    return complaint(scenario.dump());
  };
  const std::string refusal = ": adapters[0].fcfs: unexpected; only an FCoE adapter of SLI mode 4 has them";
  EXPECT_EQ(fcf("/protocol", "fc"), refusal);
  EXPECT_EQ(fcf("/sli_mode", 3), refusal);
  EXPECT_EQ(fcf("/fcfs/0/mac", "00:11:22:33:44"),
            ": adapters[0].fcfs[0].mac: expected a MAC address: six bytes in hexadecimal such as \"00:11:22:33:44:55\", found "
            "\"00:11:22:33:44\"");
  EXPECT_EQ(fcf("/fcfs/0/fc_map", "0e:fc"),
            ": adapters[0].fcfs[0].fc_map: expected an FC-MAP: three bytes in hexadecimal such as \"0e:fc:00\", found \"0e:fc\"");
  EXPECT_EQ(fcf("/fcfs/0/names", {"10:00:00:00:00:00:00:aa"}),
            ": adapters[0].fcfs[0].names: expected a list of the FCF's two names, found a list");
  EXPECT_EQ(fcf("/fcfs/0/vlans/0", 4096),
            ": adapters[0].fcfs[0].vlans[0]: expected a VLAN id: an integer from 0 to 4095, found 4096");
  EXPECT_EQ(fcf("/fcfs/0/vlans", {1, 1}), ": adapters[0].fcfs[0].vlans: expected a list of VLAN ids, each once, found a list");
  EXPECT_EQ(fcf("/fcfs/0/word_4", -1), ": adapters[0].fcfs[0].word_4: expected an integer from 0 to 4294967295, found -1");
}

TEST(Scenario, counters_and_the_clock_have_their_forms) {
  EXPECT_EQ(complaint_about("/adapters/0/counters", json::parse(R"({"nos": {"wraps": 64}})")),
            ": adapters[0].counters.nos.wraps: expected the bits after which the counter wraps: an integer from 1 to 63, found 64");
  EXPECT_EQ(complaint_about("/adapters/0/counters", json::parse(R"({"nos": {"start": 9223372036854775808}})")),
            ": adapters[0].counters.nos.start: expected the counter's first value: an integer from 0 to 9223372036854775807, found "
            "9223372036854775808");
  EXPECT_EQ(complaint_about("/adapters/0/counters", json::parse(R"({"nos": {}})")),
            ": adapters[0].counters.nos: expected a counter as an object with some of start, per_second, wraps and unsupported");
  EXPECT_EQ(complaint_about("/clock", json::object()),
            ": clock.step_ms: missing; expected milliseconds by which every query that depends on time advances the clock: an "
            "integer from 0 to 4294967295");
}

TEST(Scenario, faults_must_name_a_callback_and_do_something) {
  const auto fault = [](const char* text) { return complaint_about("/faults", json::array({json::parse(text)})); };
  EXPECT_EQ(fault(R"({"callback": "TREL_MGMT_SET_DIAG", "delay_ms": 1})"),
            ": faults[0].callback: expected the name or number of a callback, found \"TREL_MGMT_SET_DIAG\"");
  EXPECT_EQ(fault(R"({"callback": "", "delay_ms": 1})"),
            ": faults[0].callback: expected the name or number of a callback, found \"\"");
  EXPECT_EQ(fault(R"({"callback": 124000, "delay_ms": 1})"),
            ": faults[0].callback: expected a callback's name such as TREL_MGMT_SETDIAG, or its number, found 124000");
  EXPECT_EQ(fault(R"({"callback": 1, "delay_ms": 1})"), ": faults[0].callback: expected the name or number of a callback, found 1");
  EXPECT_EQ(fault(R"({"callback": 123, "platform_status": "0x000"})"),
            ": faults[0].platform_status: expected a status other than 0");
  EXPECT_EQ(fault(R"({"callback": 123})"),
            ": faults[0]: expected at least one of platform_status, driver_status, header, delay_ms, garbage_seed");
  EXPECT_EQ(fault(R"({"callback": 123, "header": {"arg8": 1}})"),
            ": faults[0].header.arg8: unknown field; expected one of arg1, arg2, arg3, arg4, arg5, arg6, arg7");
  EXPECT_EQ(fault(R"({"callback": 123, "header": {"arg1": "0x123456789"}})"),
            std::string(": faults[0].header.arg1: ") + kWord + ", found \"0x123456789\"");
  EXPECT_EQ(fault(R"({"callback": 123, "header": {}})"),
            ": faults[0].header: expected an object with some of the header words arg1 to arg7");
  EXPECT_EQ(fault(R"({"callback": 123, "delay_ms": 1, "call": 0})"),
            ": faults[0].call: expected an integer from 1 to 4294967295, found 0");
}

TEST(Scenario, a_file_that_cannot_be_read_is_refused) {
  const TemporaryFolder folder;
  const auto said = [](const std::string& file) {
    return in_process({{VMKMGMT_SIM_SCENARIO, file}}, [] {
      vmk_MgmtUserHandle handle = nullptr;
      EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_SCENARIO});
    });
  };
  EXPECT_EQ(said(folder.path("none.json")),
            "vmkmgmt simulator: " + folder.path("none.json") + ": cannot be opened: No such file or directory\n");
  EXPECT_EQ(said(folder.path()), "vmkmgmt simulator: " + folder.path() + ": cannot be read: Is a directory\n");
  EXPECT_EQ(said(""), "vmkmgmt simulator: VMKMGMT_SIM_SCENARIO is set but empty: name a path or unset it\n");
}

TEST(Scenario, everything_is_possible_at_once) {
  json scenario = small_scenario();
  scenario["$schema"] = "docs/scenario.schema.json";
  json& ports = scenario["fabrics"][0]["ports"];
  for (int port = 2; port <= 512; ++port) {
    char wwpn[24], fc_id[9];
    std::snprintf(wwpn, sizeof(wwpn), "50:01:00:00:00:00:%02x:%02x", port >> 8, port & 0xFF);
    std::snprintf(fc_id, sizeof(fc_id), "0x%06x", 0x020000 + port);
    ports.push_back({{"wwnn", "50:00:00:00:00:00:00:01"}, {"wwpn", wwpn}, {"fc_id", fc_id}});
  }
  json& adapters = scenario["adapters"];
  json adapter = adapters[0];
  adapters.clear();
  for (int board = 0; board < 32; ++board) {
    char wwpn[24], fc_id[9];
    std::snprintf(wwpn, sizeof(wwpn), "10:00:00:00:00:00:00:%02x", board);
    std::snprintf(fc_id, sizeof(fc_id), "0x%06x", 0x030000 + board);
    adapter["board"] = board;
    adapter["wwpn"] = wwpn;
    adapter["fc_id"] = fc_id;
    adapters.push_back(adapter);
  }
  under_scenario(scenario, [] {
    Session session;
    for (std::uint32_t board = 0; board < 32; ++board) {
      vaskdfc::PortAttributesReply reply;
      EXPECT_EQ(session.call<Callback::kHbaDiscPortAttributes>({.brdno = board, .arg1 = 511}, reply).status, 0u);
      EXPECT_EQ(reply.identity.fc_id, 0x020200u);
    }
  });
}

}  // namespace
