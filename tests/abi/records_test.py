"""Records have their documented layout, the same on both word sizes but for the native pointers in three of them.

The layout is measured, not read: a generated program prints the size of every record and the place of every field.
"""

import pathlib
import tempfile
import unittest

import compilers
import declarations
import this_build

PUBLIC = sorted(this_build.INCLUDE.rglob("*.h"))
DRIVER_SIDE = sorted((this_build.SOURCE / "src/transport/records").glob("*.h"))


def records_of(headers):
    """Every record of some headers with its fields."""
    found = {}
    for header in headers:
        for name, fields in declarations.records(header).items():
            if name in found:
                raise AssertionError(f"{header} defines {name} a second time")
            found[name] = fields
    return found


def measuring_program(headers, root, records, before_main=""):
    """The text of a program that prints the layout of the records, in the form of golden/records.txt."""
    lines = ["#include <stddef.h>", "#include <stdio.h>"]
    lines += [f'#include "{header.relative_to(root)}"' for header in headers]
    lines += [before_main, "#define PRINT_FIELD(record, field) \\",
              '  printf("  %zu %zu " #field "\\n", offsetof(record, field), sizeof(((record*)0)->field))', "int main(void) {"]
    for name, fields in records.items():
        lines.append(f'  printf("{name} %zu\\n", sizeof({name}));')
        lines += [f"  PRINT_FIELD({name}, {field});" for field in fields]
    return "\n".join(lines + ["  return 0;", "}", ""])


def measured(language, source, word_size, *flags):
    """What the program prints when it is built for a word size."""
    compiler = compilers.installed()[-1]
    with tempfile.TemporaryDirectory() as folder:
        program = pathlib.Path(folder) / "measure"
        text = program.with_suffix(".c" if language == "c" else ".cpp")
        text.write_text(source, encoding="utf-8")
        compilers.check_run(compiler.for_language(language), f"-m{word_size}", *compilers.WARNINGS, *flags, text, "-o", program)
        return by_record(compilers.check_run(program).splitlines())


def by_record(lines):
    """Groups lines of a layout: the record's size and its fields' lines, by the record's name."""
    layout = {}
    for line in lines:
        if not line.startswith(" "):
            name, size = line.split()
            if name in layout:
                raise AssertionError(f"{name} is laid out twice")
            layout[name] = [size]
            continue
        layout[name].append(line.strip())
    return layout


def expected(names, word_size):
    """The documented layout of these records on one word size."""
    place = compilers.WORD_SIZES.index(word_size)
    documented = by_record(this_build.golden_lines("records.txt"))
    choose = lambda word: word.split("/")[place] if "/" in word else word
    return {name: [" ".join(map(choose, line.split())) for line in documented[name]] for name in names if name in documented}


class Layouts(unittest.TestCase):
    """Measures both word sizes in every build."""

    maxDiff = None

    def measure_public(self, word_size):
        """Public records, by a C program."""
        source = measuring_program(PUBLIC, this_build.INCLUDE, records_of(PUBLIC))
        return measured("c", source, word_size, "-std=c99", "-I", this_build.INCLUDE)

    def measure_driver_side(self, word_size):
        """Driver-side records, by a C++ program."""
        root = this_build.SOURCE / "src"
        source = measuring_program(DRIVER_SIDE, root, records_of(DRIVER_SIDE), "using namespace vaskdfc;")
        return measured("c++", source, word_size, "-std=c++20", "-I", this_build.INCLUDE, "-I", root)

    def test_every_record_is_documented_and_every_documented_record_exists(self):
        documented = set(by_record(this_build.golden_lines("records.txt")))
        defined = set(records_of(PUBLIC + DRIVER_SIDE))
        complaints = [f"{name} is not in golden/records.txt: add its documented layout" for name in sorted(defined - documented)]
        complaints += [f"{name} is in golden/records.txt but in no header" for name in sorted(documented - defined)]
        if complaints:
            self.fail("\n" + "\n".join(complaints))

    def test_public_records_are_laid_out_as_documented(self):
        for word_size in compilers.WORD_SIZES:
            with self.subTest(word_size=word_size):
                self.assertEqual(self.measure_public(word_size), expected(records_of(PUBLIC), word_size))

    def test_driver_side_records_are_laid_out_as_documented(self):
        for word_size in compilers.WORD_SIZES:
            with self.subTest(word_size=word_size):
                self.assertEqual(self.measure_driver_side(word_size), expected(records_of(DRIVER_SIDE), word_size))

    def test_only_the_pointer_records_differ_between_the_word_sizes(self):
        layouts = [self.measure_public(size) | self.measure_driver_side(size) for size in compilers.WORD_SIZES]
        different = sorted(name for name in layouts[0] if layouts[0][name] != layouts[1][name])
        self.assertEqual(different, ["dfc_loopback", "dfc_mgmt_callback", "dfc_mgmt_signature"])
        self.assertEqual(different, sorted(name for header in PUBLIC for name in declarations.pointer_records(header)))


if __name__ == "__main__":
    this_build.main()
