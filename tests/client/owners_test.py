"""Nothing of a run outlives its owner: tool hosts, guards and shells that hang or are killed while a run goes on."""

import os
import signal
import subprocess
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, ServiceTest, alive, stop, wait_until  # noqa: E402
from harness.processes import parent_of, program_name, status_field  # noqa: E402

QUILLON = os.path.join(BUILD, "bin", "quillon")
CHILDREN = ("child", "session", "daemon", "bare")
# An engine that writes over half.pdf and has children that ignore signals, leave its session, are forked twice, and
# clear their environment.
ENGINE = """printf broken > half.pdf
trap '' INT TERM HUP
sh -c 'echo $$ > child; while :; do sleep 0.1; done' &
setsid sh -c 'echo $$ > session; exec sleep 1000' &
(setsid sh -c '(exec sh -c "echo \\$\\$ > daemon; exec sleep 1000") & exit 0' &)
env -i setsid /bin/sh -c 'echo $$ > bare; exec /bin/sleep 1000' &
echo $$ > leader
while :; do sleep 0.1; done
"""
WELL = "printf new > half.pdf; echo 'Output written on half.pdf (1 page, 3 bytes).'\n"


class Owners(ServiceTest):
    def setUp(self):
        super().setUp()
        self.write_preferences("SPACECHAR=31\n")
        self.script_tool(ENGINE)
        self.addCleanup(self.kill_what_is_left)
        self.begin_anew()

    def kill_what_is_left(self):
        for name in ("leader", *CHILDREN):
            if self.written(name) and alive(self.written(name)):
                os.kill(self.written(name), signal.SIGKILL)

    def begin_anew(self):
        for name in ("leader", *CHILDREN):
            if os.path.exists(os.path.join(self.work, name)):
                os.unlink(os.path.join(self.work, name))
        self.file("half.pdf", "whole")

    def written(self, name):
        """The process id in the file of that name, 0 while it is not there."""
        try:
            with open(os.path.join(self.work, name), encoding="ascii") as file:
                text = file.read()
        except OSError:
            return 0
        return int(text) if text.endswith("\n") else 0

    def of_the_run(self):
        """The processes of the engine once all run; self.guard and self.host."""
        pids = [wait_until(lambda name=name: self.written(name), name) for name in ("leader", *CHILDREN)]
        self.guard = parent_of(pids[0])
        self.host = parent_of(self.guard)
        self.assertEqual(program_name(self.host), "quillon-toolhost")
        return pids

    def run_of(self):
        command, folder = (dbus.Array(os.fsencode(text), signature="y") for text in ("pdftex half.tex", self.work))
        return self.shell_object().Run(command, folder, dbus.Dictionary({}, signature="sv"), timeout=1000)

    def begin(self):
        """Starts a run in a thread: the thread and the processes of the run."""
        thread = self.in_background(self.run_of)
        return thread, self.of_the_run()

    def assert_gone(self, *pids):
        for pid in pids:
            wait_until(lambda process=pid: not alive(process), f"the end of process {pid}")

    def assert_kept(self):
        with open(os.path.join(self.work, "half.pdf"), encoding="ascii") as file:
            self.assertEqual(file.read(), "whole")
        self.assertEqual([name for name in os.listdir(self.work) if name.endswith(".before")], [])

    def assert_no_notes(self):
        folder = os.path.join(self.home, "run", "quillon", "runs")
        wait_until(lambda: not os.listdir(folder), "the end of the notes")

    def assert_the_next_run_is_fine(self):
        self.script_tool(WELL)
        self.assertEqual(int(self.run_of()[0]), 0)
        with open(os.path.join(self.work, "half.pdf"), encoding="ascii") as file:
            self.assertEqual(file.read(), "new")
        self.assert_no_notes()

    def stop_process(self, pid):
        os.kill(pid, signal.SIGSTOP)
        wait_until(lambda: status_field(pid, 0) == "T", "the stopped process")

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
            self.start_shell()
            thread = self.in_background(self.run_of)
            wait_until(lambda: self.running_as("quillon-toolhost"), "the host")
            self.running.kill()
            self.running.wait()
            wait_until(lambda: not self.running_as("quillon-toolhost"), "the end of the host")
            wait_until(lambda: not any(alive(self.written(name)) for name in ("leader", *CHILDREN)
                                       if self.written(name)), "the end of the engine")
            thread.join()
            self.begin_anew()


if __name__ == "__main__":
    unittest.main()
