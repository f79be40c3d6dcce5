"""What a preamble may do, and what comes of it: each preamble is remembered, as far as it goes, by a real engine.

That a snapshot is made says that the document has the same bytes with it and without it. So each body shows what the
preamble has done.
"""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import SnapshotTest  # noqa: E402


class Driver(SnapshotTest):
    def test_macros_registers_and_packages(self):
        self.assert_remembered(["\\usepackage{amsmath}", "\\usepackage{hyperref}", "\\newcommand\\x{y}",
                                "\\newcounter{n}",
                                "\\setcounter{n}{7}"], "\\section{A}\\label{a}\\x\\ref{a}\\newline\\arabic{n}")

    def test_a_preamble_of_one_line(self):
        self.assert_remembered([])

    def test_a_document_without_a_line_before_its_body(self):
        self.file("doc.tex", "\\documentclass{article}\\begin{document}x\\end{document}\n")
        self.assertEqual(self.remember(), "no snapshot: there is no preamble to read")

    def test_line_ends_of_other_systems(self):
        for end in ("\r\n", "\r"):
            self.document(["\\newcommand\\x{y}", "", "% a comment \\begin{document}"], "\\x\\the\\inputlineno")
            path = os.path.join(self.work, "doc.tex")
            with open(path, encoding="ascii") as file:
                text = file.read()
            with open(path, "w", encoding="ascii", newline="") as file:
                file.write(text.replace("\n", end))
            self.settle(path)
            self.assertEqual(self.remember(), "snapshot: 4 of 4 lines", repr(end))

    def test_the_lines_of_the_body_have_their_numbers(self):
        self.assert_remembered(["\\newcommand\\x{y}", "", ""], "\\the\\inputlineno\n\n\\the\\inputlineno")

    def test_texts_of_the_pdf_file(self):
        self.assert_remembered(["\\pdfinfo{/Title (A) /Author (\\string#\\jobname)}",
                                "\\pdfcatalog{/PageMode /UseNone}",
                                "\\pdfnames{/X 1}", "\\pdftrailer{/Y 2}", "\\pdftrailerid{abc}"])

    def test_texts_of_the_pdf_file_under_their_other_names(self):
        self.assert_remembered(["\\ExplSyntaxOn", "\\tex_pdfinfo:D{/Title (A)}",
                                "\\tex_pdfcatalog:D{/PageMode /UseNone}",
                                "\\ExplSyntaxOff"])

    def test_lines_of_the_font_map_and_attributes_of_fonts(self):
        self.assert_remembered(["\\pdfmapline{-cmr10}", "\\pdfmapline{=cmr10 CMR10 <cmr10.pfb}",
                                "\\font\\big=cmr10 scaled 2000",
                                "\\pdffontattr\\big{/Z 3}"], "x {\\big y}")

    def test_a_file_that_is_opened_for_writing(self):
        self.assert_remembered(["\\usepackage{makeidx}", "\\makeindex"], "a\\index{a}")

    def test_a_file_that_is_written_ends_the_snapshot_before(self):
        said = self.assert_remembered(["\\newcommand\\x{y}",
                                       "\\newwrite\\f\\immediate\\openout\\f=f.txt\\immediate\\write\\f{z}"],
                                      "\\x", lines=2)
        self.assertIn("it writes f.txt", said)

    def test_a_file_that_is_open_for_reading_ends_the_snapshot_before(self):
        self.file("in.txt", "a\nb\n")
        said = self.assert_remembered(["\\newcommand\\x{y}", "\\newread\\f\\openin\\f=in.txt\\read\\f to\\y"],
                                      "\\x\\y\\read\\f to\\y\\y", lines=2)
        self.assertIn("open for reading", said)

    def test_a_stream_object_that_is_made_at_once(self):
        self.assert_remembered(["\\immediate\\pdfobj stream attr {/X 2} {a \\jobname}", "\\edef\\n{\\the\\pdflastobj}"],
                               "\\n:\\the\\pdflastobj\\pdfrefobj\\n")

    def test_a_compressed_object_that_is_made_at_once_ends_the_snapshot_before(self):
        said = self.assert_remembered(["\\immediate\\pdfobj{<< /A 1 >>}"], "\\the\\pdflastobj", lines=1)
        self.assertIn("pdfobj in an object stream", said)

    def test_an_object_that_is_made_later(self):
        self.assert_remembered(["\\pdfobj{<< /A 1 >>}", "\\edef\\n{\\the\\pdflastobj}"], "\\n\\pdfrefobj\\n")

    def test_a_form_that_is_made_at_once_ends_the_snapshot_before(self):
        said = self.assert_remembered(["\\newcommand\\x{y}", "\\setbox0=\\hbox{a}\\immediate\\pdfxform0"], "\\x",
                                      lines=2)
        self.assertIn("immediate pdfxform", said)

    def test_what_cannot_be_done_again_ends_the_snapshot_before(self):
        for line, name in (("\\letterspacefont\\f\\font 100", "letterspacefont"),
                           ("\\pdffontexpand\\font 20 20 5 autoexpand", "pdffontexpand"),
                           ("\\chardef\\f=\\pdfcolorstackinit page direct{0 g}", "pdfcolorstackinit"),
                           ("\\pdfnoligatures\\font", "pdfnoligatures"),
                           ("\\pdfincludechars\\font{a}", "pdfincludechars"),
                           ("\\lpcode\\font`f=100", "lpcode"), ("\\efcode\\font`f=100", "efcode"),
                           ("\\pdfoutline goto name{x}{y}", "pdfoutline")):
            with self.subTest(name):
                said = self.assert_remembered(["\\newcommand\\x{y}", line], "\\x ffi", lines=2)
                self.assertIn(name, said + ("pdfcolorstackinit" if "Undefined control" in said else ""))

    def test_open_groups_and_conditionals_end_the_snapshot_before(self):
        for line, close in (("\\begingroup\\def\\x{z}", "\\x\\endgroup"), ("\\iftrue", "\\fi\\x")):
            with self.subTest(line):
                said = self.assert_remembered(["\\newcommand\\x{y}", line], close, lines=2)
                self.assertIn("an open group, conditional or paragraph", said)

    def test_a_cut_is_made_between_commands_only(self):
        said = self.assert_remembered(["\\newcommand\\x{%", "\\relax", "\\relax y}", "\\begingroup"],
                                      "\\x\\endgroup", lines=4)
        self.assertIn("an open group", said)

    def test_whatsits_on_the_page(self):
        self.assert_remembered(["\\special{a}", "\\pdfliteral{}", "\\write16{later}",
                                "\\newwrite\\f", "\\openout\\f=f.txt",
                                "\\write\\f{\\noexpand\\x}"])

    def test_a_mark_on_the_page_ends_the_snapshot_before(self):
        said = self.assert_remembered(["\\newcommand\\x{y}", "\\mark{a}"], "\\x\\topmark\\firstmark", lines=2)
        self.assertIn("its page is not empty", said)

    def test_a_paragraph_in_the_preamble_is_no_clean_run(self):
        self.document(["\\newcommand\\x{y}", "text"])
        self.assertEqual(self.remember(), "refused: it does not typeset without error")

    def test_category_codes_and_the_end_of_lines(self):
        self.assert_remembered(["\\catcode`\\!=13 \\def!{bang}", "\\catcode`\\|=0", "\\endlinechar=-1 "],
                               "!|the|endlinechar x")

    def test_letters_of_the_job_s_name_that_are_no_letters(self):
        self.assert_remembered(["\\catcode`\\/=13", "\\def/{slash}"], "a/b")

    def test_dates_of_the_day_of_the_run(self):
        self.assert_remembered(["\\date{\\today}", "\\title{t}", "\\author{a}"],
                               "\\maketitle\\the\\time\\ExplSyntaxOn\\int_use:N\\c_sys_hour_int"
                               ".\\int_use:N\\c_sys_minute_int"
                               ".\\int_use:N\\c_sys_day_int"
                               ".\\int_use:N\\c_sys_month_int.\\int_use:N\\c_sys_year_int\\ExplSyntaxOff")

    def test_a_date_that_is_set(self):
        self.assert_remembered(["\\year=1999 \\month=2 \\day=3 \\time=61 "], "\\today\\the\\time")

    def test_a_date_that_is_kept_ends_the_snapshot_before(self):
        for line in ("\\edef\\d{\\today}", "\\edef\\d{\\pdfcreationdate}", "\\edef\\d{\\the\\time}",
                     "\\ifnum\\time<900 \\def\\d{a}\\else\\def\\d{b}\\fi"):
            with self.subTest(line):
                said = self.assert_remembered(["\\newcommand\\x{y}", line], "\\x\\d", lines=2)
                self.assertIn("it depends on the date", said)

    def test_the_seed_of_random_numbers(self):
        self.assert_remembered(["\\pdfsetrandomseed 42 "], "\\the\\pdfrandomseed\\space\\pdfuniformdeviate 1000 ")

    def test_the_seed_that_pgf_makes_from_the_date(self):
        self.assert_remembered(["\\usepackage{tikz}"], "\\pgfmathparse{rnd}\\pgfmathresult")
        self.assert_remembered(["\\usepackage{tikz}", "\\pgfmathsetseed{5}"], "\\pgfmathparse{rnd}\\pgfmathresult")

    def test_how_the_engine_goes_on_after_errors(self):
        self.assert_remembered(["\\batchmode"], "\\the\\interactionmode")
        self.assertIn("scrollmode", self.assert_remembered(["\\scrollmode"], "\\the\\interactionmode", lines=1))

    def test_what_the_preamble_adds_for_the_start_of_a_job(self):
        self.assert_remembered(["\\everyjob{\\global\\let\\x=\\undefined}", "\\newcommand\\x{y}"], "\\x")

    def test_what_the_format_says_at_the_start_of_a_job(self):
        # The format's own words hold macros that a preamble may change.
        self.assert_remembered(["\\renewcommand\\fmtversion{another}", "\\makeatletter",
                                "\\def\\ExplLoaderFileDate{1900/01/01}", "\\def\\ExplFileDate{1900/01/01}"], "\\fmtversion")

    def test_dead_cycles_and_the_depth_of_the_last_box(self):
        self.assert_remembered(["\\deadcycles=3 \\prevdepth=7pt "], "\\the\\deadcycles")

    def test_wrapped_primitives_are_the_engine_s_own_again(self):
        names = ("immediate", "pdfinfo", "pdfcatalog", "pdffontattr", "pdfcolorstackinit", "pdfobj", "pdfoutline")
        self.assert_remembered(["\\newcommand\\x{y}"], "\\makeatletter" + "".join(
            f"\\texttt{{\\expandafter\\strip@prefix\\meaning\\{name}>\\meaning\\{name}}}\\par" for name in names))

    def test_names_without_their_escape_character(self):
        self.assert_remembered(["\\escapechar=-1 ", "\\pdfinfo{/Title (A)}", "\\newwrite\\f",
                                "\\immediate\\openout\\f=doc.own "],
                               "\\string\\x\\immediate\\write\\f{\\string\\x}\\immediate\\closeout\\f")

    def test_primitives_with_another_meaning(self):
        self.assert_remembered(["\\let\\oldtime=\\time \\def\\time{t}\\def\\day{d}\\def\\year{y}"],
                               "\\time\\day\\year\\the\\oldtime")

    def test_boxes_hyphenation_and_names_of_glyphs(self):
        self.assert_remembered(["\\newsavebox\\mine\\savebox\\mine{boxed}", "\\hyphenation{ty-po-gra-phy}",
                                "\\pdfglyphtounicode{a}{0041}"],
                               "\\usebox\\mine\\showhyphens{typography} a")

    def test_what_is_loaded_into_a_box(self):
        self.assert_remembered(["\\usepackage{graphicx}", "\\newsavebox\\mine",
                                "\\AtBeginDocument{\\savebox\\mine{\\rule{1cm}{1cm}}}"],
                               "\\usebox\\mine")

    def test_an_image_in_a_box(self):
        self.document([], "An image.", name="image")
        self.bare("image")
        self.assert_remembered(["\\usepackage{graphicx}", "\\newsavebox\\mine",
                                "\\savebox\\mine{\\includegraphics[width=1cm]{image.pdf}}"],
                               "\\usebox\\mine")

    def test_settings_before_the_class(self):
        self.file("doc.tex", "\\DocumentMetadata{pdfversion=1.6}\n\\documentclass{article}\n\\newcommand\\x{y}\n"
                  "\\begin{document}\n\\x\n\\end{document}\n")
        self.settle(os.path.join(self.work, "doc.tex"))
        said = self.remember()
        self.assertRegex(said, "^refused: ")


if __name__ == "__main__":
    unittest.main()
