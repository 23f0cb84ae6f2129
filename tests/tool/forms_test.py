"""Every command in every form: the forms say the same, satisfy their schemas, and fit the screen."""

import re

import tool

# A command line for every kind of output: what is passed, and the schema's name.
COMMANDS = [
    (["list"], "list"),
    (["show", "1"], "show"),
    (["show", "4"], "show"),
    (["ports", "1"], "ports"),
    (["ports", "1", "--discovered"], "ports"),
    (["ports", "1", "--index", "1"], "ports"),
    (["ports", "2", "--discovered"], "ports"),
    (["version"], "version"),
    (["log-message", "cable 7 replaced"], "log-message"),
    (["event-test", "0", "7", "0x20"], "event-test"),
    (["set-state", "0", "0"], "set-state"),
    (["set-state", "0", "1", "--yes"], "set-state"),
    (["set-state", "all", "0"], "set-state"),
    (["set-state", "0", "1", "--dry-run"], "set-state"),
    (["refresh", "0"], "refresh"),
    (["refresh", "0", "--dry-run"], "refresh"),
    (["--log", "0xf"], "log"),
]

WIDTH = 100
ADAPTER_WWN = "10:00:00:5a:41:56:03:10"


class Forms(tool.ToolTest):
    """The forms of output, compared with one another."""

    commands = COMMANDS

    def variables(self):
        """The environment variables of every run."""
        return {}

    def run_tool(self, *arguments):
        """Runs the tool, which must succeed, and returns what it prints."""
        result = tool.run(*arguments, **self.variables())
        self.assert_exit(result, 0)
        return result.stdout

    def document(self, name, arguments):
        """The validated JSON output of a command."""
        return self.json_of(name, *arguments, **self.variables())

    def test_json_satisfies_the_schema_of_its_command(self):
        for arguments, name in self.commands:
            with self.subTest(arguments):
                document = self.document(name, arguments)
                self.assertEqual(list(document)[:2], ["schema", "command"])

    def test_key_values_are_the_fields_of_the_json(self):
        for arguments, name in self.commands:
            with self.subTest(arguments):
                text = self.run_tool(*arguments, "-o", "keyvalue")
                self.assertEqual(tool.key_values(text), tool.flattened(self.document(name, arguments)))

    def test_csv_holds_the_fields_of_the_json(self):
        for arguments, name in self.commands:
            with self.subTest(arguments):
                document = self.document(name, arguments)
                header, *rows = tool.csv_rows(self.run_tool(*arguments, "-o", "csv"))
                sections = [content for key, content in document.items() if key not in ("schema", "command")]
                if len(sections) > 1:
                    self.assertEqual(header, ["field", "value"])
                    self.assertEqual(dict(rows), tool.flattened(document))
                    continue
                records = sections[0] if isinstance(sections[0], list) else sections
                self.assertEqual([dict(zip(header, row)) for row in rows],
                                 [{key: tool.plain(value) for key, value in record.items()} for record in records])

    def test_tables_show_as_many_fields_as_the_json_has(self):
        for arguments, name in self.commands:
            with self.subTest(arguments):
                document = self.document(name, arguments)
                text = self.run_tool(*arguments)
                shown = [line for line in text.splitlines() if line and not line.startswith(" ")]
                for section, content in document.items():
                    if isinstance(content, dict):
                        block = [line for line in shown if re.match(r"\S.*\S {2,}\S", line)]
                        self.assertGreaterEqual(len(block), len(content), section)
                for value in self.leaves(document):
                    self.assertIn(value, text)

    @staticmethod
    def leaves(document):
        """Short words of the document that a table must show as they are."""
        fields = tool.flattened(document).items()
        return [value for key, value in fields if re.search(r"(wwn|fc_id|model|firmware|feature_flags|fabric_name)$", key)
                and value and " " not in value]

    def test_tables_fit_the_screen(self):
        for arguments, _ in self.commands:
            with self.subTest(arguments):
                for line in self.run_tool(*arguments).splitlines():
                    self.assertLessEqual(len(line), WIDTH, line)
                    self.assertEqual(line, line.rstrip())


class Contents(tool.ToolTest):
    """What the commands say about the built-in adapters."""

    def test_list_shows_every_adapter_with_its_driver_board(self):
        adapters = self.json_of("list", "list")["adapters"]
        self.assertEqual([(record["index"], record["driver_board"], record["state"], record["sli_mode"]) for record in adapters],
                         [(0, 1, "online", 4), (1, 3, "online", 4), (2, 4, "link down", 4), (3, 7, "online", 3),
                          (4, 12, "error", 3)])
        self.assertEqual({record["problem"] for record in adapters}, {None})

    def test_show_decodes_what_the_driver_says(self):
        document = self.json_of("show", "show", "1")
        self.assertEqual(document["port"]["type"], "N_Port")
        self.assertEqual(document["port"]["speed"], "16 Gbit/s")
        self.assertEqual(document["port"]["supported_speeds"], ["4 Gbit/s", "8 Gbit/s", "16 Gbit/s"])
        self.assertEqual(document["port"]["classes_of_service"], ["class 3"])
        self.assertEqual(document["port"]["active_fc4_types"], ["FCP"])
        self.assertEqual(document["driver"]["features"][0], "extended SLI configuration mailboxes")
        self.assertEqual(document["adapter"]["driver_board"], 3)

    def test_an_adapter_goes_by_its_index_or_its_wwn_in_any_spelling(self):
        bare = ADAPTER_WWN.replace(":", "")
        for name in ["1", "0x1", ADAPTER_WWN, ADAPTER_WWN.upper(), ADAPTER_WWN.replace(":", "-"), bare, f"0x{bare}",
                     f"0X{bare.upper()}"]:
            self.assertEqual(self.json_of("show", "show", name)["adapter"]["index"], 1, name)

    def test_ports_are_found_in_all_three_ways(self):
        discovered = self.json_of("ports", "ports", "1", "--discovered")["ports"]
        self.assertEqual(len(discovered), 2)
        by_wwn = self.json_of("ports", "ports", "1", "--wwn", discovered[1]["port_wwn"])["ports"]
        self.assertEqual(by_wwn, discovered[1:])
        # The port list: own port, two virtual ports, then the discovered ones.
        self.assertEqual(self.json_of("ports", "ports", "1", "--index", "4")["ports"], discovered[1:])
        self.assertEqual(self.json_of("ports", "ports", "1", "--index", "0"), self.json_of("ports", "ports", "1"))

    def test_version_names_all_four(self):
        document = self.json_of("version", "version")
        self.assertEqual(document["library"]["version"], "11.4.1080.0")
        self.assertEqual(document["library"]["revision"], "4.0")
        self.assertEqual(document["library"]["interface_version"], "2.0.1-1")
        self.assertEqual(document["driver"]["callbacks"], 77)
        self.assertIn("name: vaskfcoe", document["driver"]["module"])

    def test_log_explains_the_mask(self):
        document = self.json_of("log", "--log", "10")
        self.assertIn("LogLevel 0xa", document["log"]["switch_on"])
        self.assertEqual([line_class["bit"] for line_class in document["classes"] if line_class["enabled"]], [2, 8])

    def test_no_header_leaves_the_titles_out(self):
        self.assertTrue(tool.run("list").stdout.startswith("#  BOARD"))
        self.assertTrue(tool.run("list", "--no-header").stdout.startswith("0  "))
        self.assertTrue(tool.run("list", "-o", "csv").stdout.startswith("index,driver_board,"))
        self.assertTrue(tool.run("list", "-o", "csv", "--no-header").stdout.startswith("0,1,"))

    def test_output_does_not_depend_on_the_locale(self):
        for form in tool.FORMS:
            self.assertEqual(tool.run("show", "0", "-o", form, LC_ALL="de_DE.UTF-8", LANG="tr_TR.UTF-8").stdout,
                             tool.run("show", "0", "-o", form, LC_ALL="C").stdout)

    def test_global_options_may_stand_before_the_command_and_after_it(self):
        self.assertEqual(tool.run("-o", "json", "list").stdout, tool.run("list", "-o", "json").stdout)


class HostileTexts(tool.ToolTest):
    """Whatever bytes the driver takes for texts, none reaches the terminal as a command, and no form breaks."""

    CALLBACKS = ["TREL_MGMT_HBA_ADAPTERATTRIBUTES", "TREL_MGMT_HBA_PORTATTRIBUTES", "TREL_MGMT_GET_TRELDFC_INFO"]

    def setUp(self):
        super().setUp()
        faults = [{"callback": callback, "garbage_seed": 7} for callback in self.CALLBACKS]
        self.path = self.scenario(tool.adapter(5), faults=faults)

    def run_all(self, form):
        """What list, show and ports print."""
        for arguments in (["list"], ["show", "0"], ["ports", "0"]):
            result = tool.run(*arguments, "-o", form, VMKMGMT_SIM_SCENARIO=self.path)
            self.assert_exit(result, 0)
            yield arguments[0], result.stdout

    def test_every_form_shows_printable_characters_only(self):
        for form in tool.FORMS:
            for _, text in self.run_all(form):
                self.assertTrue(all(0x20 <= ord(c) < 0x7F or c in "\r\n" for c in text), text)

    def test_the_forms_still_say_the_same(self):
        documents = {name: tool.validated(name, text) for name, text in self.run_all("json")}
        self.assertIn("\\x", documents["list"]["adapters"][0]["model"])
        for name, text in self.run_all("keyvalue"):
            self.assertEqual(tool.key_values(text), tool.flattened(documents[name]))
        for name, text in self.run_all("csv"):
            rows = tool.csv_rows(text)
            self.assertEqual({len(row) for row in rows}, {len(rows[0])}, name)

    def test_tables_still_fit_the_screen(self):
        for _, text in self.run_all("table"):
            for line in text.splitlines():
                self.assertLessEqual(len(line), WIDTH, line)


if __name__ == "__main__":
    tool.main()
