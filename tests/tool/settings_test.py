"""Settings in region 23: persistent link down, FCoE parameters, and the FCFs that a port may log in to."""

import images
import tool

UPDATE = "TREL_MGMT_HBA_ISSUE_UPD_MBX"
FCF_LIST = "TREL_MGMT_HBA_GET_FCF_LIST"
MAILBOX = "TREL_MGMT_MBOX"
REFUSED = {"callback": UPDATE, "driver_status": "0x0BAD0020"}
FIRST, SECOND = "20:00:00:11:22:33:44:55", "10:00:00:11:22:33:44:55"
ENTRY = f"names {FIRST} {SECOND}"

# Every command that changes a setting of region 23: arguments, and what it says about itself.
WRITERS = [(["linkdown", "set", "0", "on"], "switch on the persistent link down"),
           (["fcoe", "params", "set", "0", "--vlan", "8"], "set the FCoE parameters"),
           (["fcoe", "connect", "add", "0", "--vlan", "9", "--names", FIRST, SECOND], "add an entry to the FCF connect list"),
           (["fcoe", "connect", "remove", "0", "0"], "remove entry 0 from the FCF connect list"),
           (["fcoe", "connect", "clear", "0"], "empty the FCF connect list")]


def schema_of(arguments):
    """The name of a command's schema."""
    words = arguments[:arguments.index("0")]
    return "-".join(words)


def fcf(number, **fields):
    """An FCF of a scenario."""
    return {"names": [f"10:00:00:00:00:00:aa:{number:02x}", f"20:00:00:00:00:00:aa:{number:02x}"],
            "mac": f"00:00:00:00:aa:{number:02x}"} | fields


class SettingTest(tool.ToolTest):
    """A test with an FCoE adapter whose region 23 holds something, and an adapter of the older generation."""

    image = images.of_region23(vlan=7, connect=[(5, 1)])

    def settings(self, *faults, fcfs=(), regions=None):
        """The environment of runs that share a state folder."""
        regions = [self.image] if regions is None else regions
        adapters = [tool.adapter(5, protocol="fcoe", device="0x5602", regions=regions, fcfs=list(fcfs)),
                    tool.adapter(7, sli_mode=3, regions=regions)]
        return {"VMKMGMT_SIM_SCENARIO": self.scenario(*adapters, faults=faults), "VMKMGMT_SIM_STATE": self.folder / "state"}

    def params(self, settings):
        """VLAN id and FC-MAP."""
        document = self.json_of("fcoe-params-get", "fcoe", "params", "get", "0", **settings)["params"]
        return document["vlan"], document["fc_map"]

    def stays_down(self, adapter, settings):
        """The persistent link-down setting."""
        return self.json_of("linkdown-get", "linkdown", "get", adapter, **settings)["linkdown"]["persistent_link_down"]

    def entries(self, settings):
        """The FCF connect list."""
        document = self.json_of("fcoe-connect-list", "fcoe", "connect", "list", "0", **settings)
        return [(entry["position"], entry["vlan"], entry["flags"]) for entry in document["entries"]]


class EveryWriter(SettingTest):
    """What all commands that change a setting have in common."""

    def test_a_change_is_verified(self):
        for arguments, _ in WRITERS:
            with self.subTest(arguments):
                settings = self.settings() | {"VMKMGMT_SIM_STATE": self.folder / "-".join(arguments[:3])}
                document = self.json_of(schema_of(arguments), *arguments, "--yes", **settings)
                self.assertEqual(document["write"], {"adapter": 0, "sent": True, "verified": True})
                self.assertEqual(len(document["changes"]), 1)
                settings.pop("VMKMGMT_SIM_STATE")
                self.assertIn("Verified  yes\n", tool.run(*arguments, "--yes", **settings).stdout)

    def test_a_refused_write_is_caught_by_reading_back(self):
        settings = self.settings(REFUSED)
        for arguments, _ in WRITERS:
            with self.subTest(arguments):
                result = tool.run(*arguments, "--yes", "-o", "json", **settings)
                self.assert_exit(result, 1)
                document = tool.validated(schema_of(arguments), result.stdout)
                self.assertEqual(document["write"], {"adapter": 0, "sent": True, "verified": False})
                error, = tool.errors(result)
                self.assertIn("the driver accepted nothing, although the write was reported as done; region 23 still holds: ",
                              error["message"])
                self.assertEqual((error["driver_status"], error["result"]), ("0x0bad0020", 0))
        message = tool.run("fcoe", "params", "set", "0", "--vlan", "8", "--yes", **settings).stderr
        self.assertIn("region 23 still holds: VLAN 7\n", message)

    def test_a_write_that_cannot_be_read_back_is_not_verified(self):
        settings = self.settings(tool.fault("TREL_MGMT_HBA_ISSUE_DMP_MBX", driver_status="0x0BAD0020", call=3))
        result = tool.run("fcoe", "params", "set", "0", "--vlan", "8", "--yes", "-o", "json", **settings)
        self.assert_exit(result, 1)
        self.assertEqual(tool.validated("fcoe-params-set", result.stdout)["write"], {"adapter": 0, "sent": True, "verified": None})
        self.assertEqual([error["message"] for error in tool.errors(result)],
                         ["the FCoE parameters cannot be read", "the write cannot be verified: region 23 cannot be read back"])

    def test_a_dry_run_shows_the_changes_and_sends_no_update(self):
        settings = self.settings()
        for arguments, intent in WRITERS:
            with self.subTest(arguments):
                result, calls = self.traced(*arguments, "--dry-run", "--yes", "-o", "json", callback=UPDATE, **settings)
                self.assert_exit(result, 0)
                self.assertEqual(calls, [])
                self.assertIn(f"dry run: would {intent} of adapter 0\n", result.stderr)
                document = tool.validated(schema_of(arguments), result.stdout)
                self.assertEqual(document["write"], {"adapter": 0, "sent": False, "verified": None})
                self.assertEqual(len(document["changes"]), 1)

    def test_without_a_terminal_nothing_is_sent(self):
        settings = self.settings()
        for arguments, intent in WRITERS:
            result, calls = self.traced(*arguments, callback=UPDATE, **settings)
            self.assert_exit(result, 2)
            self.assertEqual((result.stdout, calls), ("", []))
            self.assertIn(f"not asked to {intent} of adapter 0", result.stderr)

    def test_the_changes_are_shown_before_the_question(self):
        settings = self.settings()
        result = self.answered(b"n\n", "fcoe", "params", "set", "0", "--vlan", "8", **settings)
        self.assert_exit(result, 1)
        self.assertEqual(result.stdout, "")
        self.assertIn("FIELD  OLD  NEW\nVLAN   7    8\nAbout to set the FCoE parameters of adapter 0. Go ahead? [y/N] ",
                      result.stderr)
        self.assertIn("the answer was not yes", result.stderr)
        self.assertEqual(self.params(settings)[0], 7)
        self.assert_exit(self.answered(b"y\n", "fcoe", "params", "set", "0", "--vlan", "8", **settings), 0)
        self.assertEqual(self.params(settings)[0], 8)

    def test_where_there_is_nothing_to_change_nothing_is_sent(self):
        settings = self.settings()
        same = [["linkdown", "set", "0", "off"], ["fcoe", "params", "set", "0", "--vlan", "7", "--fc-map", "0efc00"],
                ["fcoe", "connect", "add", "0", "--vlan", "5", "--names", FIRST, SECOND]]
        for arguments in same:
            result, calls = self.traced(*arguments, "-o", "json", callback=UPDATE, **settings)
            self.assert_exit(result, 0)
            self.assertEqual(calls, [])
            self.assertIn("nothing to change", result.stderr)
            document = tool.validated(schema_of(arguments), result.stdout)
            self.assertEqual((document["write"]["sent"], document["changes"]), (False, []))


class LinkDown(SettingTest):
    """The persistent link-down setting."""

    def test_what_one_process_sets_another_gets(self):
        settings = self.settings()
        for adapter in ("0", "1"):
            self.assertFalse(self.stays_down(adapter, settings))
            for value, expected in (("on", True), ("off", False), ("on", True)):
                self.json_of("linkdown-set", "linkdown", "set", adapter, value, "--yes", **settings)
                self.assertEqual(self.stays_down(adapter, settings), expected)
            self.json_of("region-init", "region", "init", adapter, "23", "--yes", **settings)
            self.assertFalse(self.stays_down(adapter, settings))

    def test_a_missing_region_lets_the_link_come_up(self):
        settings = self.settings(regions=[])
        self.assertFalse(self.stays_down("0", settings))
        self.json_of("linkdown-set", "linkdown", "set", "0", "on", "--yes", **settings)
        self.assertTrue(self.stays_down("0", settings))

    def test_a_driver_without_the_setting_says_so(self):
        for command in (["get", "2"], ["set", "2", "on", "--yes"]):
            result = tool.run("linkdown", *command, "-o", "json")
            self.assert_exit(result, 1)
            error, = tool.errors(result)
            self.assertEqual((error["operation"], error["result_name"]), ("DFC_GetPersistLinkDown", "DFC_UNSUPPORTED"))
            self.assertIn("not offered", error["hint"])

    def test_results_of_the_older_generation_are_those_of_its_mailboxes(self):
        # Eight mailboxes read the region, once for the tool and once for the library; the next one writes it.
        settings = self.settings(tool.fault(MAILBOX, board=7, call=17, times=1, driver_status="0x0BAD0020"))
        result = tool.run("linkdown", "set", "1", "on", "--yes", "-o", "json", **settings)
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertEqual((error["operation"], error["result_name"], error["message"]),
                         ("DFC_SetPersistLinkDown", "DFC_MBOX_GAVE_UP",
                          "the write failed; region 23 still holds: Persistent link down no"))

    def test_the_value_is_on_or_off(self):
        result = tool.run("linkdown", "set", "0", "maybe", "--yes")
        self.assert_exit(result, 2)
        self.assertIn('"maybe" is neither on nor off', result.stderr)


class FcoeParameters(SettingTest):
    """FC-MAP and VLAN id."""

    def test_what_is_not_named_stays(self):
        settings = self.settings()
        self.assertEqual(self.params(settings), (7, "0e:fc:00"))
        for arguments, expected in ((["--vlan", "0x3ea"], (1002, "0e:fc:00")),
                                    (["--fc-map", "0e:fc:12"], (1002, "0e:fc:12")),
                                    (["--no-vlan"], (None, "0e:fc:12")),
                                    (["--vlan", "4095", "--fc-map", "0E-FC-13"], (4095, "0e:fc:13"))):
            self.json_of("fcoe-params-set", "fcoe", "params", "set", "0", *arguments, "--yes", **settings)
            self.assertEqual(self.params(settings), expected)

    def test_the_older_generation_has_none(self):
        for arguments, operation in ((["params", "get", "1"], "DFC_FCoEGetParams"),
                                     (["params", "set", "1", "--vlan", "1", "--yes"], "DFC_FCoEGetParams"),
                                     (["connect", "list", "1"], "DFC_FCoEGetFCFConnectList"),
                                     (["fcf", "list", "1"], "DFC_FCoEGetFCFList")):
            result = tool.run("fcoe", *arguments, "-o", "json", **self.settings())
            self.assert_exit(result, 1)
            error, = tool.errors(result)
            self.assertEqual((error["operation"], error["result_name"]), (operation, "DFC_UNSUPPORTED"))

    def test_a_record_that_is_not_there_is_named(self):
        # Four records of known types make an image that the library takes as it is.
        image = images.chain(*[images.link_record()] * 4)
        result = tool.run("fcoe", "params", "get", "0", "-o", "json", **self.settings(regions=[images.scenario_region(23, image)]))
        self.assert_exit(result, 1)
        self.assertEqual(tool.errors(result)[0]["result_name"], "DFC_FAILED")

    def test_wrong_arguments_are_refused(self):
        cases = [([], "nothing to set"), (["--vlan", "4096"], "0 to 4095"), (["--vlan", "x"], '"x"'),
                 (["--fc-map", "0e:fc"], '"0e:fc"'), (["--fc-map", "0e:fc:0g"], '"0e:fc:0g"'),
                 (["--vlan", "1", "--no-vlan"], "--vlan")]
        for arguments, words in cases:
            result, calls = self.traced("fcoe", "params", "set", "0", *arguments, "--yes", callback=UPDATE)
            self.assert_exit(result, 2)
            self.assertEqual((result.stdout, calls), ("", []))
            self.assertIn(words, result.stderr)


class ConnectList(SettingTest):
    """The FCFs that a port may log in to."""

    def change(self, command, *arguments, settings):
        """Changes the list and returns the changes."""
        return self.json_of(f"fcoe-connect-{command}", "fcoe", "connect", command, "0", *arguments, "--yes", **settings)["changes"]

    def test_entries_are_added_removed_and_cleared(self):
        settings = self.settings()
        self.assertEqual(self.entries(settings), [(0, 5, "0x01")])
        names = (FIRST + SECOND).replace(":", "")
        changes = self.change("add", "--vlan", "9", "--names", names, "--flags", "0x3e", settings=settings)
        self.assertEqual(changes, [{"field": "entry_1", "old": None, "new": f"VLAN 9, {ENTRY}, flags 0x3f"}])
        self.assertEqual(self.entries(settings), [(0, 5, "0x01"), (1, 9, "0x3f")])
        changes = self.change("remove", "0", settings=settings)
        self.assertEqual([change["field"] for change in changes], ["entry_0", "entry_1"])
        self.assertEqual(self.entries(settings), [(0, 9, "0x3f")])
        self.change("clear", settings=settings)
        self.assertEqual(self.entries(settings), [])

    def test_the_list_holds_sixteen_entries(self):
        settings = self.settings(regions=[images.of_region23(connect=[(vlan, 1) for vlan in range(15)])])
        self.change("add", "--vlan", "100", "--names", FIRST, SECOND, settings=settings)
        self.assertEqual(len(self.entries(settings)), 16)
        result, calls = self.traced("fcoe", "connect", "add", "0", "--vlan", "101", "--names", FIRST, SECOND, "--yes",
                                    callback=UPDATE, **settings)
        self.assert_exit(result, 1)
        self.assertEqual(calls, [])
        self.assertIn("is full: it has 16 entries", result.stderr)

    def test_an_entry_that_is_not_there_cannot_be_removed(self):
        result = tool.run("fcoe", "connect", "remove", "0", "1", "--yes", **self.settings())
        self.assert_exit(result, 1)
        self.assertIn("has no entry 1", result.stderr)

    def test_wrong_arguments_are_refused(self):
        cases = [(["add", "0"], "--vlan"), (["add", "0", "--vlan", "4096", "--names", FIRST, SECOND], "--vlan"),
                 (["add", "0", "--vlan", "1", "--names", FIRST], "32 hexadecimal digits"),
                 (["add", "0", "--vlan", "1", "--names", FIRST, "zz"], '"zz"'),
                 (["add", "0", "--vlan", "1", "--names", FIRST, SECOND, "--flags", "0x40"], "--flags"),
                 (["remove", "0", "16"], "POSITION"), (["remove", "0"], "POSITION")]
        for arguments, words in cases:
            with self.subTest(arguments):
                result = tool.run("fcoe", "connect", *arguments, "--yes")
                self.assert_exit(result, 2)
                self.assertIn(words, result.stderr)


class Forwarders(SettingTest):
    """The FCFs that the port has discovered."""

    def forwarders(self, count):
        """The list of so many."""
        settings = self.settings(fcfs=[fcf(number) for number in range(count)])
        return self.json_of("fcoe-fcf-list", "fcoe", "fcf", "list", "0", **settings)

    def test_all_of_them_are_listed_however_many_there_are(self):
        for count in (0, 1, 8, 9, 64):
            document = self.forwarders(count)
            self.assertEqual(document["list"]["forwarders"], count)
            self.assertEqual([record["mac_address"] for record in document["fcfs"]],
                             [f"00:00:00:00:aa:{number:02x}" for number in range(count)])

    def test_vlans_are_ranges(self):
        settings = self.settings(fcfs=[fcf(1, vlans=[1, *range(100, 105), 4094, 4095]), fcf(2, vlans=[0]), fcf(3)])
        fcfs = self.json_of("fcoe-fcf-list", "fcoe", "fcf", "list", "0", **settings)["fcfs"]
        self.assertEqual([record["vlans"] for record in fcfs], ["1,100-104,4094-4095", "0", ""])

    def test_an_adapter_that_knows_no_forwarders_says_so(self):
        result = tool.run("fcoe", "fcf", "list", "1", "-o", "json")  # the newer generation, but not of an FCoE type
        self.assert_exit(result, 1)
        self.assertEqual(tool.errors(result)[0]["message"], "the forwarders cannot be read")

    def test_a_list_that_ends_early_says_so(self):
        failing = tool.fault(FCF_LIST, driver_status="0x0BAD0039", call=3)
        settings = self.settings(failing, fcfs=[fcf(number) for number in range(5)])
        result = tool.run("fcoe", "fcf", "list", "0", "-o", "json", **settings)
        self.assert_exit(result, 1)
        self.assertEqual(tool.validated("fcoe-fcf-list", result.stdout)["list"]["forwarders"], 2)
        error, = tool.errors(result)
        self.assertIn("ends early", error["message"])
        self.assertEqual((error["driver_status"], error["result"]), ("0x0bad0039", 0))


if __name__ == "__main__":
    tool.main()
