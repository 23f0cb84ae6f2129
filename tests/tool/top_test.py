"""The live view of all adapters: on a terminal, and without one."""

import fcntl
import json
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time

import tool

STATISTICS = "TREL_MGMT_HBA_PORTSTATISTICS"
ALTERNATE_SCREEN, OWN_SCREEN = "\x1b[?1049h", "\x1b[?1049l"
HIDDEN_CURSOR, CURSOR = "\x1b[?25l", "\x1b[?25h"
DEADLINE_SECONDS = 30
COLUMNS, LINES = 80, 24
QUIET = 2  # index of an adapter without traffic


class Terminal:
    """A program on a terminal of its own, and what the terminal shows."""

    def __init__(self, *arguments, **variables):
        self.controller, terminal = pty.openpty()
        self.resize(COLUMNS, LINES)
        self.settings = termios.tcgetattr(self.controller)
        self.output = ""
        settings = {"TERM": "xterm", "LC_ALL": "C.UTF-8", "NO_COLOR": "1"} | variables
        self.process = subprocess.Popen([tool.PROGRAM, *arguments], stdin=terminal, stdout=terminal, stderr=terminal,
                                        env=tool.environment(**settings), start_new_session=True,
                                        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        os.close(terminal)

    def resize(self, columns, lines):
        """Gives the terminal another size."""
        fcntl.ioctl(self.controller, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))

    def press(self, keys):
        """Types."""
        os.write(self.controller, keys.encode())

    def receive(self, seconds):
        """Reads what the program writes; false once it writes no more."""
        if not select.select([self.controller], [], [], seconds)[0]:
            return True
        try:
            self.output += os.read(self.controller, 65536).decode(errors="replace")
            return True
        except OSError:
            return False

    def screen(self):
        """The lines of the screen, as far as they were drawn."""
        lines = {}
        for line, text in re.findall(r"\x1b\[(\d+);1H\x1b\[2K([^\x1b]*)", self.output):
            lines[int(line)] = text
        return [lines[line] for line in sorted(lines)]

    def adapters(self):
        """The adapters from the top, without titles and keys."""
        return [line for line in self.screen()[2:-1] if line]

    def wait_until(self, happened):
        """Waits until the screen shows something."""
        end = time.monotonic() + DEADLINE_SECONDS
        while not (self.screen() and happened(self)):
            assert time.monotonic() < end and self.receive(0.1), "\n".join(self.screen())

    def end(self):
        """Waits for the end of the program and returns its exit code."""
        end = time.monotonic() + DEADLINE_SECONDS
        while self.process.poll() is None:
            assert time.monotonic() < end, "\n".join(self.screen())
            self.receive(0.1)
        while select.select([self.controller], [], [], 0)[0] and self.receive(0):
            pass
        return self.process.returncode

    def close(self):
        """Ends the program if it has not ended, and takes the terminal away."""
        self.process.kill()
        self.process.wait()
        os.close(self.controller)


def has_rates(terminal):
    """Whether the screen shows a sample."""
    return "sample" in terminal.screen()[0]


class Top(tool.ToolTest):
    """Three adapters, of which the second has the most traffic and the last none."""

    def path(self, *more, faults=()):
        """A scenario whose clock moves a second with each reading."""
        def counting(board, rate):
            words = {"start": 0, "per_second": rate}
            errors = {"start": 0, "per_second": 3 if board == 1 else 0}
            return tool.adapter(board, counters={"tx_words": words, "rx_words": words, "invalid_crcs": errors})
        path = self.scenario(counting(1, 1000), counting(2, 250000), counting(3, 0), *more, faults=faults)
        content = json.loads(path.read_text(encoding="utf-8"))
        path.write_text(json.dumps(content | {"clock": {"step_ms": 1000}}), encoding="utf-8")
        return path

    def on_terminal(self, *arguments, **variables):
        """The live view on a terminal."""
        if "VMKMGMT_SIM_SCENARIO" not in variables:
            variables["VMKMGMT_SIM_SCENARIO"] = self.path()
        terminal = Terminal("top", *arguments, **variables)
        self.addCleanup(terminal.close)
        return terminal

    def assert_restored(self, terminal):
        """The terminal must be as it was, with the cursor on its own screen."""
        self.assertEqual(terminal.output.count(ALTERNATE_SCREEN), 1)
        self.assertGreater(terminal.output.rindex(OWN_SCREEN), terminal.output.rindex("\x1b[2K"))
        self.assertGreater(terminal.output.rindex(CURSOR), terminal.output.rindex(HIDDEN_CURSOR))
        self.assertEqual(termios.tcgetattr(terminal.controller), terminal.settings)

    def samples(self, *arguments, code=0, **variables):
        """The lines of JSON, each of which must satisfy the schema."""
        result = tool.run("top", "--interval", "0.1", *arguments, "-o", "json", **variables)
        self.assert_exit(result, code)
        return [tool.validated("top", line)["adapters"] for line in result.stdout.splitlines()], result

    def test_the_first_screen_shows_all_adapters_before_there_are_rates(self):
        terminal = self.on_terminal("--interval", "60")
        terminal.wait_until(lambda shown: len(shown.screen()) == LINES)
        self.assertEqual([line.split() for line in terminal.adapters()],
                         [[str(i), "Kestar", "K5603-FC16", "online", "16", "Gbit/s", "-", "-", "-", "-"] for i in range(3)])
        self.assertIn("[a adapter]", terminal.screen()[-1])
        self.assertTrue(all(len(line) <= COLUMNS for line in terminal.screen()))
        settings = termios.tcgetattr(terminal.controller)
        self.assertEqual(settings[3] & (termios.ICANON | termios.ECHO), 0)

    def test_a_key_sorts_and_q_gives_the_terminal_back(self):
        terminal = self.on_terminal("--interval", "0.2")
        terminal.wait_until(has_rates)
        self.assertEqual([line.split()[0] for line in terminal.adapters()], ["0", "1", "2"])
        self.assertRegex(terminal.adapters()[1], "[\u2581-\u2588]$")
        terminal.press("t")
        terminal.wait_until(lambda shown: "[t throughput]" in shown.screen()[-1])
        self.assertEqual([line.split()[0] for line in terminal.adapters()], ["1", "0", "2"])
        terminal.press("r")
        terminal.wait_until(lambda shown: "[reverse]" in shown.screen()[-1])
        self.assertEqual([line.split()[0] for line in terminal.adapters()], ["2", "0", "1"])
        terminal.press("q")
        self.assertEqual(terminal.end(), 0)
        self.assert_restored(terminal)

    def test_arrow_keys_are_no_letters(self):
        terminal = self.on_terminal("--interval", "60")
        terminal.wait_until(lambda shown: len(shown.screen()) == LINES)
        terminal.press("\x1b[e")
        time.sleep(0.2)
        terminal.press("f")
        terminal.wait_until(lambda shown: "[f frames]" in shown.screen()[-1])
        self.assertNotIn("[e errors]", terminal.output)

    def test_every_request_to_end_gives_the_terminal_back(self):
        requests = {"Ctrl-C": lambda terminal: terminal.press("\x03"),
                    "terminate": lambda terminal: terminal.process.send_signal(signal.SIGTERM),
                    "hang up": lambda terminal: terminal.process.send_signal(signal.SIGHUP)}
        for name, request in requests.items():
            with self.subTest(name):
                terminal = self.on_terminal("--interval", "60")
                terminal.wait_until(lambda shown: len(shown.screen()) == LINES)
                request(terminal)
                self.assertEqual(terminal.end(), 0)
                self.assert_restored(terminal)

    def test_the_view_follows_the_size_of_the_terminal(self):
        terminal = self.on_terminal("--interval", "60")
        terminal.wait_until(lambda shown: len(shown.screen()) == LINES)
        terminal.resize(70, 5)
        terminal.wait_until(lambda shown: "page 1 of 2" in shown.screen()[0])
        self.assertTrue(terminal.screen()[4].startswith("q quit"))

    def test_a_count_ends_the_view(self):
        terminal = self.on_terminal("--interval", "0.1", "--count", "2")
        self.assertEqual(terminal.end(), 0)
        self.assert_restored(terminal)
        self.assertIn("sample 1", terminal.screen()[0])

    def test_blocks_and_colour_are_for_terminals_that_show_them(self):
        terminal = self.on_terminal("--interval", "0.1", LC_ALL="C", NO_COLOR="")
        terminal.wait_until(lambda shown: "\x1b[31m" in shown.output)
        self.assertTrue(terminal.output.isascii())

    def test_plain_lines_are_for_terminals_that_cannot_hold_a_screen(self):
        for arguments, variables in (([], {"TERM": "dumb"}), (["-v"], {}), (["-o", "csv"], {})):
            with self.subTest(arguments):
                terminal = self.on_terminal("--interval", "0.1", "--count", "1", *arguments, **variables)
                self.assertEqual(terminal.end(), 0)
                self.assertNotIn("\x1b", terminal.output)
                self.assertIn("sample", terminal.output.lower())

    def test_an_adapter_that_fails_says_so_in_its_row_and_stays(self):
        path = self.path(faults=[tool.fault(STATISTICS, board=2, call=2, driver_status="0x0BAD0004")])
        terminal = self.on_terminal("--interval", "0.2", VMKMGMT_SIM_SCENARIO=path)
        terminal.wait_until(lambda shown: "cannot be read" in shown.adapters()[1])
        self.assertEqual(len(terminal.adapters()), 3)
        terminal.press("q")
        self.assertEqual(terminal.end(), 0)

    def test_without_a_terminal_each_adapter_and_sample_is_a_line(self):
        result = tool.run("top", "--interval", "0.1", "--count", "2", VMKMGMT_SIM_SCENARIO=self.path())
        self.assert_exit(result, 0)
        titles, *lines = result.stdout.splitlines()
        self.assertEqual(titles.split()[:3], ["SAMPLE", "#", "MODEL"])
        self.assertEqual([line.split()[:2] for line in lines], [[str(s), str(a)] for s in (1, 2) for a in range(3)])
        self.assertNotIn("\x1b", result.stdout)
        bare = tool.run("top", "--interval", "0.1", "--count", "1", "--no-header", VMKMGMT_SIM_SCENARIO=self.path())
        self.assertEqual(len(bare.stdout.splitlines()), 3)

    def test_json_lines_tell_rates_of_all_adapters(self):
        samples, _ = self.samples("--count", "3", VMKMGMT_SIM_SCENARIO=self.path())
        self.assertEqual([[record["sample"] for record in sample] for sample in samples], [[1] * 3, [2] * 3, [3] * 3])
        for sample in samples:
            first, busy, quiet = sample
            # The one clock moves with every reading of any of the three.
            self.assertAlmostEqual(busy["received_bytes_per_second"] * busy["seconds"], 3 * 250000 * 4)
            self.assertAlmostEqual(first["sent_bytes_per_second"] * first["seconds"], 3 * 1000 * 4)
            self.assertAlmostEqual(first["errors_per_second"] * first["seconds"], 3 * 3)
            self.assertEqual((quiet["sent_bytes_per_second"], quiet["mark"], quiet["problem"]), (0, None, None))
            self.assertEqual((quiet["adapter"], quiet["state"], quiet["speed"]), (QUIET, "online", "16 Gbit/s"))

    def test_wraps_and_resets_are_marked(self):
        wrapping = {"start": 2**32 - 1500, "per_second": 100, "wraps": 32}
        restarting = {"start": 500, "per_second": 30, "wraps": 10}
        path = self.path(tool.adapter(8, counters={"rx_words": wrapping}), tool.adapter(9, counters={"rx_words": restarting}))
        samples, _ = self.samples("--count", "4", VMKMGMT_SIM_SCENARIO=path)
        wraps = [sample[3] for sample in samples]
        resets = [sample[4] for sample in samples]
        self.assertEqual([record["mark"] for record in wraps].count("wrap"), 1)
        self.assertTrue(all(record["received_bytes_per_second"] > 0 for record in wraps))
        reset, = [record for record in resets if record["mark"] == "reset"]
        self.assertIsNone(reset["received_bytes_per_second"])
        self.assertTrue(all(record["received_bytes_per_second"] >= 0 for record in resets if record is not reset))

    def test_an_adapter_that_fails_is_told_once_and_goes_on_later(self):
        path = self.path(faults=[tool.fault(STATISTICS, board=2, call=2, times=2, driver_status="0x0BAD0004")])
        samples, result = self.samples("--count", "4", code=1, VMKMGMT_SIM_SCENARIO=path)
        self.assertEqual([error["adapter"] for error in tool.errors(result)], [1])
        problems = [sample[1]["problem"] is not None for sample in samples]
        self.assertEqual(problems, [True, True, False, False])
        self.assertIsNone(samples[0][1]["received_bytes_per_second"])
        # The rate after the gap is that of all the time since the last reading before it.
        self.assertGreaterEqual(samples[2][1]["seconds"], 0.3)
        self.assertEqual({sample[0]["problem"] for sample in samples}, {None})

    def test_csv_is_one_table(self):
        result = tool.run("top", "--interval", "0.1", "--count", "2", "-o", "csv", VMKMGMT_SIM_SCENARIO=self.path())
        self.assert_exit(result, 0)
        header, *rows = tool.csv_rows(result.stdout)
        self.assertEqual([dict(zip(header, row))["sample"] for row in rows], ["1"] * 3 + ["2"] * 3)

    def test_wrong_arguments_send_nothing(self):
        for arguments in (["--interval", "0"], ["--interval", "x"], ["--count", "0"], ["0"]):
            with self.subTest(arguments):
                result, calls = self.traced("top", *arguments, callback=STATISTICS)
                self.assert_exit(result, 2)
                self.assertEqual(calls, [])


if __name__ == "__main__":
    tool.main()
