"""The pages show what happens: their commands are run, page by page and in order, on simulated adapters.

A command runs where a reader would run it, with the tool on the PATH, `examples` and the example programs beside it, and a state
folder that the page has for itself. The page shows its standard output, then its standard error. In what it shows

    ...       a line of its own stands for one line or more
    <host>    stands for this host's name
    <time>    stands for a time as the library's log writes it
    <number>  stands for a decimal number
"""

import contextlib
import difflib
import os
import pathlib
import re
import socket
import subprocess
import sys

import pages

sys.path.insert(0, str(pages.TOP / "tests/tool"))

import images  # noqa: E402
import scratch  # noqa: E402
import tool  # noqa: E402

PROGRAMS = pathlib.Path(sys.argv[3]).resolve()
MOST_SECONDS = 120  # for a page
HOST_NAME_BYTES = 32  # as many as the library keeps of it

PLACEHOLDERS = {
    "<host>": re.escape(socket.gethostname()[:HOST_NAME_BYTES]),
    "<time>": r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d",
    "<number>": r"\d+(?:\.\d+)?",
}
# Pages whose readers rely on commands.
FULL_OF_COMMANDS = ["README.md", "docs/administrators-guide.md", "docs/getting-started.md", "docs/simulator-guide.md",
                    "docs/tool.md"]


def pattern_of_line(line):
    """What a shown line stands for."""
    if line == "...":
        return r"(?:[^\n]*\n)+"
    parts = re.split("(" + "|".join(PLACEHOLDERS) + ")", line)
    return "".join(PLACEHOLDERS.get(part, re.escape(part)) for part in parts) + r"\n"


def is_shown(shown, got):
    """Whether output is what a page shows of it."""
    pattern = "".join(map(pattern_of_line, shown.split("\n"))) if shown else r"\n"
    return re.fullmatch(pattern, got + "\n") is not None


def difference(shown, got):
    """Both, line by line."""
    return "\n".join(difflib.ndiff(shown.split("\n"), got.split("\n")))


class Session:
    """One shell, in which the commands of a page are run one after another."""

    def __init__(self, folder, commands):
        self.folder = folder
        self.commands = commands

    def script(self):
        """Every command with the exit code of the one before it at hand, and with files for what it says."""
        lines = ["code=0"]
        for number, command in enumerate(self.commands):
            files = f"> '{self.folder}/{number}.out' 2> '{self.folder}/{number}.err' < /dev/null"
            lines.append(f"{{ (exit $code); {command.line}\n}} {files}\ncode=$?")
        return "\n".join(lines) + "\n"

    def run(self, variables, private_scratch):
        """Runs them; returns whether they could be run at all."""
        place = self.folder / "place"
        place.mkdir()
        (place / "examples").symlink_to(pages.TOP / "examples")
        for program in PROGRAMS.iterdir():
            if program.is_file() and os.access(program, os.X_OK):
                (place / program.name).symlink_to(program)
        before = scratch.MOUNT if private_scratch else ""
        shell = [*(scratch.unshare() if private_scratch else []), "sh"]
        done = subprocess.run(shell, input=before + self.script(), cwd=place, env=variables, capture_output=True, text=True,
                              timeout=MOST_SECONDS, check=False)
        if self.commands and not (self.folder / "0.out").exists():
            return False
        assert not done.stdout + done.stderr, done.stdout + done.stderr
        return True

    def output(self, number):
        """What a command said."""
        said = [(self.folder / f"{number}.{stream}").read_text(encoding="utf-8") for stream in ("out", "err")]
        return "".join(said).rstrip("\n")


class Pages(tool.ToolTest):
    """The pages and the programs."""

    maxDiff = None

    def run_in_scratch(self, folder, commands, variables):
        """A session with a /scratch of its own; None where none can be had."""
        folder.mkdir()
        session = Session(folder, commands)
        with contextlib.suppress(PermissionError), scratch.mount_point():
            # The leak detector cannot look into a process of another namespace.
            if session.run(variables | {"ASAN_OPTIONS": "detect_leaks=0"}, private_scratch=True):
                return session
        return None

    def session_of(self, commands):
        """A session in which the commands have been run. Without a /scratch of its own those that name it are left out."""
        bin_folder = self.folder / "bin"
        bin_folder.mkdir()
        (bin_folder / "vaskdfc").symlink_to(tool.PROGRAM.resolve())
        variables = tool.environment(PATH=f"{bin_folder}:{os.environ['PATH']}", VMKMGMT_SIM_STATE=self.folder / "state")
        if any(str(scratch.FOLDER) in command.line for command in commands):
            session = self.run_in_scratch(self.folder / "private", commands, variables)
            if session:
                return session
            print(f"commands that name {scratch.FOLDER} are left out: no mount namespace can be had here")
            commands = [command for command in commands if str(scratch.FOLDER) not in command.line]
        folder = self.folder / "shared"
        folder.mkdir()
        session = Session(folder, commands)
        self.assertTrue(session.run(variables, private_scratch=False))
        return session

    def test_pages_for_readers_with_adapters_have_commands(self):
        for page in FULL_OF_COMMANDS:
            with self.subTest(page):
                self.assertGreater(len(list(pages.commands(pages.TOP / page))), 4)

    def test_placeholders_stand_for_what_they_say_and_nothing_else(self):
        for shown, got, stands in [("a <number> b", "a 12 b", True), ("a <number> b", "a 1.5 b", True),
                                   ("a <number>", "a b", False), ("<time>  x", "1970-01-01T00:00:00  x", True),
                                   ("<time>", "yesterday", False), ("<host>", socket.gethostname()[:HOST_NAME_BYTES], True),
                                   ("a\n...\nb", "a\n1\n2\nb", True), ("a\n...\nb", "a\nb", False), ("a.c", "abc", False),
                                   ("", "", True), ("", "a", False), ("a", "", False)]:
            with self.subTest(shown, got=got):
                self.assertEqual(is_shown(shown, got), stands)

    def test_a_refused_write_fails_as_the_page_about_the_tool_shows(self):
        path = self.scenario(tool.adapter(1, regions=[images.of_region23(vlan=1002)]),
                             faults=[tool.fault("TREL_MGMT_HBA_ISSUE_UPD_MBX", driver_status="0x0BAD0020")])
        result = tool.run("fcoe", "params", "set", "0", "--vlan", "8", "--yes", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertIn(f"```\n{result.stderr}```\n", pages.text_of(pages.TOP / "docs/tool.md"))

    def test_events_look_as_the_page_about_the_tool_shows(self):
        events = [{"at_ms": 0, "event": "link_down"}, {"at_ms": 0, "event": "link_up"},
                  {"at_ms": 0, "event": "rscn", "fc_id": "0x010400"}]
        path = self.scenario(tool.adapter(1, fc_id="0x010a01", events=events))
        shown = tool.run("events", VMKMGMT_SIM_SCENARIO=path).stdout
        self.assertIn(f"```\n{shown}```\n", pages.text_of(pages.TOP / "docs/tool.md"))


def test_of(page):
    """A test of one page's commands."""

    def test(self):
        session = self.session_of(list(pages.commands(page)))
        for number, command in enumerate(session.commands):
            with self.subTest(command.line):
                got = session.output(number)
                self.assertTrue(is_shown(command.output, got), f"\n$ {command.line}\n{difference(command.output, got)}")

    return test


for each in pages.all_pages():
    if any(pages.commands(each)):
        setattr(Pages, f"test_commands_of_{re.sub('[^a-z0-9]+', '_', pages.name_of(each).lower())}", test_of(each))


if __name__ == "__main__":
    tool.main()
