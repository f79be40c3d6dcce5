"""The problems window with real keys, the next and the previous problem, and the line that sums a run up."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import Desk  # noqa: E402
from harness import wait_until  # noqa: E402
from harness.applications import Applications  # noqa: E402

LINES = ["See \\undefd", "\\ref{a}", "\\hbox to 1pt{wide}", "\\ref{b}", "\\undefd"]
BAD = "\\documentclass{article}\\begin{document}\n" + "\n".join(LINES) + "\n\\input{my part}\n\\end{document}\n"


class Problems(Applications, Desk):
    def setUp(self):
        super().setUp()
        self.prepare()
        self.recorder("kate")

    def run_bad(self, text=BAD):
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXWINDOW="100 200 400 800",
                         Editor=os.path.join(self.programs, "kate"))
        self.file("my part.tex", "a\n\\undefd\n")
        self.file("bad.tex", text)
        self.start_desktop()
        self.object = self.shell_object()
        self.object.Exec("pdflatex -interaction=nonstopmode bad.tex", self.work, timeout=90)
        self.goes_to(2)

    def goes_to(self, line, name="bad.tex"):
        """Waits until the editor was told this line alone since the last call."""
        expected = [["--line", str(line), os.path.join(self.work, name)]]
        wait_until(lambda: self.starts("kate"), "the editor")
        wait_until(lambda: self.starts("kate") == expected or len(self.starts("kate")[0]) == 3, "its words")
        self.assertEqual(self.starts("kate"), expected)
        for path in self.records("kate"):
            os.unlink(path)

    def window_of_problems(self):
        self.press("ctrl+l", lambda: self.windows("^Problems$"), "the window")
        (window,) = self.windows("^Problems$")
        wait_until(lambda: self.active() == window, "the keyboard in the window")
        return window

    def test_keys_go_through_the_problems_from_the_shells_window(self):
        self.run_bad()
        self.activate(self.window)
        for key, place in (("ctrl+n", (2,)), ("ctrl+n", (3,)), ("ctrl+u", (2,)), ("ctrl+u", (2, "my part.tex")),
                           ("ctrl+n", (2,))):
            self.press(key, lambda: self.starts("kate"), "the editor")
            self.goes_to(*place)

    def test_the_window_opens_the_editor_on_the_line(self):
        self.run_bad()
        window = self.window_of_problems()
        self.keys("Return")
        self.goes_to(2)
        self.activate(window)
        self.keys("Down", "Down", "Return")
        self.goes_to(4)
        self.activate(window)
        self.keys("ctrl+n")
        self.goes_to(5)
        self.activate(window)
        self.keys("End", "Return")
        self.goes_to(2, "my part.tex")
        self.activate(window)
        self.keys("Escape")
        wait_until(lambda: not self.windows("^Problems$"), "the end of the window")

    def test_what_is_left_out_is_passed_over(self):
        self.run_bad()
        window = self.window_of_problems()
        self.keys("shift+Tab", "space")  # the bad boxes
        self.keys("shift+Tab", "space")  # the references
        for line, name in ((2, "bad.tex"), (6, "bad.tex"), (2, "my part.tex"), (2, "bad.tex")):
            self.activate(self.window)
            self.keys("ctrl+n")
            self.goes_to(line, name)
        self.activate(window)
        self.keys("shift+Tab", "shift+Tab", "space")

    def test_a_hundred_thousand_rows_are_quick(self):
        self.run_bad("\\tracinglostchars2\\documentclass{article}\\begin{document}\n\\newcount\\n"
                     "\\setbox0\\vbox{\\loop\\ifnum\\n<100002 \\setbox1\\hbox to1pt{\\kern2pt}\\advance\\n1 \\repeat}"
                     "\\undefd\n"
                     "\\end{document}\n")
        self.assertEqual(len(self.object.Problems(timeout=60)), 100000)
        self.window_of_problems()
        self.keys("End", "Return")
        self.goes_to(2)

    def test_the_run_is_summed_up_below_the_console_and_not_in_it(self):
        self.run_bad()
        self.assertNotIn("undefined references, ", self.console())


if __name__ == "__main__":
    unittest.main()
