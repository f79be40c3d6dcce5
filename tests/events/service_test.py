"""The shell on the session bus: its own interface, the events, trust."""

import os
import shutil
import subprocess
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import FAKES, stop, wait_until  # noqa: E402
from service import PLAIN, Service  # noqa: E402


class Interface(Service):
    def test_exec_answers_the_status(self):
        self.start_shell()
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)
        self.assertTrue(os.path.exists(os.path.join(self.work, "x.pdf")))

    def test_a_start_from_the_desktop_finds_the_programs_where_the_set_up_did(self):
        self.add_preferences(f"TEXBIN={os.path.dirname(shutil.which('pdftex'))}\n")
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

    def test_a_follower_answers_the_engine(self):
        self.file("bad.tex", "\\wrongmacro text\n\\bye\n")
        self.start_shell()
        follower = self.bus()
        follower.get_object("org.quillon.Shell", "/org/quillon/Shell").Follow(
            True, dbus_interface="org.quillon.Shell1")
        thread = self.in_background(lambda: self.shell_object().Run(
            dbus.ByteArray(b"pdftex bad.tex"), dbus.ByteArray(os.fsencode(self.work)),
            dbus.Dictionary({"answer": True}, signature="sv"), timeout=90))

        def waiting_tool():
            for name in follower.list_names():
                if str(name).startswith("org.quillon.App.p") and int(name[17:]) != self.running.pid:
                    tool = follower.get_object(name, "/org/quillon/App")
                    if tool.Get("org.quillon.Tool1", "Waiting", dbus_interface=dbus.PROPERTIES_IFACE):
                        return tool
            return None
        wait_until(waiting_tool)
        waiting_tool().Answer(dbus.ByteArray(b"r\n"), dbus_interface="org.quillon.Tool1")
        thread.join(60)
        status, result = thread.result
        self.assertEqual((status, dict(result)), (1, {}))
        self.assertTrue(os.path.exists(os.path.join(self.work, "bad.pdf")))

    def test_run_tells_the_first_error(self):
        self.file("bad.tex", "\n\\wrongmacro text\n\\bye\n")
        self.start_shell()
        status, result = self.run_command("pdftex bad.tex")
        self.assertEqual(status, 1)
        self.assertEqual(bytes(bytearray(result["file"])), os.fsencode(os.path.join(self.work, "bad.tex")))
        self.assertEqual((result["line"], result["message"]), (2, "Undefined control sequence."))

    def test_run_without_options_opens_neither_viewer_nor_editor(self):
        mark = os.path.join(self.work, "opened")
        opener = self.file("opener", f"#!/bin/sh\ntouch '{mark}'\n", mode=0o755)
        self.write_preferences(f"SPACECHAR=31\nDEBUG=0\nAUTOVIEW=1\nPDFVIEW={opener}\nEditor={opener}\n")
        self.file("good.tex", "Hello.\n\\bye\n")
        self.file("bad.tex", "\\wrongmacro\n\\bye\n")
        self.start_shell()
        self.assertEqual(self.run_command("pdftex good.tex")[0], 0)
        self.assertEqual(self.run_command("pdftex bad.tex")[0], 1)
        self.assertFalse(os.path.exists(mark))
        self.assertEqual(self.run_command("pdftex good.tex", view=True)[0], 0)
        wait_until(lambda: os.path.exists(mark), "the viewer")
        os.unlink(mark)
        self.assertEqual(self.run_command("pdftex bad.tex", edit=True)[0], 1)
        wait_until(lambda: os.path.exists(mark), "the editor")

    def test_run_does_not_take_options_that_it_does_not_know(self):
        self.start_shell()
        for options in ({"fast": True}, {"view": "yes"}):
            name = self.error_of(lambda given=options: self.run_command("pdftex x.tex", **given))
            self.assertEqual(name, "org.freedesktop.DBus.Error.InvalidArgs")

    def run_command(self, command, **options):
        return self.shell_object().Run(dbus.ByteArray(command.encode()), dbus.ByteArray(os.fsencode(self.work)),
                                       dbus.Dictionary(options, signature="sv"), timeout=90)

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
        monitor = subprocess.Popen([sys.executable, os.path.join(FAKES, "follower.py"),
                                    os.path.join(self.home, "followed")], env=self.environment, stdout=subprocess.PIPE)
        self.addCleanup(stop, monitor)
        monitor.stdout.readline()
        self.shell_object().Exec("pdftex x.tex", self.work, timeout=60)

        def followed():
            with open(os.path.join(self.home, "followed"), encoding="utf-8") as file:
                return file.read()
        wait_until(lambda: "Output written on x.pdf" in followed())
        self.assertIn("\nProcessing -- pdftex x.tex\n", followed())

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
        second = self.run_program(self.shell_program(), "--headless", "--service")
        self.assertEqual(second.returncode, 75)
        self.assertIn("another Quillon runs", second.stderr)

    def test_the_formats_of_a_menu_of_two_items_are_an_empty_text(self):
        formats = os.path.join(self.home, "formats")
        os.mkdir(formats)
        for name in ("one", "two"):
            path = self.file(name + ".fmt", "x", formats)
            os.setxattr(path, "user.quillon.creator", b"QXET")
        self.add_preferences(f"TEXFORMATS={formats}\n")
        self.start_shell()
        self.assertEqual(self.shell_object().Formats(), "")


if __name__ == "__main__":
    unittest.main()
