// Scenarios whose units, virtual ports, bindings or events are refused.
#include "sim_process.h"

namespace {

// What a process says after one change to a good scenario, without the file's name.
std::string complaint_about(const char* pointer, const char* value) {
  json scenario = small_scenario();
  scenario[json::json_pointer(pointer)] = json::parse(value);
  const TemporaryFolder folder;
  const std::string file = folder.write("scenario.json", scenario.dump(2));
  const std::string message = in_process({{VMKMGMT_SIM_SCENARIO, file}}, [] {
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_SCENARIO});
  });
  const std::string start = "vmkmgmt simulator: " + file + ": ";
  EXPECT_EQ(message.substr(0, start.size()), start);
  return message.substr(start.size(), message.size() - start.size() - 1);
}

std::string luns(const char* value) { return complaint_about("/fabrics/0/ports/0/luns", value); }

TEST(TargetScenario, units_have_numbers_and_sizes_that_fit_together) {
  const std::string place = "fabrics[0].ports[0].luns";
  EXPECT_EQ(luns(R"([{"lun": 0}])"), place +
                                         "[0].blocks: missing; expected the size in blocks of 512 bytes: an integer from 1 to "
                                         "4294967295");
  EXPECT_EQ(luns(R"([{"lun": 0, "count": 3, "blocks": 8}, {"lun": 2, "blocks": 8}])"),
            place + ": expected each LUN once, found 2 twice");
  EXPECT_EQ(luns(R"([{"lun": 16380, "count": 5, "blocks": 8}])"), place + ": expected LUNs up to 16383, found 16384");
  EXPECT_EQ(luns(R"([{"lun": 0, "count": 1024, "blocks": 8}, {"lun": 2000, "blocks": 8}])"),
            place + ": expected at most 1024 units in a fabric, found 1025");
  EXPECT_EQ(luns(R"([{"lun": 0, "blocks": 8, "serial": "a"}, {"lun": 1, "blocks": 9, "serial": "a"}])"),
            place + ": expected 8 blocks, as elsewhere for serial number a, found 9");
  EXPECT_EQ(luns(R"([{"lun": 0, "blocks": 8, "serial": "../a"}])"),
            place + "[0].serial: expected a serial number: 1 to 24 letters, digits or hyphens, found \"../a\"");
}

TEST(TargetScenario, virtual_ports_need_an_adapter_that_carries_them_and_see_ports_of_its_fabric) {
  const char* port = R"([{"wwnn": "20:01:00:00:00:00:00:02", "wwpn": "10:01:00:00:00:00:00:02", "fc_id": "0x010a01",
                          "nodes": ["50:00:00:00:00:00:00:0A"]}])";
  EXPECT_EQ(
      complaint_about("/adapters/0/virtual_ports", port),
      "adapters[0].virtual_ports[0].nodes[0]: expected the port WWN of a port of the fabric, found \"50:00:00:00:00:00:00:0A\"");
  json adapter = small_scenario()["adapters"][0];
  adapter["virtual_ports"] = json::parse(port);
  adapter["sli_mode"] = 3;
  EXPECT_EQ(complaint_about("/adapters/0", adapter.dump().c_str()), "adapters[0].virtual_ports: expected at most 0, found 1");
  adapter["sli_mode"] = 4;
  adapter["max_virtual_ports"] = 0;
  EXPECT_EQ(complaint_about("/adapters/0", adapter.dump().c_str()), "adapters[0].virtual_ports: expected at most 0, found 1");
}

TEST(TargetScenario, bindings_have_one_key_and_events_what_they_need) {
  EXPECT_EQ(complaint_about("/adapters/0/bindings", R"([{"target": 1}])"),
            "adapters[0].bindings[0]: expected one of wwpn, wwnn, fc_id");
  EXPECT_EQ(complaint_about("/adapters/0/bindings", R"([{"target": 1, "fc_id": "0x010200", "wwpn": "50:00:00:00:00:00:00:02"}])"),
            "adapters[0].bindings[0]: expected one of wwpn, wwnn, fc_id");
  EXPECT_EQ(complaint_about("/adapters/0/events", R"([{"at_ms": 1, "event": "rscn"}])"),
            "adapters[0].events[0].fc_id: missing; an RSCN is about a port");
  EXPECT_EQ(complaint_about("/adapters/0/events", R"([{"at_ms": 1, "event": "lip", "fc_id": "0x010200"}])"),
            "adapters[0].events[0].fc_id: unexpected; only an RSCN is about a port");
  EXPECT_EQ(complaint_about("/adapters/0/events", R"([{"at_ms": 1, "event": "flood"}])"),
            "adapters[0].events[0].event: expected \"link_up\", \"link_down\", \"rscn\" or \"lip\", found \"flood\"");
}

}  // namespace
