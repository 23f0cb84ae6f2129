"""Configuration regions: listed, dumped, shown, initialised and written."""

import images
import tool

DUMP = "TREL_MGMT_HBA_ISSUE_DMP_MBX"
UPDATE = "TREL_MGMT_HBA_ISSUE_UPD_MBX"
MAILBOX = "TREL_MGMT_MBOX"
NOT_SUPPORTED = "0x0BAD0020"


class RegionTest(tool.ToolTest):
    """A test with one FCoE adapter of the newer generation, and one of the older, that have these regions."""

    def regions(self, *regions, faults=()):
        """The scenario's path."""
        adapters = [tool.adapter(5, protocol="fcoe", device="0x5602", regions=list(regions)),
                    tool.adapter(7, sli_mode=3, regions=list(regions))]
        return self.scenario(*adapters, faults=faults)

    def shown(self, image, number=23, adapter="0"):
        """What `region show` says of an image."""
        path = self.regions(images.scenario_region(number, image))
        return self.json_of("region-show", "region", "show", adapter, number, VMKMGMT_SIM_SCENARIO=path)


class Reading(RegionTest):
    """Regions as they are."""

    def test_the_list_tells_regions_that_are_there_from_those_that_are_not(self):
        path = self.regions(images.of_region23(), {"region": 22, "missing": "0xFFF7"})
        regions = self.json_of("region-list", "region", "list", "0", VMKMGMT_SIM_SCENARIO=path)["regions"]
        states = {record["region"]: (record["size"], record["state"], record["shown"], record["writable"]) for record in regions}
        self.assertEqual(states[23], (1024, "present", True, True))
        self.assertEqual(states[22], (512, "missing", True, True))
        self.assertEqual(states[14], (1000, "missing", False, True))
        self.assertEqual(states[160], (4096, "missing", False, False))
        self.assertEqual(len(states), 18)
        regions = self.json_of("region-list", "region", "list", "1", VMKMGMT_SIM_SCENARIO=path)["regions"]
        self.assertEqual([(record["region"], record["size"], record["state"]) for record in regions],
                         [(22, 512, "missing"), (23, 1024, "present")])

    def test_a_region_that_cannot_be_read_does_not_end_the_list(self):
        path = self.regions(images.of_region23(), faults=[tool.fault(DUMP, driver_status=NOT_SUPPORTED, call=2, times=1)])
        result = tool.run("region", "list", "0", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        regions = tool.validated("region-list", result.stdout)["regions"]
        self.assertEqual([record["region"] for record in regions if record["state"] == "unreadable"], [4])
        self.assertEqual([record["region"] for record in regions if record["state"] == "present"], [23])
        error, = tool.errors(result)
        self.assertEqual((error["message"], error["operation"], error["driver_status"], error["result_name"]),
                         ("region 4 cannot be read", "DFC_IssueDumpMBox", NOT_SUPPORTED.lower(), "DFC_FAILED"))

    def test_a_dump_shows_every_byte(self):
        image = bytes(range(256)) * 4
        path = self.regions(images.scenario_region(23, image))
        for adapter in ("0", "1"):
            document = self.json_of("region-dump", "region", "dump", adapter, "23", VMKMGMT_SIM_SCENARIO=path)
            self.assertEqual(document["region"]["bytes"], 1024)
            self.assertEqual(bytes.fromhex("".join(line["bytes"] for line in document["lines"])), image)
            self.assertEqual(document["lines"][4],
                             {"offset": "00000040", "bytes": image[64:80].hex(" "), "text": "@ABCDEFGHIJKLMNO"})
            self.assertEqual(document["lines"][1]["text"], "." * 16)

    def test_a_dump_to_a_file_is_whole_or_not_there(self):
        image = images.region23(vlan=7)
        path = self.regions(images.scenario_region(23, image))
        target = self.folder / "region23.bin"
        target.write_bytes(b"before")
        document = self.json_of("region-dump", "region", "dump", "0", "23", "-f", target, VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual((document["region"]["file"], document["lines"]), (str(target), []))
        self.assertEqual(target.read_bytes(), image)

        occupied = self.folder / "occupied"
        occupied.mkdir()
        for wrong in (occupied, self.folder / "nowhere/region23.bin"):
            before = sorted(self.folder.rglob("*"))
            result = tool.run("region", "dump", "0", "23", "-f", wrong, "-o", "json", VMKMGMT_SIM_SCENARIO=path)
            self.assert_exit(result, 1)
            self.assertEqual((result.stdout, sorted(self.folder.rglob("*"))), ("", before))
            self.assertIn("cannot be written", tool.errors(result)[0]["message"])

        self.assert_exit(tool.run("region", "dump", "0", "22", "-f", target, VMKMGMT_SIM_SCENARIO=path), 1)
        self.assertEqual(target.read_bytes(), image, "a region that is missing leaves the file alone")

    def test_regions_that_cannot_be_read_are_named_with_the_reason(self):
        path = self.regions(*({"region": region, "missing": code} for region, code in ((22, "0xFFF7"), (23, "0xFFF6"))))
        cases = [("0", "14", "region 14 is missing", "DFC_IssueDumpMBox", "DFC_DUMP_COMPLETED_FFFD"),
                 ("0", "22", "region 22 is missing", "DFC_IssueDumpMBox", "DFC_DUMP_COMPLETED_FFF7"),
                 ("0", "23", "region 23 is missing", "DFC_IssueDumpMBox", "DFC_DUMP_COMPLETED_FFF6"),
                 ("0", "31", "region 31 cannot be read", "DFC_IssueDumpMBox", "DFC_DUMP_UNKNOWN_REGION"),
                 ("1", "22", "region 22 is missing", "LEG_IssueDumpMBox", "DFC_DUMP_COMPLETED_FFF7"),
                 ("1", "14", "region 14 cannot be read from an adapter of this generation", None, None)]
        for adapter, region, message, operation, name in cases:
            with self.subTest(adapter=adapter, region=region):
                result = tool.run("region", "dump", adapter, region, "-o", "json", VMKMGMT_SIM_SCENARIO=path)
                self.assert_exit(result, 1)
                error, = tool.errors(result)
                self.assertEqual((error["message"], error["operation"], error["result_name"]), (message, operation, name))

    def test_region_23_is_shown_record_by_record(self):
        for adapter in ("0", "1"):
            document = self.shown(images.region23(vlan=1002, connect=[(7, 5), (8, 0)], down=True), adapter=adapter)
            self.assertEqual(document["image"], {"adapter": int(adapter), "region": 23, "bytes": 1024, "signature": "RG23",
                                                 "version": 1, "used": True, "problem": None})
            parameters, connect, link = document["records"]
            self.assertEqual(parameters, {"offset": 8, "type": "0xa0", "name": "FCoE parameters", "length": 8, "flags": "01 01",
                                          "fields": ["FC-MAP 0e:fc:00", "VLAN 1002"]})
            self.assertEqual((connect["offset"], connect["type"], connect["length"]), (20, "0xa1", 320))
            self.assertEqual(connect["fields"], ["1 of 16 entries in use", "VLAN 7, names 20:00:00:11:22:33:44:55 "
                                                 "10:00:00:11:22:33:44:55, flags 0x05"])
            self.assertEqual((link["offset"], link["flags"], link["fields"]), (344, "20 00", ["the link stays down"]))

    def test_an_image_of_region_23_that_is_not_valid_says_why(self):
        unknown = images.record(0x42, b"unknown!")
        broken = b"RG23\1\0\0\0" + images.fcoe_record() + b"\xa1\xff" + bytes(982) + b"\xa2\xff\0\0"
        cases = [(images.chain(signature=b"RG22"), "the signature is not RG23", 0, False),
                 (images.chain(version=2), "the version is not 1", 0, False),
                 (images.chain(unknown), None, 1, False),
                 (broken, "the record at offset 20 is longer than the image", 1, False)]
        for image, problem, records, used in cases:
            with self.subTest(problem):
                document = self.shown(image)
                self.assertIn(problem or "", document["image"]["problem"] or "")
                self.assertEqual(document["image"]["problem"] is None, problem is None)
                self.assertEqual(len(document["records"]), records)
                self.assertEqual(document["image"]["used"], used)
        record, = self.shown(images.chain(unknown))["records"]
        self.assertEqual((record["type"], record["name"], record["fields"]), ("0x42", None, []))

    def test_region_22_shows_the_entries_that_are_not_blank(self):
        image = images.region22(b"first-of-them..!", bytes(16), b"third-of-them..!")
        document = self.shown(image[:504] + b"lasthalf", 22)
        self.assertEqual([(entry["position"], entry["offset"]) for entry in document["entries"]], [(0, 8), (2, 40), (31, 504)])
        self.assertEqual(bytes.fromhex(document["entries"][1]["bytes"]), b"third-of-them..!")
        self.assertEqual((document["image"]["head"], document["image"]["used"]), ("01 00 00 00", True))
        other = self.shown(images.region23()[:512], 22)["image"]
        self.assertEqual((other["problem"], other["used"]), ("the signature is not RG22", False))

    def test_bytes_of_a_driver_gone_wild_are_shown_all_the_same(self):
        for seed in range(8):
            path = self.regions(images.of_region23(), faults=[tool.fault(DUMP, garbage_seed=seed)])
            for arguments in (["show", "0", "23"], ["show", "0", "22"], ["dump", "0", "23"], ["list", "0"]):
                result = tool.run("region", *arguments, VMKMGMT_SIM_SCENARIO=path)
                self.assertIn(result.returncode, (0, 1))
                self.assertTrue(all(0x20 <= ord(c) < 0x7F or c == "\n" for c in result.stdout), result.stdout)


class Writing(RegionTest):
    """Regions that are changed, and read back."""

    def state(self, path, **more):
        """The environment of runs that share a state folder."""
        return {"VMKMGMT_SIM_SCENARIO": path, "VMKMGMT_SIM_STATE": self.folder / "state"} | more

    def test_the_initial_image_is_what_another_process_reads(self):
        path = self.regions(images.of_region23(vlan=7, connect=[(7, 1)], down=True))
        for adapter in ("0", "1"):
            document = self.json_of("region-init", "region", "init", adapter, "23", "--yes", **self.state(path))
            self.assertEqual(document["write"], {"adapter": int(adapter), "sent": True, "verified": True})
            self.assertEqual(document["changes"], [{"field": "vlan", "old": 7, "new": 0},
                                                   {"field": "connect_entries", "old": 1, "new": 0},
                                                   {"field": "persistent_link_down", "old": True, "new": False}])
            self.assertFalse(self.json_of("linkdown-get", "linkdown", "get", adapter, **self.state(path))
                             ["linkdown"]["persistent_link_down"])
            again = self.json_of("region-init", "region", "init", adapter, "23", "--yes", **self.state(path))
            self.assertEqual((again["write"]["sent"], again["changes"]), (False, []))

    def test_a_missing_region_is_made(self):
        path = self.regions()
        for adapter in ("0", "1"):
            for region in ("22", "23"):
                document = self.json_of("region-init", "region", "init", adapter, region, "--yes", **self.state(path))
                self.assertTrue(document["write"]["verified"])
                self.assertEqual(document["changes"][0], {"field": "image", "old": "missing", "new": f"RG{region}"})
                self.json_of("region-show", "region", "show", adapter, region, **self.state(path))

    def test_entries_of_region_22_are_written_from_a_file(self):
        path = self.regions(images.scenario_region(22, images.region22(b"first-of-them..!")))
        image = images.region22(bytes(16), b"second-of-them.!", *[bytes(16)] * 29, b"lasthalf")
        file = self.folder / "region22.bin"
        file.write_bytes(image)
        for adapter in ("0", "1"):
            document = self.json_of("region-write", "region", "write", adapter, "22", "-f", file, "--yes", **self.state(path))
            self.assertTrue(document["write"]["verified"])
            self.assertEqual([(change["field"], change["old"] is None, change["new"] is None) for change in document["changes"]],
                             [("entry_0", False, True), ("entry_1", True, False), ("entry_31", True, False)])
            dumped = self.folder / "dumped.bin"
            self.json_of("region-dump", "region", "dump", adapter, "22", "-f", dumped, **self.state(path))
            self.assertEqual(dumped.read_bytes(), image)

    def test_the_head_of_region_22_stays_the_librarys(self):
        file = self.folder / "region22.bin"
        file.write_bytes(images.region22(b"first-of-them..!", head=b"\7\7\7\7"))
        result = tool.run("region", "write", "0", "22", "-f", file, "--yes", "-o", "json", **self.state(self.regions()))
        self.assert_exit(result, 0)
        self.assertIn("bytes 4 to 7 of the file are not written: region 22 has or gets 01000000", result.stderr)
        self.assertTrue(tool.validated("region-write", result.stdout)["write"]["verified"])

    def test_region_14_is_written_whole(self):
        path = self.regions()
        file = self.folder / "region14.bin"
        file.write_bytes(bytes(992) + b"the-end!")
        document = self.json_of("region-write", "region", "write", "0", "14", "-f", file, "--yes", **self.state(path))
        self.assertEqual(document["changes"], [{"field": "image", "old": "missing", "new": "present"},
                                               {"field": "bytes_992", "old": None, "new": "7468652d 656e6421"}])
        dumped = self.folder / "dumped.bin"
        self.json_of("region-dump", "region", "dump", "0", "14", "-f", dumped, **self.state(path))
        self.assertEqual(dumped.read_bytes(), file.read_bytes())

    def test_region_14_is_not_for_every_adapter(self):
        file = self.folder / "region14.bin"
        file.write_bytes(b"\1" * 1000)
        result = tool.run("region", "write", "1", "14", "-f", file, "--yes", "-o", "json")
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertEqual((error["operation"], error["result_name"]), ("DFC_SetRegion14", "DFC_UNSUPPORTED"))

    def test_a_refused_write_is_caught_by_reading_back(self):
        path = self.regions(images.of_region23(vlan=7), faults=[tool.fault(UPDATE, driver_status=NOT_SUPPORTED)])
        file = self.folder / "image.bin"
        file.write_bytes(b"\1" * 1000)
        for arguments, place in ((["init", "0", "23"], "region 23 still holds: VLAN 7"),
                                 (["init", "0", "22"], "region 22 still holds: Image missing"),
                                 (["write", "0", "14", "-f", file], "region 14 still holds: Image missing")):
            name = f"region-{arguments[0]}"
            result = tool.run("region", *arguments, "--yes", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
            self.assert_exit(result, 1)
            self.assertEqual(tool.validated(name, result.stdout)["write"], {"adapter": 0, "sent": True, "verified": False})
            error, = tool.errors(result)
            self.assertIn("the driver accepted nothing", error["message"])
            self.assertIn(place, error["message"])
            self.assertEqual((error["driver_status"], error["result"]), (NOT_SUPPORTED.lower(), 0))

    def test_a_write_that_the_library_reports_as_failed_is_a_failure(self):
        # Four mailboxes read the region; the fifth writes it.
        path = self.regions(images.scenario_region(22, images.region22(b"first-of-them..!")),
                            faults=[tool.fault(MAILBOX, board=7, call=5, times=1, driver_status=NOT_SUPPORTED)])
        result = tool.run("region", "init", "1", "22", "--yes", "-o", "json", VMKMGMT_SIM_SCENARIO=path)
        self.assert_exit(result, 1)
        error, = tool.errors(result)
        self.assertIn("the write failed; region 22 still holds: Entry 0", error["message"])
        self.assertEqual((error["operation"], error["driver_status"], error["result_name"]),
                         ("DFC_InitR22", NOT_SUPPORTED.lower(), "DFC_MBOX_GAVE_UP"))

    def test_region_22_of_an_adapter_without_fcoe_is_written_by_mailbox_whatever_the_generation(self):
        result = tool.run("region", "init", "1", "22", "--yes", "-o", "json")
        self.assert_exit(result, 1)  # the simulated firmware of the newer generation knows no such mailbox
        error, = tool.errors(result)
        self.assertEqual((error["operation"], error["result_name"]), ("DFC_InitR22", "DFC_MBOX_GAVE_UP"))

    def test_a_dry_run_shows_the_changes_and_sends_no_update(self):
        path = self.regions(images.of_region23(vlan=7))
        file = self.folder / "image.bin"
        file.write_bytes(b"\1" * 1000)
        for arguments in (["init", "0", "23"], ["init", "0", "22"], ["write", "0", "14", "-f", file]):
            result, calls = self.traced("region", *arguments, "--dry-run", "-o", "json", callback=UPDATE, VMKMGMT_SIM_SCENARIO=path)
            self.assert_exit(result, 0)
            self.assertEqual(calls, [])
            self.assertIn("dry run: would write", result.stderr)
            document = tool.validated(f"region-{arguments[0]}", result.stdout)
            self.assertEqual(document["write"], {"adapter": 0, "sent": False, "verified": None})
            self.assertNotEqual(document["changes"], [])

    def test_wrong_arguments_are_refused(self):
        file = self.folder / "image.bin"
        cases = [(["show", "0", "14"], '"14" is not 22 or 23'), (["init", "0", "14"], '"14" is not 22 or 23'),
                 (["write", "0", "23", "-f", file], '"23" is not 14 or 22'), (["dump", "0", "x"], "REGION"),
                 (["write", "0", "14"], "--file"), (["write", "0", "14", "-f", file], "999 bytes"),
                 (["write", "0", "22", "-f", file], "too long"), (["no-such"], "no-such"),
                 ([], '"region" needs a command: list, show, dump, init, write'),
                 (["list", "0", "show", "0", "23"], "not expected")]
        file.write_bytes(bytes(999))
        for arguments, words in cases:
            with self.subTest(arguments):
                result, calls = self.traced("region", *arguments, "--yes", callback=UPDATE)
                self.assert_exit(result, 2)
                self.assertEqual((result.stdout, calls), ("", []))
                self.assertIn(words, result.stderr)
        file.write_bytes(images.region23()[:512])
        result = tool.run("region", "write", "0", "22", "-f", file, "--yes")
        self.assert_exit(result, 2)
        self.assertIn("the signature is not RG22", result.stderr)


if __name__ == "__main__":
    tool.main()
