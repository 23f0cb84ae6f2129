"""Loopback tests, which end with the loopback over whatever happens."""

import json
import signal
import subprocess
import time

import tool

TEST, MODE = "TREL_MGMT_LOOPBACK_TEST", "TREL_MGMT_LOOPBACK_MODE"
END_NEWER, END_OLDER = "TREL_MGMT_DIAG_MODE_END", "TREL_MGMT_LIP"
ENDED = "vaskdfc: the loopback of adapter 0 is ended\n"


class LoopbackTest(tool.ToolTest):
    """A test with an adapter of each generation."""

    def settings(self, *faults, **loopback):
        """The environment of a run."""
        adapters = [tool.adapter(1, loopback=loopback), tool.adapter(2, sli_mode=3, loopback=loopback)]
        if loopback.get("plug"):  # which is where the cable would be
            adapters = [{key: value for key, value in card.items() if key not in ("fabric", "fc_id")} for card in adapters]
        return {"VMKMGMT_SIM_SCENARIO": self.scenario(*adapters, faults=faults)}

    def calls(self, *arguments, **settings):
        """Runs the tool; its result and the callbacks about loopback that it made."""
        trace = self.folder / "loopback.trace"
        trace.unlink(missing_ok=True)
        result = tool.run(*arguments, VMKMGMT_SIM_TRACE=trace, **settings)
        return result, self.callbacks(trace)

    @staticmethod
    def callbacks(trace):
        """The callbacks about loopback in a trace."""
        lines = trace.read_text(encoding="utf-8").splitlines() if trace.exists() else []
        names = [json.loads(line)["callback"] for line in lines]
        return [name for name in names if name in (TEST, MODE, END_NEWER, END_OLDER)]


class Runs(LoopbackTest):
    """What comes back, and what is said about it."""

    def test_what_comes_back_is_counted(self):
        result, calls = self.calls("loopback", "run", "0", "--count", "3", "--size", "5000", "--yes", "-o", "json",
                                   **self.settings())
        self.assert_exit(result, 0)
        document = tool.validated("loopback-run", result.stdout)
        loopback = document["loopback"]
        self.assertEqual((loopback["mode"], loopback["pattern"], loopback["tests"], loopback["bytes"], loopback["differing_bytes"],
                          loopback["ended"], document["differences"]), ("internal", "prbs31", 3, 15000, 0, True, []))
        self.assertAlmostEqual(loopback["bytes_per_second"] * loopback["seconds"], 15000, delta=1)
        self.assertEqual(calls, [MODE, TEST, TEST, TEST, END_NEWER])
        self.assertEqual(result.stderr, ENDED)

    def test_the_older_generation_ends_it_by_a_lip(self):
        result, calls = self.calls("loopback", "run", "1", "--yes", **self.settings())
        self.assert_exit(result, 0)
        self.assertEqual(calls, [MODE, TEST, END_OLDER])

    def test_modes_go_by_name_and_number(self):
        for words, code in ((["internal"], 1), (["1"], 1), (["external"], 4), (["2"], 4)):
            result, calls = self.traced("loopback", "run", "0", "--mode", *words, "--argument", "7", "--yes", callback=MODE,
                                        **self.settings(plug=True))
            self.assert_exit(result, 0)
            self.assertEqual([(call["in"]["arg5"], call["in"]["arg7"]) for call in calls], [(code, 7)])

    def test_every_pattern_comes_back(self):
        (self.folder / "frames.bin").write_bytes(b"frames" * 100)
        for words, name, size in ((["--pattern", "walking-ones"], "walking-ones", 2048), (["--pattern", "prbs15"], "prbs15", 2048),
                                  (["--file", self.folder / "frames.bin"], "file", 600),
                                  (["--file", self.folder / "frames.bin", "--size", "65536"], "file", 65536)):
            loopback = self.json_of("loopback-run", "loopback", "run", "0", *words, "--yes", **self.settings())["loopback"]
            self.assertEqual((loopback["pattern"], loopback["size"], loopback["differing_bytes"]), (name, size, 0))

    def test_a_difference_is_a_failure_that_says_where(self):
        result, calls = self.calls("loopback", "run", "0", "--count", "20", "--pattern", "walking-ones", "--yes", "-o", "json",
                                   **self.settings(bit_errors=2))
        self.assert_exit(result, 1)
        document = tool.validated("loopback-run", result.stdout)
        loopback = document["loopback"]
        self.assertEqual((loopback["tests"], loopback["differing_tests"], loopback["differing_bits"], loopback["ended"]),
                         (20, 20, 40, True))
        self.assertEqual(len(document["differences"]), 16)
        first = document["differences"][0]
        self.assertEqual(int(first["sent"], 16), 1 << first["offset"] % 8)
        self.assertEqual((int(first["sent"], 16) ^ int(first["received"], 16)).bit_count(), 1)
        error, = tool.errors(result)
        self.assertIn(f"the first difference is in test 1 at offset {first['offset']}: {first['sent']} was sent, "
                      f"{first['received']} received", error["message"])
        self.assertEqual(calls[-1], END_NEWER)

    def test_progress_is_shown_on_a_terminal(self):
        shown = self.on_terminal("loopback", "run", "0", "--count", "3", "--yes", **self.settings())[1]
        self.assertIn("loopback tests [", shown)


class Ends(LoopbackTest):
    """The loopback is ended on every path on which it was begun."""

    def test_after_a_test_that_failed(self):
        settings = self.settings(tool.fault(TEST, call=2, driver_status="0x0BAD0039"))
        result, calls = self.calls("loopback", "run", "0", "--count", "5", "--yes", "-o", "json", **settings)
        self.assert_exit(result, 1)
        self.assertEqual(calls, [MODE, TEST, TEST, END_NEWER])
        self.assertEqual(tool.validated("loopback-run", result.stdout)["loopback"]["tests"], 1)
        error, = tool.errors(result)
        self.assertEqual((error["message"], error["result_name"]), ("loopback test 2 failed", "DFC_LOOPBACK_BAD0039"))
        self.assertIn(ENDED, result.stderr)

    def test_after_a_loop_that_is_open(self):
        result, calls = self.calls("loopback", "run", "0", "--mode", "external", "--yes", "-o", "json", **self.settings())
        self.assert_exit(result, 1)
        self.assertEqual(calls, [MODE, TEST, END_NEWER])
        error, = tool.errors(result)
        self.assertEqual((error["result"], error["result_name"]), (6, "DFC_LOOPBACK_BAD000A"))
        self.assertIn("plug", error["hint"])

    def test_after_a_signal(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number):
                trace = self.folder / f"{number}.trace"
                settings = self.settings(tool.fault(TEST, delay_ms=50))
                process = subprocess.Popen([tool.PROGRAM, "loopback", "run", "0", "--count", "100000", "--yes", "-o", "json"],
                                           stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                           env=tool.environment(VMKMGMT_SIM_TRACE=trace, **settings))
                deadline = time.monotonic() + 30
                while TEST not in self.callbacks(trace) and time.monotonic() < deadline:
                    time.sleep(0.01)
                process.send_signal(number)
                output, errors = (text.decode() for text in process.communicate(timeout=30))
                self.assertEqual(process.returncode, 1, errors)
                self.assertEqual(self.callbacks(trace)[-1], END_NEWER)
                loopback = tool.validated("loopback-run", output)["loopback"]
                self.assertTrue(loopback["ended"])
                self.assertLess(loopback["tests"], 100000)
                self.assertIn(ENDED, errors)
                self.assertIn("ended early, after", errors)

    def test_an_end_that_fails_says_so(self):
        settings = self.settings(tool.fault(END_NEWER, driver_status="0x0BAD0021"))
        result = tool.run("loopback", "run", "0", "--yes", "-o", "json", **settings)
        self.assert_exit(result, 1)
        self.assertFalse(tool.validated("loopback-run", result.stdout)["loopback"]["ended"])
        error, = tool.errors(result)
        self.assertEqual((error["operation"], error["result_name"]), ("DFC_EndLoopback", "DFC_LOOPBACK_BAD0021"))
        self.assertIn("may still be out of the fabric", error["message"])

    def test_where_it_did_not_begin_nothing_is_ended(self):
        settings = self.settings(tool.fault(MODE, driver_status="0x0BAD0021"))
        result, calls = self.calls("loopback", "run", "0", "--yes", "-o", "json", **settings)
        self.assert_exit(result, 1)
        self.assertEqual((calls, result.stdout), ([MODE], ""))
        error, = tool.errors(result)
        self.assertEqual(error["result_name"], "DFC_LOOPBACK_BAD0021")
        self.assertIn("vaskdfc loopback end", error["hint"])

    def test_by_hand_it_is_ended_once(self):
        state = {"VMKMGMT_SIM_STATE": self.folder / "state"}
        failing = self.settings(tool.fault(END_NEWER, driver_status="0x0BAD0039"))
        self.assert_exit(tool.run("loopback", "run", "0", "--yes", **state, **failing), 1)
        state |= self.settings()
        self.assertEqual(self.json_of("link", "link", "0", **state)["link"]["loopback"], "internal")
        self.assertTrue(self.json_of("loopback-end", "loopback", "end", "0", "--yes", **state)["loopback"]["sent"])
        self.assertEqual(self.json_of("link", "link", "0", **state)["link"]["loopback"], "none")
        error, = tool.errors(tool.run("loopback", "end", "0", "--yes", "-o", "json", **state))
        self.assertEqual(error["result_name"], "DFC_LOOPBACK_BAD0021")


class Questions(LoopbackTest):
    """What asks before it does anything, and what is refused."""

    def test_nothing_is_sent_in_a_dry_run_or_without_an_answer(self):
        for words in (["run", "0"], ["end", "0"]):
            for more, code in ((["--dry-run"], 0), ([], 2)):
                result, calls = self.calls("loopback", *words, *more, **self.settings())
                self.assert_exit(result, code)
                self.assertEqual(calls, [])

    def test_wrong_usage_ends_with_2(self):
        (self.folder / "empty").write_bytes(b"")
        (self.folder / "long").write_bytes(bytes(65537))
        for words, part in ((["--mode", "3"], "--mode"), (["--size", "0"], "--size"), (["--size", "65537"], "--size"),
                            (["--count", "0"], "--count"), (["--pattern", "prbs"], "prbs15"), (["--argument", "x"], "--argument"),
                            (["--file", self.folder / "empty"], "empty"), (["--file", self.folder / "long"], "65536"),
                            (["--file", "x", "--pattern", "prbs15"], "--pattern")):
            with self.subTest(words):
                result, calls = self.calls("loopback", "run", "0", *words, "--yes", **self.settings())
                self.assert_exit(result, 2)
                self.assertIn(part, result.stderr)
                self.assertEqual(calls, [])


if __name__ == "__main__":
    tool.main()
