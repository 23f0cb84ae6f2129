#!/usr/bin/python3
"""Makes the manual pages.

    manual.py [--html] FOLDER

Sections 1 and 5 come from man/*.scd and what these take from elsewhere, section 3 from the public headers. Every name on a
page's NAME line can be looked up: a page that has several gets a small page for each of the others, which points to it. FOLDER
receives man1, man3 and man5 or, with --html, the pages for a browser and an index. Section 3 needs doxygen; without it, it is
left out. Pages bear the day on which they are made, or that of SOURCE_DATE_EPOCH.
"""

import argparse
import functools
import html
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

import function_pages
import markdown_sections

TOP = pathlib.Path(__file__).resolve().parents[1]
SOURCES = TOP / "man"
VERSION_SCRIPT = TOP / "src/libvaskdfc.map"
DOXYFILE = TOP / "docs/doxygen/Doxyfile"

TITLE = re.compile(r"\A(?P<name>[\w.-]+)\((?P<section>\d)\)\n")
NAMES = re.compile(r"^# NAME\n\n(?P<names>.*?) (?:\\)?- ", re.M | re.S)
MOST_BYTES = 80  # of a line of the formatted page, after which mandoc wants another

# The reference's own settings, but for what the pages are made from. Its warnings are those of ./dev docs.
XML_ONLY = """
OUTPUT_DIRECTORY = "{}"
GENERATE_HTML = NO
GENERATE_XML = YES
XML_PROGRAMLISTING = NO
WARNINGS = NO
WARN_IF_UNDOCUMENTED = NO
WARN_NO_PARAMDOC = NO
WARN_AS_ERROR = NO
"""


def run(*command, **options):
    """Runs a command that must succeed and returns what it prints."""
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(map(str, command))}: {done.stderr.strip()}")
    return done.stdout


@functools.cache
def version():
    """The project's version, which every page bears."""
    return re.search(r"^  VERSION ([\d.]+)$", (TOP / "CMakeLists.txt").read_text(encoding="utf-8"), re.M)[1]


def source(path):
    """A page's source with what it shares with others.

    A line "@include NAME" stands for the file man/NAME, a line "@section PAGE TITLE" for a section of a Markdown page.
    """
    text = path.read_text(encoding="utf-8")
    text = re.sub(r"^@section (\S+) (.+)", lambda found: markdown_sections.section(TOP / found[1], found[2]), text, flags=re.M)
    return re.sub(r"^@include (\S+)\n", lambda found: source(path.parent / found[1]), text, flags=re.M)


def written_pages():
    """The pages that are written by hand."""
    return [source(path) for path in sorted(SOURCES.glob("*.scd"))]


def header_pages():
    """The pages that are made from the public headers."""
    if not shutil.which("doxygen"):
        print("manual.py: no doxygen, so no section 3", file=sys.stderr)
        return []
    with tempfile.TemporaryDirectory() as folder:
        run("doxygen", "-", input=DOXYFILE.read_text(encoding="utf-8") + XML_ONLY.format(folder), cwd=TOP)
        exported = set(re.findall(r"^    (\w+);", VERSION_SCRIPT.read_text(encoding="utf-8"), re.M))
        return list(function_pages.pages(pathlib.Path(folder) / "xml", TOP / "include", SOURCES / "examples", exported).values())


def broken(line):
    """A line of text, broken where it is too long; what follows must not begin like a request."""
    while len(line.encode()) > MOST_BYTES and " " in line:
        cut = line.rfind(" ", 0, MOST_BYTES)
        cut = line.find(" ") if cut < 0 else cut
        yield line[:cut]
        line = re.sub(r"^(?=[.'])", r"\\&", line[cut + 1:])
    yield line


def tidied(page):
    """A page as scdoc formats it, without paragraphs that are empty, with hyphens that can be pasted into a command line."""
    lines = []
    shown_as_is = False
    for line in page.splitlines():
        shown_as_is = line == ".nf" or (shown_as_is and line != ".fi")
        if line == ".P" and lines and re.match(r"\.(?:SH|SS|TH|P$)", lines[-1]):
            continue
        if lines and lines[-1] == ".P" and re.match(r"\.(?:SH|SS)", line):
            lines.pop()
        if lines and lines[-1] == ".P" and line == ".RE":
            lines[-1:] = [".RE", ".P"]
            continue
        if line.startswith((".", "\\h")):
            lines.append(line)
        elif shown_as_is:
            lines.append(line.replace("-", r"\-"))
        elif line:
            line = re.sub(r"\\fB.*?\\fR", lambda bold: bold[0].replace("-", r"\-"), line)
            lines += broken(line)
    return "\n".join(lines) + "\n"


class Page:
    """One page: its name, section, further names and text for a formatter."""

    def __init__(self, text):
        title = TITLE.match(text)
        self.name, self.section = title["name"], title["section"]
        names = re.sub(r"\\(?=\W)|\\(?=_)", "", NAMES.search(text)["names"])
        self.others = [name for name in re.split(r",\s+", names) if name != self.name]
        head = f'{self.name.upper()}({self.section}) "vaskdfc {version()}" "vaskdfc manual"\n'
        self.text = tidied(run("scdoc", input=TITLE.sub(head, text, count=1)))

    @property
    def file(self):
        """Where the page stands in a folder of manual pages."""
        return f"man{self.section}/{self.name}.{self.section}"

    def write(self, folder):
        """Writes the page and those that point to it."""
        (folder / f"man{self.section}").mkdir(parents=True, exist_ok=True)
        (folder / self.file).write_text(self.text, encoding="utf-8")
        for name in self.others:
            (folder / f"man{self.section}/{name}.{self.section}").write_text(f".so {self.file}\n", encoding="utf-8")

    def write_html(self, folder):
        """Writes the page for a browser. What looks like the name of a page leads there."""
        shown = run("mandoc", "-T", "html", input=self.text)
        shown = re.sub(r"<b>((?:lib)?vaskdfc[\w.-]*)</b>\((\d)\)", r'<a href="\1.\2.html">\1</a>(\2)', shown)
        (folder / f"{self.name}.{self.section}.html").write_text(shown, encoding="utf-8")

    def link(self):
        """A line of the index."""
        page = f"{self.name}.{self.section}.html"
        return f'<li><a href="{page}">{self.name}({self.section})</a> {html.escape(", ".join(self.others))}</li>\n'


def main():
    """Makes the pages that the command line asks for."""
    parser = argparse.ArgumentParser(description="Makes the manual pages.")
    parser.add_argument("--html", action="store_true", help="pages for a browser, and an index of them")
    parser.add_argument("folder", type=pathlib.Path)
    arguments = parser.parse_args()
    arguments.folder.mkdir(parents=True, exist_ok=True)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        made = list(pool.map(Page, written_pages() + header_pages()))
        list(pool.map(lambda page: (page.write_html if arguments.html else page.write)(arguments.folder), made))
    if arguments.html:
        links = "".join(page.link() for page in sorted(made, key=lambda page: (page.section, page.name)))
        index = f"<!DOCTYPE html>\n<title>vaskdfc manual</title>\n<h1>vaskdfc manual</h1>\n<ul>\n{links}</ul>\n"
        (arguments.folder / "index.html").write_text(index, encoding="utf-8")


if __name__ == "__main__":
    sys.exit(main())
