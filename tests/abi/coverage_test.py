"""The report on what tests execute, made of a small tree that is built and run."""

import pathlib
import sys
import tempfile
import unittest

import compilers
import this_build

SCRIPT = this_build.SOURCE / "scripts/coverage.py"

# Each of the template's two instances takes one of its two branches.
TREE = {
    "src/lamps/sizes.h": """\
template <typename Type>
bool is_large(Type lamp) {
  if (sizeof(lamp) > static_cast<unsigned>(lamp)) return true;
  return false;
}
""",
    "src/lamps/lamps.cpp": """\
#include "sizes.h"
int lit(int lamps) {
  if (lamps > 3) return 3;
  return is_large(char{0}) && !is_large(int{100}) ? lamps : 0;
}
int never(int lamps) {
  return lamps > 0 ? 1 : 2;
}
""",
    "simulator/main.cpp": """\
int lit(int lamps);
int main(int count, char**) {
  if (count > 1) return 1;
  return lit(2) == 2 ? 0 : 1;
}
""",
    "other/unused.cpp": "int of_no_interest(int lamps) { return lamps ? 1 : 2; }\n",
}


class Coverage(unittest.TestCase):
    """The tree is made once."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.tree = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory())).resolve()
        for name, text in TREE.items():
            path = cls.tree / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        cls.build = cls.tree / "build"
        cls.build.mkdir()
        program = cls.build / "program"
        compilers.check_run("g++", "-O0", "--coverage", *(cls.tree / name for name in TREE if name.endswith(".cpp")), "-o", program,
                            cwd=cls.build)
        compilers.check_run(program)

    def test_tells_of_each_folder_how_much_was_executed_and_of_the_library_what_was_not(self):
        self.assertEqual(compilers.check_run(SCRIPT, self.build, self.tree), """\
folder                               lines                  branches
simulator             3 of      3  100.0 %      1 of      2   50.0 %
src                   6 of      8   75.0 %      5 of     10   50.0 %
src/lamps             6 of      8   75.0 %      5 of     10   50.0 %

src/lamps/lamps.cpp:3: 1 of 2 branches never taken
src/lamps/lamps.cpp:4: 2 of 4 branches never taken
src/lamps/lamps.cpp:6: never executed
src/lamps/lamps.cpp:7: never executed
""")

    def test_refuses_a_build_in_which_nothing_was_counted(self):
        done = compilers.run(sys.executable, SCRIPT, self.tree / "src", self.tree)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", f"{self.tree}/src: nothing was counted there\n"))


if __name__ == "__main__":
    this_build.main()
