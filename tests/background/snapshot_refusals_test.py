"""Documents that are not remembered, or not as a whole, and what keeps them from it."""

import os
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import SnapshotTest  # noqa: E402


class Refusals(SnapshotTest):
    def test_a_program_that_is_started_ends_the_snapshot_before(self):
        # The document as a whole is refused, since a proof that starts programs proves nothing.
        self.document(["\\newcommand\\x{y}", "\\immediate\\write18{kpsewhich article.cls}"])
        self.assertEqual(self.remember(), "refused: it starts a program")
        self.document(["\\newcommand\\x{y}", "\\newread\\f\\openin\\f=|\"kpsewhich article.cls\" \\closein\\f"])
        self.assertEqual(self.remember(), "refused: it starts a program")

    def test_shell_escape_and_other_options(self):
        self.document(["\\newcommand\\x{y}"])
        for option in ("-shell-escape", "-synctex=0", "-output-directory=x", "-ini", "-jobname=y", "-8bit"):
            self.assertEqual(self.remember(options=(option,)), "the option " + option)

    def test_a_distribution_that_starts_any_program(self):
        self.environment["shell_escape"] = "t"
        self.document(["\\immediate\\write18{touch started}"])
        self.assertEqual(self.remember(), "refused: shell escape")
        self.assertFalse(os.path.exists(os.path.join(self.work, "started")))

    def test_a_format_in_the_document_s_folder(self):
        self.document(["\\newcommand\\x{y}"])
        self.file("pdflatex.fmt", "x", self.work)
        self.assertEqual(self.remember(), "no snapshot: the format is not found")

    def test_contents_of_files_that_are_written_again(self):
        said = self.assert_remembered(["\\newcommand\\x{y}", "\\begin{filecontents}[overwrite]{own.txt}", "text",
                                       "\\end{filecontents}"], "\\x\\input{own.txt}", lines=2)
        self.assertIn("own.txt", said)

    def test_an_engine_that_works_too_long_and_one_that_is_stopped(self):
        folder = os.path.join(self.home, "bin")
        os.makedirs(folder)
        os.symlink(shutil.which("kpsewhich"), os.path.join(folder, "kpsewhich"))
        self.document(["\\newcommand\\x{y}"])
        for number, said in (("KILL", "no snapshot: ended early: a run was stopped"),
                             ("XCPU", "refused: it takes too long")):
            self.engine = self.file("pdftex", f"#!/bin/sh\nkill -{number} $$\n", folder, 0o755)
            self.settle(self.engine)
            self.tool = self.bundle("pdf" + number.lower(), self.engine, "PXET")
            self.assertEqual(self.remember(), said)
            self.assertEqual([name for name in os.listdir(self.snapshots) if name.endswith(".note")] != [],
                             number == "XCPU")

    def test_a_document_that_is_different_at_every_run(self):
        self.document(["\\newcommand\\x{y}"], "\\the\\pdfrandomseed")
        self.assertEqual(self.remember(), "refused: it is different at every run: doc.pdf")

    def test_a_preamble_that_asks_for_the_engine_s_clock(self):
        self.document(["\\edef\\x{\\the\\pdfrandomseed}"], "\\x")
        self.assertEqual(self.remember(), "refused: it is different at every run: doc.pdf")

    def test_a_preamble_that_says_too_much(self):
        self.document(["\\newcount\\n\\loop\\ifnum\\n<9000\\advance\\n1\\message{" + "much " * 20 + "}\\repeat"])
        self.assertEqual(self.remember(), "refused: it says too much")

    def test_a_body_in_another_file(self):
        self.file("body.tex", "\\begin{document}x\\end{document}\n")
        self.file("doc.tex", "\\documentclass{article}\n\\input{body}\n")
        self.assertEqual(self.remember(), "no snapshot: there is no preamble to read")

    def test_a_file_that_the_run_itself_writes(self):
        self.assert_remembered(["\\newcommand\\x{y}", "\\InputIfFileExists{doc.own}{}{}"],
                               "\\x\\newwrite\\f\\immediate\\openout\\f=doc.own "
                               "\\immediate\\write\\f{\\relax}", lines=2)


if __name__ == "__main__":
    unittest.main()
