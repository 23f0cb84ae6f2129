"""Every exported name belongs to a node of the version script; who was linked before there were nodes still runs."""

import os
import pathlib
import re
import tempfile
import unittest

import compilers
import declarations
import elf
import this_build

NODES = declarations.nodes_of_map(this_build.SOURCE / "src/libvaskdfc.map")
PLATFORM_NODES = declarations.nodes_of_map(this_build.SOURCE / "simulator/libvmkmgmt.map")
PACKAGING = this_build.SOURCE / "packaging/debian"

# Calls a function, and reads a variable of the library after the library has written it.
APPLICATION = """\
#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  static dfc_brd_info boards[DFC_MAX_BOARDS];
  HbaEvent events[8];
  uint32_t room = 8;
  EventMissedCount = 99;
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0 || GetEventBuffer(0, events, &room) != HBA_STATUS_OK) return 1;
  printf("%u\\n", (unsigned)EventMissedCount);
  return DFC_FreeDiagEnv() == 0 ? 0 : 1;
}
"""


def names_in(nodes):
    """The exported names as binutils spell them: with the node, which is the name's default one, where there is a node."""
    return sorted(name + (f"@@{node}" if node else "") for node, names in nodes.items() for name in names)


class Nodes(unittest.TestCase):
    """The built files."""

    def test_every_name_that_the_library_exports_belongs_to_the_node_that_the_version_script_gives_it(self):
        self.assertEqual(sorted(elf.exported_symbols(this_build.LIBRARY)), names_in(NODES))

    def test_the_first_node_is_called_after_the_major_version_and_holds_names(self):
        first = f"VASKDFC_{this_build.VERSION.split('.', maxsplit=1)[0]}"
        self.assertEqual(next(iter(NODES)), first)
        self.assertIn("DFC_InitDiagEnv", NODES[first])

    def test_the_platform_exports_its_names_without_a_version_as_the_one_that_it_replaces(self):
        self.assertEqual(list(PLATFORM_NODES), [""])
        self.assertEqual(sorted(elf.exported_symbols(this_build.PLATFORM_LIBRARY)), names_in(PLATFORM_NODES))

    def test_the_library_asks_for_the_platforms_names_without_a_version(self):
        imported = elf.imported_symbols(this_build.LIBRARY)
        self.assertEqual([name for name in imported if name.startswith("vmk_")], sorted(PLATFORM_NODES[""]))

    def test_an_application_asks_for_its_names_in_their_node(self):
        imported = [name for name in elf.imported_symbols(this_build.APPLICATION) if name.split("@")[0] in sum(NODES.values(), [])]
        self.assertIn("DFC_InitDiagEnv", [name.split("@")[0] for name in imported])
        self.assertEqual(set(imported) - {name.replace("@@", "@") for name in names_in(NODES)}, set())


class DebianPackage(unittest.TestCase):
    """What the package of the library says of its names, for which dpkg computes dependencies."""

    def test_its_symbols_are_the_exported_names_and_their_nodes_each_with_the_version_that_brought_it(self):
        first, *lines = (PACKAGING / "libvaskdfc11.symbols").read_text(encoding="utf-8").splitlines()
        self.assertEqual(first, "libvaskdfc.so.11 libvaskdfc11 #MINVER#")
        listed = [line.split() for line in lines]
        expected = [f"{name}@{node}" for node, names in NODES.items() for name in [node, *names]]
        self.assertEqual(sorted(name for name, _ in listed), sorted(expected))
        for name, version in listed:
            self.assertRegex(version, r"^11(\.\d+){3}$", f"{name}: a version of the library without Debian's revision")

    def test_its_version_is_the_one_of_the_library(self):
        newest = (PACKAGING / "changelog").read_text(encoding="utf-8").splitlines()[0]
        self.assertRegex(newest, rf"^vaskdfc \({re.escape(this_build.VERSION)}\.\d+-\d+\) ")


class OlderApplication(unittest.TestCase):
    """A program that was linked with the library before it had nodes."""

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.environment = {name: value for name, value in os.environ.items() if not name.startswith("VMKMGMT_SIM_")}

    def compile(self, source, *options):
        """The compiler of this build on some C."""
        compilers.check_run(this_build.C_COMPILER, f"-m{this_build.WORD_SIZE}", "-std=c99", "-xc", "-", "-xnone", *options,
                            cwd=self.folder, input=source)

    def test_still_starts_and_shares_the_librarys_variable(self):
        # What an application needs for being linked: the library's name and its exported names, none with a version.
        variable = "EventMissedCount"
        functions = [name for names in NODES.values() for name in names if name != variable]
        stubs = "".join(f"void {name}(void) {{}}\n" for name in functions)
        self.compile(f"unsigned {variable};\n{stubs}", "-shared", "-fPIC", "-Wl,-soname,libvaskdfc.so.11", "-o", "libvaskdfc.so")
        # At a fixed address, such a program holds the variable itself.
        self.compile(APPLICATION, "-I", this_build.INCLUDE, "-fno-pie", "-no-pie", "-L.", "-lvaskdfc", "-o", "application")

        names = elf.imported_symbols(self.folder / "application") + elf.exported_symbols(self.folder / "application")
        for name in ("DFC_InitDiagEnv", variable):
            self.assertIn(name, names, "the program must not ask for a version")

        environment = self.environment | {"LD_LIBRARY_PATH": os.pathsep.join(
            str(library.parent) for library in (this_build.LIBRARY, this_build.PLATFORM_LIBRARY))}
        done = compilers.run(self.folder / "application", environment=environment)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "0\n", ""))


if __name__ == "__main__":
    this_build.main()
