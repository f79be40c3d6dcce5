"""The window "Clean" with real keys: it lists what the runs wrote, all of it ticked, and moves it to the trash."""

import os
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import Desk  # noqa: E402
from harness import wait_until  # noqa: E402

PAPER = r"\documentclass{article}\begin{document}\tableofcontents\section{A}Text.\end{document}"
TITLE = "^Clean$"


class Clean(Desk):
    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXWINDOW="100 200 400 800", PDFTEXFORMAT="pdflatex",
                         TEXFORMATS="/var/lib/texmf/web2c//")
        path = self.file("a paper.tex", PAPER)
        self.start_desktop(path)
        wait_until(lambda: self.left("a paper.pdf") and not self.processes_of("pdftex.app/Contents/Linux"), "the run")
        wait_until(lambda: "Transcript written on" in self.console())
        self.trash = os.path.join(self.environment["XDG_DATA_HOME"], "Trash", "files")

    def left(self, name):
        return os.path.exists(os.path.join(self.work, name))

    def trashed(self):
        return sorted(os.listdir(self.trash)) if os.path.isdir(self.trash) else []

    def open_window(self):
        self.press("alt+f", self.menus_shown, "the menu")
        self.keys("c")
        (window,) = wait_until(lambda: self.windows(TITLE), "the window")
        wait_until(lambda: self.active() == window, "the keyboard in the window")

    def close_by(self, *keys):
        # A button that its letter has pressed takes effect a moment later, so a key behind it may be too early.
        def closed():
            if self.windows(TITLE):
                self.keys(*keys)
            end = time.monotonic() + 5
            wait_until(lambda: not self.windows(TITLE) or time.monotonic() > end)
            return not self.windows(TITLE)

        wait_until(closed, "the end of the window")

    def test_return_moves_all_to_the_trash(self):
        self.open_window()
        self.close_by("Return")
        wait_until(lambda: self.trashed() == ["a paper.aux", "a paper.log", "a paper.toc"], "the files in the trash")
        self.assertTrue(self.left("a paper.pdf"))
        wait_until(lambda: "3 files were moved to the trash." in self.console())

    def test_escape_removes_nothing(self):
        self.open_window()
        self.close_by("Escape")
        self.assertTrue(self.left("a paper.aux"))
        self.assertEqual(self.trashed(), [])

    def test_the_blank_takes_the_tick_of_a_file_away(self):
        self.open_window()
        self.keys("Down", "space")
        self.close_by("Return")
        wait_until(lambda: len(self.trashed()) == 2, "two files in the trash")
        self.open_window()  # the file that stayed is listed alone
        self.close_by("Return")
        wait_until(lambda: len(self.trashed()) == 3, "the third file in the trash")

    def test_with_no_file_ticked_it_stays_open(self):
        self.open_window()
        self.keys("alt+n", "Return")
        self.keys("alt+a")
        self.close_by("Return")
        wait_until(lambda: len(self.trashed()) == 3, "the files in the trash")


if __name__ == "__main__":
    unittest.main()
