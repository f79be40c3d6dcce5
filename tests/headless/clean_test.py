"""The window "clean", answered by a script: what a document's runs wrote is listed, and what stays ticked is removed."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402

PAPER = (r"\documentclass{article}\begin{document}\tableofcontents\section{A}\label{a}\ref{a}\include{parts/one}"
         r"\end{document}")
CLEAN, FIRST_FILE = "menu 129 22\n", 101


class Clean(HomeTest):
    def setUp(self):
        super().setUp()
        for name in ("DISPLAY", "WAYLAND_DISPLAY"):
            self.environment.pop(name, None)
        self.main = os.path.join(self.work, "paper.tex")

    def typeset(self, text=PAPER):
        self.file("parts/one.tex", "One.\n")
        self.file("paper.tex", text)
        self.preferences(TEXFILE=self.main)
        self.shell(f"event QUIL exec ---- TEXT pdftex -fmt=pdflatex paper.tex dest fss {self.work}\n")

    def clean(self, *steps):
        return self.shell("dialog clean\n" + "".join(f"  {step}\n" for step in steps) + CLEAN)

    def left(self):
        return sorted(os.path.relpath(os.path.join(folder, name), self.work)
                      for folder, _, names in os.walk(self.work) for name in names)

    def test_all_files_are_ticked_at_first(self):
        self.typeset()
        self.assertIn("4 files were deleted.\n", self.clean("press 1"))
        self.assertEqual(self.left(), ["paper.pdf", "paper.tex", "parts/one.tex"])
        self.assertIn(f"There is nothing to remove for {self.main}.\n", self.clean("press 1"))

    def test_what_is_not_ticked_stays(self):
        self.typeset()
        before = self.left()
        self.assertIn("3 files were deleted.\n", self.clean(f"check {FIRST_FILE} 0", "press 1"))
        self.assertEqual(len(before) - len(self.left()), 3)
        self.assertIn("1 file was deleted.\n", self.clean("press 4", f"check {FIRST_FILE} 1", "press 1"))

    def test_all_and_none_tick_and_nothing_ticked_is_refused(self):
        self.typeset()
        before = self.left()
        self.assertNotIn("deleted", self.clean("press 4", "press 1"))
        self.assertIn('window "clean": its answers left it open, cancelled\n', self.errors)
        self.assertEqual(self.left(), before)
        self.assertIn("4 files were deleted.\n", self.clean("press 4", "press 3", "press 1"))

    def test_cancel_removes_nothing(self):
        self.typeset()
        before = self.left()
        self.assertNotIn("deleted", self.clean("press 2"))
        self.assertNotIn("deleted", self.shell(CLEAN))
        self.assertIn('window "clean": no answer was queued, cancelled\n', self.errors)
        self.assertEqual(self.left(), before)

    def test_the_trash_takes_them_on_a_desktop(self):
        self.typeset()
        self.environment["DISPLAY"] = ":none"
        self.assertIn("4 files were moved to the trash.\n", self.clean("press 1"))
        trash = os.path.join(self.environment["XDG_DATA_HOME"], "Trash", "files")
        self.assertEqual(sorted(os.listdir(trash)), ["one.aux", "paper.aux", "paper.log", "paper.toc"])

    def test_a_trash_that_cannot_be_written_is_none(self):
        self.typeset()
        self.environment["DISPLAY"] = ":none"
        self.file("Trash", "no folder", self.environment["XDG_DATA_HOME"])
        self.assertIn("4 files were deleted.\n", self.clean("press 1"))

    def test_a_document_that_never_ran(self):
        self.file("paper.tex", PAPER)
        self.preferences(TEXFILE=self.main)
        self.assertIn(f"No run of {self.main} is on record, so I don't know what its runs wrote. Typeset it once.\n",
                      self.shell(CLEAN))
        self.assertNotIn("window", self.errors)

    def test_without_a_document_the_item_is_grey(self):
        self.preferences()
        self.assertIn("\n22 - - - Clean...\n", self.shell("print menu 129\n"))

    def test_a_row_that_is_not_there(self):
        self.typeset()
        self.clean(f"check {FIRST_FILE + 4} 0", "press 2")
        self.assertIn(f'window "clean" has no such control: {FIRST_FILE + 4}\n', self.errors)

    def test_a_file_that_cannot_be_removed_is_named_and_stays(self):
        self.typeset()
        self.environment["DISPLAY"] = ":none"
        # The trash has no name left for it.
        for name in ("one.aux", *(f"one.aux.{number}" for number in range(2, 1001))):
            self.file(f"Trash/info/{name}.trashinfo", "", self.environment["XDG_DATA_HOME"])
        output = self.clean("press 1")
        self.assertIn(f"I can't remove the file {self.work}/parts/one.aux.\n", output)
        self.assertIn("3 files were moved to the trash.\n", output)
        self.assertIn("parts/one.aux", self.left())


if __name__ == "__main__":
    unittest.main()
