"""State, traces and output on a small disk of their own that is full, or mounted for reading only.

The disk is seen by nobody else. Where this process may not mount one the test is skipped.
"""

import contextlib
import errno
import json
import pathlib
import subprocess
import sys
import tempfile

import changes
import tool

SKIPPED = 77
NO_ROOM = "No space left on device"
DISK_BYTES = 256 * 1024


def fill(folder):
    """Leaves no room on the disk of a folder; returns what takes it."""
    filler = folder / "filler"
    with filler.open("wb", buffering=0) as file:
        for size in (4096, 1):
            with contextlib.suppress(OSError):
                while True:
                    file.write(bytes(size))
    return filler


class FullDisk(changes.ChangesTest):
    """What a user finds whose disk is full."""

    disk = None  # set below

    def setUp(self):
        super().setUp()
        self.state = self.disk
        self.set_state({})

    @contextlib.contextmanager
    def full(self):
        """No room inside."""
        filler = fill(self.disk)
        yield
        filler.unlink()

    def test_a_change_fails_and_leaves_the_old_state(self):
        for name, (first, second) in changes.CHANGES.items():
            for before, command in (({}, first), (self.after({}, first), second)):
                with self.subTest(file=name, fresh=not before):
                    self.set_state(before)
                    (self.disk / "lock").touch()
                    with self.full():
                        result = self.run_tool(command)
                    # The page where a part of a disk stands already needs no more room.
                    in_place = bool(before) and name in changes.IN_PLACE
                    self.assert_exit(result, 0 if in_place else 1)
                    if not in_place:
                        words = rf"vmkmgmt simulator: {self.disk}/{name}(\.new)?: cannot be \w+: {NO_ROOM}\n"
                        self.assertRegex(result.stderr, words)
                        self.assertEqual({key: bytes(content) for key, content in changes.contents(self.disk).items()
                                          if any(content) or key in before}, before)
                    self.assert_exit(self.run_tool(command), 0)

    def test_a_trace_ends_in_whole_lines_again(self):
        trace = self.folder / "trace"
        trace.symlink_to(self.disk / "trace")
        with self.full():
            result = tool.run("list", VMKMGMT_SIM_TRACE=trace)
            self.assert_exit(result, 0)
            self.assertEqual(result.stderr, f"vmkmgmt simulator: {trace}: cannot be written: {NO_ROOM}\n")
        torn = b'{"pid": 1, "callb'
        trace.write_bytes(torn)
        self.assert_exit(tool.run("list", VMKMGMT_SIM_TRACE=trace), 0)
        first, *lines = trace.read_bytes().splitlines()
        self.assertEqual(first, torn)
        self.assertGreater(len(lines), 1)
        for line in lines:
            self.assertIn("callback", json.loads(line))

    def test_lines_after_one_that_was_cut_short_are_whole(self):
        trace = self.disk / "trace"
        filler = fill(self.disk)
        filler.write_bytes(bytes(filler.stat().st_size - 4096))
        result = tool.run("list", VMKMGMT_SIM_TRACE=trace)
        self.assert_exit(result, 0)
        self.assertEqual(result.stderr, f"vmkmgmt simulator: {trace}: cannot be written: {NO_ROOM}\n")
        filler.unlink()
        self.assertNotEqual(trace.read_bytes()[-1:], b"\n")
        before = trace.read_bytes().count(b"\n")
        self.assert_exit(tool.run("list", VMKMGMT_SIM_TRACE=trace), 0)
        lines = trace.read_bytes().splitlines()
        for number, line in enumerate(lines):
            if number != before:
                json.loads(line)

    def test_output_is_an_error_and_files_are_whole_or_not_there(self):
        dump = self.disk / "dump"
        command = ["pci", "dump", "0", "--file", dump, "-o", "json"]
        for before in (None, b"before"):
            if before:
                dump.write_bytes(before)
            with self.full():
                result = tool.run(*command)
                self.assertEqual([path for path in self.disk.iterdir() if path.name not in ("filler", "dump")], [])
            self.assert_exit(result, 1)
            error, = tool.errors(result)
            self.assertIn(f'"{dump}" cannot be written: {NO_ROOM}', error["message"])
            self.assertEqual(dump.read_bytes() if dump.exists() else None, before)
        self.assert_exit(tool.run(*command), 0)
        self.assertEqual(len(dump.read_bytes()), 4096)

        with self.full(), (self.disk / "output").open("wb") as output:
            result = subprocess.run([tool.PROGRAM, "list"], stdout=output, stderr=subprocess.PIPE, env=tool.environment(),
                                    timeout=60, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"the output cannot be written", result.stderr)

    def test_a_disk_for_reading_only_is_refused(self):
        dump = self.disk / "dump"
        self.after({}, changes.CHANGES["kernel.log"][0])
        before = changes.contents(self.disk)
        subprocess.run(["mount", "-o", "remount,ro", self.disk], check=True)
        try:
            state = self.run_tool(changes.READS_ALL_STATE)
            trace = tool.run("list", VMKMGMT_SIM_TRACE=self.disk / "trace")
            output = tool.run("pci", "dump", "0", "--file", dump)
        finally:
            subprocess.run(["mount", "-o", "remount,rw", self.disk], check=True)
        reason = "Read-only file system"
        self.assert_exit(state, 3)
        self.assertIn(f"vmkmgmt simulator: {self.disk}: cannot be written: {reason}\n", state.stderr)
        self.assert_exit(trace, 3)
        self.assertIn(f"vmkmgmt simulator: {self.disk}/trace: cannot be opened for appending: {reason}\n", trace.stderr)
        self.assert_exit(output, 1)
        self.assertIn(f'the file "{dump}" cannot be written: {reason}', output.stderr)
        self.assertEqual(changes.contents(self.disk), before)


def mounted(folder):
    """Whether a disk could be mounted there."""
    mount = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={DISK_BYTES}", "none", folder], capture_output=True, check=False)
    return mount.returncode == 0


def main():
    """Runs the tests in a namespace where what is mounted is this process's alone."""
    if sys.argv[3:] != ["unshared"]:
        again = [sys.executable, "-B", __file__, *sys.argv[1:3], "unshared"]
        probe = subprocess.run(["unshare", "--mount", "--map-root-user", "true"], capture_output=True, check=False)
        if probe.returncode != 0:
            sys.exit(SKIPPED)
        sys.exit(subprocess.run(["unshare", "--mount", "--map-root-user", *again], check=False).returncode)
    with tempfile.TemporaryDirectory() as folder:
        if not mounted(folder):
            sys.exit(SKIPPED)
        FullDisk.disk = pathlib.Path(folder)
        try:
            tool.main()
        finally:
            subprocess.run(["umount", folder], check=True)


if __name__ == "__main__":
    main()
