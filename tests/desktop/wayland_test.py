"""The shell's windows on a Wayland desktop."""

import os
import shutil
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import HELD, PLAIN  # noqa: E402
from harness import BUILD, WaylandTest, stop, wait_until  # noqa: E402

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
QUILLON = os.path.join(BUILD, "bin", "quillon")


class Wayland(WaylandTest):
    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXWINDOW="100 200 400 800")

    def start_desktop(self, *files):
        self.start_program(self.shell_program(), *files)
        self.shell = wait_until(self.shell_or_end, "the shell's window")
        self.assertTrue(self.shell, self.output())
        return self.window("the keyboard", id=self.shell["id"], focused=True)

    def shell_or_end(self):
        self.assertFalse(self.ended(), self.output() if self.ended() else "")
        return next((one for one in self.windows() if one["name"] == "Quillon"), None)

    def other_window(self):
        """The focused window of another application."""
        process = subprocess.Popen([os.path.join(BUILD, "bin", "tests", "desk"), "window", "Another"],
                                   env=self.environment, stdout=subprocess.DEVNULL)
        self.addCleanup(stop, process)
        other = self.window("the other window", name="Another")
        self.focus(other)
        return other

    def shell_is_focused(self):
        return next(one["focused"] for one in self.windows() if one["id"] == self.shell["id"])

    def test_the_window_has_the_name_of_the_desktop_file(self):
        shell = self.start_desktop()
        self.assertEqual(shell["app_id"], "org.quillon.Shell")
        self.assertTrue(os.path.exists(os.path.join(SOURCE, "resources", shell["app_id"] + ".desktop")))
        self.assertTrue(os.path.exists(os.path.join(SOURCE, "resources", "icons", shell["app_id"] + ".svg")))
        self.assertEqual(shell["pid"], self.running.pid)

    def test_a_command_key_typesets_the_file(self):
        path = self.file("x.tex", PLAIN)
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXFILE=path, TEXDIR=self.work)
        self.start_desktop()
        self.keys("-M", "ctrl", "t", "-m", "ctrl")
        wait_until(lambda: os.path.exists(os.path.join(self.work, "x.pdf")), "the output")

    def test_a_run_shows_its_window_which_answers_to_keys(self):
        self.script_tool(HELD)
        self.start_desktop(self.file("x.tex", PLAIN))
        tool = self.window("the run's window", name="pdftex – Quillon")
        self.assertEqual(tool["app_id"], "org.quillon.Shell")
        self.focus(tool)
        self.keys("-k", "Escape")
        wait_until(lambda: "pdftex – Quillon" not in [one["name"] for one in self.windows()], "the end of the run")
        self.window("the keyboard back in the shell", id=self.shell["id"], focused=True)

    def test_a_client_with_a_token_raises_the_shell(self):
        self.environment["WAYLAND_DEBUG"] = "1"  # the shell says what it asks of the compositor
        self.start_desktop()
        del self.environment["WAYLAND_DEBUG"]
        self.other_window()
        token = self.activation_token()
        done = self.run_program(QUILLON, self.file("x.tex", PLAIN), XDG_ACTIVATION_TOKEN=token)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.window("the shell raised", id=self.shell["id"], focused=True)
        wait_until(lambda: f'.activate("{token}"' in self.output(), "the client's own token")

    def test_a_shell_that_is_started_with_a_token_uses_it(self):
        token = self.activation_token()
        self.environment.update(WAYLAND_DEBUG="1", XDG_ACTIVATION_TOKEN=token)
        self.start_desktop()
        wait_until(lambda: f'.activate("{token}"' in self.output(), "the token of the start")

    def test_the_viewer_that_the_person_asks_for_gets_the_keyboard(self):
        path, pdf = self.file("x.tex", PLAIN), os.path.join(self.work, "x.pdf")
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", PDFVIEW=shutil.which("zathura"))
        self.start_desktop(path)
        wait_until(lambda: self.setting("PDFFILE") == pdf, "the end of the run")
        wait_until(self.shell_is_focused)
        self.keys("-M", "ctrl", "p", "-m", "ctrl")
        self.window("the viewer", app_id="org.pwmt.zathura", focused=True)
        wait_until(lambda: self.processes_of("zathura"))
        for pid in self.processes_of("zathura"):
            os.kill(pid, signal.SIGTERM)

    def test_the_shell_hands_no_token_on_that_it_was_given_itself(self):
        self.script_tool("env > \"$HOME/environment\"\n")
        self.environment.update(XDG_ACTIVATION_TOKEN=self.activation_token(), DESKTOP_STARTUP_ID="old")
        self.start_desktop(self.file("x.tex", PLAIN))
        path = os.path.join(self.home, "environment")
        wait_until(lambda: os.path.exists(path) and os.path.getsize(path))
        with open(path, encoding="utf-8") as file:
            said = file.read()
        self.assertNotIn(self.environment["XDG_ACTIVATION_TOKEN"], said)
        self.assertNotIn("DESKTOP_STARTUP_ID=old", said)


if __name__ == "__main__":
    unittest.main()
