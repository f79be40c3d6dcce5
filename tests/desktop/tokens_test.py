"""The activation tokens that the shell hands on to what it starts on a Wayland desktop."""

import glob
import os
import signal
import subprocess
import sys
import unittest

import dbus.service

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import PLAIN  # noqa: E402
from harness import BINARIES, BUILD, MAIN_LOOP, WaylandTest, wait_until  # noqa: E402
from harness.processes import program_name as name_of, stop  # noqa: E402

DESK = os.path.join(BUILD, "bin", "tests", "desk")
PLUG_IN = os.path.join(BINARIES, "Quillon.app", "Contents", "Linux", "wayland-tokens.so")
QUILLON = os.path.join(BUILD, "bin", "quillon")
NAMES = ("XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID")
# Writes its environment down and becomes a window with the title of the script, which asks for the keyboard.
WINDOW = """#!/bin/sh
env > "$HOME/$(basename "$0").$$.part"
mv "$HOME/$(basename "$0").$$.part" "$HOME/$(basename "$0").$$.environment"
exec %s asking "$(basename "$0")"
"""


# An engine's question, at which its window asks for the keyboard.
QUESTION = "printf '? '; read answer"
ENTRY = """[Desktop Entry]
Type=Application
Name=A viewer
Exec=/bin/false %f
DBusActivatable=true
"""


class BusApplication(dbus.service.Object):
    """A viewer that runs, and takes its documents over the bus."""

    def __init__(self, bus):
        bus.request_name("org.example.Viewer")
        super().__init__(bus, "/org/example/Viewer")
        self.calls = []

    @dbus.service.method("org.freedesktop.Application", "asa{sv}")
    def Open(self, uris, data):
        self.calls.append(([str(uri) for uri in uris], {str(key): str(value) for key, value in data.items()}))


class TokensTest(WaylandTest):
    """A shell, and a viewer and an editor that ask for the keyboard."""

    def setUp(self):
        super().setUp()
        # A new window gets the keyboard by a token or not at all.
        self.message("no_focus [title=\"Viewer|Editor\"]")
        self.viewer = self.file("Viewer", WINDOW % DESK, self.home, 0o755)
        self.editor = self.file("Editor", WINDOW % DESK, self.home, 0o755)
        self.path = self.file("x.tex", PLAIN)
        self.pdf = self.file("x.pdf", "%PDF-1.4\n")
        self.write_settings()
        self.addCleanup(self.end_windows)

    def write_settings(self, **settings):
        self.preferences(**{"USEPDFTEX": "1", "AUTOVIEW": "0", "TEXWINDOW": "100 200 400 800", "PDFVIEW": self.viewer,
                            "Editor": self.editor, "TEXFILE": self.path, "TEXDIR": self.work, "PDFFILE": self.pdf,
                            **settings})

    def end_windows(self):
        for process in self.processes_of("asking"):
            os.kill(process, signal.SIGTERM)

    def start_desktop(self, *files):
        self.start_program(self.shell_program(), *files)
        return self.window("the shell", name="Quillon", focused=True)

    def environments(self, name):
        """The environments of the starts of that script so far, in the order of their processes."""
        paths = glob.glob(os.path.join(self.home, name + ".*.environment"))
        found = []
        for path in sorted(paths, key=lambda path: int(path.split(".")[-2])):
            with open(path, encoding="utf-8") as file:
                found.append(dict(line.rstrip("\n").split("=", 1) for line in file if "=" in line))
        return found

    def tokens(self, name, count=1):
        """The tokens of COUNT starts of that script, which came under both names."""
        wait_until(lambda: len(self.environments(name)) >= count, f"{count} starts of {name}")
        found = self.environments(name)
        self.assertEqual([one.get(NAMES[0]) for one in found], [one.get(NAMES[1]) for one in found])
        return [one.get(NAMES[0]) for one in found]

    def key(self, letter):
        self.keys("-M", "ctrl", letter, "-m", "ctrl")


class Tokens(TokensTest):
    def test_a_viewer_gets_the_keyboard_by_a_token_and_each_start_has_its_own(self):
        shell = self.start_desktop()
        self.key("p")
        self.window("the viewer", name="Viewer", focused=True)
        self.focus(shell)
        self.key("p")
        first, second = self.tokens("Viewer", 2)
        self.assertTrue(first and second)
        self.assertNotEqual(first, second)
        wait_until(lambda: len([one for one in self.windows() if one["name"] == "Viewer"]) == 2, "the second viewer")
        self.window("the second viewer with the keyboard", name="Viewer", focused=True)

    def test_a_viewer_that_a_run_opens_gets_none(self):
        self.write_settings(AUTOVIEW="1")
        shell = self.start_desktop()
        self.key("t")
        self.assertEqual(self.tokens("Viewer"), [None])
        self.window("the viewer", name="Viewer", focused=False)
        wait_until(lambda: "desk" in [name_of(process) for process in self.processes_of("asking")])
        self.window("the shell", id=shell["id"], focused=True)
        # What the person asks for afterwards has the keyboard again.
        self.key("p")
        self.assertTrue(self.tokens("Viewer", 2)[1])
        self.window("the second viewer", name="Viewer", focused=True)

    def test_the_editor_that_the_person_asks_for_at_an_error_gets_one(self):
        self.file("x.tex", "Hello.\n\\wrong\n\\bye\n")
        self.start_desktop()
        self.key("t")
        self.window("the run's window", name="pdftex – Quillon", focused=True)
        self.keys("e", "-k", "Return")
        token, = self.tokens("Editor")
        self.assertTrue(token)
        self.window("the editor", name="Editor", focused=True)

    def test_a_tool_has_one_for_its_window_and_hands_none_on(self):
        self.message("no_focus [title=\"pdftex\"]")
        self.script_tool(f"env > $HOME/engine.environment; echo $$ > $HOME/engine; {QUESTION}")
        self.start_desktop()
        self.key("t")
        self.window("the run's window, which asks", name="pdftex – Quillon", focused=True)
        with open(os.path.join(self.home, "engine"), encoding="utf-8") as file:
            engine = int(file.read())
        host = next(process for process in self.processes_of("pdftex.app") if name_of(process) == "quillon-toolhost"
                    and process != engine)
        own = environment_of(host)
        self.assertTrue(own[NAMES[0]])
        self.assertEqual(own[NAMES[0]], own[NAMES[1]])
        with open(os.path.join(self.home, "engine.environment"), encoding="utf-8") as file:
            said = file.read()
        for text in (*NAMES, own[NAMES[0]]):
            self.assertNotIn(text, said)
        self.keys("-k", "Escape")

    def test_the_set_up_gets_the_keyboard_by_its_token(self):
        self.message("no_focus [title=\"Set Up Quillon\"]")
        self.start_desktop()
        # Set Up Paths... is the tenth item from below.
        self.keys("-M", "alt", "o", "-m", "alt", *["-k", "Up"] * 10, "-k", "Return")
        self.window("the set-up", name="Set Up Quillon", focused=True)
        self.keys("-k", "Escape")
        wait_until(lambda: "Set Up Quillon" not in [one["name"] for one in self.windows()], "the end of the set-up")

    def test_an_old_token_is_handed_to_nobody(self):
        old = [self.activation_token(), self.activation_token()]
        self.environment.update(zip(NAMES, (old[0], old[0])))
        shell = self.start_desktop()
        for name in NAMES:
            del self.environment[name]
        done = self.run_program(QUILLON, XDG_ACTIVATION_TOKEN=old[1], DESKTOP_STARTUP_ID=old[1])
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.window("the shell", id=shell["id"], focused=True)
        self.key("p")
        token, = self.tokens("Viewer")
        self.assertNotIn(token, [None, "", *old])

    def test_a_running_application_of_the_bus_is_told_the_token(self):
        application = BusApplication(self.bus(MAIN_LOOP))
        self.addCleanup(application.remove_from_connection)
        entry = self.file("org.example.Viewer.desktop", ENTRY,
                          os.path.join(self.environment["XDG_DATA_HOME"], "applications"))
        self.write_settings(PDFVIEW=entry)
        self.start_desktop()
        self.key("p")
        uris, data = wait_until(lambda: application.calls, "the document")[0]
        self.assertEqual(uris, ["file://" + self.pdf])
        self.assertTrue(data["activation-token"])
        self.assertEqual(data["activation-token"], data["desktop-startup-id"])

    def test_the_plug_in_waits_for_a_compositor_for_a_moment_only(self):
        asker = subprocess.Popen([os.path.join(BUILD, "bin", "tests", "token-asker"), PLUG_IN], stdin=subprocess.PIPE,
                                 stdout=subprocess.PIPE, text=True, env=self.environment)
        self.addCleanup(stop, asker)

        def ask():
            asker.stdin.write("\n")
            asker.stdin.flush()
            token, milliseconds = asker.stdout.readline().split()
            return token, int(milliseconds)

        first, _ = ask()
        self.assertNotEqual(first, "none")
        self.compositor.send_signal(signal.SIGSTOP)
        try:
            token, milliseconds = ask()
        finally:
            self.compositor.send_signal(signal.SIGCONT)
        self.assertEqual(token, "none")
        self.assertGreaterEqual(milliseconds, 100)
        self.assertLess(milliseconds, 5000)
        # The answer that came too late is nobody's.
        second, _ = ask()
        self.assertNotIn(second, ["none", first])


class LostCompositor(TokensTest):
    def test_a_shell_whose_compositor_has_gone_ends_and_leaves_no_run_behind(self):
        self.script_tool(f"echo $$ > $HOME/engine; {QUESTION}")
        self.start_desktop()
        self.key("t")
        self.window("the run's window, which asks", name="pdftex – Quillon", focused=True)
        self.compositor.kill()
        wait_until(self.ended, "the end of the shell")
        wait_until(lambda: not self.processes_of("pdftex.app"), "the end of the run")


def environment_of(process):
    with open(f"/proc/{process}/environ", encoding="utf-8") as file:
        return dict(one.split("=", 1) for one in file.read().split("\0") if "=" in one)


if __name__ == "__main__":
    unittest.main()
