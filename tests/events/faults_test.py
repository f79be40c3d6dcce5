"""Too many calls, calls of wrong shapes, and a bus that goes away."""

import os
import signal
import sys
import unittest

import dbus
import dbus.lowlevel

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import program_of, wait_until  # noqa: E402
from service import Service  # noqa: E402


class Faults(Service):
    def send_many(self, connection, count, *arguments):
        for _ in range(count):
            call = dbus.lowlevel.MethodCallMessage("org.quillon.Shell", "/org/quillon/Shell", "org.quillon.Shell1", "Exec")
            call.append(*arguments)
            connection.send_message(call)
        connection.flush()

    def test_ten_thousand_calls_at_once_leave_room_for_the_rest(self):
        shell = self.start_shell()
        first = self.start_endless()
        # A client that goes takes its commands with it, so this one stays.
        flood = self.bus()
        self.send_many(flood, 10000, "nothing x", "")
        wait_until(self.refuses_exec)
        # A tool's report still finds a place.
        self.shell_object().Cancel()
        first.join(60)
        self.assert_printed("\nProcessing cancelled by user.\n")
        wait_until(lambda: self.answers_exec())
        flood.close()
        shell.send_signal(signal.SIGTERM)
        self.assertEqual(shell.wait(60), 0)

    def refuses_exec(self):
        """Whether the queue is full; a call that still found a place in it has no answer while the run goes on."""
        name = self.error_of(lambda: self.shell_object().Exec("nothing x", "", timeout=1))
        if name == "org.freedesktop.DBus.Error.NoReply":
            return False
        self.assertEqual(name, "org.quillon.Shell1.Error.Busy")
        return True

    def answers_exec(self):
        try:
            return self.shell_object().Exec("pdftex x.tex", self.work, timeout=60) == 0
        except dbus.exceptions.DBusException as error:
            self.assertEqual(error.get_dbus_name(), "org.quillon.Shell1.Error.Busy")
            return False

    def test_clients_that_are_gone_before_their_turn_take_their_commands_with_them(self):
        self.start_shell()
        first = self.start_endless()
        connection = self.bus()
        self.send_many(connection, 5, "pdftex x.tex", self.work)
        connection.close()
        self.shell_object().Cancel()
        first.join(60)
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)
        wait_until(lambda: "\nProcessing -- pdftex x.tex\n" in self.output())
        self.assertEqual(self.output().count("\nProcessing -- pdftex x.tex\n"), 1)

    def test_events_of_wrong_shapes_are_refused_and_harm_nothing(self):
        self.start_shell()
        for kind, value in (("TEXT", dbus.Int32(4)), ("long", "x"), ("TEXTS", "x"), ("list", "x"), ("fss ", "relative"),
                            ("fss ", ""), ("fss ", "/"), ("fss ", "/nosuchfolder/a/b")):
            for event in (("QUIL", "exec"), ("aevt", "odoc"), ("QUIL", "loca")):
                name = self.error_of(lambda at=event, of=kind, what=value: self.send(*at, **{"----": (of, what)}))
                self.assertEqual(name, "org.freedesktop.DBus.Error.InvalidArgs", (kind, value))
        self.error_of(lambda: self.send("QU", "exec"))
        self.assertEqual(self.send("aevt", "odoc")[0], -1701)
        nested = dbus.Struct(("list", dbus.Array([], signature="(sv)")), signature="sv")
        self.assertEqual(self.send("aevt", "odoc", **{"----": ("list", dbus.Array([nested], signature="(sv)"))})[0], -1700)
        self.assertEqual(self.send("QUIL", "exec", **{"----": ("TEXT", "x" * 20000000)})[0], 0)
        self.assert_printed("A text of 20000000 characters was received; only its first 1023 are used.\n")
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)

    def test_the_bus_going_away_is_said_and_the_run_ends(self):
        shell = self.start_shell()
        self.start_endless()
        self.daemon.kill()
        self.daemon.wait()
        wait_until(lambda: "The session bus has gone" in self.output())
        wait_until(lambda: not self.processes_of("endless.tex"))
        shell.send_signal(signal.SIGTERM)
        self.assertEqual(shell.wait(60), 0)

    def start_scripted(self):
        """A shell whose steps come from a pipe; the pipe's end to write them to."""
        path = os.path.join(self.home, "steps")
        os.mkfifo(path)
        steps = os.fdopen(os.open(path, os.O_RDWR), "wb", buffering=0)
        self.addCleanup(steps.close)
        self.start_shell("--script", path)
        return steps

    def lose_bus(self):
        self.daemon.kill()
        self.daemon.wait()
        self.assert_printed("The session bus has gone")

    def test_without_a_bus_a_run_fails_and_leaves_nothing(self):
        steps = self.start_scripted()
        self.lose_bus()
        steps.write(f"choose {self.work}/x.tex\nmenu 129 1\nprint state lastcommand\nquit\n".encode())
        self.assertEqual(self.running.wait(60), 0)
        self.assertIn("Processing -- pdftex x.tex \n", self.output())
        self.assertIn("lastcommand=pdftex x.tex \n", self.output())
        wait_until(lambda: not self.processes_of("pdftex.app/Contents/Linux/pdftex"))

    def test_the_bus_goes_while_a_tool_is_still_starting(self):
        program = program_of(os.path.join(self.copy_binaries(), "pdftex.app"))
        self.replace(program, "#!/bin/sh\nsleep 1000 &\nwait\n", 0o755)
        steps = self.start_scripted()
        steps.write(f"choose {self.work}/x.tex\nmenu 129 1\n".encode())
        wait_until(lambda: self.processes_of(program))
        self.lose_bus()
        steps.write(b"print state lastcommand\nquit\n")
        self.assertEqual(self.running.wait(60), 0)
        self.assertIn("lastcommand=pdftex x.tex \n", self.output())
        wait_until(lambda: not self.processes_of(program))


if __name__ == "__main__":
    unittest.main()
