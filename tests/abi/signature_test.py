"""What the library tells the platform about its interface, byte for byte, and that an executable's own platform functions win."""

import struct
import unittest

import compilers
import this_build

HEADER_BYTES = 48
DIRECTIONS = {"in": 0, "out": 1, "in/out": 2}
NATIVE_DESCRIPTOR = {32: "<II BBxx 4I 4I Q", 64: "<I4xQ BBxx 4I 4I 4xQ"}


def documented_descriptors():
    """The descriptors of golden/callbacks.txt in the layout of this build's word size, as hexadecimal text."""
    descriptors = []
    for position, line in enumerate(this_build.golden_lines("callbacks.txt")):
        words = line.split()
        if int(words[0]) != position:
            raise AssertionError(f"callbacks.txt: position {words[0]} follows position {position - 1}")
        sizes = [HEADER_BYTES, *map(int, words[2::2])]
        usages = [DIRECTIONS["in/out"], *(DIRECTIONS[word] for word in words[3::2])]
        absent = [0] * (4 - len(sizes))
        packed = struct.pack(NATIVE_DESCRIPTOR[this_build.WORD_SIZE], 1, 0, 1, len(sizes), *sizes, *absent, *usages, *absent,
                             int(words[1]))
        descriptors.append(packed.hex())
    return descriptors


def without_blanks(lines):
    """Hexadecimal texts as a program prints them."""
    return [line.replace(" ", "") for line in lines]


class Recording:
    """What recording_platform printed, sorted by kind."""

    def __init__(self, *arguments):
        self.lines = compilers.check_run(this_build.RECORDING_PLATFORM, *arguments).splitlines()

    def of(self, kind):
        """What follows one first word, in order."""
        return [line.split(" ", 1)[1] for line in self.lines if line.split(" ", 1)[0] == kind]


class Signature(unittest.TestCase):
    """The primary interface is tried first, the fallback only if the primary is refused."""

    maxDiff = None

    def setUp(self):
        self.signatures = without_blanks(this_build.golden_lines("signatures.txt"))
        self.descriptors = documented_descriptors()
        self.assertEqual(len(self.descriptors), 77)

    def test_the_primary_interface_is_described_as_documented(self):
        recording = Recording()
        self.assertEqual(recording.of("signature"), self.signatures[:1])
        self.assertEqual(recording.of("descriptor"), self.descriptors)
        self.assertEqual(recording.of("open"), ["cookie 0"])

    def test_the_fallback_interface_is_described_with_the_same_table(self):
        recording = Recording("1")
        self.assertEqual(recording.of("signature"), self.signatures)
        self.assertEqual(recording.of("descriptor"), self.descriptors * 2)
        self.assertEqual(len(set(recording.of("table"))), 1)

    def test_there_is_no_third_interface(self):
        recording = Recording("2")
        self.assertEqual(recording.of("signature"), self.signatures)
        self.assertEqual(recording.of("boards"), ["0"])
        self.assertEqual(recording.of("invoke") + recording.of("destroy"), [])

    @unittest.skipUnless(this_build.WORD_SIZE == 32, "the documented bytes are those of 32-bit systems")
    def test_the_documented_bytes_are_the_ones_handed_over(self):
        self.assertEqual(Recording().of("descriptor"), without_blanks(this_build.golden_lines("descriptors_i386.txt")))


class Precedence(unittest.TestCase):
    """Every platform call of the library reaches the executable."""

    def test_opening_probing_and_closing_reach_the_executable(self):
        recording = Recording()
        probes = [f"granted instance 0 callback 122 parameters 2 board {board}" for board in range(32)]
        self.assertEqual(recording.of("invoke"), probes)
        self.assertEqual(recording.of("destroy"), ["granted"])
        self.assertEqual(recording.of("boards") + recording.of("free"), ["0", "0"])


if __name__ == "__main__":
    this_build.main()
