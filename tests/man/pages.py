"""The manual pages as a reader sees them. Made anew for each test program, so that they are those of the sources."""

import atexit
import pathlib
import re
import subprocess
import sys
import tempfile

TOP = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(TOP / "tests/abi"), str(TOP / "tests/tool")]

_folder = tempfile.TemporaryDirectory()
atexit.register(_folder.cleanup)
FOLDER = pathlib.Path(_folder.name)


def make(*arguments):
    """Makes the pages."""
    subprocess.run([sys.executable, "-B", TOP / "scripts/manual.py", *arguments], check=True, timeout=120)


make(FOLDER)

# What mandoc says of a page that only points to another, and is not to be changed: links would not survive every way in which the
# pages are carried.
POINTS_ELSEWHERE = re.compile(r"^mandoc: \S+:1:2: WARNING: \.so is fragile, better use ln\(1\): so (\S+)$")

FILES = sorted(FOLDER.glob("man*/*"))
POINTERS = {file: file.read_text(encoding="utf-8").split()[1] for file in FILES
            if file.read_text(encoding="utf-8").startswith(".so ")}


def complaints():
    """What mandoc says of all pages, run where those that point elsewhere find the others."""
    done = subprocess.run(["mandoc", "-T", "lint", "-W", "style", *FILES], cwd=FOLDER, capture_output=True, text=True, timeout=60,
                          check=False)
    return (done.stdout + done.stderr).splitlines()


def shown(file):
    """A page as plain text, in lines that are long enough for most paragraphs."""
    done = subprocess.run(["mandoc", "-T", "utf8", "-O", "width=1000", file], cwd=FOLDER, capture_output=True, text=True,
                          timeout=60, check=True)
    return re.sub(".\b", "", done.stdout)


class Page:
    """One page: its sections, each a list of lines."""

    def __init__(self, file):
        self.name, self.section = file.stem, file.suffix[1:]
        self.sections = {}
        for line in shown(file).splitlines()[1:-1]:
            if re.match(r"[A-Z]", line):
                lines = self.sections.setdefault(line, [])
            elif line or self.sections:
                lines.append(line)

    def __str__(self):
        return f"{self.name}({self.section})"

    def names(self):
        """The names under which the page can be looked up."""
        return " ".join(self.sections["NAME"]).partition(" - ")[0].replace(" ", "").split(",")

    def text(self, *titles):
        """The text of some sections, of all of them without names."""
        return "\n".join("\n".join(self.sections.get(title, [])) for title in titles or self.sections)

    def terms(self, title):
        """What a section defines: the lines that another, further to the right, follows at once."""
        lines = self.sections[title]
        return [line.strip() for line, below in zip(lines, lines[1:])
                if re.match(r" {7}\S", line) and re.match(r" {11}\S", below) and not line.strip().startswith("$")]

    def examples(self):
        """The blocks of lines that EXAMPLES shows as they are, each with the sentence before it."""
        blocks, sentence = [], ""
        for line in self.sections["EXAMPLES"]:
            if re.match(r" {7}\S", line):
                sentence = line.strip()
                blocks.append((sentence, []))
            elif line.startswith(" " * 11) or (blocks and blocks[-1][1]):
                if not blocks:
                    blocks.append(("", []))
                blocks[-1][1].append(line[11:])
        return [(sentence, "\n".join(lines).strip("\n")) for sentence, lines in blocks]


PAGES = {f"{page.name}.{page.section}": page for page in map(Page, (file for file in FILES if file not in POINTERS))}


def of_section(*sections):
    """The pages of some sections of the manual."""
    return [page for page in PAGES.values() if page.section in sections]
