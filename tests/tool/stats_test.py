"""Port counters: once, from a reset on, and how they move."""

import json
import signal
import subprocess
import time

import tool

STATISTICS = "TREL_MGMT_HBA_PORTSTATISTICS"


def counters(records):
    """Records by the counter that they are about."""
    return {record["counter"]: record for record in records}


class Statistics(tool.ToolTest):
    """Counters of a scenario whose clock only moves when counters are read."""

    def counting(self, step_ms=1000, faults=(), **fields):
        """A scenario of one adapter with these counters."""
        path = self.scenario(tool.adapter(5, counters=fields), faults=faults)
        content = json.loads(path.read_text(encoding="utf-8"))
        path.write_text(json.dumps(content | {"clock": {"step_ms": step_ms}}), encoding="utf-8")
        return path

    def samples(self, *arguments, **options):
        """The lines of a watch, each of which must satisfy the schema."""
        result = tool.run("stats", "0", "--watch", "0.1", *arguments, "-o", "json", **options)
        self.assert_exit(result, 0)
        return [tool.validated("stats-watch", line) for line in result.stdout.splitlines()]

    def test_every_counter_has_its_value_and_unit(self):
        path = self.counting(0, tx_words={"start": 1000, "per_second": 0}, dumped_frames={"unsupported": True},
                             invalid_crcs={"start": 7, "per_second": 0}, rx_words={"start": 2**62, "per_second": 0})
        document = self.json_of("stats", "stats", "0", VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual(document["port"], {"adapter": 0, "since_reset": False})
        found = counters(document["counters"])
        self.assertEqual(found["tx_words"],
                         {"counter": "tx_words", "supported": True, "value": 1000, "unit": "words", "bytes": 4000})
        self.assertEqual(found["invalid_crcs"]["value"], 7)
        self.assertIsNone(found["invalid_crcs"]["bytes"])
        self.assertEqual(found["rx_words"]["value_s"], str(2**62))
        self.assertEqual((found["dumped_frames"]["supported"], found["dumped_frames"]["value"]), (False, None))
        table = tool.run("stats", "0", VMKMGMT_SIM_SCENARIO=path).stdout
        self.assertRegex(table, r"Dumped frames +no +not supported")

    def test_a_reset_counts_from_there(self):
        path = self.counting(2000, tx_frames={"start": 5000, "per_second": 100}, nos={"unsupported": True},
                             error_frames={"unsupported": True})
        document = self.json_of("stats", "stats", "0", "--reset", VMKMGMT_SIM_SCENARIO=path)
        self.assertTrue(document["port"]["since_reset"])
        found = counters(document["counters"])
        self.assertEqual(found["tx_frames"]["value"], 200)
        self.assertEqual(found["seconds_since_last_reset"]["value"], 2)
        # The library tells this one as 0 from here on.
        self.assertFalse(found["error_frames"]["supported"])
        self.assertFalse(found["nos_count"]["supported"])

    def test_a_watch_tells_changes_and_rates(self):
        path = self.counting(1000, tx_words={"start": 0, "per_second": 500}, lips={"unsupported": True})
        samples = self.samples("--count", "3", VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual([line["sample"]["number"] for line in samples], [1, 2, 3])
        for line in samples:
            words = counters(line["rates"])["tx_words"]
            seconds = line["sample"]["seconds"]
            self.assertGreaterEqual(seconds, 0.1)
            self.assertEqual((words["change"], words["mark"]), (500, None))
            self.assertAlmostEqual(words["per_second"] * seconds, 500)
            self.assertAlmostEqual(words["bytes_per_second"] * seconds, 2000)
            lips = counters(line["rates"])["lip_count"]
            self.assertEqual((lips["value"], lips["change"], lips["per_second"]), (None, None, None))

    def test_a_counter_that_passes_its_end_is_marked_and_keeps_its_rate(self):
        path = self.counting(1000, rx_frames={"start": 2**32 - 250, "per_second": 100, "wraps": 32})
        samples = self.samples("--count", "3", VMKMGMT_SIM_SCENARIO=path)
        found = [counters(line["rates"])["rx_frames"] for line in samples]
        self.assertEqual([record["change"] for record in found], [100] * 3)
        self.assertEqual([record["mark"] for record in found].count("wrap"), 1)

    def test_a_counter_that_starts_again_has_no_rate(self):
        path = self.counting(1000, rx_frames={"start": 250, "per_second": 100, "wraps": 9})
        samples = self.samples("--count", "3", VMKMGMT_SIM_SCENARIO=path)
        found = [counters(line["rates"])["rx_frames"] for line in samples]
        reset = [record for record in found if record["mark"] == "reset"]
        self.assertEqual([(record["change"], record["per_second"]) for record in reset], [(None, None)])

    def test_a_watch_in_csv_has_one_header_line(self):
        result = tool.run("stats", "0", "--watch", "0.1", "--count", "2", "-o", "csv", VMKMGMT_SIM_SCENARIO=self.counting())
        self.assert_exit(result, 0)
        rows = tool.csv_rows(result.stdout)
        self.assertEqual(rows.count(["field", "value"]), 1)
        self.assertEqual([value for field, value in rows if field == "sample.number"], ["1", "2"])

    def test_a_watch_ends_when_somebody_ends_it(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            process = subprocess.Popen([tool.PROGRAM, "stats", "0", "--watch", "0.1", "-o", "json"], stdout=subprocess.PIPE,
                                       env=tool.environment(VMKMGMT_SIM_SCENARIO=self.counting()))
            process.stdout.readline()
            time.sleep(0.05)
            process.send_signal(number)
            process.communicate(timeout=30)
            self.assertEqual(process.returncode, 0)

    def test_failures_of_the_driver_are_told(self):
        path = self.counting(faults=[tool.fault(STATISTICS, driver_status="0x0BAD0004")])
        result = tool.run("stats", "0", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertEqual((error["operation"], error["driver_status"]), ("GetPortStatistics", "0x0bad0004"))

    def test_wrong_arguments_send_nothing(self):
        for arguments in (["--watch", "0"], ["--watch", "x"], ["--watch", "-1"], ["--watch", "nan"], ["--count", "2"],
                          ["--watch", "1", "--count", "0"]):
            with self.subTest(arguments):
                result, calls = self.traced("stats", "0", *arguments, callback=STATISTICS)
                self.assert_exit(result, 2)
                self.assertEqual(calls, [])


if __name__ == "__main__":
    tool.main()
