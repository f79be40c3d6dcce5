"""The start: search paths over whole trees and databases are set then, and made when they are first asked for."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest, ServiceTest, wait_until  # noqa: E402

DATABASES = ("TEXINPUTS", "DVIPSHEADERS", "TYPE1FONTS", "TEXFONTS", "VFFONTS")


def make_databases(test, names=DATABASES, text="/none/\nnone.tex\n"):
    folder = os.path.join(test.home, "data", "Quillon")
    os.makedirs(folder, exist_ok=True)
    for name in names:
        test.file(name, text, folder)
    return folder


class Databases(HomeTest):
    def start(self, **settings):
        self.preferences(DATABASE="1", **settings)
        return self.shell("print state dataBaseSearch\n")

    def missing(self, name):
        return (f"I can't find the {self.home}/data/Quillon/{name} database file.\nTurning off database searches.\n")

    def test_all_there_they_stay_on(self):
        make_databases(self)
        output = self.start()
        self.assertNotIn("database", output)
        self.assertIn("dataBaseSearch=1\n", output)

    def test_the_first_one_missing_turns_them_off_with_two_messages(self):
        for i, name in enumerate(DATABASES):
            folder = make_databases(self)
            for later in DATABASES[i:]:
                os.unlink(os.path.join(folder, later))
            output = self.start()
            self.assertEqual(output.count("I can't find the "), 1, output)
            self.assertIn(self.missing(name), output)
            self.assertIn("dataBaseSearch=0\n", output)

    def test_a_folder_or_a_pipe_in_a_database_s_place_is_missing(self):
        folder = make_databases(self)
        os.unlink(os.path.join(folder, "TEXFONTS"))
        os.mkdir(os.path.join(folder, "TEXFONTS"))
        self.assertIn(self.missing("TEXFONTS"), self.start())
        os.rmdir(os.path.join(folder, "TEXFONTS"))
        os.mkfifo(os.path.join(folder, "TEXFONTS"))
        self.assertIn(self.missing("TEXFONTS"), self.start())

    def test_with_debugging_on_it_says_that_it_reads_them(self):
        make_databases(self)
        self.assertIn("Reading file databases.\n", self.start(DEBUG="1"))
        self.preferences(DATABASE="0", DEBUG="1")
        self.assertNotIn("Reading file databases.\n", self.shell(""))

    def test_binary_databases_are_no_harm(self):
        make_databases(self, text=bytes(range(256)) * 4000)
        self.assertIn("dataBaseSearch=1\n", self.start())
        self.assertEqual(self.status, 0)

    def test_paths_that_are_empty_colons_or_ten_thousand_bytes(self):
        for value in ("", ":", "/" + "d" * 10000, "/" + "d" * 10000 + "//", ":".join(["/d"] * 5000), "~//:~", "//"):
            self.preferences(**{key: value for key in ("TEXINPUTS", "TEXFORMATS", "TEXCONFIG", "DVIPSHEADERS",
                                                       "ENCFOLDER")})
            output = self.shell("print state dataBaseSearch\n")
            self.assertEqual(self.status, 0, value[:20])
            self.assertIn("dataBaseSearch=0\n", output)


class Lists(ServiceTest):
    def test_the_tree_is_walked_when_a_file_is_first_looked_up(self):
        tree = os.path.join(self.home, "tree")
        os.makedirs(os.path.join(tree, "first"))
        self.preferences(TEXINPUTS=".:" + tree + "//", TEXFORMATS="/none")
        self.start_shell()
        # The folder was made after the start; it is there when the list is made.
        early = self.file("early.tex", "x", os.path.join(tree, "first"))
        shell = self.shell_object()
        late = self.file("late.tex", "x", os.path.join(tree, "second"))
        self.assertEqual(shell.Locate("early"), early)
        self.assertEqual(shell.Locate("late.tex"), late)
        # From now on the list stands.
        self.file("third.tex", "x", os.path.join(tree, "third"))
        self.assertEqual(shell.Locate("third"), "")

    def test_a_path_changed_after_the_start_counts_from_the_next_one(self):
        one, two = (os.path.join(self.home, name) for name in ("one", "two"))
        self.file("x.tex", "1", one)
        self.file("x.tex", "2", two)
        self.preferences(TEXINPUTS=one + "//")
        self.start_shell()
        self.preferences(TEXINPUTS=two + "//")
        self.assertEqual(self.shell_object().Locate("x"), os.path.join(one, "x.tex"))

    def test_find_says_what_it_found(self):
        path = self.file("sub/x.tex", "x", os.path.join(self.home, "tree"))
        self.preferences(TEXINPUTS=os.path.join(self.home, "tree") + "//", Editor="/bin/true")
        self.start_shell()
        self.shell_object().Find("nothing")
        wait_until(lambda: "Input file not found.\n" in self.output())
        self.shell_object().Find("x")
        wait_until(lambda: f"Found file <{path}>.\n" in self.output())
        self.assertIn("\nLooking for file <nothing>.\nInput file not found.\n", self.output())


if __name__ == "__main__":
    unittest.main()
