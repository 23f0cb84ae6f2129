"""The commands about mailboxes, regions and settings in every form, on an adapter whose region 23 holds something."""

import adapter_forms_test
import fc_forms_test
import forms_test
import images
import tool

WWNS = ["20:00:00:11:22:33:44:55", "10:00:00:11:22:33:44:55"]

COMMANDS = [
    (["mailbox", "send", "0", "0x200", "--yes"], "mailbox-send"),
    (["mailbox", "send", "3", "0x200", "7", "--yes"], "mailbox-send"),
    (["mailbox", "send", "0", "0x200", "--dry-run"], "mailbox-send"),
    (["region", "list", "0"], "region-list"),
    (["region", "list", "3"], "region-list"),
    (["region", "dump", "0", "23"], "region-dump"),
    (["region", "show", "0", "23"], "region-show"),
    (["region", "show", "3", "22"], "region-show"),
    (["region", "init", "0", "22", "--yes"], "region-init"),
    (["region", "init", "0", "23", "--yes"], "region-init"),
    (["region", "init", "3", "22", "--dry-run"], "region-init"),
    (["linkdown", "get", "0"], "linkdown-get"),
    (["linkdown", "set", "0", "on", "--yes"], "linkdown-set"),
    (["linkdown", "set", "0", "off", "--yes"], "linkdown-set"),
    (["fcoe", "params", "get", "0"], "fcoe-params-get"),
    (["fcoe", "params", "set", "0", "--vlan", "1002", "--fc-map", "0e:fc:01", "--yes"], "fcoe-params-set"),
    (["fcoe", "params", "set", "0", "--no-vlan", "--dry-run"], "fcoe-params-set"),
    (["fcoe", "fcf", "list", "0"], "fcoe-fcf-list"),
    (["fcoe", "connect", "list", "0"], "fcoe-connect-list"),
    (["fcoe", "connect", "list", "1"], "fcoe-connect-list"),
    (["fcoe", "connect", "add", "0", "--vlan", "7", "--names", *WWNS, "--yes"], "fcoe-connect-add"),
    (["fcoe", "connect", "remove", "0", "0", "--yes"], "fcoe-connect-remove"),
    (["fcoe", "connect", "clear", "0", "--yes"], "fcoe-connect-clear"),
]


class SettingForms(forms_test.Forms):
    """The checks of all forms, for these commands."""

    commands = COMMANDS

    def setUp(self):
        super().setUp()
        regions = [images.of_region23(vlan=100, connect=[(5, 1), (6, 3)])]
        self.path = self.altered_built_in(lambda scenario: scenario["adapters"][0].update(regions=regions))

    def variables(self):
        return {"VMKMGMT_SIM_SCENARIO": self.path}

    def test_every_schema_is_for_a_command_that_is_tested(self):
        tested = {name for _, name in COMMANDS + forms_test.COMMANDS + fc_forms_test.COMMANDS + adapter_forms_test.COMMANDS}
        tested |= {"error", "change", "region-write", "stats-watch", "top"}
        self.assertEqual({path.name.removesuffix(".schema.json") for path in tool.SCHEMAS.iterdir()}, tested)

    def test_a_write_of_an_image_reports_like_the_other_changes(self):
        path = self.folder / "region14.bin"
        path.write_bytes(b"\x14" * 1000)
        arguments = ["region", "write", "0", "14", "--file", path, "--yes"]
        document = self.document("region-write", arguments)
        self.assertEqual(tool.key_values(self.run_tool(*arguments, "-o", "keyvalue")), tool.flattened(document))
        self.assertEqual(len(document["changes"]), 64)
        self.assertEqual({len(line) <= forms_test.WIDTH for line in self.run_tool(*arguments).splitlines()}, {True})


if __name__ == "__main__":
    tool.main()
