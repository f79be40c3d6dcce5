"""Runs with a snapshot of the preamble: real engines under the tool host."""

import os
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import SnapshotTest  # noqa: E402

PREAMBLE = ["\\usepackage{hyperref}", "\\newcommand\\x{y}", "\\typeout{the preamble speaks}"]


class Use(SnapshotTest):
    def test_the_second_run_takes_it_and_leaves_the_same_bytes(self):
        self.document(PREAMBLE, "\\section{A}\\x")
        self.typeset()
        # The labels are there; the snapshot was made after the run before.
        self.assertEqual(len(self.kept()), 1)
        shutil.rmtree(self.snapshots)
        first, left = self.typeset(options=("-recorder",)), self.left()
        shutil.rmtree(self.snapshots)
        self.typeset()
        second = self.typeset(options=("-recorder",))
        self.assertIn("the preamble speaks", first)
        self.assertEqual(len(self.kept()), 2)
        self.assertEqual(second, first)
        third = self.typeset(options=("-recorder",))
        self.assertEqual(third, first)
        for name, content in self.left().items():
            if name.endswith(".log"):
                content, left[name] = (text.split(b"\nHere is how much")[0] for text in (content, left[name]))
            self.assertEqual(content, left[name], name)
        self.assertTrue(self.snapshot_was_read())

    def test_the_log_and_the_list_tell_of_the_preamble(self):
        self.document(PREAMBLE)
        self.typeset()
        self.assertTrue(self.snapshot_was_read(options=()))
        self.bare(options=("-recorder",))
        left = self.left()
        for name in os.listdir(self.work):
            if name != "doc.tex":
                os.unlink(os.path.join(self.work, name))
        self.typeset(options=("-recorder",))  # asks for the snapshot of these words
        for name in ("doc.log", "doc.fls"):
            os.unlink(os.path.join(self.work, name))
        shutil.copy(self.file("aux", left["doc.aux"], self.home), os.path.join(self.work, "doc.aux"))
        self.assertTrue(self.snapshot_was_read(options=("-recorder",)))
        now = self.left()
        self.assertEqual(now["doc.fls"].decode().splitlines(), left["doc.fls"].decode().splitlines())
        self.assertIn(b"the preamble speaks", now["doc.log"])
        self.assertIn(b"(preloaded format=pdflatex ", now["doc.log"])
        self.assertNotIn(b"quillon", now["doc.log"].replace(self.home.encode(), b""))

    def test_an_error_has_its_line_in_its_file(self):
        self.document(PREAMBLE)
        self.typeset()
        self.document(PREAMBLE, "fine\n\n\\undefinedcommand")
        self.assertIn("l.8 \\undefinedcommand", self.typeset(status=1))
        self.assertEqual(self.settings()["LINENUMBER"], "8")
        self.assertEqual(self.settings()["FILENAME"], os.path.join(self.work, "doc.tex"))

    def test_passes_go_on_by_what_the_preamble_reads(self):
        self.preferences(SNAPSHOT="1", RERUN="1")
        self.document(PREAMBLE, "\\tableofcontents\\section{A}\\label{a}\\ref{a}")
        self.typeset()
        self.document(PREAMBLE, "\\tableofcontents\\section{A}\\section{B}\\label{a}\\ref{a}")
        log = self.typeset()
        self.assertIn("Pass 2:", log)
        self.assertEqual(log.count("the preamble speaks"), log.count("Pass") + 1)

    def test_without_the_key_nothing_is_made_and_nothing_is_used(self):
        self.document(PREAMBLE)
        for value in (None, "0"):
            self.preferences(SNAPSHOT=value)
            self.typeset()
            self.assertFalse(os.path.exists(self.snapshots))
        self.preferences(SNAPSHOT="1")
        self.typeset()
        self.assertTrue(self.kept())
        before = os.stat(self.kept()[0]).st_mtime_ns
        self.preferences()
        self.typeset()
        self.assertEqual(os.stat(self.kept()[0]).st_mtime_ns, before)

    def test_a_private_shell_uses_a_snapshot_and_makes_none(self):
        self.document(PREAMBLE)
        self.typeset(QUILLON_OWN_BUS="1")
        self.assertFalse(os.path.exists(self.snapshots))
        self.typeset()
        folder = self.kept()[0]
        os.utime(folder, (1, 1))
        self.typeset(QUILLON_OWN_BUS="1")
        self.assertGreater(os.stat(folder).st_mtime, 1)
        self.document([*PREAMBLE, ""])
        self.typeset(QUILLON_OWN_BUS="1")
        self.assertEqual(self.kept(), [folder])

    def test_the_person_is_told_with_show_debug_output_only(self):
        self.document(PREAMBLE)
        self.assertNotIn("The preamble", self.typeset())
        self.preferences(SNAPSHOT="1", DEBUG="1")
        self.assertIn("The preamble was remembered.\n", self.typeset())
        self.assertIn("The preamble is executed: the option -synctex=0.\n", self.typeset(options=("-synctex=0",)))
        self.document([*PREAMBLE, "\\relax"])
        self.assertIn("The preamble is executed; it is not remembered yet.\n", self.typeset())

    def test_nothing_is_made_after_an_error(self):
        self.document(PREAMBLE, "\\undefinedcommand")
        self.typeset(status=1)
        self.assertFalse(os.path.exists(self.snapshots))

    def test_what_is_refused_is_not_tried_again_until_something_changes(self):
        self.document(["\\begingroup"], "\\endgroup\\the\\pdfrandomseed")
        self.typeset()
        self.assertIn("different at every run", self.remember())
        note = [name for name in os.listdir(self.snapshots) if name.endswith(".note")]
        times = {name: os.stat(os.path.join(self.snapshots, name)).st_mtime_ns for name in note}
        self.typeset()
        self.typeset()
        self.assertEqual({name: os.stat(os.path.join(self.snapshots, name)).st_mtime_ns for name in note}, times)
        self.document(["\\relax"], "x")
        self.typeset()
        self.assertEqual(len(self.kept()), 1)


if __name__ == "__main__":
    unittest.main()
