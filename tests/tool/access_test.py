"""Raw access: memory, control registers, PCI configuration space."""

import tool

OLDER, NEWER = "3", "0"  # adapters of SLI mode 3 and 4


class AccessTest(tool.ToolTest):
    """A test with a state folder."""

    def setUp(self):
        super().setUp()
        self.state = {"VMKMGMT_SIM_STATE": self.folder / "state"}


class Memory(AccessTest):
    """Memory of an adapter of the older generation."""

    def test_what_is_written_is_read_back(self):
        document = self.json_of("mem-write", "mem", "write", OLDER, "0x100", "de", "ad", "beef", "--yes", **self.state)
        self.assertEqual(document["write"], {"adapter": 3, "sent": True, "verified": True})
        self.assertEqual(document["changes"], [{"field": "bytes_00000100", "old": "00 00 00 00", "new": "de ad be ef"}])
        lines = self.json_of("mem-read", "mem", "read", OLDER, "0xfe", "8", **self.state)["lines"]
        self.assertEqual(lines, [{"offset": "000000fe", "bytes": "00 00 de ad be ef 00 00", "text": "........"}])

    def test_files_go_in_and_come_out_whole_also_when_it_takes_several_calls(self):
        content = bytes(range(256)) * 16
        (self.folder / "in").write_bytes(content)
        self.assert_exit(tool.run("mem", "write", OLDER, "0x1000", "--file", self.folder / "in", "--yes", **self.state), 0)
        result, calls = self.traced("mem", "read", OLDER, "0x800", "10000", "--file", self.folder / "out",
                                    callback="TREL_MGMT_READ_MEM", **self.state)
        self.assert_exit(result, 0)
        self.assertEqual((self.folder / "out").read_bytes(), bytes(0x800) + content + bytes(10000 - 0x800 - 4096))
        self.assertEqual([(call["in"]["arg1"], call["in"]["arg2"]) for call in calls],
                         [(0x800, 4096), (0x1800, 4096), (0x2800, 1808)])

    def test_what_leaves_the_memory_is_a_failure(self):
        result = tool.run("mem", "read", OLDER, "262140", "8", "-o", "json")
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertEqual((error["operation"], error["result"], error["result_name"]), ("ReadMem", 22, "DFC_ACCESS_FAILED"))
        self.assertIn("0x0003fffc", error["message"])

    def test_the_newer_generation_does_not_offer_it(self):
        for words, number, name in ((["mem", "read", NEWER, "0"], 4, "DFC_ACCESS_NOT_SLI3"),
                                    (["mem", "write", NEWER, "0", "00"], 4, "DFC_ACCESS_NOT_SLI3"),
                                    (["reg", "read", NEWER], 2, "DFC_UNSUPPORTED"),
                                    (["reg", "write", NEWER, "0", "0"], 2, "DFC_UNSUPPORTED")):
            result = tool.run(*words, "-o", "json")
            self.assert_exit(result, 1)
            error, = tool.errors(result)
            self.assertEqual((error["result"], error["result_name"]), (number, name))
            self.assertIn("SLI mode 3 or below", error["hint"])

    def test_wrong_bytes_are_wrong_usage(self):
        (self.folder / "long").write_bytes(bytes(4097))
        (self.folder / "empty").write_bytes(b"")
        for words, part in ((["0"], "either BYTES or --file"), (["0", "abc"], '"abc"'), (["0", "zz"], '"zz"'),
                            (["0", "00", "--file", "x"], "either BYTES or --file"), (["x", "00"], "ADDRESS"),
                            (["0", "--file", self.folder / "long"], "4096 bytes"), (["0", "00" * 4097], "4096"),
                            (["0", "--file", self.folder / "empty"], "no bytes")):
            result, calls = self.traced("mem", "write", OLDER, *words, "--yes", callback="TREL_MGMT_WRITE_MEM")
            self.assert_exit(result, 2)
            self.assertIn(part, result.stderr)
            self.assertEqual(calls, [])


class Registers(AccessTest):
    """Control registers of an adapter of the older generation."""

    def test_the_known_ones_have_names(self):
        registers = self.json_of("reg-read", "reg", "read", OLDER)["registers"]
        self.assertEqual([(record["offset"], record["name"]) for record in registers],
                         [("0x00", "identity"), ("0x04", "status"), ("0x08", "control"), ("0x0c", "scratch")])
        self.assertEqual(registers[0]["value"], "0x56015a41")

    def test_what_is_written_is_read_back(self):
        document = self.json_of("reg-write", "reg", "write", OLDER, "0x0c", "0x12345678", "--yes", **self.state)
        self.assertEqual(document["write"]["verified"], True)
        register, = self.json_of("reg-read", "reg", "read", OLDER, "12", **self.state)["registers"]
        self.assertEqual(register["value"], "0x12345678")

    def test_bits_that_cannot_be_written_are_noticed(self):
        result = tool.run("reg", "write", OLDER, "8", "0xffffffff", "--yes", "-o", "json", **self.state)
        self.assert_exit(result, 1)
        self.assertEqual(tool.validated("reg-write", result.stdout)["write"]["verified"], False)
        error, = tool.errors(result)
        self.assertIn("holds something else than was written: Register 0x08 0x0000003f", error["message"])
        self.assertEqual((error["driver_status"], error["result"]), ("0x00000000", 0))

    def test_a_register_that_does_not_exist_is_a_failure(self):
        error, = tool.errors(tool.run("reg", "read", OLDER, "0x40", "-o", "json"))
        self.assertEqual((error["message"], error["result_name"]), ("the register at 0x40 cannot be read", "DFC_ACCESS_FAILED"))


class PciSpace(AccessTest):
    """PCI configuration space, which every adapter has."""

    def test_header_and_capabilities_are_decoded(self):
        document = self.json_of("pci-dump", "pci", "dump", "1")
        header = document["header"]
        self.assertEqual((header["vendor"], header["device"], header["class"]), ("0x5a41", "0x5603", "0x0c0400"))
        self.assertEqual(len(header["regions"]), 2)
        capabilities = {record["name"]: record for record in document["capabilities"]}
        self.assertEqual([(record["offset"], record["name"]) for record in document["capabilities"]],
                         [("0x040", "power management"), ("0x050", "MSI-X"), ("0x060", "PCI Express"),
                          ("0x100", "advanced error reporting"), ("0x140", "device serial number")])
        self.assertIn("32 vectors", capabilities["MSI-X"]["details"])
        self.assertIn("link of at most 8 lanes at 8 GT/s", capabilities["PCI Express"]["details"])
        self.assertEqual(capabilities["device serial number"]["details"], ["10:00:00:5a:41:56:03:10"])

    def test_lines_of_zeros_are_left_out_of_the_dump_and_in_the_file(self):
        document = self.json_of("pci-dump", "pci", "dump", "1", "--file", self.folder / "pci.bin")
        self.assertEqual(document["lines"], [])
        space = (self.folder / "pci.bin").read_bytes()
        self.assertEqual(len(space), 4096)
        lines = self.json_of("pci-dump", "pci", "dump", "1")["lines"]
        expected = [(f"{at:08x}", space[at:at + 16].hex(" ")) for at in range(0, 4096, 16) if any(space[at:at + 16])]
        self.assertEqual([(line["offset"], line["bytes"]) for line in lines], expected)

    def test_parts_are_read_in_words(self):
        document = self.json_of("pci-read", "pci", "read", "1", "0x100", "4")
        self.assertEqual(document["space"], {"adapter": 1, "offset": "0x100", "bytes": 4, "file": None})
        self.assertEqual(document["lines"][0]["bytes"][:5], "01 00")
        for words, part in ((["2"], "OFFSET"), (["0", "6"], "COUNT"), (["4100"], "OFFSET"), (["0", "4100"], "COUNT")):
            result, calls = self.traced("pci", "read", "1", *words, callback="TREL_MGMT_READ_PCI")
            self.assert_exit(result, 2)
            self.assertIn(part, result.stderr)
            self.assertEqual(calls, [])

    def test_what_is_written_is_read_back(self):
        word = self.json_of("pci-read", "pci", "read", "1", "0x3c", "4")["lines"][0]["bytes"].split()
        wanted = "0x" + "".join(reversed(["2a", *word[1:]]))
        document = self.json_of("pci-write", "pci", "write", "1", "0x3c", wanted, "--yes", **self.state)
        self.assertEqual(document["write"]["verified"], True)
        self.assertEqual([(change["field"], change["new"]) for change in document["changes"]], [("word_03c", wanted)])
        self.assertEqual(self.json_of("pci-dump", "pci", "dump", "1", **self.state)["header"]["interrupt_line"], 0x2A)

    def test_words_that_cannot_be_written_are_noticed(self):
        result = tool.run("pci", "write", "1", "0", "0", "--yes", "-o", "json")
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertIn("the driver accepted nothing, although the write was reported as done", error["message"])

    def test_failures_of_reads_and_writes_have_their_own_results(self):
        for callback, words, number, name in (("TREL_MGMT_READ_PCI", ["dump", "0"], 1, "DFC_FAILED"),
                                              ("TREL_MGMT_WRITE_PCI", ["write", "0", "0x3c", "0x12", "--yes"], 22,
                                               "DFC_ACCESS_FAILED")):
            path = self.scenario(tool.adapter(1), faults=[tool.fault(callback, driver_status="0x0BAD0205")])
            result = tool.run("pci", *words, "-o", "json", VMKMGMT_SIM_SCENARIO=path)
            self.assert_exit(result, 1)
            error, = tool.errors(result)
            self.assertEqual((error["result"], error["result_name"]), (number, name))

    def test_words_beyond_the_space_are_wrong_usage(self):
        result, calls = self.traced("pci", "write", "1", "4092", "0", "0", "--yes", callback="TREL_MGMT_WRITE_PCI")
        self.assert_exit(result, 2)
        self.assertEqual(calls, [])


if __name__ == "__main__":
    tool.main()
