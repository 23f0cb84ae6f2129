"""What binutils say about a built file."""

import re

import compilers


def readelf(option, file):
    """One of readelf's listings."""
    return compilers.check_run("readelf", "--wide", option, file)


def dynamic_entries(file, tag):
    """The bracketed values of one kind of entry in the dynamic section."""
    return re.findall(rf"\({tag}\)[^\[\n]*\[([^\]]*)\]", readelf("--dynamic", file))


def _dynamic_symbols(selection, file):
    """The names of symbols, with their versions, and what nm calls their kind."""
    listing = compilers.check_run("nm", "--dynamic", selection, "--format=posix", file)
    return [line.split()[:2] for line in listing.splitlines()]


def imported_symbols(file):
    """The names that a file leaves to others, with the versions that it asks for."""
    return [name for name, _ in _dynamic_symbols("--undefined-only", file)]


def imported_names(file):
    """The names that a file leaves to others, without their versions."""
    return [name.split("@")[0] for name in imported_symbols(file)]


def exported_symbols(file):
    """The names that a file defines for others, with their versions. An absolute symbol is the mark of a version itself."""
    return [name for name, kind in _dynamic_symbols("--defined-only", file) if kind != "A"]


def exported_names(file):
    """The names that a file defines for others, without their versions."""
    return [name.split("@")[0] for name in exported_symbols(file)]
