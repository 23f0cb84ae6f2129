"""Resets and dumps."""

import tool

OLDER, NEWER = "3", "0"  # adapters of SLI mode 3 and 4
RESET = "TREL_MGMT_RESET"


class ResetTest(tool.ToolTest):
    """A test with a state folder."""

    def setUp(self):
        super().setUp()
        self.state = {"VMKMGMT_SIM_STATE": self.folder / "state"}

    def failure(self, *arguments, **variables):
        """The error of a command that fails."""
        result = tool.run(*arguments, "--yes", "-o", "json", **variables)
        self.assert_exit(result, 1)
        self.assertEqual(result.stdout, "")
        error, = tool.errors(result)
        return error


class Reset(ResetTest):
    """Resets of an adapter."""

    def test_the_type_goes_to_the_driver(self):
        for words, number in (([], 1), (["--type", "2"], 2), (["--type", "3"], 3)):
            result, calls = self.traced("reset", NEWER, *words, "--yes", "-o", "json", callback=RESET)
            self.assert_exit(result, 0)
            self.assertEqual([(call["board"], call["in"]["arg6"]) for call in calls], [(1, number)])
            self.assertEqual(tool.validated("reset", result.stdout)["outcome"],
                             {"adapter": 0, "sent": True, "state": None, "type": number})

    def test_a_wait_lasts_until_the_adapter_is_back(self):
        path = self.scenario(tool.adapter(1, not_ready_reports=3))
        variables = {"VMKMGMT_SIM_SCENARIO": path, **self.state}
        document = self.json_of("reset", "reset", "0", "--wait", "20", "--yes", **variables)
        self.assertEqual(document["outcome"]["state"], 1)

    def test_a_wait_in_vain_is_a_failure(self):
        path = self.scenario(tool.adapter(1, not_ready_reports=1000))
        error = self.failure("reset", "0", "--wait", "0.5", VMKMGMT_SIM_SCENARIO=path)
        self.assertIn("not ready after 0.5 seconds", error["message"])

    def test_a_type_that_the_driver_does_not_offer_has_a_name_of_its_own(self):
        def alter(scenario):
            scenario["driver"]["reset_type_3"] = False
        error = self.failure("reset", NEWER, "--type", "3", VMKMGMT_SIM_SCENARIO=self.altered_built_in(alter))
        self.assertEqual((error["result"], error["result_name"]), (4, "DFC_RESET_NO_SUCH_TYPE"))

    def test_a_refused_reset_is_a_failure(self):
        path = self.scenario(tool.adapter(1), faults=[tool.fault(RESET, driver_status="0x0BAD0004")])
        error = self.failure("reset", "0", VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual((error["operation"], error["driver_status"], error["result_name"]),
                         ("DFC_ResetAdapter", "0x0bad0004", "DFC_FAILED"))

    def test_types_that_do_not_exist_are_wrong_usage(self):
        for number in ("0", "4", "x"):
            self.assert_exit(tool.run("reset", NEWER, "--type", number, "--yes"), 2)


class Questions(ResetTest):
    """What asks before it does anything."""

    COMMANDS = [(["reset", NEWER], RESET, "reset adapter 0 by type 1"),
                (["dump", "induce", NEWER], "TREL_MGMT_INDUCE_DUMP", "make adapter 0 produce a dump, which restarts it")]

    def test_nothing_is_sent_in_a_dry_run_or_without_an_answer(self):
        for words, callback, intent in self.COMMANDS:
            for more, code in ((["--dry-run"], 0), ([], 2)):
                result, calls = self.traced(*words, *more, callback=callback)
                self.assert_exit(result, code)
                self.assertEqual(calls, [])
                self.assertIn(intent, result.stderr)

    def test_an_answer_decides(self):
        for words, _, intent in self.COMMANDS:
            result = self.answered(b"n\n", *words)
            self.assert_exit(result, 1)
            self.assertIn(f"About to {intent}. Go ahead? [y/N] ", result.stderr)
            self.assert_exit(self.answered(b"y\n", *words), 0)


class Dump(ResetTest):
    """Dumps of an adapter's firmware."""

    def test_a_dump_comes_out_of_the_memory(self):
        self.json_of("dump-induce", "dump", "induce", OLDER, "--wait", "20", "--yes", **self.state)
        region = self.json_of("dump-region", "dump", "region", OLDER, "--file", self.folder / "dump.bin", **self.state)["region"]
        dump = (self.folder / "dump.bin").read_bytes()
        self.assertEqual((dump[:4], len(dump), region["number"], region["bytes"]), (b"DUMP", region["length"], 1, 16))
        self.assertEqual(int.from_bytes(dump[4:8], "little"), len(dump))
        self.assertEqual(region["address"], "0x00030000")

    def test_without_a_dump_the_result_has_a_name_of_its_own(self):
        error = self.failure("dump", "region", OLDER)
        self.assertEqual((error["result"], error["result_name"]), (3, "DFC_DUMP_REGION_BAD0014"))
        self.assertIn("dump induce", error["hint"])

    def test_regions_that_are_not_there_are_not_supported(self):
        for words in ([OLDER, "2"], [NEWER]):
            error = self.failure("dump", "region", *words)
            self.assertEqual((error["result"], error["result_name"]), (2, "DFC_UNSUPPORTED"))

    def test_a_dump_that_was_not_induced_has_the_name_of_its_inverted_result(self):
        path = self.scenario(tool.adapter(1), faults=[tool.fault("TREL_MGMT_INDUCE_DUMP", driver_status="0x0BAD0020")])
        error = self.failure("dump", "induce", "0", VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual((error["result"], error["result_name"]), (0, "DFC_DUMP_NOT_INDUCED"))

    def test_a_descriptor_that_says_too_much_leads_to_no_file(self):
        self.assert_exit(tool.run("dump", "induce", OLDER, "--yes", **self.state), 0)

        def alter(scenario):
            scenario["faults"] = [tool.fault("TREL_MGMT_GET_DUMPREGION", garbage_seed=3)]
        path = self.altered_built_in(alter)
        result = tool.run("dump", "region", OLDER, "--file", self.folder / "x", VMKMGMT_SIM_SCENARIO=path, **self.state)
        self.assert_exit(result, 1)
        self.assertFalse((self.folder / "x").exists())


if __name__ == "__main__":
    tool.main()
