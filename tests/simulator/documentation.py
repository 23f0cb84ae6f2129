"""The simulator's page documents every scenario field, status and environment variable."""

import json
import pathlib
import re
import sys

page_file, schema_file, header_file = sys.argv[1:]
page = pathlib.Path(page_file).read_text()


def fields(schema):
    for name, member in schema.get("properties", {}).items():
        yield name
        yield from fields(member)
    if "items" in schema:
        yield from fields(schema["items"])


documented = {name.split(".")[-1] for name in re.findall(r"[`\"]([\w$.\[\]]+)[`\"]", page)}
words = {f"arg{number}" for number in range(1, 8)}  # documented as a range
missing = set(fields(json.loads(pathlib.Path(schema_file).read_text()))) - words - documented
assert not missing, f"fields that the page does not mention: {sorted(missing)}"

header = pathlib.Path(header_file).read_text()
statuses = re.findall(r"(VMKMGMT_SIM_\w+) = (0x[0-9A-F]+)", header)
assert len(statuses) > 20
for name, value in statuses:
    assert f"| {value} | `{name}` |" in page, f"{name} = {value} has no row"
for variable in re.findall(r'#define (VMKMGMT_SIM_\w+) "', header):
    assert f"| `{variable}` |" in page, f"{variable} has no row"
