"""Those who follow the console: one that does not read is let go, and holds nobody up."""

import os
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import MAIN_LOOP, wait_until  # noqa: E402
from service import Service  # noqa: E402

MEGABYTE = 1 << 20
LINES = 250000  # of some 85 bytes: 21 MB
MUCH = ("\\newcount\\n\\loop\\ifnum\\n<%d\\advance\\n1 "
        "\\immediate\\write16{\\number\\n" + " what is said again" * 4 + "0123456789}\\repeat\\bye\n")


class FollowersTest(Service):
    def memory(self, pid):
        """The memory of a process in bytes."""
        with open(f"/proc/{pid}/statm", encoding="ascii") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

    def test_one_that_does_not_read_is_let_go_and_one_that_reads_gets_all(self):
        # Under the sanitizers memory that was freed is kept for a while.
        self.environment["ASAN_OPTIONS"] = "quarantine_size_mb=1"
        shell = self.start_shell()
        self.file("much.tex", MUCH % LINES)
        before = self.memory(self.daemon.pid)
        deaf = self.bus()
        self.shell_on(deaf).Follow(True)
        hearing = self.bus(MAIN_LOOP)
        heard = []
        hearing.add_signal_receiver(lambda text: heard.append(len(text)), "ConsoleText", "org.quillon.Shell1")
        self.shell_on(hearing).Follow(True)
        most = [0]

        def said_all():
            most[0] = max(most[0], self.memory(self.daemon.pid))
            return sum(heard) >= LINES * 80

        run = self.in_background(lambda: self.shell_object().Exec("pdftex much.tex", self.work, timeout=200))
        wait_until(said_all, "the text")
        run.join(60)
        self.assertEqual(run.result, 0)
        self.assertLess(most[0] - before, 32 * MEGABYTE, "the bus keeps what nobody reads")
        # The service itself keeps 16 MB of text, and a half more before it cuts.
        self.assertLess(self.memory(shell.pid), 160 * MEGABYTE)
        deaf.close()

    def shell_on(self, connection):
        return dbus.Interface(connection.get_object("org.quillon.Shell", "/org/quillon/Shell", introspect=False),
                              "org.quillon.Shell1")


if __name__ == "__main__":
    unittest.main()
