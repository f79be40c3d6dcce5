"""The shell and applications that run beside it: they are brought to the front, and are sent documents and lines."""

import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import ServiceTest, stop, wait_until  # noqa: E402

FAKES = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "fakes")


class Editors(ServiceTest):
    def editor(self, name, signature):
        """A running editor of that signature; its bundle."""
        bundle = os.path.join(self.home, name + ".app")
        self.file("PkgInfo", "APPL" + signature, os.path.join(bundle, "Contents"))
        self.record = os.path.join(self.home, name + " record")
        running = subprocess.Popen(["/usr/bin/python3", "-B", os.path.join(FAKES, "application.py"), signature, bundle,
                                    self.record], env=self.environment, stdin=subprocess.DEVNULL)
        self.addCleanup(stop, running)
        wait_until(lambda: self.calls(None))
        return bundle

    def calls(self, sender):
        """What the editor got from SENDER, or all of it."""
        if not os.path.exists(self.record):
            return []
        with open(self.record, encoding="utf-8") as file:
            lines = [line.rstrip("\n").split("\t") for line in file]
        return lines if sender is None else [line[1:] for line in lines if line[0] == sender]

    def start(self, bundle, *options, **settings):
        self.path = self.file("x.tex", "text\n\\undefinedcommand\n\\bye\n")
        self.preferences(USEPDFTEX="1", Editor=bundle, TEXINPUTS=self.work, **settings)
        self.start_shell(*options)
        self.shell_name = str(self.bus().get_name_owner("org.quillon.Shell"))

    def got(self):
        return self.calls(self.shell_name)

    def test_an_application_that_runs_is_brought_to_the_front_and_sent_the_document(self):
        bundle = self.editor("one", "EDT1")
        self.start(bundle)
        self.send("QUIL", "find", **{"----": ("TEXT", "x")})
        wait_until(lambda: len(self.got()) >= 2)
        self.assertEqual(self.got(), [["Activate"], ["aevtodoc", self.path]])

    def failed_run(self):
        self.send("QUIL", "exec", **{"----": ("TEXT", "pdftex x.tex"), "dest": ("fss ", self.work)})

    def test_alpha_is_told_the_line_by_its_creator(self):
        bundle = self.editor("one", "ALFA")
        self.start(bundle)
        self.failed_run()
        line = ["miscdosc", "select [pos::fromRowCol 2 0] [pos::fromRowCol 3 0]"]
        wait_until(lambda: line in self.got())
        self.assertEqual(self.got(), [line])

    def test_alpha_is_told_the_line_by_its_name(self):
        bundle = self.editor("Alpha", "EDT1")
        self.start(bundle)
        self.failed_run()
        wait_until(lambda: self.got())
        self.assertEqual(self.got(), [["miscdosc", "select [pos::fromRowCol 2 0] [pos::fromRowCol 3 0]"]])

    def test_another_editor_is_told_no_line(self):
        bundle = self.editor("one", "EDT1")
        self.start(bundle)
        self.failed_run()
        # What comes after the run comes after the line.
        self.send("QUIL", "find", **{"----": ("TEXT", "x")})
        wait_until(lambda: len(self.got()) >= 2)
        self.assertEqual(self.got(), [["Activate"], ["aevtodoc", self.path]])

    def test_on_an_earlier_system_alpha_gets_the_document_and_then_the_line(self):
        bundle = self.editor("one", "ALFA")
        self.start(bundle, "--system", "9")
        self.failed_run()
        wait_until(lambda: len(self.got()) >= 3)
        self.assertEqual(self.got(), [["Activate"], ["aevtodoc", self.path],
                                      ["miscdosc", "select [rowColToPos 2 0] [rowColToPos 3 0]"]])
        self.assertNotIn("An error has occurred", self.output())


if __name__ == "__main__":
    unittest.main()
