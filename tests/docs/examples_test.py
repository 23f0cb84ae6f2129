"""The example programs do what their comments say, also where something fails. list_adapters has a test of its own."""

import json
import pathlib
import subprocess
import sys

import pages

sys.path.insert(0, str(pages.TOP / "tests/tool"))

import tool  # noqa: E402

PROGRAMS = pathlib.Path(sys.argv[3]).resolve()
DISK = {"lun": 0, "blocks": 64}
NO_ADAPTER = "no adapter, or no driver\n"


class Examples(tool.ToolTest):
    """Each test states what there is, runs a program, and compares everything that it says."""

    maxDiff = None

    def said(self, program, *arguments, **variables):
        """Exit code, standard output and standard error of a program."""
        done = subprocess.run([PROGRAMS / program, *arguments], env=tool.environment(**variables), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=60, check=False)
        return done.returncode, done.stdout, done.stderr

    def said_on(self, scenario, program, *arguments):
        """The same on simulated adapters."""
        return self.said(program, *arguments, VMKMGMT_SIM_SCENARIO=scenario)

    def two_adapters(self, *faults, **fields):
        """One that is well and whose fields may be given, and one without a cable."""
        disconnected = tool.adapter(2, wwpn="10:00:00:00:00:00:00:22")
        del disconnected["fabric"], disconnected["fc_id"]
        disks = [tool.remote_port(1) | {"luns": [DISK | {"count": 20}]}]
        path = self.scenario(tool.adapter(1, **fields), disconnected, faults=faults, ports=disks)
        content = json.loads(path.read_text(encoding="utf-8"))
        path.write_text(json.dumps(content | {"clock": {"step_ms": 1000}}), encoding="utf-8")
        return path

    def test_all_of_them_say_so_where_there_is_no_adapter(self):
        for program, code, output, errors in [("count_adapters", 0, "0 adapters\n", ""), ("adapter_models", 2, "", ""),
                                              ("port_health", 2, "", NO_ADAPTER), ("watch_events", 2, "", NO_ADAPTER),
                                              ("list_units", 2, "", NO_ADAPTER)]:
            for interfaces in ([], ["vaskfcoe-mgmt"]):
                with self.subTest(program, interfaces=interfaces):
                    arguments = ["0"] if program in ("port_health", "list_units") else []
                    path = self.scenario(interfaces=interfaces)
                    self.assertEqual(self.said_on(path, program, *arguments), (code, output, errors))

    def test_adapters_are_counted_and_named(self):
        path = self.two_adapters(model="Kestar K5603-FC16-LP4")
        self.assertEqual(self.said_on(path, "count_adapters"), (0, "2 adapters\n", ""))
        self.assertEqual(self.said_on(path, "adapter_models"), (0, "0: Kestar K5603-FC16-LP4\n1: Kestar K5603-FC16\n", ""))

    def test_a_port_that_is_online_is_well(self):
        path = self.two_adapters(counters={"link_failures": {"start": 7, "per_second": 2}, "invalid_crcs": {"unsupported": True}})
        self.assertEqual(self.said_on(path, "port_health", "0"),
                         (0, "port                 online\ndiscovered ports     1\nlink failures        9\nlosses of sync       2\n"
                             "losses of signal     0\ninvalid words        0\ninvalid CRCs         not supported\n"
                             "dumped frames        not supported\n", ""))

    def test_a_port_without_a_cable_is_not(self):
        code, output, errors = self.said_on(self.two_adapters(), "port_health", "1")
        self.assertEqual((code, errors), (1, ""))
        self.assertTrue(output.startswith("port                 not online\ndiscovered ports     0\n"), output)

    def test_a_port_that_cannot_be_read_is_not_and_no_record_is_looked_at(self):
        path = self.two_adapters(tool.fault("TREL_MGMT_HBA_PORTATTRIBUTES", platform_status="0x7"))
        self.assertEqual(self.said_on(path, "port_health", "0"), (1, "", "adapter 0: cannot read its port: result 1\n"))
        path = self.two_adapters(tool.fault("TREL_MGMT_HBA_PORTSTATISTICS", driver_status="0x0BAD0202"))
        code, output, errors = self.said_on(path, "port_health", "0")
        self.assertEqual((code, errors), (1, "adapter 0: cannot read its counters: result 1\n"))
        self.assertEqual(output, "port                 online\ndiscovered ports     1\n")

    def test_an_adapter_that_is_not_there_is_wrong_usage(self):
        path = self.two_adapters()
        self.assertEqual(self.said_on(path, "port_health", "2"), (2, "", "there is no adapter 2: they are numbered from 0 to 1\n"))
        for arguments in ([], ["x"], ["0", "1"], [""]):
            self.assertEqual(self.said_on(path, "port_health", *arguments), (2, "", "usage: port_health INDEX\n"))
        for arguments in ([], ["2"], ["-1"], ["0", "1"]):
            self.assertEqual(self.said_on(path, "list_units", *arguments), (2, "", "usage: list_units INDEX, from 0 to 1\n"))

    def test_events_are_taken_once(self):
        events = [{"at_ms": 0, "event": "lip"}, {"at_ms": 1, "event": "link_down"}, {"at_ms": 2, "event": "link_up"},
                  {"at_ms": 3, "event": "rscn", "fc_id": "0x010201"}]
        path = self.two_adapters(events=events)
        shown = "adapter 0: LIP\nadapter 0: link down\nadapter 0: link up\nadapter 0: RSCN about 0x010201\n"
        self.assertEqual(self.said_on(path, "watch_events", "2"), (0, shown, ""))

    def test_lost_events_are_counted_and_room_is_not_exceeded(self):
        path = self.two_adapters(events=[{"at_ms": 0, "event": "lip"}] * 34)
        self.assertEqual(self.said_on(path, "watch_events"),
                         (0, "adapter 0: 2 events were lost\n" + "adapter 0: LIP\n" * 32, ""))
        path = self.two_adapters(tool.fault("TREL_MGMT_HBA_GETEVENT", board=1, header={"arg3": "0xFFFFFFFF", "arg4": 0}))
        code, output, errors = self.said_on(path, "watch_events")
        self.assertEqual((code, output, errors), (0, "adapter 0: event 0x0\n" * 32, ""))

    def test_an_adapter_whose_events_cannot_be_taken_does_not_hide_the_others(self):
        path = self.two_adapters(tool.fault("TREL_MGMT_HBA_GETEVENT", board=2, driver_status="0x0BAD0202"),
                                 events=[{"at_ms": 0, "event": "lip"}])
        self.assertEqual(self.said_on(path, "watch_events"),
                         (1, "adapter 0: LIP\n", "adapter 1: cannot take its events: result 1\n"))

    def test_more_units_than_there_is_room_for_at_first_are_listed(self):
        lines = "".join(f"0:0:{lun}  KESTAR   VIRTUAL DISK     0001\n" for lun in range(20))
        self.assertEqual(self.said_on(self.two_adapters(), "list_units", "0"), (0, lines, ""))
        self.assertEqual(self.said_on(self.two_adapters(), "list_units", "1"), (0, "", ""))

    def test_a_unit_that_does_not_answer_is_told(self):
        path = self.two_adapters(tool.fault("TREL_MGMT_HBA_SEND_SCSI", call=2, times=1, driver_status="0x0BAD0003"))
        code, output, errors = self.said_on(path, "list_units", "0")
        self.assertEqual((code, errors), (1, ""))
        self.assertEqual(output.splitlines()[:3], ["0:0:0  KESTAR   VIRTUAL DISK     0001", "0:0:1  no answer: result 1",
                                                   "0:0:2  KESTAR   VIRTUAL DISK     0001"])

    def test_a_unit_that_refuses_is_told(self):
        path = self.two_adapters(tool.fault("TREL_MGMT_HBA_SEND_SCSI", call=1, times=1, garbage_seed=1, header={"arg3": 0}))
        code, output, errors = self.said_on(path, "list_units", "0")
        self.assertEqual((code, errors), (1, ""))
        self.assertRegex(output.splitlines()[0], r"^0:0:0  refused: sense key \d+$")

    def test_a_mapping_whose_count_makes_no_sense_is_told(self):
        for count, result in [("0xFFFFFFFF", 7), (0, 1)]:
            with self.subTest(count):
                path = self.two_adapters(tool.fault("TREL_MGMT_HBA_FCPTARGETMAPPING", driver_status="0x0BAD0039",
                                                    header={"arg3": count}))
                self.assertEqual(self.said_on(path, "list_units", "0"),
                                 (1, "", f"adapter 0: cannot read its mapping: result {result}\n"))


if __name__ == "__main__":
    tool.main()
