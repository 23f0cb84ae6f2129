"""Events that the driver has queued, once and as they come."""

import json
import signal
import subprocess

import tool

EVENTS = [{"at_ms": 0, "event": "link_down"}, {"at_ms": 0, "event": "link_up"}, {"at_ms": 0, "event": "lip"},
          {"at_ms": 0, "event": "rscn", "fc_id": "0x010201"}]
FC_ID = "0x010105"


class Events(tool.ToolTest):
    """The command events."""

    def fabric(self, events, step_ms=0, others=(), **fields):
        """A scenario of an adapter to which these events happen while time goes by at each query."""
        path = self.scenario(tool.adapter(5, events=events), *others, **fields)
        content = json.loads(path.read_text(encoding="utf-8"))
        path.write_text(json.dumps(content | {"clock": {"step_ms": step_ms}}), encoding="utf-8")
        return path

    def test_all_that_wait_are_shown_by_name(self):
        found = self.json_of("events", "events", VMKMGMT_SIM_SCENARIO=self.fabric(EVENTS))["events"]
        self.assertEqual([(record["adapter"], record["event"], record["fc_id"], record["affected"]) for record in found],
                         [(0, "link down", FC_ID, None), (0, "link up", FC_ID, None), (0, "LIP", FC_ID, None),
                          (0, "RSCN", FC_ID, "0x00010201")])
        self.assertEqual({record["missed"] for record in found}, {0})

    def test_more_than_one_reply_holds_are_all_shown(self):
        events = [{"at_ms": time, "event": "lip"} for time in (100, 200) for _ in range(30)]
        path = self.fabric(events, step_ms=100)
        self.assertEqual(len(self.json_of("events", "events", "0", VMKMGMT_SIM_SCENARIO=path)["events"]), 60)

    def test_what_the_driver_had_no_room_for_is_counted(self):
        found = self.json_of("events", "events", VMKMGMT_SIM_SCENARIO=self.fabric(EVENTS * 20))["events"]
        self.assertEqual(len(found) + found[0]["missed"], 80)
        self.assertGreater(found[0]["missed"], 0)

    def test_what_was_lost_is_told_once(self):
        path = self.fabric(EVENTS, faults=[tool.fault("TREL_MGMT_HBA_GETEVENT", header={"arg4": 9}, times=1)])
        found = self.json_of("events", "events", VMKMGMT_SIM_SCENARIO=path)["events"]
        self.assertEqual([record["missed"] for record in found], [9, 0, 0, 0])

    def test_nothing_may_have_happened(self):
        self.assertEqual(self.json_of("events", "events", VMKMGMT_SIM_SCENARIO=self.fabric([]))["events"], [])

    def test_one_adapter_that_fails_does_not_hide_the_others(self):
        path = self.fabric([], others=[tool.adapter(6, events=EVENTS)],
                           faults=[tool.fault("TREL_MGMT_HBA_GETEVENT", board=5, driver_status="0x0BAD0004")])
        result = tool.run("events", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertEqual([record["adapter"] for record in tool.validated("events", result.stdout)["events"]], [1] * 4)
        self.assertEqual([error["adapter"] for error in tool.errors(result)], [0])

    def follow(self, path, form, lines):
        """The first lines that the command prints before it is told to end, and its exit code."""
        with subprocess.Popen([tool.PROGRAM, "events", "--follow", "-o", form], stdout=subprocess.PIPE,
                              env=tool.environment(VMKMGMT_SIM_SCENARIO=path)) as process:
            found = [process.stdout.readline().decode() for _ in range(lines)]
            process.send_signal(signal.SIGINT)
            rest, _ = process.communicate(timeout=30)
        return found, rest.decode(), process.returncode

    def test_events_that_come_later_are_followed_a_line_each(self):
        # Two queries a round, so the second event comes in the third round.
        later = [{"at_ms": 100, "event": "link_down"}, {"at_ms": 500, "event": "link_up"}]
        lines, rest, code = self.follow(self.fabric(later, step_ms=100), "json", 2)
        self.assertEqual([tool.validated("events", line)["events"][0]["event"] for line in lines], ["link down", "link up"])
        self.assertEqual((rest, code), ("", 0))

    def test_followed_events_have_one_header_in_csv(self):
        lines, _, _ = self.follow(self.fabric(EVENTS), "csv", 5)
        self.assertEqual([line.split(",")[1] for line in lines], ["event", "link down", "link up", "LIP", "RSCN"])

    def test_a_failed_adapter_is_told_once_and_the_others_are_followed(self):
        path = self.fabric([], others=[tool.adapter(6, events=[{"at_ms": 300, "event": "lip"}])], step_ms=100,
                           faults=[tool.fault("TREL_MGMT_HBA_GETEVENT", board=5, driver_status="0x0BAD0004")])
        with subprocess.Popen([tool.PROGRAM, "events", "--follow", "-o", "json"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              text=True, env=tool.environment(VMKMGMT_SIM_SCENARIO=path)) as process:
            line = process.stdout.readline()
            process.send_signal(signal.SIGTERM)
            _, errors = process.communicate(timeout=30)
        self.assertEqual(tool.validated("events", line)["events"][0]["adapter"], 1)
        self.assertEqual((errors.count('"error"'), process.returncode), (1, 1))


if __name__ == "__main__":
    tool.main()
