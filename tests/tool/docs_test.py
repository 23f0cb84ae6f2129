"""The tool's documentation shows what the tool prints: every command of it is run, in order, on the built-in adapters."""

import os
import pathlib
import re
import subprocess
import tempfile

import images
import tool

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/tool.md"


def examples():
    """Every command of the page with the output that the page shows."""
    for block in re.findall(r"^```\n(\$ .*?)^```$", PAGE.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL):
        for example in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
            command, _, output = example.partition("\n")
            yield command, output.rstrip("\n")


class Documentation(tool.ToolTest):
    """The page and the program."""

    def test_every_command_prints_what_the_page_shows(self):
        self.maxDiff = None
        commands = self.folder / "bin"
        commands.mkdir()
        (commands / "vaskdfc").symlink_to(tool.PROGRAM.resolve())
        variables = tool.environment(PATH=f"{commands}:{os.environ['PATH']}", VMKMGMT_SIM_STATE=self.folder / "state")
        for command, shown in examples():
            with self.subTest(command), tempfile.TemporaryFile() as errors:
                # Set apart, because only a terminal tells which of the two came first.
                result = subprocess.run(["sh", "-c", command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=errors,
                                        env=variables, cwd=self.folder, timeout=60, check=False)
                errors.seek(0)
                self.assertEqual((result.stdout + errors.read()).decode().rstrip("\n"), shown)

    def test_a_refused_write_fails_as_the_page_shows(self):
        path = self.scenario(tool.adapter(1, regions=[images.of_region23(vlan=1002)]),
                             faults=[tool.fault("TREL_MGMT_HBA_ISSUE_UPD_MBX", driver_status="0x0BAD0020")])
        result = tool.run("fcoe", "params", "set", "0", "--vlan", "8", "--yes", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertIn(f"```\n{result.stderr}```\n", PAGE.read_text(encoding="utf-8"))

    def test_events_look_as_the_page_shows(self):
        events = [{"at_ms": 0, "event": "link_down"}, {"at_ms": 0, "event": "link_up"},
                  {"at_ms": 0, "event": "rscn", "fc_id": "0x010400"}]
        path = self.scenario(tool.adapter(1, fc_id="0x010a01", events=events))
        self.assertIn(f"```\n{tool.run('events', VMKMGMT_SIM_SCENARIO=path).stdout}```\n", PAGE.read_text(encoding="utf-8"))

    def test_the_page_has_commands(self):
        self.assertGreater(len(list(examples())), 10)


if __name__ == "__main__":
    tool.main()
