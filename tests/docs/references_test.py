"""What pages refer to is there: other pages and their headings, programs of the examples, scenarios that are valid."""

import json
import re
import unittest
import xml.etree.ElementTree as ElementTree
from urllib.parse import unquote

import jsonschema
import pages

LINK = re.compile(r"\]\((?P<target>[^)\s]+)\)")
HEADING = re.compile(r"^#+ +(?P<text>.*?) *#*$", re.M)
CALL_SITE = re.compile(
    r"CallSite k\w+\{\s*\.function = \"(?P<function>\w+)\",\s*\.callback = Callback::(?P<callback>\w+),"
    r"\s*\.lines = \{(?P<line>\d+), (?P<result_line>\d+)\}(?:,\s*\.logs_failure = false)?"
    r"(?:,\s*\.call_name = (?:facts_of\(Callback::)?(?P<call>[\w\"]+)\)?(?:\.name)?)?"
    r"(?:,\s*\.result_name = (?:facts_of\(Callback::)?(?P<result>[\w\"]+)\)?(?:\.name)?)?\};")
EXAMPLES = pages.TOP / "examples"
PROGRAM_SUFFIXES = {".c": "c", ".cpp": "cpp"}


def anchors(page):
    """The names by which links reach the page's headings."""
    names = []
    for heading in HEADING.finditer(pages.FENCE.sub("", pages.text_of(page))):
        words = re.sub(r"[^\w\- ]", "", heading["text"].lower())
        name = words.replace(" ", "-")
        repeated = sum(re.fullmatch(re.escape(name) + r"(-\d+)?", known) is not None for known in names)
        names.append(f"{name}-{repeated}" if repeated else name)
    return names


def broken_links(page):
    """Links of a page that lead nowhere."""
    for link in LINK.finditer(pages.prose(page)):
        if re.match(r"[a-z]+:", link["target"]):
            continue
        path, _, anchor = unquote(link["target"]).partition("#")
        target = (page.parent / path).resolve() if path else page
        if not target.exists() or not target.is_relative_to(pages.TOP):
            yield f"{link['target']}: there is no such file"
        elif anchor and anchor not in anchors(target):
            yield f"{link['target']}: there is no such heading"


def code_lines(text):
    """The lines of code without their indentation, which an excerpt does not have."""
    return [line.strip() for line in text.strip("\n").split("\n")]


def contains(lines, excerpt):
    """Whether an excerpt stands in lines, in one piece."""
    return any(lines[start:start + len(excerpt)] == excerpt for start in range(len(lines)))


def lines_that_name_another_callback():
    """Function and line number of every log line of the library that names another callback than the one that is called."""
    for source in (pages.TOP / "src").rglob("*.cpp"):
        for site in CALL_SITE.finditer(source.read_text(encoding="utf-8")):
            callback = site["callback"]
            # Where the result line has no name of its own it has that of the call line.
            call = site["call"] or callback
            for name, line in ((call, site["line"]), (site["result"] or call, site["result_line"])):
                if name != callback:
                    yield site["function"], line


class References(unittest.TestCase):
    """All pages."""

    maxDiff = None

    def test_links_lead_somewhere(self):
        for page in pages.all_pages():
            with self.subTest(pages.name_of(page)):
                self.assertEqual(list(broken_links(page)), [])

    def test_every_page_can_be_reached_from_the_first_one(self):
        reached, ahead = set(), [pages.TOP / "README.md"]
        while ahead:
            page = ahead.pop()
            if page in reached or page.suffix != ".md":
                continue
            reached.add(page)
            targets = [link["target"].partition("#")[0] for link in LINK.finditer(pages.prose(page))]
            ahead += [(page.parent / target).resolve() for target in targets if target and ":" not in target]
        self.assertEqual([pages.name_of(page) for page in pages.all_pages() if page not in reached], [])

    def test_programs_on_pages_for_applications_stand_in_the_examples(self):
        programs = {language: [code_lines(path.read_text(encoding="utf-8")) for path in EXAMPLES.glob(f"*{suffix}")]
                    for suffix, language in PROGRAM_SUFFIXES.items()}
        shown = 0
        for page in (pages.TOP / "README.md", pages.TOP / "docs/getting-started.md", pages.TOP / "docs/simulator-guide.md"):
            for block in pages.blocks(page):
                if block.language not in programs:
                    continue
                shown += 1
                with self.subTest(pages.name_of(page), block=block.text):
                    self.assertTrue(any(contains(program, code_lines(block.text)) for program in programs[block.language]))
        self.assertGreater(shown, 4)

    def test_pictures_can_be_drawn_and_say_what_they_show(self):
        pictures = sorted((pages.TOP / "docs").rglob("*.svg"))
        self.assertTrue(pictures)
        for path in pictures:
            with self.subTest(path.name):
                picture = ElementTree.parse(path).getroot()
                names = [child.tag.rpartition("}")[2] for child in picture]
                self.assertEqual((names[:2], picture.get("aria-labelledby")), (["title", "desc"], "title description"))

    def test_example_scenarios_satisfy_the_schema(self):
        schema = json.loads((pages.TOP / "docs/scenario.schema.json").read_text(encoding="utf-8"))
        validator = jsonschema.Draft7Validator(schema)
        scenarios = sorted((EXAMPLES / "scenarios").glob("*.json"))
        self.assertTrue(scenarios)
        for path in scenarios:
            with self.subTest(path.name):
                content = json.loads(path.read_text(encoding="utf-8"))
                self.assertEqual([error.message for error in validator.iter_errors(content)], [])
                self.assertEqual((path.parent / content["$schema"]).resolve(), pages.TOP / "docs/scenario.schema.json")

    def test_example_scenarios_are_worked_through(self):
        guide = pages.TOP / "docs/simulator-guide.md"
        scenarios = []
        for path in sorted((EXAMPLES / "scenarios").iterdir()):
            self.assertIn(f"(../examples/scenarios/{path.name})", pages.text_of(guide))
            scenarios.append(code_lines(path.read_text(encoding="utf-8")))
        for block in pages.blocks(guide):
            if block.language == "json":
                self.assertTrue(any(contains(scenario, code_lines(block.text)) for scenario in scenarios), block.text)

    def test_the_page_about_the_log_has_every_line_that_names_another_callback(self):
        page = pages.text_of(pages.TOP / "docs/formats/log.md")
        rows = set(re.findall(r"^\| `(\w+)` \| (\d+) \| `\w+` \| `\w+` \|$", page, re.M))
        self.assertEqual(rows, set(lines_that_name_another_callback()))


if __name__ == "__main__":
    unittest.main(verbosity=2)
