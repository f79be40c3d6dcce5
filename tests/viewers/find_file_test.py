"""Find-file shows the file in an editor of each kind, which is started once, whether it ran before or not."""

import os
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, Applications, ServiceTest, wait_until  # noqa: E402


class FindFile(Applications, ServiceTest):
    system = ()

    def setUp(self):
        super().setUp()
        self.prepare()
        self.path = self.file("a file.tex", "text\n")
        self.documents = os.path.join(self.work, "documents")

    def start(self, editor):
        self.preferences(Editor=editor, TEXINPUTS=self.work)
        self.start_shell("--service", *self.system)

    def find(self, name="a\x1ffile"):
        self.send("QUIL", "find", **{"----": ("TEXT", name)})

    def program(self, name):
        """A recorder that is no script, so that it is known by its own path while it runs."""
        return shutil.copy(os.path.join(BUILD, "bin", "tests", "recorder_program"), os.path.join(self.programs, name))

    def recorded(self, name, editor):
        """Three finds, the first with no editor running: each started the editor once, on the file."""
        self.start(editor)
        for count in (1, 2, 3):
            self.find()
            wait_until(lambda: len(self.starts(name)) >= count)
            self.settle()
            self.assertEqual(self.starts(name), [[self.path]] * count)
        self.assertNotIn("Oops!!", self.output())

    def settle(self):
        """Waits until no command that starts an application runs any more."""
        wait_until(lambda: not self.processes_of(f"open\0-a\0{self.home}"))

    def test_a_script(self):
        self.recorded("scripted", self.recorder("scripted"))

    def test_a_plain_program(self):
        self.recorded("plain", self.program("plain"))

    def test_a_program_under_another_name_is_called_by_that_name(self):
        self.program("multiple")
        link = os.path.join(self.programs, "special")
        os.symlink("multiple", link)
        self.recorded("special", link)
        self.assertEqual(self.starts("multiple"), [])

    def test_a_desktop_entry(self):
        self.recorded("plain", self.entry("org.example.Editor", f"Exec={self.program('plain')} %f\n"))

    def test_a_link_to_a_desktop_entry(self):
        link = os.path.join(self.home, "editor")
        os.symlink(self.entry("org.example.Editor", f"Exec={self.program('plain')} %f\n"), link)
        self.recorded("plain", link)

    def test_an_editor_of_the_table_opens_the_file_as_its_row_says(self):
        self.start(self.recorder("emacsclient"))
        self.find()
        self.assertEqual(self.started("emacsclient"), ["--no-wait", "-a", "emacs -f server-start", self.path])

    def test_the_file_of_the_last_error_is_shown_at_once(self):
        self.preferences(Editor=self.recorder("kate"), TEXINPUTS=self.work, FILENAME=self.path.replace(" ", "\x1f"))
        self.start_shell("--service", *self.system)
        self.find()
        wait_until(lambda: self.starts("kate"))
        self.assertEqual(self.starts("kate"), [[self.path]])

    def test_a_bundle(self):
        self.fake_tool("pdftex", documents=self.documents)
        self.start(os.path.join(self.binaries, "pdftex.app"))
        for count in (1, 2, 3):
            self.find()
            wait_until(lambda: self.got() == [self.path] * count)
        self.assertEqual(len([name for name in self.bus().list_names() if name.startswith("org.quillon.App.p")]), 2)
        self.assertEqual(len(self.processes_of("Linux/pdftex")), 1)

    def got(self):
        if not os.path.exists(self.documents):
            return []
        with open(self.documents, encoding="utf-8") as file:
            return file.read().split("\0")[:-1]

    def test_an_application_that_cannot_be_started_is_said(self):
        broken = self.recorder("broken")
        with open(broken, "w", encoding="utf-8") as file:
            file.write("#!/no/such/interpreter\n")
        self.start(broken)
        self.find()
        wait_until(lambda: f"The application <{broken}> could not be started.\n" in self.output())

    def test_an_editor_that_has_gone_is_said(self):
        editor = self.recorder("gone")
        self.start(editor)
        os.unlink(editor)
        self.find()
        wait_until(lambda: "didlaunch = 0\n" in self.output())

    def test_no_editor(self):
        self.start(None)
        self.find()
        wait_until(lambda: "Found file <" in self.output())
        self.shell_object().Formats(timeout=60)
        self.assertFalse(self.ended())

    def test_eight_finds_at_once(self):
        editor = self.recorder("scripted")
        self.start(editor)
        finds = [self.in_background(self.find) for _ in range(8)]
        for find in finds:
            find.join(60)
        wait_until(lambda: len(self.starts("scripted")) >= 8)
        self.settle()
        self.assertEqual(self.starts("scripted"), [[self.path]] * 8)


class FindFileOnAnEarlierSystem(FindFile):
    system = ("--system", "9")


if __name__ == "__main__":
    unittest.main()
