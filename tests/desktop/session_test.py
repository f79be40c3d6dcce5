"""A day's work with real windows and real keys: a paper with a figure, a bibliography and an index, from its sources to a
PostScript and a PDF file."""

import os
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import DesktopTest, wait_until  # noqa: E402

EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples")


class Session(DesktopTest):
    def setUp(self):
        super().setUp()
        for name in ("paper.tex", "paper.bib", "figure.mp"):
            shutil.copy(os.path.join(EXAMPLES, name), self.work)
        self.run_program(os.path.join(self.binaries, "setpaths.app", "Contents", "Linux", "setpaths"), "--defaults")
        values = self.settings()
        # The companions are started by hand here, and not between the passes of a run.
        values.update(USEPDFTEX="0", PDFTEXFORMAT="pdflatex", AUTOVIEW="0", RERUN="0", TEXWINDOW="100 200 500 900")
        self.write_preferences("".join(f"{key}={value}\n" for key, value in values.items()))

    def path(self, name):
        return os.path.join(self.work, name)

    def answer_chooser(self, title, name):
        """Types the path of a file into the chooser of that title."""
        window = wait_until(lambda: self.windows(title), f"the chooser {title}")[0]
        wait_until(lambda: self.active() == window, "the chooser's keyboard")
        self.xdotool("type", "--delay", "1", self.path(name))
        self.keys("Return")
        wait_until(lambda: not self.windows(title), "the end of the chooser")

    def settled(self, name):
        """Waits until a run has left the file and the shell has the keyboard again."""
        path = self.path(name)
        wait_until(lambda: os.path.exists(path) and os.path.getsize(path) > 0, name)
        self.run_is_over()

    def run_is_over(self):
        tools = [name + ".app/Contents/Linux" for name in ("pdftex", "bibtex", "makeindex", "mpost", "dvips", "ps2pdf")]
        wait_until(lambda: not any(self.processes_of(tool) for tool in tools), "the end of the run")
        wait_until(lambda: self.active() == self.window, "the shell's keyboard")

    def menu(self, key, letter):
        self.keys("alt+" + key)
        wait_until(self.menus_shown, "the menu")
        # A menu has the keyboard a moment after it is seen.
        wait_until(lambda: self.keys(letter) or not self.menus_shown(), "the end of the menu")

    def test_a_paper_from_its_sources_to_its_prints(self):
        self.start_desktop()
        self.keys("ctrl+m")
        self.answer_chooser("Select a mp file", "figure.mp")
        self.settled("figure.mps")
        self.keys("ctrl+o")
        self.answer_chooser("Select a tex file", "paper.tex")
        self.settled("paper.dvi")
        self.menu("f", "i")  # bibtex
        self.settled("paper.bbl")
        self.keys("ctrl+i")
        dialog = wait_until(lambda: self.windows("MakeIndex"), "the dialog of MakeIndex")[0]
        wait_until(lambda: self.active() == dialog, "the dialog's keyboard")
        self.keys("alt+a")
        self.answer_chooser("Select an idx file", "paper.idx")
        self.activate(dialog)
        # The dialog takes keys again a moment after the chooser over it has gone.
        wait_until(lambda: (self.windows("MakeIndex") and self.keys("Return")) or os.path.exists(self.path("paper.ind")),
                   "the run of MakeIndex")
        self.settled("paper.ind")
        for _ in range(2):
            before = os.stat(self.path("paper.dvi")).st_mtime_ns
            self.press("ctrl+t", lambda: os.path.exists(self.path("paper.dvi")) and
                       os.stat(self.path("paper.dvi")).st_mtime_ns != before, "the next DVI file")
            self.run_is_over()
        self.menu("f", "d")  # dvips
        self.settled("paper.ps")
        self.menu("f", "p")  # ps2pdf
        self.settled("paper.pdf")
        text = subprocess.run(["pdftotext", self.path("paper.pdf"), "-"], capture_output=True, text=True, check=True).stdout
        for word in ("handbooks [1]", "Ada Linden", "shelter from, 1"):
            self.assertIn(word, text)
        self.assertIn("This is makeindex", self.console())


if __name__ == "__main__":
    unittest.main()
