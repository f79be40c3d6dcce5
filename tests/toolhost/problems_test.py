"""The problems of real runs: documents that provoke each kind, and the list that is right for them, known by hand."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HostTest, wait_until  # noqa: E402

KINDS = {"e": "error", "w": "warning", "r": "reference", "b": "box"}
LATEX = "-fmt=pdflatex -interaction=nonstopmode "
PLAIN = "-interaction=nonstopmode "


def article(body, head=""):
    """A LaTeX document whose BODY begins in line 3."""
    return "\\documentclass{article}%s\n\\begin{document}\n%s\n\\end{document}\n" % (head, body)


def read_problems(path):
    """The problems in a file of the tool host: file, line, kind and text of each."""
    with open(path, "rb") as file:
        fields = file.read().decode("utf-8", "surrogateescape").split("\0")
    found, name = [], ""
    for head, given, text in zip(fields[0::3], fields[1::3], fields[2::3]):
        name = given or name
        found.append((name, int(head[1:]), KINDS[head[0]], text))
    return found


class Problems(HostTest):
    def problems(self, line, tool="pdftex", signature=None):
        bundle = self.bundle("by-hand-" + tool, tool, signature) if signature else tool
        reply = self.launch(bundle).run((signature and tool or tool) + " " + line)
        self.numbers = [int(word) for word in reply["nums"].split()]
        found = read_problems(reply["prbs"]) if "prbs" in reply else []
        kinds = [kind for _, _, kind, _ in found]
        self.assertEqual(self.numbers[1:5], [kinds.count(kind) for kind in ("error", "warning", "reference", "box")])
        return [(os.path.relpath(path, self.work), number, kind, text) for path, number, kind, text in found]

    def check(self, line, *expected, **options):
        self.maxDiff = None
        self.assertEqual(self.problems(line, **options), list(expected))

    # What is wrong, each kind in the main file.

    def test_nothing_is_wrong(self):
        self.file("x.tex", article("Hello\\newpage there"))
        self.check(LATEX + "x.tex")
        self.assertEqual(self.numbers[:5], [2, 0, 0, 0, 0])

    def test_undefined_control_sequence(self):
        self.file("x.tex", article("Hello\n\\wrong (a\nb)"))
        self.check(LATEX + "x.tex", ("x.tex", 4, "error", "Undefined control sequence."))

    def test_undefined_reference_and_citation(self):
        self.file("x.tex", article("See \\ref{no(such} and\n\\cite{gone}."))
        self.check(LATEX + "x.tex",
                   ("x.tex", 3, "reference", "LaTeX Warning: Reference `no(such' on page 1 undefined on input line 3."),
                   ("x.tex", 4, "reference", "LaTeX Warning: Citation `gone' on page 1 undefined on input line 4."))

    def test_labels(self):
        self.file("x.tex", article("\\section{A}\\label{a}\\label{a}\n\\ref{a}"))
        tool = self.problems(LATEX + "x.tex")
        self.assertEqual(tool[0][1:3], (4, "reference"))
        self.check(LATEX + "x.tex", ("x.tex", 0, "warning", "LaTeX Warning: Label `a' multiply defined."))

    def test_changed_labels(self):
        self.file("x.tex", article("\\section{A}\\label{a}"))
        self.check(LATEX + "x.tex", ("x.tex", 0, "warning", "LaTeX Warning: Label(s) may have changed. Rerun to get "
                                                            "cross-references right."))

    def test_bad_boxes(self):
        self.file("x.tex", "\\hbox to 10pt{a long line ( of text}\n\\vbox to 10pt{\\hbox{a}\\vskip100pt}\n"
                           "\\hbox to 5in{x y}\n\\vbox to 5in{\\hbox{a}\\vskip1pt plus1pt\\hbox{b}}\n"
                           "\\halign{#\\cr\\hbox to 1pt{wide}\\cr}\n\\bye\n")
        found = self.problems(PLAIN + "x.tex")
        self.assertEqual([(line, kind, text.split(" (")[0]) for _, line, kind, text in found[:6]],
                         [(1, "box", "Overfull \\hbox"), (2, "box", "Overfull \\vbox"), (3, "box", "Underfull \\hbox"),
                          (4, "box", "Underfull \\vbox"), (5, "box", "Overfull \\hbox")])

    def test_a_paragraph_has_its_first_line(self):
        self.file("x.tex", article("One.\n\nTwo\nis here \\hbox to 20cm{wide (}\nand ends.\n\n\\sloppy \\hsize 2cm "
                                   "pneumonoultramicroscopicsilico\nvolcano"))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual([(line, kind, text[:13]) for _, line, kind, text in found],
                         [(6, "box", "Underfull \\hb"), (5, "box", "Overfull \\hbo"), (9, "box", "Overfull \\hbo")])

    def test_a_box_while_a_page_is_made(self):
        self.file("x.tex", "\\output={\\setbox0\\vbox to 10in{x}\\shipout\\box255}text\\vfill\\eject\n(\\wrong\\end\n")
        found = self.problems(PLAIN + "x.tex")
        box = ("x.tex", 0, "box", "Underfull \\vbox (badness 10000) has occurred while \\output is active")
        self.assertEqual(found, [box, ("x.tex", 2, "error", "Undefined control sequence."), box])

    def test_package_and_class_warnings_of_several_lines(self):
        self.file("x.tex", article("\\PackageWarning{foo}{One (two\\MessageBreak three) four}\n"
                                   "\\PackageWarningNoLine{foo}{One (two\\MessageBreak three four}\n"
                                   "\\ClassWarning{bar}{cl)ass}\n\\ref{x}"))
        self.check(LATEX + "x.tex",
                   ("x.tex", 3, "warning", "Package foo Warning: One (two three) four on input line 3."),
                   ("x.tex", 0, "warning", "Package foo Warning: One (two three four."),
                   ("x.tex", 5, "warning", "Class bar Warning: cl)ass on input line 5."),
                   ("x.tex", 6, "reference", "LaTeX Warning: Reference `x' on page 1 undefined on input line 6."))

    def test_latex_warning_of_several_lines(self):
        self.file("x.tex", "\\NeedsTeXFormat{LaTeX2e}[2099/01/01]\n" + article("x"))
        self.check(LATEX + "x.tex", ("x.tex", 0, "warning",
                                     "LaTeX Warning: You have requested release `2099/01/01' of LaTeX, but only "
                                     "release `2022-11-01' is available."))

    def test_font_warnings(self):
        self.file("x.tex", article("\\fontfamily{none}\\selectfont x\n\n\\fontfamily{cmr}\\fontsize{123}{123}"
                                   "\\selectfont x"))
        font = "LaTeX Font Warning: "
        self.check(LATEX + "x.tex",
                   ("x.tex", 3, "warning", font + "Font shape `OT1/none/m/n' undefined using `OT1/cmr/m/n' instead on "
                                                  "input line 3."),
                   ("x.tex", 5, "warning", font + "Font shape `OT1/cmr/m/n' in size <123> not available size <24.88> "
                                                  "substituted on input line 5."),
                   ("x.tex", 0, "warning", font + "Size substitutions with differences up to 98.12pt have occurred."),
                   ("x.tex", 0, "warning", font + "Some font shapes were not available, defaults substituted."))

    def test_missing_characters(self):
        self.file("x.tex", "\\tracinglostchars=2\n\\tenrm \\char200 x\\bye\n")
        self.check(PLAIN + "x.tex", ("x.tex", 0, "warning", "Missing character: There is no \udcc8 in font cmr10!"))

    def test_a_package_error(self):
        self.file("x.tex", article("\\PackageError{foo}{Bad (\\MessageBreak thing}{help}\nx"))
        self.check(LATEX + "x.tex", ("x.tex", 3, "error", "Package foo Error: Bad ( thing."))

    def test_a_class_error_and_a_latex_error(self):
        self.file("x.tex", article("\\ClassError{bar}{No}{help}\n\\begin{foo}\n"))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual(found[0], ("x.tex", 3, "error", "Class bar Error: No."))
        self.assertEqual(found[1], ("x.tex", 4, "error", "LaTeX Error: Environment foo undefined."))

    def test_errors_with_file_and_line(self):
        self.file("sub/my part.tex", "ok\n\n\\wrong\n\\PackageError{foo}{Bad\\MessageBreak thing}{help}\n")
        self.file("x.tex", article("\\input{\"sub/my part\"}\\wrong\n\\ref{x}"))
        self.check("-file-line-error " + LATEX + "x.tex",
                   ("sub/my part.tex", 3, "error", "Undefined control sequence."),
                   ("sub/my part.tex", 4, "error", "Package foo Error: Bad thing."),
                   ("x.tex", 3, "error", "Undefined control sequence."),
                   ("x.tex", 4, "reference", "LaTeX Warning: Reference `x' on page 1 undefined on input line 4."))

    def test_the_stop_that_follows_an_error_is_not_counted(self):
        self.file("x.tex", article("a\n\\wrong"))
        self.check("-fmt=pdflatex x.tex", ("x.tex", 4, "error", "Undefined control sequence."))

    def test_halt_on_error(self):
        self.file("x.tex", article("a\n\\wrong\n\\wrong"))
        self.check("-halt-on-error " + LATEX + "x.tex", ("x.tex", 4, "error", "Undefined control sequence."))

    def test_no_end(self):
        self.file("x.tex", "Hello\n")
        self.check(PLAIN + "x.tex", ("x.tex", 0, "error", "Emergency stop."))

    def test_a_missing_package(self):
        self.file("x.tex", article("x", "\\usepackage{none-such}"))
        for options in ("-fmt=pdflatex ", LATEX, "-file-line-error " + LATEX):
            self.check(options + "x.tex", ("x.tex", 2, "error", "LaTeX Error: File `none-such.sty' not found."))

    def test_a_missing_input(self):
        self.file("x.tex", "a\n\\input none\n\\bye\n")
        self.check("x.tex", ("x.tex", 2, "error", "I can't find file `none'."))

    def test_a_missing_document(self):
        self.check("none.tex", ("none.tex", 0, "error", "I can't find file `none.tex'."))

    def test_runaway_argument(self):
        self.file("x.tex", "x\n\\def\\foo#1{}\n\\foo{(a\n\nb\n\\bye\n")
        self.check(PLAIN + "x.tex", ("x.tex", 4, "error", "Paragraph ended before \\foo was complete."))

    def test_runaway_to_the_end_of_the_file(self):
        self.file("x.tex", "x\\def\\foo#1{}\\foo{(ab\n")
        self.check(PLAIN + "x.tex", ("x.tex", 0, "error", "File ended while scanning use of \\foo."))

    def test_end_in_a_group_and_in_a_condition(self):
        self.file("x.tex", "a{b\n\\iftrue\n\\end\n")
        self.check(PLAIN + "x.tex", ("x.tex", 0, "warning", "\\end occurred inside a group at level 1"),
                   ("x.tex", 2, "warning", "\\end occurred when \\iftrue on line 2 was incomplete"))

    def test_a_destination_twice_and_one_that_is_missing(self):
        self.file("x.tex", "\\pdfoutput1 a\\pdfdest name {aa} fit\n\\pdfdest name {aa} fit (\n"
                           "\\leavevmode\\pdfstartlink goto name {foo}b\\pdfendlink\\vfill\\eject\n\\wrong\\end\n")
        self.check(PLAIN + "x.tex",
                   ("x.tex", 3, "warning", "pdfTeX warning (ext4): destination with the same identifier (name{aa}) has "
                                           "been already used, duplicate ignored"),
                   ("x.tex", 4, "error", "Undefined control sequence."),
                   ("x.tex", 0, "reference", "pdfTeX warning (dest): name{foo} has been referenced but does not exist, "
                                             "replaced by a fixed one"))

    def test_an_old_pdf_version(self):
        self.file("x.tex", "\\pdfoutput1 \\pdfminorversion=7 a\\end\n")
        self.problems(PLAIN + "x.tex")
        self.file("y.tex", "\\pdfoutput1 \\pdfminorversion=4 \\pdfximage{x.pdf}\\pdfrefximage\\pdflastximage\\end\n")
        found = self.problems(PLAIN + "y.tex")
        self.assertIn(("y.tex", 0, "warning", "pdfTeX warning: pdftex (file ./x.pdf): PDF inclusion: found PDF version "
                                              "<1.7>, but at most version <1.4> allowed"), found)

    # Where it is wrong.

    def parts(self, text, name="sub/part"):
        self.file(name + ".tex", text)
        return text

    def test_in_an_input(self):
        self.parts("part\n\\ref{x}\n\\wrong\n\\hbox to 1pt{wide)}\n")
        self.file("x.tex", article("\\input{sub/part}\n\\ref{y}"))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual([problem[:3] for problem in found],
                         [("sub/part.tex", 2, "reference"), ("sub/part.tex", 3, "error"), ("sub/part.tex", 4, "box"),
                          ("x.tex", 4, "reference")])

    def test_in_an_include(self):
        self.parts("\\ref{x}\n\\wrong\n", "one")
        self.parts("\\ref{x}\n\\wrong\n", "two")
        self.file("x.tex", article("\\include{one}\n\\include{two}\n\\ref{y}"))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual([problem[:3] for problem in found],
                         [("one.tex", 1, "reference"), ("one.tex", 2, "error"), ("two.tex", 1, "reference"),
                          ("two.tex", 2, "error"), ("x.tex", 5, "reference")])

    def test_nested(self):
        self.parts("\\wrong\n\\input{sub/b}\n\\ref{a}\n", "sub/a")
        self.parts("\\wrong\n\\input{sub/c}\n\\ref{b}\n", "sub/b")
        self.parts("\\wrong\n\\ref{c}\n", "sub/c")
        self.file("x.tex", article("\\input{sub/a}\\input{sub/c}\n\\ref{y}"))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual([(name, line) for name, line, _, _ in found],
                         [("sub/a.tex", 1), ("sub/b.tex", 1), ("sub/c.tex", 1), ("sub/c.tex", 2), ("sub/b.tex", 3),
                          ("sub/a.tex", 3), ("sub/c.tex", 1), ("sub/c.tex", 2), ("x.tex", 4)])

    def test_a_name_with_blanks(self):
        self.parts("\\wrong\n", "my sub/my (last) part")
        self.file("x.tex", article("\\input{\"my sub/my (last) part\"}\n\\wrong"))
        self.check(LATEX + "x.tex", ("my sub/my (last) part.tex", 1, "error", "Undefined control sequence."),
                   ("x.tex", 4, "error", "Undefined control sequence."))

    def test_the_document_has_blanks_and_accents(self):
        self.file("my é file.tex", article("\\wrong\n\\ref{a}"))
        found = self.problems(LATEX + "my\x1fé\x1ffile.tex")
        self.assertEqual([problem[:3] for problem in found],
                         [("my é file.tex", 3, "error"), ("my é file.tex", 4, "reference")])

    def test_a_name_with_quotes(self):
        self.parts("\\wrong\n", "it's")
        self.file("x.tex", article("\\input{it's}\n\\wrong"))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual([problem[:3] for problem in found], [("it's.tex", 1, "error"), ("x.tex", 4, "error")])

    def test_a_name_that_is_not_utf_8(self):
        name = os.fsdecode(b"caf\xe9.tex")
        self.file(name, "a\n\\wrong\n")
        with open(os.path.join(self.work, "x.tex"), "wb") as file:
            file.write(b"\\input caf\xe9.tex\n\\wrong\\bye\n")
        found = self.problems(PLAIN + "x.tex")
        self.assertEqual([problem[:3] for problem in found], [(name, 2, "error"), ("x.tex", 2, "error")])

    def test_parentheses_in_texts_close_and_open_nothing(self):
        self.parts("\\typeout{(open}\\wrong\n\\typeout{smile (}\n\\message{(a)}\n", "part")
        self.file("x.tex", article("\\input{part}\\wrong\n\\input{part}\n\\ref{y)(}\n\\wrong"))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual([(name, line) for name, line, _, _ in found],
                         [("part.tex", 1), ("x.tex", 3), ("part.tex", 1), ("x.tex", 5), ("x.tex", 6)])

    def test_long_lines(self):
        self.parts("\\message{%s (x (} \\wrong\n" % ("a " * 3000), "part")
        self.file("x.tex", article("\\PackageWarning{foo}{%s}\n\\input{part}\n\\typeout{%s}\\wrong" %
                                   ("long (" * 300, "b (" * 9000)))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual([(name, line) for name, line, _, _ in found], [("x.tex", 3), ("part.tex", 1), ("x.tex", 5)])
        self.assertEqual(found[0][3], ("Package foo Warning: " + "long (" * 300)[:1000])

    def test_errors_that_quote_the_document(self):
        self.file("x.tex", article("\\def\\a#1{\\wrong#1(((}\\a{(}\n)\\wrong)))\n\\ref{x}"))
        found = self.problems(LATEX + "x.tex")
        self.assertEqual([problem[1:3] for problem in found], [(3, "error"), (4, "error"), (5, "reference")])

    def test_an_output_folder(self):
        os.mkdir(self.work + "/the out")
        self.parts("\\ref{x}\\wrong\n", "part")
        self.file("x.tex", article("\\input{part}\\wrong"))
        found = self.problems('-output-directory="the out" ' + LATEX + "x.tex")
        self.assertEqual([(name, line, kind) for name, line, kind, _ in found],
                         [("part.tex", 1, "reference"), ("part.tex", 1, "error"), ("x.tex", 3, "error")])

    def test_hyperref_and_natbib(self):
        self.file("x.tex", article("\\citet{gone}\n\\autoref{none} \\hyperref[gone]{x}\\hyperlink{no}{x}",
                                   "\\usepackage{natbib}\\usepackage{hyperref}"))
        self.check(LATEX + "x.tex",
                   ("x.tex", 3, "reference", "Package natbib Warning: Citation `gone' on page 1 undefined on input "
                                             "line 3."),
                   ("x.tex", 4, "reference", "LaTeX Warning: Reference `none' on page 1 undefined on input line 4."),
                   ("x.tex", 4, "reference", "LaTeX Warning: Hyper reference `gone' on page 1 undefined on input "
                                             "line 4."),
                   ("x.tex", 0, "warning", "Package rerunfilecheck Warning: File `x.out' has changed. Rerun to get "
                                           "outlines right or use package `bookmark'."),
                   ("x.tex", 0, "reference", "pdfTeX warning (dest): name{no} has been referenced but does not exist, "
                                             "replaced by a fixed one"))

    # Other engines and programs.

    def test_lualatex(self):
        self.parts("\\wrong\n\\ref{x}\\hbox to 1pt{wide (}\n", "my part")
        self.file("x.tex", article("\\input{my part}\n\\PackageWarning{foo}{A (\\MessageBreak b}\n\\wrong"))
        found = self.problems("--interaction=nonstopmode x.tex", "lualatex", "PXET")
        found = [problem for problem in found if "Font" not in problem[3]]
        self.assertEqual([problem[:3] for problem in found],
                         [("my part.tex", 1, "error"), ("my part.tex", 2, "reference"), ("my part.tex", 2, "box"),
                          ("x.tex", 4, "warning"), ("x.tex", 5, "error")])

    def test_luatex_warnings(self):
        self.file("x.tex", "\\outputmode1 \\pdfextension dest name {aa} fit\\pdfextension dest name {aa} fit\n"
                           "\\leavevmode\\pdfextension startlink goto name {foo}b\\pdfextension endlink\n\\end\n")
        self.check("--interaction=nonstopmode x.tex",
                   ("x.tex", 0, "warning", "warning  (pdf backend): ignoring duplicate destination with the name 'aa'"),
                   ("x.tex", 0, "reference", "warning  (pdf backend): unreferenced destination with name 'foo'"),
                   tool="luatex", signature="PXET")

    def test_latex_with_dvi_output(self):
        self.file("x.tex", article("\\wrong"))
        self.check("-progname=latex -interaction=nonstopmode x.tex",
                   ("x.tex", 3, "error", "Undefined control sequence."),
                   tool="tex")

    def test_metapost(self):
        self.file("x.mp", "beginfig(1);\ndraw nosuch;\nendfig;\nend\n")
        found = self.problems("-interaction=nonstopmode x.mp", "mpost")
        self.assertEqual(found[0][:3], ("x.mp", 2, "error"))
        self.assertEqual(self.numbers[0], 0)

    def test_bibtex(self):
        self.file("b.aux", "\\relax\n\\bibstyle{plain}\n\\citation{no}\n\\citation{one}\n\\bibdata{x}\n")
        self.file("x.bib", "@book{one, title = {T}}\n@article{two title}\n")
        self.check("b", ("x.bib", 2, "error", "I was expecting a `,' or a `}'"),
                   ("b.aux", 0, "reference", "I didn't find a database entry for \"no\""),
                   *(("b.aux", 0, "warning", text) for text in
                     ("to sort, need author, editor, or key in one", "empty author and editor in one",
                      "empty publisher in one", "empty year in one")), tool="bibtex")

    def test_makeindex(self):
        self.file("m.idx", "\\indexentry{a|(}{1}\n\\indexentry{b}{x$}\n\\indexentry{c}{2}\n")
        self.check("m.idx", ("m.idx", 2, "error", "Illegal Roman number: position 2 in x$."),
                   ("m.idx", 1, "warning", "Unmatched range opening operator (."), tool="makeindex")

    def test_biber(self):
        self.file("x.bib", "@book{macro, title=nomacro, author={A}, date={2020}}\n@article{bad, title={T}\n year=2001}\n")
        self.file("y.bib", "@book{other, title={T}, author={A}, date={2020}}\n")
        document = article("\\cite{macro}\\cite{gone}", "\\usepackage{biblatex}\\addbibresource{x.bib}")
        self.file("x.tex", document)
        self.problems(LATEX + "x.tex")
        found = self.problems("x", tool="biber")
        macro = ("x.bib", 1, "warning", 'warning: undefined macro "nomacro"')
        self.assertEqual((found[0][:3], found[1:]), (("x.bib", 3, "error"), [macro]))
        self.assertTrue(found[0][3].startswith('syntax error: found "year", expected end of entry'), found)
        self.file("x.bib", "@book{macro, title=nomacro, author={A}, date={2020}}\n")
        self.check("x", macro,
                   ("x.bcf", 0, "reference", "I didn't find a database entry for 'gone' (section 0)"), tool="biber")
        # Of several databases biber does not say which one it warns of.
        self.file("x.tex", document.replace("{x.bib}", "{x.bib}\\addbibresource{y.bib}"))
        self.problems(LATEX + "x.tex")
        found = self.problems("x", tool="biber")
        self.assertEqual([one[:3] for one in found], [("x.bcf", 0, "warning"), ("x.bcf", 0, "reference")])
        self.file("x.tex", document.replace("{x.bib}", "{none.bib}"))
        self.problems(LATEX + "x.tex")
        self.check("x", ("x.bcf", 0, "error", "Cannot find 'none.bib'!"), tool="biber")
        self.check("none", tool="biber")  # without a control file it says nothing of a file

    # What runs between the passes of an engine.

    def between(self, body, head="", line="x.tex"):
        self.preferences(RERUN="1")
        self.file("x.tex", article(body, head))
        return self.problems(LATEX + line)

    def test_bibtex_between_passes(self):
        self.file("r.bib", "@book{one, title={T}, author={A}, year=1999}\n@article{two title}\n")
        found = self.between("\\cite{one}\\cite{gone}\n\\bibliographystyle{plain}\\bibliography{r}")
        self.assertEqual([(file, line, kind) for file, line, kind, _ in found],
                         [("x.tex", 3, "reference"), ("r.bib", 2, "error"), ("x.aux", 0, "warning")])
        self.assertEqual(found[2][3], "empty publisher in one")
        # One that fails runs again for the next command, so that what is wrong stays in the list.
        self.assertIn(("r.bib", 2, "error", "I was expecting a `,' or a `}'"), self.problems(LATEX + "x.tex"))
        self.file("r.bib", "@book{one, title={T}, author={A}, year=1999, publisher={P}}\n")
        self.assertEqual([(file, kind) for file, _, kind, _ in self.problems(LATEX + "x.tex")], [("x.tex", "reference")])

    def test_biber_between_passes(self):
        self.file("r.bib", "@book{one, title=nomacro, author={A}, date={2020}}\n")
        found = self.between("\\cite{one}\\cite{gone}\\printbibliography",
                             "\\usepackage{biblatex}\\addbibresource{r.bib}")
        self.assertIn(("r.bib", 1, "warning", 'warning: undefined macro "nomacro"'), found)
        # What the engine says of it too is not repeated.
        self.assertEqual([(file, "gone" in text) for file, _, kind, text in found if kind == "reference"],
                         [("x.bbl", True), ("x.tex", True)])

    def test_makeindex_between_passes(self):
        found = self.between("a\\index{a|(}\\index{b@c@d}\n\\printindex", "\\usepackage{makeidx}\\makeindex")
        self.assertEqual([(file, line, kind) for file, line, kind, _ in found],
                         [("x.idx", 2, "error"), ("x.idx", 1, "warning")])

    def test_an_output_folder_between_passes(self):
        self.file("r.bib", "@article{two title}\n@book{one, title={T}, author={A}, year=1999, publisher={P}}\n")
        os.mkdir(os.path.join(self.work, "out"))
        found = self.between("\\cite{one}\\bibliographystyle{plain}\\bibliography{r}", line="-output-directory=out x.tex")
        self.assertIn(("r.bib", 1, "error", "I was expecting a `,' or a `}'"), found)

    # The list itself.

    def test_other_programs_report_nothing(self):
        reply = self.shell_tool("echo 'LaTeX Warning: no'").run("x")
        self.assertNotIn("nums", reply)
        self.assertNotIn("prbs", reply)

    def test_a_hundred_thousand_are_kept(self):
        self.file("x.tex", "\\tracinglostchars2\\count1=0 \\tenrm\\setbox0\\vbox{\n\\loop\\ifnum\\count1<100005 "
                           "\\message{^^J}\\setbox1\\hbox to1pt{\\kern2pt}\\advance\\count1 1 \\repeat}\\end\n")
        bundle = self.launch("pdftex")
        reply = bundle.run("pdftex -interaction=nonstopmode x.tex")
        self.assertEqual(int(reply["nums"].split()[4]), 100005)
        self.assertEqual(len(read_problems(reply["prbs"])), 100000)
        self.assertEqual(os.stat(reply["prbs"]).st_mode & 0o777, 0o600)
        self.assertEqual(os.path.dirname(reply["prbs"]), os.path.dirname(reply["logf"]))

    def test_a_cancelled_run_keeps_what_it_found(self):
        self.file("x.tex", "\\wrong\n\\immediate\\openout1=begun.txt \\loop\\iftrue\\repeat\n")
        tool = self.launch("pdftex")
        tool.send("pdftex -interaction=nonstopmode x.tex")
        wait_until(lambda: os.path.exists(self.work + "/begun.txt"), "the engine behind the error")
        tool.event("aevt", "quit")
        wait_until(lambda: self.receiver.events, "the report")
        report = self.receiver.events[0][2]
        self.assertEqual(int(report["nums"].split()[1]), 1)
        self.assertEqual([problem[1:3] for problem in read_problems(report["prbs"])], [(1, "error")])


if __name__ == "__main__":
    unittest.main()
