"""Run until stable: the passes of the engine and the programs between them, with real programs."""

import os
import re
import shutil
import signal
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HostTest, log_of, wait_until  # noqa: E402

LATEX = "pdftex -fmt=pdflatex "
# What the host says between two programs.
STEP = re.compile(r"^(?:Pass \d: .* changed|(?:bibtex|biber|makeindex)\b.*: .* changed|Still not stable .*)$")

PLAIN = r"\documentclass{article}\begin{document}Hello.\end{document}"
LABELS = (r"\documentclass{article}\begin{document}\tableofcontents\section{A}\label{a}See \ref{b}."
          r"\section{B}\label{b}See \ref{a}.\end{document}")
CITING = (r"\documentclass{article}\begin{document}See \cite{key}.\bibliographystyle{plain}\bibliography{refs}"
          r"\end{document}")
BOOK = "@book{key, author={A. Uthor}, title={%s}, publisher={P}, year=2000}\n"
INDEXED = (r"\documentclass{article}\usepackage{makeidx}\makeindex\begin{document}Word.\index{%s}\printindex"
           r"\end{document}")


class Passes(HostTest):
    def setUp(self):
        super().setUp()
        self.preferences(RERUN="1")
        self.tool = None

    def pages(self, command, status=0, folder=None):
        """Runs a command; the steps that the host has said after the first pass."""
        self.tool = self.tool or self.launch("pdftex")
        reply = self.tool.run(command, folder)
        self.log = log_of(reply).decode(errors="replace")
        self.assertEqual(reply["----"], status, self.log)
        return [line for line in self.log.split("\r") if STEP.match(line)]

    def steps(self, source=None, name="x.tex", more="", **keywords):
        if source is not None:
            self.file(name, source)
        return self.pages(LATEX + more + name.replace(" ", "\x1f") + " ", **keywords)

    def left(self):
        return sorted(os.listdir(self.work))

    def passes(self):
        return self.log.count("This is pdfTeX")

    def test_a_document_without_references_takes_one_pass(self):
        self.assertEqual(self.steps(PLAIN), [])
        self.assertEqual(self.passes(), 1)
        self.assertEqual(self.steps(PLAIN.replace("Hello", r"One\newpage two")), [])
        self.assertEqual(self.left(), ["x.aux", "x.log", "x.pdf", "x.tex"])

    def test_labels_and_contents(self):
        self.assertEqual(self.steps(LABELS), ["Pass 2: labels changed"])
        self.assertEqual(self.passes(), 2)
        self.assertNotIn("undefined references", self.log.split("Pass 2")[1])
        # A document that is stable takes one pass, after a change of a word too.
        self.assertEqual(self.steps(), [])
        self.assertEqual(self.steps(LABELS.replace("See", "Look at")), [])
        self.assertEqual(self.steps(LABELS.replace(r"\section{A}", r"\section{New}\section{A}")),
                         ["Pass 2: labels changed"])

    def test_what_runs_is_said_as_it_was_given(self):
        self.steps(LABELS)
        self.assertNotIn("-recorder", self.log)

    def test_without_the_setting_there_is_one_pass(self):
        for value in ("0", "", "no"):
            self.preferences(RERUN=value)
            self.assertEqual(self.steps(LABELS), [])
            self.assertEqual(self.passes(), 1)
            os.unlink(os.path.join(self.work, "x.aux"))

    def test_plain_tex_is_run_again_as_well(self):
        self.file("x.tex", r"\newread\r \openin\r=\jobname.nr \ifeof\r \def\n{0}\else \read\r to\n\fi \closein\r"
                           r"\newwrite\w \immediate\openout\w=\jobname.nr \immediate\write\w{7}"
                           r"\immediate\closeout\w Number \n.\bye")
        self.assertEqual(self.pages("pdftex x.tex"), ["Pass 2: x.nr changed"])
        self.assertEqual(self.pages("pdftex x.tex"), [])

    def test_a_file_of_another_name_that_is_read_and_then_written(self):
        self.file("other.dat", "old\n")
        self.file("x.tex", r"\newread\r \openin\r=other.dat \read\r to\n \closein\r"
                           r"\newwrite\w \immediate\openout\w=other.dat \immediate\write\w{new}"
                           r"\immediate\closeout\w \n.\bye")
        # What it held before the first run of the document is not known.
        self.assertEqual(self.pages("pdftex x.tex"), ["Pass 2: other.dat changed"])
        self.assertEqual(self.pages("pdftex x.tex"), [])

    def test_a_file_that_is_written_and_then_read_needs_no_pass(self):
        self.file("x.tex", r"\newwrite\w \immediate\openout\w=answers.dat \immediate\write\w{\the\time}"
                           r"\immediate\closeout\w \input answers.dat \bye")
        for _ in range(2):
            self.assertEqual(self.pages("pdftex x.tex"), [])

    def test_bibtex_runs_when_citations_or_the_bibliography_changed(self):
        self.file("refs.bib", BOOK % "One" + BOOK.replace("key", "two") % "Two")
        self.assertEqual(self.steps(CITING), ["bibtex x: citations changed", "Pass 2: the bibliography changed",
                                              "Pass 3: labels changed"])
        self.assertEqual(self.steps(), [])
        self.assertEqual(self.steps(CITING.replace("See", "Look at")), [])
        self.file("refs.bib", BOOK % "Another" + BOOK.replace("key", "two") % "Two")
        self.assertEqual(self.steps(), ["bibtex x: citations changed", "Pass 2: the bibliography changed"])
        # What is not cited makes BibTeX run, and no further pass.
        self.file("refs.bib", BOOK % "Another" + BOOK.replace("key", "two") % "Two and more")
        self.assertEqual(self.steps(), ["bibtex x: citations changed"])
        self.assertEqual(self.steps(CITING.replace(r"\cite{key}", r"\cite{key,two}"))[:2],
                         ["bibtex x: citations changed", "Pass 2: the bibliography changed"])
        os.unlink(os.path.join(self.work, "x.bbl"))
        self.assertEqual(self.steps()[0], "bibtex x: citations changed")

    def test_bibtex_gets_the_persons_options(self):
        self.preferences(RERUN="1", BIBTEXOPTIONS="-terse")
        self.file("refs.bib", BOOK % "One")
        self.assertEqual(self.steps(CITING)[0], "bibtex -terse x: citations changed")
        self.preferences(RERUN="1", BIBTEXOPTIONS="-min-crossrefs=3")
        self.assertEqual(self.steps(), ["bibtex -min-crossrefs=3 x: citations changed"])

    def test_a_bibliography_that_is_missing_is_said_and_ends_no_run(self):
        self.assertEqual(self.steps(CITING)[0], "bibtex x: citations changed")
        self.assertIn("I couldn't open database file refs.bib", self.log)

    def test_makeindex_runs_when_the_index_changed(self):
        self.assertEqual(self.steps(INDEXED % "word"),
                         ["makeindex x: index entries changed", "Pass 2: the index changed"])
        self.assertEqual(self.steps(), [])
        self.assertEqual(self.steps(INDEXED % "sword"),
                         ["makeindex x: index entries changed", "Pass 2: the index changed"])
        self.preferences(RERUN="1", MILETTER="1", MIRANGE="1", MIPAGESTRING="7")
        self.assertEqual(self.steps()[0], "makeindex -l -r -p 7 x: index entries changed")

    def test_names_with_blanks(self):
        self.file("refs.bib", BOOK % "One")
        self.assertEqual(self.steps(CITING, "my paper.tex"),
                         ['bibtex "my paper": citations changed', "Pass 2: the bibliography changed",
                          "Pass 3: labels changed"])
        self.assertEqual(self.steps(name="my paper.tex"), [])

    def test_included_chapters(self):
        os.mkdir(os.path.join(self.work, "parts"))
        self.file("parts/one.tex", r"\section{One}\label{one}See \ref{two}.")
        self.file("parts/two.tex", r"\section{Two}\label{two}See \ref{one}.")
        source = r"\documentclass{article}\begin{document}\include{parts/one}\include{parts/two}\end{document}"
        self.assertEqual(self.steps(source), ["Pass 2: labels changed"])
        self.assertEqual(self.steps(), [])
        self.file("parts/one.tex", r"\section{New}\section{One}\label{one}See \ref{two}.")
        self.assertEqual(self.steps(), ["Pass 2: labels changed"])

    def test_an_output_folder(self):
        os.mkdir(os.path.join(self.work, "out"))
        self.file("refs.bib", BOOK % "One")
        steps = ["bibtex x: citations changed", "Pass 2: the bibliography changed", "Pass 3: labels changed"]
        self.assertEqual(self.steps(CITING, more="-output-directory=out "), steps)
        self.assertEqual(self.steps(more="-output-directory=out "), [])
        self.assertEqual(self.left(), ["out", "refs.bib", "x.tex"])
        self.assertNotIn("x.fls", os.listdir(os.path.join(self.work, "out")))

    def test_an_error_ends_the_run(self):
        self.assertEqual(self.steps(LABELS.replace(r"\label{a}", r"\label{a}\nothing"), status=1), [])
        self.assertEqual(self.passes(), 1)
        self.assertEqual(self.steps(LABELS), ["Pass 2: labels changed"])

    def test_a_document_that_never_becomes_stable(self):
        source = (r"\documentclass{article}\begin{document}\makeatletter\ifx\n\undefined\gdef\n{0}\fi"
                  r"\count0=\n\advance\count0 by 1 \immediate\write\@auxout{\gdef\string\n{\the\count0}}x"
                  r"\end{document}")
        self.assertEqual(self.steps(source), [f"Pass {number}: labels changed" for number in range(2, 6)] +
                         ["Still not stable after 5 passes: x.aux changes each time."])
        self.assertEqual(self.passes(), 5)

    def test_an_aux_file_that_is_cut_short(self):
        self.steps(LABELS)
        path = os.path.join(self.work, "x.aux")
        with open(path, encoding="utf-8") as file:
            whole = file.read()
        # Cut behind a line it is read as it is; cut within one TeX finds an error, and the run ends as it does
        # without passes.
        self.file("x.aux", whole[:whole.index("\n", 10) + 1])
        self.assertEqual(self.steps(), ["Pass 2: labels changed"])
        self.file("x.aux", whole[:whole.index(r"\newlabel") + 12])
        self.assertEqual(self.steps(status=1), [])
        self.assertIn("(./x.aux)\rRunaway argument?", self.log)

    def test_the_recorders_list_is_taken_away_and_an_older_one_kept(self):
        self.file("x.fls", "mine")
        self.steps(LABELS)
        with open(os.path.join(self.work, "x.fls"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "mine")
        os.unlink(os.path.join(self.work, "x.fls"))
        self.steps()
        self.assertEqual([name for name in self.left() if "fls" in name], [])
        self.steps(more="-recorder ")
        with open(os.path.join(self.work, "x.fls"), encoding="utf-8") as file:
            self.assertIn("INPUT x.tex\n", file.read())

    def test_a_job_whose_name_is_known_late_leaves_no_list(self):
        self.file("x.tex", "Hello.\\bye")
        self.pages("pdftex \\input\x1fx")
        self.assertEqual(self.left(), ["x.log", "x.pdf", "x.tex"])

    def test_cancelled_within_and_between_passes(self):
        def there(name):
            return lambda tool: os.path.exists(os.path.join(self.work, name))

        instants = [lambda tool: True, there("x.log"), there("x.aux"), there("x.pdf"),
                    lambda tool: b"Pass 2" in tool.output, lambda tool: tool.output.count(b"(./x.aux") == 2,
                    lambda tool: tool.output.count(b"Output written") == 2]
        self.file("x.tex", LABELS)
        for instant in instants:
            for name in set(self.left()) - {"x.tex"}:
                os.unlink(os.path.join(self.work, name))
            tool = self.launch("pdftex")
            tool.follow()
            tool.send(LATEX + "x.tex ")
            wait_until(lambda: instant(tool) or tool.replies, "the instant")
            tool.event("aevt", "quit")
            wait_until(tool.gone, "the end of the tool")
            self.assertEqual(self.running_as("pdflatex"), [])
            self.assertEqual([name for name in self.left() if "fls" in name or name.startswith(".")], [])

    def test_a_host_that_is_killed_leaves_no_list(self):
        self.file("x.tex", r"\def\loop{\loop}\loop")
        self.file("x.fls", "mine")
        tool = self.launch("pdftex")
        tool.send("pdftex x.tex ")
        wait_until(lambda: self.running_as("pdftex", "x.tex"), "the engine")
        wait_until(lambda: os.path.exists(os.path.join(self.work, "x.log")), "its log")
        tool.kill(signal.SIGKILL)
        wait_until(lambda: not self.running_as("pdftex", "x.tex"), "the engine's end")
        wait_until(lambda: self.left() == ["x.fls", "x.log", "x.tex"], "nothing else left")
        with open(os.path.join(self.work, "x.fls"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "mine")

    def test_an_output_folder_that_is_not_there_is_the_engines_matter(self):
        """The engine says it in its own words, and not that it cannot make a list."""
        self.file("x.tex", r"Hello.\bye")
        self.pages("pdftex -interaction=batchmode -output-directory=none x.tex", status=1)
        self.assertNotIn(".fls", self.log)

    def test_fake_biber(self):
        """What the host does for biblatex, with a control file and a biber that a test can read."""
        programs = os.path.join(self.home, "programs")
        self.file("biber", "#!/bin/sh\necho \"INFO - biber $*\"\n"
                  "sed -n 's/.*<key>\\(.*\\)<.key>.*/\\1/p' \"$1.bcf\" refs.bib > \"$1.bbl\"\n", programs, 0o755)
        self.environment["PATH"] = programs + ":" + self.environment["PATH"]
        self.file("refs.bib", "<key>text</key>\n")
        source = (r"\documentclass{article}\newwrite\c\begin{document}\immediate\openout\c=\jobname.bcf"
                  r"\immediate\write\c{<bcf:datasource type=file>refs.bib</bcf:datasource>}"
                  r"\immediate\write\c{<key>%s</key>}\immediate\closeout\c"
                  r"\InputIfFileExists{\jobname.bbl}{}{}Hello.\end{document}")
        steps = ["biber x: citations changed", "Pass 2: the bibliography changed"]
        self.assertEqual(self.steps(source % "one"), steps)
        self.assertEqual(self.steps(), [])
        self.assertEqual(self.steps(source % "two"), steps)
        self.file("refs.bib", "<key>another text</key>\n")
        self.assertEqual(self.steps(), steps)
        os.unlink(os.path.join(programs, "biber"))
        self.environment["PATH"] = self.environment["PATH"].replace(programs + ":", "")
        self.file("refs.bib", "<key>a third text</key>\n")
        self.tool = None
        if not shutil.which("biber"):
            self.assertEqual(self.steps(), steps[:1])
            self.assertIn("I can't start biber: there is no such program", self.log)

    def test_real_biber(self):
        self.file("refs.bib", BOOK % "One")
        source = (r"\documentclass{article}\usepackage{biblatex}\addbibresource{refs.bib}\begin{document}"
                  r"See \cite{key}.\printbibliography\end{document}")
        self.assertEqual(self.steps(source)[:2], ["biber x: citations changed", "Pass 2: the bibliography changed"])
        self.assertIn("INFO - Found 1 citekeys", self.log)
        self.assertEqual(self.steps(), [])
        self.file("refs.bib", BOOK % "Another")
        self.assertEqual(self.steps()[:2], ["biber x: citations changed", "Pass 2: the bibliography changed"])
        self.assertEqual(self.steps(), [])


if __name__ == "__main__":
    unittest.main()
