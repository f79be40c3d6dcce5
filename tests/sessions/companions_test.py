"""A day's work in one session: a paper with a bibliography, an index and a figure, every companion program from the
menus, and formats that are built and used."""

import glob
import os
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402

EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples")
# The script's names of menus and items.
TYPESET_CHOSEN, TYPESET, BIBTEX, DVIPS, PS2PDF = "menu 129 1", "menu 129 2", "menu 129 8", "menu 129 11", "menu 129 14"
TOOL_DVIPS, TOOL_MAKEINDEX, TOOL_METAPOST, TOOL_DVIPDFM = "menu 135 2", "menu 135 3", "menu 135 4", "menu 135 9"


def text_of(pdf):
    return subprocess.run(["pdftotext", pdf, "-"], capture_output=True, text=True, check=True).stdout


def information(pdf):
    lines = subprocess.run(["pdfinfo", pdf], capture_output=True, text=True, check=True).stdout.splitlines()
    return dict(line.split(":", 1) for line in lines if ":" in line)


class Session(HomeTest):
    def setUp(self):
        super().setUp()
        for name in ("paper.tex", "paper.bib", "figure.mp", "plain.tex"):
            shutil.copy(os.path.join(EXAMPLES, name), self.work)
        # The distribution's formats, and a folder of the person's own.
        self.formats = os.path.join(self.support, "formats")
        os.makedirs(self.formats)
        self.run_program(os.path.join(self.binaries, "setpaths.app", "Contents", "Linux", "setpaths"), "--defaults")
        # The companions are started by hand here, and not between the passes of a run.
        self.change(USEPDFTEX="0", PDFTEXFORMAT="pdflatex", AUTOVIEW="0", RERUN="0")

    def change(self, **settings):
        """Gives settings other values."""
        values = self.settings()
        values.update(settings)
        self.write_preferences("".join(f"{key}={value}\n" for key, value in values.items()))

    def path(self, name):
        return os.path.join(self.work, name)

    def steps(self, *steps):
        return self.shell("".join(step + "\n" for step in steps))

    def check_paper(self, pdf, producer):
        text = text_of(pdf)
        self.assertIn("handbooks [1]", text)
        self.assertIn("Ada Linden", text)
        self.assertIn("shelter from, 1", text)
        self.assertEqual(information(pdf)["Pages"].strip(), "2")
        self.assertIn(producer, information(pdf)["Producer"])

    def test_a_paper_from_its_figure_to_its_pdf(self):
        output = self.steps(
            f"choose {self.path('figure.mp')}", TOOL_METAPOST, f"choose {self.path('paper.tex')}", TYPESET_CHOSEN, BIBTEX,
            f"choose {self.path('paper.idx')}", "dialog makeindex options", "  press 3", "  press 1", TOOL_MAKEINDEX,
            TYPESET, TYPESET, DVIPS, f"wait FILE {self.path('paper.ps')}", PS2PDF, f"wait FILE {self.path('paper.pdf')}",
            "print state exit_status")
        self.assertIn("This is MetaPost", output)
        self.assertIn("This is BibTeX", output)
        self.assertIn("This is makeindex", output)
        self.assertIn("This is dvips", output)
        self.assertIn("exit_status=0", output)
        self.assertNotIn("quillon:", self.errors)
        self.check_paper(self.path("paper.pdf"), "Ghostscript")
        self.assertGreater(os.path.getsize(self.path("paper.ps")), 20000)

    def test_the_same_through_dvipdfm(self):
        self.steps(f"choose {self.path('figure.mp')}", TOOL_METAPOST, f"choose {self.path('paper.tex')}", TYPESET_CHOSEN,
                   BIBTEX, f"choose {self.path('paper.idx')}", "dialog makeindex options", "  press 3", TOOL_MAKEINDEX,
                   TYPESET, TYPESET, TOOL_DVIPDFM)
        # The dialog of MakeIndex was left open by its answers, so there is no index.
        self.assertIn("left it open", self.errors)
        self.assertIn("Ada Linden", text_of(self.path("paper.pdf")))
        self.assertIn("dvipdfm", information(self.path("paper.pdf"))["Producer"])

    def test_a_full_dvips_run_beside_the_source(self):
        folder = os.path.join(self.work, "a b's é")
        self.file("my paper é.tex", "\\documentclass{article}\\begin{document}Hello.\\end{document}\n", folder)
        self.steps(f"choose {folder}/my paper é.tex", TYPESET_CHOSEN, "dialog dvips run", "  set 4 -t a5",
                   "  set 6 my output's é.ps", "  press 1", TOOL_DVIPS)
        with open(os.path.join(folder, "my output's é.ps"), "rb") as file:
            self.assertIn(b"a5", file.read())
        self.assertNotIn("quillon:", self.errors)

    def test_formats_are_built_listed_and_used(self):
        self.change(TEXDIR=self.work, USEPDFTEX="1", PDFTEXFORMAT="", DORECORD="1")
        output = self.steps("dialog command line", "  press 1", "menu 134 1", "dialog command line", "  press 1",
                            "menu 134 2", "print menu 130", "print setting TEXDIR")
        for name in ("pdftex", "pdflatex"):
            self.assertTrue(os.path.exists(os.path.join(self.formats, name + ".fmt")), output)
        self.assertIn(f"TEXDIR={self.formats}", output)
        for item, name in ((1, "pdflatex"), (2, "pdftex")):
            self.assertRegex(output, rf"(?m)^{item} . . . {name}$")
        for choice, document, name in ((2, "plain.tex", "pdftex"), (1, "sample.tex", "pdflatex")):
            if not os.path.exists(self.path(document)):
                shutil.copy(os.path.join(EXAMPLES, document), self.work)
            self.steps(f"menu 130 {choice}", f"choose {self.path(document)}", TYPESET_CHOSEN)
            self.assertEqual(self.setting("PDFTEXOUTPUT"), "1")
            with open(self.path(document[:-3] + "fls"), encoding="utf-8") as file:
                self.assertIn(f"INPUT {self.formats}/{name}.fmt\n", file.read())

    def test_a_bitmap_font_is_made_when_that_is_wanted(self):
        path = self.file("logo.tex", "\\font\\logo=logo10 \\logo METAFONT \\bye\n")
        for made in ("0", "1"):
            self.change(USEPDFTEX="1", PDFTEXFORMAT="pdftex", PDFMAKEFONT=made, PDFTEXMODE="ljfour")
            output = self.steps(f"choose {path}", TYPESET_CHOSEN)
            self.assertEqual("Font logo10 at 600 not found" in output, made == "0", output)
            self.assertEqual(os.path.exists(self.path("logo.pdf")), made == "1")
        # In DVI mode dvips makes it.
        for folder in glob.glob(os.path.join(self.home, ".texlive*")):
            shutil.rmtree(folder)
        self.change(USEPDFTEX="0")
        output = self.steps(f"choose {path}", TYPESET_CHOSEN, DVIPS)
        self.assertIn("mktexpk", output)
        self.assertTrue(os.path.exists(self.path("logo.ps")))

    def test_execute_keeps_its_line(self):
        output = self.steps("dialog command line", "  set 4 latex x.tex", "  press 1", "menu 134 3", "print setting BUILDLINE",
                            "dialog command line", "  press 1", "menu 134 3", "print setting BUILDLINE")
        self.assertEqual(output.count("BUILDLINE=latex x.tex\n"), 2)
        self.assertNotIn("Processing", output)


if __name__ == "__main__":
    unittest.main()
