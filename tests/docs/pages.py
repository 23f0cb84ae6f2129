"""The project's pages in Markdown, and what stands in them."""

import pathlib
import re
from typing import NamedTuple

TOP = pathlib.Path(__file__).resolve().parents[2]
FENCE = re.compile(r"^ *```(?P<language>\w*)\n(?P<text>.*?)^ *```$", re.M | re.S)


class Block(NamedTuple):
    """What stands between two fences."""

    language: str
    text: str


class Command(NamedTuple):
    """A line that begins with "$ ", and the output that the page shows below it."""

    line: str
    output: str


def all_pages():
    """Every page."""
    return sorted([*TOP.glob("*.md"), *(TOP / "docs").rglob("*.md")])


def name_of(page):
    """A page's path from the top of the tree."""
    return page.relative_to(TOP).as_posix()


def text_of(page):
    """A page's text."""
    return page.read_text(encoding="utf-8")


def blocks(page):
    """The blocks between fences, in their order."""
    return [Block(found["language"], found["text"]) for found in FENCE.finditer(text_of(page))]


def prose(page):
    """The page without such blocks and without what stands between backquotes."""
    return re.sub(r"`[^`\n]*`", "", FENCE.sub("", text_of(page)))


def commands(page):
    """The commands, in their order. One that ends with a backslash goes on in the next line."""
    for block in blocks(page):
        if block.language or not block.text.startswith("$ "):
            continue
        for part in re.split(r"^\$ ", block.text, flags=re.M)[1:]:
            line, _, output = part.partition("\n")
            while line.endswith("\\"):
                more, _, output = output.partition("\n")
                line += "\n" + more
            yield Command(line, output.rstrip("\n"))
