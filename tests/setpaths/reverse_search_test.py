"""setpaths --reverse-search: what it would write into the settings of viewers, and what it leaves of them."""

import os
import shutil
import stat
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, BUILD, HELPERS, Applications, HomeTest, program_of, wait_until  # noqa: E402

PROGRAM = program_of(os.path.join(BINARIES, "setpaths.app"))
EDIT = os.path.join(HELPERS, "edit")
COMMAND = f'ExternalEditorCommand="{EDIT}" +%l "%f"\n'
GROUP = "[Core General]\nExternalEditor=Custom\n" + COMMAND
COPY = ".before-quillon"


class ReverseSearch(Applications, HomeTest):
    def setUp(self):
        super().setUp()
        self.prepare()
        self.environment["PATH"] = self.programs
        self.environment.update(XDG_DATA_DIRS=self.home + "/share")
        self.config = self.environment["XDG_CONFIG_HOME"]
        self.path = os.path.join(self.config, "okularpartrc")
        self.recorder("okular")

    def set_up(self, *words):
        done = self.run_program(PROGRAM, "--reverse-search", *words)
        return done.returncode, done.stdout, done.stderr

    def writes(self, viewer="okular"):
        status, said, errors = self.set_up(viewer)
        self.assertEqual((status, errors), (0, ""))
        return said

    def holds(self, content, path=None):
        with open(path or self.path, "rb") as file:
            self.assertEqual(file.read(), content if isinstance(content, bytes) else content.encode())

    def has(self, content):
        return self.file("okularpartrc", content, self.config)

    def test_only_viewers_that_are_installed_are_told_of_and_nothing_is_written(self):
        status, said, errors = self.set_up()
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual(said, f"okular: {self.path}\n\n{GROUP}\nThe file is not there yet and is made.\n")
        self.recorder("qpdfview")
        self.assertIn("[documentView]\nsourceEditor=\\\"" + EDIT + "\\\" +%2 \\\"%1\\\"\n", self.set_up()[1])
        self.assertEqual(os.listdir(self.config), [])
        os.unlink(os.path.join(self.programs, "okular"))
        os.unlink(os.path.join(self.programs, "qpdfview"))
        self.assertEqual(self.set_up()[::2], (1, "setpaths: no viewer is installed that keeps the command in a settings file\n"))

    def test_a_file_that_is_absent_is_made(self):
        self.assertEqual(self.writes(), f"{self.path} is written.\n")
        self.holds(GROUP)
        self.assertEqual(self.writes(), f"{self.path} says so already.\n")
        self.assertIn("The file says so already.\n", self.set_up()[1])
        self.assertEqual(os.listdir(self.config), ["okularpartrc"])

    def test_a_folder_that_is_absent_is_made(self):
        self.recorder("qpdfview")
        self.writes("qpdfview")
        self.holds("[documentView]\nsourceEditor=\\\"" + EDIT + "\\\" +%2 \\\"%1\\\"\n",
                   os.path.join(self.config, "qpdfview", "qpdfview.conf"))

    def test_every_other_line_stays_and_a_copy_of_the_file(self):
        before = b"odd line\n[Core General]\nA=1\n\n[Other]\nExternalEditor=Kate\ncaf\xe9=\xff\x80\r\nlast"
        self.has(before)
        os.chmod(self.path, 0o640)
        self.assertEqual(self.writes(), f"{self.path} is written; the file as it was is {self.path}{COPY}.\n")
        self.holds(before.replace(b"A=1\n", b"A=1\nExternalEditor=Custom\n" + COMMAND.encode()))
        self.holds(before, self.path + COPY)
        self.assertEqual([stat.S_IMODE(os.stat(path).st_mode) for path in (self.path, self.path + COPY)], [0o640, 0o640])

    def test_another_editor_is_shown_and_replaced(self):
        self.has("[Core General]\nExternalEditor=Kate\nZ=1\nExternalEditorCommand[$e]=kate --line %l %f\n")
        self.assertIn("These lines take the place of:\nExternalEditor=Kate\nExternalEditorCommand=kate --line %l %f\n\n"
                      "Every other line stays, and a copy of the file as it is now is kept beside it.\n", self.set_up()[1])
        self.writes()
        self.holds("[Core General]\nExternalEditor=Custom\nZ=1\n" + COMMAND)

    def test_each_old_file_has_a_copy_of_its_own(self):
        for number, content in enumerate((b"[A]\n", b"[B]\n", b"[C]\n"), 1):
            self.has(content)
            self.writes()
            self.holds(content, self.path + COPY + (f".{number}" if number > 1 else ""))

    def test_a_symbolic_link_stays_one(self):
        target = self.file("real rc", "[A]\nx=1\n", os.path.join(self.home, "dotfiles"))
        os.symlink(target, self.path)
        self.writes()
        self.assertTrue(os.path.islink(self.path))
        self.holds("[A]\nx=1\n\n" + GROUP, target)
        self.holds("[A]\nx=1\n", target + COPY)

    def test_a_link_to_nothing_is_made_where_it_leads(self):
        target = os.path.join(self.home, "dotfiles", "rc")
        os.symlink(target, self.path)
        self.writes()
        self.holds(GROUP, target)
        self.assertTrue(os.path.islink(self.path))

    def refused(self, reason, viewer="okular"):
        status, said, errors = self.set_up(viewer)
        self.assertEqual((status, said), (1, ""))
        self.assertRegex(errors, "^setpaths: " + reason)

    def test_what_cannot_be_written_stays(self):
        os.symlink("/proc/none/rc", self.path)
        self.refused("I can't write /proc/none: ")
        os.unlink(self.path)
        os.mkdir(self.path)
        self.refused(f"{self.path} is no file, so nothing was written.\n")
        os.rmdir(self.path)
        os.symlink("/proc/self/status", self.path)
        self.refused("")
        self.assertEqual(self.files_of_config(), ["okularpartrc"])

    def test_where_no_copy_can_be_made_nothing_is_written(self):
        self.has("[A]\n")
        for name in ("", *(f".{number}" for number in range(2, 1001))):
            self.file("okularpartrc" + COPY + name, "", self.config)
        self.refused(f"I can't write a copy of {self.path}: ")
        self.holds("[A]\n")

    def files_of_config(self):
        return sorted(os.listdir(self.config))

    def test_while_the_viewer_runs_nothing_is_written(self):
        shutil.copy(os.path.join(BUILD, "bin", "tests", "recorder_program"), os.path.join(self.programs, "okular"))
        # One that has its settings elsewhere does not count.
        self.start_program(os.path.join(self.programs, "okular"), "x.pdf", PATH=os.environ["PATH"],
                           XDG_CONFIG_HOME=os.path.join(self.home, "elsewhere"))
        self.started("okular")
        self.assertNotIn("okular runs", self.set_up()[1])
        self.running.kill()
        self.running.wait()
        os.unlink(self.records("okular")[0])
        self.start_program(os.path.join(self.programs, "okular"), "x.pdf", PATH=os.environ["PATH"])
        self.started("okular")
        self.assertIn("\nokular runs. It would write its own settings over these when it ends, so end it first.\n",
                      self.set_up()[1])
        self.refused("okular runs and would write its own settings over these. End it first.\n")
        self.assertEqual(self.files_of_config(), [])
        self.running.kill()
        self.running.wait()
        wait_until(lambda: not self.processes_of(os.path.join(self.programs, "okular")), "the end of the viewer")
        self.writes()

    def test_a_name_that_is_no_such_viewer(self):
        for name in ("zathura", "kate"):
            self.refused("this is no viewer that keeps the command in a settings file\n", name)


if __name__ == "__main__":
    unittest.main()
