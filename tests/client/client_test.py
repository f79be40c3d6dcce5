"""The quillon command against a shell played by this script, and against the real one where it was built."""

import os
import re
import signal
import subprocess
import sys
import unittest

import dbus
import dbus.service

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, FAKES, MAIN_LOOP, ServiceTest, stop, wait_until  # noqa: E402

QUILLON = os.path.join(BUILD, "bin", "quillon")
NAME = "org.quillon.Shell"
PATH = "/org/quillon/Shell"
SHELL = "org.quillon.Shell1"


class ShellError(dbus.DBusException):
    def __init__(self, name, message):
        super().__init__(message, name="org.quillon.Shell1.Error." + name)


class FakeShell(dbus.service.Object):
    """Records what it is asked; answers what the test has set."""

    def __init__(self, bus):
        self.bus = bus
        self.bus.request_name(NAME)
        super().__init__(self.bus, PATH)
        self.calls = []
        self.answer = lambda reply, error: reply(0)
        self.pending = None
        self.leaves = False  # without an answer, when it is told to quit

    def close(self):
        self.remove_from_connection()
        self.bus.release_name(NAME)
        self.bus.close()

    @dbus.service.method(SHELL, "ayaya{sv}", "ia{sv}", async_callbacks=("reply", "error"))
    def Run(self, command, folder, options, reply, error):
        self.calls.append(("Run", bytes(bytearray(command)), bytes(bytearray(folder))))
        self.options = {str(name): bool(value) for name, value in options.items()}
        self.answer(lambda status, **result: reply(status, result), error)

    @dbus.service.method(SHELL, "s", "s")
    def Locate(self, name):
        return "/tex/" + name if name == "x.tex" else ""

    @dbus.service.method(SHELL, "s", "s")
    def Find(self, name):
        self.calls.append(("Find", str(name)))
        return "TeX is processing your request."

    @dbus.service.method(SHELL, "", "s")
    def Formats(self):
        return "plain\nlatex"

    @dbus.service.method(SHELL, "s")
    def Open(self, path):
        self.calls.append(("Open", str(path)))

    @dbus.service.method(SHELL, "ay")
    def OpenRaw(self, path):
        self.calls.append(("OpenRaw", bytes(bytearray(path))))

    @dbus.service.method(SHELL)
    def Cancel(self):
        self.calls.append(("Cancel",))
        if self.pending:
            self.pending(ShellError("Cancelled", "the run was cancelled"))

    @dbus.service.method(SHELL)
    def Quit(self):
        self.calls.append(("Quit",))
        self.bus.release_name(NAME)
        if self.leaves:
            raise dbus.DBusException("gone", name="org.freedesktop.DBus.Error.NoReply")

    @dbus.service.method(SHELL, "b")
    def Follow(self, on):
        self.calls.append(("Follow", bool(on)))

    @dbus.service.signal(SHELL, "s")
    def ConsoleText(self, text):
        pass

    @dbus.service.signal(SHELL, "b")
    def ConsoleTranscript(self, begins):
        pass

    @dbus.service.method("org.freedesktop.Application", "a{sv}")
    def Activate(self, data):
        self.calls.append(("Activate", {str(k): str(v) for k, v in data.items()}))


class FakeTool(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/org/quillon/App")
        self.answers = []

    @dbus.service.signal("org.quillon.Tool1", "ay")
    def Output(self, data):
        pass

    @dbus.service.signal("org.freedesktop.DBus.Properties", "sa{sv}as")
    def PropertiesChanged(self, interface, changed, gone):
        pass

    @dbus.service.method("org.quillon.Tool1", "ay")
    def Answer(self, data):
        self.answers.append(bytes(bytearray(data)))


class ClientTest(ServiceTest):
    def setUp(self):
        super().setUp()
        self.write_preferences("SPACECHAR=31\n")

    def start(self, *words, stdin=subprocess.DEVNULL, **environment):
        process = subprocess.Popen([QUILLON, *words], stdin=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   cwd=self.work, env=dict(self.environment, **environment))
        self.addCleanup(stop, process)
        return process

    def finish(self, process):
        wait_until(lambda: process.poll() is not None)
        out, error = process.communicate()
        return process.returncode, out.decode("utf-8", "replace"), error.decode()

    def quillon(self, *words, **environment):
        return self.finish(self.start(*words, **environment))


class WithoutShell(ClientTest):
    def test_version_and_help(self):
        self.assertRegex(self.quillon("--version")[1], r"^quillon \d+\.\d+\.\d+\n$")
        self.assertIn("quillon exec [OPTION...] WORD...", self.quillon("--help")[1])

    def test_the_manual_names_every_form_and_option_of_the_help(self):
        with open(os.path.join(FAKES, "..", "..", "resources", "man", "quillon.1"), encoding="utf-8") as file:
            manual = file.read().replace("\\-", "-")
        usage = self.quillon("--help")[1]
        forms = [line.split()[1].strip("[]") for line in usage.splitlines() if line.startswith("quillon ")]
        options = [word for line in usage.splitlines() if line.startswith(" ") for word in line.split() if word[0] == "-"]
        self.assertLess({"exec", "find", "locate", "formats", "edit", "quit", "--headless"}, set(forms))
        self.assertEqual(set(options), {"-C", "-f", "--view", "--edit"})
        for name in forms + options:
            self.assertRegex(manual, r"\\f[BI](quillon )?" + re.escape(name.rstrip(".")), name)
        for status in re.findall(r"\b\d{2,3}\b", usage):
            self.assertIn(f"\n.TP\n{status}\n", manual)

    def test_a_folder_that_does_not_exist_is_a_word_that_is_not_understood(self):
        status, _, error = self.quillon("exec", "-C", "/nowhere/at/all", "pdftex", "x")
        self.assertEqual((status, error), (64, "quillon: there is no folder /nowhere/at/all\n"))

    def test_usage_errors(self):
        for words in (["exec"], ["exec", "-z", "x"], ["locate"], ["find", "a", "b"], ["edit", "x"], ["--bad"]):
            self.assertEqual(self.quillon(*words)[0], 64, words)

    def test_quit_without_a_shell(self):
        status, out, error = self.quillon("quit")
        self.assertEqual((status, out), (69, ""))
        self.assertEqual(error, 'quillon: the shell is not running; start it with "quillon"\n')

    def test_a_bus_of_ones_own_is_started_once(self):
        nowhere = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere", "XDG_RUNTIME_DIR": "/nowhere"}
        self.assertEqual(self.quillon("exec", "x", QUILLON_OWN_BUS="1", **nowhere),
                         (69, "", "quillon: there is no session bus\n"))


class WithShell(ClientTest):
    def setUp(self):
        super().setUp()
        self.shell = FakeShell(self.bus(MAIN_LOOP))
        self.addCleanup(self.shell.close)

    def test_files_are_opened_one_by_one_and_the_shell_comes_forward(self):
        for name in ("a.tex", "b c.tex", "é.tex"):
            open(os.path.join(self.work, name), "w").close()
        os.makedirs(self.work + "/sub")
        raw = os.fsencode(self.work) + b"/\xff.tex"
        open(raw, "w").close()
        status, _, error = self.quillon("a.tex", "./b c.tex", "sub/../é.tex", os.fsdecode(raw),
                                        XDG_ACTIVATION_TOKEN="token")
        wait_until(lambda: len(self.shell.calls) == 5)
        self.assertEqual(status, 0, error)
        self.assertEqual(self.shell.calls, [
            ("Open", self.work + "/a.tex"), ("Open", self.work + "/b c.tex"), ("Open", self.work + "/sub/../é.tex"),
            ("OpenRaw", raw), ("Activate", {"activation-token": "token", "desktop-startup-id": "token"})])

    def test_a_missing_file_is_said(self):
        status, _, error = self.quillon("none.tex")
        self.assertEqual((status, error), (1, "quillon: none.tex: No such file or directory\n"))

    def test_no_file_brings_the_shell_forward(self):
        self.assertEqual(self.quillon()[0], 0)
        wait_until(lambda: self.shell.calls)
        self.assertEqual(self.shell.calls, [("Activate", {})])

    def test_texts(self):
        self.assertEqual(self.quillon("find", "x.tex")[:2], (0, "/tex/x.tex\n"))
        self.assertEqual(self.quillon("find", "y.tex")[:2], (1, ""))
        self.assertEqual(self.shell.calls, [("Find", "x.tex")])
        self.assertEqual(self.quillon("formats")[:2], (0, "plain\nlatex\n"))
        self.assertEqual(self.quillon("locate", "x.tex")[:2], (0, "/tex/x.tex\n"))
        self.assertEqual(self.quillon("locate", "y.tex")[:2], (1, ""))

    def test_quit(self):
        self.assertEqual(self.quillon("quit")[0], 0)
        self.assertEqual(self.shell.calls, [("Quit",)])

    def test_a_shell_that_leaves_without_an_answer_has_quit(self):
        self.shell.leaves = True
        self.assertEqual(self.quillon("quit"), (0, "", ""))

    def test_words_after_two_dashes_are_no_options(self):
        self.file("-x.tex", "")
        self.assertEqual(self.quillon("--", "-x.tex")[0], 0)
        wait_until(lambda: len(self.shell.calls) == 2)
        self.assertEqual(self.shell.calls[0], ("Open", self.work + "/-x.tex"))
        self.assertEqual(self.quillon("exec", "-f", "--", "-f", "x")[0], 0)
        self.assertEqual(self.shell.calls[2][1], b"-f x")

    def test_a_status_too_large_for_an_exit_is_no_success(self):
        for status, wanted in ((200, 200), (256, 1), (0, 0)):
            self.shell.answer = lambda reply, error, status=status: reply(status)
            self.assertEqual(self.quillon("exec", "x")[0], wanted)

    def test_a_headless_shell_beside_the_shell_has_a_bus_of_its_own(self):
        script = self.file("script", "print setting SPACECHAR\nquit\n")
        status, out, error = self.quillon("--headless", "--script", script)
        self.assertEqual(status, 0, error)
        self.assertIn("31\n", out)
        self.assertEqual(self.shell.calls, [])

    def test_exec_prints_the_console_and_has_the_runs_status(self):
        def answer(reply, error):
            self.shell.ConsoleText("Processing\r")
            self.shell.ConsoleText("done é\r")
            reply(1)

        self.shell.answer = answer
        status, out, _ = self.quillon("exec", "pdftex", "a b.tex", "")
        self.assertEqual((status, out), (1, "Processing\ndone é\n"))
        self.assertEqual(self.shell.calls, [("Run", b'pdftex a\x1fb.tex ""', self.work.encode())])
        self.assertTrue(self.shell.options.get("follow", False))

    def test_exec_in_another_folder(self):
        os.makedirs(self.work + "/sub")
        self.assertEqual(self.quillon("exec", "-C", "sub/", "bibtex", "x")[0], 0)
        self.assertEqual(self.shell.calls[0], ("Run", b"bibtex x", self.work.encode() + b"/sub"))

    def test_exec_of_bytes(self):
        self.assertEqual(self.quillon("exec", "tex", os.fsdecode(b"\xff.tex"))[0], 0)
        self.assertEqual(self.shell.calls[0], ("Run", b"tex \xff.tex", self.work.encode()))

    def test_exec_errors(self):
        for name, wanted in (("NotRun", 127), ("UnknownCommand", 127), ("Busy", 75), ("Cancelled", 130)):
            self.shell.answer = lambda reply, error, name=name: error(ShellError(name, "why " + name))
            status, _, error = self.quillon("exec", "x")
            self.assertEqual((status, error), (wanted, "quillon: why %s\n" % name))

    def test_the_first_error_is_said_as_compilers_say_it(self):
        self.shell.answer = lambda reply, error: reply(
            1, file=dbus.Array(b"/a b/\xff.tex", signature="y"), line=dbus.Int32(7), message="Undefined control sequence.")
        process = self.start("exec", "x")
        wait_until(lambda: process.poll() is not None)
        self.assertEqual(process.communicate()[1], b"/a b/\xff.tex:7: Undefined control sequence.\n")

    def test_viewer_and_editor_are_asked_for_by_options_alone(self):
        for words, wanted in (((), (False, False)), (("--view",), (True, False)), (("--edit", "--view"), (True, True))):
            self.assertEqual(self.quillon("exec", *words, "x")[0], 0)
            self.assertEqual((self.shell.options.get("view", False), self.shell.options.get("edit", False)), wanted)

    def test_an_interrupt_cancels(self):
        def answer(reply, error):
            self.shell.pending = error

        self.shell.answer = answer
        process = self.start("exec", "x")
        wait_until(lambda: self.shell.pending)
        process.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(process)[0], 130)
        self.assertIn(("Cancel",), self.shell.calls)

    def test_a_shell_that_goes_during_a_run(self):
        self.shell.answer = lambda reply, error: error(
            dbus.DBusException("gone", name="org.freedesktop.DBus.Error.NoReply"))
        status, _, error = self.quillon("exec", "x")
        self.assertEqual((status, error), (69, "quillon: the shell has gone\n"))

    def test_following_shows_the_tool_once_and_passes_answers(self):
        tool = FakeTool(self.shell.bus)
        self.addCleanup(tool.remove_from_connection)
        finish = []

        def answer(reply, error):
            self.shell.ConsoleText("Processing\r")
            tool.Output(dbus.Array(b"This is it\r\n? ", signature="y"))
            tool.PropertiesChanged("org.quillon.Tool1", {"Waiting": True}, [])
            finish.append(reply)

        self.shell.answer = answer
        process = self.start("exec", "-f", "x", stdin=subprocess.PIPE)
        wait_until(lambda: finish)
        process.stdin.write(b"h\n")
        process.stdin.flush()
        wait_until(lambda: tool.answers)
        self.assertEqual(tool.answers, [b"h\n"])
        tool.Output(dbus.Array(b"h\r\nhelp\n", signature="y"))
        tool.PropertiesChanged("org.quillon.Tool1", {"Waiting": True}, [])
        process.stdin.close()
        wait_until(lambda: len(tool.answers) == 2)
        self.assertEqual(tool.answers[1], b"\4")
        self.shell.ConsoleTranscript(True)
        self.shell.ConsoleText("This is it\r? h\rhe")
        self.shell.ConsoleText("lp\r")
        self.shell.ConsoleTranscript(False)
        self.shell.ConsoleText("Output shown\r")
        finish[0](0)
        wait_until(lambda: process.poll() is not None)
        out = process.stdout.read().decode()
        process.stdout.close()
        process.stderr.close()
        self.assertEqual(out, "Processing\nThis is it\r\n? h\r\nhelp\nOutput shown\n")
        self.assertTrue(self.shell.options.get("answer", False))

    def test_a_transcript_that_was_not_shown_live_is_shown(self):
        def answer(reply, error):
            self.shell.ConsoleTranscript(True)
            self.shell.ConsoleText("said\r")
            self.shell.ConsoleTranscript(False)
            reply(0)

        self.shell.answer = answer
        self.assertEqual(self.quillon("exec", "x")[1], "said\n")
        self.assertFalse(self.shell.options.get("answer", False))
        self.assertEqual(self.quillon("exec", "-f", "x")[1], "said\n")


class RealShell(ClientTest):
    def setUp(self):
        super().setUp()
        os.remove(self.preferences_path)
        self.file("my file.tex", "Hi\\bye\n")
        self.file("err.tex", "\\wrong\n\\bye\n")

    def test_exec_starts_a_headless_shell_and_ends_it(self):
        status, out, error = self.quillon("exec", "pdftex", "my file.tex")
        self.assertEqual(status, 0, out + error)
        self.assertIn('Output written on "my file.pdf" (1 page', out)
        self.assertTrue(os.path.exists(self.work + "/my file.pdf"))
        self.assertTrue(os.path.exists(self.preferences_path))
        self.assertFalse(self.bus().name_has_owner(NAME))

    def test_exec_without_a_bus(self):
        status, out, error = self.quillon("exec", "pdftex", "my file.tex",
                                          DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere", XDG_RUNTIME_DIR="/nowhere")
        self.assertEqual(status, 0, out + error)

    def test_the_status_is_the_runs(self):
        status, out, error = self.quillon("exec", "pdftex", "err.tex")
        self.assertEqual(status, 1, out + error)
        self.assertIn("! Undefined control sequence.", out)

    def test_an_unknown_command(self):
        self.assertEqual(self.quillon("exec", "latex", "x")[0], 127)

    def test_answers_reach_tex(self):
        process = self.start("exec", "-f", "pdftex", "err.tex", stdin=subprocess.PIPE)
        process.stdin.write(b"h\n\n")
        process.stdin.flush()
        status, out, error = self.finish(process)
        self.assertEqual(out.count("The control sequence at the end"), 1, out + error)
        self.assertEqual(out.count("! Undefined control sequence."), 1, out)

    def test_an_interrupt_leaves_nothing(self):
        self.file("loop.tex", "\\immediate\\write16{looping}\\shipout\\hbox{}\\def\\x{\\x}\\x\n")
        process = self.start("exec", "-f", "pdftex", "loop.tex")
        seen = b""
        while b"looping" not in seen:
            block = os.read(process.stdout.fileno(), 4096)
            self.assertTrue(block, seen)
            seen += block
        process.send_signal(signal.SIGINT)
        status, out, error = self.finish(process)
        self.assertEqual(status, 130, out + error)
        self.assertFalse(self.bus().name_has_owner(NAME))


if __name__ == "__main__":
    unittest.main()
