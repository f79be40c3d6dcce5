"""The shell on the session bus: its own interface, the events, trust, one job at a time, leaving."""

import os
import shutil
import signal
import subprocess
import sys
import unittest

import dbus
import dbus.lowlevel

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import ServiceTest, wait_until  # noqa: E402

PLAIN = "Hello.\n\\bye\n"
# Runs until it is stopped.
ENDLESS = "\\def\\again{\\again}\\again\n\\bye\n"


class Service(ServiceTest):
    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1")
        self.file("x.tex", PLAIN)
        self.file("endless.tex", ENDLESS)

    def processes_of_run(self):
        return [pid for pid in self.processes_of("pdftex") if pid != os.getpid()]

    def assert_printed(self, text):
        """The console's text reaches standard output when the shell next waits, maybe after its answer."""
        wait_until(lambda: text in self.output())

    def start_endless(self):
        """A run that is going on, and the thread that waits for it."""
        thread = self.in_background(lambda: self.shell_object().Exec("pdftex endless.tex", self.work, timeout=90))
        wait_until(lambda: len(self.processes_of("endless.tex")) > 0)
        return thread

    def test_exec_answers_the_status(self):
        self.start_shell()
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)
        self.assertTrue(os.path.exists(os.path.join(self.work, "x.pdf")))

    def test_a_start_from_the_desktop_finds_the_programs_where_the_set_up_did(self):
        with open(self.preferences_path, "a", encoding="utf-8") as file:
            file.write(f"TEXBIN={os.path.dirname(shutil.which('pdftex'))}\n")
        self.environment["PATH"] = "/nowhere"
        self.start_shell()
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)

    def test_exec_raw_takes_bytes_that_are_not_utf8(self):
        self.start_shell()
        folder = os.path.join(os.fsencode(self.work), b"d\xff")
        os.mkdir(folder)
        with open(os.path.join(folder, b"x.tex"), "w", encoding="ascii") as file:
            file.write(PLAIN)
        shell = self.shell_object()
        self.assertEqual(shell.ExecRaw(dbus.ByteArray(b"pdftex x.tex"), dbus.ByteArray(folder), timeout=60), 0)
        self.assertTrue(os.path.exists(os.path.join(folder, b"x.pdf")))

    def error_of(self, call):
        with self.assertRaises(dbus.exceptions.DBusException) as caught:
            call()
        return caught.exception.get_dbus_name()

    def test_an_unknown_command_is_an_error_of_its_own(self):
        self.start_shell()
        name = self.error_of(lambda: self.shell_object().Exec("frobnicate x", self.work))
        self.assertEqual(name, "org.quillon.Shell1.Error.UnknownCommand")

    def test_a_tool_that_is_not_there_is_an_error_of_its_own(self):
        self.copy_binaries()
        os.unlink(os.path.join(self.binaries, "dvips.app", "Contents", "PkgInfo"))
        self.start_shell()
        name = self.error_of(lambda: self.shell_object().Exec("dvips x", self.work))
        self.assertEqual(name, "org.quillon.Shell1.Error.NotRun")

    def test_cancel_ends_the_run_and_all_its_processes(self):
        self.start_shell()
        thread = self.start_endless()
        self.shell_object().Cancel()
        thread.join(30)
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
        first.join(30)
        second.join(30)
        self.assertEqual(second.result, 0)

    def test_a_quit_event_is_answered_and_the_shell_exits(self):
        shell = self.start_shell()
        self.assertEqual(self.send("aevt", "quit")[0], 0)
        self.assertEqual(shell.wait(30), 0)

    def test_quit_during_a_run_ends_the_run_first(self):
        shell = self.start_shell()
        self.start_endless()
        self.shell_object().Quit()
        self.assertEqual(shell.wait(30), 0)
        self.assertEqual(self.processes_of("endless.tex"), [])
        self.assertEqual(self.setting("RECENTFILE1"), os.path.join(self.work, "endless.tex"))

    def test_a_termination_signal_during_a_run_ends_the_run_first(self):
        shell = self.start_shell()
        self.start_endless()
        shell.send_signal(signal.SIGTERM)
        self.assertEqual(shell.wait(30), 0)
        self.assertEqual(self.processes_of("endless.tex"), [])

    def test_a_killed_shell_leaves_nothing_of_the_run(self):
        shell = self.start_shell()
        self.start_endless()
        shell.kill()
        shell.wait(30)
        wait_until(lambda: not self.processes_of("endless.tex") and not self.processes_of(self.binaries))

    def test_a_killed_tool_host_leaves_nothing_of_the_run(self):
        self.start_shell()
        thread = self.start_endless()
        for pid in self.processes_of("pdftex.app/Contents/Linux/pdftex"):
            os.kill(pid, signal.SIGKILL)
        thread.join(30)
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
        shell.wait(30)
        wait_until(self.nothing_stubborn)

    def test_a_killed_tool_host_leaves_no_stubborn_child(self):
        self.start_shell()
        thread = self.start_stubborn()
        for pid in self.processes_of("pdftex.app/Contents/Linux/pdftex"):
            os.kill(pid, signal.SIGKILL)
        thread.join(30)
        wait_until(self.nothing_stubborn)

    def test_a_cancel_leaves_no_stubborn_child(self):
        self.start_shell()
        thread = self.start_stubborn()
        self.shell_object().Cancel()
        thread.join(30)
        self.assertTrue(self.nothing_stubborn())

    def test_a_follower_answers_the_engine(self):
        self.file("bad.tex", "\\wrongmacro text\n\\bye\n")
        self.start_shell()
        follower = self.bus()
        follower.get_object("org.quillon.Shell", "/org/quillon/Shell").Follow(
            True, dbus_interface="org.quillon.Shell1")
        thread = self.in_background(lambda: self.shell_object().Exec("pdftex bad.tex", self.work, timeout=90))

        def waiting_tool():
            for name in follower.list_names():
                if str(name).startswith("org.quillon.App.p") and int(name[17:]) != self.running.pid:
                    tool = follower.get_object(name, "/org/quillon/App")
                    if tool.Get("org.quillon.Tool1", "Waiting", dbus_interface=dbus.PROPERTIES_IFACE):
                        return tool
            return None
        wait_until(waiting_tool)
        waiting_tool().Answer(dbus.ByteArray(b"r\n"), dbus_interface="org.quillon.Tool1")
        thread.join(30)
        self.assertEqual(thread.result, 1)
        self.assertTrue(os.path.exists(os.path.join(self.work, "bad.pdf")))

    def test_a_termination_signal_ends_the_wait_to_be_in_front(self):
        # The run has ended and its output is to be viewed, but there is no viewer and the shell is behind.
        with open(self.preferences_path, "a", encoding="utf-8") as file:
            file.write("AUTOVIEW=1\n")
        script = self.file("steps", f"background\nevent QUIL exec ---- TEXT pdftex x.tex dest fss {self.work}\nquit\n")
        shell = self.start_shell("--script", script)
        wait_until(lambda: "Output written on x.pdf" in self.output())
        self.assertIsNone(shell.poll())
        shell.send_signal(signal.SIGTERM)
        self.assertEqual(shell.wait(30), 0)
        self.assertEqual(self.setting("RECENTFILE1"), os.path.join(self.work, "x.tex"))

    def send_many(self, connection, count, *arguments):
        for _ in range(count):
            call = dbus.lowlevel.MethodCallMessage("org.quillon.Shell", "/org/quillon/Shell", "org.quillon.Shell1", "Exec")
            call.append(*arguments)
            connection.send_message(call)
        connection.flush()

    def test_ten_thousand_calls_at_once_leave_room_for_the_rest(self):
        shell = self.start_shell()
        first = self.start_endless()
        self.send_many(self.bus(), 10000, "nothing x", "")
        wait_until(self.refuses_exec)
        # A tool's report still finds a place.
        self.shell_object().Cancel()
        first.join(30)
        self.assert_printed("\nProcessing cancelled by user.\n")
        wait_until(lambda: self.answers_exec())
        shell.send_signal(signal.SIGTERM)
        self.assertEqual(shell.wait(30), 0)

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

    def test_clients_that_are_gone_before_their_turn_harm_nothing(self):
        self.start_shell()
        first = self.start_endless()
        connection = self.bus()
        self.send_many(connection, 5, "pdftex x.tex", self.work)
        connection.close()
        self.shell_object().Cancel()
        first.join(30)
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)
        wait_until(lambda: self.output().count("\nProcessing -- pdftex x.tex\n") == 6)

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

    def test_a_zero_byte_in_a_command_is_said(self):
        self.start_shell()
        self.shell_object().ExecRaw(dbus.ByteArray(b"pdftex x.tex\0 more"), dbus.ByteArray(os.fsencode(self.work)))
        self.assert_printed("A text with a zero byte was received; only what stands before it is used.\n"
                            "\nProcessing -- pdftex x.tex\n")

    def test_a_document_in_the_root_folder_is_refused_by_name(self):
        self.start_shell()
        self.assertEqual(self.send("aevt", "odoc", **{"----": ("fss ", "/etc")})[0], 0)
        wait_until(lambda: 'Quillon cannot open "etc" where it lies.\n' in self.output())
        self.assertNotIn("Processing", self.output())

    def test_a_document_of_30_characters_is_refused_and_one_of_29_accepted(self):
        self.start_shell()
        for count in (30, 70):
            name = "n" * (count - 4) + ".tex"
            self.file(name, PLAIN)
            self.shell_object().Open(os.path.join(self.work, name), timeout=60)
            wait_until(lambda said=f'Filename "{name}" is too long for Quillon.\n': said in self.output())
        name = "n" * 25 + ".tex"
        self.file(name, PLAIN)
        self.shell_object().Open(os.path.join(self.work, name), timeout=60)
        wait_until(lambda: f"Output written on {'n' * 25}.pdf" in self.output())

    def test_follow_sends_the_console_text(self):
        self.start_shell()
        monitor = subprocess.Popen([sys.executable, os.path.join(os.path.dirname(__file__), "..", "fakes", "follower.py"),
                                    os.path.join(self.home, "followed")], env=self.environment, stdout=subprocess.PIPE)
        monitor.stdout.readline()
        self.shell_object().Exec("pdftex x.tex", self.work, timeout=60)

        def followed():
            with open(os.path.join(self.home, "followed"), encoding="utf-8") as file:
                return file.read()
        wait_until(lambda: "Output written on x.pdf" in followed())
        self.assertIn("\nProcessing -- pdftex x.tex\n", followed())
        monitor.kill()
        monitor.wait()
        monitor.stdout.close()

    def test_a_report_from_a_program_that_was_not_launched_is_refused(self):
        self.start_shell()
        self.assertEqual(self.send("QUIL", "exit", **{"----": ("long", dbus.Int32(0))})[0], -1708)
        self.assertEqual(self.send("aevt", "ansr", **{"edit": ("long", dbus.Int32(1))})[0], -1708)
        self.assertNotIn("Use any text editor", self.output())

    def test_printing_is_refused(self):
        self.start_shell()
        self.assertEqual(self.send("aevt", "pdoc")[0], -1708)

    def test_an_unknown_event_is_refused(self):
        self.start_shell()
        self.assertEqual(self.send("core", "setd")[0], -1708)

    def test_an_exec_without_a_folder_uses_the_binaries_folder(self):
        self.copy_binaries()  # the engine leaves its log there
        self.start_shell()
        self.send("QUIL", "exec", **{"----": ("TEXT", "pdftex nosuchfile.tex")})
        self.assert_printed(f"working directory --  {self.binaries}\n")

    def test_an_unknown_parameter_is_missed(self):
        self.start_shell()
        reply = self.send("QUIL", "exec", **{"----": ("TEXT", "nothing"), "what": ("long", dbus.Int32(1))})
        self.assertEqual(reply[0], -1708)
        wait_until(lambda: "I missed something.\n" in self.output())

    def test_open_typesets_the_file(self):
        self.start_shell()
        self.shell_object().Open(os.path.join(self.work, "x.tex"), timeout=60)
        wait_until(lambda: "Output written on x.pdf" in self.output())

    def test_open_by_the_desktop_takes_addresses(self):
        self.file("with blank.tex", PLAIN)
        self.start_shell()
        self.shell_object("org.freedesktop.Application").Open(
            dbus.Array([f"file://{self.work}/with%20blank.tex"], signature="s"), dbus.Dictionary({}, signature="sv"))
        wait_until(lambda: "Output written on" in self.output())
        self.assertTrue(os.path.exists(os.path.join(self.work, "with blank.pdf")))

    def test_a_second_shell_on_the_bus_is_refused(self):
        self.start_shell()
        second = subprocess.run([self.shell_program(), "--headless", "--service"], env=self.environment,
                                stdin=subprocess.DEVNULL, capture_output=True, timeout=30, check=False)
        self.assertEqual(second.returncode, 75)
        self.assertIn(b"another Quillon runs", second.stderr)

    def test_the_bus_going_away_is_said_and_the_run_ends(self):
        shell = self.start_shell()
        self.start_endless()
        self.daemon.kill()
        self.daemon.wait()
        wait_until(lambda: "The session bus has gone" in self.output())
        wait_until(lambda: not self.processes_of("endless.tex"))
        shell.send_signal(signal.SIGTERM)
        self.assertEqual(shell.wait(30), 0)

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
        self.copy_binaries()
        program = os.path.join(self.binaries, "pdftex.app", "Contents", "Linux", "pdftex")
        os.unlink(program)
        self.file("pdftex", "#!/bin/sh\nsleep 1000 &\nwait\n", os.path.dirname(program))
        os.chmod(program, 0o755)
        steps = self.start_scripted()
        steps.write(f"choose {self.work}/x.tex\nmenu 129 1\n".encode())
        wait_until(lambda: self.processes_of(program))
        self.lose_bus()
        steps.write(b"print state lastcommand\nquit\n")
        self.assertEqual(self.running.wait(60), 0)
        self.assertIn("lastcommand=pdftex x.tex \n", self.output())
        wait_until(lambda: not self.processes_of(program))

    def test_the_formats_of_a_menu_of_two_items_are_an_empty_text(self):
        formats = os.path.join(self.home, "formats")
        os.mkdir(formats)
        for name in ("one", "two"):
            path = self.file(name + ".fmt", "x", formats)
            os.setxattr(path, "user.quillon.creator", b"QXET")
        with open(self.preferences_path, "a", encoding="utf-8") as file:
            file.write(f"TEXFORMATS={formats}\n")
        self.start_shell()
        self.assertEqual(self.shell_object().Formats(), "")


if __name__ == "__main__":
    unittest.main()
