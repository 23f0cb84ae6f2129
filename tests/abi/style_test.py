"""The check of the style, run on a small file that breaks its rules one by one."""

import pathlib
import sys
import tempfile
import unittest

import compilers
import this_build

SCRIPT = this_build.SOURCE / "scripts/check_style.py"


class Style(unittest.TestCase):
    """Each test compares all that the check prints about one file."""

    def check(self, text, name="src/file.cpp"):
        """Runs the check on a tree of one file; returns exit code, standard output and standard error."""
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            (pathlib.Path(folder) / "src").mkdir(exist_ok=True)
            path.write_text(text, encoding="utf-8")
            done = compilers.run(sys.executable, SCRIPT, folder)
        return done.returncode, done.stdout, done.stderr

    def assert_refused(self, text, sentence, **options):
        """The file has this one violation."""
        self.assertEqual(self.check(text, **options), (1, f"{sentence}\n", ""))

    def test_a_file_within_all_limits_is_accepted_in_silence(self):
        lines = ["x" * 132, "class Implementation;  // of a Utility"] + ["int line;"] * 398
        self.assertEqual(self.check("\n".join(lines) + "\n"), (0, "", ""))

    def test_long_lines_and_long_files_are_refused(self):
        self.assert_refused("int x;\n" + "x" * 133 + "\n", "src/file.cpp:2: is longer than 132 columns")
        self.assert_refused("int x;\n" * 401, "src/file.cpp:401: the file has 401 lines, more than 400: split it")

    def test_stray_blanks_tabs_and_a_missing_end_are_refused(self):
        self.assert_refused("int x; \n", "src/file.cpp:1: ends with blanks")
        self.assert_refused("\tint x;\n", "src/file.cpp:1: contains a tab")
        self.assert_refused("int x;\nint y;", "src/file.cpp:2: the last line has no end")

    def test_work_left_undone_is_refused_in_every_kind_of_file(self):
        note = "TO" + "DO"
        for name in ("src/file.cpp", "scripts/file.sh", "tests/abi/CMakeLists.txt"):
            self.assert_refused(f"# {note}: finish\n", f"{name}:1: leaves work undone: {note}", name=name)

    def test_names_that_say_nothing_are_refused(self):
        for name in ("BoardManager", "HelperTable", "StringUtil", "LogImpl"):
            self.assert_refused(f"class {name};\n", f"src/file.cpp:1: uses a name that says nothing about what it is: {name}")

    def test_a_folder_that_is_no_tree_is_an_error_of_its_own(self):
        with tempfile.TemporaryDirectory() as folder:
            done = compilers.run(sys.executable, SCRIPT, folder)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("not a tree of this project", done.stderr)


if __name__ == "__main__":
    this_build.main()
