"""The compilers of this machine that the project supports."""

import shutil
import subprocess
from typing import NamedTuple

WARNINGS = ["-Wall", "-Wextra", "-pedantic", "-Werror"]
WORD_SIZES = (32, 64)


class Compiler(NamedTuple):
    """One family's pair of compilers."""

    name: str
    c: str
    cxx: str

    def for_language(self, language):
        """The command that compiles "c" or "c++"."""
        return self.c if language == "c" else self.cxx


def installed():
    """GCC and Clang, as far as they are there. At least one is, for something built this project."""
    known = [Compiler("GCC", "gcc", "g++"), Compiler("Clang", "clang", "clang++"), Compiler("Clang", "clang-14", "clang++-14")]
    found = {each.name: each for each in reversed(known) if shutil.which(each.c) and shutil.which(each.cxx)}
    if not found:
        raise RuntimeError("neither gcc nor clang can be found on the PATH")
    return [found[name] for name in sorted(found)]


def run(*command, **options):
    """Runs a command and keeps what it says: standard output and standard error apart."""
    environment = options.pop("environment", None)
    return subprocess.run([str(word) for word in command], check=False, capture_output=True, text=True, env=environment, **options)


def check_run(*command, **options):
    """Runs a command that must succeed and returns its standard output."""
    done = run(*command, **options)
    if done.returncode != 0:
        words = " ".join(str(word) for word in command)
        raise AssertionError(f"exit code {done.returncode} from: {words}\n{done.stdout}{done.stderr}")
    return done.stdout
