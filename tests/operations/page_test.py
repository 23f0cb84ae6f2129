"""The page about all operations: it is made from the sources, says something about every operation, and a change is noticed."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
PAGE = "docs/operations.md"
SOURCES = ["scripts", "include", "src/libvaskdfc.map", "src/transport/callbacks.h", "tests/abi", "tests/operations", PAGE]
COLUMNS = ["Operation", "Family", "Callbacks", "Tool", "Results"]


def rows(text):
    """The cells of the page's table, one list for each line."""
    lines = [line for line in text.splitlines() if line.startswith("|")]
    return [[cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]] for line in lines]


class Page(unittest.TestCase):
    """The page, and copies of the sources that it is made from."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.top = pathlib.Path(folder.name)
        for name in SOURCES:
            target = self.top / name
            target.parent.mkdir(parents=True, exist_ok=True)
            (shutil.copytree if (TOP / name).is_dir() else shutil.copy)(TOP / name, target)

    def generate(self, *arguments):
        """Runs the script of the copy."""
        return subprocess.run([sys.executable, "-B", self.top / "scripts/operations.py", *arguments], capture_output=True,
                              text=True, timeout=60, check=False)

    def change(self, name, old, new):
        """Changes a file of the copy."""
        path = self.top / name
        text = path.read_text(encoding="utf-8")
        self.assertIn(old, text)
        path.write_text(text.replace(old, new), encoding="utf-8")

    def test_the_page_is_current(self):
        done = self.generate("--check")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def test_no_cell_is_empty_and_every_exported_name_has_a_row(self):
        table = rows((TOP / PAGE).read_text(encoding="utf-8"))
        self.assertEqual(table[0], COLUMNS)
        for row in table:
            self.assertEqual(len(row), len(COLUMNS), row)
            self.assertTrue(all(row), row)
        exported = re.findall(r"^    (\w+);$", (TOP / "src/libvaskdfc.map").read_text(encoding="utf-8"), re.M)
        self.assertEqual(sorted(row[0].strip("`") for row in table[2:]), sorted(exported))

    def test_a_page_that_is_not_current_is_noticed_and_made_anew(self):
        self.change("include/vaskdfc/vport.h", "when the call fails and the driver", "when the driver")
        done = self.generate("--check")
        self.assertEqual((done.returncode, done.stderr), (1, "docs/operations.md is not current: run ./dev operations\n"))
        self.assertEqual(self.generate().returncode, 0)
        self.assertEqual(self.generate("--check").returncode, 0)
        self.assertIn("`DFC_NO_SUCH_VPORT` when the driver leaves", (self.top / PAGE).read_text(encoding="utf-8"))

    def test_callbacks_that_are_missing_or_unknown_are_refused(self):
        self.change("include/vaskdfc/info.h", "Driver callback: TREL_MGMT_MOD_INFO.", "Driver callback: TREL_MGMT_NO_INFO.")
        self.assertIn("ModInfo: the callback table does not have TREL_MGMT_NO_INFO", self.generate().stderr)
        self.change("include/vaskdfc/info.h", "Driver callback: TREL_MGMT_NO_INFO.", "It is quick.")
        self.assertIn("ModInfo: its block names no driver callback", self.generate().stderr)

    def test_an_operation_without_a_declaration_or_a_command_is_refused(self):
        self.change("tests/operations/tool_commands.py", '    "AddBind": _NO_FUNCTION,\n', "")
        self.assertEqual(self.generate().stderr, "AddBind: tests/operations/tool_commands.py has no row for it\n")
        self.change("src/libvaskdfc.map", "    AddBind;\n", "    Unheard;\n")
        self.assertEqual(self.generate().stderr, "Unheard: is exported, but no public header declares it\n")


if __name__ == "__main__":
    unittest.main()
