"""Output that goes nowhere, and files that are no files: an error and an exit code, and nothing half-written."""

import os
import stat
import subprocess
import threading
import unittest

import tool

SPACE_BYTES = 4096  # of a dump of PCI configuration space
PRINTING = ["--help", "--version", "list --help", "fcoe fcf list --help", "completion bash", "completion zsh", "completion fish",
            "list", "list -o json", "list -o csv", "list -o keyvalue", "show 0", "stats 0 --watch 1 --count 1",
            "--log 3", "version"]
MESSAGE = b"the output cannot be written"


class Output(tool.ToolTest):
    """Standard output and standard error."""

    def end_of(self, command, **options):
        """Exit code and errors of a command whose standard files are something else."""
        variables = {name: options.pop(name) for name in list(options) if name.isupper()}
        result = subprocess.run([tool.PROGRAM, *command.split()], env=tool.environment(**variables), timeout=60, check=False,
                                **({"stderr": subprocess.PIPE} | options))
        return result.returncode, result.stderr

    def test_output_without_room_is_an_error(self):
        for command in PRINTING:
            with self.subTest(command), open("/dev/full", "wb") as full:
                code, errors = self.end_of(command, stdout=full)
                self.assertEqual(code, 1)
                self.assertIn(MESSAGE, errors)

    def test_closed_output_is_an_error_and_no_file_gets_it(self):
        for command in PRINTING:
            trace = self.folder / "trace"
            with self.subTest(command):
                code, errors = self.end_of(command, preexec_fn=lambda: os.close(1), VMKMGMT_SIM_TRACE=trace,
                                           VMKMGMT_SIM_STATE=self.folder / "state")
                self.assertEqual(code, 1)
                self.assertIn(MESSAGE, errors)
                lines = trace.read_bytes().splitlines() if trace.exists() else []
                self.assertEqual([line for line in lines if not line.startswith(b'{"pid"')], [])

    def test_errors_that_cannot_be_told_leave_the_exit_code(self):
        trace = self.folder / "trace"
        with open("/dev/full", "wb") as full:
            for errors in ({"preexec_fn": lambda: os.close(2), "stderr": None}, {"stderr": full}):
                self.assertEqual(self.end_of("show zz", stdout=subprocess.DEVNULL, **errors)[0], 2)
                self.assertEqual(self.end_of("show 99", stdout=subprocess.DEVNULL, VMKMGMT_SIM_TRACE=trace, **errors)[0], 3)
        self.assertNotIn(b"vaskdfc", trace.read_bytes())

    def test_closed_input_is_nobody_to_ask(self):
        trace = self.folder / "trace"
        code, errors = self.end_of("set-state 0 3", preexec_fn=lambda: os.close(0), stdout=subprocess.DEVNULL,
                                   VMKMGMT_SIM_TRACE=trace)
        self.assertEqual(code, 2)
        self.assertIn(b"standard input is no terminal", errors)

    def test_a_reader_that_went_away_ends_the_command(self):
        for ignored, expected in ((False, (-13, b"")), (True, (1, None))):
            reader, writer = os.pipe()
            os.close(reader)
            code, errors = self.end_of("list", stdout=writer, restore_signals=not ignored)
            os.close(writer)
            self.assertEqual(code, expected[0])
            self.assertTrue(errors == expected[1] or MESSAGE in errors)


class Files(tool.ToolTest):
    """What "--file" names."""

    def dump(self, path, code=0, **options):
        """Writes the same bytes there each time."""
        result = tool.run("pci", "dump", "0", "--file", path, **options)
        self.assert_exit(result, code)
        return result

    def test_a_file_keeps_its_mode_and_a_link_its_target(self):
        path, link = self.folder / "dump", self.folder / "link"
        path.write_bytes(b"before")
        path.chmod(0o600)
        link.symlink_to(path)
        self.dump(link)
        self.assertTrue(link.is_symlink())
        self.assertEqual(len(path.read_bytes()), SPACE_BYTES)
        self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600)
        self.assertEqual({entry.name for entry in self.folder.iterdir()}, {"dump", "link"})

    def test_a_pipe_gets_the_bytes_and_stays_a_pipe(self):
        path = self.folder / "pipe"
        os.mkfifo(path)
        received = []
        reader = threading.Thread(target=lambda: received.append(path.read_bytes()), daemon=True)
        reader.start()
        self.dump(path)
        reader.join(timeout=60)
        self.assertTrue(path.is_fifo())
        self.assertEqual([len(part) for part in received], [SPACE_BYTES])

    @unittest.skipUnless(tool.runs_as_nobody() or os.geteuid() != 0, "a tool that replaces files could harm this system")
    def test_a_device_stays_a_device(self):
        user = {"user": tool.NOBODY} if os.geteuid() == 0 else {}
        self.assertIn("No space left on device", self.dump("/dev/full", code=1, **user).stderr)

    def test_what_cannot_be_written_is_named(self):
        for path, reason in ((self.folder, "Is a directory"), (self.folder / "none/dump", "No such file or directory"),
                             ("", "No such file or directory")):
            self.assertIn(f'the file "{path}" cannot be written: {reason}', self.dump(path, code=1).stderr)
        self.assertEqual(list(self.folder.iterdir()), [])


if __name__ == "__main__":
    tool.main()
