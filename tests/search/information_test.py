"""The usage texts: shown by the Information menu, and true of the programs that are installed."""

import os
import re
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, HomeTest  # noqa: E402

TEXTS = {1: ("dvips_info", "dvips"), 2: ("makeindex_info", "makeindex"), 3: ("metapost_info", "mpost"),
         4: ("pdftex_info", "pdftex")}


def installed(name):
    with open(os.path.join(BINARIES, "Quillon.app", "Contents", "Resources", name), "rb") as file:
        return file.read()


def named_options(text):
    """The options that a usage text describes, without their values."""
    return re.findall(r"^  -([A-Za-z0-9][A-Za-z0-9-]*)", text, re.MULTILINE)


def known_options(program):
    done = subprocess.run([program, "--help"], stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    text = done.stdout + done.stderr
    known = set(re.findall(r"(?<![\w-])--?([A-Za-z0-9][A-Za-z0-9-]*)", text))
    for name in re.findall(r"\[-no\]-([a-z0-9-]+)", text):
        known.update((name, "no-" + name))
    if program == "makeindex":
        known.update("".join(re.findall(r"\[-([A-Za-z]+)\]", text)))
    return known


class Information(HomeTest):
    def test_every_option_that_a_text_names_is_known_to_the_program(self):
        for name, program in TEXTS.values():
            options = named_options(installed(name).decode("ascii").replace("\r", "\n"))
            self.assertGreater(len(options), 10, name)
            self.assertEqual([option for option in options if option not in known_options(program)], [], name)

    def test_no_option_is_described_twice(self):
        for name, _ in TEXTS.values():
            options = named_options(installed(name).decode("ascii").replace("\r", "\n"))
            self.assertEqual(len(options), len(set(options)), name)

    def test_the_console_shows_the_whole_text(self):
        self.preferences()
        for item, (name, _) in TEXTS.items():
            text = installed(name)
            self.assertNotIn(b"\n", text)
            self.assertIn(text.decode("ascii").replace("\r", "\n"), self.shell(f"menu 137 {item}\n"))

    def test_lines_fit_a_narrow_console(self):
        for name, _ in TEXTS.values():
            for line in installed(name).split(b"\r"):
                self.assertLessEqual(len(line), 78, line)

    def test_a_missing_text_is_said(self):
        self.copy_binaries()
        os.unlink(os.path.join(self.binaries, "Quillon.app", "Contents", "Resources", "dvips_info"))
        self.preferences()
        self.assertIn("I can't open Info file\n", self.shell("menu 137 1\n"))
        self.assertEqual(self.status, 0)


if __name__ == "__main__":
    unittest.main()
