"""Selecting and finding text in the console of a real window, with its mouse and keyboard."""

import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import PLAIN, Desk  # noqa: E402
from harness import stop, wait_until  # noqa: E402

TEXT = "printf 'alpha beta gamma\\nsecond line of text\\nthird line\\n'; seq -f 'number %g' 1 400\n"


class Working(Desk):
    def begin_with(self, **settings):
        """A shell whose console shows the end of TEXT."""
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXWINDOW="100 200 400 800", **settings)
        self.script_tool(TEXT)
        self.start_desktop(self.file("x.tex", PLAIN))
        wait_until(lambda: "number 400" in self.console().split("\n"))
        wait_until(lambda: not self.windows("– Quillon$"))
        self.activate(self.window)

    def copied(self, expected):
        """Waits until Ctrl+C copies what is expected."""
        wait_until(lambda: self.console() == expected, f"the text {expected!r}")

    def pasted(self):
        """What a click of the middle button pastes in another application, once it pastes something."""
        path = os.path.join(self.home, "pasted")
        with open(path, "wb") as typed:
            process = subprocess.Popen([self.program("desk"), "window", "Another"], env=self.environment, stdout=typed)
        self.addCleanup(stop, process)
        (other,) = wait_until(lambda: self.windows("^Another$"))
        wait_until(lambda: self.active() == other)

        def click():
            self.xdotool("mousemove", "--window", other, "20", "10", "click", "2")
            with open(path, encoding="utf-8") as typed:
                return typed.read().split("\n")[0]

        return wait_until(click)

    def drag(self, start, end):
        self.xdotool("mousemove", "--window", self.window, *map(str, start), "mousedown", "1",
                     "mousemove", "--window", self.window, *map(str, end), "mouseup", "1")

    def picture_changes(self, act):
        before = self.picture()
        act()
        wait_until(lambda: self.picture() != before)

    def test_the_mouse_selects_and_copy_takes_that(self):
        self.begin_with(CONSOLESELECT="1")
        whole = self.console()
        self.drag((20, 120), (150, 200))
        wait_until(lambda: self.console() != whole)
        part = self.clipboard()
        self.assertIn(part, whole)
        self.assertIn("\n", part)
        # A plain key removes the selection.
        self.keys("Left")
        self.copied(whole)

    def test_a_double_click_takes_a_word(self):
        self.begin_with(CONSOLESELECT="1")
        self.xdotool("mousemove", "--window", self.window, "20", "150", "click", "--repeat", "2", "--delay", "40", "1")
        self.copied("number")
        self.assertEqual(self.pasted(), "number")

    def test_keys_select_and_all_is_selected(self):
        self.begin_with(CONSOLESELECT="1")
        whole = self.console()
        self.keys("shift+Left", "shift+Left", "shift+Left", "shift+Left")
        wait_until(lambda: self.console() != whole)
        self.assertEqual(self.clipboard(), whole[-4:])
        self.keys("shift+ctrl+Home")
        self.copied(whole)
        self.keys("Left", "ctrl+a")
        self.copied(whole)

    def test_nothing_is_selected_without_the_setting(self):
        self.begin_with()
        whole = self.console()
        self.drag((20, 120), (150, 200))
        self.keys("shift+Left", "shift+Home")
        self.copied(whole)

    def test_find_marks_the_hit_and_escape_gives_the_keyboard_back(self):
        self.begin_with(CONSOLESELECT="1")
        whole = self.console()
        self.picture_changes(lambda: self.keys("ctrl+f"))
        self.picture_changes(lambda: self.xdotool("type", "SECOND line"))
        self.keys("Escape")
        self.copied("second line")
        self.keys("Left")
        self.copied(whole)

    def test_find_goes_from_hit_to_hit(self):
        self.begin_with(CONSOLESELECT="1")
        self.picture_changes(lambda: self.keys("ctrl+f"))
        self.picture_changes(lambda: self.xdotool("type", "number 39"))
        self.keys("Return", "F3", "shift+F3", "Escape")
        self.copied("number 39")
        # The hit that was marked last begins a selection.
        self.keys("shift+Right")
        wait_until(lambda: self.console() in ("number 390", "number 391", "number 392", "number 393"))

    def test_keys_size_the_text(self):
        self.begin_with()
        usual = self.picture()
        self.picture_changes(lambda: self.keys("ctrl+plus"))
        larger = self.picture()
        self.assertNotEqual(larger, usual)
        self.keys("ctrl+0")
        wait_until(lambda: self.picture() == usual)
        self.picture_changes(lambda: self.keys("ctrl+minus"))


if __name__ == "__main__":
    unittest.main()
