"""Choices in menus and command keys as event records."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import Desk  # noqa: E402
from harness import wait_until  # noqa: E402


class Records(Desk):
    """Every choice travels as an event record, and does nothing without it."""

    def start_recording(self, **more):
        self.copy_binaries()
        os.unlink(self.shell_program())
        os.link(self.program("recording-shell"), self.shell_program())
        self.records_path = os.path.join(self.home, "records")
        self.environment.update(RECORDS=self.records_path, **more)
        self.start_desktop()

    def records(self):
        if not os.path.exists(self.records_path):
            return []
        with open(self.records_path, encoding="utf-8") as file:
            return [tuple(map(int, line.split())) for line in file]

    def choose(self):
        """Three choices in menus and two command keys."""
        for letter in "uau":  # Use TeX, Add Source Links, Use TeX
            self.keys("alt+o")
            wait_until(self.menus_shown)
            self.keys(letter, "Return")
            wait_until(lambda: not self.menus_shown())
        self.keys("ctrl+8")
        self.keys("ctrl+e")
        wait_until(lambda: len(self.records()) >= 5)

    expected = [(1, 131 << 16 | 2), (1, 131 << 16 | 3), (1, 131 << 16 | 2), (3, ord("8")), (3, ord("e"))]

    def test_there_is_one_record_a_choice_in_order(self):
        self.start_recording()
        self.choose()
        wait_until(lambda: self.setting("USE8BIT") == "1")
        self.assertEqual([record[:2] for record in self.records()], self.expected)
        self.assertEqual((self.setting("USEPDFTEX"), self.setting("ADDSPECIALS")), ("1", "1"))

    def test_without_the_record_nothing_happens(self):
        self.start_recording(SWALLOW="1")
        before = self.preferences_bytes()
        self.choose()
        self.assertEqual([record[:2] for record in self.records()], self.expected)
        self.assertEqual(self.preferences_bytes(), before)


if __name__ == "__main__":
    unittest.main()
