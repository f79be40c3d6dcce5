"""Nothing of a run outlives its owner: tool hosts, guards and shells that hang or are killed while a run goes on."""

import os
import signal
import subprocess
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import stop, wait_until  # noqa: E402
from harness.clients import QUILLON  # noqa: E402
from harness.owners import Owners  # noqa: E402



class OwnersEnd(Owners):
    def cancelled_with_a_stopped(self, owner):
        self.start_shell()
        thread, pids = self.begin()
        self.stop_process(getattr(self, owner))
        self.shell_object().Cancel()
        wait_until(lambda: not thread.is_alive(), "the end of the run")
        self.assertIsInstance(thread.result, dbus.exceptions.DBusException)
        self.assertEqual(thread.result.get_dbus_name(), "org.quillon.Shell1.Error.Cancelled")
        self.assert_gone(self.host, self.guard, *pids)
        wait_until(lambda: "Processing cancelled by user." in self.output(), "the word of it")
        self.assert_kept()
        self.assert_the_next_run_is_fine()

    def test_a_run_whose_host_is_stopped_is_cancelled(self):
        self.cancelled_with_a_stopped("host")

    def test_a_run_whose_guard_is_stopped_is_cancelled(self):
        self.cancelled_with_a_stopped("guard")

    def test_an_interrupted_client_with_a_stopped_host_leaves_nothing(self):
        self.start_shell()
        process = subprocess.Popen([QUILLON, "exec", "pdftex", "half.tex"], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, cwd=self.work,
                                   env=self.environment)
        self.addCleanup(stop, process)
        pids = self.of_the_run()
        self.stop_process(self.host)
        process.send_signal(signal.SIGINT)
        wait_until(lambda: process.poll() is not None, "the end of the client")
        self.assertEqual(process.returncode, 130)
        self.assert_gone(self.host, self.guard, *pids)

    def test_a_host_killed_with_its_guard_leaves_nothing(self):
        self.start_shell()
        for _ in range(8):
            thread, pids = self.begin()
            for owner in (self.host, self.guard):
                os.kill(owner, signal.SIGKILL)
            wait_until(lambda: not thread.is_alive(), "the end of the run")
            self.assert_gone(self.host, self.guard, *pids)
            self.begin_anew()
        self.assert_the_next_run_is_fine()

    def test_a_host_killed_while_its_guard_is_stopped_leaves_nothing(self):
        self.start_shell()
        thread, pids = self.begin()
        self.stop_process(self.guard)
        os.kill(self.host, signal.SIGKILL)
        wait_until(lambda: not thread.is_alive(), "the end of the run")
        self.assert_gone(self.host, self.guard, *pids)
        self.assert_kept()

    def test_the_next_shell_ends_what_shell_host_and_guard_have_left(self):
        self.start_shell()
        shell = self.running
        _, pids = self.begin()
        for owner in (shell.pid, self.host, self.guard):
            os.kill(owner, signal.SIGKILL)
        shell.wait()
        self.start_shell()
        self.assert_gone(*pids)
        self.assert_the_next_run_is_fine()

    def test_a_shell_killed_as_its_host_appears_leaves_nothing(self):
        for _ in range(5):
            self.kill_the_shell_as_its_host_appears()


del Owners

if __name__ == "__main__":
    unittest.main()
