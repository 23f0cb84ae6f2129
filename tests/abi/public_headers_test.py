"""Each public header stands alone, in both languages and both word sizes, and documents what it declares."""

import pathlib
import re
import shutil
import tempfile
import unittest

import compilers
import declarations
import this_build

HEADERS = sorted(path.relative_to(this_build.INCLUDE) for path in this_build.INCLUDE.rglob("*.h"))
STANDARDS = {"c": "c99", "c++": "c++17"}


class Alone(unittest.TestCase):
    """Compiles headers from a copy of the folder, so that nothing private is within reach."""

    def setUp(self):
        self.include = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory())) / "include"
        shutil.copytree(this_build.INCLUDE, self.include)

    def complaints(self, compiler, language, word_size, source):
        """What a compiler says about a source text; empty if it accepts it."""
        command = [compiler.for_language(language), f"-std={STANDARDS[language]}", f"-m{word_size}", *compilers.WARNINGS,
                   "-fsyntax-only", "-I", self.include, "-x", language, "-"]
        done = compilers.run(*command, input=source)
        return done.stderr if done.returncode != 0 else ""

    def every_way(self):
        """Compiler, language and word size in every combination."""
        return [(compiler, language, word_size) for compiler in compilers.installed() for language in STANDARDS
                for word_size in compilers.WORD_SIZES]

    def test_each_header_compiles_alone_and_twice(self):
        self.assertIn(pathlib.Path("vaskdfc.h"), HEADERS)
        for header in HEADERS:
            for compiler, language, word_size in self.every_way():
                with self.subTest(header=str(header), compiler=compiler.name, language=STANDARDS[language], word_size=word_size):
                    # A header may hold nothing but macros, but no source may.
                    source = f"#include <{header}>\n" * 2 + "extern int something;\n"
                    self.assertEqual(self.complaints(compiler, language, word_size, source), "")

    def test_a_private_header_is_out_of_reach(self):
        for compiler, language, word_size in self.every_way():
            said = self.complaints(compiler, language, word_size, '#include "transport/callback_table.h"\n')
            self.assertRegex(said, r"transport/callback_table\.h.*(?:No such file|not found)")


class Documentation(unittest.TestCase):
    """Every function has a block that an application's author can rely on."""

    def test_every_function_says_what_it_takes_and_returns(self):
        complaints = []
        for header in HEADERS:
            for function in declarations.functions(this_build.INCLUDE / header):
                complaints += [f"{header}: {function.name} {lack}" for lack in self.lacks(function)]
        if complaints:
            self.fail("\n" + "\n".join(complaints))

    def lacks(self, function):
        """What a function's block should say and does not."""
        if not function.block:
            return ["has no block /** ... */ right before it"]
        lacking = []
        if function.result != "void" and not re.search(r"@return\s+\S", function.block):
            lacking.append("does not say what it returns: no @return")
        documented = re.findall(r"@param\s+(\w+)\s+\S", function.block)
        named = [name for name in function.parameters if name != "..."]
        # A block of one line describes its only parameter in the sentence.
        if documented != named and (documented or len(named) > 1):
            lacking.append(f"takes ({', '.join(named)}) but documents ({', '.join(documented)})")
        return lacking


if __name__ == "__main__":
    this_build.main()
