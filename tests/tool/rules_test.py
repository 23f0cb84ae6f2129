"""Rules: priority of FCP I/O, and OAS rules for single logical units."""

import tool

HEADER = "match1,match2,match3,match4,prio"
FIRST, SECOND, THIRD = (f"10:00:00:00:00:00:00:{number:02x}" for number in (1, 2, 3))
RULES = "TREL_MGMT_SET_FCP_PRIORITY"
TARGET = "50:5a:41:00:0c:00:10:03"  # which the adapter below sees
ABSENT = "50:00:00:00:00:00:09:99"
VIRTUAL_PORT = "10:01:00:5a:41:56:03:10"


class RulesTest(tool.ToolTest):
    """A test with a state folder, about adapter 1."""

    def setUp(self):
        super().setUp()
        self.state = {"VMKMGMT_SIM_STATE": self.folder / "state"}

    def file(self, name, *lines):
        """Writes a file of rules and returns its path."""
        path = self.folder / name
        path.write_text("\n".join(lines), encoding="utf-8")
        return path

    def priorities(self):
        """The priorities of the rules in the driver's order."""
        return [rule["prio"] for rule in self.json_of("qos-list", "qos", "list", "1", **self.state)["rules"]]

    def failure(self, *arguments, **variables):
        """The error of a command that fails."""
        result = tool.run(*arguments, "--yes", "-o", "json", **variables)
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        return error


class Flag(RulesTest):
    """Whether the rules count."""

    def test_it_is_shown_and_set(self):
        self.assertEqual(self.json_of("qos-flag", "qos", "flag", "1", **self.state)["priority"],
                         {"adapter": 1, "on": True, "flag": 1})
        document = self.json_of("qos-flag-set", "qos", "flag", "1", "off", "--yes", **self.state)
        self.assertEqual((document["write"]["verified"], document["changes"]), (True, [{"field": "flag", "old": 1, "new": 0}]))
        self.assertFalse(self.json_of("qos-flag", "qos", "flag", "1", **self.state)["priority"]["on"])

    def test_a_value_that_the_driver_refuses_is_a_failure(self):
        error = self.failure("qos", "flag", "1", "2")
        self.assertIn("the write failed; the priority flag still holds: Flag 1", error["message"])
        self.assertEqual(error["operation"], "DFC_QoSSetGlobalFlag")
        self.assert_exit(tool.run("qos", "flag", "1", "perhaps", "--yes"), 2)


class Table(RulesTest):
    """The table of rules."""

    LINES = [HEADER, f"*,{FIRST},*,*,1", f"{FIRST},{SECOND},0001000000000000,0000000000000000,2", f"{FIRST},*,*,*,3",
             f"{FIRST},{SECOND},*,*,4", f"{FIRST},{SECOND},0002000000000000,*,5", f"{SECOND},{THIRD},*,*,6"]

    def test_the_driver_sees_the_most_specific_rules_first(self):
        path = self.file("rules.csv", *self.LINES)
        result, calls = self.traced("qos", "set", "1", path, "--yes", "-o", "json", callback=RULES, **self.state)
        self.assert_exit(result, 0)
        self.assertEqual([call["in"]["arg2"] for call in calls], [6])
        document = tool.validated("qos-set", result.stdout)
        self.assertTrue(document["write"]["verified"])
        self.assertEqual([change["new"].split()[-1] for change in document["changes"]], ["2", "5", "6", "4", "3", "1"])
        self.assertEqual(self.priorities(), [2, 5, 6, 4, 3, 1])

    def test_groups_can_keep_the_order_of_the_file(self):
        path = self.file("rules.csv", *self.LINES)
        self.assert_exit(tool.run("qos", "set", "1", path, "--keep-order", "--yes", **self.state), 0)
        self.assertEqual(self.priorities(), [2, 5, 4, 6, 3, 1])

    def test_what_a_list_prints_can_be_set_again(self):
        self.assert_exit(tool.run("qos", "set", "1", self.file("rules.csv", *self.LINES), "--yes", **self.state), 0)
        for form in ("csv", "json"):
            path = self.file(f"listed.{form}", tool.run("qos", "list", "1", "-o", form, **self.state).stdout)
            result, calls = self.traced("qos", "set", "1", path, "--keep-order", callback=RULES, **self.state)
            self.assert_exit(result, 0)
            self.assertIn("nothing to change", result.stderr)
            self.assertEqual(calls, [])

    def test_no_rules_are_a_table_too(self):
        self.assert_exit(tool.run("qos", "set", "1", self.file("rules.json", "[]"), "--yes", **self.state), 0)
        self.assertEqual(self.priorities(), [])

    def test_the_order_is_shown_before_the_question(self):
        path = self.file("rules.csv", HEADER, f"*,{FIRST},*,*,1", f"{FIRST},*,*,*,2")
        result = self.answered(b"n\n", "qos", "set", "0", path)
        self.assert_exit(result, 1)
        self.assertIn(f"Rule 0  -    {FIRST} * * *, priority 2\nRule 1  -    * {FIRST} * *, priority 1\n"
                      "About to replace the priority rules by 2, in this order, of adapter 0. Go ahead? [y/N] ", result.stderr)

    def test_a_bad_line_is_named_and_nothing_is_sent(self):
        for name, lines, part in (("r.csv", [HEADER, "*,*,*,*,1", "*,*,zz,*,2"], 'r.csv: line 3, column match3: "zz" is neither'),
                                  ("r.json", ['[{"match1": 1}]'], "r.json: rules[0]: "),
                                  ("r.json", ["[", "  }"], "line 2, column 3")):
            result, calls = self.traced("qos", "set", "1", self.file(name, *lines), "--yes", callback=RULES)
            self.assert_exit(result, 2)
            self.assertIn(part, result.stderr)
            self.assertEqual(calls, [])

    def test_a_table_that_the_driver_refuses_is_a_failure(self):
        error = self.failure("qos", "set", "1", self.file("r.csv", HEADER, "*,*,*,*,8"))
        self.assertIn("the write failed", error["message"])
        self.assertEqual((error["operation"], error["driver_status"]), ("DFC_QoSSetConfig", "0x0bad0205"))

    def test_a_full_table_travels_whole(self):
        path = self.file("rules.csv", HEADER, *["*,*,*,*,1"] * 998)
        self.assert_exit(tool.run("qos", "set", "1", path, "--yes", **self.state), 0)
        self.assertEqual(len(self.priorities()), 998)

    def test_failures_name_the_operation(self):
        for words, callback, operation in ((["flag", "0"], "TREL_MGMT_GET_FCP_PRIORITY_FLAG", "DFC_QoSGetGlobalFlag"),
                                           (["list", "0"], "TREL_MGMT_GET_FCP_PRIORITY", "DFC_QoSGetConfig"),
                                           (["speed", "0"], "TREL_MGMT_GET_LOGICAL_LINK_SPEED", "DFC_GetQoSLinkSpeed")):
            path = self.scenario(tool.adapter(1), faults=[tool.fault(callback, driver_status="0x0BAD0039")])
            error = self.failure("qos", *words, VMKMGMT_SIM_SCENARIO=path)
            self.assertEqual((error["operation"], error["result_name"]), (operation, "DFC_FAILED"))


class Speed(RulesTest):
    """The logical link speed."""

    def test_it_is_that_of_the_link(self):
        self.assertEqual(self.json_of("qos-speed", "qos", "speed", "1")["speed"], {"adapter": 1, "megabits": 16000, "value": 1600})

    def test_without_a_link_it_is_not_known(self):
        self.assertEqual(self.json_of("qos-speed", "qos", "speed", "2")["speed"], {"adapter": 2, "megabits": None, "value": 65535})

    def test_the_older_generation_does_not_offer_it(self):
        error = self.failure("qos", "speed", "3")
        self.assertEqual((error["result"], error["result_name"]), (2, "DFC_UNSUPPORTED"))


class Oas(RulesTest):
    """Rules for single logical units."""

    def luns(self, *options):
        """The LUNs that have rules."""
        return [rule["lun"] for rule in self.json_of("oas-list", "oas", "list", "1", TARGET, *options, **self.state)["rules"]]

    def test_rules_say_what_the_driver_knows_of_the_unit(self):
        document = self.json_of("oas-list", "oas", "list", "1", TARGET)
        self.assertEqual(document["ports"], {"adapter": 1, "initiator": "10:00:00:5a:41:56:03:10", "target": TARGET})
        self.assertEqual(document["rules"],
                         [{"lun": 1, "enabled": True, "unit_present": True, "blocks": 131072, "target_port": TARGET,
                           "target_node": "50:5a:41:00:0c:00:10:00", "word_16": "0x00000001"}])

    def test_rules_are_added_and_removed(self):
        document = self.json_of("oas-add", "oas", "add", "1", TARGET, "3", "--yes", **self.state)
        self.assertEqual((document["write"]["verified"], document["changes"]),
                         (True, [{"field": "lun_3", "old": None, "new": "rule set"}]))
        self.assertEqual(self.luns(), [1, 3])
        document = self.json_of("oas-remove", "oas", "remove", "1", TARGET, "1", "--yes", **self.state)
        self.assertEqual(document["changes"], [{"field": "lun_1", "old": "rule set", "new": None}])
        self.assertEqual(self.luns(), [3])

    def test_where_there_is_nothing_to_change_nothing_is_sent(self):
        for words in (["add", "1", TARGET, "1"], ["remove", "1", TARGET, "2"]):
            result, calls = self.traced("oas", *words, callback="TREL_MGMT_OAS_SET_RULE")
            self.assert_exit(result, 0)
            self.assertIn("nothing to change", result.stderr)
            self.assertEqual(calls, [])

    def test_a_virtual_port_has_rules_of_its_own(self):
        self.assert_exit(tool.run("oas", "add", "1", TARGET, "7", "--initiator", VIRTUAL_PORT, "--yes", **self.state), 0)
        self.assertEqual((self.luns("--initiator", VIRTUAL_PORT), self.luns()), ([7], [1]))

    def test_a_rule_about_a_port_that_is_not_there_stands_and_waits(self):
        result = tool.run("oas", "add", "1", ABSENT, "0", "--yes", "-o", "json", **self.state)
        self.assert_exit(result, 1)
        self.assertTrue(tool.validated("oas-add", result.stdout)["write"]["verified"])
        error, = tool.errors(result)
        self.assertEqual((error["result"], error["result_name"]), (18, "DFC_OAS_NO_REMOTE_PORT"))
        self.assertIn("stands and waits", error["hint"])
        self.assert_exit(tool.run("oas", "remove", "1", ABSENT, "0", "--yes", **self.state), 0)
        error = self.failure("oas", "list", "1", ABSENT, **self.state)
        self.assertEqual((error["result"], error["result_name"]), (15, "DFC_OAS_BAD000F"))

    def test_failures_have_names_of_their_own(self):
        switched_off = tool.adapter(1, parameters={"oas_enabled": 0})
        cases = [(["list", "3", TARGET], {}, 32, "DFC_OAS_BAD0020"),
                 (["list", "1", TARGET, "--initiator", ABSENT], {}, 5, "DFC_OAS_BAD0010"),
                 (["list", "0", TARGET], {"VMKMGMT_SIM_SCENARIO": self.scenario(switched_off)}, 33, "DFC_OAS_BAD0030")]
        for words, variables, number, name in cases:
            error = self.failure("oas", *words, **variables)
            self.assertEqual((error["operation"], error["result"], error["result_name"]), ("DFC_GetOASLunList", number, name))

    def test_wrong_names_are_wrong_usage(self):
        for words, part in ((["list", "1", "x"], "TARGET"), (["add", "1", TARGET, "256"], "LUN"),
                            (["add", "1", TARGET, "1", "--initiator", "x"], "--initiator")):
            result = tool.run("oas", *words, "--yes")
            self.assert_exit(result, 2)
            self.assertIn(part, result.stderr)


if __name__ == "__main__":
    tool.main()
