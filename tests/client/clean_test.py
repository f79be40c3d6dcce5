"""The command `quillon clean`: what the runs of a document wrote, and no more, is removed."""

import os
import pty
import subprocess
import sys
import unittest
import urllib.parse

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, HomeTest  # noqa: E402

QUILLON = os.path.join(BUILD, "bin", "quillon")

PAPER = (r"\documentclass{article}\begin{document}\tableofcontents\section{A}\label{a}\ref{a}\include{parts/one}"
         r"\end{document}")


class Clean(HomeTest):
    def setUp(self):
        super().setUp()
        for name in ("DISPLAY", "WAYLAND_DISPLAY"):
            self.environment.pop(name, None)
        self.preferences()

    def typeset(self, name, text, program="pdftex -fmt=pdflatex"):
        self.file(name, text)
        self.shell(f"event QUIL exec ---- TEXT {program} {name} dest fss {self.work}\n")

    def clean(self, *words):
        done = self.run_program(QUILLON, "clean", *words)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return [os.path.relpath(line, self.work) if line.startswith("/") else line for line in done.stdout.splitlines()]

    def left(self):
        return sorted(os.path.relpath(os.path.join(folder, name), self.work)
                      for folder, _, names in os.walk(self.work) for name in names)

    def paper(self):
        self.file("parts/one.tex", "One.\n")
        self.file("notes.txt", "mine")
        self.typeset("paper.tex", PAPER)

    def test_what_a_run_wrote_goes_and_its_output_stays(self):
        self.paper()
        listed = self.clean("--yes", "paper.tex")
        self.assertEqual(sorted(listed), ["paper.aux", "paper.log", "paper.toc", "parts/one.aux"])
        self.assertEqual(self.left(), ["notes.txt", "paper.pdf", "paper.tex", "parts/one.tex"])
        self.assertEqual(self.clean("--yes", "paper.tex"), [f"There is nothing to remove for {self.work}/paper.tex."])

    def test_without_a_terminal_nothing_is_removed_unasked(self):
        self.paper()
        before = self.left()
        self.assertEqual(len(self.clean("paper.tex")), 4)
        self.assertEqual(self.left(), before)

    def answer(self, text):
        """Answers the command at a terminal; what it said."""
        master, slave = pty.openpty()
        process = subprocess.Popen([QUILLON, "clean", "paper.tex"], env=self.environment, cwd=self.work, stdin=slave,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        os.close(slave)
        os.write(master, text)
        said, _ = process.communicate(timeout=30)
        os.close(master)
        self.assertEqual(process.returncode, 0, said)
        return said.decode()

    def test_a_person_is_asked(self):
        self.paper()
        before = self.left()
        self.assertTrue(self.answer(b"n\n").endswith("Remove these files? [y/N] "))
        self.assertEqual(self.left(), before)
        self.answer(b"y\n")
        self.assertNotIn("paper.aux", self.left())

    def test_on_a_desktop_the_trash_takes_them(self):
        self.paper()
        self.environment["DISPLAY"] = ":none"
        self.clean("--yes", "paper.tex")
        trash = os.path.join(self.environment["XDG_DATA_HOME"], "Trash")
        self.assertEqual(sorted(os.listdir(os.path.join(trash, "files"))),
                         ["one.aux", "paper.aux", "paper.log", "paper.toc"])
        with open(os.path.join(trash, "info", "paper.aux.trashinfo"), encoding="utf-8") as file:
            lines = file.read().splitlines()
        self.assertEqual(lines[:2], ["[Trash Info]", "Path=" + urllib.parse.quote(self.work + "/paper.aux")])
        self.assertRegex(lines[2], r"^DeletionDate=\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d$")
        # A second file of that name gets another one there.
        self.typeset("paper.tex", PAPER)
        self.clean("--yes", "paper.tex")
        self.assertIn("paper.aux.2", os.listdir(os.path.join(trash, "files")))

    def test_what_a_run_reads_before_it_writes_it_stays(self):
        self.file("data.txt", "mine\n")
        self.typeset("x.tex", r"\newread\r \openin\r=data.txt \read\r to\n \closein\r \newwrite\w"
                              r"\immediate\openout\w=data.txt \immediate\write\w{more}\immediate\closeout\w \n.\bye",
                     "pdftex")
        self.assertEqual(self.clean("--yes", "x.tex"), ["x.log"])

    def test_what_earlier_runs_wrote_goes_too(self):
        self.typeset("paper.tex", PAPER.replace(r"\include{parts/one}", ""))
        self.typeset("paper.tex", PAPER.replace(r"\include{parts/one}", "").replace(r"\tableofcontents", ""))
        self.assertIn("paper.toc", self.clean("--yes", "paper.tex"))

    def test_the_current_document_without_a_name(self):
        self.paper()
        self.assertIn("paper.aux", self.clean("--yes"))

    def test_a_document_that_never_ran(self):
        self.file("new.tex", "x")
        self.assertEqual(self.clean("--yes", "new.tex"), [f"There is nothing to remove for {self.work}/new.tex."])

    def test_every_preamble_is_forgotten(self):
        folder = os.path.join(self.environment["XDG_CACHE_HOME"], "quillon", "snapshots")
        self.assertEqual(self.clean("--snapshots"), ["Removed 0 snapshots of preambles."])
        self.file("doc-1/pdflatex.fmt", "x", folder)
        self.file("0.note", "x", folder)
        self.assertEqual(self.clean("--snapshots"), ["Removed 1 snapshot of preambles."])
        self.assertEqual(os.listdir(folder), [])

    def test_words_that_are_not_understood(self):
        for words in (("--snapshots", "a"), ("--no",), ("--yes", "a", "b"), ("a", "--yes")):
            self.assertEqual(self.run_program(QUILLON, "clean", *words).returncode, 64)


if __name__ == "__main__":
    unittest.main()
