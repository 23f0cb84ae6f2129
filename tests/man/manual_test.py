"""The manual pages: their form, what can be looked up, and whether they say what the tool and the headers say.

    manual_test.py TOOL SCHEMAS
"""

import json
import pathlib
import re
import tempfile
import unittest

import pages  # first: it says where the other modules are
import declarations
import tool

EXPORTED = declarations.exported_by_map(pages.TOP / "src/libvaskdfc.map")
HEADERS = sorted((pages.TOP / "include").rglob("*.h"))
SCENARIO_SCHEMA = pages.TOP / "docs/scenario.schema.json"
LOG = pages.TOP / "tests/tool/expected/list.log"


class Form(unittest.TestCase):
    """What every page has."""

    def test_mandoc_has_nothing_to_say(self):
        said = pages.complaints()
        self.assertEqual([line for line in said if not pages.POINTS_ELSEWHERE.match(line)], [])
        self.assertEqual(len(said), len(pages.POINTERS))

    def test_every_page_has_the_sections_that_a_reader_looks_for(self):
        for page in pages.PAGES.values():
            with self.subTest(str(page)):
                wanted = ["NAME", "SYNOPSIS", "DESCRIPTION", "EXAMPLES", "SEE ALSO", *(["OPTIONS"] if page.section == "1" else [])]
                self.assertEqual([title for title in wanted if title not in page.sections], [])
                self.assertTrue({"RETURN VALUE", "EXIT STATUS"} & set(page.sections))
                self.assertEqual([title for title, lines in page.sections.items() if not "".join(lines).strip()], [])

    def test_every_page_that_another_names_is_there(self):
        for page in pages.PAGES.values():
            named = set(re.findall(r"\b((?:lib)?vaskdfc[\w.-]*)\(([135])\)", page.text()))
            self.assertTrue(named, f"{page} leads nowhere")
            missing = {(name, section) for name, section in named if not (pages.FOLDER / f"man{section}/{name}.{section}").exists()}
            self.assertEqual(missing, set(), page)


class Browser(unittest.TestCase):
    """The pages for a browser."""

    def test_every_link_leads_to_a_page(self):
        with tempfile.TemporaryDirectory() as name:
            pages.make("--html", name)
            folder = pathlib.Path(name)
            self.assertEqual({file.name for file in folder.iterdir()}, {f"{page}.html" for page in pages.PAGES} | {"index.html"})
            for file in folder.iterdir():
                links = re.findall(r'href="([^"#]+)"', file.read_text(encoding="utf-8"))
                self.assertTrue(links, f"{file.name} leads nowhere")
                self.assertEqual([link for link in links if not (folder / link).exists()], [], file.name)


class Names(unittest.TestCase):
    """What a reader types after man."""

    def assert_leads_to(self, section, name):
        """A page of this name is there, or a pointer to one that has the name on its NAME line."""
        file = pages.FOLDER / f"man{section}/{name}.{section}"
        self.assertTrue(file.exists(), f"man {section} {name} finds nothing")
        page = (pages.FOLDER / pages.POINTERS[file]).name if file in pages.POINTERS else file.name
        self.assertIn(name, pages.PAGES[page].names())

    def test_every_exported_name_has_a_page(self):
        for name in EXPORTED:
            self.assert_leads_to("3", name)

    def test_every_header_has_a_page(self):
        for header in HEADERS:
            name = str(header.relative_to(pages.TOP / "include").with_suffix("")).replace("/", "_")
            self.assertIn(f"{name}.3", pages.PAGES)

    def test_every_command_has_a_page(self):
        for name in COMMANDS:
            self.assert_leads_to("1", f"vaskdfc-{name.split()[0]}")

    def test_a_pointer_leads_to_a_page(self):
        self.assertGreater(len(pages.POINTERS), len(EXPORTED))
        for file, target in pages.POINTERS.items():
            self.assertIn((pages.FOLDER / target).name, pages.PAGES, file)

    def test_a_pointer_shows_the_page(self):
        self.assertIn("VASKDFC_LINK(3)", pages.shown("man3/DFC_GetLinkInfo.3"))


class Help:
    """What `--help` says of a command: its arguments, its options with their short forms, and its commands if it is a group."""

    def __init__(self, name):
        text = tool.run(*name.split(), "--help").stdout
        before, _, listed = text.partition("\nSubcommands:\n")
        self.commands = re.findall(r"^  ([a-z-]+)", listed.partition("\n\n")[0], re.M)
        arguments = before.partition("\nPositionals:\n")[2].partition("\n\n")[0]
        self.arguments = re.findall(r"^  ([A-Z]+) (\S+)", arguments, re.M)
        options = before.partition("\nEXAMPLES\n")[0]
        self.options = {tuple(filter(None, found)) for found in re.findall(r"^ {2,4}(?:(-\w),)?(--[\w-]+)", options, re.M)}
        if name:
            self.options -= {("-h", "--help")}


def commands_below(name=""):
    """Every command that does something, with its help."""
    found = Help(name)
    if not found.commands:
        return {name: found}
    return {each: about for command in found.commands for each, about in commands_below(f"{name} {command}".strip()).items()}


COMMANDS = commands_below()


def options_in(text):
    """The long options that a text names."""
    return re.findall(r"(?<![\w-])--[a-z][\w-]*", text)


class Tool(unittest.TestCase):
    """The pages and the tool's own help."""

    def page_of(self, command):
        """The page about a command."""
        name = f"vaskdfc-{command.split()[0]}"
        return next(page for page in pages.of_section("1") if name in page.names())

    def test_there_are_commands(self):
        self.assertGreater(len(COMMANDS), 60)

    def test_a_synopsis_has_every_command_with_its_arguments_and_options(self):
        for command, about in COMMANDS.items():
            with self.subTest(command):
                lines = [line.strip() for line in self.page_of(command).sections["SYNOPSIS"]]
                found = [line for line in lines if re.match(rf"vaskdfc {command}(?: [^a-z]| (?:\w+\|)|$)", line)]
                self.assertEqual(len(found), 1, lines)
                self.assertEqual(set(options_in(found[0])), {option[-1] for option in about.options})
                for name, values in about.arguments:
                    self.assertTrue(re.search(rf"\b{name}\b", found[0]) or values in found[0], f"{name} in {found[0]}")

    def test_a_synopsis_has_no_command_that_is_not_there(self):
        for page in pages.of_section("1"):
            for line in filter(None, page.sections["SYNOPSIS"] if page.name != "vaskdfc" else []):
                words = re.match(r"vaskdfc((?: [a-z-]+)+)(?= |$)", line.strip())[1].strip()
                known = [command for command in COMMANDS if words == command or words.startswith(f"{command} ")]
                self.assertTrue(known, f"{page} has {line.strip()}")

    def test_options_are_those_of_the_commands_and_no_others(self):
        for page in pages.of_section("1"):
            with self.subTest(str(page)):
                terms = [term for term in page.terms("OPTIONS") if term.startswith("-")]
                described = {tuple(re.findall(r"(?<![\w-])--?[a-z][\w-]*", term)) for term in terms}
                mine = {command for command in COMMANDS if self.page_of(command) is page}
                wanted = set().union(*(COMMANDS[command].options for command in mine))
                self.assertEqual(described, Help("").options if page.name == "vaskdfc" else wanted)

    def test_the_page_of_the_tool_leads_to_every_command(self):
        lines = pages.PAGES["vaskdfc.1"].sections["COMMANDS"]
        led = {}
        for line, below in zip(lines, lines[1:]):
            page = re.search(r"See (vaskdfc-\w+)\(1\)", below)
            led |= {name: page[1] for name in line.strip().split(", ")} if page else {}
        self.assertEqual(led, {command.split()[0]: self.page_of(command).name for command in COMMANDS})

    def test_exit_status_is_the_same_everywhere(self):
        for page in pages.of_section("1"):
            self.assertEqual(page.terms("EXIT STATUS"), ["0", "1", "2", "3"], page)


class Files(unittest.TestCase):
    """The pages about files, and what reads those files."""

    def test_the_page_about_scenarios_names_every_field(self):
        text = pages.PAGES["vaskdfc-scenario.5"].text()
        schema = json.loads(SCENARIO_SCHEMA.read_text(encoding="utf-8"))
        fields = set(properties(schema)) - {"arg1", "arg2", "arg3", "arg4", "arg5", "arg6", "arg7"}
        self.assertGreater(len(fields), 80)
        self.assertEqual({field for field in fields if not re.search(rf"(?<!\w){re.escape(field)}\b", text)}, set())
        self.assertIn("arg1 to arg7", text)

    def test_the_page_about_scenarios_names_every_environment_variable(self):
        header = (pages.TOP / "simulator/include/vmkmgmt_sim.h").read_text(encoding="utf-8")
        for variable in re.findall(r'^#define \w+ "(\w+)"', header, re.M):
            self.assertIn(variable, pages.PAGES["vaskdfc-scenario.5"].terms("DESCRIPTION"))

    def test_the_page_about_the_log_shows_lines_that_the_library_writes(self):
        lines = re.findall(r"^ +(\d{4}-\d\d-\d\dT.*)$", pages.PAGES["libvaskdfc.conf.5"].text("EXAMPLES"), re.M)
        self.assertGreater(len(lines), 2)
        for line in lines:
            line = re.sub(r"^[\d-]+T[\d:]+  ", "TIME  ", line)
            line = re.sub(r" id\[\d+:\d+\]$", " id[PID:TID]", re.sub(r"handle\[0x[0-9a-f]+\]", "handle[HANDLE]", line))
            self.assertIn(line, LOG.read_text(encoding="utf-8").splitlines())

    def test_the_page_about_the_log_has_the_classes_that_the_tool_explains(self):
        classes = json.loads(tool.run("--log", "0xf", "-o", "json").stdout)["classes"]
        terms = pages.PAGES["libvaskdfc.conf.5"].terms("DESCRIPTION")
        self.assertEqual([term for term in terms if term.isdigit()], [str(each["bit"]) for each in classes])


def properties(schema):
    """The names of all fields that a schema allows, however deep."""
    if isinstance(schema, dict):
        yield from (name for name in schema.get("properties", {}))
        for part in schema.values():
            yield from properties(part)


if __name__ == "__main__":
    tool.main()
