"""The console on a display."""

import os
import re
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import PLAIN, Desk  # noqa: E402
from harness import wait_until  # noqa: E402


class Console(Desk):
    def full(self):
        """A shell whose console holds more than its window shows."""
        self.script_tool("seq -f 'line %g' 1 500\n")
        self.start_desktop(self.file("x.tex", PLAIN))
        return self.wait_for_line("line 500")

    def test_copy_takes_the_whole_text(self):
        text = self.full()
        self.assertEqual(re.findall("^line (\\d+)$", text, re.MULTILINE), [str(i) for i in range(1, 501)])

    def settled(self, pictures=None):
        """The window's picture once it changes no more, apart from those given."""
        last = [None]

        def steady():
            now = self.picture()
            same = now == last[0] and now not in (pictures or [])
            last[0] = now
            return same

        wait_until(steady)
        return last[0]

    def test_the_keyboard_scrolls(self):
        self.full()
        end = self.settled()
        self.keys("Prior")
        page = self.settled([end])
        self.keys("ctrl+Home")
        start = self.settled([end, page])
        self.keys("Next")
        self.settled([end, page, start])
        self.keys("ctrl+End")
        wait_until(lambda: self.picture() == end)

    def test_a_click_in_the_text_changes_nothing(self):
        self.full()
        before = self.settled()
        text = self.console()
        self.xdotool("mousemove", "--window", self.window, "100", "100", "click", "1", "click", "1")
        self.xdotool("mousemove", "--window", self.window, "150", "120", "mousedown", "1", "mousemove_relative", "60", "40",
                     "mouseup", "1")
        self.xdotool("mousemove", "1270", "790")
        wait_until(lambda: self.picture() == before)
        self.assertEqual(self.console(), text)

    def test_accented_text_and_bytes_that_are_no_text(self):
        self.script_tool("printf 'caf\\303'; sleep 0.2; printf '\\251 \\377 |\\342\\202\\254|\\n'\n")
        self.start_desktop(self.file("x.tex", PLAIN))
        self.wait_for_line("café \ufffd |€|")

    def test_a_huge_log_does_not_hold_the_window_up(self):
        self.script_tool("yes 'This is a line of the transcript of a run that says very much.' | head -c 30000000; "
                         "echo; echo the end\n")
        self.start_desktop(self.file("x.tex", PLAIN))
        wait_until(lambda: not self.windows("– Quillon$"))
        wait_until(lambda: self.console().count("\n") > 400000, "the whole log", 90)
        end = self.settled()
        self.keys("ctrl+Home")
        self.settled([end])


if __name__ == "__main__":
    unittest.main()
