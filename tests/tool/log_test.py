"""The library's log of one run of the tool, compared whole.

The library's files have fixed paths, so the run has a mount namespace of its own with an empty /scratch.
"""

import pathlib
import re
import subprocess
import sys

import scratch
import tool

EXPECTED = pathlib.Path(__file__).resolve().parent / "expected/list.log"

# Everything of a line that differs from run to run; its form is checked all the same.
VARYING = [(r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d  ", "TIME  "), (r" id\[\d+:\d+\]$", " id[PID:TID]"),
           (r"handle\[0x[0-9a-f]+\]", "handle[HANDLE]")]

IN_NAMESPACE = f"""{scratch.MOUNT}
echo 'LogLevel 0xf' > /scratch/libvaskdfc.conf
"$0" list > /scratch/output || exit 1
cat /scratch/log/libvaskdfc.log
"""


def log_of_list():
    """The log of one `vaskdfc list`; None where no namespace can be had."""
    try:
        with scratch.mount_point():
            # The leak detector cannot look into a process of another namespace.
            result = subprocess.run([*scratch.unshare(), "sh", "-c", IN_NAMESPACE, tool.PROGRAM], capture_output=True, text=True,
                                    check=False, timeout=60, env=tool.environment(ASAN_OPTIONS="detect_leaks=0"))
    except PermissionError as refused:
        print(f"skipped: {refused}")
        return None
    if result.returncode == 0:
        return result.stdout
    print(result.stderr)
    if result.returncode == 1 and "unshare" not in result.stderr:
        sys.exit("the tool failed")
    print("skipped: no mount namespace can be had here")
    return None


def comparable(line):
    """A line with placeholders for what differs from run to run."""
    for pattern, placeholder in VARYING:
        line = re.sub(pattern, placeholder, line)
    return line


def main():
    """Compares the log with the expected one, line by line."""
    log = log_of_list()
    if log is None:
        return scratch.SKIPPED
    got = [comparable(line) for line in log.splitlines()]
    expected = EXPECTED.read_text(encoding="utf-8").splitlines()
    for number, (mine, theirs) in enumerate(zip(got, expected), start=1):
        if mine != theirs:
            print(f"line {number} is\n{mine}\nexpected\n{theirs}")
            return 1
    if len(got) != len(expected):
        print(f"the log has {len(got)} lines, expected {len(expected)}")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
