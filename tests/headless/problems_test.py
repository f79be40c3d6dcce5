"""The problems of a run in a script: the list, and the menu items that open the editor at them."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest, wait_until  # noqa: E402
from harness.applications import Applications  # noqa: E402

BAD = "Hello \\wrong\n\\hbox to 1pt{wide}\n\n\\wrong\\bye\n"


class Problems(Applications, HomeTest):
    def setUp(self):
        super().setUp()
        self.prepare()
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", Editor=self.recorder("kate"))
        self.path = self.file("bad.tex", BAD)
        self.run_line = f"event QUIL exec ---- TEXT pdftex -interaction=nonstopmode bad.tex dest fss {self.work}\n"

    def script(self, *steps):
        return self.shell(self.run_line + "".join(step + "\n" for step in steps))

    def lines(self, count):
        """The lines that the editor was told in COUNT starts, in no order."""
        wait_until(lambda: len([start for start in self.starts("kate") if len(start) == 3]) == count, "the editor")
        self.assertEqual({start[2] for start in self.starts("kate")}, {self.path})
        return sorted(int(start[1]) for start in self.starts("kate"))

    def test_print_problems(self):
        output = self.script("print problems")
        self.assertIn(f"{self.path}:1: error: Undefined control sequence.\n", output)
        self.assertIn(f"{self.path}:2: box: Overfull \\hbox (", output)
        self.assertIn(f"{self.path}:4: error: Undefined control sequence.\n", output)

    def test_the_items_are_grey_without_problems(self):
        output = self.shell("print menu 133\n")
        self.assertIn("17 + - L Problems\n18 - - N Next Problem\n19 - - U Previous Problem\n", output)
        self.assertIn("18 + - N Next Problem\n19 + - U Previous Problem\n", self.script("print menu 133"))

    def test_the_items_go_round_the_ends(self):
        # The run itself opens the editor at line 1.
        self.script("menu 133 18", "menu 133 18", "menu 133 18", "menu 133 18", "menu 133 19")
        self.assertEqual(self.lines(6), [1, 1, 1, 2, 4, 4])

    def test_the_previous_one_of_none_is_the_last(self):
        self.script("menu 133 19")
        self.assertEqual(self.lines(2), [1, 4])

    def test_a_key_and_an_event_do_the_same(self):
        self.script("key n", "event QUIL gopr ---- long 2", "event QUIL gopr ---- long 99")
        self.assertEqual(self.lines(3), [1, 1, 4])

    def test_a_file_that_has_gone_is_named(self):
        gone = os.path.join(self.work, "gone.tex")
        folder = os.path.join(self.environment["XDG_CACHE_HOME"], "quillon")
        os.makedirs(folder, 0o700)
        records = self.file("records", f"e3\0{gone}\0Wrong\0", folder)
        self.fake_tool("pdftex", reply={"----": ["long", 0], "nums": ["TEXT", "0 1 0 0 0 5"], "prbs": ["fss ", records]})
        output = self.script("print problems", "menu 133 18")
        self.assertIn(f"{gone}:3: error: Wrong\n", output)
        self.assertIn(f"I can't find the file {gone}.\n", output)
        self.assertEqual(self.starts("kate"), [])


if __name__ == "__main__":
    unittest.main()
