"""What binutils say about a built file."""

import re

import compilers


def readelf(option, file):
    """One of readelf's listings."""
    return compilers.check_run("readelf", "--wide", option, file)


def dynamic_entries(file, tag):
    """The bracketed values of one kind of entry in the dynamic section."""
    return re.findall(rf"\({tag}\)[^\[\n]*\[([^\]]*)\]", readelf("--dynamic", file))


def imported_names(file):
    """The names that a file leaves to others, without their versions."""
    listing = compilers.check_run("nm", "--dynamic", "--undefined-only", "--format=posix", file)
    return [line.split()[0].split("@")[0] for line in listing.splitlines()]
