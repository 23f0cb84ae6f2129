"""What the Fibre Channel commands say when the driver fails, and which command lines they refuse."""

import tool

TARGET = "50:00:00:00:00:00:01:00"

# Command line, callback that fails, the library's function that the tool names.
FAILURES = [
    (["luns", "0"], "TREL_MGMT_HBA_FCPTARGETMAPPING", "GetFcpTargetMapping"),
    (["luns", "0", "--tree"], "TREL_MGMT_HBA_FCPTARGETMAPPING", "GetFcpTargetMapping"),
    (["bindings", "0"], "TREL_MGMT_LIST_BIND", "GetFcpBindList"),
    (["events", "0"], "TREL_MGMT_HBA_GETEVENT", "GetEventBuffer"),
    (["events", "0", "--follow"], "TREL_MGMT_HBA_GETEVENT", "GetEventBuffer"),
    (["rnid", "get", "0"], "TREL_MGMT_HBA_GETMGMTINFO", "GetRNIDMgmtInfo"),
    (["rnid", "set", "0", "--udp-port", "7000", "--yes"], "TREL_MGMT_HBA_GETMGMTINFO", "GetRNIDMgmtInfo"),
    (["rnid", "send", "0", TARGET], "TREL_MGMT_HBA_RNID", "SendRNID"),
    (["scsi", "inquiry", "0", TARGET, "0"], "TREL_MGMT_HBA_SEND_SCSI", "SendScsiInquiry"),
    (["scsi", "capacity", "0", TARGET, "0"], "TREL_MGMT_HBA_SEND_SCSI", "SendReadCapacity"),
    (["scsi", "luns", "0", TARGET], "TREL_MGMT_HBA_SEND_SCSI", "SendReportLUNs"),
    (["scsi", "read", "0", TARGET, "0", "-f", "/dev/null"], "TREL_MGMT_HBA_SEND_SCSI", "SendReadCapacity"),
    (["scsi", "raw", "0", TARGET, "0", "00", "00", "00", "00", "00", "00", "--yes"], "TREL_MGMT_HBA_SEND_SCSI", "SendScsiCmd"),
    (["fcp", "raw", "0", TARGET, "0", "00", "00", "00", "00", "00", "00", "--yes"], "TREL_MGMT_HBA_SEND_FCP", "SendFcpCmdEx"),
    (["els", "send", "0", TARGET, "echo"], "TREL_MGMT_SEND_ELS", "DFC_SendELSCmd"),
    (["els", "send", "0", TARGET, "rls"], "TREL_MGMT_SEND_CT", "SendCTPassThru"),
    (["nameserver", "0"], "TREL_MGMT_SEND_CT", "SendCTPassThru"),
    (["ct", "send", "0", "gid_ft", "8"], "TREL_MGMT_SEND_CT", "SendCTPassThru"),
]

# Command line that is wrong, callback that it must not reach, words that explain it.
REFUSED = [
    (["scsi", "inquiry", "0", "x", "0"], "TREL_MGMT_HBA_SEND_SCSI", 'TARGET: "x"'),
    (["scsi", "inquiry", "0", TARGET, "16384"], "TREL_MGMT_HBA_SEND_SCSI", 'LUN: "16384"'),
    (["scsi", "inquiry", "0", TARGET, "0", "--page", "256"], "TREL_MGMT_HBA_SEND_SCSI", "--page"),
    (["scsi", "read", "0", TARGET, "0", "-f", "x", "--blocks", "0"], "TREL_MGMT_HBA_SEND_SCSI", "--blocks"),
    (["scsi", "read", "0", TARGET, "0", "-f", "x", "--block", "-1"], "TREL_MGMT_HBA_SEND_SCSI", "--block"),
    (["scsi", "write", "0", TARGET, "0", "-f", "/dev/null"], "TREL_MGMT_HBA_SEND_SCSI", "no whole blocks"),
    (["scsi", "raw", "0", TARGET, "0", "x"], "TREL_MGMT_HBA_SEND_SCSI", 'CDB: "x"'),
    (["scsi", "raw", "0", TARGET, "0", *["00"] * 17], "TREL_MGMT_HBA_SEND_SCSI", "more than 16 bytes"),
    (["scsi", "raw", "0", TARGET, "0", "00"], "TREL_MGMT_HBA_SEND_SCSI", "--yes"),
    (["scsi", "raw", "0", TARGET, "0", "00", "--read", "262145"], "TREL_MGMT_HBA_SEND_SCSI", "--read"),
    (["fcp", "raw", "0", TARGET, "0", "00", "--extra", "x"], "TREL_MGMT_HBA_SEND_FCP", "--extra"),
    (["fcp", "raw", "0", TARGET, "0", "00"], "TREL_MGMT_HBA_SEND_FCP", "--yes"),
    (["els", "send", "0", "x", "echo"], "TREL_MGMT_SEND_ELS", 'PORT: "x"'),
    (["els", "send", "0", "0x1000000", "echo"], "TREL_MGMT_SEND_ELS", 'PORT: "0x1000000"'),
    (["els", "send", "0", TARGET], "TREL_MGMT_SEND_ELS", "--request"),
    (["els", "send", "0", TARGET, "echo", "--request", "/dev/null"], "TREL_MGMT_SEND_ELS", "--request"),
    (["els", "send", "0", TARGET, "--request", "/dev/null"], "TREL_MGMT_SEND_ELS", "0 bytes"),
    (["els", "send", "0", TARGET, "plogi"], "TREL_MGMT_SEND_ELS", '"plogi"'),
    (["els", "send", "0", TARGET, "100000"], "TREL_MGMT_SEND_ELS", '"100000"'),
    (["els", "send", "0", TARGET, *["00000000"] * 257], "TREL_MGMT_SEND_ELS", "more than 1024 bytes"),
    (["els", "send", "0", TARGET, "03000000"], "TREL_MGMT_SEND_ELS", "--yes"),
    (["mgmt", "send", "0", "01", "/dev/null"], "TREL_MGMT_HBA_SEND_MGMT_CMD", 'COMMAND: "01"'),
    (["mgmt", "send", "0", "0100000000000000", "/dev/null"], "TREL_MGMT_HBA_SEND_MGMT_CMD", "--yes"),
    (["mgmt", "send", "0", "0100000000000000", "/nowhere/at/all"], "TREL_MGMT_HBA_SEND_MGMT_CMD", "cannot be opened"),
    (["mgmt", "respond", "0", "/dev/null"], "TREL_MGMT_HBA_SEND_MGMT_RSP", "--yes"),
    (["mgmt", "respond", "0", "/dev/null", "--argument", "x", "--yes"], "TREL_MGMT_HBA_SEND_MGMT_RSP", "--argument"),
    (["rnid", "set", "0"], "TREL_MGMT_HBA_GETMGMTINFO", "nothing to set"),
    (["rnid", "set", "0", "--udp-port", "65536"], "TREL_MGMT_HBA_GETMGMTINFO", "--udp-port"),
    (["rnid", "set", "0", "--ip-address", "1"], "TREL_MGMT_HBA_GETMGMTINFO", "--ip-address"),
    (["rnid", "send", "0", "x"], "TREL_MGMT_HBA_RNID", 'WWN: "x"'),
    (["ct", "send", "0", "gid", "8"], "TREL_MGMT_SEND_CT", "gid_ft"),
    (["ct", "send", "0", "gid_ft", "256"], "TREL_MGMT_SEND_CT", "KEY"),
    (["ct", "send", "0", "gid_pn", "8"], "TREL_MGMT_SEND_CT", "KEY"),
    (["ct", "raw", "0", "/dev/null"], "TREL_MGMT_SEND_CT", "0 bytes"),
]


class Failures(tool.ToolTest):
    """Commands that cannot be done."""

    def test_failures_of_the_driver_are_told(self):
        for arguments, callback, operation in FAILURES:
            with self.subTest(arguments):
                path = self.scenario(tool.adapter(5), faults=[tool.fault(callback, driver_status="0x0BAD0004")])
                result, calls = self.traced(*arguments, "-o", "json", callback=callback, VMKMGMT_SIM_SCENARIO=path)
                self.assert_exit(result, 1)
                self.assertEqual(len(calls), 1)
                error, = tool.errors(result)
                self.assertEqual((error["adapter"], error["operation"], error["driver_status"], error["result"]),
                                 (0, operation, "0x0bad0004", 1))

    def test_wrong_command_lines_send_nothing(self):
        for arguments, callback, words in REFUSED:
            with self.subTest(arguments):
                path = self.scenario(tool.adapter(5))
                result, calls = self.traced(*arguments, callback=callback, VMKMGMT_SIM_SCENARIO=path)
                self.assert_exit(result, 2)
                self.assertEqual((result.stdout, calls), ("", []))
                self.assertIn(words, result.stderr)

    def test_a_dry_run_sends_nothing(self):
        cases = [(["scsi", "raw", "0", TARGET, "0", "00"], "TREL_MGMT_HBA_SEND_SCSI", f"send the command 00 to LUN 0 of {TARGET}"),
                 (["fcp", "raw", "0", TARGET, "0", "00"], "TREL_MGMT_HBA_SEND_FCP", f"send the command 00 to LUN 0 of {TARGET}"),
                 (["els", "send", "0", TARGET, "rls"], "TREL_MGMT_SEND_CT", f"send the request rls to {TARGET} through adapter 0"),
                 (["els", "send", "0", "0x010200", "03000000"], "TREL_MGMT_SEND_ELS",
                  "send a link service of 4 bytes to 0x010200 through adapter 0"),
                 (["mgmt", "send", "0", "0100000000000000", "/dev/null"], "TREL_MGMT_HBA_SEND_MGMT_CMD",
                  "send the management command 01 00 00 00 00 00 00 00 with 0 bytes through adapter 0")]
        for arguments, callback, words in cases:
            with self.subTest(arguments):
                result, calls = self.traced(*arguments, "--dry-run", callback=callback)
                self.assert_exit(result, 0)
                self.assertEqual((result.stdout, calls), ("", []))
                self.assertEqual(result.stderr, f"vaskdfc: dry run: would {words}\n")


if __name__ == "__main__":
    tool.main()
