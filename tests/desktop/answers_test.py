"""What a person types when the engine asks."""

import os
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import Desk  # noqa: E402
from harness import FAKES, wait_until  # noqa: E402


class Answers(Desk):
    """What a person types at once when the engine asks reaches it."""

    def ask(self):
        self.start_desktop(self.file("bad.tex", "Text.\n\\wrongone\n\\wrongtwo\n\\bye\n"))
        window = self.tool_window()
        wait_until(lambda: self.active() == window)
        self.tool = window

    def answer(self, text):
        """Types an answer, and waits until the window has shown what came of it."""
        before = self.tool_picture()
        self.xdotool("type", text)
        self.keys("Return")
        wait_until(lambda: self.tool_picture() != before)
        self.seen = None
        wait_until(self.is_still)

    def tool_picture(self):
        """The pixels of the tool's window; empty when it has gone, also while its picture was taken."""
        try:
            return self.picture(self.tool, 5) if self.windows("– Quillon$") else b""
        except (subprocess.CalledProcessError, subprocess.TimeoutExpired):
            # Asked for a window that is not there, the program waits for somebody to point at one.
            return b""

    def is_still(self):
        now = self.tool_picture()
        same, self.seen = now == self.seen, now
        return same

    def test_x_ends_the_run(self):
        self.ask()
        self.answer("x")
        wait_until(lambda: not self.windows("– Quillon$"))
        text = self.wait_for_line("No pages of output.")
        self.assertIn("\n? x\n", text)

    def test_help_and_return_go_on(self):
        self.ask()
        self.answer("h")
        self.answer("")
        self.answer("x")
        wait_until(lambda: not self.windows("– Quillon$"))
        text = self.wait_for_line("? x")
        self.assertIn("\n? h\nThe control sequence at the end of the top line\n", text)
        self.assertIn("! Undefined control sequence.\nl.3 \\wrongtwo\n", text)

    def test_e_stops_and_says_where(self):
        programs = os.path.join(self.home, "programs")
        os.mkdir(programs)
        editor = shutil.copy(os.path.join(FAKES, "recorder.sh"), os.path.join(programs, "kate"))
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", Editor=editor)
        self.ask()
        self.answer("e")
        wait_until(lambda: [name for name in os.listdir(programs) if name.endswith(".words")])
        self.assertEqual(self.setting("LINENUMBER"), "2")
        (words,) = [name for name in os.listdir(programs) if name.endswith(".words")]
        with open(os.path.join(programs, words), "rb") as file:
            self.assertEqual(file.read(), f"kate\n--line\0002\0{self.work}/bad.tex\0".encode())


if __name__ == "__main__":
    unittest.main()
