"""What goes wrong: exit codes, error objects, and what the commands do not do."""

import tool

BUSY = "0x0BAD0039"
HELP_COMMANDS = ["list", "show", "ports", "version", "log-message", "event-test", "set-state", "refresh", "mailbox send",
                 "region list", "region dump", "region show", "region init", "region write", "linkdown get", "linkdown set",
                 "fcoe params get", "fcoe params set", "fcoe fcf list", "fcoe connect list", "fcoe connect add",
                 "fcoe connect remove", "fcoe connect clear", "stats", "luns", "bindings", "events", "nameserver", "rnid get",
                 "rnid set", "rnid send", "scsi inquiry", "scsi capacity", "scsi luns", "scsi read", "scsi write", "scsi raw",
                 "fcp raw", "ct send", "ct raw", "els send", "mgmt send", "mgmt respond", "npiv status", "npiv list",
                 "npiv show", "npiv nodes", "link", "nodes", "iostat", "vpd", "params list", "params show", "params set",
                 "mem read", "mem write", "reg read", "reg write", "pci dump", "pci read", "pci write", "reset", "dump induce",
                 "dump region", "loopback run", "loopback end", "qos flag", "qos list", "qos set", "qos speed", "oas list",
                 "oas add", "oas remove"]


class Usage(tool.ToolTest):
    """Wrong usage: exit code 2, an error that names the argument, and nothing sent."""

    def test_wrong_usage_ends_with_2_and_says_what_is_wrong(self):
        cases = [([], "no command"), (["no-such"], "no-such"), (["show"], "ADAPTER"), (["show", "zz"], '"zz"'),
                 (["show", "10:00:00:5a:41:56:03"], "10:00:00:5a:41:56:03"), (["list", "-o", "xml"], "xml"),
                 (["set-state", "0", "4"], '"4"'), (["set-state", "0", "6"], '"6"'), (["set-state", "0", "x"], '"x"'),
                 (["event-test", "0", "0x100000000"], "FIRST"), (["event-test", "0", "1", "-"], "SECOND"),
                 (["log-message", "m" * 64], "64 bytes"), (["ports", "0", "--index", "x"], "--index"),
                 (["ports", "0", "--wwn", "10:00"], "--wwn"), (["ports", "0", "--discovered", "--index", "1"], "--index"),
                 (["--log", "verbose"], "--log")]
        for arguments, word in cases:
            with self.subTest(arguments):
                trace = self.folder / "trace"
                result = tool.run(*arguments, VMKMGMT_SIM_TRACE=trace)
                self.assert_exit(result, 2)
                self.assertEqual(result.stdout, "")
                self.assertIn(word, result.stderr)
                self.assertTrue(result.stderr.startswith("vaskdfc: "), result.stderr)

    def test_wrong_usage_is_an_error_object_too(self):
        error, = tool.errors(tool.run("-o", "json", "show", "zz"))
        self.assertIn("zz", error["message"])
        self.assertIsNone(error["operation"])

    def test_the_longest_message_is_sent_whole(self):
        text = "m" * 63
        self.assertEqual(self.json_of("log-message", "log-message", text)["message"], {"text": text, "sent": True})

    def test_help_has_examples_and_exit_codes(self):
        groups = {command.rpartition(" ")[0] for command in HELP_COMMANDS}
        for command in [*HELP_COMMANDS, *groups, "fcoe"]:
            result = tool.run(*command.split(), "--help")
            self.assert_exit(result, 0)
            self.assertIn("EXAMPLES\n  vaskdfc ", result.stdout)
            self.assertIn("EXIT CODES\n  0  done\n", result.stdout)
        for command in HELP_COMMANDS:
            *group, name = command.split()
            self.assertRegex(tool.run(*group, "--help").stdout, rf"(?m)^  {name} ")
        self.assertEqual(tool.run("--version").stdout, "vaskdfc 11.4.1080.0, library 11.4.1080.0\n")


class NothingThere(tool.ToolTest):
    """No adapter or no driver: exit code 3."""

    def test_no_driver(self):
        path = self.scenario(tool.adapter(1), interfaces=())
        result = tool.run("list", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 3)
        self.assertIn("no driver", tool.errors(result)[0]["message"])

    def test_no_adapter(self):
        path = self.scenario()
        result = tool.run("list", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 3)
        self.assertIn("no adapter", tool.errors(result)[0]["message"])

    def test_version_tells_tool_and_library_without_a_driver(self):
        document = self.json_of("version", "version", code=3, VMKMGMT_SIM_SCENARIO=self.scenario(interfaces=()))
        self.assertEqual(document["library"]["version"], "11.4.1080.0")
        self.assertEqual(set(document["driver"].values()), {None})

    def test_the_fallback_interface_will_do(self):
        path = self.scenario(tool.adapter(1), interfaces=["trel-mgmt"])
        self.assertEqual(self.json_of("version", "version", VMKMGMT_SIM_SCENARIO=path)["driver"]["interface"], "trel-mgmt")

    def test_an_unknown_adapter_is_named_beside_those_that_exist(self):
        for name in ("5", "10:00:00:00:00:00:00:99"):
            result = tool.run("show", name, "-o", "json")
            self.assert_exit(result, 3)
            error, = tool.errors(result)
            self.assertIn(name, error["message"])
            self.assertIn("4 (10:00:00:5a:41:56:01:21)", error["hint"])

    def test_a_scenario_that_is_wrong_is_no_driver(self):
        path = self.folder / "broken.json"
        path.write_text("{", encoding="utf-8")
        result = tool.run("list", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 3)
        self.assertIn("broken.json", result.stderr)


class Failing(tool.ToolTest):
    """Operations that fail: exit code 1, both statuses, the result and its name."""

    def list_with(self, *faults):
        """The list of three adapters, of which the middle one has these faults."""
        path = self.scenario(*(tool.adapter(board) for board in (2, 5, 9)), faults=[fault | {"board": 5} for fault in faults])
        result = tool.run("list", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        return tool.validated("list", result.stdout)["adapters"], tool.errors(result)

    def test_one_failing_adapter_does_not_end_a_listing(self):
        adapters, errors = self.list_with(tool.fault("TREL_MGMT_HBA_PORTATTRIBUTES", driver_status=BUSY))
        self.assertEqual([record["problem"] is None for record in adapters], [True, False, True])
        self.assertEqual([record["driver_board"] for record in adapters], [2, 5, 9])
        self.assertIn("0xbad0039", adapters[1]["problem"])
        self.assertIsNone(adapters[1]["port_wwn"])
        self.assertEqual(adapters[1]["model"], "Kestar K5603-FC16")
        self.assertEqual(errors, [{"message": "the driver information cannot be read", "adapter": 1, "operation": "DFC_GetDrvInfo",
                                   "platform_status": "0x00000000", "driver_status": "0x0bad0039", "result": 2,
                                   "result_name": "DFC_UNSUPPORTED", "hint": "the driver is busy: try again"}])

    def test_a_failure_that_the_library_reports_as_success_is_noticed(self):
        adapters, errors = self.list_with(tool.fault("TREL_MGMT_HBA_ADAPTERATTRIBUTES", platform_status="0x77"))
        self.assertIsNone(adapters[1]["model"])
        self.assertEqual(adapters[1]["state"], "online")
        error, = errors
        self.assertEqual((error["operation"], error["platform_status"], error["result"], error["result_name"]),
                         ("GetAdapterAttributes", "0x00000077", 0, "HBA_STATUS_OK"))

    def test_show_prints_what_can_be_read(self):
        path = self.scenario(tool.adapter(5), faults=[tool.fault("TREL_MGMT_GET_TRELDFC_INFO", driver_status=BUSY)])
        document = self.json_of("show", "show", "0", code=1, VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual(document["adapter"]["driver_board"], 5)
        self.assertEqual(document["port"]["state"], "online")
        self.assertEqual(set(document["driver"].values()), {None})

    def test_every_operation_that_fails_is_named_with_its_statuses(self):
        unknown_wwn = "50:00:00:00:00:00:09:99"
        failed = "HBA_STATUS_ERROR"
        cases = [(["ports", "0"], "TREL_MGMT_HBA_PORTATTRIBUTES", "GetAdapterPortAttributes", 1, failed),
                 (["ports", "0", "--discovered"], "TREL_MGMT_HBA_DISCPORTATTRIBUTES", "GetDiscoveredPortAttributes", 1, failed),
                 (["ports", "0", "--index", "0"], "TREL_MGMT_HBA_INDEXPORTATTRIBUTES", "GetPortAttributesByIndex", 1, failed),
                 (["ports", "0", "--wwn", unknown_wwn], "TREL_MGMT_HBA_WWPNPORTATTRIBUTES", "GetPortAttributesByWWN", 1, failed),
                 (["refresh", "0"], "TREL_MGMT_HBA_REFRESHINFO", "RefreshInformation", 1, failed),
                 (["log-message", "x"], "TREL_MGMT_LOG_MSG", "LogMsg", 0x0BAD0039, None),
                 (["event-test", "0"], "TREL_MGMT_EVENT_TEST", "EventTest", 0x0BAD0039, None),
                 (["set-state", "0", "1", "--yes"], "TREL_MGMT_SETDIAG", "SetBrdEnv", 0, None),
                 (["set-state", "all", "1", "--yes"], "TREL_MGMT_SETDIAG", "SetDiagEnv", 0, None)]
        for arguments, callback, operation, code, name in cases:
            with self.subTest(arguments):
                path = self.scenario(tool.adapter(5), faults=[tool.fault(callback, driver_status=BUSY, times=1)])
                result = tool.run(*arguments, "-o", "json", VMKMGMT_SIM_SCENARIO=path)
                self.assert_exit(result, 1)
                error, = tool.errors(result)
                self.assertEqual((error["operation"], error["driver_status"], error["result"], error["result_name"]),
                                 (operation, "0x0bad0039", code, name))
                text = tool.run(*arguments, VMKMGMT_SIM_SCENARIO=path).stderr
                self.assertIn(f"operation: {operation}\n", text)
                self.assertIn("driver status: 0x0bad0039\n", text)

    def test_ports_that_do_not_exist(self):
        result = tool.run("ports", "0", "--wwn", "50:00:00:00:00:00:09:99", "-o", "json")
        self.assertEqual(tool.errors(result)[0]["result_name"], "HBA_STATUS_ERROR_ILLEGAL_WWN")
        result = tool.run("ports", "0", "--index", "99", "-o", "json")
        self.assertEqual(tool.errors(result)[0]["result_name"], "HBA_STATUS_ERROR_ILLEGAL_INDEX")

    def test_module_information_and_revision_may_fail_alone(self):
        for callback, operation in (("TREL_MGMT_MOD_INFO", "ModInfo"), ("TREL_MGMT_CALL_VER", "CallVer")):
            path = self.scenario(tool.adapter(5), faults=[tool.fault(callback, driver_status=BUSY)])
            result = tool.run("version", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
            self.assert_exit(result, 1)
            self.assertEqual([error["operation"] for error in tool.errors(result)], [operation])
            tool.validated("version", result.stdout)

    def test_a_stale_view_is_renewed_once(self):
        path = self.scenario(tool.adapter(5, generation=3))
        result = tool.run("ports", "0", "--discovered", "-o", "json", "-v", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 0)
        self.assertEqual(len(tool.validated("ports", result.stdout)["ports"]), 2)
        self.assertIn("out of date; renewed", result.stderr)

        path = self.scenario(tool.adapter(5, generation=3), faults=[tool.fault("TREL_MGMT_HBA_REFRESHINFO", header={"arg4": 1})])
        result = tool.run("ports", "0", "--index", "0", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertEqual(tool.errors(result)[0]["result_name"], "HBA_STATUS_ERROR_STALE_DATA")


class Changes(tool.ToolTest):
    """What changes an adapter asks first, and a dry run changes nothing."""

    def test_a_dry_run_says_what_it_would_do_and_sends_nothing(self):
        cases = [(["set-state", "0", "1"], "TREL_MGMT_SETDIAG", "set adapter 0 to mode 1"),
                 (["set-state", "all", "3"], "TREL_MGMT_SETDIAG", "set all adapters to mode 3"),
                 (["refresh", "0"], "TREL_MGMT_HBA_REFRESHINFO", "adapter 0"),
                 (["event-test", "0", "7", "8"], "TREL_MGMT_EVENT_TEST", "values 7 and 8 on adapter 0"),
                 (["log-message", "hello"], "TREL_MGMT_LOG_MSG", '"hello"')]
        for arguments, callback, words in cases:
            with self.subTest(arguments):
                result, calls = self.traced(*arguments, "--dry-run", "--yes", callback=callback)
                self.assert_exit(result, 0)
                self.assertEqual(calls, [])
                self.assertIn("dry run: would ", result.stderr)
                self.assertIn(words, result.stderr)

    def test_without_a_terminal_nothing_is_changed(self):
        result, calls = self.traced("set-state", "0", "1", callback="TREL_MGMT_SETDIAG")
        self.assert_exit(result, 2)
        self.assertEqual(calls, [])
        self.assertIn("--yes", result.stderr)

    def test_asking_for_the_state_needs_no_confirmation(self):
        self.assertEqual(self.json_of("set-state", "set-state", "0", "0")["states"],
                         [{"adapter": 0, "driver_board": 1, "mode": 0, "set": False, "state": 1}])

    def set_with_answer(self, answer):
        """Runs set-state on a terminal where somebody types an answer."""
        result = self.answered(answer, "set-state", "0", "3", "-o", "json")
        self.assertIn("About to set adapter 0 to mode 3. Go ahead? [y/N] ", result.stderr)
        return result

    def test_yes_on_a_terminal_goes_ahead(self):
        result = self.set_with_answer(b"y\n")
        self.assert_exit(result, 0)
        self.assertEqual(tool.validated("set-state", result.stdout)["states"][0]["state"], 4)

    def test_anything_else_on_a_terminal_changes_nothing(self):
        for answer in (b"n\n", b"\n", b"\x04"):
            result = self.set_with_answer(answer)
            self.assert_exit(result, 1)
            self.assertEqual(result.stdout, "")

    def test_a_state_outlives_the_process_in_a_state_folder(self):
        state = self.folder / "state"
        self.json_of("set-state", "set-state", "1", "3", "--yes", VMKMGMT_SIM_STATE=state)
        after = self.json_of("set-state", "set-state", "1", "0", VMKMGMT_SIM_STATE=state)
        self.assertEqual(after["states"][0]["state"], 4)

    def test_all_adapters_are_set_in_order_until_one_fails(self):
        path = self.scenario(tool.adapter(2), tool.adapter(5))
        states = self.json_of("set-state", "set-state", "all", "3", "--yes", VMKMGMT_SIM_SCENARIO=path)["states"]
        self.assertEqual([(record["driver_board"], record["set"], record["state"]) for record in states],
                         [(2, True, 4), (5, True, 4)])

        result, calls = self.traced("set-state", "all", "3", "--yes", callback="TREL_MGMT_SETDIAG")
        self.assert_exit(result, 1)  # the last of the built-in adapters has failed
        boards = [1, 3, 4, 7, 12]
        self.assertEqual([call["board"] for call in calls], boards + boards, "every adapter is set, then asked for its state")
        self.assertIn("driver board 12", result.stderr)

    def test_the_waiting_mode_says_that_it_waits(self):
        path = self.scenario(tool.adapter(5, not_ready_reports=1))
        result = tool.run("set-state", "0", "2", "--yes", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 0)
        self.assertEqual(result.stderr.count("waiting while driver board 5 reports state 2"), 1)

    def test_verbose_shows_every_call(self):
        result = tool.run("event-test", "1", "-v")
        self.assertEqual(sum(line.startswith("driver call 122: ") for line in result.stderr.splitlines()), 32)
        self.assertRegex(result.stderr, r"driver call 98: board 3, platform status 0x0, driver status 0x0, \d+ us\n")


if __name__ == "__main__":
    tool.main()
