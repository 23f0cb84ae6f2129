"""The check of the layers, run on small trees that break its rules one by one."""

import graphlib
import pathlib
import sys
import tempfile
import unittest

import compilers
import this_build

SCRIPT = this_build.SOURCE / "scripts/check_layers.py"
sys.path.insert(0, str(SCRIPT.parent))

import check_layers  # pylint: disable=wrong-import-position

# A tree that keeps every rule, with something of each layer.
TREE = {
    "include/vaskdfc.h": '#include "vaskdfc/info.h"\n',
    "include/vaskdfc/info.h": "#include <stdint.h>\n",
    "src/transport/board_table.h": "#include <array>\nextern std::array<int, 32> dfc_brdno;  // board numbers\n",
    "src/transport/call_frame.cpp": '#include <sys/time.h>\n#include "transport/log.h"\n#include "version.h"\n',
    "src/transport/callback_table.h": '#include "vaskdfc/info.h"\n',
    "src/transport/callbacks.h": '#include "transport/callback_table.h"\n#include "transport/records/board.h"\n',
    "src/transport/log.cpp": 'void log_ok() { std::fputs("cmd ok:", fLogger); }\n',
    "src/transport/log.h": "extern std::FILE* fLogger;\n",
    "src/transport/records/board.h": '#include "vaskdfc/info.h"\n',
    "src/info/sli_mode.h": '#include "vaskdfc/info.h"\n',
    "src/info/sli_mode.cpp": '#include "info/sli_mode.h"\n#include "transport/callbacks.h"\n',
    "src/hbaapi/ports.h": "#include <cstdint>\n",
    "src/mailbox/send.cpp": '#include "info/sli_mode.h"\n',
    "simulator/driver.h": '#include "transport/callbacks.h"\n#include "transport/records/board.h"\n#include <json/json.h>\n',
    "tools/vaskdfc/report.h": "#include <fmt/format.h>\n",
    "tools/vaskdfc/main.cpp": '#include <vaskdfc.h>\n#include "report.h"\n// dfc_brdno is private\nauto text = "dfc_brdno";\n',
    "examples/list.c": "#include <stdio.h>\n#include <vaskdfc.h>\n",
}


class Layers(unittest.TestCase):
    """Each test changes one file of the tree and compares all that the check prints."""

    maxDiff = None

    def check(self, **changes):
        """Runs the check on the tree with these files changed; returns exit code, standard output and standard error."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in (TREE | changes).items():
                path = pathlib.Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            done = compilers.run(sys.executable, SCRIPT, folder)
        return done.returncode, done.stdout, done.stderr

    def assert_refused(self, name, text, *sentences):
        """The only violations are these, in this file."""
        expected = "".join(f"{name}:{sentence}\n" for sentence in sentences)
        self.assertEqual(self.check(**{name: text}), (1, expected, ""))

    def test_a_tree_that_keeps_the_rules_is_accepted_in_silence(self):
        self.assertEqual(self.check(), (0, "", ""))

    def test_a_folder_that_is_no_tree_is_an_error_of_its_own(self):
        with tempfile.TemporaryDirectory() as folder:
            done = compilers.run(sys.executable, SCRIPT, folder)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("not a tree of this project", done.stderr)

    def test_a_public_header_includes_nothing_private(self):
        self.assert_refused("include/vaskdfc/info.h", '#include <stdint.h>\n#include "transport/log.h"\n',
                            f"2: must not include src/transport/log.h: {check_layers.WHY['include']}")

    def test_a_public_header_includes_few_standard_headers(self):
        self.assert_refused("include/vaskdfc/info.h", "#include <string>\n",
                            "1: must not include string: a public header needs nothing but stddef.h, stdint.h, type_traits")

    def test_the_transport_knows_no_family(self):
        self.assert_refused("src/transport/call_frame.cpp", '\n\n#include "info/sli_mode.h"\n',
                            f"3: must not include src/info/sli_mode.h: {check_layers.WHY['transport']}")

    def test_records_and_the_callback_table_do_not_reach_upward(self):
        self.assert_refused("src/transport/records/board.h", '#include "transport/callbacks.h"\n',
                            f"1: must not include src/transport/callbacks.h: {check_layers.WHY['records']}")
        self.assert_refused("src/transport/callback_table.h", '#include "transport/log.h"\n',
                            f"1: must not include src/transport/log.h: {check_layers.WHY['callback table']}")

    def test_a_family_includes_another_only_where_that_is_declared(self):
        self.assert_refused("src/mailbox/send.cpp", '#include "info/sli_mode.h"\n#include "hbaapi/ports.h"\n',
                            f"2: must not include src/hbaapi/ports.h: {check_layers.WHY['family']}")
        self.assert_refused("src/info/sli_mode.cpp", '#include "../hbaapi/ports.h"\n',
                            f"1: must not include src/hbaapi/ports.h: {check_layers.WHY['family']}")

    def test_the_library_uses_no_foreign_library(self):
        self.assert_refused("src/info/sli_mode.cpp", "#include <fmt/format.h>\n",
                            "1: must not include fmt/format.h: the library uses the standard library and libc only")

    def test_the_simulator_sees_the_callback_table_but_no_family_and_no_transport(self):
        self.assert_refused("simulator/driver.h", '#include "transport/callbacks.h"\n#include "transport/board_table.h"\n'
                            '#include "info/sli_mode.h"\n',
                            f"2: must not include src/transport/board_table.h: {check_layers.WHY['simulator']}",
                            f"3: must not include src/info/sli_mode.h: {check_layers.WHY['simulator']}")

    def test_tools_and_examples_see_public_headers_only(self):
        self.assert_refused("tools/vaskdfc/main.cpp", '#include "transport/callbacks.h"\n#include "../../simulator/driver.h"\n',
                            f"1: must not include src/transport/callbacks.h: {check_layers.WHY['tools']}",
                            f"2: must not include simulator/driver.h: {check_layers.WHY['tools']}")
        self.assert_refused("examples/list.c", '#include <vaskdfc.h>\n#include "../src/transport/log.h"\n',
                            f"2: must not include src/transport/log.h: {check_layers.WHY['examples']}")

    def test_only_the_log_writes_to_the_log(self):
        sentence = "writes to the log or formats one of its lines: only src/transport/log.cpp does"
        self.assert_refused("src/mailbox/send.cpp", "// fLogger belongs to the log\nvoid f() { std::fprintf(fLogger, text); }\n"
                            'const char* line = "%s cmd err: %s";\n', f"2: {sentence}", f"3: {sentence}")

    def test_nobody_else_names_a_variable_of_the_library(self):
        self.assert_refused("tools/vaskdfc/main.cpp", "extern unsigned dfc_brdno[32];\n", "1: dfc_brdno is private to the library")
        self.assert_refused("simulator/driver.h", "\nint x = dfc_brdno[0];\n", "2: dfc_brdno is private to the library")

    def test_a_commented_include_is_none(self):
        changed = {"tools/vaskdfc/main.cpp": '// #include "transport/callbacks.h"\n/*\n#include "transport/log.h"\n*/\n'}
        self.assertEqual(self.check(**changed), (0, "", ""))

    def test_the_declared_compositions_run_in_one_direction(self):
        order = list(graphlib.TopologicalSorter(check_layers.COMPOSED_OF).static_order())
        self.assertIn("info", order)


if __name__ == "__main__":
    this_build.main()
