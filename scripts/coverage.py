#!/usr/bin/python3
"""Prints how much of each folder was executed, and which lines and branches of the library were not.

    coverage.py BUILD [TREE]    BUILD counts them and has run its tests; TREE, by default this one, is what it was built from

Instances of a template are one: a line or a branch counts as executed if it is so in any of them.
"""

import collections
import json
import pathlib
import subprocess
import sys
from typing import NamedTuple

LIBRARY = "src"
FOLDERS = (LIBRARY, "simulator", "tools")


class Line(NamedTuple):
    """How often a line was executed, and each branch that leaves it."""

    count: int = 0
    branches: tuple = ()

    def plus(self, other):
        """Together with what another object file or another instance counted."""
        longer, shorter = sorted((self.branches, other.branches), key=len, reverse=True)
        shorter += (0,) * (len(longer) - len(shorter))
        return Line(self.count + other.count, tuple(map(sum, zip(longer, shorter))))


class Share(NamedTuple):
    """How many of something were executed."""

    executed: int = 0
    all: int = 0

    def plus(self, counts):
        """With some more of them, each told by how often it was executed."""
        return Share(self.executed + sum(count > 0 for count in counts), self.all + len(counts))

    def __str__(self):
        percentage = f"{100 * self.executed / self.all:.1f} %" if self.all else ""
        return f"{self.executed:>7} of {self.all:>6} {percentage:>8}"


def counted_by(compiler_output):
    """The report on every source that one object file was made of."""
    done = subprocess.run(["gcov", "--json-format", "--stdout", "--branch-probabilities", str(compiler_output)],
                          check=True, capture_output=True, text=True)
    return json.loads(done.stdout)["files"]


def read(build, top):
    """The lines of every source in the folders of the tree, by path and number."""
    sources = collections.defaultdict(lambda: collections.defaultdict(Line))
    for counts in sorted(build.rglob("*.gcda")):
        for source in counted_by(counts):
            path = pathlib.Path(source["file"])
            if not any(path.is_relative_to(top / folder) for folder in FOLDERS):
                continue
            lines = sources[path.relative_to(top).as_posix()]
            for line in source["lines"]:
                # Branches that only an exception takes are the compiler's, not the author's.
                branches = tuple(branch["count"] for branch in line["branches"] if not branch["throw"])
                lines[line["line_number"]] = lines[line["line_number"]].plus(Line(line["count"], branches))
    return {path: dict(sorted(lines.items())) for path, lines in sorted(sources.items())}


def rows_of(path):
    """The rows of the table that a source counts in: a family of the library and the library, or all of simulator or tools."""
    folder, family, *_ = pathlib.PurePath(path).parts
    return (folder, f"{folder}/{family}") if folder == LIBRARY else (folder,)


def table(sources):
    """What was executed of each folder."""
    lines, branches = (collections.defaultdict(Share) for _ in range(2))
    for path, counted in sources.items():
        for row in rows_of(path):
            lines[row] = lines[row].plus([line.count for line in counted.values()])
            branches[row] = branches[row].plus([count for line in counted.values() for count in line.branches])
    yield f"{'folder':16}{'lines':>26}{'branches':>26}"
    for row in sorted(lines):
        yield f"{row:16}{lines[row]}{branches[row]}"


def left_out(sources):
    """Every line of the library that was not executed, or not left in every way."""
    for path, counted in sources.items():
        if LIBRARY not in rows_of(path):
            continue
        for number, line in counted.items():
            if not line.count:
                yield f"{path}:{number}: never executed"
            elif 0 in line.branches:
                yield f"{path}:{number}: {line.branches.count(0)} of {len(line.branches)} branches never taken"


def main(arguments):
    """Prints the table and the list below it."""
    build = pathlib.Path(arguments[0]).resolve()
    top = pathlib.Path(arguments[1] if len(arguments) > 1 else pathlib.Path(__file__).resolve().parents[1]).resolve()
    sources = read(build, top)
    if not sources:
        print(f"{build}: nothing was counted there", file=sys.stderr)
        return 1
    print("\n".join([*table(sources), "", *left_out(sources)]))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
