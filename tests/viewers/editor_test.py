"""The shell and applications that run beside it: they are brought to the front, and are sent documents and lines."""

import glob
import os
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import Applications, ServiceTest, stop, wait_until  # noqa: E402

FAKES = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "fakes")


class StartedOnce(Applications, ServiceTest):
    """Editors that do not run yet: one start each, whatever the shell sends them."""

    def setUp(self):
        super().setUp()
        self.prepare()
        self.path = self.file("x.tex", "text\n\\undefinedcommand\n\\bye\n")

    def run_fails(self, editor):
        self.preferences(USEPDFTEX="1", Editor=editor)
        self.start_shell("--service")
        self.send("QUIL", "exec", **{"----": ("TEXT", "pdftex x.tex"), "dest": ("fss ", self.work)})
        wait_until(lambda: "Executing <edit +2" in self.output())

    def test_a_program_of_bbedits_name_that_no_table_knows(self):
        folder = os.path.join(self.programs, "BBEdit")
        os.mkdir(folder)
        self.file("stay", "", folder)
        self.addCleanup(os.unlink, os.path.join(folder, "stay"))
        self.run_fails(self.recorder("other", folder))
        found = wait_until(lambda: glob.glob(os.path.join(folder, "other.*.words")))
        wait_until(lambda: not self.processes_of("Helpers/open"), "the end of the command")
        self.assertEqual(glob.glob(os.path.join(folder, "other.*.words")), found)
        self.assertEqual(len(found), 1)

    def test_a_bundle_of_bbedits_name(self):
        documents = os.path.join(self.work, "documents")
        bundle = self.fake_bundle(os.path.join(self.home, "BBEdit.app"), "EDT1", documents=documents)
        self.run_fails(bundle)
        wait_until(lambda: os.path.exists(documents) and os.path.getsize(documents), "the document")
        wait_until(lambda: not self.processes_of("Helpers/"), "the end of the commands")
        with open(documents, "rb") as file:
            self.assertEqual(file.read(), os.fsencode(self.path) + b"\0")
        (editor,) = self.processes_of("Linux/BBEdit")
        os.kill(editor, signal.SIGTERM)

    def test_one_whose_name_says_lite_gets_the_file_alone(self):
        folder = os.path.join(self.programs, "BBEdit Lite")
        os.mkdir(folder)
        self.file("stay", "", folder)
        self.addCleanup(os.unlink, os.path.join(folder, "stay"))
        self.preferences(USEPDFTEX="1", Editor=self.recorder("other", folder).replace(" ", "\\x1f"))
        self.shell(f"event aevt odoc ---- fss {self.path}\n")
        (found,) = wait_until(lambda: glob.glob(os.path.join(folder, "other.*.words")))
        with open(found, "rb") as file:
            self.assertEqual(file.read(), b"other\n" + os.fsencode(self.path) + b"\0")


class Editors(ServiceTest):
    def editor(self, name, signature):
        """A running editor of that signature; its bundle."""
        bundle = os.path.join(self.home, name + ".app")
        self.file("PkgInfo", "APPL" + signature, os.path.join(bundle, "Contents"))
        os.makedirs(os.path.join(bundle, "Contents", "Linux"), exist_ok=True)
        self.record = os.path.join(self.home, f"{name} {signature} record".replace("*", "s"))
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

    def failed_on_an_earlier_system(self, bundle, count):
        """What the editor gets after a failed run on the earlier system, COUNT calls at least."""
        self.start(bundle, "--system", "9")
        self.failed_run()
        # What comes after the run comes after the line.
        self.send("QUIL", "find", **{"----": ("TEXT", "nosuchfile")})
        wait_until(lambda: len(self.got()) >= count and "Input file not found." in self.output())
        self.assertNotIn("An error has occurred", self.output())
        return self.got()

    DOCUMENT = "aevtodoc"

    def test_on_an_earlier_system_bbedit_gets_the_document_and_the_script(self):
        for name, signature in (("one", "R*ch"), ("BBEdit Lite", "EDT1")):
            bundle = self.editor(name, signature)
            self.assertEqual(self.failed_on_an_earlier_system(bundle, 3),
                             [["Activate"], [self.DOCUMENT, self.path], ["miscslct", "2"]])
            self.shell_object().Quit()
            wait_until(self.ended)

    def test_on_an_earlier_system_another_editor_gets_the_document_alone(self):
        for name, signature in (("one", "!Rch"), ("two", "EDT1")):
            bundle = self.editor(name, signature)
            self.assertEqual(self.failed_on_an_earlier_system(bundle, 2), [["Activate"], [self.DOCUMENT, self.path]])
            self.shell_object().Quit()
            wait_until(self.ended)

    def test_bbedit_that_runs_gets_the_document_once_and_a_command(self):
        for name, signature, command in (("one", "R*ch", "bbedit"), ("BBEdit", "EDT1", "edit"), ("two", "!Rch", "edit")):
            bundle = self.editor(name, signature)
            self.start(bundle)
            self.failed_run()
            wait_until(lambda: f"Executing <{command} +2 \"{self.path}\" 2>&1>.\n" in self.output())
            wait_until(lambda: self.calls_of_documents() == [self.path])
            self.shell_object().Quit()
            wait_until(self.ended)
            self.assertEqual(self.calls_of_documents(), [self.path])

    def calls_of_documents(self):
        return [call[2] for call in self.calls(None) if call[1:2] == [self.DOCUMENT]]

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
