"""What bash offers when a person completes a quillon command."""

import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, FAKES, ServiceTest  # noqa: E402

COMPLETION = os.path.join(FAKES, "..", "..", "resources", "completion", "quillon")
# Completes the last of its words as bash would: by the function that "complete" has for the command.
COMPLETE = """source "$1"; shift
set -- "$@"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
[[ $(complete -p quillon) == *" -F "* ]] || exit 1
function=$(complete -p quillon); function=${function##*-F }
"${function%% *}" quillon "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
((${#COMPREPLY[@]})) && printf '%s\\n' "${COMPREPLY[@]}"
exit 0
"""


class Completion(ServiceTest):
    def setUp(self):
        super().setUp()
        self.environment["PATH"] = os.path.join(BUILD, "bin") + ":" + os.environ["PATH"]
        self.file("paper.tex", "x")
        self.file("a b.tex", "x")
        os.mkdir(os.path.join(self.work, "folder"))

    def offered(self, *words):
        done = self.run_program("bash", "--norc", "-c", COMPLETE, "bash", COMPLETION, "quillon", *words)
        self.assertEqual((done.returncode, done.stderr), (0, ""), words)
        return sorted(done.stdout.splitlines())

    def test_the_first_word_is_a_verb_an_option_or_a_file(self):
        self.assertEqual(self.offered(""), ["a b.tex", "clean", "edit", "exec", "find", "folder", "formats", "locate",
                                            "paper.tex", "problems", "quit", "watch"])
        self.assertEqual(self.offered("f"), ["find", "folder", "formats"])
        self.assertEqual(self.offered("-"), ["--headless", "--help", "--version"])

    def test_every_verb_and_option_that_the_help_names_is_offered(self):
        usage = subprocess.run([os.path.join(BUILD, "bin", "quillon"), "--help"], capture_output=True, encoding="utf-8",
                               check=True).stdout
        named = [line.split()[1].strip("[]") for line in usage.splitlines() if line.startswith("quillon ")]
        self.assertEqual(sorted(set(named) - {"FILE..."}),
                         sorted(set(self.offered("") + self.offered("-")) - {"a b.tex", "folder", "paper.tex"}))
        rows = [line for line in usage.splitlines() if line.startswith(" ")]
        options = {word for row in rows for word in row.split() if word[0] == "-"}
        self.assertEqual(sorted(options), self.offered("exec", "-"))

    def test_exec_offers_the_tools_that_it_knows(self):
        self.assertEqual(self.offered("exec", ""), ["bibtex", "dvipdfm", "dvips", "elatex", "etex", "makeindex",
                                                    "mpost", "pdfetex", "pdflatex", "pdftex"])
        for words in (("-f",), ("-C", "folder"), ("--view", "--edit"), ("--",), ("-f", "--")):
            self.assertEqual(self.offered("exec", *words, "pdft"), ["pdftex"], words)
        self.assertEqual(self.offered("exec", "-"), ["--edit", "--view", "-C", "-f"])
        self.assertEqual(self.offered("exec", "-C", ""), ["folder"])

    def test_exec_knows_every_tool_that_is_offered(self):
        self.preferences(USEPDFTEX="1")
        self.start_shell()
        for tool in self.offered("exec", ""):
            done = self.run_program("quillon", "exec", tool, "nosuchfile")
            self.assertNotIn("no tool has that name", done.stderr, tool)

    def test_a_tool_takes_files_and_formats(self):
        self.assertEqual(self.offered("exec", "pdftex", ""), ["a b.tex", "folder", "paper.tex"])
        self.assertEqual(self.offered("exec", "-C", "folder", "pdftex", "pa"), ["paper.tex"])
        self.assertEqual(self.offered("exec", "pdftex", "-"), ["-fmt="])

    def test_formats_are_those_that_the_shell_lists(self):
        # Nothing is set up only because a person completes a word.
        self.assertEqual(self.offered("exec", "pdftex", "-fmt", "="), [])
        self.assertFalse(os.path.exists(self.preferences_path))
        formats = os.path.join(self.home, "formats")
        for name in ("one", "two", "three", "four"):
            os.setxattr(self.file(name + ".fmt", "x", formats), "user.quillon.creator", b"QXET")
        self.preferences(TEXFORMATS=formats)
        listed = sorted(self.run_program("quillon", "formats").stdout.split())
        self.assertEqual(len(listed), 2)
        self.assertEqual(self.offered("exec", "pdftex", "-fmt", "="), listed)
        self.assertEqual(self.offered("exec", "pdftex", "-fmt", "=", listed[0]), [listed[0]])

    def test_the_other_verbs(self):
        self.assertEqual(self.offered("edit", "+3", "p"), ["paper.tex"])
        self.assertEqual(self.offered("--headless", "-"), ["--script"])
        self.assertEqual(self.offered("--headless", "--script", "p"), ["paper.tex"])
        self.assertEqual(self.offered("quit", ""), [])
        self.assertEqual(self.offered("problems", ""), [])
        self.assertEqual(self.offered("clean", "-"), ["--snapshots", "--yes"])
        self.assertEqual(self.offered("clean", "p"), ["paper.tex"])
        self.assertEqual(self.offered("watch", "-"), ["--view"])
        self.assertEqual(self.offered("watch", "p"), ["paper.tex"])


if __name__ == "__main__":
    unittest.main()
