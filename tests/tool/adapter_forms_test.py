"""The commands about an adapter's insides in every form."""

import forms_test
import tool

ARRAY_IN_B = "50:5a:41:00:0c:00:10:03"

# FOLDER stands for the folder of the test, in which RULES is a file.
COMMANDS = [
    (["link", "1"], "link"),
    (["link", "2"], "link"),
    (["link", "0", "--raw"], "raw"),
    (["nodes", "1"], "nodes"),
    (["nodes", "2"], "nodes"),
    (["nodes", "1", "--raw"], "raw"),
    (["iostat", "0"], "iostat"),
    (["iostat", "0", "--raw"], "raw"),
    (["vpd", "0"], "vpd"),
    (["vpd", "0", "--selector", "1"], "vpd"),
    (["vpd", "0", "--raw"], "raw"),
    (["params", "list", "0"], "params-list"),
    (["params", "list", "3"], "params-list"),
    (["params", "show", "0", "link_speed"], "params-show"),
    (["params", "show", "0", "link_speed", "--raw"], "raw"),
    (["params", "set", "0", "lun_queue_depth", "64", "--yes"], "params-set"),
    (["params", "set", "0", "link_speed", "8", "--dry-run"], "params-set"),
    (["mem", "read", "3", "0x10", "40"], "mem-read"),
    (["mem", "read", "3", "0", "40", "--file", "FOLDER/memory.bin"], "mem-read"),
    (["mem", "write", "3", "0x100", "de", "adbeef", "--yes"], "mem-write"),
    (["reg", "read", "3"], "reg-read"),
    (["reg", "read", "3", "0x0c"], "reg-read"),
    (["reg", "write", "3", "0x0c", "0x12345678", "--yes"], "reg-write"),
    (["pci", "dump", "0"], "pci-dump"),
    (["pci", "dump", "3", "--file", "FOLDER/pci.bin"], "pci-dump"),
    (["pci", "read", "4", "0x40", "32"], "pci-read"),
    (["pci", "write", "0", "0x3c", "0x0000010b", "--yes"], "pci-write"),
    (["reset", "0", "--yes"], "reset"),
    (["reset", "0", "--type", "2", "--wait", "5", "--yes"], "reset"),
    (["reset", "0", "--dry-run"], "reset"),
    (["dump", "induce", "3", "--wait", "5", "--yes"], "dump-induce"),
    (["dump", "induce", "3", "--dry-run"], "dump-induce"),
    (["dump", "region", "3"], "dump-region"),
    (["loopback", "run", "0", "--dry-run"], "loopback-run"),
    (["loopback", "end", "0", "--dry-run"], "loopback-end"),
    (["qos", "flag", "1"], "qos-flag"),
    (["qos", "flag", "1", "off", "--yes"], "qos-flag-set"),
    (["qos", "list", "1"], "qos-list"),
    (["qos", "set", "1", "FOLDER/RULES", "--yes"], "qos-set"),
    (["qos", "speed", "1"], "qos-speed"),
    (["oas", "list", "1", ARRAY_IN_B], "oas-list"),
    (["oas", "add", "1", ARRAY_IN_B, "3", "--yes"], "oas-add"),
    (["oas", "remove", "1", ARRAY_IN_B, "1", "--yes"], "oas-remove"),
]


class AdapterForms(forms_test.Forms):
    """The checks of all forms, for these commands, while time stands still."""

    def setUp(self):
        super().setUp()
        self.commands = [([word.replace("FOLDER", str(self.folder)) for word in words], name) for words, name in COMMANDS]
        (self.folder / "RULES").write_text("match1,match2,match3,match4,prio\n*,*,*,*,1\n", encoding="utf-8")
        self.path = self.altered_built_in(lambda scenario: scenario.update(clock={"step_ms": 0}))
        (self.folder / "state").mkdir()
        # A dump for those who ask for one; whatever else a command changes, each run begins with this.
        self.assert_exit(tool.run("dump", "induce", "3", "--yes", **self.variables()), 0)

    def variables(self):
        return {"VMKMGMT_SIM_SCENARIO": self.path, "VMKMGMT_SIM_STATE": self.folder / "state"}

    def run_tool(self, *arguments):
        """Runs the tool on what the adapters hold at first, so that every form shows the same change."""
        state = self.folder / "state"
        kept = {file: file.read_bytes() for file in state.iterdir()}
        result = super().run_tool(*arguments)
        for file in set(state.iterdir()) - set(kept):
            file.unlink()
        for file, content in kept.items():
            file.write_bytes(content)
        return result

    def document(self, name, arguments):
        return tool.validated(name, self.run_tool(*arguments, "-o", "json"))


if __name__ == "__main__":
    tool.main()
