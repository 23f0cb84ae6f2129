#!/usr/bin/python3
"""Measures builds of the library and prints what came of it beside the goals.

    report.py [--check] [--json FILE] BUILD...

Every figure is a ratio of medians that were measured in one run, in turns, against bare calls of the same driver, which answers at
once. With --check the exit code is 1 when a goal is missed, and each one is named. --json writes the figures into FILE; - is
standard output, and then there is no table.
"""

import argparse
import collections
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

# An i386 build's library has to fit into this, without what a debugger needs.
MOST_KIB = 128

# The library's files have fixed paths, so the programs get a mount namespace with an empty /scratch.
IN_NAMESPACE = 'mount -t tmpfs none /scratch && exec "$0" "$@"'


def fail(problem):
    sys.exit(f"bench: {problem}")


def unshared(command):
    """The command in a mount namespace of its own."""
    as_user = [] if os.geteuid() == 0 else ["--user", "--map-root-user"]
    return ["unshare", *as_user, "--mount", "sh", "-c", IN_NAMESPACE, *command]


def run(*command):
    """Standard output of a program, which has to succeed."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True, check=False)
    if done.returncode != 0:
        fail(f"{' '.join(map(str, command))} ended with {done.returncode}")
    return done.stdout


def size_of(library):
    kib = library.stat().st_size / 1024
    return {"what": "stripped library", "against": "nothing", "value": kib, "unit": "KiB", "goal": "at most", "limit": MOST_KIB}


def relocations_of(library):
    """How many there are of each kind."""
    return dict(collections.Counter(re.findall(r"\bR_\w+", run("readelf", "--relocs", "--wide", library))).most_common())


def measured(build):
    """The figures and the relocations of a build, whose libraries are stripped first, as they are when they are shipped."""
    with tempfile.TemporaryDirectory() as folder:
        stripped = []
        for library in (build / "lib/libvaskdfc.so", build / "bench/libbench_bare_library.so"):
            stripped.append(pathlib.Path(folder) / library.name)
            run("strip", "--strip-unneeded", "-o", stripped[-1], library)
        figures = json.loads(run(*unshared([str(word) for word in (build / "bench/bench", *stripped)])))
        if build.name == "i386":
            figures.append(size_of(stripped[0]))
        return {"figures": figures, "relocations": relocations_of(stripped[0])}


def is_reached(figure):
    value, limit = figure["value"], figure["limit"]
    return {"at most": value <= limit, "at least": value >= limit, "none": True}[figure["goal"]]


def print_table(name, figures, relocations):
    print(f"{name}\n{'WHAT':36}  {'AGAINST':33}  {'OURS':>10}  {'BARE':>10}  {'VALUE':>6}  GOAL")
    for figure in figures:
        times = [f"{figure[of] / 1000:7.2f} us" if of in figure else "-" for of in ("ours_ns", "bare_ns")]
        unit = "" if figure["unit"] == "ratio" else " " + figure["unit"]
        goal = "-" if figure["goal"] == "none" else f"{figure['goal']} {figure['limit']:g}{unit}"
        print(f"{figure['what']:36}  {figure['against']:33}  {times[0]:>10}  {times[1]:>10}  {figure['value']:6.2f}  "
              f"{goal}{'' if is_reached(figure) else '  MISSED'}")
    print("relocations: " + ", ".join(f"{count} {kind}" for kind, count in relocations.items()) + "\n")


def main():
    parser = argparse.ArgumentParser(description="Measures builds of the library.")
    parser.add_argument("--check", action="store_true", help="fail when a goal is missed")
    parser.add_argument("--json", metavar="FILE", help="write the figures there as JSON; - for standard output")
    parser.add_argument("builds", metavar="BUILD", nargs="+", type=pathlib.Path, help="a folder such as build/i386")
    arguments = parser.parse_args()

    if not pathlib.Path("/scratch").is_dir():
        os.mkdir("/scratch")  # only a mount point
    results = {build.name: measured(build) for build in arguments.builds}

    if arguments.json != "-":
        for name, result in results.items():
            print_table(name, **result)
    if arguments.json == "-":
        print(json.dumps(results, indent=2))
    elif arguments.json:
        pathlib.Path(arguments.json).write_text(json.dumps(results, indent=2) + "\n", encoding="utf-8")

    missed = [(name, figure) for name, result in results.items() for figure in result["figures"] if not is_reached(figure)]
    if arguments.check:
        for name, figure in missed:
            print(f"missed: {name}: {figure['what']}: {figure['value']:.2f}, {figure['goal']} {figure['limit']:g}", file=sys.stderr)
        sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
