"""Virtual ports: readiness, lists, attributes, and the nodes that they see."""

import tool

CALLBACKS = {"status": "TREL_MGMT_NPIV_READY", "list": "TREL_MGMT_VPORT_GET_LIST", "nodes": "TREL_MGMT_VPORT_GET_NODE_INFO"}
NO_SUCH = "10:00:00:00:00:00:99:99"


def virtual_port(number):
    """A virtual port of a scenario."""
    return {"wwnn": f"20:00:00:00:00:00:10:{number:02x}", "wwpn": f"10:00:00:00:00:00:10:{number:02x}",
            "fc_id": f"0x0103{number:02x}", "symbolic_name": f"guest {number}"}


class VirtualPorts(tool.ToolTest):
    """An adapter with virtual ports in a fabric."""

    def npiv(self, *arguments, ports=2, code=0, **options):
        """Runs a command on an adapter with so many virtual ports and validates its output."""
        path = self.scenario(tool.adapter(5, virtual_ports=[virtual_port(i) for i in range(ports)]), **options)
        result = tool.run("npiv", *arguments, "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, code)
        return tool.validated(f"npiv-{arguments[0]}", result.stdout) if code == 0 else tool.errors(result)[0]

    def test_the_status_counts_ports(self):
        status = self.npiv("status", "0")["npiv"]
        self.assertEqual(status["virtual_ports"], 2)
        self.assertEqual(status["ready"], int(status["readiness_word"], 16) != 0)
        self.assertGreaterEqual(status["most_virtual_ports"], 2)

    def test_ports_are_listed(self):
        self.assertEqual(self.npiv("list", "0")["virtual_ports"],
                         [{"port_wwn": port["wwpn"], "node_wwn": port["wwnn"], "fc_id": port["fc_id"]}
                          for port in map(virtual_port, range(2))])
        self.assertEqual(self.npiv("list", "0", ports=0)["virtual_ports"], [])

    def test_a_port_is_shown_by_its_wwn(self):
        wanted = virtual_port(1)
        port = self.npiv("show", "0", wanted["wwpn"].replace(":", ""))["virtual_port"]
        self.assertEqual((port["port_wwn"], port["node_wwn"], port["fc_id"], port["symbolic_name"], port["state"]),
                         (wanted["wwpn"], wanted["wwnn"], wanted["fc_id"], "guest 1", "online"))
        self.assertEqual(port["fabric_name"], "10:00:00:00:00:00:ff:01")

    def test_nodes_are_those_of_the_adapters_port_unless_a_port_is_named(self):
        own = self.npiv("nodes", "0")["nodes"]
        self.assertEqual([node["port_wwn"] for node in own], [tool.remote_port(i)["wwpn"] for i in range(2)])
        self.assertEqual(self.npiv("nodes", "0", virtual_port(0)["wwpn"])["nodes"], own)

    def test_a_wwn_that_is_no_virtual_port_is_told(self):
        error = self.npiv("show", "0", NO_SUCH, code=1)
        self.assertEqual((error["operation"], error["result"], error["result_name"]), ("DFC_VPGetAttrib", 5, "DFC_NO_SUCH_VPORT"))
        self.assertIn("npiv list", error["hint"])
        self.assertEqual(self.npiv("nodes", "0", NO_SUCH, code=1)["operation"], "DFC_GetAllNodeInfoByWWN")

    def test_failures_of_the_driver_are_told(self):
        for command, callback in CALLBACKS.items():
            error = self.npiv(command, "0", code=1, faults=[tool.fault(callback, driver_status="0x0BAD0004")])
            self.assertEqual((error["driver_status"], error["result"]), ("0x0bad0004", 1))

    def test_wrong_wwns_are_refused(self):
        for command in ("show", "nodes"):
            self.assertIn('"x"', self.npiv(command, "0", "x", code=2)["message"])


if __name__ == "__main__":
    tool.main()
