"""The names that the built libraries export, the linker's list and the public header are one and the same list."""

import unittest

import declarations
import elf
import this_build

LIBRARY_MAP = this_build.SOURCE / "src/libvaskdfc.map"
UMBRELLA = this_build.INCLUDE / "vaskdfc.h"


def declared_by_umbrella():
    """The names that an application sees when it includes the one header."""
    headers = declarations.included_headers(UMBRELLA, this_build.INCLUDE)
    functions = [function.name for header in headers for function in declarations.functions(header)]
    return functions + [name for header in headers for name in declarations.variables(header)]


class ExportedNames(unittest.TestCase):
    """Three lists, compared pair by pair and both ways."""

    def assert_same_names(self, names, owner, others, other_owner):
        """Says in sentences which name is missing where."""
        complaints = [f"{name} is {owner} but not {other_owner}" for name in sorted(set(names) - set(others))]
        complaints += [f"{name} is {other_owner} but not {owner}" for name in sorted(set(others) - set(names))]
        if complaints:
            self.fail("\n" + "\n".join(complaints))

    def test_library_exports_what_the_version_script_lists(self):
        self.assert_same_names(elf.exported_names(this_build.LIBRARY), f"exported by {this_build.LIBRARY.name}",
                               declarations.exported_by_map(LIBRARY_MAP), f"listed in {LIBRARY_MAP.name}")

    def test_version_script_lists_what_the_umbrella_header_declares(self):
        self.assert_same_names(declarations.exported_by_map(LIBRARY_MAP), f"listed in {LIBRARY_MAP.name}",
                               declared_by_umbrella(), f"declared through {UMBRELLA.name}")

    def test_umbrella_header_declares_what_the_library_exports(self):
        self.assert_same_names(declared_by_umbrella(), f"declared through {UMBRELLA.name}",
                               elf.exported_names(this_build.LIBRARY), f"exported by {this_build.LIBRARY.name}")

    def test_no_name_is_listed_or_declared_twice(self):
        lists = {LIBRARY_MAP.name: declarations.exported_by_map(LIBRARY_MAP), UMBRELLA.name: declared_by_umbrella()}
        for owner, names in lists.items():
            twice = sorted({name for name in names if names.count(name) > 1})
            self.assertEqual(twice, [], f"{owner} names these twice: {', '.join(twice)}")

    def test_platform_library_exports_the_three_functions_of_its_header(self):
        platform = [function.name for function in declarations.functions(this_build.INCLUDE / "vaskdfc/platform.h")]
        self.assertEqual(len(platform), 3)
        self.assert_same_names(elf.exported_names(this_build.PLATFORM_LIBRARY), f"exported by {this_build.PLATFORM_LIBRARY.name}",
                               platform, "declared in platform.h")


if __name__ == "__main__":
    this_build.main()
