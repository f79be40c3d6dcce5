"""Loops of many clients at once: each gets what is its own."""

import os
import subprocess

from endurance.kills import Around
from harness.clients import Clients
from harness.display import DesktopTest
from harness.many_clients import ManyClients
from harness.processes import stop, wait_until

PROBE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "redraws.py")


class Eight(Around, Clients):
    def endure(self, count, _):
        for number in range(count):
            self.eight_at_once(number)
            self.nothing_is_left()
        return {"documents": 8 * count}


class Make(Around, Clients):
    def endure(self, count, _):
        before = self.preferences_bytes()
        self.make(count)
        self.nothing_is_left()
        self.assertEqual(self.preferences_bytes(), before, "the person's preferences")
        return {}


class MakeBesideAWindow(Around, Clients, DesktopTest):
    def endure(self, count, _):
        self.start_desktop()
        self.make(count)
        self.nothing_is_left()
        self.assertFalse(self.ended(), self.output())
        return {}


class Interleaved(Around, ManyClients):
    def endure(self, count, _):
        self.start_shell()
        self.interleaved(count)
        self.nothing_is_left()
        return {}


class Burst(Around, ManyClients):
    def endure(self, count, _):
        self.start_shell()
        taken = self.burst(count)
        self.nothing_is_left()
        return {"run": taken, "refused": count - taken}


class BurstBesideAWindow(Around, ManyClients, DesktopTest):
    """A burst during which the window is covered and uncovered: the shell must paint what is uncovered."""

    def endure(self, count, _):
        self.start_desktop()
        path = os.path.join(self.home, "redraws")
        with open(path, "wb") as output:
            probe = subprocess.Popen([PROBE, self.display, *self.middle()], stdin=subprocess.PIPE, stdout=output,
                                     env=self.environment)
        self.addCleanup(stop, probe)
        wait_until(lambda: len(numbers_in(path)) > 50 or probe.poll() is not None, "redraws of an idle window")
        idle = numbers_in(path)
        taken = self.burst(count)
        probe.stdin.close()
        wait_until(lambda: probe.poll() is not None, "the end of the probe")
        self.assertEqual(probe.returncode, 0)
        during = numbers_in(path)[len(idle):]
        self.assertGreater(len(during), 50, "redraws during the burst")
        self.nothing_is_left()
        return {"run": taken, "refused": count - taken, "redraws": len(during),
                "ms, the longest redraw when idle": milliseconds(idle),
                "ms, the longest redraw": milliseconds(during)}

    def middle(self):
        """A point in the middle of the window, as words."""
        shape = dict(line.split("=") for line in self.xdotool("getwindowgeometry", "--shell", self.window))
        return [str(int(shape[at]) + int(shape[size]) // 2) for at, size in (("X", "WIDTH"), ("Y", "HEIGHT"))]


def numbers_in(path):
    """The numbers of the whole lines in a file that is being written."""
    with open(path, encoding="ascii") as file:
        return [float(line) for line in file.read().split("\n")[:-1]]


def milliseconds(times):
    return round(1000 * max(times))
