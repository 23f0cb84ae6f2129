"""Tells whether every compiler accepts a source, refuses it with one mistake switched on, and says the sentence that the source
promises for that mistake.

    refused.py SOURCE MISTAKE WORD_SIZE
"""

import pathlib
import re
import sys

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(TESTS / "abi"))

import compilers  # pylint: disable=wrong-import-position

STANDARDS = {".c": ("c", "c99"), ".cpp": ("c++", "c++20")}


def promised_sentence(source, mistake):
    """What the line that switches the mistake on says after "refused: "."""
    found = re.findall(rf"^#ifdef {mistake}  // refused: (.+)$", source.read_text(encoding="utf-8"), re.M)
    if len(found) != 1:
        raise SystemExit(f"{source}: {len(found)} lines start with #ifdef {mistake}  // refused:, expected one")
    return found[0]


def compile_source(compiler, source, word_size, *definitions):
    """Compiles without producing anything, and without warnings: a mistake must be an error on its own."""
    language, standard = STANDARDS[source.suffix]
    root = TESTS.parent
    return compilers.run(compiler.for_language(language), f"-std={standard}", f"-m{word_size}", "-fsyntax-only",
                         "-I", root / "include", "-I", root / "src", *definitions, source)


def complaint(compiler, source, mistake, word_size):
    """What is wrong with how this compiler takes the source; empty if nothing is."""
    correct = compile_source(compiler, source, word_size)
    if correct.returncode != 0:
        return f"refuses the source without any mistake:\n{correct.stderr}"
    refused = compile_source(compiler, source, word_size, f"-D{mistake}")
    if refused.returncode == 0:
        return f"accepts {mistake}"
    # Clang repeats the condition before the sentence, both compilers quote the source after it: only their own lines count.
    said = "\n".join(line for line in refused.stderr.splitlines() if re.search(r"\b(?:error|note): ", line))
    sentence = promised_sentence(source, mistake)
    if sentence not in said:
        return f"refuses {mistake} without the sentence: {sentence}\n{refused.stderr}"
    return ""


def main():
    """Exit code 0 if no compiler gives reason to complain."""
    source, mistake, word_size = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    complaints = [(compiler.name, complaint(compiler, source, mistake, word_size)) for compiler in compilers.installed()]
    for name, text in complaints:
        if text:
            print(f"{source.name}: {name} {text}")
    return 1 if any(text for _, text in complaints) else 0


if __name__ == "__main__":
    sys.exit(main())
