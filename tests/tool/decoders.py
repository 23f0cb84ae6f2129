"""The tool's decoders and those of sg3-utils make the same of the same bytes."""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

program = sys.argv[1]
SENSE_NAMES = pathlib.Path(sys.argv[2])
TOOL = sys.argv[3]

# Identifiers as they stand in a device identification page, behind code set, type and length.
NAA_6 = "01030010 605a41000c0010000000000000000002"
NAA_5 = "01030008 505a41000c001001"
EUI = "01020008 005a41000c001001"
EUI_16 = "01020010 005a41000c0010010000000000000001"
T10 = "02010014" + b"KESTAR  505a41000c-7".hex()
SCSI_NAME = "03080014" + b"naa.505a41000c001001".hex()
RELATIVE_PORT = "01140004 00000002"
PORT_GROUP = "01150004 00000103"
UNIT_GROUP = "01060004 00000005"
PORT_NAME = "61930008 505a41000c001001"


def ours(what, digits):
    """What the tool's decoders say, a fact a line."""
    return subprocess.run([program, what, digits.replace(" ", "")], capture_output=True, text=True, check=True).stdout.splitlines()


def others(tool, *arguments):
    """What a decoder of sg3-utils says."""
    return subprocess.run([tool, *arguments], capture_output=True, text=True, check=True).stdout


def others_of_file(tool, *arguments, digits):
    """The same for one that reads bytes from a file."""
    with tempfile.NamedTemporaryFile("w", suffix=".hex") as file:
        file.write(bytes.fromhex(digits).hex(" ") + "\n")
        file.flush()
        return others(tool, f"--inhex={file.name}", *arguments)


def facts(lines):
    """Lines as keys and values."""
    return dict(line.split(": ", 1) for line in lines)


def page(*designators):
    """A device identification page."""
    body = bytes.fromhex("".join(designators))
    return (b"\0\x83" + len(body).to_bytes(2, "big") + body).hex()


class Sense(unittest.TestCase):
    """Sense data of both forms."""

    @staticmethod
    def fixed(key, code, qualifier, information=None):
        """Sense data of the fixed form."""
        sense = bytearray(18)
        sense[0], sense[2], sense[7], sense[12], sense[13] = 0x70, key, 10, code, qualifier
        if information is not None:
            sense[0] |= 0x80
            sense[3:7] = information.to_bytes(4, "big")
        return sense.hex()

    def assert_same(self, digits):
        """Both name the same key and the same additional sense."""
        found = facts(ours("sense", digits))
        other = others("sg_decode_sense", *bytes.fromhex(digits).hex(" ").split()).lower()
        self.assertIn(f"sense key: {found['sense_key']}".lower(), other)
        name = re.fullmatch(r".*?: (.*) \(.*\)", found["sense"])
        self.assertIn(f"additional sense: {name[1]}".lower(), other, found["sense"])
        return found, other

    def test_every_additional_sense_that_the_tool_knows_has_its_name(self):
        entries = re.findall(r'AdditionalSense\{(0x..), (0x..), "', SENSE_NAMES.read_text(encoding="utf-8"))
        self.assertGreater(len(entries), 20)
        for code, qualifier in entries:
            with self.subTest(code=code, qualifier=qualifier):
                self.assert_same(self.fixed(5, int(code, 16), int(qualifier, 16)))

    def test_every_sense_key_has_its_name(self):
        for key in range(16):
            with self.subTest(key=key):
                found = facts(ours("sense", self.fixed(key, 0x20, 0)))
                other = others("sg_decode_sense", *bytes.fromhex(self.fixed(key, 0x20, 0)).hex(" ").split())
                self.assertIn(f"sense key: {found['sense_key']}".lower(), other.lower())

    def test_information_is_the_same_number(self):
        found, other = self.assert_same(self.fixed(5, 0x21, 0, 0x2000))
        self.assertEqual(int(found["information"]), 0x2000)
        self.assertIn("info fld=0x2000", other)

    def test_the_descriptor_form_says_the_same(self):
        found, other = self.assert_same("72031100 0000000c 000a8000 0000000000001234")
        self.assertEqual(int(found["information"]), 0x1234)
        self.assertIn("0000000000001234", other.replace(" ", "").replace("0x", ""))

    def test_deferred_errors_are_told_from_current_ones(self):
        for response, deferred in (("70", False), ("71", True)):
            digits = response + self.fixed(6, 0x29, 0)[2:]
            found, other = self.assert_same(digits)
            self.assertEqual((found["sense"].startswith("deferred "), "deferred" in other), (deferred, deferred))


class Inquiry(unittest.TestCase):
    """Standard data and the device identification page."""

    @staticmethod
    def standard(first=0, removable=0, version=5):
        """Standard data of 36 bytes."""
        return (bytes([first, removable, version, 0x12, 31, 0, 0, 0]) + b"KESTAR  VIRTUAL DISK    0001").hex()

    def test_standard_data_say_the_same(self):
        for qualifier in range(4):
            for device_type, version, removable in ((0x00, 5, 0), (0x01, 3, 0x80), (0x0C, 6, 0), (0x1F, 4, 0)):
                digits = self.standard(qualifier << 5 | device_type, removable, version)
                with self.subTest(digits):
                    found = facts(ours("inquiry", digits))
                    other = others_of_file("sg_inq", digits=digits)
                    self.assertIn(f"PQual={found['qualifier']}  PDT={device_type}  RMB={int(found['removable'] == 'yes')} ", other)
                    self.assertIn(f"version=0x{int(found['version']):02x}", other)
                    for field, title in (("vendor", "Vendor identification"), ("product", "Product identification"),
                                         ("revision", "Product revision level")):
                        self.assertRegex(other, rf"{title}: {found[field]} *\n")

    def test_device_types_have_the_same_names(self):
        for device_type, name in ((0x00, "disk"), (0x01, "tape"), (0x05, "cd/dvd"), (0x08, "medium changer"),
                                  (0x0C, "storage array controller"), (0x0D, "enclosure services")):
            digits = self.standard(device_type)
            self.assertEqual(facts(ours("inquiry", digits))["device_type"].lower(), name)
            self.assertIn(name, others_of_file("sg_inq", digits=digits).lower())

    def test_designators_are_of_the_same_things_with_the_same_identifiers(self):
        cases = [(NAA_6, "designator type: NAA", "[0x605a41000c0010000000000000000002]", "naa."),
                 (NAA_5, "designator type: NAA", "[0x505a41000c001001]", "naa."),
                 (EUI, "designator type: EUI-64 based", "0x005a41000c001001", "eui."),
                 (EUI_16, "designator type: EUI-64 based", "0x005a41000c0010010000000000000001", "eui."),
                 (SCSI_NAME, "designator type: SCSI name string", "naa.505a41000c001001", ""),
                 (RELATIVE_PORT, "Relative target port: 0x2", "0x2", ""),
                 (PORT_GROUP, "Target port group: 0x103", "0x103", ""),
                 (UNIT_GROUP, "Logical unit group: 0x5", "0x5", ""),
                 (PORT_NAME, "designator type: NAA", "[0x505a41000c001001]", "naa.")]
        associations = {"logical unit": "Addressed logical unit:", "target port": "Target port:",
                        "target device": "Target device that contains addressed lu:"}
        for designator, kind, identifier, prefix in cases:
            with self.subTest(designator):
                digits = page(designator.replace(" ", ""))
                (association, _, text), = (line.split(": ") for line in ours("designators", digits))
                other = others_of_file("sg_vpd", "--long", "--page=0x83", digits=digits)
                short = others_of_file("sg_vpd", "--quiet", "--page=0x83", digits=digits)
                self.assertIn(associations[association], other)
                self.assertIn(kind, other)
                self.assertIn(identifier, other + short)
                wanted = identifier.strip("[]").removeprefix("0x")
                self.assertEqual(text.removeprefix(prefix), wanted if prefix or "." in wanted else str(int(wanted, 16)))

    def test_a_t10_identifier_has_vendor_and_what_it_says(self):
        (_, kind, text), = (line.split(": ") for line in ours("designators", page(T10)))
        other = others_of_file("sg_vpd", "--long", "--page=0x83", digits=page(T10))
        vendor, specific = re.search(r"vendor id: (.{8})\n +vendor specific: (\S+)", other).groups()
        self.assertEqual((kind, text), ("T10", f"t10.{vendor}{specific}"))

    def test_pages_that_end_too_early_show_what_is_whole(self):
        digits = page(NAA_5.replace(" ", ""), EUI.replace(" ", ""))
        self.assertEqual(len(ours("designators", digits)), 2)
        self.assertEqual([line.split(": ")[1] for line in ours("designators", digits[:-2])], ["NAA"])


class Luns(unittest.TestCase):
    """LUNs in the addressing methods of one level."""

    def test_numbers_are_the_same(self):
        for lun in ("0000000000000000", "0005000000000000", "00ff000000000000", "4100000000000000", "412c000000000000",
                    "7fff000000000000"):
            other = others("sg_luns", f"--test={lun}")
            self.assertEqual(ours("lun", lun), [re.search(r"lun=(\d+)", other)[1]], other)

    def test_what_is_no_number_stays_as_it_is(self):
        for lun in ("4005000000000000", "c101000000000000", "4100000100000000"):
            self.assertEqual(ours("lun", lun), [f"0x{lun}"])


class Units(unittest.TestCase):
    """What the tool shows of simulated units, decoded and as bytes."""

    @staticmethod
    def scsi(command, *arguments):
        """What a command to the first array of the built-in scenario shows."""
        variables = {name: value for name, value in os.environ.items() if not name.startswith("VMKMGMT_SIM_")}
        command_line = [TOOL, "scsi", command, "0", "50:5a:41:00:0c:00:10:01", *map(str, arguments), "-o", "json"]
        return json.loads(subprocess.run(command_line, env=variables, capture_output=True, text=True, check=False).stdout)

    def test_identifiers_are_those_of_the_page(self):
        for lun in range(5):
            document = self.scsi("inquiry", lun, "--page", "0x83")
            other = others_of_file("sg_vpd", "--long", "--page=0x83", digits=document["page"]["bytes"])
            self.assertGreater(len(document["designators"]), 1)
            for designator in document["designators"]:
                kind, identifier = designator["type"], designator["identifier"]
                with self.subTest(lun=lun, kind=kind):
                    if kind == "NAA":
                        self.assertIn(f"[0x{identifier.removeprefix('naa.')}]", other)
                    elif kind == "T10":
                        self.assertIn(f"vendor id: {identifier[4:12]}\n      vendor specific: {identifier[12:]}\n", other)
                    else:
                        self.assertIn(f"Relative target port: 0x{int(identifier):x}\n", other)

    def test_luns_have_the_same_numbers(self):
        luns = self.scsi("luns")["luns"]
        self.assertEqual(len(luns), 5)
        for record in luns:
            other = others("sg_luns", f"--test={record['bytes'].replace(' ', '')}")
            self.assertIn(f"lun={record['lun']}\n", other)

    def test_refusals_have_the_same_reasons(self):
        for lun, cdb in ((99, "00 00 00 00 00 00"), (0, "28 00 00 00 20 00 00 00 01 00"), (0, "a3 00 00 00 00 00"),
                         (0, "12 01 ff 00 ff 00"), (4, "2a 00 00 00 00 00 00 00 01 00")):
            with self.subTest(cdb):
                answer = self.scsi("raw", lun, *cdb.split(), "--read", "512", "--yes")["answer"]
                other = others("sg_decode_sense", *answer["sense_bytes"].split()).lower()
                key, name = re.fullmatch(r"(.*): (.*) \(.*\)", answer["sense"]).groups()
                self.assertIn(f"sense key: {key}".lower(), other)
                self.assertIn(f"additional sense: {name}".lower(), other)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
