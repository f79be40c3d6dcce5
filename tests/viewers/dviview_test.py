"""The DVI previewer stands for the viewer that the person chose, or for xdvi, on both ways to it."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, Applications, DesktopTest, ServiceTest, wait_until  # noqa: E402

VIEW_DVI = "menu 129 10\n"


class Dviview(Applications, ServiceTest):
    system = ()

    def setUp(self):
        super().setUp()
        self.prepare()
        self.source, self.dvi = self.file("a paper.tex", "x"), self.file("a paper.dvi", "x")

    def view(self, until, times=2, **settings):
        """Shows the current DVI file TIMES times in a shell that stays until UNTIL holds of what it printed."""
        self.preferences(TEXFILE=self.source.replace(" ", "\x1f"), **settings)
        script = self.file("script", VIEW_DVI * times + f"wait FILE {self.home}/end\n")
        self.start_shell("--script", script, *self.system)
        wait_until(lambda: until(self.output()), "the viewer")
        self.file("end", "", self.home)
        wait_until(self.ended, "the end of the shell")
        return self.output()

    def test_the_chosen_viewer_shows_it(self):
        self.view(lambda _: len(self.starts("viewer")) == 2, DVIPREVIEW=self.recorder("viewer"))
        self.assertEqual(self.starts("viewer"), [[self.dvi]] * 2)

    def test_a_desktop_entry_shows_it(self):
        entry = self.entry("org.example.Viewer", f"Exec={self.recorder('viewer')} %f\n")
        self.view(lambda _: len(self.starts("viewer")) == 2, DVIPREVIEW=entry)
        self.assertEqual(self.starts("viewer"), [[self.dvi]] * 2)

    def test_without_a_viewer_it_says_what_to_install(self):
        self.environment["PATH"] = self.programs
        for program in ("sh", "ls", "env", "sed", "cat"):
            os.symlink("/bin/" + program, os.path.join(self.programs, program))
        self.view(lambda said: said.count("Install texlive-binaries, which has xdvi") == 2)

    def test_a_previewer_that_is_itself_is_said(self):
        own = os.path.join(BINARIES, "dviview.app")
        self.view(lambda said: said.count("is dviview itself") == 2, DVIPREVIEW=own)
        self.assertLessEqual(len(self.processes_of("dviview.app/Contents/Linux/dviview")), 1)

    def test_a_previewer_that_has_gone_is_said(self):
        self.view(lambda said: said.count("I can't find the DVI previewer /none/viewer") == 2, DVIPREVIEW="/none/viewer")

    def test_a_document_that_is_sent_while_it_leaves_is_not_lost(self):
        # Each report makes the shell ask it to leave.
        self.view(lambda said: said.count("I can't find the DVI previewer /none/viewer") == 12, times=12,
                  DVIPREVIEW="/none/viewer")

    def test_it_ends_by_itself(self):
        self.view(lambda _: len(self.starts("viewer")) == 2, DVIPREVIEW=self.recorder("viewer"))
        wait_until(lambda: not self.processes_of("dviview.app/Contents/Linux/dviview"))


class DviviewOnAnEarlierSystem(Dviview):
    system = ("--system", "9")


class Xdvi(DesktopTest):
    def xdvi(self):
        """The processes that are xdvi by now, and not what starts it."""
        return [pid for pid in self.processes_of("paper.dvi\0")
                if os.path.basename(os.readlink(f"/proc/{pid}/exe")).startswith("xdvi")]

    def viewers(self):
        return self.xdotool("search", "--onlyvisible", "--class", "XDvi")

    def test_one_window_shows_run_after_run(self):
        path = self.file("paper.tex", "One.\\bye\n")
        self.preferences(USEPDFTEX="0", AUTOVIEW="1", PDFTEXFORMAT="pdftex")
        self.start_desktop(path)
        window = wait_until(self.viewers, "the viewer's window")
        (viewer,) = self.xdvi()
        wait_until(lambda: not self.processes_of("pdftex.app/Contents/Linux"))
        for count in range(3):
            with open(path, "a", encoding="utf-8") as file:
                file.write("%\n")
            before = os.stat(self.work + "/paper.dvi").st_mtime_ns
            self.press("ctrl+t", lambda: os.path.exists(self.work + "/paper.dvi") and
                       os.stat(self.work + "/paper.dvi").st_mtime_ns != before, "the next run")
            wait_until(lambda: not self.processes_of("pdftex.app/Contents/Linux"))
            wait_until(lambda: not self.processes_of("Helpers/open"))
        self.assertEqual(self.xdvi(), [viewer])
        # A look at the windows fails when one goes meanwhile.
        wait_until(lambda: self.viewers() == window, "one window")
        wait_until(lambda: self.active() == self.window, "the keyboard in the shell's window")
        self.addCleanup(os.kill, viewer, 15)


if __name__ == "__main__":
    unittest.main()
