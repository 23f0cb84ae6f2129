"""The built shared objects as the dynamic loader sees them: names, needed libraries, word size."""

import re
import unittest

import elf
import this_build

PLATFORM_FUNCTIONS = ["vmk_MgmtUserInit", "vmk_MgmtUserDestroy", "vmk_MgmtUserCallbackInvokeInt"]


class Library(unittest.TestCase):
    """libvaskdfc."""

    def test_file_carries_the_full_version_and_its_soname_the_major_one(self):
        major = this_build.VERSION.split(".", maxsplit=1)[0]
        self.assertEqual(this_build.VERSION, "11.4.1080")
        self.assertEqual(this_build.LIBRARY.resolve().name, f"libvaskdfc.so.{this_build.VERSION}")
        self.assertEqual(elf.dynamic_entries(this_build.LIBRARY, "SONAME"), [f"libvaskdfc.so.{major}"])
        for link in (f"libvaskdfc.so.{major}", "libvaskdfc.so"):
            self.assertEqual((this_build.LIBRARY.parent / link).resolve(), this_build.LIBRARY.resolve(), f"{link} leads elsewhere")

    def test_needs_libc_and_the_platform_library_and_nothing_else_but_the_loader(self):
        needed = elf.dynamic_entries(this_build.LIBRARY, "NEEDED")
        for name in ("libc.so.6", "libvmkmgmt.so.0"):
            self.assertIn(name, needed)
        superfluous = [name for name in needed if not re.fullmatch(r"libc\.so\.6|libvmkmgmt\.so\.0|ld-linux.*\.so\.\d+", name)]
        self.assertEqual(superfluous, [], f"a host need not have {', '.join(superfluous)}")

    def test_leaves_the_platform_functions_to_whoever_defines_them_first(self):
        symbols = elf.readelf("--dyn-syms", this_build.LIBRARY)
        for name in PLATFORM_FUNCTIONS:
            self.assertRegex(symbols, rf"\bGLOBAL\s+DEFAULT\s+UND\s+{name}\b", f"{name} is not an undefined dynamic symbol")


class EachLibrary(unittest.TestCase):
    """What holds for libvaskdfc and for the platform library that is built with it."""

    libraries = (this_build.LIBRARY, this_build.PLATFORM_LIBRARY)

    def test_has_the_word_size_of_the_build(self):
        for library in self.libraries:
            with self.subTest(library.name):
                self.assertRegex(elf.readelf("--file-header", library), rf"Class:\s+ELF{this_build.WORD_SIZE}\b")

    def test_can_be_preempted(self):
        for library in self.libraries:
            with self.subTest(library.name):
                self.assertNotIn("SYMBOLIC", elf.readelf("--dynamic", library))


class PlatformLibrary(unittest.TestCase):
    """libvmkmgmt."""

    def test_has_the_soname_of_the_one_it_replaces(self):
        self.assertEqual(elf.dynamic_entries(this_build.PLATFORM_LIBRARY, "SONAME"), ["libvmkmgmt.so.0"])


if __name__ == "__main__":
    this_build.main()
