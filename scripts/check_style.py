#!/usr/bin/python3
"""What the formatter does not see: length of files and lines, names that say nothing, notes about work left undone.

    check_style.py [TREE]

Prints file:line and a sentence for every violation; exit code 1 if there is any, 2 if the tree cannot be checked.
"""

import pathlib
import re
import sys

FOLDERS = ["bench", "cmake", "examples", "fuzz", "include", "man", "packaging", "scripts", "simulator", "src", "tests", "tools"]
CODE_SUFFIXES = {".h", ".c", ".cpp", ".py", ".sh", ".cmake"}
COMPILED_SUFFIXES = {".h", ".c", ".cpp"}

MOST_LINES = 400
MOST_COLUMNS = 132

# Every rule for a line: a pattern, what a match is, and the suffixes of the files in which it counts.
LINE_RULES = [
    (re.compile(rf"^.{{{MOST_COLUMNS}}}(?P<what>.)"), f"is longer than {MOST_COLUMNS} columns", CODE_SUFFIXES),
    (re.compile(r"(?P<what>[ \t\r]+)$"), "ends with blanks", CODE_SUFFIXES),
    (re.compile(r"(?P<what>\t)"), "contains a tab", CODE_SUFFIXES),
    (re.compile(r"\b(?P<what>T[O]DO|F[I]XME|X[X]X)\b"), "leaves work undone", CODE_SUFFIXES),
    (re.compile(r"\b(?P<what>\w*(?:Manager|Helper|Util|Impl)(?![a-z])\w*)"), "uses a name that says nothing about what it is",
     COMPILED_SUFFIXES),
]


def sources(top):
    """Every source file of the tree."""
    found = [path for folder in FOLDERS for path in (top / folder).rglob("*")] + list(top.glob("CMakeLists.txt"))
    return sorted(path for path in found if path.suffix in CODE_SUFFIXES or path.name == "CMakeLists.txt")


def complaints_about(path, name):
    """The violations in one file."""
    text = path.read_text(encoding="utf-8")
    lines = text.split("\n")
    if lines[-1]:
        yield f"{name}:{len(lines)}: the last line has no end"
    if text.count("\n") > MOST_LINES:
        yield f"{name}:{MOST_LINES + 1}: the file has {len(lines) - 1} lines, more than {MOST_LINES}: split it"
    suffix = path.suffix if path.suffix in CODE_SUFFIXES else ".cmake"
    for number, line in enumerate(lines, start=1):
        for pattern, sentence, suffixes in LINE_RULES:
            found = pattern.search(line) if suffix in suffixes else None
            if found:
                what = found["what"]
                yield f"{name}:{number}: {sentence}" + (f": {what}" if what.isidentifier() and len(what) > 1 else "")


def main():
    """Checks the tree that the argument names, by default the one that this script stands in."""
    top = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[1]).resolve()
    if not (top / "src").is_dir():
        print(f"{top}: not a tree of this project, it has no src", file=sys.stderr)
        return 2
    found = [line for path in sources(top) for line in complaints_about(path, path.relative_to(top).as_posix())]
    print("".join(f"{line}\n" for line in found), end="")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
