"""The build as it is installed: in a folder that nothing knows of, away from the folder that was configured."""

import os
import pathlib
import tempfile
import unittest

import compilers
import this_build

_VARIABLES = ("LD_LIBRARY_PATH", "PKG_CONFIG_PATH", "PKG_CONFIG_LIBDIR", "CMAKE_PREFIX_PATH")


def install(prefix, *options):
    """Installs this build, or what the options leave of it."""
    compilers.check_run(this_build.CMAKE, "--install", this_build.BINARY, "--prefix", prefix, *options)


def files_below(folder):
    """Every file in a folder and its folders, by its path from there; links are files."""
    return sorted(path.relative_to(folder).as_posix() for path in pathlib.Path(folder).rglob("*")
                  if path.is_symlink() or path.is_file())


class InstalledTest(unittest.TestCase):
    """Tests with an installation and a folder for their own work, for each class a new one."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.prefix = cls.folder / "prefix"
        install(cls.prefix)

        # Compilers, linkers and loaders hear of the installation only from the test.
        cls.libraries = cls.prefix / this_build.INSTALLED_LIBRARIES
        cls.environment = {name: value for name, value in os.environ.items()
                           if not name.startswith("VMKMGMT_SIM_") and name not in _VARIABLES}
        cls.running = cls.environment | {"LD_LIBRARY_PATH": str(cls.libraries)}
