"""Runs through the headless shell, with the real engines."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402

PLAIN = "Hello, world. $a^2+b^2=c^2$\n\\bye\n"
BROKEN = "First line.\n\\undefinedcommand\n\\bye\n"


class Runs(HomeTest):
    def exec(self, command, folder=None):
        return f"event QUIL exec ---- TEXT {command} dest fss {folder or self.work}\n"

    def command_line(self, output):
        lines = [line for line in output.split("\n") if line.startswith("Processing -- ")]
        return lines[-1][len("Processing -- "):] if lines else None

    def test_typeset_with_pdftex_writes_the_pdf_and_its_settings(self):
        self.preferences(USEPDFTEX="1")
        self.file("paper.tex", PLAIN)
        output = self.shell(self.exec("pdftex paper.tex") + "print state exit_status\nprint setting PDFFILE\n"
                            "print setting PDFTEXOUTPUT\nprint state tex_error\n")
        self.assertIn("Output written on paper.pdf (1 page", output)
        self.assertIn("reply 0 ---- long 0\nexit_status=0\n", output)
        self.assertIn(f"PDFFILE={self.work}/paper.pdf\nPDFTEXOUTPUT=1\ntex_error=0\n", output)
        self.assertTrue(os.path.exists(os.path.join(self.work, "paper.pdf")))

    def test_typeset_with_tex_writes_the_dvi_and_its_settings(self):
        self.preferences(USEPDFTEX="0")
        path = self.file("paper.tex", PLAIN)
        output = self.shell(f"event aevt odoc ---- fss {path}\nprint setting DVIFILE\nprint setting PDFTEXOUTPUT\n")
        self.assertEqual(self.command_line(output), "pdftex -output-format=dvi paper.tex ")
        self.assertIn(f"DVIFILE={self.work}/paper.dvi\nPDFTEXOUTPUT=2\n", output)

    def test_with_every_flag_on_in_etex_mode_a_tex_job(self):
        self.preferences(USEPDFTEX="0", ADDSPECIALS="1", USE8BIT="1", DORECORD="1")
        self.formats("plain", "qXET")
        path = self.file("x.tex", PLAIN)
        output = self.shell(f"menu 131 16\nmenu 131 17\nmenu 130 1\nevent aevt odoc ---- fss {path}\n")
        self.assertEqual(self.command_line(output), "pdfetex -output-format=dvi -src-specials -parse-first-line "
                                                    "-8bit -recorder -fmt=plain x.tex ")
        self.assertIn(f"working directory --  {self.work}\n", output)

    def test_with_every_flag_on_in_etex_mode_a_pdftex_job(self):
        self.preferences(USEPDFTEX="1", ADDSPECIALS="1", USE8BIT="1", DORECORD="1")
        self.formats("plain", "qXET")
        path = self.file("x.tex", PLAIN)
        output = self.shell(f"menu 131 16\nmenu 131 17\nmenu 130 1\nevent aevt odoc ---- fss {path}\n")
        self.assertEqual(self.command_line(output),
                         "pdfetex -synctex=1 -parse-first-line -8bit -recorder -fmt=plain x.tex ")

    def formats(self, name, creator):
        """A formats folder of the test's own with one stamped format, the engine's plain one."""
        folder = os.path.join(self.home, "formats")
        self.assertEqual(os.system(f"mkdir -p '{folder}' && cp /var/lib/texmf/web2c/pdftex/pdftex.fmt "
                                   f"'{folder}/{name}.fmt'"), 0)
        os.setxattr(os.path.join(folder, name + ".fmt"), "user.quillon.creator", creator.encode())
        self.add_preferences(f"TEXFORMATS={folder}\n")

    def test_with_no_flags_and_no_format(self):
        self.preferences(USEPDFTEX="0")
        path = self.file("x.tex", PLAIN)
        output = self.shell(f"choose {path}\nmenu 129 1\n")
        self.assertEqual(self.command_line(output), "pdftex -output-format=dvi x.tex ")

    def test_repeat_runs_by_the_first_word_of_the_command(self):
        self.preferences(USEPDFTEX="0")
        self.file("x.tex", PLAIN)
        output = self.shell(self.exec("pdftex x.tex") + "menu 129 5\nprint setting PDFFILE\nprint setting DVIFILE\n")
        self.assertEqual(output.count("Processing -- pdftex x.tex\n"), 2)
        self.assertIn(f"PDFFILE={self.work}/x.pdf\nDVIFILE\n", output)

    def test_repeat_with_an_empty_last_command_does_nothing(self):
        self.preferences()
        output = self.shell("print menu 129\nmenu 129 5\n")
        self.assertIn("\n5 - - R Repeat Last Command\n", "\n" + output)
        self.assertNotIn("Processing", output)

    def test_an_error_leaves_file_and_line_and_the_error_line_file(self):
        self.preferences(USEPDFTEX="1")
        self.file("bad.tex", BROKEN)
        output = self.shell(self.exec("pdftex bad.tex") + "print setting FILENAME\nprint setting LINENUMBER\n"
                            "print state editfile\nprint state editlinenumber\n")
        self.assertIn("! Undefined control sequence.", output)
        self.assertIn(f"reply 0 ---- long 1\nFILENAME={self.work}/bad.tex\nLINENUMBER=2\n"
                      f"editfile={self.work}/bad.tex\neditlinenumber=2\n", output)
        self.assertIn(f"\nUse any text editor to edit {self.work}/bad.tex\nat line number 2.\n", output)
        with open(os.path.join(self.environment["XDG_RUNTIME_DIR"], "quillon", "tmpsrclinenumber"),
                  encoding="utf-8") as file:
            self.assertEqual(file.read(), "2\n")

    def test_an_error_in_an_included_file_names_that_file(self):
        self.preferences(USEPDFTEX="1")
        self.file("main.tex", "\\input parts/inner \n\\bye\n")
        inner = self.file("parts/inner.tex", "fine\n\nfine\n\\nosuchmacro\n")
        self.shell(self.exec("pdftex main.tex"))
        self.assertEqual(self.setting("FILENAME"), inner)
        self.assertEqual(self.setting("LINENUMBER"), "4")

    def test_an_unknown_first_word_does_nothing_at_all(self):
        self.preferences()
        self.file("x.tex", PLAIN)
        output = self.shell(self.exec("latex x.tex") + self.exec("tex x.tex"))
        self.assertNotIn("Processing", output)

    def test_a_missing_tool_is_said_with_foldeer(self):
        self.preferences(USEPDFTEX="1")
        self.copy_binaries()
        os.unlink(os.path.join(self.binaries, "pdftex.app", "Contents", "PkgInfo"))
        self.file("x.tex", PLAIN)
        output = self.shell(self.exec("pdftex x.tex"))
        self.assertIn(f"I can't find {self.binaries}/pdftex.app. It should be in the binaries foldeer.\n", output)

    def test_a_latex_document_in_a_folder_with_blanks_and_accents_is_found_again(self):
        self.preferences(USEPDFTEX="1", PDFTEXFORMAT="pdflatex", TEXFORMATS="/var/lib/texmf/web2c/pdftex")
        folder = os.path.join(self.home, "Écrits d'été", "été 2026")
        path = self.file("mon article.tex", "\\documentclass{article}\n\\begin{document}\nÇa marche.\n"
                         "\\end{document}\n", folder)
        output = self.shell(f"event aevt odoc ---- fss {path}\nprint menu 129\n")
        self.assertIn("reply 0\n", output)
        self.assertTrue(os.path.exists(os.path.join(folder, "mon article.pdf")), output)
        again = self.shell("print menu 129\nprint menu 142\nmenu 129 2\nprint state exit_status\n")
        self.assertIn('16 + - P View "mon article.pdf" \n', again)
        self.assertIn("1 + - - mon article.tex\n", again)
        self.assertIn("exit_status=0\n", again)

    def test_an_output_folder_and_a_job_name_are_followed(self):
        self.preferences(USEPDFTEX="1")
        self.file("x.tex", PLAIN)
        os.mkdir(os.path.join(self.work, "out"))
        self.shell(self.exec("pdftex -output-directory=out -jobname=other x.tex"))
        self.assertEqual(self.setting("PDFFILE"), f"{self.work}/out/other.pdf")

    def test_after_a_run_the_menu_shows_the_files(self):
        self.preferences(USEPDFTEX="1")
        self.file("x.tex", PLAIN)
        output = self.shell(self.exec("pdftex x.tex") + "print menu 129\n")
        self.assertIn('2 + - T Typeset "x.tex"\n', output)
        self.assertIn('16 + - P View "x.pdf" \n', output)
        self.assertIn("10 - - D View\n", output)


if __name__ == "__main__":
    unittest.main()
