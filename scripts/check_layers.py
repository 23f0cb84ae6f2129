#!/usr/bin/python3
"""Holds the house together: who may include whom, who may write the log, which names stay private.

    check_layers.py [TREE]

Prints file:line and a sentence for every violation; exit code 1 if there is any, 2 if the tree cannot be checked. The rules are the
tables below. A family may include another family's headers only where its operations are composed of that family's operations:
such a pair is declared in COMPOSED_OF.
"""

import pathlib
import re
import sys

# A layer is named after its folder. Files belong to the first layer whose pattern matches their path from the top of the tree.
LAYERS = [
    ("include", r"include/"),
    ("records", r"src/transport/records/"),
    ("callback table", r"src/transport/(?:callbacks|callback_table)\.h$"),
    ("transport", r"src/transport/"),
    ("family", r"src/(?P<family>\w+)/"),
    ("simulator", r"simulator/"),
    ("tools", r"tools/"),
    ("examples", r"examples/"),
    ("bench", r"bench/"),
]

# What a layer may include besides its own headers.
MAY_INCLUDE = {
    "include": [],
    "records": ["include"],
    "callback table": ["include", "records"],
    "transport": ["include", "records", "callback table"],
    "family": ["include", "records", "callback table", "transport"],
    "simulator": ["include", "records", "callback table"],
    "tools": ["include"],
    "examples": ["include"],
    "bench": ["include", "records", "callback table"],
}

# The SLI mode gates most families; regions travel in mailboxes; a rule about a LUN confirms its remote port.
COMPOSED_OF = {
    "mailbox": ["info"],
    "regions": ["info", "mailbox"],
    "diag": ["info"],
    "qos": ["info", "vport"],
    "fcoe": ["info", "regions"],
}

WHY = {
    "include": "public headers include public headers only, because nothing else is installed",
    "records": "driver-side records build on public headers only",
    "callback table": "the callback table builds on records and public headers only",
    "transport": "the transport serves every family and knows none",
    "family": "a family sees public headers, the transport and the families that it is declared to be composed of",
    "simulator": "the simulator stands on the driver's side: public headers, the callback table and the driver-side records",
    "tools": "tools use what an application can use: public headers",
    "examples": "examples use what an application can use: public headers",
    "bench": "benchmarks load the built library and stand on the driver's side: public headers, the callback table and its records",
}

# Folders that includes are relative to.
ROOTS = ["include", "src", "simulator", "simulator/include", "tools/vaskdfc", "bench"]

PUBLIC_STANDARD_HEADERS = {"stddef.h", "stdint.h", "type_traits"}
LOG_SOURCES = {"src/transport/log.h", "src/transport/log.cpp"}

CODE_SUFFIXES = {".h", ".c", ".cpp"}
INCLUDE = re.compile(r'^\s*#\s*include\s*(?P<form>["<])(?P<name>[^">]+)[">]', re.M)
COMMENT_OR_STRING = re.compile(r'/\*.*?\*/|//[^\n]*|"(?:[^"\\\n]|\\.)*"', re.S)
LOG_LINE = re.compile(r'\bfLogger\b|\bLINE_START\b|"[^"\n]*(?:\bcmd ok\b|\bcmd err\b|\bcall: %)')
PRIVATE_VARIABLE = re.compile(r"^extern [^;(]*?\b(\w+);", re.M)


def blanked(found):
    """As many blanks as the match has characters, with its line ends."""
    return re.sub(r"[^\n]", " ", found[0])


def without_comments(text):
    """The text with its comments blanked out."""
    return COMMENT_OR_STRING.sub(lambda found: found[0] if found[0].startswith('"') else blanked(found), text)


def without_strings(text):
    """The text with comments and strings blanked out."""
    return COMMENT_OR_STRING.sub(blanked, text)


class Tree:
    """The project's sources and what is wrong with them."""

    def __init__(self, top):
        self.top = pathlib.Path(top).resolve()
        self.complaints = []

    def check(self):
        """Collects every violation."""
        private = self.private_variables()
        for path in self.sources():
            text = path.read_text(encoding="utf-8")
            self.check_includes(path, text)
            self.check_log(path, text)
            self.check_private_names(path, text, private)

    def sources(self):
        """Every source file that belongs to a layer."""
        folders = sorted({pattern.split("/")[0] for _, pattern in LAYERS})
        found = (path for folder in folders for path in (self.top / folder).rglob("*"))
        return sorted(path for path in found if path.suffix in CODE_SUFFIXES and self.layer_of(path))

    def name_of(self, path):
        """A file's path from the top of the tree."""
        return path.relative_to(self.top).as_posix()

    def layer_of(self, path):
        """The layer of a file and, within src/, its family; None for a file outside of all layers."""
        for layer, pattern in LAYERS:
            found = re.match(pattern, self.name_of(path))
            if found:
                return layer, found.groupdict().get("family")
        return None

    def complain(self, path, text, position, sentence):
        """Notes a violation at a position in a file's text."""
        line = text.count("\n", 0, position) + 1
        self.complaints.append(f"{self.name_of(path)}:{line}: {sentence}")

    def included_file(self, path, form, name):
        """The project's file that an include names; None for a header of the system or one that the build generates."""
        folders = ([path.parent] if form == '"' else []) + [self.top / root for root in ROOTS]
        for folder in folders:
            file = (folder / name).resolve()
            if file.is_file() and file.is_relative_to(self.top):
                return file
        return None

    def check_includes(self, path, text):
        """Includes of the project's own headers, then those of other headers."""
        layer, family = self.layer_of(path)
        for found in INCLUDE.finditer(without_comments(text)):
            file = self.included_file(path, found["form"], found["name"])
            if file:
                if not self.may_include(layer, family, file):
                    self.complain(path, text, found.start("form"), f"must not include {self.name_of(file)}: {WHY[layer]}")
                continue
            sentence = self.foreign_header(layer, found["form"], found["name"])
            if sentence:
                self.complain(path, text, found.start("form"), sentence)

    def may_include(self, layer, family, file):
        """Whether a file of a layer, and of a family, may include another of the project's files."""
        target = self.layer_of(file)
        if target is None:
            return False
        target_layer, target_family = target
        if layer == "family" and target_layer == "family":
            return target_family in [family, *COMPOSED_OF.get(family, [])]
        return target_layer == layer or target_layer in MAY_INCLUDE[layer]

    @staticmethod
    def foreign_header(layer, form, name):
        """What is wrong with including a header that is not the project's; empty if nothing is."""
        if layer == "include" and name not in PUBLIC_STANDARD_HEADERS:
            return f"must not include {name}: a public header needs nothing but {', '.join(sorted(PUBLIC_STANDARD_HEADERS))}"
        of_the_library = layer in ("records", "callback table", "transport", "family")
        if of_the_library and form == "<" and "/" in name and not name.startswith("sys/"):
            return f"must not include {name}: the library uses the standard library and libc only"
        return ""

    def check_log(self, path, text):
        """The library's log has one writer."""
        name = self.name_of(path)
        if not name.startswith("src/") or name in LOG_SOURCES:
            return
        for found in LOG_LINE.finditer(without_comments(text)):
            self.complain(path, text, found.start(),
                          "writes to the log or formats one of its lines: only src/transport/log.cpp does")

    def private_variables(self):
        """The process-wide variables of the transport."""
        texts = [header.read_text(encoding="utf-8") for header in (self.top / "src/transport").glob("*.h")]
        return {name for text in texts for name in PRIVATE_VARIABLE.findall(without_strings(text))}

    def check_private_names(self, path, text, private):
        """Nobody outside of the library names its variables, not even by declaring them anew."""
        if self.name_of(path).startswith("src/"):
            return
        for found in re.finditer(r"\b\w+\b", without_strings(text)):
            if found[0] in private:
                self.complain(path, text, found.start(), f"{found[0]} is private to the library")


def main():
    """Checks the tree that the argument names, by default the one that this script stands in."""
    tree = Tree(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[1])
    if not (tree.top / "src/transport").is_dir():
        print(f"{tree.top}: not a tree of this project, it has no src/transport", file=sys.stderr)
        return 2
    tree.check()
    print("".join(f"{complaint}\n" for complaint in tree.complaints), end="")
    return 1 if tree.complaints else 0


if __name__ == "__main__":
    sys.exit(main())
