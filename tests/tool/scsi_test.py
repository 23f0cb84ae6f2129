"""Commands to logical units: what they answer, what they refuse, and blocks on their way from and to files."""

import hashlib
import random

import tool

ARRAY = "50:5a:41:00:0c:00:10:01"
TAPE = "50:5a:41:00:0c:00:20:01"
SEND = "TREL_MGMT_HBA_SEND_SCSI"
READ_ONLY = 4
BLOCK = 512
MIB = 2**20


def checksum(content):
    """The SHA-256 of bytes."""
    return hashlib.sha256(content).hexdigest()


class Asking(tool.ToolTest):
    """What a unit says about itself."""

    def scsi(self, command, *arguments, **options):
        """The validated output of a command to the built-in array."""
        return self.json_of(f"scsi-{command}", "scsi", command, "0", ARRAY, *arguments, **options)

    def test_inquiry_tells_what_the_unit_is(self):
        self.assertEqual(self.scsi("inquiry", "0")["inquiry"],
                         {"device_type": "disk", "qualifier": 0, "removable": False, "version": 5, "vendor": "KESTAR",
                          "product": "VIRTUAL DISK", "revision": "0001"})
        self.assertEqual(self.scsi("inquiry", "99")["inquiry"]["qualifier"], 3)

    def test_pages_are_decoded(self):
        self.assertEqual(self.scsi("inquiry", "0", "--page", "0")["page"]["supported_pages"], ["0x00", "0x80", "0x83"])
        self.assertEqual(self.scsi("inquiry", "1", "--page", "0x80")["page"]["serial_number"], "505a41000c001000-1")
        designators = self.scsi("inquiry", "3", "--page", "0x83")["designators"]
        self.assertEqual([(record["type"], record["of"]) for record in designators][:2],
                         [("relative target port", "target port"), ("NAA", "logical unit")])

    def test_capacity_is_in_blocks_and_bytes(self):
        self.assertEqual(self.scsi("capacity", "1")["capacity"], {"blocks": 131072, "block_bytes": BLOCK, "bytes": 64 * MIB})

    def test_luns_are_those_of_the_target(self):
        self.assertEqual([record["lun"] for record in self.scsi("luns")["luns"]], ["0", "1", "2", "3", "4"])
        self.assertEqual(self.json_of("scsi-luns", "scsi", "luns", "0", TAPE)["luns"], [])

    def test_luns_are_asked_again_where_there_are_more_than_expected(self):
        port = tool.remote_port(0) | {"luns": [{"lun": 0, "count": 1024, "blocks": 8}]}
        path = self.scenario(tool.adapter(5), ports=[port])
        result, calls = self.traced("scsi", "luns", "0", port["wwpn"], "-o", "json", callback=SEND, VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual([record["lun"] for record in tool.validated("scsi-luns", result.stdout)["luns"]],
                         [str(lun) for lun in range(1024)])
        self.assertEqual([call["in"]["arg2"] for call in calls], [2048, 8 * 1024 + 8])

    def test_any_command_can_be_sent(self):
        data = self.scsi("raw", "0", "12", "00", "00", "00", "08", "00", "--read", "8", "--yes")["answer"]
        self.assertEqual((data["command"], data["data_bytes"], data["sense"]), ("12 00 00 00 08 00", 8, None))
        path = self.folder / "data.bin"
        self.scsi("raw", "0", "12", "00", "00", "00", "24", "00", "--read", "36", "--yes", "--file", path)
        self.assertEqual(path.read_bytes()[8:28], b"KESTAR  VIRTUAL DISK")

    def test_a_response_of_fcp_tells_what_moved(self):
        answer = self.json_of("fcp-raw", "fcp", "raw", "0", ARRAY, "0", *"12 00 00 00 60 00".split(), "--read", "200",
                              "--yes")["answer"]
        moved = answer["data_bytes"]
        self.assertEqual((answer["status"], answer["data_moved"], answer["residue"], answer["sense"]),
                         ("GOOD (00)", "less than announced", 200 - moved, None))

    def test_the_extra_word_of_fcp_reaches_the_driver(self):
        _, calls = self.traced("fcp", "raw", "0", ARRAY, "0", *["00"] * 6, "--extra", "0x77", "--yes",
                               callback="TREL_MGMT_HBA_SEND_FCP")
        self.assertEqual([call["in"]["arg7"] for call in calls], [0x77])


class Refusals(tool.ToolTest):
    """Sense data are decoded, and a refused command is a failure."""

    CASES = [
        (99, "00 00 00 00 00 00", "ILLEGAL REQUEST: logical unit not supported (5/25/00)", None),
        (0, "28 00 00 00 20 00 00 00 01 00", "ILLEGAL REQUEST: logical block address out of range (5/21/00)", 0x2000),
        (0, "a3 00 00 00 00 00", "ILLEGAL REQUEST: invalid command operation code (5/20/00)", None),
        (0, "12 01 ff 00 ff 00", "ILLEGAL REQUEST: invalid field in CDB (5/24/00)", None),
    ]

    def test_what_a_unit_refuses_is_told_over_both_transports(self):
        for transport in ("scsi", "fcp"):
            for lun, cdb, sense, information in self.CASES:
                with self.subTest(transport=transport, cdb=cdb):
                    result = tool.run(transport, "raw", "0", ARRAY, lun, *cdb.split(), "--read", "512", "--yes", "-o", "json")
                    self.assert_exit(result, 1)
                    answer = tool.validated(f"{transport}-raw", result.stdout)["answer"]
                    self.assertEqual((answer["sense"], answer["information"], answer["data_bytes"]), (sense, information, 0))
                    if transport == "fcp":
                        self.assertEqual(answer["status"], "CHECK CONDITION (02)")
                    error, = tool.errors(result)
                    self.assertTrue(error["message"].endswith(f"refused the command: {sense}"), error)

    def test_other_commands_fail_with_the_sense_too(self):
        error, = tool.errors(tool.run("scsi", "capacity", "0", ARRAY, "99", "-o", "json"))
        self.assertEqual(error["message"],
                         f"LUN 99 of {ARRAY} refused the command: ILLEGAL REQUEST: logical unit not supported (5/25/00)")

    def test_writes_to_a_protected_unit_are_refused(self):
        path = self.folder / "blocks"
        path.write_bytes(bytes(BLOCK))
        result = tool.run("scsi", "write", "0", ARRAY, READ_ONLY, "--file", path, "--yes", "-o", "json")
        self.assert_exit(result, 1)
        self.assertEqual(tool.errors(result)[0]["message"],
                         f"LUN 4 of {ARRAY} refused the command: DATA PROTECT: write protected (7/27/00) (after 0 of 1 blocks)")

    def test_blocks_that_are_not_there_are_not_sent(self):
        path = self.folder / "blocks"
        path.write_bytes(bytes(2 * BLOCK))
        for command in (["read", "--blocks", "2"], ["write", "--yes"]):
            name, *options = command
            result, calls = self.traced("scsi", name, "0", ARRAY, "0", "--file", path, "--block", "8191", *options, callback=SEND)
            self.assert_exit(result, 2)
            self.assertIn("LUN 0 has 8192 blocks", result.stderr)
            self.assertEqual(len(calls), 1, "the capacity alone is asked for")

    def test_an_unknown_target_is_told(self):
        result = tool.run("scsi", "inquiry", "0", "50:00:00:00:00:00:00:01", "0", "-o", "json")
        self.assert_exit(result, 1)
        self.assertEqual(tool.errors(result)[0]["driver_status"], "0x0bad0003")


class Blocks(tool.ToolTest):
    """Reading to files and writing from them."""

    def setUp(self):
        super().setUp()
        self.state = self.folder / "state"
        self.source = self.folder / "source"
        self.copy = self.folder / "copy"

    def scsi(self, command, adapter, lun, *options, **variables):
        """Moves blocks of the built-in array, whose content outlives the process."""
        path = self.source if command == "write" else self.copy
        return self.json_of(f"scsi-{command}", "scsi", command, adapter, ARRAY, lun, "--file", path, *options,
                            VMKMGMT_SIM_STATE=self.state, **variables)["transfer"]

    def test_what_was_written_is_read_on_both_generations(self):
        for adapter, sli_mode in ((0, 4), (3, 3)):
            with self.subTest(sli_mode=sli_mode):
                self.assertEqual(self.json_of("show", "show", adapter)["driver"]["sli_mode"], sli_mode)
                content = random.Random(adapter).randbytes(64 * MIB)
                self.source.write_bytes(content)
                transfer = self.scsi("write", adapter, 1, "--yes")
                self.assertEqual((transfer["blocks"], transfer["bytes"], transfer["done"]), (131072, 64 * MIB, True))
                self.scsi("read", adapter, 1, "--blocks", "131072")
                self.assertEqual(checksum(self.copy.read_bytes()), checksum(content))

    def test_blocks_in_the_middle_leave_the_others(self):
        self.source.write_bytes(b"m" * 3 * BLOCK)
        self.scsi("write", 0, 0, "--block", "5", "--yes")
        self.scsi("read", 0, 0, "--block", "4", "--blocks", "5")
        self.assertEqual(self.copy.read_bytes(), bytes(BLOCK) + b"m" * 3 * BLOCK + bytes(BLOCK))

    def test_a_write_asks_first(self):
        self.source.write_bytes(b"w" * BLOCK)
        for answer, code in ((b"n\n", 1), (b"y\n", 0)):
            result = self.answered(answer, "scsi", "write", "0", ARRAY, "0", "--file", self.source, VMKMGMT_SIM_STATE=self.state)
            self.assert_exit(result, code)
            self.assertIn(f"About to write 1 blocks from block 0 on over what LUN 0 of {ARRAY} holds. Go ahead? [y/N] ",
                          result.stderr)
            self.scsi("read", 0, 0)
            self.assertEqual(self.copy.read_bytes(), (b"w" if code == 0 else b"\0") * BLOCK)

    def test_a_dry_run_writes_nothing(self):
        self.source.write_bytes(b"w" * BLOCK)
        self.assertFalse(self.scsi("write", 0, 0, "--dry-run")["done"])
        self.scsi("read", 0, 0)
        self.assertEqual(self.copy.read_bytes(), bytes(BLOCK))

    def test_a_failure_halfway_says_how_far_it_came(self):
        path = self.altered_built_in(lambda scenario: scenario.update(
            faults=[tool.fault(SEND, call=3, times=1, driver_status="0x0BAD0004")]))
        result = tool.run("scsi", "read", "0", ARRAY, "1", "--blocks", "1024", "--file", self.copy, "-o", "json",
                          VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertTrue(tool.errors(result)[0]["message"].endswith("(after 512 of 1024 blocks)"), result.stderr)
        self.assertFalse(self.copy.exists())

    def test_a_unit_of_other_blocks_is_not_touched(self):
        path = self.altered_built_in(lambda scenario: scenario.update(faults=[tool.fault(SEND, garbage_seed=3)]))
        result, calls = self.traced("scsi", "read", "0", ARRAY, "1", "--file", self.copy, callback=SEND, VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        self.assertEqual(len(calls), 1)

    def test_people_see_how_far_it_is(self):
        path = self.altered_built_in(lambda scenario: scenario.update(faults=[tool.fault(SEND, delay_ms=120)]))
        _, shown = self.on_terminal("scsi", "read", "0", ARRAY, "1", "--blocks", "1024", "--file", self.copy,
                                    VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual([line.split()[-1] for line in shown.split("\r\x1b[K") if line], ["0/1024", "512/1024"])


if __name__ == "__main__":
    tool.main()
