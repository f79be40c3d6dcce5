"""A run and its owners: the shell, the tool host and its guard, each of which may hang or die before the run ends."""

import os
import signal

import dbus

from harness.bus import ServiceTest
from harness.processes import alive, parent_of, program_name, status_field, wait_until

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
    """Runs of an engine that leaves the worst behind, and their owners: shell, tool host and guard."""

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

    def kill_the_shell_as_its_host_appears(self):
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
