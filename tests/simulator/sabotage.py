"""Writers of state are killed at every system call, and their calls fail: the old state stays or the new comes, never a part.

    sabotage.py TOOL SCHEMAS SABOTEUR
"""

from dataclasses import dataclass

import changes
import tool

NO_ROOM = "No space left on device"
WRITES = ("write", "pwrite")
# For each call what it may fail with. What cannot fail, or whose failure means nothing any more, is not there.
FAILURES = {
    "open": {"EMFILE": "Too many open files"},
    "lock": {"ENOLCK": "No locks available"},
    "read": {"EIO": "Input/output error"},
    "write": {"ENOSPC": NO_ROOM, "SHORT": NO_ROOM},
    "pwrite": {"ENOSPC": NO_ROOM, "SHORT": NO_ROOM},
    "ftruncate": {"EFBIG": "File too large"},
    "fsync": {"EIO": "Input/output error"},
    "rename": {"ENOSPC": NO_ROOM},
    "close": {},
    "unlock": {},
}
RETRIED = ("open", "lock", "read", *WRITES)
REPLACED = "open write fsync rename fsync close unlock close".split()
CREATED = "open ftruncate fsync rename fsync close unlock close".split()
WRITTEN_IN_PLACE = "open pwrite close".split()


@dataclass
class Scene:
    """A command that changes a file, and its calls from the beginning of the change to its end."""
    name: str
    command: str
    before: dict  # what the state folder holds
    after: dict
    calls: list
    first: int  # the number of the first call, counted from the beginning of the process


class Sabotage(changes.ChangesTest):
    """Every change of state, on a fresh folder and where the file is there already."""

    known_scenes = []

    def in_every_scene(self, test):
        """Calls a test with each."""
        if not self.known_scenes:
            self.known_scenes.extend(self.scenes())
        for scene in self.known_scenes:
            with self.subTest(file=scene.name, fresh=not scene.before):
                test(scene)

    def scenes(self):
        """What undisturbed runs do."""
        for name, (first, second) in changes.CHANGES.items():
            present = self.after({}, first)
            yield self.scene(name, {}, first)
            yield self.scene(name, present, second)

    def scene(self, name, before, command):
        """One of them."""
        after = self.after(before, command)
        self.assertNotEqual(before.get(name), after[name])
        self.assertEqual(set(before) | {name}, set(after))
        self.set_state(before)
        loading = len(self.sabotaged(changes.READS_ALL_STATE)[1])
        self.set_state(before)
        calls = self.sabotaged(command)[1]
        self.assertEqual(changes.contents(self.state), after)

        if name not in changes.IN_PLACE:
            begin, change = calls.index("lock", loading) - 1, REPLACED
        elif before:
            begin, change = calls.index("pwrite", loading) - 1, WRITTEN_IN_PLACE
        else:
            begin, change = calls.index("lock", loading) - 1, CREATED
        end = next(at for at in range(begin, len(calls)) if calls[at:at + len(change)] == change) + len(change)
        return Scene(name, command, before, after, calls[begin:end], begin + 1)

    def disturb(self, scene, position, deed):
        """Runs the command on the state before; a deed is done to the call at a position of the change."""
        self.set_state(scene.before)
        return self.sabotaged(scene.command, SABOTEUR_CALL=scene.first + position, SABOTEUR_DEED=deed)[0]

    def assert_whole(self, scene):
        """The folder holds what it held before or afterwards."""
        now = changes.contents(self.state)
        if scene.name not in changes.IN_PLACE:
            self.assertIn(now, (scene.before, scene.after))
            return
        after = scene.after[scene.name]
        before = scene.before.get(scene.name, bytes(len(after)))
        written = now.get(scene.name, before)
        self.assertEqual(now | {scene.name: written}, scene.after | {scene.name: written})
        self.assertEqual(len(written), len(after))
        if written not in (before, after):
            self.assertTrue(all(byte in pair for byte, *pair in zip(written, before, after)))

    def assert_recovers(self, scene):
        """The next process reads the state and makes the change."""
        self.assert_exit(self.run_tool(scene.command), 0)
        self.assertEqual([path.name for path in self.state.glob("*.new")], [])

    def killed_at_any_call(self, scene):
        """Each kill leaves whole state, and the first of them the old."""
        left = []
        for position, call in enumerate(scene.calls):
            for deed in ("kill", "tear") if call in WRITES else ("kill",):
                self.assert_exit(self.disturb(scene, position, deed), -9)
                self.assert_whole(scene)
                left.append(changes.contents(self.state) == scene.after)
                self.assert_recovers(scene)
        self.assertFalse(left[0])

    def failing_at_any_call(self, scene):
        """Each failure is told and leaves whole state. The library does not pass on that of a region; the tool reads it back."""
        for position, call in enumerate(scene.calls):
            for error, words in FAILURES[call].items():
                result = self.disturb(scene, position, error)
                self.assertRegex(result.stderr, rf"vmkmgmt simulator: {self.state}/\S+: cannot [a-z ]+: {words}\n")
                self.assert_whole(scene)
                if changes.contents(self.state) != scene.after or "region" not in scene.name:
                    self.assertIn(result.returncode, (1, 3), f"{error} of {call} in {scene.calls}\n{result.stderr}")
                self.assertEqual(list(self.state.glob("*.new")), [])

    def interrupted_at_any_call(self, scene):
        """A signal changes nothing."""
        for position, call in enumerate(scene.calls):
            if call in RETRIED:
                self.assert_exit(self.disturb(scene, position, "EINTR"), 0)
                self.assertEqual(changes.contents(self.state), scene.after)

    def test_a_writer_may_be_killed_at_any_call(self):
        self.in_every_scene(self.killed_at_any_call)

    def test_any_call_may_fail(self):
        self.in_every_scene(self.failing_at_any_call)

    def test_a_signal_may_come_in_any_call(self):
        self.in_every_scene(self.interrupted_at_any_call)

    def test_state_that_cannot_be_read_refuses_the_handle(self):
        self.after({}, changes.CHANGES[f"adapter-{changes.NEWER}.json"][0])
        _, calls = self.sabotaged(changes.READS_ALL_STATE)
        self.assertLess({"open", "lock", "read"}, set(calls))
        for number, call in enumerate(calls, start=1):
            if FAILURES[call]:
                result, _ = self.sabotaged(changes.READS_ALL_STATE, SABOTEUR_CALL=number, SABOTEUR_DEED="EIO")
                self.assert_exit(result, 3)
                self.assertRegex(result.stderr, rf"^vmkmgmt simulator: {self.state}/\S+: cannot be \w+: Input/output error\n")


if __name__ == "__main__":
    tool.main()
