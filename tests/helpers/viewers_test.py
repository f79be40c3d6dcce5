"""open, with the viewers of the table: one process a document, what each is told, and Evince over the bus."""

import gzip
import os
import sys
import unittest

import dbus.service

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HELPERS, MAIN_LOOP, Applications, HomeTest, ServiceTest, wait_until  # noqa: E402

AFTER_RUN = {"QUILLON_AFTER_RUN": "1"}
EDIT = os.path.join(HELPERS, "edit")


class ViewersTest(Applications):
    def prepare(self):
        super().prepare()
        self.document, self.source = self.file("a b.pdf", "x"), self.file("a b.tex", "x")

    def view(self, viewer, **environment):
        done = self.helper("open", "-a", viewer, self.document, **environment)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def links(self, line="7", **settings):
        """Source links are on; the document was made from the source, whose LINE was edited last."""
        self.preferences(ADDSPECIALS="1", EDITEDFILE=self.source.replace(" ", "\\x1f"), EDITEDLINE=line, **settings)
        self.file("a b.synctex.gz", gzip.compress(f"SyncTeX Version:1\nInput:1:{self.work}/./a b.tex\n".encode()))


class Viewers(ViewersTest, HomeTest):
    def setUp(self):
        super().setUp()
        self.prepare()

    def all_started(self, viewer, *words):
        """Every start of the viewer so far, once all of WORDS are among them."""
        wait_until(lambda: all(each in self.starts(viewer) for each in words))
        return self.starts(viewer)

    def one_runs(self, viewer):
        # What a script starts has its command line for a moment.
        wait_until(lambda: len(self.processes_of(os.path.join(self.programs, viewer))) == 1, "one process")

    def test_a_viewer_that_shows_the_document_is_not_started_again(self):
        for viewer, words in (("zathura", []), ("evince", []), ("gv", ["--watch"])):
            self.recorder(viewer)
            self.view(viewer)
            self.started(viewer)
            self.view(viewer, **AFTER_RUN)
            self.one_runs(viewer)
            self.assertEqual(self.starts(viewer), [[*words, self.document]])

    def test_one_that_reads_again_on_a_signal_gets_it(self):
        text = "#!/bin/sh\ntrap 'echo again >> \"$1.signals\"' HUP\n: > \"$1.signals\"\nwhile [ -e %s/stay ]; do sleep 0.05; done\n"
        viewer = self.file("mupdf", text % self.programs, self.programs, 0o755)
        self.view(viewer)
        wait_until(lambda: os.path.exists(self.document + ".signals"))
        for count in (1, 2):
            self.view(viewer, **AFTER_RUN)
            wait_until(lambda: os.path.getsize(self.document + ".signals") == count * len("again\n"))
        self.one_runs("mupdf")

    def test_another_document_has_a_viewer_of_its_own(self):
        self.recorder("zathura")
        other = self.file("other.pdf", "x")
        self.view("zathura")
        self.opens("zathura", other)
        self.assertEqual(len(self.all_started("zathura", [self.document], [other])), 2)

    def test_a_document_that_the_viewer_was_given_by_another_name_is_the_same(self):
        viewer = self.recorder("zathura")
        os.symlink(self.document, os.path.join(self.work, "link.pdf"))
        for name in ("a b.pdf", "./link.pdf", "file://" + self.document.replace(" ", "%20")):
            self.start_program(viewer, name)
            self.all_started("zathura", [name])
            self.view("zathura")
            self.one_runs("zathura")
            self.assertEqual(len(self.starts("zathura")), 1, name)
            for record in self.records("zathura"):
                os.unlink(record)
            self.running.kill()
            self.running.wait()

    def test_a_viewer_that_has_gone_is_started_again(self):
        self.recorder("zathura")
        for count in (1, 2):
            self.view("zathura")
            wait_until(lambda: len(self.starts("zathura")) == count)
            os.unlink(os.path.join(self.programs, "stay"))
            wait_until(lambda: not self.processes_of(self.document))
            self.file("stay", "", self.programs)

    def test_one_that_brings_its_own_window_forward_is_asked_to_by_the_person_alone(self):
        self.recorder("evince")
        self.view("evince")
        self.started("evince")
        self.view("evince", **AFTER_RUN)
        self.one_runs("evince")
        self.view("evince")
        wait_until(lambda: len(self.starts("evince")) == 2)

    def test_a_word_with_a_question_mark_is_given_only_after_a_run(self):
        self.recorder("okular")
        self.view("okular")
        self.view("okular", **AFTER_RUN)
        asked, quiet = ["--unique", self.document], ["--unique", "--noraise", self.document]
        self.assertEqual(len(self.all_started("okular", asked, quiet)), 2)

    def test_each_is_told_the_line_in_its_own_way(self):
        self.links()
        uri = "file://" + self.document.replace(" ", "%20")
        for viewer, words in (
                ("zathura", ["-x", f"'{EDIT}' +%{{line}} '%{{input}}'", "--synctex-forward", f"7:1:{self.source}",
                             self.document]),
                ("okular", ["--unique", f"{uri}#src:7 {self.source}"]),
                ("qpdfview", ["--unique", f"{self.document}#src:{self.source}:7:0"]),
                ("xdvi", ["-editor", f"{EDIT} +%l %f", "-nofork", "-sourceposition", f"7 {self.source}", self.document])):
            self.recorder(viewer)
            self.view(viewer)
            self.assertEqual(self.started(viewer), words)

    def not_told(self, *links):
        self.recorder("zathura")
        self.view("zathura")
        self.assertEqual(self.started("zathura"), [*links, self.document])

    LINKS = ["-x", f"'{EDIT}' +%{{line}} '%{{input}}'"]

    def test_without_source_links_no_line_is_told(self):
        self.links()
        self.preferences(ADDSPECIALS="0", EDITEDFILE=self.source.replace(" ", "\\x1f"), EDITEDLINE="7")
        self.not_told()

    def test_a_line_of_a_file_that_the_document_is_not_made_from_is_not_told(self):
        self.links()
        self.file("a b.synctex.gz", gzip.compress(b"SyncTeX Version:1\nInput:1:/elsewhere/a b.tex\n"))
        self.not_told(*self.LINKS)

    def test_a_document_without_links_is_told_no_line(self):
        self.links()
        os.unlink(os.path.join(self.work, "a b.synctex.gz"))
        self.not_told(*self.LINKS)

    def test_line_0_is_not_told(self):
        self.links(line="0")
        self.not_told(*self.LINKS)

    def test_links_that_are_no_gzip_file_and_cut_ones(self):
        self.links()
        whole = gzip.compress(b"SyncTeX Version:1\n" + os.urandom(4000))
        for content in (b"", b"\x1f\x8b", whole[:2000], os.urandom(5000)):
            self.file("a b.synctex.gz", content)
            self.not_told(*self.LINKS)

    def test_the_editor_keeps_the_place_while_source_links_are_on(self):
        editor = self.recorder("kate")
        self.preferences(Editor=editor, ADDSPECIALS="0")
        self.assertEqual(self.helper("edit", "+3", self.source).returncode, 0)
        self.assertEqual(self.setting("EDITEDLINE"), None)
        self.preferences(Editor=editor, ADDSPECIALS="1")
        self.assertEqual(self.helper("edit", "+3", "./././a b.tex").returncode, 0)
        self.assertEqual((self.setting("EDITEDFILE"), self.setting("EDITEDLINE")), (self.source.replace(" ", "\\x1f"), "3"))
        self.assertEqual(self.helper("edit", "+0", self.source).returncode, 0)
        self.assertEqual(self.setting("EDITEDLINE"), "3")

    def test_a_viewer_of_the_persons_own_table(self):
        self.file("viewers.table", 'mine | org.my.viewer | --show "a word" %d | | | single\nokular | | --own\n', self.support)
        self.recorder("mine")
        self.recorder("okular")
        self.view("mine")
        self.assertEqual(self.started("mine"), ["--show", "a word", self.document])
        self.view("okular")
        self.assertEqual(self.started("okular"), ["--own", self.document])

    def test_the_desktop_entry_of_a_viewer_means_the_viewer(self):
        self.recorder("zathura")
        self.view(self.entry("org.pwmt.zathura", "Exec=zathura --own-option %U\n"))
        self.assertEqual(self.started("zathura"), [self.document])

    def test_a_desktop_entry_whose_program_is_not_there_is_taken_at_its_word(self):
        self.recorder("box")
        self.view(self.entry("xreader", "Exec=box run xreader %f\n"))
        self.assertEqual(self.started("box"), ["run", "xreader", self.document])


class Window(dbus.service.Object):
    """An Evince with one window that shows one document."""

    def __init__(self, bus, uri):
        self.uri, self.calls = uri, []
        super().__init__(bus, "/org/gnome/evince/Window/0")

    @dbus.service.method("org.gnome.evince.Window", "s(ii)u")
    def SyncView(self, file, place, time):
        self.calls.append((str(file), tuple(int(number) for number in place)))

    @dbus.service.signal("org.gnome.evince.Window", "s")
    def DocumentLoaded(self, uri):
        pass


class Daemon(dbus.service.Object):
    def __init__(self, bus, window):
        bus.request_name("org.gnome.evince.Daemon")
        self.window, self.owner = window, bus.get_unique_name()
        super().__init__(bus, "/org/gnome/evince/Daemon")

    @dbus.service.method("org.gnome.evince.Daemon", "sb", "s")
    def FindDocument(self, uri, spawn):
        return self.owner if uri == self.window.uri and not spawn else ""


class Evince(ViewersTest, ServiceTest):
    def setUp(self):
        super().setUp()
        self.prepare()
        self.links()
        self.recorder("evince")
        bus = self.bus(MAIN_LOOP)
        self.uri = "file://" + self.document.replace(" ", "%20")
        self.window = Window(bus, self.uri)
        self.daemon_object = Daemon(bus, self.window)
        self.addCleanup(self.window.remove_from_connection)
        self.addCleanup(self.daemon_object.remove_from_connection)

    def test_one_that_starts_is_told_the_line_when_it_has_loaded_the_document(self):
        self.view("evince")
        self.started("evince")
        self.assertEqual(self.window.calls, [])

        def loaded():
            self.window.DocumentLoaded("file:///another.pdf")
            self.window.DocumentLoaded(self.uri)
            return self.window.calls

        wait_until(loaded)
        self.assertEqual(self.window.calls[0], (self.source, (7, -1)))

    def test_one_that_runs_is_told_the_line_when_the_person_asks(self):
        viewer = self.start_program(os.path.join(self.programs, "evince"), self.document)
        wait_until(lambda: self.starts("evince"))
        self.view("evince", **AFTER_RUN)
        self.view("evince")
        wait_until(lambda: self.window.calls)
        self.assertEqual(self.window.calls, [(self.source, (7, -1))])
        self.assertIsNone(viewer.poll())


del ViewersTest

if __name__ == "__main__":
    unittest.main()
