"""What is asked through the fabric: the name server, other ports, management traffic, node identification."""

import tool

ARRAY = "50:5a:41:00:0c:00:10:01"
ARRAY_NODE = "50:5a:41:00:0c:00:10:00"
ARRAY_ID = "0x010200"
OTHER_ADAPTER = "10:00:00:5a:41:56:01:20"
OTHER_ADAPTER_ID = "0x010c00"
NO_SUCH_ID = "0x0100ff"
SEND_ELS = "TREL_MGMT_SEND_ELS"
FABRIC_A = ["0x010200", "0x010300", "0x010400", "0x010a00", "0x010c00"]


class NameServer(tool.ToolTest):
    """The commands nameserver, ct send and ct raw."""

    def ask(self, *arguments, **options):
        """The answer to a query."""
        return self.json_of("ct-send", "ct", "send", "0", *arguments, **options)

    def rejected(self, *arguments):
        """Why a query is rejected."""
        result = tool.run("ct", "send", "0", *arguments, "-o", "json")
        self.assert_exit(result, 1)
        self.assertEqual(result.stdout, "")
        return tool.errors(result)[0]["message"].partition(": ")[2]

    def test_all_ports_of_the_fabric_are_listed(self):
        ports = self.json_of("nameserver", "nameserver", "0")["ports"]
        self.assertEqual([port["fc_id"] for port in ports], FABRIC_A)
        self.assertEqual(ports[0], {"fc_id": ARRAY_ID, "type": "N_Port", "port_wwn": ARRAY, "node_wwn": ARRAY_NODE,
                                    "fc4_types": ["FCP"], "symbolic_port_name": "array-1 controller A port 1",
                                    "symbolic_node_name": ""})

    def test_the_walk_asks_for_each_port_and_once_more(self):
        _, calls = self.traced("nameserver", "0", callback="TREL_MGMT_SEND_CT")
        self.assertEqual(len(calls), len(FABRIC_A) + 1)

    def test_a_large_fabric_is_listed_whole(self):
        ports = [tool.remote_port(number % 256) | {"fc_id": f"0x02{number:04x}", "wwpn": f"50:00:00:00:00:00:{number // 256:02x}:"
                 f"{number % 256:02x}"} for number in range(500)]
        path = self.scenario(tool.adapter(5), ports=ports)
        found = self.json_of("nameserver", "nameserver", "0", VMKMGMT_SIM_SCENARIO=path)["ports"]
        self.assertEqual([port["fc_id"] for port in found], ["0x010105"] + [port["fc_id"] for port in ports])

    def test_queries_are_answered(self):
        cases = [("gpn_id", ARRAY_ID, [ARRAY]), ("gnn_id", ARRAY_ID, [ARRAY_NODE]), ("gft_id", ARRAY_ID, ["FCP"]),
                 ("gspn_id", ARRAY_ID, ["array-1 controller A port 1"]), ("gid_pn", ARRAY, [ARRAY_ID]),
                 ("gid_ft", "8", FABRIC_A)]
        for query, key, values in cases:
            with self.subTest(query):
                answer = self.ask(query, key)
                self.assertEqual((answer["answer"]["query"], answer["answer"]["values"]), (query, values))
                self.assertNotIn("ports", answer)

    def test_the_next_port_is_shown_whole(self):
        answer = self.ask("ga_nxt", ARRAY_ID)
        self.assertEqual([port["fc_id"] for port in answer["ports"]], ["0x010300"])

    def test_rejections_are_failures_with_their_reason(self):
        unable = "unable to perform command request (9), "
        self.assertEqual(self.rejected("gpn_id", NO_SUCH_ID), unable + "port identifier not registered (1)")
        self.assertEqual(self.rejected("gid_pn", ARRAY_NODE), unable + "port name not registered (2)")
        self.assertEqual(self.rejected("gid_ft", "0x28"), unable + "FC-4 types not registered (7)")
        for query, key in (("gid_nn", ARRAY_NODE), ("gsnn_nn", ARRAY_NODE)):
            self.assertEqual(self.rejected(query, key), "command not supported (b), no additional explanation (0)")

    def raw(self, request, *options):
        """The answer to a request whose bytes are in a file."""
        path = self.folder / "request.bin"
        path.write_bytes(bytes.fromhex(request))
        return self.json_of("ct-raw", "ct", "raw", "0", path, "--yes", *options)["answer"]

    def test_any_request_can_be_sent(self):
        answer = self.raw("01000000 fc020000 01120000 00000000 00010200")
        self.assertEqual((answer["accepted"], answer["rejection"], answer["bytes"]), (True, None, 24))
        self.assertTrue(answer["reply"].endswith(ARRAY.replace(":", " ")))
        reply = self.folder / "reply.bin"
        answer = self.raw("01000000 fc020000 01120000 00000000 00010200", "--file", reply)
        self.assertEqual((answer["file"], answer["reply"]), (str(reply), None))
        self.assertEqual(reply.read_bytes()[16:].hex(":"), ARRAY)

    def test_a_rejection_of_any_request_is_shown(self):
        answer = self.raw("01000000 fa010000 01000000 00000000")
        self.assertEqual((answer["accepted"], answer["rejection"]),
                         (False, "server not available (d), no additional explanation (0)"))


class OtherPorts(tool.ToolTest):
    """The command els send."""

    SEED_OF_A_REJECT = 15  # its garbage begins with the byte that a reject begins with

    def send(self, *arguments, **options):
        """The answer of a port."""
        return self.json_of("els-send", "els", "send", "0", *arguments, **options)

    def test_a_port_echoes_whatever_way_it_is_named(self):
        for port in (ARRAY, ARRAY_ID, OTHER_ADAPTER):
            document = self.send(port, "echo")
            self.assertEqual((document["answer"]["port"], document["answer"]["accepted"], document["echo"]),
                             (port, True, {"same": True}))

    def test_bytes_that_come_back_otherwise_are_told(self):
        path = self.altered_built_in(lambda scenario: scenario.update(
            faults=[tool.fault(SEND_ELS, driver_status=0, header={"arg3": 4})]))
        result = tool.run("els", "send", "0", ARRAY, "echo", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertIn("gave no answer of a link service", tool.errors(result)[0]["message"])

    def test_link_errors_are_those_of_the_port_that_is_named(self):
        counters = {"link_failures": 3, "losses_of_sync": 4, "losses_of_signal": 5, "protocol_errors": 6, "invalid_words": 7,
                    "invalid_crcs": 8}

        def alter(scenario):
            scenario["adapters"][3]["counters"] = {name: {"start": value, "per_second": 0} for name, value in counters.items()}

        path = self.altered_built_in(alter)
        for port in (OTHER_ADAPTER, OTHER_ADAPTER_ID):
            self.assertEqual(self.send(port, "rls", VMKMGMT_SIM_SCENARIO=path)["link_errors"], counters)

    def test_identification_has_names_and_topology(self):
        found = self.send(OTHER_ADAPTER_ID, "rnid")["identification"]
        self.assertEqual((found["format"], found["port_wwn"], found["unit_type"], found["port_number"]),
                         ("0xdf", OTHER_ADAPTER, 11, 0x010C00))

    def test_a_rejection_of_a_named_request_is_a_failure(self):
        # No port of the fabric rejects any of them, so the driver is made to return what it finds in its memory.
        path = self.altered_built_in(lambda scenario: scenario.update(
            faults=[tool.fault(SEND_ELS, garbage_seed=self.SEED_OF_A_REJECT)]))
        result = tool.run("els", "send", "0", ARRAY, "rls", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertRegex(tool.errors(result)[0]["message"], rf"^{ARRAY} rejected the request: .+ \([0-9a-f]+\), .+ \([0-9a-f]+\)$")

    def test_a_port_that_the_name_server_does_not_know_has_no_counters(self):
        result = tool.run("els", "send", "0", ARRAY_NODE, "rls", "-o", "json")
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertEqual(error["operation"], "SendCTPassThru")
        self.assertIn("port name not registered (2)", error["message"])

    def test_words_are_sent_as_they_are(self):
        answer = self.send(ARRAY_ID, "10000000", "0x01020304", "--yes")["answer"]
        self.assertEqual((answer["accepted"], answer["reply"]), (True, "02 00 00 00 01 02 03 04"))
        answer = self.send(ARRAY_ID, "05000000", "--yes")["answer"]
        self.assertEqual((answer["accepted"], answer["rejection"]),
                         (False, "command not supported (b), request not supported (2c)"))

    def test_bytes_come_from_a_file_and_go_to_one(self):
        request, reply = self.folder / "request.bin", self.folder / "reply.bin"
        request.write_bytes(bytes.fromhex("10000000") + b"hello")
        answer = self.send(ARRAY_ID, "--request", request, "--yes", "--file", reply)["answer"]
        self.assertEqual((answer["bytes"], answer["file"], answer["reply"]), (9, str(reply), None))
        self.assertEqual(reply.read_bytes(), bytes.fromhex("02000000") + b"hello")

    def test_ports_that_are_not_there_are_told(self):
        result = tool.run("els", "send", "0", NO_SUCH_ID, "echo", "-o", "json")
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertEqual((error["message"], error["driver_status"], error["result_name"]),
                         (f"{NO_SUCH_ID} cannot be asked", "0x0bad0003", "DFC_FAILED"))

    def test_the_librarys_own_result_is_named(self):
        path = self.altered_built_in(lambda scenario: scenario.update(faults=[tool.fault(SEND_ELS, driver_status="0x0BAD000A")]))
        result = tool.run("els", "send", "0", ARRAY, "echo", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual(tool.errors(result)[0]["result_name"], "DFC_ELS_BAD000A")


class Management(tool.ToolTest):
    """The commands mgmt send and mgmt respond."""

    def setUp(self):
        super().setUp()
        self.request = self.folder / "request.bin"
        self.request.write_bytes(b"abc")

    def test_the_reply_is_shown_or_goes_to_a_file(self):
        result, calls = self.traced("mgmt", "send", "0", "0100000000000000", self.request, "--argument", "7", "--yes", "-o", "json",
                                    callback="TREL_MGMT_HBA_SEND_MGMT_CMD")
        self.assert_exit(result, 0)
        self.assertEqual(tool.validated("mgmt-send", result.stdout)["answer"],
                         {"adapter": 0, "command": "01 00 00 00 00 00 00 00", "bytes": 3, "file": None, "reply": "61 62 63"})
        self.assertEqual([(call["in"]["arg2"], call["in"]["arg7"]) for call in calls], [(3, 7)])
        reply = self.folder / "reply.bin"
        self.json_of("mgmt-send", "mgmt", "send", "0", "0100000000000000", self.request, "--yes", "--file", reply)
        self.assertEqual(reply.read_bytes(), b"abc")

    def test_a_response_is_sent_and_not_answered(self):
        result, calls = self.traced("mgmt", "respond", "0", self.request, "--argument", "9", "--yes", "-o", "json",
                                    callback="TREL_MGMT_HBA_SEND_MGMT_RSP")
        self.assert_exit(result, 0)
        self.assertEqual(tool.validated("mgmt-respond", result.stdout)["response"], {"adapter": 0, "argument": 9, "bytes": 3})
        self.assertEqual([call["in"]["arg4"] for call in calls], [9])

    def test_a_response_that_fails_is_told(self):
        path = self.scenario(tool.adapter(5), faults=[tool.fault("TREL_MGMT_HBA_SEND_MGMT_RSP", driver_status="0x0BAD0021")])
        result = tool.run("mgmt", "respond", "0", self.request, "--yes", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertEqual(tool.errors(result)[0]["result_name"], "DFC_MGMT_RESPONSE_BAD0021")

    def test_results_are_named(self):
        cases = [("0x0BAD005D", "DFC_MGMT_TOO_LONG"), ("0x0BAD0021", "DFC_MGMT_COMMAND_BAD0021"),
                 ("0x0BAD005A", "DFC_MGMT_BAD005A"), ("0x0BAD0001", "DFC_MGMT_FAILED")]
        for status, name in cases:
            path = self.scenario(tool.adapter(5), faults=[tool.fault("TREL_MGMT_HBA_SEND_MGMT_CMD", driver_status=status)])
            result = tool.run("mgmt", "send", "0", 16 * "0", self.request, "--yes", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
            self.assert_exit(result, 1)
            self.assertEqual(tool.errors(result)[0]["result_name"], name)


class Identification(tool.ToolTest):
    """The commands rnid get, set and send."""

    def test_what_is_set_is_told_to_others(self):
        state = self.folder / "state"
        before = self.json_of("rnid-get", "rnid", "get", "0", VMKMGMT_SIM_STATE=state)["rnid"]
        document = self.json_of("rnid-set", "rnid", "set", "0", "--unit-type", "9", "--udp-port", "7000", "--ip-version", "1",
                                "--ip-address", "00" * 12 + "0a000001", "--attached-nodes", "3", "--flags", "2", "--yes",
                                VMKMGMT_SIM_STATE=state)
        self.assertEqual({change["field"] for change in document["changes"]},
                         {"unit_type", "udp_port", "ip_version", "ip_address", "attached_nodes", "discovery_flags"})
        after = self.json_of("rnid-get", "rnid", "get", "0", VMKMGMT_SIM_STATE=state)["rnid"]
        self.assertEqual((after["wwn"], after["port_id"]), (before["wwn"], before["port_id"]))
        told = self.json_of("els-send", "els", "send", "3", "0x010a00", "rnid", VMKMGMT_SIM_STATE=state)["identification"]
        for field, value in {"unit_type": 9, "udp_port": 7000, "ip_version": 1, "attached_nodes": 3, "discovery_flags": 2,
                             "ip_address": "00 " * 12 + "0a 00 00 01"}.items():
            self.assertEqual((after[field], told[field]), (value, value), field)

    def test_nothing_is_sent_where_nothing_changes(self):
        unit_type = self.json_of("rnid-get", "rnid", "get", "0")["rnid"]["unit_type"]
        result, calls = self.traced("rnid", "set", "0", "--unit-type", unit_type, "--yes", callback="TREL_MGMT_HBA_SETMGMTINFO")
        self.assert_exit(result, 0)
        self.assertEqual(calls, [])

    def test_other_ports_are_asked_by_port_or_node(self):
        by_port = self.json_of("rnid-send", "rnid", "send", "0", ARRAY)["answer"]
        self.assertEqual((by_port["port_wwn"], by_port["node_wwn"], by_port["unit_type"]), (ARRAY, ARRAY_NODE, None))
        by_node = self.json_of("rnid-send", "rnid", "send", "0", ARRAY_NODE, "--node")["answer"]
        self.assertEqual((by_node["wwn"], by_node["port_wwn"]), (ARRAY_NODE, ARRAY))
        self.assert_exit(tool.run("rnid", "send", "0", ARRAY_NODE), 1)


if __name__ == "__main__":
    tool.main()
