"""Mapped units and persistent bindings."""

import time

import tool

FIRST, SECOND = (tool.remote_port(number)["wwpn"] for number in range(2))


def ports_with(*units):
    """Ports of a scenario, each with a list of units."""
    return [tool.remote_port(number) | {"luns": luns} for number, luns in enumerate(units)]


class Units(tool.ToolTest):
    """The command luns."""

    def mapped(self, *units, arguments=(), **fields):
        """The units of an adapter that discovers ports with these."""
        path = self.scenario(tool.adapter(5), ports=ports_with(*units), **fields)
        return self.json_of("luns", "luns", "0", *arguments, VMKMGMT_SIM_SCENARIO=path)["luns"]

    def test_every_unit_has_its_addresses_and_its_identifier(self):
        units = self.mapped([{"lun": 0, "blocks": 8}, {"lun": 1, "blocks": 8, "identifier": "eui"}],
                            [{"lun": 300, "blocks": 8, "identifier": "t10", "serial": "S-1"}])
        self.assertEqual([(unit["target_port"], unit["fc_id"], unit["lun"], unit["scsi_address"], unit["os_device_name"])
                          for unit in units],
                         [(FIRST, "0x010200", "0", "0:0:0", "vmhba5:C0:T0:L0"),
                          (FIRST, "0x010200", "1", "0:0:1", "vmhba5:C0:T0:L1"),
                          (SECOND, "0x010201", "300", "0:1:300", "vmhba5:C0:T1:L300")])
        naa, eui, t10 = (unit["identifier"] for unit in units)
        self.assertRegex(naa, r"^naa\.6[0-9a-f]{31}$")
        self.assertRegex(eui, r"^eui\.[0-9a-f]{16}$")
        self.assertRegex(t10, r"^t10\.KESTAR .*S-1")
        self.assertEqual({unit["problem"] for unit in units}, {None})

    def test_the_units_own_identifier_is_found_behind_one_of_the_port(self):
        unit, = self.mapped([{"lun": 0, "blocks": 8, "identifier": "unusable"}])
        self.assertTrue(unit["identifier"].startswith("naa."))

    def test_a_unit_that_cannot_be_asked_does_not_hide_the_others(self):
        fault = tool.fault("TREL_MGMT_HBA_SEND_SCSI", call=2, times=1, driver_status="0x0BAD0004")
        units = self.mapped([{"lun": 0, "count": 3, "blocks": 8}], faults=[fault])
        self.assertEqual([unit["problem"] for unit in units], [None, "cannot be asked: HBA_STATUS_ERROR", None])
        self.assertEqual([unit["identifier"] is None for unit in units], [False, True, False])

    def test_the_library_takes_only_what_comes_first_in_an_answer(self):
        units = self.mapped([{"lun": 0, "blocks": 8}, {"lun": 1, "blocks": 8, "identifier": "unusable"}],
                            arguments=["--by-library"])
        self.assertRegex(units[0]["identifier"], r"^naa\.6[0-9a-f]{31}$")
        self.assertEqual([(unit["lun"], unit["problem"]) for unit in units], [("0", None), ("1", "tells no identifier")])
        self.assertEqual([unit["identifier"] is None for unit in units], [False, True])

    def test_the_librarys_own_mapping_may_fail(self):
        path = self.scenario(tool.adapter(5), faults=[tool.fault("TREL_MGMT_HBA_FCPTARGETMAPPING", driver_status="0x0BAD0004")])
        error, = tool.errors(tool.run("luns", "0", "--by-library", "-o", "json", VMKMGMT_SIM_SCENARIO=path))
        self.assertEqual((error["operation"], error["result_name"]), ("DFC_GetFcpTargetMappingV2", "HBA_STATUS_ERROR"))

    def test_a_tree_names_each_port_once(self):
        units = [[{"lun": 0, "count": 2, "blocks": 8}], [{"lun": 5, "count": 2, "blocks": 8}]]
        path = self.scenario(tool.adapter(5), ports=ports_with(*units))
        lines = tool.run("luns", "0", "--tree", "--no-header", VMKMGMT_SIM_SCENARIO=path).stdout.splitlines()
        self.assertEqual([(line.split()[0] in (FIRST, SECOND), "L" + line.split()[-3][-1]) for line in lines if ":C0:" in line],
                         [(True, "L0"), (False, "L1"), (True, "L5"), (False, "L6")])
        # Programs get every port of every unit.
        self.assertEqual([unit["target_port"] for unit in self.mapped(*units, arguments=["--tree"])],
                         [FIRST, FIRST, SECOND, SECOND])

    def test_as_many_units_as_there_can_be_take_no_two_seconds(self):
        path = self.scenario(tool.adapter(5), ports=ports_with(*([{"lun": 0, "count": 128, "blocks": 8}] for _ in range(8))))
        start = time.monotonic()
        result = tool.run("luns", "0", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assertLess(time.monotonic() - start, 2)
        units = tool.validated("luns", result.stdout)["luns"]
        self.assertEqual((len(units), len({unit["identifier"] for unit in units})), (1024, 1024))
        self.assertEqual(result.stderr, "", "progress is for people")

    def test_people_see_how_far_it_is(self):
        path = self.scenario(tool.adapter(5), ports=ports_with([{"lun": 0, "count": 4, "blocks": 8}]),
                             faults=[tool.fault("TREL_MGMT_HBA_SEND_SCSI", delay_ms=120)])
        output, shown = self.on_terminal("luns", "0", VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual(output.count(":C0:"), 4)
        steps = [f"\r\x1b[Kasking units [{'#' * 10 * done}{'.' * 10 * (4 - done)}] {done}/4" for done in range(4)]
        self.assertEqual(shown, "".join(steps) + "\r\x1b[K")


class Bindings(tool.ToolTest):
    """The command bindings."""

    def test_what_a_port_is_bound_by_is_decoded(self):
        bindings = [{"wwpn": FIRST, "target": 3}, {"wwnn": "50:00:00:00:00:00:00:77", "bus": 1, "target": 4},
                    {"fc_id": "0x010201", "target": 5}]
        path = self.scenario(tool.adapter(5, bindings=bindings))
        found = self.json_of("bindings", "bindings", "0", VMKMGMT_SIM_SCENARIO=path)["bindings"]
        self.assertEqual([tuple(record.values())[:-1] for record in found],
                         [(0, "port WWN", FIRST, 0, 3, True), (1, "node WWN", "50:00:00:00:00:00:00:77", 1, 4, False),
                          (2, "FC ID", "0x010201", 0, 5, True)])
        self.assertEqual(found[2]["words"], [f"0x{word:08x}" for word in (3, 0, 0, 0x010201, 0, 5, 1, 0)])

    def test_more_bindings_than_usual_are_all_shown(self):
        bindings = [{"fc_id": f"0x{number:06x}", "target": number} for number in range(1, 4097)]
        path = self.scenario(tool.adapter(5, bindings=bindings))
        found = self.json_of("bindings", "bindings", "0", VMKMGMT_SIM_SCENARIO=path)["bindings"]
        self.assertEqual([record["target"] for record in found], list(range(1, 4097)))


if __name__ == "__main__":
    tool.main()
