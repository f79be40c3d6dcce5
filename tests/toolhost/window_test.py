"""The tool's window on a display of its own: appears late, answers TeX, cancels."""

import os
import shutil
import subprocess
import sys
import time
import unittest

from shell_double import Shell, alive, log_of, wait_for

HOME = os.path.join(os.environ["QUILLON_BUILD_FOLDER"], "lib/quillon")


def start_display():
    """An X server and a window manager: their processes and the display's name."""
    read_end, write_end = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1000x640x24", "-nolisten", "tcp"],
                              pass_fds=[write_end], stderr=subprocess.DEVNULL)
    os.close(write_end)
    with os.fdopen(read_end) as file:
        display = ":" + file.readline().strip()
    manager = subprocess.Popen(["openbox"], env=dict(os.environ, DISPLAY=display), stderr=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL)
    return display, [manager, server]


@unittest.skipUnless(shutil.which("Xvfb") and shutil.which("openbox") and shutil.which("xdotool"),
                     "needs Xvfb, openbox and xdotool")
class WindowTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.display, cls.processes = start_display()

    @classmethod
    def tearDownClass(cls):
        for process in cls.processes:
            process.terminate()
            process.wait()

    def setUp(self):
        self.shell = Shell(HOME)
        self.addCleanup(self.shell.close)

    def xdotool(self, *words):
        return subprocess.run(["xdotool", *words], env=dict(os.environ, DISPLAY=self.display), capture_output=True,
                              text=True).stdout.split()

    def windows(self):
        return self.xdotool("search", "--onlyvisible", "--name", "– Quillon$")

    def focused(self):
        window = wait_for(self.windows, "the window")[0]
        wait_for(lambda: self.xdotool("windowactivate", "--sync", window) or
                 self.xdotool("getactivewindow") == [window], "the focus")
        return window

    def press_until(self, key, condition):
        """A key that is pressed while the window is still taking the focus is lost."""
        def press():
            if condition():
                return True
            self.xdotool("key", key)
            end = time.monotonic() + 0.5
            return wait_for(lambda: condition() or time.monotonic() > end, key) and condition()

        wait_for(press, "what %s does" % key)

    def desktop(self, **more):
        return dict(QUILLON_FRONT="desktop", DISPLAY=self.display, QT_QPA_PLATFORM="xcb", **more)

    def loads_toolkit(self, tool):
        with open("/proc/%d/maps" % tool.process.pid) as file:
            return "libQt6" in file.read()

    def test_a_short_run_shows_nothing_and_loads_no_toolkit(self):
        tool = self.shell.shell_tool("echo quick\n", **self.desktop())
        self.assertEqual(log_of(tool.run("x")), b"quick\r")
        self.assertFalse(self.loads_toolkit(tool))
        self.assertEqual(self.windows(), [])

    def test_a_prompt_shows_the_window_and_its_line_answers(self):
        self.shell.write("err.tex", "\\wrong\n\\bye\n")
        tool = self.shell.launch("pdftex", **self.desktop())
        tool.follow()
        tool.send("pdftex err.tex")
        self.focused()
        self.press_until("alt+h", lambda: b"The control sequence at the end" in tool.output)
        wait_for(tool.waiting, "the prompt")
        self.xdotool("type", "x")
        self.press_until("Return", lambda: tool.replies)
        self.assertIn(b"? x\r", log_of(tool.reply()))
        wait_for(lambda: not self.windows(), "the window to go")

    def test_the_edit_button(self):
        self.shell.write("err.tex", "\\wrong\n\\bye\n")
        tool = self.shell.launch("pdftex", **self.desktop())
        tool.send("pdftex err.tex")
        self.focused()
        self.press_until("alt+e", lambda: tool.replies)
        self.assertEqual(tool.reply()["edit"], 1)
        self.assertEqual(self.shell.settings()[b"LINENUMBER"], b"1")

    def test_a_long_run_shows_the_window_and_escape_cancels(self):
        tool = self.shell.shell_tool("echo $$ > leader; echo line; while :; do sleep 0.1; done\n", **self.desktop())
        tool.send("x")
        self.focused()
        with open(os.path.join(self.shell.work, "leader")) as file:
            leader = int(file.read())
        self.press_until("Escape", lambda: self.shell.receiver.events)
        self.assertEqual(self.shell.receiver.events[0][:2], ("QUIL", "exit"))
        wait_for(lambda: not alive(leader), "the end of the run")
        wait_for(tool.gone, "the end of the host")

    def test_closing_the_window_cancels(self):
        tool = self.shell.shell_tool("while :; do sleep 0.1; done\n", **self.desktop())
        tool.send("x")
        self.focused()
        self.press_until("alt+F4", lambda: self.shell.receiver.events)
        wait_for(tool.gone, "the end of the host")

    def test_a_display_that_is_gone_counts_as_none(self):
        tool = self.shell.shell_tool("read x; echo end\n", QUILLON_FRONT="desktop", DISPLAY=":9999")
        self.assertEqual(log_of(tool.run("x")), b"end\r")


if __name__ == "__main__":
    unittest.main(verbosity=2)
