#!/usr/bin/python3
"""Compares the interface that applications are built against with the one that was recorded, or records it anew.

    abi.py LIBRARY RECORD             says what differs and what to do about it; exit code 1 if anything does
    abi.py --record LIBRARY RECORD    records what was added; exit code 1, and nothing is recorded, if more than that differs

A record holds the exported names with the types that can be reached from them, and neither paths nor lines of the sources. The
library must have been built with full debug information.
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

TOP = pathlib.Path(__file__).resolve().parents[1]

DUMP_OPTIONS = ["--exported-interfaces-only", "--drop-undefined-syms", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs",
                "--no-elf-needed", "--no-parameter-names", "--type-id-style", "hash"]

# Lines of the comparison's report, and what each of them means to an application. Sizes stand there in bits.
CHANGES = re.compile(r"^Leaf changes summary: (\d+) ", re.MULTILINE)
RENAMED = re.compile(r"^SONAME changed from '(?P<before>.*)' to '(?P<after>.*)'$", re.MULTILINE)
LOST = re.compile(r"^ *\[D\] .*\{(?P<name>\w+)(?:@+(?P<node>\w+))?\}$", re.MULTILINE)
ADDED = re.compile(r"^ *\[A\] .*\{(?P<name>\w+)(?:@+(?P<node>\w+))?\}$", re.MULTILINE)
CHANGED = re.compile(r"^ *\[C\] '(?P<what>[^']*)'", re.MULTILINE)
CHANGED_TYPE = re.compile(r"^'(?P<what>[^']*)' changed:\n(?: *type size changed from (?P<before>\d+) to (?P<after>\d+))?",
                          re.MULTILINE)

BITS_PER_BYTE = 8

ADD = "Applications do not miss what was added: record it with ./dev abi and name it in CHANGELOG.md."
TAKE_BACK = "Applications that were built against {soname} break: take this back. What is new gets a new name beside the old one."


class Unusable(Exception):
    """A file that nothing can be said about."""


def _identity(symbol):
    """What the functions and variables of a record call one of its symbols: the name, and the node where it has one."""
    return symbol.get("name") + (f"@@{symbol.get('version')}" if symbol.get("version") else "")


def described(library):
    """The interface of a library, as text to record."""
    dump = subprocess.run(["abidw", *DUMP_OPTIONS, str(library)], check=True, capture_output=True, text=True).stdout
    corpus = xml.etree.ElementTree.fromstring(dump)
    names = {_identity(symbol) for symbol in corpus.iter("elf-symbol")}
    with_types = {each.get("elf-symbol-id") for kind in ("function-decl", "var-decl") for each in corpus.iter(kind)}
    if names - with_types:
        raise Unusable(f"{library}: was built without full debug information about {', '.join(sorted(names - with_types))}")
    return dump.replace(f"path='{TOP}/", "path='")


def report_of(record, library):
    """What abidiff says about a record and the interface that a library has now; empty if they are the same."""
    with tempfile.TemporaryDirectory() as folder:
        current = pathlib.Path(folder) / "current.abi"
        current.write_text(described(library), encoding="utf-8")
        done = subprocess.run(["abidiff", "--leaf-changes-only", "--no-show-locs", str(record), str(current)],
                              check=False, capture_output=True, text=True)
    if done.returncode & 3:  # the two lowest bits are abidiff's own failures
        raise Unusable(f"{record}: abidiff cannot compare it with {library}\n{done.stdout}{done.stderr}")
    return done.stdout if done.returncode else ""


def _symbol(match):
    return match["name"] + (f" of {match['node']}" if match["node"] else "")


def _about_type(match):
    if match["before"] is None:
        return f"{match['what']} has other fields"
    before, after = (int(match[name]) // BITS_PER_BYTE for name in ("before", "after"))
    return f"{match['what']} {'grew' if after > before else 'shrank'} from {before} to {after} bytes"


def breaks(report):
    """What of a report breaks applications, a sentence each; a report of something unknown breaks them as well."""
    found = [f"the library is called {match['after']}, no longer {match['before']}" for match in RENAMED.finditer(report)]
    found += [f"{_symbol(match)} is lost" for match in LOST.finditer(report)]
    found += [f"{match['what']} has other types" for match in CHANGED.finditer(report)]
    found += [_about_type(match) for match in CHANGED_TYPE.finditer(report)]
    added = len(ADDED.findall(report))
    return found if found or all(int(each) == added for each in CHANGES.findall(report)) else ["the interface is not what it was"]


def complaint(record, library):
    """What is wrong and what to do about it, above the whole report; empty if the interface is the recorded one."""
    report = report_of(record, library)
    if not report:
        return ""
    broken = breaks(report)
    added = [f"{_symbol(match)} was added" for match in ADDED.finditer(report)]
    soname = xml.etree.ElementTree.parse(record).getroot().get("soname")
    advice = TAKE_BACK.format(soname=soname) if broken else ADD
    return "; ".join(broken + added) + f".\n{advice}\n\n{report}"


def main(arguments):
    """Compares or records; returns the exit code."""
    recording = arguments[:1] == ["--record"]
    library, record = (pathlib.Path(argument) for argument in arguments[recording:])
    try:
        if recording and not (record.exists() and breaks(report_of(record, library))):
            record.write_text(described(library), encoding="utf-8")
            return 0
        complaints = complaint(record, library)
    except Unusable as unusable:
        complaints = str(unusable)
    print(complaints, end="", file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
