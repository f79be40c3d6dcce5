"""The tool's window on a display of its own: appears late, answers TeX, cancels."""

import os
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import DesktopTest, HostTest, alive, log_of, wait_until  # noqa: E402


class WindowTest(HostTest, DesktopTest):
    screen = "1000x640x24"

    def setUp(self):
        super().setUp()
        self.environment["QUILLON_FRONT"] = "desktop"
        # The leaks that are known are those of every test here, not of the shell's windows alone.
        self.environment["LSAN_OPTIONS"] = os.environ.get("LSAN_OPTIONS", "")

    def shown(self):
        return self.windows("– Quillon$")

    def focused(self):
        window = wait_until(self.shown, "the window")[0]
        wait_until(lambda: self.xdotool("windowactivate", "--sync", window) or
                   self.active() == window, "the focus")
        return window

    def press_until(self, key, condition):
        """A key that is pressed while the window is still taking the focus is lost."""
        def press():
            if condition():
                return True
            self.xdotool("key", key)
            end = time.monotonic() + 0.5
            return wait_until(lambda: condition() or time.monotonic() > end, key) and condition()

        wait_until(press, "what %s does" % key)

    def loads_toolkit(self, tool):
        with open("/proc/%d/maps" % tool.process.pid) as file:
            return "libQt6" in file.read()

    def test_a_short_run_shows_nothing_and_loads_no_toolkit(self):
        tool = self.shell_tool("echo quick\n")
        self.assertEqual(log_of(tool.run("x")), b"quick\r")
        self.assertFalse(self.loads_toolkit(tool))
        self.assertEqual(self.shown(), [])

    def test_a_prompt_shows_the_window_and_its_line_answers(self):
        self.file("err.tex", "\\wrong\n\\bye\n")
        tool = self.launch("pdftex")
        tool.follow()
        tool.send("pdftex err.tex")
        self.focused()
        self.press_until("alt+h", lambda: b"The control sequence at the end" in tool.output)
        wait_until(tool.waiting, "the prompt")
        self.xdotool("type", "x")
        self.press_until("Return", lambda: tool.replies)
        self.assertIn(b"? x\r", log_of(tool.reply()))
        wait_until(lambda: not self.shown(), "the window to go")

    def test_the_edit_button(self):
        self.file("err.tex", "\\wrong\n\\bye\n")
        tool = self.launch("pdftex")
        tool.send("pdftex err.tex")
        self.focused()
        self.press_until("alt+e", lambda: tool.replies)
        self.assertEqual(tool.reply()["edit"], 1)
        self.assertEqual(self.setting("LINENUMBER"), "1")

    def test_a_program_that_is_not_tex_has_no_buttons_for_texs_answers(self):
        tool = self.shell_tool('read x; echo one; read x; echo "<$x>"\n')
        tool.follow()
        tool.send("x")
        self.focused()
        # Once a key has arrived the others do too.
        self.press_until("Return", lambda: b"one" in tool.output)
        wait_until(tool.waiting, "the prompt")
        self.xdotool("key", "--delay", "100", "alt+e", "alt+e", "alt+e")
        self.press_until("Return", lambda: tool.replies)
        # The line for answers may take the keys as text; no button sends "e".
        self.assertNotIn(b"<e>", log_of(tool.reply()))

    def test_a_long_run_shows_the_window_and_escape_cancels(self):
        tool = self.shell_tool("echo $$ > leader; echo line; while :; do sleep 0.1; done\n")
        tool.send("x")
        self.focused()
        with open(os.path.join(self.work, "leader")) as file:
            leader = int(file.read())
        self.press_until("Escape", lambda: self.receiver.events)
        self.assertEqual(self.receiver.events[0][:2], ("QUIL", "exit"))
        wait_until(lambda: not alive(leader), "the end of the run")
        wait_until(tool.gone, "the end of the host")

    def test_closing_the_window_cancels(self):
        tool = self.shell_tool("while :; do sleep 0.1; done\n")
        tool.send("x")
        self.focused()
        self.press_until("alt+F4", lambda: self.receiver.events)
        wait_until(tool.gone, "the end of the host")

    def test_a_display_that_is_gone_counts_as_none(self):
        tool = self.shell_tool("read x; echo end\n", DISPLAY=":9999")
        self.assertEqual(log_of(tool.run("x")), b"end\r")


if __name__ == "__main__":
    unittest.main(verbosity=2)
