"""zathura and xdvi, the real ones, show what runs leave: one window, read again, told the line that was edited."""

import os
import shutil
import signal
import subprocess
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, Applications, DesktopTest, stop, wait_until  # noqa: E402

ZATHURA = "org.pwmt.zathura"
QUILLON = os.path.join(BUILD, "bin", "quillon")
TYPESET, VIEW_PDF, SHOW = "ctrl+t", "ctrl+p", "ctrl+j"
PAGES = "\\documentclass{article}\\begin{document}\n%s\\end{document}\n"


class RealViewers(Applications, DesktopTest):
    def setUp(self):
        super().setUp()
        self.prepare()
        self.environment["LIBGL_ALWAYS_SOFTWARE"] = "1"
        # The search for leaks waits for ever in a command that zathura has started.
        self.environment["ASAN_OPTIONS"] = "detect_leaks=0"
        self.addCleanup(self.end_viewers)

    def end_viewers(self):
        def ended():
            # What was about to start one may still do so.
            running = self.viewers("zathura") + self.viewers("xdvi")
            for process in running:
                os.kill(process, signal.SIGKILL)
            return not running

        wait_until(ended, "the end of the viewers")

    def viewers(self, program):
        return self.running_as(program, self.work)

    def pages(self, name, count):
        """A document whose page N is in line 3N-1; its path."""
        return self.file(name, PAGES % "".join(f"Page {page}.\n\n\\newpage\n" for page in range(1, count + 1)))

    def wait_for_run(self, output, before):
        wait_until(lambda: self.written(output) not in (0, before), "the output")
        wait_until(lambda: not self.processes_of("pdftex.app/Contents/Linux"), "the end of the run")
        wait_until(lambda: not self.processes_of("Helpers/open"), "the end of the command")

    def written(self, path):
        """When the file was written; 0 while there is none, since a run puts the old output aside."""
        try:
            return os.stat(path).st_mtime_ns
        except FileNotFoundError:
            return 0

    def typeset(self, output):
        """Runs the engine as the person does, in the shell's window."""
        before = self.written(output)
        self.press(TYPESET, lambda: self.written(output) not in (0, before), "the output")
        self.wait_for_run(output, before)

    def zathura(self, name):
        """A property of the one zathura that runs; None while it has no document."""
        viewers = self.viewers("zathura")
        if len(viewers) != 1:
            return None
        try:
            viewer = self.bus().get_object(f"{ZATHURA}.PID-{viewers[0]}", "/org/pwmt/zathura", introspect=False)
            return viewer.Get(ZATHURA, name, dbus_interface=dbus.PROPERTIES_IFACE)
        except dbus.exceptions.DBusException:
            return None

    def zathura_is_there(self):
        return self.zathura("numberofpages")

    def start_with(self, path, **settings):
        self.run_program(os.path.join(self.binaries, "setpaths.app", "Contents", "Linux", "setpaths"), "--defaults")
        values = dict(self.settings(), PDFVIEW="/usr/bin/zathura", **settings)
        values.pop("DVIPREVIEW", None)  # without one it is xdvi
        self.write_preferences("".join(f"{key}={value}\n" for key, value in values.items()))
        self.start_desktop(path)

    def test_ten_runs_leave_one_zathura_that_never_takes_the_keyboard(self):
        path, output = self.pages("a paper.tex", 1), os.path.join(self.work, "a paper.pdf")
        self.start_with(path)
        wait_until(self.zathura_is_there, "zathura")
        (viewer,), window = self.viewers("zathura"), self.xdotool("search", "--onlyvisible", "--class", "zathura")
        for count in range(2, 11):
            self.pages("a paper.tex", count)
            self.typeset(output)
            wait_until(lambda: self.zathura("numberofpages") == count, "the new pages")
            self.assertEqual(self.active(), self.window)
        self.assertEqual(self.viewers("zathura"), [viewer])
        self.assertEqual(self.xdotool("search", "--onlyvisible", "--class", "zathura"), window)

    def test_a_save_reloads_it_while_the_person_goes_on_writing(self):
        path = self.pages("paper.tex", 1)
        self.start_with(path, WATCH="1")
        wait_until(self.zathura_is_there, "zathura")
        self.wait_for_run(os.path.join(self.work, "paper.pdf"), 0)
        writer = subprocess.Popen(["xterm", "-title", "an editor", "-e", "cat"], env=self.environment)
        self.addCleanup(stop, writer)
        (window,) = wait_until(lambda: self.windows("^an editor$"), "the editor")
        self.activate(window)
        for count in (2, 3):
            self.pages("paper.tex", count)
            wait_until(lambda: self.zathura("numberofpages") == count, "the new pages")
            self.assertEqual(self.active(), window)

    def test_a_viewer_that_the_person_asks_for_comes_forward(self):
        path = self.pages("paper.tex", 1)
        self.start_with(path)
        wait_until(self.zathura_is_there, "zathura")
        (window,) = self.xdotool("search", "--onlyvisible", "--class", "zathura")
        self.wait_for_run(os.path.join(self.work, "paper.pdf"), 0)
        viewer = self.viewers("zathura")
        self.press(VIEW_PDF, lambda: self.active() == window, "the viewer in front")
        self.assertEqual(self.viewers("zathura"), viewer)

    def test_zathura_shows_the_line_that_was_edited_last(self):
        path = self.pages("paper.tex", 8)
        self.start_with(path, ADDSPECIALS="1", Editor=self.recorder("kate"), EDITEDFILE=path, EDITEDLINE="14")
        wait_until(self.zathura_is_there, "zathura")
        wait_until(lambda: self.zathura("pagenumber") == 4, "page 5, counted from 0")
        self.wait_for_run(os.path.join(self.work, "paper.pdf"), 0)
        self.assertEqual(self.run_program(QUILLON, "edit", "+20", path).returncode, 0)
        self.started("kate")
        self.typeset(os.path.join(self.work, "paper.pdf"))
        wait_until(lambda: self.zathura("pagenumber") == 6, "page 7, counted from 0")
        self.assertEqual(self.active(), self.window)

    def test_a_key_shows_the_edited_line_in_zathura_and_brings_it_forward(self):
        path = self.pages("paper.tex", 8)
        self.start_with(path, ADDSPECIALS="1", Editor=self.recorder("kate"))
        wait_until(self.zathura_is_there, "zathura")
        self.wait_for_run(os.path.join(self.work, "paper.pdf"), 0)
        (window,) = self.xdotool("search", "--onlyvisible", "--class", "zathura")
        for line, page in (("20", 6), ("11", 3)):
            self.assertEqual(self.run_program(QUILLON, "edit", "+" + line, path).returncode, 0)
            self.activate(self.window)
            self.press(SHOW, lambda: self.active() == window, "the viewer in front")
            wait_until(lambda: self.zathura("pagenumber") == page, f"the page of line {line}")
        self.assertNotIn("paper.pdf is shown", self.console())

    def test_a_key_shows_the_first_problem_in_zathura(self):
        path = self.pages("paper.tex", 6)
        with open(path, encoding="utf-8") as file:
            text = file.read().replace("Page 5.", "Page 5, \\ref{nowhere}.")
        self.file("paper.tex", text)
        self.start_with(path, ADDSPECIALS="1")
        wait_until(self.zathura_is_there, "zathura")
        self.wait_for_run(os.path.join(self.work, "paper.pdf"), 0)
        self.press(SHOW, lambda: self.zathura("pagenumber") == 4, "page 5, counted from 0")

    def test_a_click_in_zathura_opens_the_editor_at_the_line(self):
        path = self.pages("it's a paper.tex", 3)
        self.start_with(path, ADDSPECIALS="1", Editor=self.recorder("kate"))
        wait_until(self.zathura_is_there, "zathura")
        self.wait_for_run(os.path.join(self.work, "it's a paper.pdf"), 0)
        (window,) = self.xdotool("search", "--onlyvisible", "--class", "zathura")
        self.activate(window)

        def clicked():
            # Where no text is, nothing happens; the first line of the page is somewhere in its upper half.
            for y in range(40, 400, 12):
                if self.starts("kate"):
                    return True
                self.xdotool("mousemove", "--window", window, "300", str(y), "keydown", "ctrl", "click", "1", "keyup", "ctrl")
            return self.starts("kate")

        wait_until(clicked, "the editor")
        option, line, file = self.starts("kate")[0]
        self.assertEqual((option, file), ("--line", path))
        self.assertIn(int(line), range(2, 5), "the lines of page 1")

    def opened_by_a_click(self, viewer, click):
        """The line that the editor was told after the set-up wrote the viewer's settings and CLICK was done in its window
        at places down the page."""
        path = self.pages("it's a paper.tex", 3)
        setpaths = os.path.join(BUILD, "bin", "setpaths")
        self.run_program(setpaths, "--defaults")
        self.write_preferences("".join(f"{key}={value}\n" for key, value in
                                       dict(self.settings(), Editor=self.recorder("kate")).items()))
        self.assertEqual(self.run_program(setpaths, "--reverse-search", viewer).returncode, 0)
        self.assertEqual(self.run_program("pdflatex", "-synctex=1", os.path.basename(path)).returncode, 0)
        self.start_window("it's a paper", viewer, os.path.join(self.work, "it's a paper.pdf"))
        self.activate(self.window)

        def clicked():
            for y in range(200, 420, 12):
                if self.starts("kate"):
                    return True
                self.xdotool("mousemove", "--window", self.window, "250", str(y))
                click()
            return self.starts("kate")

        wait_until(clicked, "the editor")
        option, line, file = self.starts("kate")[0]
        self.assertEqual((option, file), ("--line", path))
        return int(line)

    @unittest.skipUnless(shutil.which("okular"), "Okular, which brings a whole desktop along, is not installed")
    def test_a_click_in_okular_opens_the_editor_once_its_settings_are_written(self):
        line = self.opened_by_a_click("okular", lambda: self.xdotool("keydown", "shift", "click", "1", "keyup", "shift"))
        self.assertIn(line, range(2, 5), "the lines of page 1")

    def test_the_menu_of_a_click_in_qpdfview_opens_the_editor_once_its_settings_are_written(self):
        def choose():
            # The first item of the menu is the one for the source, where a text is.
            self.xdotool("click", "3", "sleep", "0.3", "key", "Down", "Return", "sleep", "0.3", "key", "Escape")

        self.assertIn(self.opened_by_a_click("qpdfview", choose), range(2, 5), "the lines of page 1")

    def test_xdvi_shows_the_line_that_was_edited_last(self):
        path = self.pages("paper.tex", 4)
        self.start_with(path, USEPDFTEX="0", ADDSPECIALS="1", EDITEDFILE=path, EDITEDLINE="8")
        (window,) = wait_until(lambda: self.xdotool("search", "--onlyvisible", "--class", "XDvi"), "the viewer's window")
        self.wait_for_run(os.path.join(self.work, "paper.dvi"), 0)
        # On the way there are children of its own, which become other programs.
        (viewer,) = wait_until(lambda: len(self.viewers("xdvi")) == 1 and self.viewers("xdvi"), "one viewer")
        with open(f"/proc/{viewer}/cmdline", "rb") as file:
            self.assertIn(b"\0-sourceposition\0" + b"8 " + os.fsencode(path) + b"\0", file.read())
        before = self.picture(window)
        self.add_preferences("EDITEDLINE=2\n")
        self.typeset(os.path.join(self.work, "paper.dvi"))
        wait_until(lambda: self.picture(window) != before, "another page")
        # What told it the line was another xdvi, which ends then.
        wait_until(lambda: self.viewers("xdvi") == [viewer], "one viewer")
        self.assertEqual(self.active(), self.window)

    def test_a_key_shows_the_edited_line_in_xdvi_and_brings_it_forward(self):
        path = self.pages("paper.tex", 4)
        self.start_with(path, USEPDFTEX="0", ADDSPECIALS="1", EDITEDFILE=path, EDITEDLINE="2")
        (window,) = wait_until(lambda: self.xdotool("search", "--onlyvisible", "--class", "XDvi"), "the viewer's window")
        self.wait_for_run(os.path.join(self.work, "paper.dvi"), 0)
        (viewer,) = wait_until(lambda: len(self.viewers("xdvi")) == 1 and self.viewers("xdvi"), "one viewer")
        before = self.picture(window)
        self.add_preferences("EDITEDLINE=11\n")
        self.activate(self.window)
        self.press(SHOW, lambda: self.active() == window, "the viewer in front")
        wait_until(lambda: self.picture(window) != before, "another page")
        wait_until(lambda: self.viewers("xdvi") == [viewer], "one viewer")


if __name__ == "__main__":
    unittest.main()
