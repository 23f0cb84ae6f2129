"""Reads what the project's headers declare. Their layout is fixed by clang-format, so regular expressions are enough; a
construct that they do not know is an error, never skipped."""

import re
from typing import NamedTuple

_COMMENT = re.compile(r"/\*.*?\*/|//[^\n]*", re.S)
_FUNCTION = re.compile(r"^(?P<result>\w[\w ]*?[ *]+)(?P<name>\w+)\((?P<parameters>[^()]*)\);", re.M)
_VARIABLE = re.compile(r"^extern \w[\w ]* (?P<name>\w+);", re.M)
_RECORD = re.compile(r"(?<!>\n)^(?:typedef )?struct (?P<name>\w+) \{\n(?P<body>.*?)^\}", re.M | re.S)
_FIELD = re.compile(r"(?:const )?[\w:]+(?: |\* )(?P<name>\w+)(?:\[\w+\])?")
_SIZE_GUARD = re.compile(r"^VASKDFC_RECORD_SIZE\((\w+),", re.M)
_POINTER_SIZE_GUARD = re.compile(r"^VASKDFC_POINTER_RECORD_SIZE\((\w+),", re.M)
_NODE = re.compile(r"(?P<node>\w*) *\{\s*global:(?P<names>[^}]*?)(?:local:[^}]*)?\}", re.S)
_INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)


class Function(NamedTuple):
    """One declared function and the comment block right before it, empty if there is none."""

    name: str
    result: str
    parameters: list
    block: str


def _read(path):
    return path.read_text(encoding="utf-8")


def without_comments(text):
    """The text with every comment blanked out; positions stay what they were."""
    return _COMMENT.sub(lambda comment: re.sub(r"[^\n]", " ", comment[0]), text)


def functions(header):
    """The functions that one header declares, in order."""
    text = _read(header)
    return [
        Function(found["name"], found["result"].strip(), _parameter_names(found["parameters"]), _block_before(text, found.start()))
        for found in _FUNCTION.finditer(without_comments(text))
        if not found["result"].startswith("typedef")
    ]


def variables(header):
    """The names of the variables that one header declares, in order."""
    return _VARIABLE.findall(without_comments(_read(header)))


def _parameter_names(parameters):
    if parameters.strip() == "void":
        return []
    return [re.search(r"\w+$|\.\.\.$", each.strip())[0] for each in parameters.split(",")]


def _block_before(text, position):
    before = text[:position].rstrip()
    start = before.rfind("/*")
    if not before.endswith("*/") or not before.startswith("/**", start):
        return ""
    return before[start:]


def included_headers(header, include):
    """A header and all headers of the project that it includes, each once."""
    found = []
    waiting = [header]
    while waiting:
        current = waiting.pop()
        if current in found:
            continue
        found.append(current)
        waiting += [include / name for name in _INCLUDE.findall(_read(current))]
    return found


def records(header):
    """The fields' names of every record that a header defines, by the record's name."""
    text = without_comments(_read(header))
    found = {match["name"]: _fields(header, match["name"], match["body"]) for match in _RECORD.finditer(text)}
    guarded = set(_SIZE_GUARD.findall(text)) | set(_POINTER_SIZE_GUARD.findall(text))
    if guarded != set(found):
        difference = ", ".join(sorted(guarded ^ set(found)))
        raise AssertionError(f"{header}: a record without a size guard, or a guard without a record that can be read: {difference}")
    return found


def pointer_records(header):
    """The names of the records whose guard says that they hold native pointers."""
    return _POINTER_SIZE_GUARD.findall(without_comments(_read(header)))


def _fields(header, record, body):
    names = []
    for statement in body.split(";")[:-1]:
        field = _FIELD.fullmatch(" ".join(statement.split()))
        if not field:
            raise AssertionError(f"{header}: {record} has a field that this test cannot read: {statement.strip()}")
        names.append(field["name"])
    return names


def nodes_of_map(script):
    """The exported names of a linker's version script by the node that they stand in."""
    nodes = {match["node"]: [name.strip() for name in match["names"].split(";") if name.strip()]
             for match in _NODE.finditer(without_comments(_read(script)))}
    if not nodes:
        raise AssertionError(f"{script} has no node with a part that starts with global:")
    return nodes


def exported_by_map(script):
    """The exported names of a linker's version script, of all nodes."""
    return [name for names in nodes_of_map(script).values() for name in names]
