"""Asks the shells what they make of the tool's completion scripts: each reads its script and completes lines as they are typed."""

import contextlib
import os
import pty
import re
import select
import subprocess

import tool

PROMPT = "ready> "

# How the two shells that complete only on a terminal start. They write down every offer: a line with what was typed, a line for
# each word, an empty line. Ctrl-T writes down what the line has become.
_STARTS = {
    "bash": (["bash", "--rcfile", "start", "-i"], "start", """
source ./script
offer() {
  _vaskdfc "$@"
  printf '%s\\n' "typed $COMP_LINE" "${COMPREPLY[@]}" '' >>offers
}
complete -F offer vaskdfc
became() { printf '%s\\n' "became $READLINE_LINE" '' >>offers; }
bind -x '"\\C-t": became'
bind 'set completion-query-items 0'
bind 'set page-completions off'
"""),
    "zsh": (["zsh", "-i"], ".zshrc", """
autoload -Uz compinit
compinit -u -D
source ./script
compadd() {
  if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\\ * ]]; then
    builtin compadd "$@"
    return
  fi
  local -a found
  builtin compadd -O found "$@"
  print -rl -- "typed $BUFFER" $found '' >>offers
  builtin compadd "$@"
}
became() { print -rl -- "became $BUFFER" '' >>offers }
zle -N became
bindkey '^T' became
bindkey '^U' kill-whole-line
LISTMAX=1000
"""),
}


def script_for(shell):
    """The script that the tool prints for a shell."""
    done = tool.run("completion", shell)
    assert (done.returncode, done.stderr) == (0, ""), done.stderr
    return done.stdout


def _typed(command, folder, keys):
    """Runs a program on a terminal, types keys once it is ready, and waits for its end. Returns what the terminal shows."""
    controller, terminal = pty.openpty()
    process = subprocess.Popen(command, stdin=terminal, stdout=terminal, stderr=terminal, cwd=folder, start_new_session=True,
                               env=tool.environment(HOME=folder, ZDOTDIR=folder, TERM="dumb", LC_ALL="C.UTF-8", PS1=PROMPT))
    os.close(terminal)
    shown = b""
    with contextlib.suppress(OSError):  # how the end of a terminal reads
        while True:
            is_ready = PROMPT.encode() in shown
            readable, writable, _ = select.select([controller], [controller] if keys and is_ready else [], [], 60)
            if not readable and not writable:
                process.kill()
                raise AssertionError(f"nothing happens any more: {shown}")
            if readable:
                shown += os.read(controller, 4096)
            elif writable:
                keys = keys[os.write(controller, keys[:64]):]
    os.close(controller)
    process.wait(timeout=60)
    return shown.decode(errors="replace")


class Terminal:
    """A shell that completes on a terminal: what it offers for lines, and what they become."""

    def __init__(self, shell, folder):
        self.folder = folder
        self.command, start, text = _STARTS[shell]
        (folder / "script").write_text(script_for(shell), encoding="utf-8")
        (folder / start).write_text(text + f"PS1='{PROMPT}'\n", encoding="utf-8")

    def _notes(self, lines, keys, word):
        (self.folder / "offers").write_text("", encoding="utf-8")
        typed = b"".join(line.encode() + keys + b"\x15" for line in lines)
        shown = _typed(self.command, self.folder, typed + b"exit\r")
        notes = (self.folder / "offers").read_text(encoding="utf-8")
        assert not re.search("not found|no such option|syntax error|parse error", shown), shown
        return re.findall(rf"^{word} (.*)\n((?:.+\n)*)\n", notes, re.M)

    def offers(self, lines):
        """The words that are offered for each line."""
        found = {line: [] for line in lines}
        for line, words in self._notes(lines, b"\t", "typed"):
            found[line] += [word for word in words.splitlines() if word not in found[line]]
        return found

    def becomes(self, line):
        """What the line is once it is completed."""
        return [text for text, _ in self._notes([line], b"\t\x14", "became")][-1]


class Fish:
    """The shell that tells what it offers when it is asked."""

    def __init__(self, folder):
        self.folder = folder
        (folder / "script").write_text(script_for("fish"), encoding="utf-8")

    def _offered(self, line):
        variables = tool.environment(HOME=self.folder, LC_ALL="C.UTF-8")
        done = subprocess.run(["fish", "--no-config", "-c", "source script; complete -C $argv[1]", line], cwd=self.folder,
                              env=variables, capture_output=True, text=True, timeout=60, check=False)
        assert (done.returncode, done.stderr) == (0, ""), done.stderr
        return [offer.split("\t")[0] for offer in done.stdout.splitlines()]

    def offers(self, lines):
        """The words that are offered for each line."""
        return {line: self._offered(line) for line in lines}

    def becomes(self, line):
        """What the line is once it is completed."""
        (word,) = self._offered(line)
        return f"{line[:line.rindex(' ')]} {word} "


def shell(name, folder):
    """A shell that has read its script and works in the folder."""
    return Fish(folder) if name == "fish" else Terminal(name, folder)
