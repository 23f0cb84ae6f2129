"""What the driver keeps of an adapter: link, nodes, I/O counters, vital product data, parameters."""

import tool


class Link(tool.ToolTest):
    """The link, its nodes and its counters."""

    def test_a_link_that_is_up_says_all_of_itself(self):
        link = self.json_of("link", "link", "1")["link"]
        self.assertEqual((link["state"], link["topology"], link["fc_id"], link["rate"], link["speed"], link["loopback"]),
                         ("online", "fabric", "0x020b00", 16000, "16 Gbit/s", "none"))
        self.assertEqual((link["port_wwn"], link["fabric"], link["discovered_ports"], link["protocol"]),
                         ("10:00:00:5a:41:56:03:10", "fabric-b", 2, "FC"))

    def test_a_link_that_is_down_says_so(self):
        link = self.json_of("link", "link", "2")["link"]
        self.assertEqual((link["state"], link["topology"], link["speed"], link["rate"]), ("link down", "unknown", "unknown", 0))

    def test_nodes_are_the_discovered_ports(self):
        nodes = self.json_of("nodes", "nodes", "0")["nodes"]
        self.assertEqual([(node["position"], node["fc_id"], node["fcp"], node["has_units"], node["units"]) for node in nodes],
                         [(0, "0x010200", True, True, 5), (1, "0x010300", True, True, 3), (2, "0x010400", True, False, 0)])
        self.assertEqual([node["port_wwn"] for node in nodes],
                         [port["port_wwn"] for port in self.json_of("ports", "ports", "0", "--discovered")["ports"]])
        self.assertEqual(self.json_of("nodes", "nodes", "2")["nodes"], [])

    def test_a_counter_that_is_not_supported_says_so(self):
        path = self.scenario(tool.adapter(1, counters={"losses_of_sync": {"unsupported": True}, "tx_words": {"start": 2**60}}))
        document = self.json_of("iostat", "iostat", "0", VMKMGMT_SIM_SCENARIO=path)
        counters = {record["counter"]: record for record in document["counters"]}
        self.assertIsNone(counters["losses_of_sync"]["value"])
        self.assertEqual(counters["words_sent"], {"counter": "words_sent", "value": 2**60, "value_s": str(2**60), "unit": "words"})
        self.assertIn("Losses of sync              not supported", tool.run("iostat", "0", VMKMGMT_SIM_SCENARIO=path).stdout)

    def test_a_record_is_shown_as_it_is(self):
        document = self.json_of("raw", "link", "1", "--raw")
        self.assertEqual(document["record"], {"adapter": 1, "bytes": 168})
        data = bytes.fromhex("".join(line["bytes"] for line in document["lines"]))
        self.assertEqual((data[0], data[24:32].hex(":"), data[48:56]), (2, "10:00:00:5a:41:56:03:10", b"fabric-b"))
        self.assertEqual(self.json_of("raw", "nodes", "1", "--raw")["record"]["bytes"], 2 * 28)

    def test_failures_say_which_record_cannot_be_read(self):
        failing = [(["link"], "TREL_MGMT_LINKINFO", "DFC_GetLinkInfo", 1, "DFC_FAILED"),
                   (["nodes"], "TREL_MGMT_NODEINFO", "GetNodeInfo", 0, None),
                   (["iostat"], "TREL_MGMT_IOINFO", "GetIOinfo", 1, "DFC_FAILED"),
                   (["vpd"], "TREL_MGMT_GET_VPD", "GetVPDInfo", 3, "DFC_VPD_FAILED"),
                   (["params", "list"], "TREL_MGMT_GETCFG", "GetCfgParam", 0, None)]
        for words, callback, operation, number, name in failing:
            with self.subTest(words):
                path = self.scenario(tool.adapter(1), faults=[tool.fault(callback, driver_status="0x0BAD0202")])
                result = tool.run(*words, "0", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
                self.assert_exit(result, 1)
                self.assertEqual(result.stdout, "")
                error, = tool.errors(result)
                self.assertEqual((error["operation"], error["driver_status"], error["result"], error["result_name"]),
                                 (operation, "0x0bad0202", number, name))


class VitalProductData(tool.ToolTest):
    """Texts by their selectors."""

    def test_all_selectors_are_asked_for(self):
        texts = self.json_of("vpd", "vpd", "0")["texts"]
        found = {record["what"]: record["text"] for record in texts}
        self.assertEqual(found["engineering change"], "C2")
        self.assertEqual(found["serial number"], "ZK56020A1174")
        self.assertEqual(found["firmware version"], "11.4.204.25")
        self.assertEqual(len(found), 9)

    def test_one_selector_is_asked_for_alone(self):
        result, calls = self.traced("vpd", "0", "--selector", "2", "-o", "json", callback="TREL_MGMT_GET_VPD")
        self.assertEqual({record["selector"] for record in tool.validated("vpd", result.stdout)["texts"]}, {2})
        self.assertEqual([call["in"]["arg6"] for call in calls], [2])

    def test_a_selector_that_does_not_exist_has_a_name_of_its_own(self):
        result = tool.run("vpd", "0", "--selector", "3", "-o", "json")
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertEqual((error["result"], error["result_name"]), (1, "DFC_VPD_BAD0084"))
        self.assertIn("shows what there is", error["hint"])


class Parameters(tool.ToolTest):
    """The driver's parameters."""

    def setUp(self):
        super().setUp()
        self.state = {"VMKMGMT_SIM_STATE": self.folder / "state"}

    def value(self, name):
        """A parameter's value and whether it waits for a restart."""
        parameter = self.json_of("params-show", "params", "show", "0", name, **self.state)["parameter"]
        return parameter["value"], parameter["waits"]

    def test_the_list_is_that_of_the_adapters_generation(self):
        names = [[parameter["name"] for parameter in self.json_of("params-list", "params", "list", adapter)["parameters"]]
                 for adapter in ("0", "3")]
        self.assertIn("io_queues", names[0])
        self.assertNotIn("io_queues", names[1])
        self.assertIn("interrupt_delay", names[1])

    def test_a_change_is_verified(self):
        document = self.json_of("params-set", "params", "set", "0", "lun_queue_depth", "64", "--yes", **self.state)
        self.assertEqual(document["write"], {"adapter": 0, "sent": True, "verified": True})
        self.assertEqual(document["changes"], [{"field": "lun_queue_depth", "old": 30, "new": 64}])
        self.assertEqual(self.value("lun_queue_depth"), (64, False))
        self.json_of("params-set", "params", "set", "0", "lun_queue_depth", "default", "--yes", **self.state)
        self.assertEqual(self.value("lun_queue_depth"), (30, False))

    def test_a_change_that_waits_says_for_what(self):
        result = tool.run("params", "set", "0", "link_speed", "10", "--yes", **self.state)
        self.assert_exit(result, 0)
        self.assertIn("takes effect when the adapter starts again: vaskdfc reset ADAPTER\n", result.stderr)
        self.assertEqual(self.value("2"), (10, True))
        self.assert_exit(tool.run("reset", "0", "--yes", **self.state), 0)
        self.assertEqual(self.value("link_speed"), (10, False))
        dry = tool.run("params", "set", "0", "link_speed", "0", "--dry-run", **self.state)
        self.assertNotIn("takes effect", dry.stderr)

    def test_a_value_that_the_driver_refuses_is_a_failure(self):
        result = tool.run("params", "set", "0", "lun_queue_depth", "513", "--yes", "-o", "json")
        self.assert_exit(result, 1)
        self.assertEqual(tool.validated("params-set", result.stdout)["write"]["verified"], False)
        error, = tool.errors(result)
        self.assertIn("the write failed; the parameter table still holds: lun_queue_depth 30", error["message"])
        self.assertEqual((error["operation"], error["driver_status"], error["result"]), ("SetCfgParam", "0x0bad0205", 1))

    def test_where_there_is_nothing_to_change_nothing_is_sent(self):
        result, calls = self.traced("params", "set", "0", "fdmi", "0", callback="TREL_MGMT_SETCFG")
        self.assert_exit(result, 0)
        self.assertEqual(calls, [])
        self.assertIn("nothing to change", result.stderr)

    def test_wrong_names_and_values_are_wrong_usage(self):
        for words, part in ((["show", "0", "no_such"], '"no_such"'), (["show", "0", "64"], '"64"'),
                            (["set", "0", "fdmi", "-1"], "VALUE"), (["set", "0", "fdmi", "x"], "VALUE")):
            result, calls = self.traced("params", *words, callback="TREL_MGMT_SETCFG")
            self.assert_exit(result, 2)
            self.assertIn(part, result.stderr)
            self.assertEqual(calls, [])


if __name__ == "__main__":
    tool.main()
