"""What is shipped makes attacks on it hard: the files as they were built and as they are installed, and how they were compiled."""

import functools
import json
import pathlib
import re
import unittest

import compilers
import elf
import installation
import this_build

# The code of what is shipped, as far as the project's own compiler options reach.
SHIPPED_SOURCES = [this_build.SOURCE / folder for folder in ("src", "simulator", "tools", "cmake/fmt")]

# What an installation consists of, as it was built.
SHIPPED_FILES = (this_build.LIBRARY, this_build.PLATFORM_LIBRARY, this_build.TOOL)

PAGE = 0x1000
FRAME = re.compile(r"\bsub +\$0x([0-9a-f]{1,7}),%[er]sp")  # more digits are a negative number, which gives room back
PROBED_PAGE = re.compile(rf"\bsub +\$0x{PAGE:x},%[er]sp\n\s+(?:or|mov)[lq] +\$0x0,")


def segment_flags(file, kind):
    """What may be done with the memory of every segment of a kind: R, W, E or blanks."""
    return re.findall(rf"^\s*{kind}(?:\s+0x\w+){{5}}\s+([RWE ]+?)\s+0x", elf.readelf("--segments", file), re.MULTILINE)


@functools.cache
def assembly(file):
    """The machine code of a file in words."""
    return compilers.check_run("objdump", "--disassemble", "--no-show-raw-insn", "--no-addresses", file)


class EachFile(unittest.TestCase):
    """The libraries and the tool alike."""

    def for_each(self, judge):
        """Judges every shipped file, also after one was found wanting."""
        for file in SHIPPED_FILES:
            with self.subTest(file.name):
                judge(file)

    def test_is_bound_when_it_is_loaded_and_read_only_from_then_on(self):
        def judge(file):
            self.assertRegex(elf.readelf("--dynamic", file), r"\(FLAGS\)\s+BIND_NOW|\(FLAGS_1\)\s+Flags:.*\bNOW\b")
            self.assertIn("GNU_RELRO", elf.readelf("--segments", file))

        self.for_each(judge)

    def test_has_no_executable_stack(self):
        def judge(file):
            flags = segment_flags(file, "GNU_STACK")
            self.assertEqual(flags, ["RW"], "without a GNU_STACK segment the stack is executable")

        self.for_each(judge)

    def test_has_no_segment_that_is_both_writable_and_executable(self):
        def judge(file):
            flags = segment_flags(file, "LOAD")
            self.assertIn("R E", flags)
            self.assertEqual([each for each in flags if "W" in each and "E" in each], [])

        self.for_each(judge)

    def test_keeps_its_code_as_it_is_when_it_is_loaded(self):
        self.for_each(lambda file: self.assertNotIn("TEXTREL", elf.readelf("--dynamic", file)))

    def test_ends_the_process_when_a_frame_was_overrun(self):
        self.for_each(lambda file: self.assertIn("__stack_chk_fail", elf.imported_names(file)))

    def test_has_the_c_library_check_what_it_writes_into_buffers(self):
        self.for_each(lambda file: self.assertNotEqual([name for name in elf.imported_names(file) if name.endswith("_chk")], []))

    def test_touches_every_page_of_a_large_frame_in_turn(self):
        probed = sum(len(PROBED_PAGE.findall(assembly(file))) for file in SHIPPED_FILES)
        self.assertGreater(probed, 0, "there is no large frame to judge by")

        def judge(file):
            larger = [size for size in FRAME.findall(assembly(file)) if int(size, 16) > PAGE]
            self.assertEqual(larger, [], "a frame that is larger than a page can skip the page that ends the stack")

        self.for_each(judge)


class Tool(unittest.TestCase):
    """The program."""

    def test_is_loaded_at_another_address_each_time(self):
        self.assertRegex(elf.readelf("--file-header", this_build.TOOL), r"Type:\s+DYN\b")
        self.assertRegex(elf.readelf("--dynamic", this_build.TOOL), r"\(FLAGS_1\)\s+Flags:.*\bPIE\b")


class Installation(installation.InstalledTest):
    """What is found at run time must not depend on where it was built."""

    def test_names_no_folder_to_search_for_libraries(self):
        for built in SHIPPED_FILES:
            file = self.prefix / ("bin" if built == this_build.TOOL else this_build.INSTALLED_LIBRARIES) / built.name
            self.assertEqual([line for tag in ("RPATH", "RUNPATH") for line in elf.dynamic_entries(file, tag)], [], file.name)


class Compilation(unittest.TestCase):
    """What the files do not show of every function: the options of every shipped source."""

    def test_every_source_is_compiled_with_the_same_protection(self):
        commands = json.loads((this_build.BINARY / "compile_commands.json").read_text(encoding="utf-8"))
        shipped = [entry for entry in commands
                   if any(pathlib.Path(entry["file"]).is_relative_to(folder) for folder in SHIPPED_SOURCES)]
        self.assertNotEqual(shipped, [])
        for entry in shipped:
            for option in ("-fstack-protector-strong", "-fstack-clash-protection", "-D_FORTIFY_SOURCE=3"):
                self.assertIn(option, entry["command"].split(), entry["file"])


if __name__ == "__main__":
    this_build.main()
