"""Scenarios with one mistake each, at every field: refused with the field's name, and by the schema's reading, not by luck.

    wrong_scenarios.py TOOL SCHEMAS SCHEMA
"""

import copy
import json
import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tool"))

import jsonschema  # noqa: E402
import tool  # noqa: E402

SCHEMA = json.loads(pathlib.Path(sys.argv[3]).read_text(encoding="utf-8"))
COMPLETE = json.loads(pathlib.Path(__file__).with_name("complete.json").read_text(encoding="utf-8"))
WRONG_VALUES = [None, True, -1, 0.5, 1 << 64, "", "\x1b[2J\0\n\u20ac", [], [None], {}, {"x": 1}]


def resolved(schema):
    """A schema, where it refers to another that one."""
    return SCHEMA["definitions"][schema["$ref"].rpartition("/")[2]] if "$ref" in schema else schema


def fields(value, schema, path=()):
    """Every field of a document: where it stands, and its schema."""
    schema = resolved(schema)
    yield path, schema
    if isinstance(value, dict):
        for key, member in value.items():
            yield from fields(member, schema.get("properties", {}).get(key) or schema["additionalProperties"], (*path, key))
    if isinstance(value, list):
        for index, item in enumerate(value):
            yield from fields(item, schema["items"], (*path, index))


def names(schema):
    """Of all fields of a schema."""
    schema = resolved(schema)
    for key, member in schema.get("properties", {}).items():
        yield key
        yield from names(member)
    if "items" in schema:
        yield from names(schema["items"])


def changed(path, value):
    """The complete scenario with another value at a path."""
    if not path:
        return value
    scenario = copy.deepcopy(COMPLETE)
    place = scenario
    for step in path[:-1]:
        place = place[step]
    place[path[-1]] = value
    return scenario


def spelled(path):
    """A path as messages have it."""
    return "".join(f"[{step}]" if isinstance(step, int) else f".{step}" for step in path).lstrip(".")


class WrongScenarios(tool.ToolTest):
    """One process each."""

    def setUp(self):
        super().setUp()
        self.file = self.folder / "scenario.json"
        self.validator = jsonschema.Draft7Validator(SCHEMA)

    def load(self, content, **options):
        """Starts the simulator with a scenario; its complaint without the file's name, or nothing if there is none."""
        self.file.write_bytes(content if isinstance(content, bytes) else json.dumps(content).encode())
        return self.complaint(self.file, **options)

    def complaint(self, file, **options):
        """The same of a file as it is."""
        result = tool.run("version", VMKMGMT_SIM_SCENARIO=file, **options)
        if result.returncode == 0:
            self.assertEqual(result.stderr, "")
            return None
        self.assert_exit(result, 3)
        lines = [line for line in result.stderr.splitlines() if not line.startswith(("vaskdfc: ", "  hint: "))]
        if not lines:
            return None  # the scenario says that no driver is loaded
        said, = lines
        start = f"vmkmgmt simulator: {file}:"
        self.assertEqual(said[:len(start)], start)
        self.assertLess(len(said), len(start) + 1000)
        self.assertTrue(said.isprintable(), said)
        return said[len(start):].lstrip()

    def test_the_complete_scenario_has_every_field_and_is_accepted(self):
        present = {path[-1] for path, _ in fields(COMPLETE, SCHEMA) if path}
        self.assertEqual(set(names(SCHEMA)) - present, set())
        self.assertIsNone(self.load(COMPLETE))

    def test_every_field_refuses_what_its_schema_refuses_and_says_where(self):
        seen = set()
        refused = 0
        for path, schema in fields(COMPLETE, SCHEMA):
            if id(schema) in seen:
                continue  # another field of the same form
            seen.add(id(schema))
            for value in WRONG_VALUES:
                with self.subTest(path=spelled(path), value=value):
                    scenario = changed(path, value)
                    said = self.load(scenario)
                    if self.validator.is_valid(scenario):
                        continue
                    refused += 1
                    self.assertIsNotNone(said, "accepted")
                    self.assertEqual(said[:len(spelled(path))], spelled(path))
                    self.assertIn("expected ", said)
        self.assertGreater(refused, 500)

    def test_texts_end_where_their_forms_end(self):
        for path, schema in fields(COMPLETE, SCHEMA):
            if "pattern" in schema and path[-1] != "arg7":
                value = COMPLETE
                for step in path:
                    value = value[step]
                for wrong in (f"{value}\n", f"\n{value}"):
                    said = self.load(changed(path, wrong)) if isinstance(value, str) else None
                    self.assertTrue(not isinstance(value, str) or said.startswith(f"{spelled(path)}: expected "), (path, said))

    def test_lists_end_where_their_schemas_say(self):
        limited = [(path, schema["maxItems"]) for path, schema in fields(COMPLETE, SCHEMA) if "maxItems" in schema]
        self.assertLess({512, 32, 4096, 998, 256, 64}, {most for _, most in limited})
        for path, most in limited:
            items = COMPLETE
            for step in path:
                items = items[step]
            said = self.load(changed(path, [items[0]] * (most + 1)))
            self.assertRegex(said, rf"^{re.escape(spelled(path))}: expected a list of .*\b({most}|two)\b")

    def test_keys_of_any_kind_are_shown_in_one_line(self):
        for key, shown in (("", '[""]'), ("a.b", '["a.b"]'), ("\x1b[2J\n", r'["\u001b[2J\n"]'), ("\u20ac", r'["\u20ac"]'),
                           ("k" * 100_000, '["' + "k" * 59 + "...]")):
            said = self.load(changed(("driver", key), 1))
            self.assertTrue(said.startswith(f"driver{shown}: unknown field; expected one of "), said)
        self.assertTrue(self.load(b'{"a\\n": 1, "a\\n": 2}').startswith(r'["a\n"]: stands twice'))
        self.assertIn(r'found "\u001b"', self.load(changed(("adapters", 0, "parameters"), {"\x1b": 1})))
        self.assertIn("...", self.load(changed(("faults", 0, "callback"), "c" * 100_000)))

    def test_what_is_too_deep_too_long_or_too_large_is_refused_soon(self):
        for opening in (b"[", b'{"a":'):
            self.assertIn("stands deeper than any field of a scenario", self.load(opening * 1_000_000))
        self.assertIn("missing closing quote", self.load(b'{"a": "' + b"x" * 1_000_000))
        self.assertIn("number overflow", self.load(b"[" + b"9" * 1_000_000 + b"]"))
        self.assertIn("expected 1 to 31 printable ASCII characters", self.load(changed(("driver", "name"), "n" * 10_000_000)))
        with self.file.open("wb") as file:
            file.truncate(1 << 40)
        self.assertEqual(self.complaint(self.file), f"has more than {64 << 20} bytes")
        self.assertEqual(self.complaint("/dev/zero"), f"has more than {64 << 20} bytes")

    def test_what_is_no_json_names_line_and_column(self):
        text = json.dumps(COMPLETE, indent=1).encode()
        for cut in range(0, len(text) - 1, 331):
            self.assertRegex(self.load(text[:cut]), r"^\d+:\d+: syntax error ")
        for wrong in (b"\x00", b"\xff\xfe{\x00}\x00", b"\xed\xa0\x80", b'"\xc3"', b"{} {}", b"NaN", b"{'a': 1}", b"// comment\n{}"):
            self.assertRegex(self.load(wrong), r"^1:\d+: ")
        self.assertIsNone(self.load(b"\xef\xbb\xbf" + text))

    def test_a_damaged_byte_is_refused(self):
        text = json.dumps(COMPLETE).encode()
        for place in range(0, len(text), 37):
            said = self.load(text[:place] + bytes([text[place] ^ 0x80]) + text[place + 1:])
            self.assertRegex(said, r"^1:\d+: syntax error ")

    @unittest.skipUnless(tool.runs_as_nobody(), "only root can run a process as somebody else")
    def test_a_file_that_is_somebody_elses_is_refused(self):
        self.load(COMPLETE)
        self.folder.chmod(0o755)
        self.file.chmod(0o600)
        self.assertEqual(self.complaint(self.file, user=tool.NOBODY), "cannot be opened: Permission denied")


if __name__ == "__main__":
    tool.main()
