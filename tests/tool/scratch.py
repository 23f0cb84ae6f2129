"""A /scratch of its own for a program: the library's files have fixed paths there."""

import contextlib
import os
import pathlib

FOLDER = pathlib.Path("/scratch")

# For a shell: the rest of its script sees an empty /scratch. What cannot be had here is told by the exit code.
SKIPPED = 77
MOUNT = f"mount -t tmpfs none {FOLDER} && mkdir {FOLDER}/log || exit {SKIPPED}\n"


def unshare():
    """The command that gives a shell a mount namespace of its own."""
    return ["unshare", "--mount"] if os.geteuid() == 0 else ["unshare", "--user", "--map-root-user", "--mount"]


@contextlib.contextmanager
def mount_point():
    """The folder is there, and gone again if it was made here. Throws PermissionError. Tests that use it do not run at once."""
    made_here = not FOLDER.exists()
    if made_here:
        FOLDER.mkdir(exist_ok=True)
    try:
        yield
    finally:
        if made_here:
            with contextlib.suppress(OSError):  # tests of another tree may have been at it
                FOLDER.rmdir()
