"""View PDF shows the document in a viewer of each kind, on both ways to it, and says what keeps it from doing so."""

import os
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, Applications, ServiceTest, wait_until  # noqa: E402

VIEW_PDF = "menu 129 16\n"
NASTY = "a\"b'$(touch owned)`c`.pdf"


class View(Applications, ServiceTest):
    system = ()

    def setUp(self):
        super().setUp()
        self.prepare()
        self.documents = os.path.join(self.work, "documents")
        self.use("a paper")

    def use(self, name):
        """Makes NAME the current document, whose PDF is there."""
        self.source, self.pdf = self.file(name + ".tex", "x"), self.file(name + ".pdf", "x")

    def view(self, viewer, until, steps=VIEW_PDF + VIEW_PDF):
        """Takes the STEPS in a shell that stays until UNTIL holds; what it printed."""
        unix = str.maketrans({" ": "\\x1f"})
        self.preferences(TEXFILE=self.source.translate(unix), PDFVIEW=viewer.translate(unix))
        script = self.file("script", steps + f"wait FILE {self.home}/end\n")
        self.start_shell("--script", script, *self.system)
        wait_until(lambda: until(self.output()), "what is to happen")
        self.file("end", "", self.home)
        wait_until(self.ended, "the end of the shell")
        self.assertEqual(self.running.returncode, 0)
        return self.output()

    def recorded(self, name, viewer):
        """Two views: each started the viewer once, on the document."""
        self.view(viewer, lambda _: len(self.starts(name)) == 2)
        wait_until(lambda: not self.processes_of("Helpers/open"))
        self.assertEqual(self.starts(name), [[self.pdf]] * 2)

    def test_a_script(self):
        self.recorded("scripted", self.recorder("scripted"))

    def test_a_plain_program(self):
        program = shutil.copy(os.path.join(BUILD, "bin", "tests", "recorder_program"), os.path.join(self.programs, "plain"))
        self.recorded("plain", program)

    def test_a_desktop_entry(self):
        self.recorded("scripted", self.entry("org.example.Viewer", f"Exec={self.recorder('scripted')} %f\n"))

    def test_a_bundle_is_started_once_and_gets_every_document(self):
        bundle = self.fake_bundle(os.path.join(self.home, "my viewer.app"), "VIEW", documents=self.documents)
        self.view(bundle, lambda _: self.got() == [self.pdf] * 2)
        wait_until(lambda: not self.processes_of("Helpers/open"))
        (viewer,) = self.processes_of("Linux/my viewer")
        os.kill(viewer, 15)

    def got(self):
        if not os.path.exists(self.documents):
            return []
        with open(self.documents, encoding="utf-8") as file:
            return file.read().split("\0")[:-1]

    def test_a_viewer_of_the_table_is_started_once_and_shows_the_document_again(self):
        self.view(self.recorder("zathura"), lambda _: self.starts("zathura"))
        wait_until(lambda: not self.processes_of("Helpers/open"))
        self.assertEqual(self.starts("zathura"), [[self.pdf]])

    def test_no_name_is_run(self):
        self.use(NASTY[:-4])
        self.recorded("scripted", self.recorder("scripted"))
        self.assertEqual([name for name in os.listdir(self.work) if "owned" in name and "$" not in name], [])

    def test_one_that_has_gone_is_asked_for(self):
        other = self.recorder("other")
        said = self.view("/no/such/viewer", lambda _: self.starts("other"), f"choose {other}\n" + VIEW_PDF)
        self.assertEqual((self.starts("other"), self.setting("PDFVIEW")), ([[self.pdf]], other))
        self.assertNotIn("An error occurred", said)

    def test_the_person_may_choose_none(self):
        self.view("/no/such/viewer", lambda _: True, "choose\n" + VIEW_PDF + "print setting PDFVIEW\n")
        self.assertIn("PDFVIEW=/no/such/viewer\n", self.output())

    said = "open: I can't find the application %s\n"

    def test_one_that_is_not_executable_is_said_at_each_view(self):
        viewer = self.file("viewer", "#!/bin/sh\n", self.programs, 0o644)
        self.view(viewer, lambda said: said.count(self.said % viewer) == 2)

    def test_a_folder_is_no_viewer_and_is_asked_for(self):
        folder, other = os.path.join(self.home, "viewer"), self.recorder("other")
        os.mkdir(folder)
        self.view(folder, lambda _: self.starts("other"), f"choose {other}\n" + VIEW_PDF)
        self.assertEqual((self.starts("other"), self.setting("PDFVIEW")), ([[self.pdf]], other))

    def test_one_that_crashes_at_once_is_started_again(self):
        viewer = self.file("crashing", f"#!/bin/sh\necho >> {self.documents}\nkill -SEGV $$\n", self.programs, 0o755)
        self.view(viewer, lambda _: os.path.exists(self.documents) and os.path.getsize(self.documents) == 2)

    def test_one_that_ignores_the_document_holds_nothing_up(self):
        bundle = self.fake_bundle(os.path.join(self.home, "deaf.app"), "DEAF")
        self.view(bundle, lambda _: len(self.processes_of("Linux/deaf")) == 1)
        wait_until(lambda: not self.processes_of("Helpers/open"))
        for process in self.processes_of("Linux/deaf"):
            os.kill(process, 15)


class ViewOnAnEarlierSystem(View):
    system = ("--system", "9")
    said = "didlaunch = 0\n%.0s"


if __name__ == "__main__":
    unittest.main()
