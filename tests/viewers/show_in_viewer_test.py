"""File > Show in Viewer: what the viewer is told, and what the console says when it cannot show a place."""

import gzip
import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HELPERS, Applications, HomeTest  # noqa: E402

SHOW, MENU = "menu 129 23\n", "print menu 129\n"
EDIT = os.path.join(HELPERS, "edit")
LINKS = ["-x", f"'{EDIT}' +%{{line}} '%{{input}}'"]
NO_LINKS = "holds no links to its source, so no line can be shown in it."


class ShowInViewer(Applications, HomeTest):
    def setUp(self):
        super().setUp()
        self.prepare()
        self.source = self.file("a paper.tex", "x\n")
        self.document = os.path.join(self.work, "a paper.pdf")

    def has_document(self, *sources):
        """A PDF file, and its SyncTeX file when SOURCES are given."""
        self.file("a paper.pdf", "x")
        if sources:
            lines = "".join(f"Input:{number}:{path}\n" for number, path in enumerate(sources, 1))
            self.file("a paper.synctex.gz", gzip.compress(f"SyncTeX Version:1\n{lines}".encode()))

    def show(self, viewer="zathura", before="", **settings):
        """Chooses the item; what the console says, and the words of the viewer's one start."""
        for record in self.records(viewer):
            os.unlink(record)
        self.let_go()  # a viewer that shows the document already would not be started again
        self.file("stay", "", self.programs)
        values = {"SPACECHAR": "31", "PDFVIEW": self.recorder(viewer), "TEXFILE": self.source.replace(" ", "\\x1f"),
                  **settings}
        self.preferences(**values)
        said = self.shell(before + SHOW)
        words = self.started(viewer)
        self.assertEqual(len(self.starts(viewer)), 1)
        return said, words

    def edited(self, line="7", path=None):
        return {"EDITEDFILE": (path or self.source).replace(" ", "\\x1f"), "EDITEDLINE": line}

    def test_the_line_that_was_edited_last(self):
        self.has_document(self.source)
        said, words = self.show(ADDSPECIALS="1", **self.edited())
        self.assertEqual(words, [*LINKS, "--synctex-forward", f"7:1:{self.source}", self.document])
        self.assertNotIn("paper.pdf", said)

    def test_the_links_of_the_document_count_and_not_the_setting_for_the_next_run(self):
        self.has_document(self.source)
        _, words = self.show(ADDSPECIALS="0", **self.edited())
        self.assertEqual(words, ["--synctex-forward", f"7:1:{self.source}", self.document])

    def test_without_links_the_console_says_what_turns_them_on(self):
        self.has_document()
        said, words = self.show(ADDSPECIALS="0", **self.edited())
        self.assertEqual(words, [self.document])
        self.assertIn(f"a paper.pdf {NO_LINKS} Turn on Options > Add Source Links and typeset it again.\n", said)
        said, words = self.show(ADDSPECIALS="1", **self.edited())
        self.assertEqual(words, [*LINKS, self.document])
        self.assertIn(f"a paper.pdf {NO_LINKS} Typeset it again: Options > Add Source Links is on by now.\n", said)

    def test_the_first_problem_where_no_line_of_the_document_was_edited(self):
        other = self.file("other.tex", "x\n")
        self.file("a paper.tex", "\\synctex1 Hello\n\n\\wrong\n\\hbox to 1pt{wide}\n\\bye\n")
        run = (f"event QUIL exec ---- TEXT \"pdftex -interaction=nonstopmode a\\x1fpaper.tex\" dest fss {self.work}\n"
               .replace("\\x1f", "\x1f"))
        said, words = self.show(before=run, AUTOVIEW="0", **self.edited("1", other))
        self.assertEqual(words, ["--synctex-forward", f"3:1:{self.source}", self.document])
        self.assertNotIn("is shown where it is", said)

    def test_without_any_place_it_is_the_document(self):
        self.has_document(self.source)
        said, words = self.show()
        self.assertEqual(words, [self.document])
        self.assertIn("a paper.pdf is shown where it is: no line of its sources was opened in the editor, and the last "
                      "run has no problem in one.\n", said)

    def test_a_viewer_that_cannot_be_told_a_line(self):
        self.has_document(self.source)
        for viewer in ("mupdf", "unknown"):
            said, words = self.show(viewer, **self.edited())
            self.assertEqual(words, [self.document])
            self.assertIn(f"{viewer} cannot be told a line, so it shows the document alone.\n", said)

    def test_the_dvi_file_where_the_last_run_wrote_one(self):
        special = b"\xef" + bytes([len(b"src:3a paper.tex")]) + b"src:3a paper.tex"
        self.has_document(self.source)
        dvi = self.file("a paper.dvi", b"\xf7\x02" + special)
        for last_output, words in (("2", ["-nofork", "-sourceposition", f"7 {self.source}", dvi]), ("1", None), ("0", None)):
            if words:
                self.assertEqual(self.show("xdvi", PDFTEXOUTPUT=last_output, **self.edited())[1], words)
            else:
                self.assertEqual(self.show(PDFTEXOUTPUT=last_output, **self.edited())[1][-1], self.document)
        os.unlink(self.document)
        self.assertEqual(self.show("xdvi", PDFTEXOUTPUT="1", **self.edited())[1][-1], dvi)
        self.file("a paper.dvi", b"\xf7\x02no links")
        said, words = self.show("xdvi", **self.edited())
        self.assertEqual(words, [dvi])
        self.assertIn(f"a paper.dvi {NO_LINKS} Turn on", said)

    def test_the_item_is_grey_without_an_output(self):
        self.preferences(TEXFILE=self.source.replace(" ", "\\x1f"), SPACECHAR="31")
        self.assertIn("\n23 - - J Show in Viewer\n", self.shell(MENU))
        self.has_document()
        self.assertIn("\n23 + - J Show in Viewer\n", self.shell(MENU))


if __name__ == "__main__":
    unittest.main()
