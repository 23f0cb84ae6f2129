#!/usr/bin/python3
"""Writes docs/operations.md: every exported operation, from the sources that know about it.

    operations.py            writes the page
    operations.py --check    says whether the page is current; exit code 1 if it is not

Names are those of the version script. Families, callbacks and results come from the blocks of the public headers; callbacks must be
in the driver's callback table. The commands are those with which the tests reach each operation.
"""

import pathlib
import re
import sys
from typing import NamedTuple

TOP = pathlib.Path(__file__).resolve().parents[1]
PAGE = TOP / "docs/operations.md"
sys.path[:0] = [str(TOP / "tests" / folder) for folder in ("abi", "operations")]

import declarations  # noqa: E402
from tool_commands import NOT_REACHED, REACHED  # noqa: E402

HEADERS = TOP / "include/vaskdfc"
UNIMPLEMENTED = "unimplemented"

INTRODUCTION = """\
<!-- Made by ./dev operations. -->
# Operations

Every name that the library exports. *Callbacks* are those of the driver that an operation may issue, itself or through operations
that it is composed of; the public headers say when it issues which. *Tool* is a command that reaches the operation, within another
one if so it says, or why there is none. Results are named in `vaskdfc/result.h` and in the header of the family.

| Operation | Family | Callbacks | Tool | Results |
|---|---|---|---|---|
"""


class Operation(NamedTuple):
    """What the headers say about an exported name."""

    name: str
    family: str
    text: str  # its block without comment marks, in one line
    results: str


def _plain(block):
    """The words of a comment."""
    return " ".join(re.sub(r"^\s*(?:/\*+|\*+/|\*)|\*+/$", " ", block, flags=re.M).split())


def _results(block):
    found = re.search(r"@return (.*?)(?:\n \*\n|\*/)", block, re.S)
    return _plain(found[1]) if found else "nothing"


def _of_function(function, family):
    if family == UNIMPLEMENTED:
        return Operation(function.name, family, "No driver call.", "DFC_UNSUPPORTED")
    return Operation(function.name, family, _plain(function.block), _results(function.block))


def _of_variable(name, header):
    block = re.search(rf"/\*\*((?:(?!\*/).)*)\*/\nextern [^;]* {name};", header.read_text(encoding="utf-8"), re.S)
    return Operation(name, header.stem, "No driver call.", "a variable: " + _plain(block[1]))


def declared():
    """Every operation that the public headers declare, by its name."""
    found = {}
    for header in sorted(HEADERS.glob("*.h")):
        operations = [_of_function(function, header.stem) for function in declarations.functions(header)]
        operations += [_of_variable(name, header) for name in declarations.variables(header)]
        found |= {operation.name: operation for operation in operations}
    return found


def callbacks(name, operations):
    """The callbacks that an operation may issue, in the order in which its block names them."""
    text = operations[name].text
    older_name = re.search(r"Older name of (\w+)\.", text)
    if older_name:
        return callbacks(older_name[1], operations)
    if "No driver call" in text:
        return []
    listed = re.search(r"Driver callbacks?: (.*)", text)
    if not listed:
        raise SystemExit(f"{name}: its block names no driver callback and does not say \"No driver call\"")
    found = []
    for word in re.findall(r"\b(?:TREL_\w+|[A-Z][A-Za-z]\w+)\b", listed[1]):
        if word.startswith("TREL_"):
            found.append(word)
        elif word in operations:
            found += callbacks(word, operations)
    return list(dict.fromkeys(found))


def known_callbacks():
    """The names in the driver's callback table."""
    return set(re.findall(r'"(TREL_\w+)"', (TOP / "src/transport/callbacks.h").read_text(encoding="utf-8")))


def _code(text):
    """Text for a cell, with the names in it set as code."""
    text = re.sub(r"(?<!`)\b((?:DFC|HBA|TREL)_[A-Z0-9_]+|(?:DFC_|LEG_)?[A-Z][a-z]+[A-Z]\w+|IssueMbox\w*)\b(?!`)", r"`\1`", text)
    return text.replace("|", "\\|")


def _tool_cell(name):
    if name not in REACHED:
        return "none: " + _code(NOT_REACHED[name])
    reach = REACHED[name]
    return f"`{reach.command}`" + (f", within `{reach.within}`" if reach.within else "")


def _row(operation, operations, known):
    issued = callbacks(operation.name, operations)
    unknown = sorted(set(issued) - known)
    if unknown:
        raise SystemExit(f"{operation.name}: the callback table does not have {', '.join(unknown)}")
    cells = [f"`{operation.name}`", operation.family, ", ".join(f"`{each}`" for each in issued) or "none",
             _tool_cell(operation.name), _code(operation.results)]
    return "| " + " | ".join(cells) + " |\n"


def page():
    """The whole page."""
    operations = declared()
    known = known_callbacks()
    names = declarations.exported_by_map(TOP / "src/libvaskdfc.map")
    for name in names:
        if name not in operations:
            raise SystemExit(f"{name}: is exported, but no public header declares it")
        if name not in {**REACHED, **NOT_REACHED}:
            raise SystemExit(f"{name}: tests/operations/tool_commands.py has no row for it")
    ordered = sorted((operations[name] for name in names), key=lambda operation: (operation.family, operation.name.lower()))
    return INTRODUCTION + "".join(_row(operation, operations, known) for operation in ordered)


def main():
    """Writes the page, or compares it."""
    text = page()
    if "--check" not in sys.argv[1:]:
        PAGE.write_text(text, encoding="utf-8")
        return 0
    if PAGE.exists() and PAGE.read_text(encoding="utf-8") == text:
        return 0
    print("docs/operations.md is not current: run ./dev operations", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
