"""open, edit and bbedit, with editors and viewers that write down what they are started with."""

import glob
import os
import select
import shutil
import subprocess
import sys
import unittest

import dbus.service

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, HELPERS, MAIN_LOOP, Applications, HomeTest, ServiceTest, wait_until  # noqa: E402

NASTY = ["plain.tex", "with blanks  two.tex", "quo\"te's.tex", "$HOME `touch ran` $(touch ran).tex", "a\\b;touch ran.tex",
         "new\nline.tex", "-dash %f %l.tex", "é\u00a0ü.tex"]


class Programs(Applications, HomeTest):
    def setUp(self):
        super().setUp()
        self.prepare()

    def test_a_program_is_started_with_the_document(self):
        viewer = self.recorder("viewer")
        document = self.file("a paper.pdf", "x")
        self.opens(viewer, document)
        self.assertEqual(self.started("viewer"), [document])

    def test_a_program_is_found_along_the_path_and_the_document_from_here(self):
        self.recorder("viewer")
        self.file("paper.pdf", "x")
        self.opens("viewer", "paper.pdf")
        self.assertEqual(self.started("viewer"), [os.path.join(self.work, "paper.pdf")])

    def test_without_a_document_the_program_alone_is_started(self):
        self.opens(self.recorder("viewer"))
        self.assertEqual(self.started("viewer"), [])

    def test_every_name_arrives_whole_and_none_is_run(self):
        viewer = self.recorder("viewer")
        for name in NASTY:
            self.opens(viewer, self.file(name, "x"))
        wait_until(lambda: len(self.starts("viewer")) == len(NASTY))
        self.assertEqual(sorted(words[0] for words in self.starts("viewer")),
                         sorted(os.path.join(self.work, name) for name in NASTY))
        self.assertFalse(os.path.exists(os.path.join(self.work, "ran")))

    def test_what_is_started_holds_no_pipe_and_lives_on_in_a_session_of_its_own(self):
        viewer = self.recorder("viewer")
        read_end, write_end = os.pipe()
        # The caller's pipes end although the viewer lives on.
        done = self.helper("open", "-a", viewer, pass_fds=[write_end])
        os.close(write_end)
        self.assertEqual(done.returncode, 0)
        self.assertTrue(select.select([read_end], [], [], 60)[0], "the viewer holds the pipe")
        self.assertEqual(os.read(read_end, 1), b"")
        os.close(read_end)
        self.started("viewer")
        # While one process becomes another, two have the name.
        wait_until(lambda: len(self.processes_of(viewer)) == 1)
        (process,) = self.processes_of(viewer)
        self.assertNotEqual(os.getsid(process), os.getsid(0))
        for number in range(3):
            self.assertEqual(os.readlink(f"/proc/{process}/fd/{number}"), "/dev/null")

        def signals():
            with open(f"/proc/{process}/status", encoding="utf-8") as file:
                return [line.split()[1] for line in file if line.startswith(("SigBlk:", "SigIgn:"))]

        # A shell that starts a program blocks every signal for a moment.
        wait_until(lambda: signals() == ["0" * 16] * 2, "signals that are neither blocked nor ignored")

    def test_what_is_started_does_not_see_the_helpers(self):
        self.environment["PATH"] = HELPERS + ":" + self.environment["PATH"]
        self.environment["QUILLON_FRONT"] = "headless"
        self.opens(self.recorder("viewer"))
        self.started("viewer")
        with open(os.path.join(self.programs, "viewer.environment"), encoding="utf-8") as file:
            text = file.read()
        self.assertNotIn(HELPERS, text)
        self.assertNotIn("QUILLON_FRONT", text)

    def test_an_application_that_is_not_there(self):
        self.refused("open", "I can't find the application /no/such/viewer", "-a", "/no/such/viewer")
        self.refused("open", "I can't find the application nosuchviewer", "-a", "nosuchviewer")
        self.refused("open", "I can't find the application ", "-a", "")
        self.refused("open", f"I can't find the application {self.work}", "-a", self.work)

    def test_a_document_that_is_not_there(self):
        self.recorder("viewer")
        self.refused("open", f"I can't find the file {self.work}/none.pdf", "-a", "viewer", "none.pdf")
        self.assertEqual(self.starts("viewer"), [])

    def test_a_program_that_cannot_be_started(self):
        broken = self.file("broken", "#!/no/such/interpreter\n")
        os.chmod(broken, 0o755)
        self.refused("open", f"I can't start {broken}: No such file or directory", "-a", broken)
        garbage = self.file("garbage", b"\x00\x01\x02")
        os.chmod(garbage, 0o755)
        self.refused("open", f"I can't start {garbage}: Exec format error", "-a", garbage)

    def test_usage(self):
        for words in ([], ["-a"], ["x", "y"], ["-a", "b", "c", "d"]):
            done = self.helper("open", *words)
            self.assertEqual((done.returncode, done.stderr), (64, "usage: open -a APPLICATION [DOCUMENT]\n"))

    def test_a_desktop_entry_by_path_and_by_id(self):
        self.recorder("viewer")
        path = self.entry("org.example.Viewer", "Exec=viewer --unique %u\n")
        document = self.file("a b.pdf", "x")
        self.opens(path, document)
        self.opens("org.example.Viewer", document)
        self.opens("org.example.Viewer.desktop", document)
        wait_until(lambda: len(self.starts("viewer")) == 3)
        uri = "file://" + document.replace(" ", "%20")
        self.assertEqual(self.starts("viewer"), [["--unique", uri]] * 3)

    def test_a_desktop_entry_whose_program_is_not_there(self):
        path = self.entry("gone", "Exec=nosuchviewer %f\n")
        self.refused("open", "I can't start nosuchviewer: No such file or directory", "-a", path)

    def test_a_desktop_entry_runs_in_its_folder(self):
        viewer = self.recorder("viewer")
        folder = os.path.join(self.home, "own folder")
        os.mkdir(folder)
        self.opens(self.entry("viewer", f"Exec=viewer %f\nPath={folder}\n"))
        self.started("viewer")
        # While one process becomes another, two have the name.
        wait_until(lambda: len(self.processes_of(viewer)) == 1)
        (process,) = self.processes_of(viewer)
        self.assertEqual(os.readlink(f"/proc/{process}/cwd"), folder)

    def test_a_desktop_entry_for_the_terminal(self):
        self.recorder("myterm")
        self.recorder("pager")
        path = self.entry("pager", "Exec=pager %f\nTerminal=true\n")
        self.environment["TERMINAL"] = "myterm"
        self.opens(path, self.file("x", "x"))
        self.assertEqual(self.started("myterm"), ["-e", "pager", os.path.join(self.work, "x")])

    def test_a_bundle_without_a_bus(self):
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/no/such/bus"
        bundle = os.path.join(BINARIES, "pdftex.app")
        self.refused("open", f"there is no session bus for {bundle}", "-a", bundle)


class Editors(Applications, HomeTest):
    def setUp(self):
        super().setUp()
        self.prepare()

    def test_each_kind_of_row(self):
        path = self.file("a b.tex", "x")
        rows = {"kate": ["--line", "12", path], "gedit": [path, "+12"], "codium": ["--goto", path + ":12"],
                "emacsclient": ["--no-wait", "-a", "emacs -f server-start", "+12", path], "scite": [path, "-goto:12"],
                "texworks": ["--position=12", path], "texmaker": [path, "-line", "12"]}
        for name, words in rows.items():
            self.preferences(Editor=self.recorder(name))
            done = self.helper("edit", "+12", "a b.tex")
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertEqual(self.started(name), words)

    def test_line_0_and_the_greatest_line(self):
        path = self.file("x.tex", "x")
        self.preferences(Editor=self.recorder("kate"))
        for line, words in (("0", [path]), ("2000000000", ["--line", "2000000000", path]),
                            ("2147483647", ["--line", "2147483647", path])):
            self.assertEqual(self.helper("edit", "+" + line, path).returncode, 0)
            wait_until(lambda: words in self.starts("kate"))

    def test_bbedit_is_the_same_command(self):
        self.preferences(Editor=self.recorder("kate"))
        path = self.file("x.tex", "x")
        self.assertEqual(self.helper("bbedit", "+3", path).returncode, 0)
        self.assertEqual(self.started("kate"), ["--line", "3", path])
        self.preferences()
        self.refused("bbedit", "no editor is chosen", "+3", path)

    def test_every_name_arrives_whole_and_none_is_run(self):
        self.preferences(Editor=self.recorder("kate"))
        for name in NASTY:
            self.assertEqual(self.helper("edit", "+7", self.file(name, "x")).returncode, 0)
        wait_until(lambda: len(self.starts("kate")) == len(NASTY))
        self.assertEqual(sorted(self.starts("kate")),
                         sorted(["--line", "7", os.path.join(self.work, name)] for name in NASTY))
        self.assertFalse(os.path.exists(os.path.join(self.work, "ran")))

    def test_an_editor_in_a_folder_with_blanks_is_read_as_the_settings_write_it(self):
        folder = os.path.join(self.home, "my programs")
        os.mkdir(folder)
        shutil.copy(self.recorder("kate"), folder)
        self.preferences(Editor=os.path.join(self.home, "my\\x1fprograms", "kate"))
        path = self.file("x.tex", "x")
        self.assertEqual(self.helper("edit", "+3", path).returncode, 0)
        wait_until(lambda: glob.glob(os.path.join(folder, "kate.*.words")))

    def test_an_editor_given_by_its_desktop_entry(self):
        self.recorder("kate")
        self.preferences(Editor=self.entry("org.kde.kate", "Exec=kate -b %U\n"))
        path = self.file("x.tex", "x")
        self.assertEqual(self.helper("edit", "+3", path).returncode, 0)
        # Its own entry's option, which blocks, is not used.
        self.assertEqual(self.started("kate"), ["--line", "3", path])

    def test_an_editor_of_the_persons_own_table(self):
        self.file("editors.table", "myed | org.my.ed | -L%l -- %f\n kate | | --mine %l %f\n",
                  os.path.join(self.environment["XDG_DATA_HOME"], "Quillon"))
        path = self.file("x.tex", "x")
        for name, words in (("myed", ["-L3", "--", path]), ("kate", ["--mine", "3", path])):
            self.preferences(Editor=self.recorder(name))
            self.assertEqual(self.helper("edit", "+3", path).returncode, 0)
            self.assertEqual(self.started(name), words)

    def test_an_editor_that_no_table_knows_gets_the_file(self):
        self.preferences(Editor=self.recorder("unknown"))
        path = self.file("x.tex", "x")
        self.assertEqual(self.helper("edit", "+3", path).returncode, 0)
        self.assertEqual(self.started("unknown"), [path])

    def test_a_terminal_editor_opens_in_the_terminal(self):
        editor = self.recorder("nano")
        self.recorder("x-terminal-emulator")
        self.recorder("gnome-terminal")
        self.preferences(Editor=editor)
        path = self.file("x.tex", "x")
        self.assertEqual(self.helper("edit", "+3", path).returncode, 0)
        self.assertEqual(self.started("x-terminal-emulator"), ["-e", editor, "+3", path])
        self.environment["TERMINAL"] = "gnome-terminal"
        self.assertEqual(self.helper("edit", "+4", path).returncode, 0)
        self.assertEqual(self.started("gnome-terminal"), ["--", editor, "+4", path])

    def test_no_terminal_for_a_terminal_editor(self):
        editor = self.recorder("nano")
        self.preferences(Editor=editor)
        path = self.file("x.tex", "x")
        # Nothing but the test's own programs is found.
        self.environment["PATH"] = self.programs
        self.refused("edit", f"there is no terminal for the editor {editor}; set TERMINAL, or choose an editor with a "
                     "window of its own", "+3", path)

    def test_no_editor_and_one_that_is_gone(self):
        path = self.file("x.tex", "x")
        self.refused("edit", "no editor is chosen", "+3", path)
        self.preferences(Editor="/no/such/editor")
        self.refused("edit", "I can't find the editor /no/such/editor", "+3", path)

    def test_a_file_that_is_not_there(self):
        self.preferences(Editor=self.recorder("kate"))
        self.refused("edit", "I can't find the file /no/such.tex", "+3", "/no/such.tex")

    def test_usage(self):
        for words in ([], ["+3"], ["3", "x"], ["+", "x"], ["+3x", "x"], ["+3", "x", "y"], ["+99999999999", "x"], ["+-5", "x"]):
            done = self.helper("edit", *words)
            self.assertEqual((done.returncode, done.stderr), (64, "usage: edit +LINE FILE\n"))

    def test_a_file_that_is_opened_and_then_shown_at_a_line_is_opened_once(self):
        path = self.file("a b.tex", "x")
        editor = self.recorder("kate")
        self.preferences(Editor=editor, FILENAME=path.replace(" ", "\\x1f"), LINENUMBER="12")
        self.opens(editor, path)
        self.assertEqual(self.helper("edit", "+12", path).returncode, 0)
        self.started("kate")
        wait_until(lambda: not self.processes_of(os.path.join(HELPERS, "open")))
        self.assertEqual(self.starts("kate"), [["--line", "12", path]])

    def test_a_file_that_is_opened_and_not_shown_at_a_line_is_opened(self):
        path = self.file("x.tex", "x")
        editor = self.recorder("kate")
        self.preferences(Editor=editor, FILENAME=path, LINENUMBER="12")
        self.opens(editor, path)
        self.assertEqual(self.started("kate"), [path])
        self.assertEqual(self.helper("edit", "+12", path).returncode, 0)
        wait_until(lambda: len(self.starts("kate")) == 2)


class BusApplication(dbus.service.Object):
    """An application of the desktop that takes its documents over the bus."""

    def __init__(self, bus):
        bus.request_name("org.example.My-Viewer")
        super().__init__(bus, "/org/example/My_Viewer")
        self.calls = []

    @dbus.service.method("org.freedesktop.Application", "asa{sv}")
    def Open(self, uris, data):
        self.calls.append([str(uri) for uri in uris])

    @dbus.service.method("org.freedesktop.Application", "a{sv}")
    def Activate(self, data):
        self.calls.append("Activate")


class OnTheBus(Applications, ServiceTest):
    def setUp(self):
        super().setUp()
        self.prepare()
        self.viewer = self.recorder("viewer")
        self.path = self.file("a b.pdf", "x")

    def test_an_application_of_the_bus_gets_the_document_over_the_bus(self):
        application = BusApplication(self.bus(MAIN_LOOP))
        self.addCleanup(application.remove_from_connection)
        self.entry("org.example.My-Viewer", f"Exec={self.viewer} %f\nDBusActivatable=true\n")
        self.opens("org.example.My-Viewer", self.path)
        wait_until(lambda: application.calls)
        self.opens("org.example.My-Viewer")
        wait_until(lambda: len(application.calls) == 2)
        self.assertEqual(application.calls, [["file://" + self.path.replace(" ", "%20")], "Activate"])
        self.assertEqual(self.starts("viewer"), [])

    def test_one_that_the_bus_does_not_know_is_started(self):
        self.entry("org.example.My-Viewer", f"Exec={self.viewer} %f\nDBusActivatable=true\n")
        self.opens("org.example.My-Viewer", self.path)
        self.assertEqual(self.started("viewer"), [self.path])

    def test_one_that_does_not_ask_for_the_bus_is_started(self):
        application = BusApplication(self.bus(MAIN_LOOP))
        self.addCleanup(application.remove_from_connection)
        self.entry("org.example.My-Viewer", f"Exec={self.viewer} %f\n")
        self.opens("org.example.My-Viewer", self.path)
        self.assertEqual(self.started("viewer"), [self.path])
        self.assertEqual(application.calls, [])


class Bundles(Applications, ServiceTest):
    def setUp(self):
        super().setUp()
        self.prepare()

    def bundle(self, **behaviour):
        self.fake_tool("pdftex", record=os.path.join(self.work, "record"), **behaviour)
        return os.path.join(self.binaries, "pdftex.app")

    def names(self):
        return [str(name) for name in self.bus().list_names() if str(name).startswith("org.quillon.App.p")]

    def quit(self):
        for name in self.names():
            self.bus().get_object(name, "/org/quillon/App").Event("aevt", "quit", {}, dbus_interface="org.quillon.App1")

    def record(self):
        path = os.path.join(self.work, "documents")
        if not os.path.exists(path):
            return []
        with open(path, encoding="utf-8", errors="surrogateescape") as file:
            return file.read().split("\0")[:-1]

    def test_a_bundle_is_started_and_then_sent_every_document(self):
        bundle = self.bundle(documents=os.path.join(self.work, "documents"))
        self.addCleanup(self.quit)
        paths = [self.file(name, "x") for name in NASTY]
        for path in paths:
            self.opens(bundle, path)
            wait_until(lambda: path in self.record())
        self.assertEqual(self.record(), paths)
        self.assertEqual(len(self.names()), 1)

    def test_without_a_document_a_bundle_is_started_once(self):
        bundle = self.bundle()
        self.addCleanup(self.quit)
        self.opens(bundle)
        wait_until(self.names)
        self.opens(bundle + "/")
        self.assertEqual(len(self.names()), 1)

    def test_an_application_that_does_not_answer_holds_nothing_up(self):
        bundle = self.bundle(documents=os.path.join(self.work, "documents"))
        self.addCleanup(self.quit)
        silent = self.bus()
        silent.request_name("org.quillon.App.p1")
        path = self.file("x.dvi", "x")
        self.opens(bundle, path)
        wait_until(lambda: self.record() == [path])

    def test_a_bundle_without_its_program(self):
        bundle = self.bundle()
        program = os.path.join(bundle, "Contents", "Linux", "pdftex")
        os.unlink(program)
        self.refused("open", f"I can't start {program}: No such file or directory", "-a", bundle)


class FromTheShell(Applications, HomeTest):
    """The commands as the shell runs them, through its pipe."""

    def setUp(self):
        super().setUp()
        self.prepare()

    def test_the_pdf_is_opened_in_the_chosen_viewer(self):
        viewer = self.recorder("viewer")
        path = self.file("a $b `c`.tex", "Hello.\n\\bye\n")
        self.preferences(USEPDFTEX="1", AUTOVIEW="1", PDFVIEW=viewer)
        self.shell(f"event aevt odoc ---- fss {path}\n")
        # The shell has gone; the viewer has not. What it forks has its name for a moment.
        self.assertEqual(self.started("viewer"), [path[:-3] + "pdf"])
        wait_until(lambda: len(self.processes_of(viewer)) == 1)

    def test_an_error_opens_the_editor_once_at_the_line(self):
        editor = self.recorder("kate")
        path = self.file("bad one.tex", "fine\n\\undefinedcommand\n\\bye\n")
        self.preferences(USEPDFTEX="1", Editor=editor)
        output = self.shell(f"event aevt odoc ---- fss {path}\n")
        self.assertIn(f"editfile = {path}".replace(" ", "\x1f").replace("editfile\x1f=\x1f", "editfile = "), output)
        self.assertIn(f"Executing <edit +2 \"{path}\" 2>&1>.\n", output)
        self.assertEqual(self.started("kate"), ["--line", "2", path])
        wait_until(lambda: not self.processes_of(os.path.join(HELPERS, "open")))
        self.assertEqual(len(self.starts("kate")), 1)

    def fails_in(self, name, line, *, exists=True, **settings):
        """A tool that asks for the editor at a line of a file: what the console said."""
        path = os.path.join(self.work, name)
        if exists and not os.path.exists(path):
            self.file(name, "x")
        self.fake_tool("pdftex", reply={"----": ["long", 1], "edit": ["long", 1]})
        self.preferences(USEPDFTEX="1", Editor=self.recorder("kate"), FILENAME=path.replace(" ", "\\x1f"), LINENUMBER=line,
                         **settings)
        return self.shell(f"event QUIL exec ---- TEXT pdftex dest fss {self.work}\n")

    def test_an_error_in_a_file_that_does_not_exist(self):
        output = self.fails_in("none.tex", "3", exists=False)
        self.assertIn(f"edit: I can't find the file {self.work}/none.tex\n", output)
        self.assertEqual(self.starts("kate"), [])

    def test_an_error_at_line_0_and_at_line_2000000000(self):
        path = os.path.join(self.work, "a b.tex")
        for line, words in (("0", [path]), ("2000000000", ["--line", "2000000000", path])):
            self.assertIn(f"Executing <edit +{line} ", self.fails_in("a b.tex", line))
            wait_until(lambda: words in self.starts("kate"))
        self.assertEqual(len(self.starts("kate")), 2)

    def test_an_error_in_a_file_on_a_disk_that_cannot_be_written(self):
        folder = os.path.join(self.home, "disk")
        self.file("x.tex", "x", folder)
        if subprocess.run(["mount", "--bind", folder, folder], capture_output=True, check=False).returncode != 0:
            self.skipTest("nothing may be mounted here")
        self.addCleanup(subprocess.run, ["umount", folder], check=True)
        subprocess.run(["mount", "-o", "remount,ro,bind", folder], check=True)
        path = os.path.join(folder, "x.tex")
        self.assertRaises(OSError, self.file, path, "y")
        self.fails_in(path, "5", ADDSPECIALS="1")
        self.assertEqual(self.started("kate"), ["--line", "5", path])

    def test_two_errors_in_one_run_open_the_editor_at_the_first(self):
        path = self.file("x.tex", "\\undefinedone\n\\undefinedtwo\n\\bye\n")
        self.preferences(USEPDFTEX="1", Editor=self.recorder("kate"))
        self.shell(f"event aevt odoc ---- fss {path}\n")
        self.assertEqual(self.started("kate"), ["--line", "1", path])
        wait_until(lambda: not self.processes_of("Helpers/open"))
        self.assertEqual(len(self.starts("kate")), 1)

    def test_a_name_with_a_double_quote_is_refused_with_its_name(self):
        path = self.file("a\"b.tex", "x")
        self.preferences(USEPDFTEX="1", TEXFILE=path)
        for script in (f"event aevt odoc ---- fss {path}\n", "menu 129 2\n"):
            output = self.shell(script)
            self.assertIn("No engine can open \"a\"b.tex\": there is a double quote in its name.\n", output)
            self.assertNotIn("Processing", output)

    def test_what_a_command_says_comes_into_the_console(self):
        self.preferences(USEPDFTEX="1", AUTOVIEW="1", PDFVIEW=self.recorder("viewer"))
        path = self.file("x.tex", "Hello.\n\\bye\n")
        broken = self.recorder("viewer")
        with open(broken, "w", encoding="utf-8") as file:
            file.write("#!/no/such/interpreter\n")
        output = self.shell(f"event aevt odoc ---- fss {path}\n")
        self.assertIn(f"open: I can't start {broken}: No such file or directory\n", output)

    def test_only_the_commands_of_the_pipe_see_the_helpers(self):
        # The engine's own environment is that of the shell.
        self.file("pathtool", "", self.programs)
        self.preferences(USEPDFTEX="1")
        self.script_tool("echo \"PATH is $PATH\"\n")
        output = self.shell(f"event QUIL exec ---- TEXT pdftex dest fss {self.work}\n")
        self.assertIn("PATH is ", output)
        self.assertNotIn("/Helpers", output)


if __name__ == "__main__":
    unittest.main()
