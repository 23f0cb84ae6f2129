"""State folders that hold what no writer left there: refused in words that name the file, which stays as it is."""

import fcntl
import os
import subprocess
import unittest

import changes
import tool

# What the sizes of these files or their JSON tell: any cut or addition. Others may have any number of whole entries.
OF_ONE_SIZE = ("region", "pci", "memory", "registers", "priority", "rnid", "disk")


def damaged_forms(name, content):
    """What may have become of a file, each with a word for it."""
    yield "cut", content[:len(content) // 2]
    yield "longer", content + b"\xff"
    if name.startswith(OF_ONE_SIZE) or name.endswith(".json"):
        yield "empty", b""
    if name.endswith((".json", ".log")):
        yield "garbage", bytes(255 - byte for byte in content)
    if name.endswith(".json"):
        yield "a member of another version", content.replace(b"{", b'{"added": 1, ', 1)
        yield "deep", b"[" * 1_000_000


class WrongState(changes.ChangesTest):
    """One file is wrong, all others are right."""

    def setUp(self):
        super().setUp()
        for first, _ in changes.CHANGES.values():
            self.assert_exit(self.run_tool(first), 0)
        self.right = changes.contents(self.state)
        self.assertEqual(set(self.right), set(changes.CHANGES))

    def assert_refused(self, path, words, **options):
        """No handle can be opened; the one message about it names the file."""
        result = self.run_tool(changes.READS_ALL_STATE, **options)
        self.assert_exit(result, 3)
        self.assertRegex(result.stderr, rf"^vmkmgmt simulator: {path}: {words}\n")
        self.assertEqual(result.stderr.count("vmkmgmt simulator"), 1)

    def test_damage_that_shows_is_refused_and_stays(self):
        for name, content in self.right.items():
            for word, wrong in damaged_forms(name, content):
                with self.subTest(file=name, form=word):
                    path = self.state / name
                    path.write_bytes(wrong)
                    self.assert_refused(path, r"damaged: \S[^:\n]*: expected \S[^\n]*; remove the file to start with fresh state")
                    self.assertEqual(path.read_bytes(), wrong)
                    path.unlink()
                    self.assert_exit(self.run_tool(changes.READS_ALL_STATE), 0)
                    path.write_bytes(content)

    def test_no_bytes_of_the_right_size_make_it_crash(self):
        for name, content in self.right.items():
            for filler in (b"\x00", b"\xff", b"\x7b"):
                with self.subTest(file=name, filler=filler):
                    (self.state / name).write_bytes(filler * len(content))
                    for command in changes.CHANGES[name]:
                        self.assertIn(self.run_tool(command).returncode, (0, 1, 3))
                    (self.state / name).write_bytes(content)

    def test_parameters_of_another_generation_of_adapter_are_refused(self):
        self.assert_exit(self.run_tool("params set 3 interrupt_delay 1 --yes"), 0)
        path = self.state / f"parameters-{changes.NEWER}.json"
        (self.state / f"parameters-{changes.OLDER}.json").replace(path)
        self.assert_refused(path, "damaged: values: expected parameters of the adapter within their ranges; [^\n]*")

    def test_what_is_no_file_is_refused_at_once(self):
        for name, content in self.right.items():
            path = self.state / name
            for make in (path.mkdir, lambda path=path: os.mkfifo(path), lambda path=path: path.symlink_to("/dev/zero")):
                path.unlink()
                make()
                self.assert_refused(path, "is no regular file")
                path.rmdir() if path.is_dir() else path.unlink()
                path.write_bytes(content)
            path.unlink()
            path.symlink_to(path)
            self.assert_refused(path, "cannot be opened: Too many levels of symbolic links")
            path.unlink()
            path.write_bytes(content)

    def test_files_of_absurd_sizes_are_not_read(self):
        for name, content in self.right.items():
            path = self.state / name
            with path.open("r+b") as file:
                file.truncate(1 << 40)
            self.assert_refused(path, "damaged: the whole file: expected [^\n]*")
            path.write_bytes(content)

    @unittest.skipUnless(tool.runs_as_nobody(), "only root can run a process as somebody else")
    def test_files_that_are_somebody_elses_are_refused(self):
        self.folder.chmod(0o755)
        self.state.chmod(0o777)
        for path in self.state.iterdir():
            path.chmod(0o666)
        for name in self.right:
            path = self.state / name
            path.chmod(0)
            self.assert_refused(path, "cannot be opened: Permission denied", user=tool.NOBODY)
            path.chmod(0o666)

    @unittest.skipUnless(tool.runs_as_nobody(), "only root can run a process as somebody else")
    def test_a_folder_that_cannot_be_used_is_refused(self):
        self.folder.chmod(0o755)
        for mode, words in ((0o000, "cannot be opened"), (0o333, "cannot be opened"), (0o555, "cannot be written"),
                            (0o666, "cannot be written")):
            self.state.chmod(mode)
            self.assert_refused(self.state, f"{words}: Permission denied", user=tool.NOBODY)

    def test_who_changes_waits_for_the_lock_and_who_reads_does_not(self):
        change, _ = changes.CHANGES[f"adapter-{changes.NEWER}.json"]
        with (self.state / "lock").open("r+b") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.assert_exit(self.run_tool(changes.READS_ALL_STATE), 0)
            writer = subprocess.Popen([tool.PROGRAM, *change.split()], env=tool.environment(VMKMGMT_SIM_STATE=self.state),
                                      stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
            with self.assertRaises(subprocess.TimeoutExpired):
                writer.wait(timeout=0.5)
            self.assertEqual(changes.contents(self.state), self.right)
        self.assertEqual((writer.communicate(timeout=60)[1], writer.returncode), (b"", 0))
        self.assertNotEqual(changes.contents(self.state), self.right)


if __name__ == "__main__":
    tool.main()
