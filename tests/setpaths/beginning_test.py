"""The first start, and a shell that takes over what the set-up has changed."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, Applications, DesktopTest, ServiceTest, program_of, wait_until  # noqa: E402
from harness.clients import QUILLON, Starts  # noqa: E402

SETPATHS = program_of(os.path.join(BINARIES, "setpaths.app"))
ENTRY = "[Desktop Entry]\nType=Application\nName=%s\nExec=%s %%f\nMimeType=%s\n"


class FirstStart(Starts, DesktopTest):
    def begin(self):
        self.assertFalse(os.path.exists(self.preferences_path))
        self.start_window("^Set Up Quillon$", QUILLON)
        self.activate(self.window)

    def test_return_confirms_and_the_shell_starts(self):
        self.begin()
        # A key that is pressed before the window takes keys is lost.
        wait_until(lambda: self.keys("Return") or os.path.exists(self.preferences_path), "the preferences")
        wait_until(lambda: self.windows("^Quillon$"), "the shell's window")
        self.assertEqual(self.setting("AUTOVIEW"), "1")
        self.assertIn("texmf", self.setting("TEXINPUTS"))

    def test_who_leaves_it_gets_no_shell_and_nothing_is_written(self):
        self.begin()
        wait_until(lambda: self.keys("Escape") or self.ended(), "the end")
        self.assertEqual(self.running.returncode, 1)
        self.assertEqual(self.output(), "quillon: nothing is set up; start quillon again, or run setpaths\n")
        self.assertFalse(os.path.exists(self.preferences_path))

    def test_a_command_of_a_terminal_asks_nothing(self):
        self.file("x.tex", "Hello.\\bye\n")
        self.assertEqual(self.quillon("exec", "pdftex", "x.tex")[0], 0)
        self.assertEqual(self.setting("AUTOVIEW"), "1")


class Choosing(Applications, DesktopTest):
    """The chooser for a viewer offers viewers, and all the rest on request."""

    def setUp(self):
        super().setUp()
        self.prepare()
        self.environment.update(XDG_DATA_DIRS=os.path.join(self.home, "share"), XDG_CONFIG_DIRS=os.path.join(self.home, "etc"))
        self.preferences(USEPDFTEX="1", AUTOVIEW="1", TEXFILE=self.file("x.tex", "Hello.\\bye\n"))
        applications = os.path.join(self.home, "share", "applications")
        for name, types in (("reader", "application/pdf;"), ("org.kde.kate", "application/pdf;text/plain;"),
                            ("player", "audio/ogg;"), ("org.quillon.Shell", "application/pdf;")):
            self.file(name + ".desktop", ENTRY % (name, self.recorder(name), types), applications)

    def typeset(self):
        self.start_desktop()
        self.press("ctrl+t", lambda: self.windows("^Find a pdf viewer$"), "the chooser")
        self.activate(*self.windows("^Find a pdf viewer$"))

    def chosen(self):
        path = wait_until(lambda: self.setting("PDFVIEW"), "the choice")
        return os.path.basename(path)

    def test_return_takes_a_viewer_and_never_an_editor(self):
        self.typeset()
        wait_until(lambda: self.keys("Return") or self.setting("PDFVIEW"), "the choice")
        self.assertEqual(self.chosen(), "reader.desktop")

    def test_all_applications_are_shown_on_request(self):
        self.typeset()
        self.xdotool("type", "player")
        # The box is switched a moment after its key; until then nothing can be chosen.
        self.keys("alt+a")
        wait_until(lambda: self.keys("Return") or self.setting("PDFVIEW"), "the choice")
        self.assertEqual(self.chosen(), "player.desktop")


class Running(Applications, ServiceTest):
    """A shell that runs."""

    def setUp(self):
        super().setUp()
        self.prepare()
        self.preferences(USEPDFTEX="1", TEXINPUTS=".", DATABASE="0", AUTOVIEW="1")
        self.start_shell("--service")

    def save(self):
        done = self.run_program(SETPATHS, "--defaults")  # what is set stays
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_a_search_path_holds_at_once(self):
        path = self.file("new.tex", "New.\\bye\n", os.path.join(self.home, "inputs"))
        self.assertEqual(self.shell_object().Locate("new.tex"), "")
        self.preferences(USEPDFTEX="1", TEXINPUTS=os.path.dirname(path) + "//", DATABASE="0")
        self.save()
        wait_until(lambda: self.shell_object().Locate("new.tex") == path, "the new path")

    def test_new_databases_are_read(self):
        folder = os.path.join(self.home, "inputs")
        first = self.file("first.tex", "First.\\bye\n", folder)
        self.preferences(USEPDFTEX="1", TEXINPUTS=folder + "//", DATABASE="1")
        self.save()
        wait_until(lambda: self.shell_object().Locate("first.tex") == first, "the first file")
        # In a folder that is new, which neither the databases nor the expanded path have.
        second = self.file("second.tex", "Second.\\bye\n", os.path.join(folder, "below"))
        self.assertEqual(self.shell_object().Locate("second.tex"), "")
        self.save()
        wait_until(lambda: self.shell_object().Locate("second.tex") == second, "the second file")

    def test_a_viewer_is_used_and_not_asked_for(self):
        self.file("x.tex", "Hello.\\bye\n")
        viewer = self.recorder("viewer")
        view = {"view": True}
        self.shell_object().Run(b"pdftex x.tex", os.fsencode(self.work), view, timeout=60)
        wait_until(lambda: "Application PDFVIEW has not been set." in self.output(), "the word")
        self.preferences(USEPDFTEX="1", PDFVIEW=viewer, AUTOVIEW="1")
        self.save()
        self.shell_object().Run(b"pdftex x.tex", os.fsencode(self.work), view, timeout=60)
        wait_until(lambda: self.records("viewer"), "the viewer")

    def test_what_changes_during_a_run_holds_after_it(self):
        path = self.file("new.tex", "New.\\bye\n", os.path.join(self.home, "inputs"))
        gate = os.path.join(self.home, "gate")
        os.mkfifo(gate)
        self.file("x.tex", f"\\newread\\gate\\openin\\gate={gate} \\read\\gate to\\x Hello.\\bye\n")
        run = self.in_background(lambda: self.shell_object().Exec("pdftex x.tex", self.work, timeout=60))
        wait_until(lambda: self.running_as("pdftex", "x.tex"), "the engine")
        self.preferences(USEPDFTEX="1", TEXINPUTS=os.path.dirname(path) + "//", DATABASE="0")
        self.save()
        self.assertIsNone(run.result)
        with open(gate, "w", encoding="ascii") as file:
            file.write("go\n")
        run.join(60)
        self.assertEqual(run.result, 0)
        wait_until(lambda: self.shell_object().Locate("new.tex") == path, "the new path")


if __name__ == "__main__":
    unittest.main()
