"""Mailboxes that are passed through: what is sent, what comes back, and what is refused."""

import tool

READ_LINK = "0x200"  # of the simulated firmware
UNKNOWN = "0x7700"
MAILBOX = "TREL_MGMT_MBOX"


class Sending(tool.ToolTest):
    """What reaches the driver, and what the tool makes of the answer."""

    def sent(self, *arguments, code=0, **options):
        """Sends a mailbox and returns the report, the errors, and the calls of the driver."""
        result, calls = self.traced("mailbox", "send", *arguments, "--yes", "-o", "json", callback=MAILBOX, **options)
        self.assert_exit(result, code)
        return tool.validated("mailbox-send", result.stdout), tool.errors(result), calls

    def test_the_newer_generation_gets_all_64_words(self):
        document, _, calls = self.sent("0", READ_LINK)
        self.assertEqual([(call["in"]["arg2"], call["in"]["arg3"]) for call in calls], [(256, 256)])
        self.assertEqual(document["mailbox"], {"adapter": 0, "sli_mode": 4, "command": "0x02", "sent": True, "status": 0,
                                               "status_meaning": "completed", "result": 0, "result_name": "DFC_OK"})
        self.assertEqual(document["words"][0], {"offset": 0, "sent": ["0x00000200"] + ["0x00000000"] * 3,
                                                "received": ["0x00000200", "0x00000002", "0x00010a00", "0x00000004"]})
        self.assertEqual([line["offset"] for line in document["words"]], list(range(0, 256, 16)))

    def test_the_older_generation_gets_the_words_that_were_given(self):
        document, _, calls = self.sent("3", READ_LINK, "7", "0x8")
        self.assertEqual([(call["in"]["arg2"], call["in"]["arg3"]) for call in calls], [(12, 128)])
        self.assertEqual(document["words"][0]["sent"], ["0x00000200", "0x00000007", "0x00000008"])
        self.assertEqual(document["words"][0]["received"], ["0x00000200", "0x00000002", "0x00010c00"])
        self.assertEqual(len(self.sent("3", READ_LINK, *["0"] * 31)[0]["words"]), 8)

    def test_a_file_holds_little_endian_words(self):
        path = self.folder / "mailbox.bin"
        path.write_bytes(b"\0\2\0\0" + b"\x78\x56\x34\x12")
        document, _, _ = self.sent("0", "-f", path)
        self.assertEqual(document["words"][0]["sent"][:2], ["0x00000200", "0x12345678"])
        path.write_bytes(b"\0\2\0\0" + bytes(252))
        self.assertEqual(self.sent("0", "-f", path)[0]["mailbox"]["status"], 0)

    def test_a_status_of_the_adapter_is_shown_and_fails(self):
        document, errors, _ = self.sent("0", UNKNOWN, code=1)
        status = document["mailbox"]["status"]
        self.assertNotIn(status, (0, 252, 253, 254))
        self.assertEqual(document["mailbox"]["status_meaning"], f"the adapter's: 0x{status:04x}")
        error, = errors
        self.assertEqual((error["operation"], error["result"], error["result_name"]),
                         ("DFC_IssueMboxWithRetryV2", 2, "DFC_MBOX_GAVE_UP"))
        self.assertEqual(int(document["words"][0]["received"][0], 16) >> 16, status)
        self.assertEqual(self.sent("3", UNKNOWN, code=1)[1][0]["operation"], "DFC_IssueMboxWithRetry")

    def test_statuses_of_the_library_are_told_from_the_adapters(self):
        failed = "the library's: the call failed or a limit was exceeded"
        cases = [("0x0BAD0039", 253, "the library's: the driver is busy"),
                 ("0x0BAD0004", 254, "the library's: driver status 0xbad0004"),
                 ("0x0BAD005A", 252, failed), ("0x0BAD0001", 252, failed)]
        for driver_status, status, meaning in cases:
            for sli_mode in (3, 4):
                # Only the older generation's wrapper tells a mailbox that the driver does not take from one that failed.
                not_taken = (driver_status, sli_mode) == ("0x0BAD005A", 3)
                name = "DFC_MBOX_NOT_TAKEN" if not_taken else "DFC_MBOX_GAVE_UP"
                with self.subTest(driver_status=driver_status, sli_mode=sli_mode):
                    faults = [tool.fault(MAILBOX, driver_status=driver_status)]
                    path = self.scenario(tool.adapter(5, sli_mode=sli_mode), faults=faults)
                    document, errors, _ = self.sent("0", READ_LINK, "--delay", "0", code=1, VMKMGMT_SIM_SCENARIO=path)
                    mailbox = document["mailbox"]
                    self.assertEqual((mailbox["status"], mailbox["status_meaning"]), (status, meaning))
                    self.assertEqual(mailbox["result_name"], name)
                    self.assertEqual([(error["driver_status"], error["result_name"]) for error in errors],
                                     [(driver_status.lower(), name)])

    def test_a_busy_driver_is_asked_as_often_as_was_said(self):
        for sli_mode in (3, 4):
            faults = [tool.fault(MAILBOX, driver_status="0x0BAD0039", times=2)]
            path = self.scenario(tool.adapter(5, sli_mode=sli_mode), faults=faults)
            options = {"callback": MAILBOX, "VMKMGMT_SIM_SCENARIO": path}
            result, calls = self.traced("mailbox", "send", "0", READ_LINK, "--yes", "--retries", "3", "--delay", "0", **options)
            self.assert_exit(result, 0)
            self.assertEqual(len(calls), 3)
            self.assertIn("adapter 0: the driver was busy at attempt 2\n", result.stderr)
            result, calls = self.traced("mailbox", "send", "0", READ_LINK, "--yes", "--retries", "2", "--delay", "0", **options)
            self.assert_exit(result, 1)
            self.assertEqual(len(calls), 2)


class NotSending(tool.ToolTest):
    """Mailboxes that do not leave the tool."""

    def refused(self, *arguments, adapter="0", words=()):
        """What the tool says to a command line that it refuses; nothing is sent."""
        result, calls = self.traced("mailbox", "send", adapter, *arguments, "--yes", callback=MAILBOX)
        self.assert_exit(result, 2)
        self.assertEqual((result.stdout, calls), ("", []))
        for word in words:
            self.assertIn(word, result.stderr)

    def test_commands_that_carry_addresses_are_refused(self):
        for command in ("0x38", "0x84", "0x8d", "0x8f"):
            self.refused(hex(int(command, 16) << 8), words=[f"command {command}", "addresses of memory"])

    def test_configuration_requests_that_are_longer_than_a_mailbox_are_refused(self):
        self.refused("0x9b00", "0", words=["SLI_CONFIG"])
        self.refused("0x9b00", words=["SLI_CONFIG"])

    def test_wrong_words_are_refused(self):
        self.refused(words=["WORD"])
        self.refused("0x200", "x", words=["WORD 1", '"x"'])
        self.refused("0x100000000", words=["WORD 0"])
        self.refused(*["0"] * 65, words=["65 words"])
        self.refused(*["0x200"] * 33, adapter="3", words=["33 words", "SLI mode 3"])
        self.refused("0x200", "--retries", "0", words=["--retries"])
        self.refused("0x200", "--delay", "soon", words=["--delay", '"soon"'])

    def test_wrong_files_are_refused(self):
        path = self.folder / "mailbox.bin"
        self.refused("--file", path, words=["cannot be opened", "mailbox.bin"])
        self.refused("--file", self.folder, words=["cannot be read"])
        for size, words in ((0, "0 bytes"), (3, "3 bytes"), (257, "at most 256 bytes")):
            path.write_bytes(bytes(size))
            self.refused("--file", path, words=[words])
        self.refused("0x200", "--file", path, words=["either"])

    def test_a_dry_run_shows_what_would_be_sent(self):
        result, calls = self.traced("mailbox", "send", "0", READ_LINK, "--dry-run", "--yes", "-o", "json", callback=MAILBOX)
        self.assert_exit(result, 0)
        self.assertEqual(calls, [])
        self.assertIn("dry run: would send a mailbox with command 0x02 to adapter 0", result.stderr)
        document = tool.validated("mailbox-send", result.stdout)
        self.assertFalse(document["mailbox"]["sent"])
        self.assertTrue(all(line["received"] is None for line in document["words"]))
        self.assertEqual(document["words"][0]["sent"][0], "0x00000200")

    def test_a_mailbox_may_change_an_adapter_so_the_tool_asks(self):
        result, calls = self.traced("mailbox", "send", "0", READ_LINK, callback=MAILBOX)
        self.assert_exit(result, 2)
        self.assertEqual(calls, [])
        self.assertIn("--yes", result.stderr)
        self.assert_exit(self.answered(b"n\n", "mailbox", "send", "0", READ_LINK), 1)
        self.assert_exit(self.answered(b"y\n", "mailbox", "send", "0", READ_LINK), 0)


if __name__ == "__main__":
    tool.main()
