"""The manual page of the preferences file names every key, and is a page that the formatter takes."""

import os
import re
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD  # noqa: E402

SOURCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "src")


class Manual(unittest.TestCase):
    def test_every_row_stands_in_the_page(self):
        with open(os.path.join(BUILD, "share", "man", "man5", "quillon-preferences.5"), encoding="utf-8") as file:
            page = file.read()
        keys = []
        for table, row in (("settings/setting_table.cpp", r'^    [a-z_]+\((?:[a-z_]+, )?"(\w+)",'),
                           ("common/search_settings.h", r'^    \{"(\w+)",')):
            with open(os.path.join(SOURCES, table), encoding="utf-8") as file:
                keys += re.findall(row, file.read(), re.MULTILINE)
        self.assertGreater(len(keys), 70)
        for key in keys:
            self.assertIn(f"\\fB{key}\\fR", page)


if __name__ == "__main__":
    unittest.main()
