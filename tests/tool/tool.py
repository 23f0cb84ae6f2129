"""Runs the tool of one build against the simulated platform, and reads what it prints.

A test program's first argument is the tool, its second the folder of JSON schemas.
"""

import contextlib
import csv
import io
import json
import os
import pathlib
import pty
import subprocess
import sys
import tempfile
import unittest

import jsonschema

PROGRAM = pathlib.Path(sys.argv[1])
SCHEMAS = pathlib.Path(sys.argv[2]).resolve()
FORMS = ["table", "json", "csv", "keyvalue"]
NOBODY = 65534  # a user who owns nothing
BUILT_IN = pathlib.Path(__file__).resolve().parents[2] / "simulator/scenarios/default.json"


def environment(**variables):
    """The test's environment without a simulated platform of somebody else's, and with these variables."""
    clean = {name: value for name, value in os.environ.items() if not name.startswith("VMKMGMT_SIM_")}
    return clean | {name: str(value) for name, value in variables.items()}


def run(*arguments, **options):
    """Runs the tool. Keyword arguments in capitals are environment variables."""
    variables = {name: options.pop(name) for name in list(options) if name.isupper()}
    options.setdefault("stdin", subprocess.DEVNULL)
    result = subprocess.run([PROGRAM, *map(str, arguments)], env=environment(**variables), capture_output=True,
                            timeout=60, check=False, **options)
    # Decoded here, because text mode would not tell one line end from another.
    result.stdout, result.stderr = result.stdout.decode(), result.stderr.decode()
    return result


def runs_as_nobody():
    """Whether this process may run the tool as somebody who owns nothing."""
    if os.geteuid() != 0:
        return False
    with contextlib.suppress(OSError):  # of a build in a folder that only root may look into
        return subprocess.run([PROGRAM, "--version"], user=NOBODY, capture_output=True, timeout=60, check=False).returncode == 0
    return False


def schema(name):
    """The JSON schema of a command's output."""
    document = json.loads((SCHEMAS / f"{name}.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(document)
    return document


def validated(name, text):
    """Output in JSON, which must satisfy its schema."""
    document = json.loads(text)
    rules = schema(name)
    resolver = jsonschema.RefResolver(f"{SCHEMAS.as_uri()}/", rules)  # what several commands report alike stands in one file
    jsonschema.Draft202012Validator(rules, resolver=resolver).validate(document)
    return document


def errors(result):
    """The error objects on standard error, one line each. Lines of the simulator's are not the tool's."""
    lines = [line for line in result.stderr.splitlines() if line.startswith("{")]
    return [validated("error", line)["error"] for line in lines]


def plain(value):
    """A JSON value in a form that has only text."""
    if value is None:
        return ""
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, list):
        return "; ".join(map(plain, value))
    return str(value)


def flattened(document):
    """Every field of a document: where it stands, and its value as text."""
    fields = {}
    for section, content in document.items():
        if section in ("schema", "command"):
            continue
        records = enumerate(content) if isinstance(content, list) else [(None, content)]
        for position, record in records:
            where = section if position is None else f"{section}.{position}"
            fields |= {f"{where}.{key}": plain(value) for key, value in record.items()}
    return fields


def csv_rows(text):
    """The rows of CSV, whose lines must end as RFC 4180 has it."""
    assert text.count("\n") == text.count("\r\n"), text
    return list(csv.reader(io.StringIO(text, newline="")))


def key_values(text):
    """The fields of the key-value form."""
    return dict(line.split(": ", 1) for line in text.splitlines())


def fault(callback, **fields):
    """A fault of a scenario."""
    return {"callback": callback} | fields


def remote_port(number):
    """A port that adapters discover."""
    return {"wwnn": f"50:00:00:00:00:00:00:{number:02x}", "wwpn": f"50:00:00:00:00:00:01:{number:02x}",
            "fc_id": f"0x0102{number:02x}", "supported_speeds": ["8G", "16G"]}


def adapter(board, **fields):
    """An adapter of a scenario."""
    return {"board": board, "model": "Kestar K5603-FC16", "serial_number": f"ZK{board}", "device": "0x5603", "sli_mode": 4,
            "wwnn": f"20:00:00:00:00:00:00:{board:02x}", "wwpn": f"10:00:00:00:00:00:00:{board:02x}", "fabric": "one",
            "fc_id": f"0x0101{board:02x}", "supported_speeds": ["16G"]} | fields


class ToolTest(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def scenario(self, *adapters, faults=(), interfaces=("vaskfcoe-mgmt",), ports=2):
        """Writes a scenario of these adapters and returns its path. Ports are a list of them, or how many of the usual kind."""
        remote = [remote_port(number) for number in range(ports)] if isinstance(ports, int) else ports
        content = {"driver": {"name": "vaskfcoe", "version": "11.4", "interfaces": list(interfaces)},
                   "fabrics": [{"name": "one", "wwn": "10:00:00:00:00:00:ff:01", "ports": remote}],
                   "adapters": list(adapters), "faults": list(faults)}
        path = self.folder / "scenario.json"
        path.write_text(json.dumps(content), encoding="utf-8")
        return path

    def altered_built_in(self, alter):
        """Writes the built-in scenario as a function changes it, and returns its path."""
        content = json.loads(BUILT_IN.read_text(encoding="utf-8"))
        alter(content)
        path = self.folder / "built_in.json"
        path.write_text(json.dumps(content), encoding="utf-8")
        return path

    def assert_exit(self, result, code):
        """Compares the exit code; shows the output otherwise."""
        self.assertEqual(result.returncode, code, f"\n{result.stdout}\n{result.stderr}")

    def traced(self, *arguments, callback, **options):
        """Runs the tool and returns its result and its calls of one callback."""
        trace = self.folder / f"{len(list(self.folder.iterdir()))}.trace"
        result = run(*arguments, VMKMGMT_SIM_TRACE=trace, **options)
        # A command line that is wrong reaches no driver, and then there is no trace.
        lines = trace.read_text(encoding="utf-8").splitlines() if trace.exists() else []
        return result, [call for call in map(json.loads, lines) if call["callback"] == callback]

    def answered(self, answer, *arguments, **options):
        """Runs the tool on a terminal where somebody types an answer."""
        controller, terminal = pty.openpty()
        self.addCleanup(os.close, controller)
        os.write(controller, answer)
        result = run(*arguments, stdin=terminal, **options)
        os.close(terminal)
        return result

    def json_of(self, name, *arguments, code=0, **options):
        """The validated JSON output of a command."""
        result = run(*arguments, "-o", "json", **options)
        self.assert_exit(result, code)
        return validated(name, result.stdout)

    def on_terminal(self, *arguments, **variables):
        """Runs the tool, which must succeed, with a terminal for its errors; returns its output and what the terminal got."""
        controller, terminal = pty.openpty()
        process = subprocess.Popen([PROGRAM, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=terminal, env=environment(**variables))
        os.close(terminal)
        shown = b""
        with contextlib.suppress(OSError):  # how the end of a terminal reads
            while part := os.read(controller, 4096):
                shown += part
        os.close(controller)
        output = process.communicate(timeout=60)[0].decode()
        self.assertEqual(process.returncode, 0, shown)
        return output, shown.decode()


def main():
    """Runs the tests of the program."""
    unittest.main(argv=sys.argv[:1], verbosity=2)
