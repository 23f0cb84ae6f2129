"""A handler that does not fit its callback's row must not compile, and the compiler must say why in a sentence."""

import subprocess
import sys

compiler = sys.argv[1:]

PROGRAM = """
#include "driver/door.h"
using namespace simulator;
DriverStatus handler({parameters});
void register_one(Door& door) {{ door.on<Callback::{callback}>(handler); }}
"""

ACCEPTED = ("kHbaWwpnPortAttributes", "BoardCall&, vaskdfc::PortAttributesReply&, const vaskdfc::WwnKey&")
REFUSED = [
    ("kHbaWwpnPortAttributes", "BoardCall&, vaskdfc::PortAttributesReply&", "wrong number of records"),
    ("kSetDiag", "BoardCall&, vaskdfc::PortAttributesReply&", "wrong number of records"),
    ("kHbaPortAttributes", "BoardCall&, HbaAdapterAttributes&", "wrong record"),
    ("kHbaWwpnPortAttributes", "BoardCall&, const vaskdfc::WwnKey&, vaskdfc::PortAttributesReply&", "wrong record"),
    ("kHbaPortAttributes", "BoardCall&, const vaskdfc::PortAttributesReply&", "wrong direction"),
    ("kLogMsg", "Call&, dfc_kernel_message&", "wrong direction"),
    ("kSetDiag", "dfc_mgmt_hdr&", "first parameter is a Call& or a BoardCall&"),
]


def compile_handler(callback, parameters):
    source = PROGRAM.format(callback=callback, parameters=parameters)
    return subprocess.run([*compiler, "-fsyntax-only", "-xc++", "-"], input=source, capture_output=True, text=True)


accepted = compile_handler(*ACCEPTED)
assert accepted.returncode == 0, accepted.stderr

for callback, parameters, sentence in REFUSED:
    refused = compile_handler(callback, parameters)
    assert refused.returncode != 0, f"{callback} accepts a handler with ({parameters})"
    assert sentence in refused.stderr, f"{callback} with ({parameters}): no '{sentence}' in\n{refused.stderr}"
