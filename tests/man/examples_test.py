"""The examples of the manual pages do what the pages say: command lines are run, in order, on the built-in adapters; programs are
compiled and run.

    examples_test.py TOOL SCHEMAS COMPILER WORD_SIZE LIBRARIES
"""

import os
import pathlib
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

import pages  # first: it says where the other modules are
import compilers
import tool

COMPILER, WORD_SIZE, LIBRARIES = sys.argv[3], sys.argv[4], pathlib.Path(sys.argv[5])
PROGRAMS = sorted((pages.TOP / "man/examples").glob("*.c"))


def commands(block):
    """The command lines of a block, each with the output that is shown below it."""
    for part in re.split(r"^\$ ", block, flags=re.M)[1:]:
        command, _, output = part.partition("\n")
        yield command, output.strip("\n")


class Commands(tool.ToolTest):
    """The examples of sections 1 and 5."""

    def setUp(self):
        super().setUp()
        programs = self.folder / "bin"
        programs.mkdir()
        (programs / "vaskdfc").symlink_to(tool.PROGRAM.resolve())
        self.variables = tool.environment(PATH=f"{programs}:{os.environ['PATH']}", HOME=self.folder,
                                          VMKMGMT_SIM_STATE=self.folder / "kept")

    def run_block(self, block):
        """Runs the command lines of a block and returns how many there are. All succeed, but one before `echo $?`."""
        status = 0
        listed = list(commands(block))
        for position, (command, shown) in enumerate(listed):
            if command == "echo $?":
                self.assertEqual(str(status), shown, listed[position - 1][0])
                continue
            done = subprocess.run(["sh", "-c", command], stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False,
                                  cwd=self.folder, env=self.variables, timeout=60)
            status = done.returncode
            if [later for later, _ in listed[position + 1:position + 2]] != ["echo $?"]:
                self.assertEqual(status, 0, f"{command}\n{done.stdout}{done.stderr}")
            if shown:
                self.assertEqual(done.stdout.rstrip("\n"), shown, command)
        return len(listed)

    def run_page(self, page):
        """Runs the examples of a page. Where a sentence says under which name a file is saved, it is."""
        count = 0
        for sentence, block in page.examples():
            saved = re.search(r"Saved as (\S+):$", sentence)
            if saved:
                (self.folder / saved[1]).write_text(block, encoding="utf-8")
            else:
                count += self.run_block(block)
        self.assertGreater(count, 0, f"{page} has no command line")


def add_test(page):
    """A test for a page, named after it."""
    setattr(Commands, f"test_{re.sub('[^a-z]', '_', page.name)}", lambda self: self.run_page(page))


for each in pages.of_section("1", "5"):
    add_test(each)


class Programs(tool.ToolTest):
    """The examples of section 3."""

    def problem_with(self, source):
        """What goes wrong with a program; empty if it does what it should."""
        program = self.folder / source.stem
        compiled = compilers.run(COMPILER, f"-m{WORD_SIZE}", "-std=c99", *compilers.WARNINGS, "-I", pages.TOP / "include", source,
                                 "-L", LIBRARIES, f"-Wl,-rpath,{LIBRARIES}", f"-Wl,-rpath-link,{LIBRARIES}", "-lvaskdfc",
                                 "-o", program)
        if compiled.returncode != 0:
            return f"{source.name}: {compiled.stderr}"
        done = compilers.run(program, environment=tool.environment(), timeout=60)
        return "" if done.returncode == 0 else f"{source.name} ends with {done.returncode}: {done.stdout}{done.stderr}"

    def test_every_program_does_what_its_comment_says(self):
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            problems = list(filter(None, pool.map(self.problem_with, PROGRAMS)))
        self.assertEqual(problems, [])

    def test_every_page_shows_a_program_and_every_program_stands_on_a_page(self):
        self.assertEqual({f"{source.stem}.3" for source in PROGRAMS}, {f"{page.name}.3" for page in pages.of_section("3")})
        for source in PROGRAMS:
            _, shown = pages.PAGES[f"{source.stem}.3"].examples()[0]
            self.assertEqual(shown, source.read_text(encoding="utf-8").rstrip("\n"))


if __name__ == "__main__":
    tool.main()
