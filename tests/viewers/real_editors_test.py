"""gVim, Geany, Mousepad, Emacs and nano, the real ones, show the error of a real run: the caret stands in its line.

What the caret is proved by is typed there and saved: it must come into the error's line of the file on disk.
"""

import os
import shutil
import signal
import subprocess
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from carets import EMACS, GEANY, GVIM, MOUSEPAD, NANO, CaretTest  # noqa: E402
from harness import BUILD, TOOL, DesktopTest, stop, wait_until  # noqa: E402

EXECUTABLES = [editor.executable for editor in (GVIM, GEANY, MOUSEPAD, EMACS, NANO)] + ["xterm"]
ENTRIES = "/usr/share/applications"
NASTY = ["a'$(touch o)`c`.tex", "a b é.tex"]
QUILLON = os.path.join(BUILD, "bin", "quillon")


class RealEditors(CaretTest, DesktopTest):
    def setUp(self):
        super().setUp()
        self.environment.update(GSETTINGS_BACKEND="memory", NO_AT_BRIDGE="1", TERMINAL="xterm", LC_ALL="C.UTF-8")
        # Emacs compiles nothing beside its work, and nano leaves a file beside the one that it has opened.
        self.file("early-init.el", "(setq native-comp-deferred-compilation nil)\n", self.home + "/.emacs.d")
        self.file(".nanorc", "set locking\n", self.home)
        self.addCleanup(self.end_editors)

    def editors(self):
        return [process for name in EXECUTABLES for process in self.running_as(name)]

    def end_editors(self):
        for process in self.editors():
            os.kill(process, signal.SIGKILL)
        wait_until(lambda: not self.editors(), "the end of the editors")

    def start(self, editor, application):
        self.editor = editor
        self.preferences(USEPDFTEX="1", Editor=application)
        self.start_shell("--service")

    def run_tex(self, path, **options):
        """Runs the engine on a file; the line of the first error."""
        command = os.fsencode("pdftex " + os.path.basename(path).replace(" ", "\x1f"))
        options = dbus.Dictionary({"edit": True, **options}, signature="sv")
        folder = os.fsencode(self.work)
        status, result = self.shell_object().Run(dbus.ByteArray(command), dbus.ByteArray(folder), options, timeout=60)
        self.assertEqual(int(status), 1)
        return int(result["line"])

    def managed(self):
        """The windows that the window manager knows; the shell has none here."""
        done = subprocess.run(["xprop", "-display", self.display, "-root", "_NET_CLIENT_LIST"], capture_output=True,
                              text=True, timeout=60, check=True)
        return [str(int(word.strip(","), 16)) for word in done.stdout.split() if word.startswith("0x")]

    def shows(self, path, before):
        """Whether a window that shows the file has the keyboard; BEFORE are the windows of other requests."""
        window = self.active()
        if not window or window in before:
            return False
        if self.editor is NANO:
            return os.path.exists(os.path.join(self.work, f".{os.path.basename(path)}.swp"))
        return os.path.basename(path) in " ".join(self.xdotool("getwindowname", window))

    def assert_caret(self, path, line, before=()):
        """Waits for the file in the editor, types, saves, and looks where it came in the file."""
        wait_until(lambda: self.shows(path, before), f"{path} in the editor")
        self.assert_typed(path, line)
        self.keys("ctrl+Home")

    def type_text(self, text):
        self.xdotool("type", text)

    def ask(self, name, line, before=()):
        """A run that fails in LINE of a file that is not in front, and what it leads to."""
        path = os.path.join(self.work, name)
        if not os.path.exists(path):
            self.wrong(name, line)
        self.assertEqual(self.run_tex(path), line)
        self.assert_caret(path, line, before)

    def assert_running(self, count):
        """COUNT editors with a window each, and nothing that could start another."""
        for command in ("open\0-a\0", "edit\0+"):
            wait_until(lambda words=command: not self.processes_of(words), "the end of " + command[:4])
        wait_until(lambda: len(self.running_as(self.editor.executable)) == count, f"{count} processes")
        self.assertEqual(len(self.managed()), count)

    def one_window(self, editor, application, names=("one.tex", "two.tex", "one.tex")):
        self.start(editor, application)
        for name in names:
            self.ask(name, {"one.tex": 40, "two.tex": 25, "three.tex": 31}[name])
        self.assert_running(1)

    def window_each(self, editor, application):
        self.start(editor, application)
        for name, line in (("one.tex", 40), ("two.tex", 25), ("three.tex", 31)):
            self.ask(name, line, self.managed())
        self.assert_running(3)

    def test_gvim(self):
        self.one_window(GVIM, "/usr/bin/gvim")

    def test_geany(self):
        self.one_window(GEANY, "/usr/bin/geany")
        self.shell_object().Quit()
        wait_until(self.ended, "the end of the shell")
        self.assert_running(1)
        self.assert_caret(self.work + "/one.tex", 1)

    def test_mousepad(self):
        # One of this version leaves the caret where it is in a file that it has open.
        self.one_window(MOUSEPAD, "/usr/bin/mousepad", ("one.tex", "two.tex", "three.tex"))

    def test_emacs(self):
        self.window_each(EMACS, "/usr/bin/emacs")

    def test_nano_in_the_terminal(self):
        self.window_each(NANO, "/usr/bin/nano")
        self.assertEqual(len(self.running_as("xterm")), 3)

    def test_emacsclient_starts_an_emacs_that_serves(self):
        self.one_window(EMACS, "/usr/bin/emacsclient")

    def serve(self, *words):
        """An Emacs of the person's that serves."""
        emacs = subprocess.Popen(["/usr/bin/emacs", *words], env=self.environment, cwd=self.home,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(stop, emacs)
        wait_until(lambda: self.run_program("/usr/bin/emacsclient", "--eval", "t").returncode == 0, "the server")
        return emacs

    def test_emacsclient_reaches_the_emacs_that_serves(self):
        emacs = self.serve("-f", "server-start")
        self.one_window(EMACS, "/usr/bin/emacsclient")
        self.assertEqual(self.running_as("emacs-"), [emacs.pid])

    def test_emacsclient_gives_a_daemon_its_window(self):
        emacs = self.serve("--fg-daemon")
        self.one_window(EMACS, "/usr/bin/emacsclient")
        self.assertEqual(self.running_as("emacs-"), [emacs.pid])

    def test_gvim_by_its_desktop_entry(self):
        self.one_window(GVIM, ENTRIES + "/gvim.desktop", ("one.tex", "two.tex"))

    def test_emacs_by_its_desktop_entry(self):
        self.start(EMACS, ENTRIES + "/emacs.desktop")
        self.ask("one.tex", 40)
        self.assert_running(1)

    def test_a_row_of_the_persons_own(self):
        script = self.file("my-emacs", '#!/bin/sh\nexec emacs "+$2" "$4"\n', self.home, 0o755)
        self.file("editors.table", "my-emacs | | at %l in %f\n", self.support)
        self.start(EMACS, script)
        self.ask("one.tex", 40)
        self.assert_running(1)

    def test_e_at_the_prompt(self):
        self.start(GEANY, "/usr/bin/geany")
        path = self.wrong("one.tex", 40)
        run = self.in_background(lambda: self.run_tex(path, answer=True))
        own, bus = f"org.quillon.App.p{self.running.pid}", self.bus()

        def tools():
            return [name for name in bus.list_names() if name.startswith("org.quillon.App.p") and name != own]

        (name,) = wait_until(tools, "the tool")
        tool = bus.get_object(name, "/org/quillon/App", introspect=False)
        tool.Follow(True, dbus_interface=TOOL)
        wait_until(lambda: tool.Get(TOOL, "Waiting", dbus_interface=dbus.PROPERTIES_IFACE), "the prompt")
        tool.Answer(dbus.ByteArray(b"e\n"), dbus_interface=TOOL)
        self.assert_caret(path, 40)
        run.join(60)
        self.assertEqual(run.result, 40)
        self.assert_running(1)

    def test_e_typed_into_the_tools_window(self):
        self.editor = GEANY
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", PDFTEXFORMAT="pdftex", Editor="/usr/bin/geany")
        path = self.wrong("one.tex", 40)
        self.start_desktop(path)
        for again in (False, True):
            if again:
                self.press("ctrl+t", lambda: self.windows("– Quillon$"))
            (tool,) = wait_until(lambda: self.windows("– Quillon$"), "the tool's window")
            wait_until(lambda: self.active() == tool, "the keyboard")
            self.keys("e", "Return")
            self.assert_caret(path, 40, [self.window, tool])
        # The shell's window, and the editor's.
        self.assertEqual((len(self.managed()), len(self.running_as("geany"))), (2, 1))

    def nasty(self, editor, application, each=False):
        self.start(editor, application)
        for name, line in zip(NASTY, (40, 25)):
            self.ask(name, line, self.managed() if each else ())
        self.assertEqual([name for folder in (self.work, self.home) for name in os.listdir(folder) if name == "o"], [])
        self.assert_running(2 if each else 1)

    def test_gvim_opens_a_file_whatever_its_name(self):
        self.nasty(GVIM, "/usr/bin/gvim")

    def test_nano_opens_a_file_whatever_its_name(self):
        self.nasty(NANO, "/usr/bin/nano", each=True)

    def test_without_a_terminal_the_console_says_so(self):
        programs = os.path.join(self.home, "programs")
        os.mkdir(programs)
        for program in ("pdftex", "kpsewhich"):
            os.symlink(shutil.which(program), os.path.join(programs, program))
        self.environment["PATH"] = programs
        del self.environment["TERMINAL"]
        self.start(NANO, "/usr/bin/nano")
        self.run_tex(self.wrong("one.tex", 40))
        said = ("edit: there is no terminal for the editor /usr/bin/nano; set TERMINAL, or choose an editor with a "
                "window of its own\n")
        wait_until(lambda: said in self.output(), "the sentence in the console")
        self.assertEqual(self.editors(), [])

    def test_an_editor_outlives_a_shell_that_has_a_bus_of_its_own(self):
        self.editor = MOUSEPAD
        self.preferences(USEPDFTEX="1", Editor="/usr/bin/mousepad")
        del self.environment["DBUS_SESSION_BUS_ADDRESS"]
        path, end = self.wrong("one.tex", 40), os.path.join(self.home, "end")
        script = self.file("script", f"event aevt odoc ---- fss {path}\nwait FILE {end}\n")
        self.start_program(QUILLON, "--headless", "--script", script)
        self.assert_caret(path, 40)
        self.file(end, "")
        wait_until(self.ended, "the end of the shell")
        wait_until(lambda: not self.processes_of("dbus-daemon\0--nofork"), "the end of its bus")
        self.assert_caret(path, 1)
        self.assert_running(1)


if __name__ == "__main__":
    unittest.main()
