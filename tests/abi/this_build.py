"""The build that a test looks at: its first argument names the file in which CMake described it."""

import json
import pathlib
import sys
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = SOURCE / "include"
GOLDEN = pathlib.Path(__file__).resolve().parent / "golden"

_facts = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))

BINARY = pathlib.Path(_facts["binary"])
LIBRARY = pathlib.Path(_facts["library"])
PLATFORM_LIBRARY = pathlib.Path(_facts["platform_library"])
TOOL = pathlib.Path(_facts["tool"])
APPLICATION = pathlib.Path(_facts["application"])
RECORDING_PLATFORM = pathlib.Path(_facts["recording_platform"])
NAME = _facts["name"]
VERSION = _facts["version"]
WORD_SIZE = int(_facts["word_size"])
C_COMPILER = _facts["c_compiler"]
CMAKE = _facts["cmake"]
INSTALLED_INCLUDE = _facts["installed_include"]
INSTALLED_LIBRARIES = _facts["installed_libraries"]


def golden_lines(name):
    """The lines of a file of expected values, without comments and empty lines."""
    lines = (GOLDEN / name).read_text(encoding="utf-8").splitlines()
    return [line for line in lines if line and not line.startswith("#")]


def main():
    """Runs the tests of the calling script; what follows the first argument selects among them."""
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
