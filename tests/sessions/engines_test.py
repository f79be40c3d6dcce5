"""Roots and engines by magic comment, with the real engines."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402

BODY = (r"\documentclass{article}\begin{document}\tableofcontents\section{One}\label{one}See \ref{one}.%s"
        r"\end{document}" "\n")


class Engines(HomeTest):
    def typeset(self, path, **settings):
        self.preferences(USEPDFTEX="1", PDFTEXFORMAT="pdflatex", MAGICCOMMENTS="1", RERUN="1", **settings)
        return self.shell(f"event aevt odoc ---- fss {path}\nprint state exit_status\nprint state tex_error\n")

    def check_engine(self, program, says):
        path = self.file("x.tex", f"% !TEX program = {program}\n" + BODY % "")
        output = self.typeset(path)
        self.assertIn(says, output)
        self.assertIn("Pass 2: labels changed\n", output)
        self.assertIn("exit_status=0\ntex_error=0\n", output)
        return output

    def test_lualatex(self):
        output = self.check_engine("lualatex", "This is LuaHBTeX")
        self.assertIn("Processing -- lualatex x.tex \n", output)
        self.assertTrue(self.settings()["PDFFILE"].endswith("/x.pdf"))
        self.assertEqual(self.settings()["PDFTEXOUTPUT"], "1")
        self.assertEqual(sorted(os.listdir(self.work)), ["x.aux", "x.log", "x.pdf", "x.tex", "x.toc"])
        self.assertNotIn("Pass 2", self.typeset(os.path.join(self.work, "x.tex")))

    def test_xelatex(self):
        output = self.check_engine("xelatex", "This is XeTeX")
        self.assertIn("Processing -- xelatex x.tex \n", output)
        self.assertTrue(self.settings()["PDFFILE"].endswith("/x.pdf"))
        self.assertEqual(sorted(os.listdir(self.work)), ["x.aux", "x.log", "x.pdf", "x.tex", "x.toc"])

    def test_latex_makes_a_dvi_file(self):
        self.check_engine("latex", "This is pdfTeX")
        self.assertTrue(self.settings()["DVIFILE"].endswith("/x.dvi"))
        self.assertEqual(self.settings()["PDFTEXOUTPUT"], "2")

    def test_pdftex_is_plain_tex(self):
        path = self.file("x.tex", "% !TEX program = pdftex\nHello.\\bye\n")
        self.assertIn("exit_status=0\ntex_error=0\n", self.typeset(path))

    def test_an_error_in_a_chapter_opens_the_chapter(self):
        for program in ("pdflatex", "lualatex", "xelatex"):
            main = self.file("main.tex", f"% !TEX program = {program}\n" + BODY %
                             r"\include{parts/one}\include{parts/two}\include{parts/three}")
            for name, text in (("one", "Fine.\n"), ("two", "% !TEX root = ../main.tex\n\nThe \\error is here.\n"),
                               ("three", "Fine.\n")):
                chapter = self.file(f"parts/{name}.tex", text)
            chapter = os.path.join(self.work, "parts/two.tex")
            output = self.typeset(chapter)
            self.assertIn("Undefined control sequence", output, program)
            self.assertIn(f"working directory --  {self.work}\n", output)
            settings = self.settings()
            self.assertEqual((settings["FILENAME"], settings["LINENUMBER"]), (chapter, "3"), program)
            self.assertEqual(settings["TEXFILE"], main)
            self.assertNotIn("Pass 2", output)

    def test_a_command_line_runs_the_engines_too(self):
        self.preferences(MAGICCOMMENTS="1")
        self.file("x.tex", BODY % "")
        output = self.shell(f"event QUIL exec ---- TEXT lualatex x.tex dest fss {self.work}\nprint state exit_status\n")
        self.assertIn("This is LuaHBTeX", output)
        self.assertIn("exit_status=0\n", output)

    def test_without_the_setting_their_names_run_nothing(self):
        self.preferences()
        self.file("x.tex", BODY % "")
        output = self.shell(f"event QUIL exec ---- TEXT lualatex x.tex dest fss {self.work}\n")
        self.assertNotIn("This is", output)
        self.assertEqual(os.listdir(self.work), ["x.tex"])

    def test_a_program_that_is_none_of_ours_runs_nothing(self):
        path = self.file("x.tex", "% !TEX program = sh -c 'touch owned'\nHello.\\bye\n")
        output = self.typeset(path)
        self.assertIn("\"x.tex\" asks for the program \"sh -c 'touch owned'\", which Quillon does not know.\n", output)
        self.assertIn("exit_status=1\n", output)
        self.assertEqual(os.listdir(self.work), ["x.tex"])


if __name__ == "__main__":
    unittest.main()
