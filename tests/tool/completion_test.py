"""Completion of the command line, as the shells do it, and the examples in the help texts of all commands that they find."""

import json
import pathlib
import subprocess
import tempfile

import shells
import tool

SHELLS = ["bash", "zsh", "fish"]
GLOBAL_OPTIONS = ["--dry-run", "--help", "--log", "--no-header", "--output", "--verbose", "--version", "--yes"]


def help_of(name):
    """The help text of the tool, a group or a command."""
    return tool.run(*name.split(), "--help").stdout


def commands_found_by(shell):
    """Every group and command that a shell offers, a level of groups at a time."""
    found = []
    groups = [""]
    while groups:
        lines = {f"vaskdfc {name} ".replace("  ", " "): name for name in groups}
        inside = [f"{lines[line]} {word}".strip() for line, words in shell.offers(lines).items() for word in words]
        found += inside
        groups = [name for name in inside if "Subcommands:" in help_of(name)]
    return sorted(found)


class Completion(tool.ToolTest):
    """The three scripts, each in its shell."""

    def assert_offered(self, line, expected, others=False):
        """Every shell offers these words and, unless there may be others, no other."""
        for name in SHELLS:
            with self.subTest(name, line=line), tempfile.TemporaryDirectory() as folder:
                offered = shells.shell(name, pathlib.Path(folder)).offers([line])[line]
                if others:
                    self.assertEqual(sorted(set(expected) & set(offered)), sorted(expected))
                else:
                    self.assertEqual(sorted(offered), sorted(expected))

    def test_the_beginning_of_a_command_is_completed(self):
        self.assert_offered("vaskdfc ev", ["event-test", "events"])

    def test_a_group_offers_its_commands(self):
        self.assert_offered("vaskdfc region ", ["dump", "init", "list", "show", "write"])
        self.assert_offered("vaskdfc fcoe connect ", ["add", "clear", "list", "remove"])

    def test_global_options_before_a_command_change_nothing(self):
        self.assert_offered("vaskdfc -o json --yes region sh", ["show"])
        self.assert_offered("vaskdfc --output=json region sh", ["show"])

    def test_an_option_is_completed(self):
        self.assert_offered("vaskdfc mailbox send 3 --re", ["--retries"])
        self.assert_offered("vaskdfc ports 3 --ind", ["--index"])

    def test_options_of_the_tool_follow_every_command(self):
        self.assert_offered("vaskdfc npiv list 0 --", GLOBAL_OPTIONS)
        self.assert_offered("vaskdfc luns 0 --", [*GLOBAL_OPTIONS, "--by-library", "--tree"])

    def test_the_values_of_an_option_are_offered(self):
        self.assert_offered("vaskdfc list --output ", tool.FORMS)
        self.assert_offered("vaskdfc -o k", ["keyvalue"])

    def test_the_values_of_arguments_are_offered_where_they_stand(self):
        self.assert_offered("vaskdfc linkdown set ", [])
        self.assert_offered("vaskdfc linkdown set 10:00:00:5a:41:56:02:01 ", ["on", "off"])
        self.assert_offered("vaskdfc linkdown set -o json 0 o", ["on", "off"])
        self.assert_offered("vaskdfc set-state ", ["all"])
        self.assert_offered("vaskdfc els send 0 0x010200 r", ["rls", "rnid"])

    def test_a_value_after_an_equals_sign_is_completed(self):
        for name in SHELLS:
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                shell = shells.shell(name, pathlib.Path(folder))
                self.assertEqual(shell.becomes("vaskdfc list --output=js").rstrip(), "vaskdfc list --output=json")

    def test_files_are_offered_where_a_file_is_wanted_and_nowhere_else(self):
        (self.folder / "image.bin").touch()
        for name in SHELLS:
            shell = shells.shell(name, self.folder)
            for line in ("vaskdfc region write 0 22 --file im", "vaskdfc region dump 0 22 -f im", "vaskdfc ct raw 0 im"):
                with self.subTest(name, line=line):
                    self.assertEqual(shell.becomes(line).rstrip(), line.removesuffix("im") + "image.bin")
            self.assertEqual(shell.offers(["vaskdfc show im"]), {"vaskdfc show im": []}, name)

    def test_all_shells_find_the_same_commands(self):
        found = {name: commands_found_by(shells.shell(name, self.folder)) for name in SHELLS}
        self.assertEqual(found["zsh"], found["bash"])
        self.assertEqual(found["fish"], found["bash"])
        # Schemas name the commands whose output they describe, but for the log, which an option explains.
        documents = [json.loads(path.read_text(encoding="utf-8")) for path in tool.SCHEMAS.glob("*.json")]
        described = {document["properties"].get("command", {}).get("const") for document in documents if "properties" in document}
        self.assertEqual(described - set(found["bash"]), {None, "log"})

    def test_the_help_of_every_command_has_examples_of_it(self):
        for name in commands_found_by(shells.Fish(self.folder)):
            with self.subTest(name):
                examples = help_of(name).partition("EXAMPLES\n")[2].partition("\n\n")[0]
                self.assertRegex(examples, rf"\bvaskdfc {name}\b")


class Scripts(tool.ToolTest):
    """The scripts as texts."""

    def test_every_shell_accepts_its_script_without_a_word(self):
        for name, check in {"bash": ["-n"], "zsh": ["-f", "-n"], "fish": ["--no-config", "--no-execute"]}.items():
            with self.subTest(name):
                script = self.folder / name
                script.write_text(shells.script_for(name), encoding="utf-8")
                done = subprocess.run([name, *check, script], capture_output=True, text=True, timeout=60, check=False)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def test_another_shell_is_refused(self):
        done = tool.run("completion", "csh")
        self.assert_exit(done, 2)
        self.assertEqual(done.stderr, 'vaskdfc: SHELL: "csh" is none of bash, fish, zsh\n')


if __name__ == "__main__":
    tool.main()
