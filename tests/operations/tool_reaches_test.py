"""Every operation is reached through the tool: the commands run with an object before the library that notes what is called.

    tool_reaches_test.py TOOL SCHEMAS OBSERVER VERSION_SCRIPT FOLDER

The folder holds a library whose operations the observer can stand between.
"""

import pathlib
import shlex
import shutil
import sys

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[1] / folder) for folder in ("abi", "tool")]

import declarations  # noqa: E402
import elf  # noqa: E402
import images  # noqa: E402
import tool  # noqa: E402
from tool_commands import NOT_REACHED, REACHED  # noqa: E402

OBSERVER = pathlib.Path(sys.argv[3]).resolve()
OBSERVABLE = pathlib.Path(sys.argv[5]).resolve()
EXPORTED = declarations.exported_by_map(pathlib.Path(sys.argv[4]))
VARIABLES = {"EventMissedCount"}


def imported_by_the_tool():
    """The names that the tool's program takes from elsewhere, functions and variables. Of variables it may hold a copy."""
    return {*elf.imported_names(tool.PROGRAM), *elf.exported_names(tool.PROGRAM)}


class Reaches(tool.ToolTest):
    """The table, and the tool."""

    def setUp(self):
        super().setUp()
        self.imported = imported_by_the_tool()
        for name, content in {"region14.bin": bytes(images.REGION14_BYTES), "region22.bin": images.region22(bytes(16)),
                              "block.bin": bytes(512), "request.bin": b"request",
                              "rules.csv": b"match1,match2,match3,match4,prio\n*,*,*,*,5\n"}.items():
            (self.folder / name).write_bytes(content)

    def called_by(self, reach):
        """The functions of the library that a command calls; those that the program calls itself have a mark of their own."""
        notes = self.folder / "called"
        state = self.folder / "state"
        notes.unlink(missing_ok=True)
        shutil.rmtree(state, ignore_errors=True)
        if reach.after:
            self.assert_exit(tool.run(*reach.after.split(), VMKMGMT_SIM_STATE=state), 0)
        done = tool.run(*reach.command.split(), *shlex.split(reach.arguments), cwd=self.folder, VMKMGMT_SIM_STATE=state,
                        LD_PRELOAD=OBSERVER, LD_LIBRARY_PATH=OBSERVABLE, OPERATIONS_CALLED=notes)
        return done, dict(line.partition(" ")[::2] for line in notes.read_text(encoding="utf-8").splitlines())

    def test_every_exported_name_has_one_row(self):
        self.assertEqual(sorted([*REACHED, *NOT_REACHED]), sorted(EXPORTED))

    def test_every_command_calls_what_the_table_says(self):
        for name, reach in REACHED.items():
            with self.subTest(name, command=f"{reach.command} {reach.arguments}"):
                done, called = self.called_by(reach)
                self.assertIn(done.returncode, (0, 1), done.stderr)
                if name in VARIABLES:
                    self.assertIn(name, self.imported)
                elif reach.within:
                    self.assertIn(name, called)
                    self.assertIn(reach.within, called)
                    self.assertNotIn(name, self.imported, "the tool calls it itself")
                else:
                    self.assertEqual(called.get(name), "directly", done.stderr)

    def test_what_no_command_reaches_is_not_called(self):
        self.assertEqual(sorted(self.imported & set(NOT_REACHED)), [])
        for name, reason in NOT_REACHED.items():
            self.assertTrue(reason, name)


if __name__ == "__main__":
    tool.main()
