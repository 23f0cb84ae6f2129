"""A scenario that has as much of everything as a scenario may: it starts, and commands show all of it.

    limits.py TOOL SCHEMAS
"""

import json
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tool"))

import tool  # noqa: E402

BOARDS, PORTS, UNITS, VIRTUAL_PORTS, BINDINGS, FCFS, PRIORITY_RULES, OAS_RULES = 32, 512, 1024, 4096, 4096, 64, 998, 256


def wwn(kind, number):
    """A WWN of a kind of port."""
    return f"{kind}:00:00:00:00:{number >> 16:02x}:{number >> 8 & 255:02x}:{number & 255:02x}"


def remote_port(number):
    """A port of the fabric; the first has all the units."""
    port = {"wwnn": wwn(50, number), "wwpn": wwn(51, number), "fc_id": f"0x{0x020000 + number:06x}"}
    return port | ({"luns": [{"lun": 0, "count": UNITS, "blocks": 8}]} if number == 0 else {})


def virtual_port(number):
    """A virtual port of the first adapter."""
    return {"wwnn": wwn(30, number), "wwpn": wwn(31, number), "fc_id": f"0x{0x030000 + number:06x}"}


def full_adapter():
    """The first adapter, which has everything."""
    mac = [f"00:00:00:00:00:{number:02x}" for number in range(FCFS)]
    return {
        "protocol": "fcoe",
        "fcfs": [{"names": [wwn(40, number), wwn(41, number)], "mac": mac[number], "vlans": list(range(4096))}
                 for number in range(FCFS)],
        "priority": {"rules": [{"priority": number % 8, "lun": number} for number in range(PRIORITY_RULES)]},
        "oas_rules": [{"target": wwn(51, 0), "lun": number} for number in range(OAS_RULES)],
        "bindings": [{"wwpn": wwn(51, number % PORTS), "target": number} for number in range(BINDINGS)],
        "virtual_ports": [virtual_port(number) for number in range(VIRTUAL_PORTS)],
    }


class Limits(tool.ToolTest):
    """The driver's records have room for it, and so have those of the library."""

    def setUp(self):
        super().setUp()
        self.path = self.scenario(tool.adapter(0, **full_adapter()), *(tool.adapter(board) for board in range(1, BOARDS)),
                                  ports=[remote_port(number) for number in range(PORTS)])

    def count(self, section, *arguments):
        """How many records a command shows."""
        result = tool.run(*arguments, "-o", "json", VMKMGMT_SIM_SCENARIO=self.path)
        self.assert_exit(result, 0)
        return len(json.loads(result.stdout)[section])

    def test_commands_show_all_of_it(self):
        for most, section, *arguments in (
                (BOARDS, "adapters", "list"), (PORTS, "ports", "ports", "0", "--discovered"), (PORTS, "nodes", "nodes", "0"),
                (PORTS, "nodes", "npiv", "nodes", "0"), (UNITS, "luns", "luns", "0"),
                (VIRTUAL_PORTS, "virtual_ports", "npiv", "list", "0"), (BINDINGS, "bindings", "bindings", "0"),
                (FCFS, "fcfs", "fcoe", "fcf", "list", "0"), (PRIORITY_RULES, "rules", "qos", "list", "0"),
                (OAS_RULES, "rules", "oas", "list", "0", wwn(51, 0))):
            with self.subTest(arguments):
                self.assertEqual(self.count(section, *arguments), most)

    def test_the_units_of_a_fabric_are_counted_over_all_its_ports(self):
        content = json.loads(self.path.read_text(encoding="utf-8"))
        content["fabrics"][0]["ports"][1]["luns"] = [{"lun": 0, "blocks": 8}]
        self.path.write_text(json.dumps(content), encoding="utf-8")
        result = tool.run("list", VMKMGMT_SIM_SCENARIO=self.path)
        self.assert_exit(result, 3)
        self.assertIn(f"fabrics[0].ports[1].luns: expected at most {UNITS} units in a fabric, found {UNITS + 1}", result.stderr)


if __name__ == "__main__":
    tool.main()
