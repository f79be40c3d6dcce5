"""One job at a time; runs that are cancelled or killed, and a shell that leaves, leave nothing."""

import os
import signal
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import wait_until  # noqa: E402
from service import Service  # noqa: E402


class Leaving(Service):
    def test_cancel_ends_the_run_and_all_its_processes(self):
        self.start_shell()
        thread = self.start_endless()
        self.shell_object().Cancel()
        thread.join(60)
        self.assertEqual(thread.result.get_dbus_name(), "org.quillon.Shell1.Error.Cancelled")
        self.assertEqual(self.processes_of("endless.tex"), [])
        self.assert_printed("\nProcessing cancelled by user.\n")
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)

    def test_work_that_comes_during_a_run_waits_its_turn(self):
        self.start_shell()
        first = self.start_endless()
        second = self.in_background(lambda: self.shell_object().Exec("pdftex x.tex", self.work, timeout=60))
        # What starts no work is answered during the run.
        self.assertIsInstance(str(self.shell_object().Formats(timeout=20)), str)
        self.assertIsNone(second.result)
        self.assertFalse(os.path.exists(os.path.join(self.work, "x.pdf")))
        self.shell_object().Cancel()
        first.join(60)
        second.join(60)
        self.assertEqual(second.result, 0)

    def test_a_quit_event_is_answered_and_the_shell_exits(self):
        shell = self.start_shell()
        self.assertEqual(self.send("aevt", "quit")[0], 0)
        self.assertEqual(shell.wait(60), 0)

    def test_quit_during_a_run_ends_the_run_first(self):
        shell = self.start_shell()
        self.start_endless()
        self.shell_object().Quit()
        self.assertEqual(shell.wait(60), 0)
        self.assertEqual(self.processes_of("endless.tex"), [])
        self.assertEqual(self.setting("RECENTFILE1"), os.path.join(self.work, "endless.tex"))

    def test_a_termination_signal_during_a_run_ends_the_run_first(self):
        shell = self.start_shell()
        self.start_endless()
        shell.send_signal(signal.SIGTERM)
        self.assertEqual(shell.wait(60), 0)
        self.assertEqual(self.processes_of("endless.tex"), [])

    def test_a_killed_shell_leaves_nothing_of_the_run(self):
        shell = self.start_shell()
        self.start_endless()
        shell.kill()
        shell.wait(60)
        wait_until(lambda: not self.processes_of("endless.tex") and not self.processes_of(self.binaries))

    def test_a_killed_tool_host_leaves_nothing_of_the_run(self):
        self.start_shell()
        thread = self.start_endless()
        for pid in self.processes_of("pdftex.app/Contents/Linux/pdftex"):
            os.kill(pid, signal.SIGKILL)
        thread.join(60)
        wait_until(lambda: not self.processes_of("endless.tex"))
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)

    def start_stubborn(self):
        """A run with children that ignore hang-ups, left their group or session, or became daemons."""
        self.file("stubborn.sh", "trap '' HUP TERM INT\n"
                  "setsid sh -c 'trap \"\" HUP TERM INT; exec -a stubborn-session sleep 1000' &\n"
                  "(setsid sh -c 'exec -a stubborn-daemon sleep 1000' &) &\n"
                  "sh -c 'exec -a stubborn-child sleep 1000' &\n"
                  "while :; do sleep 1000; done\n")
        self.file("stubborn.tex", "\\immediate\\write18{bash stubborn.sh}\\bye\n")
        # bash alone knows exec -a.
        with open(os.path.join(self.work, "stubborn.sh"), encoding="ascii") as file:
            text = file.read().replace("sh -c", "bash -c")
        self.file("stubborn.sh", text)
        thread = self.in_background(
            lambda: self.shell_object().Exec("pdftex -shell-escape stubborn.tex", self.work, timeout=90))
        names = ("stubborn-session", "stubborn-daemon", "stubborn-child")
        wait_until(lambda: all(self.processes_of(name + "\0") for name in names))
        return thread

    def nothing_stubborn(self):
        return not self.processes_of("stubborn")

    def test_a_killed_shell_leaves_no_stubborn_child(self):
        shell = self.start_shell()
        self.start_stubborn()
        shell.kill()
        shell.wait(60)
        wait_until(self.nothing_stubborn)

    def test_a_killed_tool_host_leaves_no_stubborn_child(self):
        self.start_shell()
        thread = self.start_stubborn()
        for pid in self.processes_of("pdftex.app/Contents/Linux/pdftex"):
            os.kill(pid, signal.SIGKILL)
        thread.join(60)
        wait_until(self.nothing_stubborn)

    def test_a_cancel_leaves_no_stubborn_child(self):
        self.start_shell()
        thread = self.start_stubborn()
        self.shell_object().Cancel()
        thread.join(60)
        self.assertTrue(self.nothing_stubborn())

    def test_a_termination_signal_ends_the_wait_to_be_in_front(self):
        # The run has ended and its output is to be viewed, but there is no viewer and the shell is behind.
        self.add_preferences("AUTOVIEW=1\n")
        script = self.file("steps", f"background\nevent QUIL exec ---- TEXT pdftex x.tex dest fss {self.work}\nquit\n")
        shell = self.start_shell("--script", script)
        wait_until(lambda: "Output written on x.pdf" in self.output())
        self.assertIsNone(shell.poll())
        shell.send_signal(signal.SIGTERM)
        self.assertEqual(shell.wait(60), 0)
        self.assertEqual(self.setting("RECENTFILE1"), os.path.join(self.work, "x.tex"))


if __name__ == "__main__":
    unittest.main()
