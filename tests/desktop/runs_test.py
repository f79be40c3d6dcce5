"""Runs with windows: menus, keys, the run's own window, other applications."""

import os
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import ENDLESS, HELD, Desk  # noqa: E402
from harness import FAKES, stop, wait_until  # noqa: E402


class Runs(Desk):
    def test_during_a_run_menus_are_grey_and_keys_wait_in_order(self):
        self.begin(HELD)
        self.activate(self.window)
        self.keys("alt+f")
        self.keys("ctrl+8", "ctrl+8", "ctrl+8", "ctrl+e")
        # The window answers, and nothing of this has happened.
        self.assertEqual(self.menus_shown(), [])
        self.assertIsNone(self.setting("USE8BIT"))
        self.let_end()
        wait_until(lambda: self.setting("USE8BIT") == "1")
        self.wait_for_line("ended")
        self.keys("alt+f")
        wait_until(self.menus_shown)

    def test_escape_cancels(self):
        self.cancels("Escape")

    def test_control_period_cancels(self):
        self.cancels("ctrl+period")

    def cancels(self, key):
        self.begin(ENDLESS)
        self.activate(self.window)
        self.keys(key)
        wait_until(lambda: not self.leader_runs())
        self.wait_for_line("Processing cancelled by user.")

    def test_the_close_button_ends_the_run_and_leaves_nothing(self):
        self.leaves(lambda: self.keys("alt+F4"))

    def test_a_termination_request_ends_the_run_and_leaves_nothing(self):
        self.leaves(lambda: self.running.send_signal(signal.SIGTERM))

    def leaves(self, ask):
        self.begin(ENDLESS)
        self.activate(self.window)
        ask()
        wait_until(self.ended)
        self.assertEqual(self.running.returncode, 0)
        wait_until(lambda: not self.leader_runs())
        wait_until(lambda: not self.processes_of(self.home))

    def test_a_long_run_shows_its_window_and_leaves_the_keyboard_where_it_is(self):
        self.begin("echo $$ > \"$HOME/leader\"; for i in 1 2 3; do printf \"[$i] \"; done; "
                   "while [ ! -e \"$HOME/go\" ]; do sleep 0.05; done\n")
        window = self.tool_window()
        self.assertIn("pdftex", " ".join(self.xdotool("getwindowname", window)))
        self.assertEqual(self.active(), self.window)
        self.let_end()
        wait_until(lambda: not self.windows("– Quillon$"))
        self.assertEqual(self.active(), self.window)

    def test_the_cancel_button_cancels(self):
        self.begin(ENDLESS)
        self.activate(self.tool_window())
        self.keys("alt+c")
        wait_until(lambda: not self.leader_runs())
        self.wait_for_line("Processing cancelled by user.")

    def test_output_does_not_take_the_keyboard_from_another_application(self):
        self.begin(HELD)
        other = self.other_application()
        self.let_end()
        wait_until(lambda: not self.windows("– Quillon$"))
        self.xdotool("type", "typed here")
        wait_until(lambda: self.typed().endswith("typed here\n"))
        self.assertEqual(self.active(), other)

    def other_application(self):
        self.typed_path = os.path.join(self.home, "typed")
        with open(self.typed_path, "wb") as typed:
            process = subprocess.Popen([self.program("desk"), "window", "Another"], env=self.environment, stdout=typed)
        self.addCleanup(stop, process)
        # The window manager hides a window for a moment when it takes it over: the look that found it counts.
        (other,) = wait_until(lambda: self.windows("^Another$"))
        self.activate(other)
        return other

    def typed(self):
        with open(self.typed_path, encoding="utf-8") as file:
            return file.read()

    def test_a_question_does_not_take_the_keyboard_from_another_application(self):
        self.begin("echo $$ > \"$HOME/leader\"; while [ ! -e \"$HOME/go\" ]; do sleep 0.05; done; printf '? '; read x; "
                   "echo \"answer $x\"\n")
        other = self.other_application()
        self.let_end()
        window = self.tool_window()
        # What asks for attention without the keyboard has the urgency hint.
        wait_until(lambda: "DEMANDS_ATTENTION" in self.property("_NET_WM_STATE", window) or
                   "urgency" in self.property("WM_HINTS", window))
        self.assertEqual(self.active(), other)

    def test_while_the_person_is_elsewhere_the_window_comes_only_with_a_question(self):
        self.begin("echo $$ > \"$HOME/leader\"; echo begun; while [ ! -e \"$HOME/go\" ]; do sleep 0.05; done; "
                   "printf '? '; read x; echo \"answer $x\"\n")
        # The window comes up while the shell is in front, so this looks at a second run.
        self.tool_window()
        self.keys("Escape")
        wait_until(lambda: not self.leader_runs())
        wait_until(lambda: not self.windows("– Quillon$"))
        os.unlink(os.path.join(self.home, "leader"))
        other = self.other_application()
        self.in_background(lambda: self.shell_object().Exec("pdftex x.tex", self.work, timeout=100))
        wait_until(lambda: os.path.exists(os.path.join(self.home, "leader")))
        # The toolkit is loaded when the window would be shown.
        wait_until(self.window_is_ready)
        self.assertEqual(self.windows("– Quillon$"), [])
        self.let_end()
        self.tool_window()
        self.assertEqual(self.active(), other)

    def window_is_ready(self):
        for pid in self.processes_of("pdftex.app/Contents/Linux/pdftex"):
            with open(f"/proc/{pid}/maps", encoding="utf-8", errors="replace") as file:
                if "libQt6XcbQpa" in file.read():
                    return True
        return False

    def test_the_end_of_a_long_run_is_told_to_who_is_elsewhere(self):
        record = os.path.join(self.home, "notifications")
        service = subprocess.Popen(["/usr/bin/python3", os.path.join(FAKES, "notifications.py"), record],
                                   env=self.environment)
        self.addCleanup(stop, service)
        bus = self.bus()
        wait_until(lambda: bus.name_has_owner("org.freedesktop.Notifications"))
        self.begin("echo $$ > \"$HOME/leader\"; sleep 11\n")
        self.other_application()
        wait_until(lambda: os.path.exists(record) and os.path.getsize(record) > 0)
        with open(record, encoding="utf-8") as file:
            self.assertRegex(file.read(), r"^Quillon: The run is done\.\n[0-9.]+ s\n$")
        self.activate(self.window)

        def closed():
            with open(record, encoding="utf-8") as file:
                return file.read().endswith("closed\n")

        wait_until(closed)


if __name__ == "__main__":
    unittest.main()
