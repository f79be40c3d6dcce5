"""Source links with a snapshot: the SyncTeX file holds what it holds without one, by real engines."""

import gzip
import os
import re
import signal
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import COMMAND, SnapshotTest, log_of, wait_until  # noqa: E402

LINKS = ("-synctex=1",)
PREAMBLE = ["\\usepackage{amsmath}", "\\usepackage{hyperref}", "\\newcommand\\x{y}", "\\typeout{the preamble speaks}"]
BODY = "\\section{One}\\label{one}Text and $a+b$.\n\n\\section{Two}\\x\\ref{one}\n\\[ c \\]\n\\newpage A page."


class SourceLinks(SnapshotTest):
    def links(self):
        """What is compressed in the SyncTeX file."""
        with gzip.open(os.path.join(self.work, "doc.synctex.gz")) as file:
            return file.read()

    def without(self):
        """What the SyncTeX file of an engine alone holds."""
        self.bare(options=LINKS)
        return self.links()

    def with_snapshot(self):
        """What the SyncTeX file of a run with a snapshot holds."""
        os.unlink(os.path.join(self.work, "doc.synctex.gz"))
        self.assertTrue(self.snapshot_was_read(options=LINKS), getattr(self, "said_of_it", ""))
        return self.links()

    def assert_the_same(self):
        """A run with a snapshot leaves the same links as one without."""
        wanted = self.without()
        found = self.with_snapshot()
        self.assertIn(b"Post scriptum:\n", wanted)
        self.assertNotIn(b"/dev/null", found)
        self.assertEqual(found.split(b"\n"), wanted.split(b"\n"))
        self.assert_counts(found)
        return found.decode("utf-8", "surrogateescape")

    def assert_counts(self, text):
        """Each count of bytes is right."""
        length = 0
        for line in text.splitlines(True):
            if line.startswith(b"!"):
                self.assertEqual(int(line[1:]), length)
                length = 0
            length += len(line)

    def make(self, preamble=PREAMBLE, body=BODY, lines=None):
        """Remembers the preamble up to the line of that number, with the class the first; all without one."""
        self.document(preamble, body)
        self.bare(options=LINKS)
        self.bare(options=LINKS)
        wanted = len(preamble) + 1 if lines is None else lines
        said = self.remember(options=LINKS)
        self.assertTrue(said.startswith(f"snapshot: {wanted} of {len(preamble) + 1} lines"), said)

    def places(self, text, name):
        """The lines of the file of that name that have places: kind, line."""
        number = next(match[1] for match in re.finditer(r"^Input:(\d+):(.*)$", text, re.M) if match[2].endswith(name))
        return re.findall(rf"^([\[(hvkgx$r]){number},(\d+):", text, re.M)


class Documents(SourceLinks):
    def test_an_article_with_packages_and_sections(self):
        self.make()
        text = self.assert_the_same()
        self.assertIn(f":{self.work}/./doc.tex\n", text)
        self.assertGreater(len(self.places(text, "/doc.tex")), 20)

    def test_the_run_that_the_person_sees_asks_for_it(self):
        self.document(PREAMBLE, BODY)
        self.typeset(options=LINKS)
        self.assertEqual(len(self.kept()), 1)
        self.assert_the_same()

    def test_the_log_the_list_and_the_terminal_say_nothing_of_it(self):
        self.make()
        options = (*LINKS, "-recorder")
        self.assertEqual(self.remember(options=options), "snapshot: 5 of 5 lines")
        self.bare(options=options)
        left = self.left()
        log = self.typeset(options=options)
        self.assertIn("the preamble speaks", log)
        self.assertNotIn("/dev/null", log)
        now = self.left()
        self.assertEqual(sorted(now), sorted(left))
        for name, content in now.items():
            if name.endswith(".log"):
                content, left[name] = (text.split(b"\nHere is how much")[0] for text in (content, left[name]))
                self.assertEqual(content.splitlines()[5:], left[name].splitlines()[5:])
            elif name.endswith(".gz"):
                self.assertEqual(gzip.decompress(content), gzip.decompress(left[name]))
            else:
                self.assertEqual(content, left[name], name)

    def test_a_body_that_is_edited_afterwards(self):
        self.make()
        self.document(PREAMBLE, "\n\n\\section{New}More.\n\n" + BODY)
        text = self.assert_the_same()
        self.assertIn(("x", "9"), self.places(text, "/doc.tex"))

    def test_a_file_that_is_read_only_by_a_later_edit(self):
        self.make()
        self.file("later.tex", "\n\nLater.\n", self.work)
        self.document(PREAMBLE, "\\input{later}" + BODY)
        text = self.assert_the_same()
        self.assertIn(("x", "3"), self.places(text, "/later.tex"))

    def test_a_box_of_the_preamble_that_only_a_later_edit_uses(self):
        self.file("boxes.sty", "\\newsavebox\\mine\n\n\\savebox\\mine{boxed text}\n", self.work)
        self.file("own.tex", "Own chapter.\n" * 4, self.work)
        preamble = ["\\usepackage{amsmath}", "\\usepackage{boxes}", "\\newsavebox\\here", "",
                    "\\savebox\\here{made here}", "\\usepackage{xcolor}"]
        self.make(preamble, "Text.\\input{own}")
        self.assert_the_same()
        # By the numbers of the run alone the box would lie in a file of the body.
        self.document(preamble, "\\usebox\\mine\\usebox\\here\\input{own}")
        text = self.assert_the_same()
        self.assertIn(("x", "3"), self.places(text, "/boxes.sty"))
        self.assertIn(("x", "6"), self.places(text, "/doc.tex"))
        self.assertIn(("x", "1"), self.places(text, "/own.tex"))

    def test_a_part_of_the_preamble(self):
        preamble = ["\\usepackage{amsmath}", "\\newsavebox\\mine\\savebox\\mine{a}", "\\lpcode\\font`f=100",
                    "\\usepackage{xcolor}", "\\newcommand\\x{y}"]
        self.make(preamble, BODY, lines=3)
        self.assert_the_same()
        self.document(preamble, "\\usebox\\mine" + BODY)
        self.assertIn(("x", "3"), self.places(self.assert_the_same(), "/doc.tex"))

    def test_chapters_that_are_included(self):
        for name in ("one", "two"):
            self.file(name + ".tex", f"\\section{{{name}}}\n\nText of {name}.\n" * 3, self.work)
        self.file("part.tex", "A part.\n", self.work)
        self.make(PREAMBLE, "\\tableofcontents\\include{one}\\input{part}\\include{two}")
        text = self.assert_the_same()
        self.assertIn(f":{self.work}/./two.tex\n", text)
        self.assertTrue(self.places(text, "/two.tex"))

    def test_a_talk_with_pictures(self):
        self.document([], "")
        self.file("doc.tex", "\\documentclass{beamer}\n\\usepackage{tikz}\n\\title{A talk}\n\\begin{document}\n"
                  "\\begin{frame}\\titlepage\\end{frame}\n\\begin{frame}{One}\n"
                  "\\begin{itemize}\\item<1-> a\\item<2-> b\\end{itemize}\n\\tikz\\draw (0,0) -- (1,1) node {x};\n"
                  "\\end{frame}\n\\end{document}\n", self.work)
        self.settle(os.path.join(self.work, "doc.tex"))
        for _ in range(3):
            self.bare(options=LINKS)
        self.assertRegex(self.remember(options=LINKS), "^snapshot: ")
        self.assert_the_same()

    def test_many_packages(self):
        names = ("amsmath", "amssymb", "graphicx", "xcolor", "geometry", "booktabs", "array", "longtable", "enumitem",
                 "microtype", "listings", "caption", "tikz", "hyperref", "cleveref")
        self.make([f"\\usepackage{{{name}}}" for name in names if self.is_installed(name)], BODY.replace("\\x", "") +
                  "\n\\begin{tabular}{cc}\\toprule a&b\\\\\\bottomrule\\end{tabular}")
        text = self.assert_the_same()
        self.assertGreater(text.count("\nInput:"), 80)

    @staticmethod
    def is_installed(name):
        return os.path.exists(f"/usr/share/texlive/texmf-dist/tex/latex/{name}") or name in (
            "array", "longtable", "graphicx", "amssymb", "tikz")

    def test_more_files_in_the_preamble_than_in_the_body_and_the_other_way_round(self):
        for number in range(40):
            self.file(f"p{number}.tex", f"\\newcommand\\{'x' * (number + 1)}{{a}}\n", self.work)
            self.file(f"b{number}.tex", f"Text {number}.\n\n", self.work)
        for many, few in (("p", "b"), ("b", "p")):
            preamble = [f"\\input{{p{number}}}" for number in range(40 if many == "p" else 1)]
            self.make(preamble, "".join(f"\\input{{b{number}}}\n" for number in range(40 if many == "b" else 1)))
            self.assert_the_same()

    def test_letters_of_any_kind_in_the_names(self):
        self.file("näch ste.tex", "\\newcommand\\x{y}\n", self.work)
        self.file("zweïte.tex", "Text.\n", self.work)
        self.make(["\\input{näch\\space ste}", "\\newcommand\\z{y}"], "\\x\\input{zweïte}", lines=1)
        self.assert_the_same()

    def test_what_the_preamble_does_at_the_end_of_files(self):
        self.make(["\\everyeof{\\relax}", "\\endlinechar=-1 ", "\\newcommand\\x{y}"])
        self.assert_the_same()

    def test_every_mode_of_the_engine(self):
        self.document(PREAMBLE, BODY)
        for mode in ("batchmode", "scrollmode", "errorstopmode"):
            options = (*LINKS, "-interaction=" + mode)
            self.bare(options=options)
            self.bare(options=options)
            self.assertEqual(self.remember(options=options), "snapshot: 5 of 5 lines")
            wanted = self.links()
            os.unlink(os.path.join(self.work, "doc.synctex.gz"))
            self.assertTrue(self.snapshot_was_read(options=options))
            self.assertEqual(self.links(), wanted)
        self.make(["\\batchmode", "\\newcommand\\x{y}"])
        self.assert_the_same()


class Refusals(SourceLinks):
    def test_only_this_value_of_the_option(self):
        self.document(PREAMBLE, BODY)
        for option in ("-synctex=0", "-synctex=2", "-synctex=-1", "-synctex=11", "-synctex=15"):
            self.assertEqual(self.remember(options=(option,)), "the option " + option)

    def test_runs_without_the_option_open_no_empty_files(self):
        self.document(PREAMBLE, BODY)
        self.bare()
        self.assertEqual(self.remember(), "snapshot: 5 of 5 lines")
        format_ = os.path.join(self.kept()[0])
        self.bare()
        with open(os.path.join(self.work, "doc.log"), "rb") as file:
            self.assertNotIn(b"/dev/null", file.read())
        self.environment["TEXFORMATS"] = format_ + ":"
        self.bare()
        with open(os.path.join(self.work, "doc.log"), "rb") as file:
            log = file.read()
        self.assertIn(b"quillon-snapshot ends", log)
        self.assertNotIn(b"/dev/null", log)

    def test_links_that_differ_alone_are_refused_and_the_run_is_an_ordinary_one(self):
        # The preamble is dumped without links, so the box is made in another line.
        self.document(["\\newsavebox\\mine\\ifnum\\synctex>0 \\savebox\\mine{a}\\else", "\\savebox\\mine{a}\\fi"],
                      "\\usebox\\mine")
        self.bare(options=LINKS)
        self.assertEqual(self.remember(options=LINKS), "refused: with it the results differ: doc.synctex.gz")
        wanted = self.without()
        self.assertFalse(self.snapshot_was_read(options=LINKS))
        self.assertIn("doc.synctex.gz", self.said_of_it)
        self.assertEqual(self.links(), wanted)
        # Without links nothing differs.
        self.assertEqual(self.remember(), "snapshot: 3 of 3 lines")

    def test_a_preamble_that_reads_other_files_with_links(self):
        # The places of this document are right, and those of a box that an edit uses would not be.
        self.file("more.tex", "% nothing\n", self.work)
        self.document(["\\ifnum\\synctex>0 \\input{more}\\fi", "\\usepackage{xcolor}"], "Text.")
        self.bare(options=LINKS)
        self.assertEqual(self.remember(options=LINKS), "refused: with it the results differ: doc.synctex.gz")

    def test_a_document_that_turns_links_off(self):
        self.document(["\\synctex=0 ", "\\newcommand\\x{y}"], BODY)
        self.assertRegex(self.remember(options=LINKS), "^refused: ")

    def test_a_document_without_a_page_has_no_links(self):
        self.document(["\\newcommand\\x{y}"], "\\relax")
        self.assertEqual(self.remember(options=LINKS), "refused: it leaves no SyncTeX file")


class Faults(SourceLinks):
    def damaging_engine(self, script):
        """Runs take an engine behind which a script changes what it has left."""
        self.take_engine(f"$ENGINE \"$@\"\nstatus=$?\n[ -e '{self.home}/now' ] && {{\n{script}\n}}\nexit $status")

    def assert_done_again(self, script):
        """A run whose SyncTeX file that script has changed is done again without the snapshot, which is given up."""
        self.damaging_engine(f"rm '{self.home}/now'\n{script}")
        self.make()
        before = self.kept()
        self.file("now", "", self.home)
        log = self.typeset(options=LINKS)
        self.assertIn("Pass 2: doc.synctex.gz changed", log)
        self.assertFalse(os.path.exists(before[0]))
        found = self.links()
        self.assertEqual(found, self.without())
        self.assertTrue(self.snapshot_was_read(options=LINKS))

    def test_a_file_that_is_cut_short(self):
        self.assert_done_again("head -c 500 doc.synctex.gz >x && mv x doc.synctex.gz")

    def test_a_text_that_is_cut_short(self):
        self.assert_done_again("zcat doc.synctex.gz | head -100 | gzip >x && mv x doc.synctex.gz")

    def test_the_file_of_an_earlier_run(self):
        self.file("earlier", gzip.compress(b"SyncTeX Version:1\nInput:1:doc.tex\nPost scriptum:\n"), self.home)
        self.assert_done_again(f"cp '{self.home}/earlier' doc.synctex.gz")

    def test_an_edit_that_turns_links_off_for_a_while(self):
        self.file("chapter.tex", "A chapter.\n", self.work)
        self.make()
        self.document(PREAMBLE, BODY + "\n\n\\synctex=0 \\input{chapter}\\synctex=1 \\input{chapter}")
        wanted = self.without()
        self.typeset(options=LINKS)
        self.assertEqual(self.links(), wanted)

    def test_a_file_that_is_not_there_is_not_made(self):
        self.damaging_engine("rm doc.synctex.gz")
        self.make()
        self.file("now", "", self.home)
        self.assertTrue(self.snapshot_was_read(options=LINKS))
        self.assertEqual([name for name in os.listdir(self.work) if "synctex" in name], [])

    def begin_a_loop(self):
        """Begins a run with a snapshot that does not end by itself; the tool, when it has come to the loop."""
        self.document(PREAMBLE, BODY + "\\newpage\\immediate\\write16{on}\\shipout\\hbox{}\\loop\\iftrue\\repeat")
        tool = self.launch(self.tool)
        tool.follow()
        tool.send(" ".join([*COMMAND, *LINKS, "doc"]))
        wait_until(lambda: b"\non\n" in tool.output, "the loop")
        return tool

    def test_a_run_that_is_cancelled_and_closes_its_files(self):
        self.make()
        tool = self.begin_a_loop()
        tool.event("aevt", "quit")
        wait_until(tool.gone, "the host's end")
        found = self.links()
        self.assertIn(b"article.cls\n", found)
        self.assertNotIn(b"/dev/null", found)
        self.assertTrue(found.endswith(b"Post scriptum:\n"))
        self.assert_counts(found)

    def test_a_run_that_is_killed_leaves_the_links_of_the_run_before(self):
        self.take_engine(f"echo $$ >'{self.home}/process'\nexec $ENGINE \"$@\"")
        self.make()
        before = self.left(but=(".log", ".aux", ".out", ".pdf", ".tex"))
        self.assertIn("doc.synctex.gz", before)
        tool = self.begin_a_loop()
        with open(os.path.join(self.home, "process"), encoding="ascii") as file:
            os.kill(int(file.read()), signal.SIGKILL)
        log_of(tool.reply())
        after = self.left(but=(".log", ".aux", ".out", ".pdf", ".tex"))
        self.assertEqual(after["doc.synctex.gz"], before["doc.synctex.gz"])


if __name__ == "__main__":
    unittest.main()
