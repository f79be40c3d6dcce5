"""Geany, Mousepad and nano, the real ones, on a Wayland desktop without X11: `edit` puts the caret in the line.

gVim and the Emacs of these packages know X11 alone and are tried there.
"""

import os
import signal
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from carets import GEANY, MOUSEPAD, NANO, CaretTest  # noqa: E402
from harness import HELPERS, WaylandTest, wait_until  # noqa: E402
from harness.processes import parent_of  # noqa: E402


class WaylandEditors(CaretTest, WaylandTest):
    def setUp(self):
        super().setUp()
        self.environment.update(GSETTINGS_BACKEND="memory", NO_AT_BRIDGE="1", GDK_BACKEND="wayland", TERMINAL="foot",
                                LC_ALL="C.UTF-8")
        self.file(".nanorc", "set locking\n", self.home)
        self.addCleanup(self.end_editors)

    def editors(self):
        return [process for name in ("geany", "mousepad", "nano", "foot") for process in self.running_as(name)]

    def end_editors(self):
        for process in self.editors():
            os.kill(process, signal.SIGKILL)
        wait_until(lambda: not self.editors(), "the end of the editors")

    def keys(self, *keys):
        """Keys in the words of xdotool, for wtype."""
        for key in keys:
            *held, last = key.split("+")
            super().keys(*[word for name in held for word in ("-M", name)], "-k", last,
                         *[word for name in held for word in ("-m", name)])

    def type_text(self, text):
        super().keys(text)

    def save(self):
        if self.editor is not MOUSEPAD:
            super().save()
            return
        # It takes what wtype types, but no command key of its keyboard, whose map changes with every word.
        wait_until(lambda: any(one["focused"] and one["name"].startswith("*") for one in self.windows()), "the change")
        window = self.bus().get_object("org.xfce.mousepad", "/org/xfce/mousepad/window/1")

        def saved():
            window.Activate("file.save", dbus.Array(signature="v"), dbus.Dictionary(signature="sv"),
                            dbus_interface="org.gtk.Actions")
            return not any(one["name"].startswith("*") for one in self.windows())

        wait_until(saved, "the end of the change")

    def shows(self, path):
        """Whether the window that has the keyboard shows the file."""
        name = os.path.basename(path)
        focused = next((one for one in self.windows() if one["focused"]), None)
        if self.editor is NANO:
            # Each file has a terminal of its own, which begins with nano and shows itself later.
            return (focused and os.path.exists(os.path.join(self.work, f".{name}.swp")) and
                    focused["pid"] in [parent_of(nano) for nano in self.running_as("nano", path)])
        return focused and name in focused["name"]

    def edit(self, name, line):
        """The command edit on a file, and the proof of where the caret is then."""
        path = os.path.join(self.work, name)
        if not os.path.exists(path):
            self.wrong(name, line)
        done = self.run_program(os.path.join(HELPERS, "edit"), f"+{line}", path)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        wait_until(lambda: self.shows(path), f"{name} in the editor")
        self.assert_typed(path, line)

    def cold_and_warm(self, editor, application, names):
        self.editor = editor
        self.preferences(Editor=application)
        for name, line in zip(names, (40, 25, 31)):
            self.edit(name, line)

    def test_geany(self):
        self.cold_and_warm(GEANY, "/usr/bin/geany", ("one.tex", "two.tex", "one.tex"))
        self.assertEqual(len(self.running_as("geany")), 1)

    def test_mousepad(self):
        # One of this version leaves the caret where it is in a file that it has open.
        self.cold_and_warm(MOUSEPAD, "/usr/bin/mousepad", ("one.tex", "two.tex", "three.tex"))
        self.assertEqual(len(self.running_as("mousepad")), 1)

    def test_nano_in_a_terminal(self):
        self.cold_and_warm(NANO, "/usr/bin/nano", ("one.tex", "two.tex", "three.tex"))
        self.assertEqual(len(self.running_as("nano")), 3)


if __name__ == "__main__":
    unittest.main()
