"""Proves where the caret of a real editor stands: by what is typed there and saved."""

import time
from collections import namedtuple

from harness import wait_until
from harness.processes import LIMIT

# What the name of its executable begins with, and the keys before what is typed and those that save it.
Editor = namedtuple("Editor", "executable before save")
GVIM = Editor("vim", ["i"], ["Escape", "colon", "w", "Return"])
GEANY = Editor("geany", [], ["ctrl+s"])
MOUSEPAD = Editor("mousepad", [], ["ctrl+s"])
EMACS = Editor("emacs-", [], ["ctrl+x", "ctrl+s"])
NANO = Editor("nano", [], ["ctrl+s"])


class CaretTest:
    """A part of a test with a display, which gives keys(), in the words of xdotool, and type_text()."""

    marks = 0
    editor = None  # the editor at work

    def wrong(self, name, line):
        """A file of sixty lines with an error in LINE; its path."""
        lines = ["\\wrong" if number == line else f"% {number}" for number in range(1, 60)] + ["\\bye", ""]
        return self.file(name, "\n".join(lines))

    def save(self):
        self.keys(*self.editor.save)

    def assert_typed(self, path, line):
        """Types into the editor, which has the keyboard, saves, and looks where that came in the file."""
        self.marks += 1
        mark = f"mark{self.marks}".encode()
        self.keys(*self.editor.before)
        self.type_text(mark.decode())

        def lines():
            with open(path, "rb") as file:
                return file.read().split(b"\n")

        def saved():
            # A terminal that tells its program of a new size just now swallows a command key; a second save harms nothing.
            self.save()
            end = time.monotonic() + LIMIT / 6
            return wait_until(lambda: mark in b"".join(lines()) or time.monotonic() > end) and mark in b"".join(lines())

        wait_until(saved, f"what was typed, in {path}")
        self.assertEqual([number for number, text in enumerate(lines(), 1) if mark in text], [line])
        self.assertTrue(lines()[line - 1].startswith(mark), lines()[line - 1])
        self.assertEqual(len(lines()), 61)
