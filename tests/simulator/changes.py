"""Commands of the tool that change state, each the only one that changes its file, and what a run leaves in the state folder.

A test program's third argument, where it is sabotaged, is the object that goes before libc.
"""

import os
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tool"))

import tool  # noqa: E402

NEWER, OLDER = "1000005a41560201", "1000005a41560120"  # adapters of the built-in scenario
ARRAY_PORT = "50:5a:41:00:0c:00:10:01"
DISK = "disk-505a41000c001000-0.img"
MEMORY = f"memory-{OLDER}.img"
IN_PLACE = {DISK, MEMORY}  # a kill or a full disk may leave a part of what was written

# For each file two commands: one that leaves something else in it than the other.
CHANGES = {
    f"adapter-{NEWER}.json": ("event-test 0 1 2", "event-test 0 3 4"),
    f"region-23-{NEWER}.bin": ("linkdown set 0 on --yes", "linkdown set 0 off --yes"),
    f"parameters-{NEWER}.json": ("params set 0 lun_queue_depth 8 --yes", "params set 0 topology 2 --yes"),
    f"pci-{NEWER}.bin": ("pci write 0 0x3c 0x142 --yes", "pci write 0 0x3c 0x143 --yes"),
    MEMORY: ("mem write 3 0x1000 01 02 03 04 --yes", "mem write 3 0x1000 05 06 07 08 --yes"),
    f"registers-{OLDER}.bin": ("reg write 3 0x0c 1 --yes", "reg write 3 0x0c 2 --yes"),
    f"priority-{NEWER}.bin": ("qos flag 0 on --yes", "qos flag 0 off --yes"),
    f"oas-{NEWER}.bin": (f"oas add 0 {ARRAY_PORT} 2 --yes", f"oas add 0 {ARRAY_PORT} 3 --yes"),
    f"rnid-{NEWER}.bin": ("rnid set 0 --udp-port 1234 --yes", "rnid set 0 --udp-port 5678 --yes"),
    DISK: (f"scsi write 0 {ARRAY_PORT} 0 --file ones.bin --yes", f"scsi write 0 {ARRAY_PORT} 0 --file twos.bin --yes"),
    "kernel.log": ("log-message hello", "log-message goodbye"),
}
READS_ALL_STATE = "version"
BLOCK_BYTES = 512


def make_blocks(folder):
    """The files that the commands name."""
    (folder / "ones.bin").write_bytes(b"\x01" * BLOCK_BYTES)
    (folder / "twos.bin").write_bytes(b"\x02" * BLOCK_BYTES)


def write_sparse(path, content):
    """Writes a file that takes no more room than what is not zero in it."""
    page_bytes = 4096
    with path.open("wb") as file:
        file.truncate(len(content))
        for place in range(0, len(content), page_bytes):
            page = content[place:place + page_bytes]
            if any(page):
                file.seek(place)
                file.write(page)


def contents(folder):
    """What the files of a state folder hold. What only a writer at work needs does not count."""
    return {path.name: path.read_bytes() for path in folder.iterdir() if path.name != "lock" and path.suffix != ".new"}


class ChangesTest(tool.ToolTest):
    """A test with a state folder, in a folder where the commands find their files."""

    def setUp(self):
        super().setUp()
        make_blocks(self.folder)
        self.state = self.folder / "state"
        self.state.mkdir()

    def set_state(self, files):
        """Makes the state folder hold these files and no others."""
        for path in self.state.iterdir():
            path.unlink()
        for name, content in files.items():
            write_sparse(self.state / name, content)

    def run_tool(self, command, **variables):
        """Runs a command on the state folder."""
        return tool.run(*command.split(), cwd=self.folder, VMKMGMT_SIM_STATE=self.state, **variables)

    def after(self, files, command):
        """What the state folder holds after an undisturbed run on these files."""
        self.set_state(files)
        self.assert_exit(self.run_tool(command), 0)
        return contents(self.state)

    def sabotaged(self, command, **variables):
        """Runs a command with the saboteur; returns the result and the names of the calls."""
        log = self.folder / "calls"
        log.unlink(missing_ok=True)
        result = self.run_tool(command, LD_PRELOAD=os.path.abspath(sys.argv[3]), SABOTEUR_FOLDER=self.state.resolve(),
                               SABOTEUR_LOG=log, **variables)
        return result, log.read_text(encoding="utf-8").split()
