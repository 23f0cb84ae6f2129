"""The Fibre Channel commands in every form."""

import forms_test
import tool

ARRAY = "50:5a:41:00:0c:00:10:01"
ARRAY_IN_B = "50:5a:41:00:0c:00:10:03"  # of the fabric in which there are virtual ports
TAPE = "50:5a:41:00:0c:00:20:01"
VIRTUAL_PORT = "10:01:00:5a:41:56:03:10"
TEST_UNIT_READY = ["00"] * 6
INQUIRY = ["12", "00", "00", "00", "24", "00"]

# FOLDER stands for the folder of the test, in which BLOCKS, CT_IU and WORDS are files.
COMMANDS = [
    (["stats", "0"], "stats"),
    (["stats", "3", "--reset"], "stats"),
    (["luns", "0"], "luns"),
    (["luns", "0", "--tree"], "luns"),
    (["luns", "2"], "luns"),
    (["bindings", "0"], "bindings"),
    (["bindings", "1"], "bindings"),
    (["events"], "events"),
    (["events", "0"], "events"),
    (["rnid", "get", "0"], "rnid-get"),
    (["rnid", "set", "0", "--udp-port", "7000", "--yes"], "rnid-set"),
    (["rnid", "set", "0", "--unit-type", "12", "--dry-run"], "rnid-set"),
    (["rnid", "send", "0", ARRAY], "rnid-send"),
    (["scsi", "inquiry", "0", ARRAY, "0"], "scsi-inquiry"),
    (["scsi", "inquiry", "0", ARRAY, "99"], "scsi-inquiry"),
    (["scsi", "inquiry", "0", ARRAY, "0", "--page", "0"], "scsi-inquiry"),
    (["scsi", "inquiry", "0", ARRAY, "2", "--page", "0x80"], "scsi-inquiry"),
    (["scsi", "inquiry", "0", ARRAY, "3", "--page", "0x83"], "scsi-inquiry"),
    (["scsi", "capacity", "0", ARRAY, "1"], "scsi-capacity"),
    (["scsi", "luns", "0", ARRAY], "scsi-luns"),
    (["scsi", "luns", "0", TAPE], "scsi-luns"),
    (["scsi", "read", "0", ARRAY, "1", "--block", "7", "--blocks", "2", "--file", "FOLDER/read.bin"], "scsi-read"),
    (["scsi", "write", "0", ARRAY, "1", "--file", "FOLDER/BLOCKS", "--yes"], "scsi-write"),
    (["scsi", "write", "0", ARRAY, "1", "--file", "FOLDER/BLOCKS", "--dry-run"], "scsi-write"),
    (["scsi", "raw", "0", ARRAY, "0", *TEST_UNIT_READY, "--yes"], "scsi-raw"),
    (["scsi", "raw", "0", ARRAY, "0", *INQUIRY, "--read", "36", "--yes"], "scsi-raw"),
    (["scsi", "raw", "0", ARRAY, "0", *INQUIRY, "--read", "36", "--yes", "--file", "FOLDER/data.bin"], "scsi-raw"),
    (["fcp", "raw", "0", ARRAY, "0", *TEST_UNIT_READY, "--yes"], "fcp-raw"),
    (["fcp", "raw", "0", ARRAY, "0", *INQUIRY, "--read", "96", "--yes"], "fcp-raw"),
    (["nameserver", "0"], "nameserver"),
    (["ct", "send", "0", "ga_nxt", "0x010200"], "ct-send"),
    (["ct", "send", "0", "gid_ft", "8"], "ct-send"),
    (["ct", "send", "0", "gspn_id", "0x010200"], "ct-send"),
    (["ct", "raw", "0", "FOLDER/CT_IU", "--yes"], "ct-raw"),
    (["ct", "raw", "0", "FOLDER/CT_IU", "--yes", "--file", "FOLDER/reply.bin"], "ct-raw"),
    (["els", "send", "0", ARRAY, "echo"], "els-send"),
    (["els", "send", "0", "10:00:00:5a:41:56:01:20", "rls"], "els-send"),
    (["els", "send", "0", "0x010c00", "rnid"], "els-send"),
    (["els", "send", "0", "0x010200", "05000000", "--yes"], "els-send"),
    (["els", "send", "0", "0x010200", "--request", "FOLDER/WORDS", "--yes", "--file", "FOLDER/reply.bin"], "els-send"),
    (["mgmt", "send", "0", "01" + 14 * "0", "FOLDER/WORDS", "--yes"], "mgmt-send"),
    (["mgmt", "respond", "0", "FOLDER/WORDS", "--yes"], "mgmt-respond"),
    (["npiv", "status", "1"], "npiv-status"),
    (["npiv", "list", "1"], "npiv-list"),
    (["npiv", "show", "1", VIRTUAL_PORT], "npiv-show"),
    (["npiv", "nodes", "1"], "npiv-nodes"),
    (["npiv", "nodes", "1", VIRTUAL_PORT], "npiv-nodes"),
]

EVENTS = [{"at_ms": 0, "event": "link_up"}, {"at_ms": 0, "event": "rscn", "fc_id": "0x010300"}]


def name_server_request(command, key):
    """A CT request as it travels."""
    return bytes([1, 0, 0, 0, 0xFC, 2, 0, 0]) + command.to_bytes(2, "big") + bytes(6) + key


class FibreChannelForms(forms_test.Forms):
    """The checks of all forms, for these commands, in a fabric where something has happened and time stands still."""

    def setUp(self):
        super().setUp()
        self.commands = [([word.replace("FOLDER", str(self.folder)) for word in words], name) for words, name in COMMANDS]
        (self.folder / "BLOCKS").write_bytes(bytes(range(256)) * 4)
        (self.folder / "CT_IU").write_bytes(name_server_request(0x0112, bytes([0, 1, 2, 0])))
        (self.folder / "WORDS").write_bytes(bytes.fromhex("10000000 00010203"))

        def alter(scenario):
            scenario["clock"] = {"step_ms": 0}
            scenario["adapters"] = [card for card in scenario["adapters"] if card.get("condition") != "failed"]
            scenario["adapters"][0]["events"] = EVENTS

        self.path = self.altered_built_in(alter)

    def variables(self):
        return {"VMKMGMT_SIM_SCENARIO": self.path}


if __name__ == "__main__":
    tool.main()
