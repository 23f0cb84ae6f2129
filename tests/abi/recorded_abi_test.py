"""The interface is the one that applications were built against; and the comparison notices whatever would break them."""

import pathlib
import sys
import tempfile
import unittest
import xml.etree.ElementTree

import compilers
import declarations
import this_build

SCRIPT = this_build.SOURCE / "scripts/abi.py"
sys.path.insert(0, str(SCRIPT.parent))

import abi  # pylint: disable=wrong-import-position

RECORD = this_build.GOLDEN / f"libvaskdfc-{this_build.NAME}.abi"


class Library(unittest.TestCase):
    """The built library and its record."""

    def test_has_the_interface_that_was_recorded(self):
        complaint = abi.complaint(RECORD, this_build.LIBRARY)
        self.assertFalse(complaint, complaint)

    def test_the_record_knows_every_exported_name_and_only_records_that_the_public_headers_declare(self):
        corpus = xml.etree.ElementTree.parse(RECORD)
        self.assertEqual(sorted(symbol.get("name") for symbol in corpus.iter("elf-symbol")),
                         sorted(declarations.exported_by_map(this_build.SOURCE / "src/libvaskdfc.map")))
        public = {name for header in this_build.INCLUDE.rglob("*.h") for name in declarations.records(header)}
        self.assertEqual({record.get("name") for record in corpus.iter("class-decl")} - public, set())

    def test_the_record_holds_nothing_of_the_machine_that_it_was_made_on(self):
        text = RECORD.read_text(encoding="utf-8")
        self.assertNotIn(str(this_build.SOURCE), text)
        self.assertNotRegex(text, "='/|filepath=|line=")


# A library of few operations, whose changes stand for those of the real one.
SOURCE = """\
#include <stdint.h>
typedef struct lamp { uint32_t colour; uint32_t hours[2]; } lamp;
struct wiring { uint32_t length; };
static uint32_t length_of(const struct wiring* wiring) { return wiring->length; }
uint32_t LampCount;
uint32_t GetLamp(uint32_t board, lamp* found) { found->colour = board; return 0; }
uint32_t SetLamp(uint32_t board, const lamp* wanted) { struct wiring wiring = {board}; return wanted->colour + length_of(&wiring); }
"""
TAKE_BACK = abi.TAKE_BACK.format(soname="liblamp.so.11")


class SmallLibrary(unittest.TestCase):
    """The small library with its record, in a folder of its own."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.record = cls.folder / "lamp.abi"
        cls.record.write_text(abi.described(cls.built(SOURCE)), encoding="utf-8")

    @classmethod
    def built(cls, source, *options):
        """A library of this source."""
        library = cls.folder / "liblamp.so"
        compilers.check_run(this_build.C_COMPILER, f"-m{this_build.WORD_SIZE}", "-g", "-fPIC", "-shared",
                            "-Wl,-soname,liblamp.so.11", *options, "-o", library, "-xc", "-", input=source)
        return library

    def changed(self, before, after):
        """The library with one piece of its source replaced."""
        self.assertIn(before, SOURCE)
        return self.built(SOURCE.replace(before, after))


class Comparison(SmallLibrary):
    """Each test changes the small library in one place and reads what the comparison says first."""

    def assert_complaint(self, library, *sentences):
        """The comparison begins with these sentences and has more to say."""
        self.assertEqual(abi.complaint(self.record, library).splitlines()[:len(sentences)], list(sentences))

    def test_nothing_changed(self):
        self.assertEqual(abi.complaint(self.record, self.built(SOURCE)), "")

    def test_what_no_application_sees_may_change(self):
        self.assertEqual(abi.complaint(self.record, self.changed("uint32_t length; }", "uint32_t length, width; }")), "")

    def test_a_record_that_grew_breaks_applications(self):
        self.assert_complaint(self.changed("hours[2]", "hours[3]"), "struct lamp grew from 12 to 16 bytes.", TAKE_BACK)

    def test_a_record_that_shrank_breaks_applications(self):
        self.assert_complaint(self.changed("hours[2]", "hours[1]"), "struct lamp shrank from 12 to 8 bytes.", TAKE_BACK)

    def test_a_record_of_the_same_size_with_other_fields_breaks_applications(self):
        self.assert_complaint(self.changed("uint32_t colour; uint32_t hours[2]", "uint32_t hours[2]; uint32_t colour"),
                              "struct lamp has other fields.", TAKE_BACK)

    def test_a_lost_function_breaks_applications(self):
        library = self.changed("uint32_t GetLamp", "static __attribute__((unused)) uint32_t GetLamp")
        self.assert_complaint(library, "GetLamp is lost.", TAKE_BACK)

    def test_a_lost_variable_breaks_applications(self):
        self.assert_complaint(self.changed("uint32_t LampCount;\n", ""), "LampCount is lost.", TAKE_BACK)

    def test_another_parameter_type_breaks_applications(self):
        self.assert_complaint(self.changed("GetLamp(uint32_t board", "GetLamp(uint16_t board"),
                              "function uint32_t GetLamp(uint32_t, lamp*) has other types.", TAKE_BACK)

    def test_another_result_type_breaks_applications(self):
        self.assert_complaint(self.changed("uint32_t SetLamp", "uint8_t SetLamp"),
                              "function uint32_t SetLamp(uint32_t, const lamp*) has other types.", TAKE_BACK)

    def test_another_type_of_a_variable_breaks_applications(self):
        self.assert_complaint(self.changed("uint32_t LampCount", "int32_t LampCount"),
                              "uint32_t LampCount has other types.", TAKE_BACK)

    def test_another_name_of_the_library_breaks_applications(self):
        self.assert_complaint(self.built(SOURCE, "-Wl,-soname,liblamp.so.12"),
                              "the library is called liblamp.so.12, no longer liblamp.so.11.", TAKE_BACK)

    def test_an_addition_wants_to_be_recorded(self):
        self.assert_complaint(self.built(SOURCE + "uint32_t CountLamps(void) { return LampCount; }\n"),
                              "CountLamps was added.", abi.ADD)

    def test_an_addition_does_not_excuse_a_loss(self):
        self.assert_complaint(self.changed("uint32_t LampCount;\n", "uint32_t LampsLit;\n"),
                              "LampCount is lost; LampsLit was added.", TAKE_BACK)

    def test_a_library_without_debug_information_is_refused(self):
        with self.assertRaisesRegex(abi.Unusable, "without full debug information about GetLamp, LampCount, SetLamp$"):
            abi.complaint(self.record, self.built(SOURCE, "-g0"))


class Nodes(SmallLibrary):
    """The comparison of a library whose names belong to nodes."""

    @classmethod
    def with_nodes(cls, script, source=SOURCE):
        """A library whose exported names the linker's version script distributes."""
        (cls.folder / "lamp.map").write_text(script, encoding="utf-8")
        return cls.built(source, f"-Wl,--version-script={cls.folder / 'lamp.map'}")

    def setUp(self):
        self.record.write_text(abi.described(self.with_nodes("LAMP_11 { global: *Lamp*; };\n")), encoding="utf-8")

    def assert_complaint(self, script, *sentences, source=SOURCE):
        """The comparison begins with these sentences."""
        said = abi.complaint(self.record, self.with_nodes(script, source)).splitlines()
        self.assertEqual(said[:len(sentences)], list(sentences))

    def test_a_name_that_left_its_node_breaks_applications(self):
        self.assert_complaint("LAMP_11 { global: GetLamp; LampCount; local: *; };\nLAMP_11_5 { global: SetLamp; } LAMP_11;\n",
                              "SetLamp of LAMP_11 is lost.", TAKE_BACK)

    def test_a_new_name_in_a_node_of_its_own_wants_to_be_recorded(self):
        self.assert_complaint("LAMP_11 { global: *Lamp*; };\nLAMP_11_5 { global: Flash; } LAMP_11;\n",
                              "Flash of LAMP_11_5 was added.", abi.ADD,
                              source=SOURCE + "uint32_t Flash(void) { return LampCount; }\n")


class Recording(SmallLibrary):
    """What the script does to a record."""

    def record_anew(self, library):
        """Runs the script as ./dev does, on a copy of the record; returns exit code, standard error and the new record."""
        copy = self.folder / "copy.abi"
        copy.write_bytes(self.record.read_bytes())
        done = compilers.run(sys.executable, "-B", SCRIPT, "--record", library, copy)
        return done.returncode, done.stderr, copy

    def test_an_addition_is_recorded(self):
        library = self.built(SOURCE + "uint32_t CountLamps(void) { return LampCount; }\n")
        code, said, copy = self.record_anew(library)
        self.assertEqual((code, said), (0, ""))
        self.assertEqual(abi.complaint(copy, library), "")

    def test_a_loss_is_not_recorded(self):
        code, said, copy = self.record_anew(self.changed("uint32_t LampCount;\n", ""))
        self.assertEqual((code, said.splitlines()[:2]), (1, ["LampCount is lost.", TAKE_BACK]))
        self.assertEqual(copy.read_bytes(), self.record.read_bytes())


if __name__ == "__main__":
    this_build.main()
