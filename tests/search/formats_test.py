"""The Formats menu on the installed distribution: what is listed, chosen and remembered."""

import os
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402

HINT = ("I can't find any formats.\nCheck your TEXFORMATS search path or build\n"
        "a format file using the \"Build format\" command\nunder the \"File\" Menu.\n")


def stock_folder():
    """The folder of the formats that the installed pdfTeX was given."""
    done = subprocess.run(["kpsewhich", "-progname=pdflatex", "-engine=pdftex", "pdflatex.fmt"], capture_output=True,
                          text=True, check=True)
    return os.path.dirname(done.stdout.strip())


STOCK = stock_folder()
# The folder is read by the names of its files, so "latex-dev.fmt" comes ahead of "latex.fmt".
STOCK_NAMES = [name[:-4] for name in sorted(os.listdir(STOCK), key=lambda name: (name.lower(), name)) if name.endswith(".fmt")]


class Formats(HomeTest):
    def setUp(self):
        super().setUp()
        self.own = os.path.join(self.home, "formats")
        os.mkdir(self.own)

    def stock(self, name, target, stamp=None):
        path = os.path.join(self.own, target)
        shutil.copyfile(os.path.join(STOCK, name), path)
        if stamp:
            os.setxattr(path, "user.quillon.creator", stamp.encode())
        return path

    def stamped(self, name, stamp):
        os.setxattr(self.file(name, "nothing that an engine wrote", self.own), "user.quillon.creator", stamp.encode())

    def golden(self, script, folders, **settings):
        """What SCRIPT prints behind the start."""
        if folders is not None:
            self.preferences(TEXFORMATS=folders, **settings)
        return self.shell(script)

    @staticmethod
    def lines(names, chosen=None):
        return "".join(f"{i} + {'*' if name == chosen else '-'} - {name}\n" for i, name in enumerate(names, 1))

    def test_the_formats_made_by_pdftex_are_listed_by_name(self):
        self.assertIn("pdflatex", STOCK_NAMES)
        self.assertEqual(self.golden("print menu 130\n", STOCK), self.lines(STOCK_NAMES))

    def test_the_order_is_that_of_the_files_names(self):
        for name in ("latex.fmt", "latex-dev.fmt", "pdflatex.efmt", "Pdf.fmt"):
            self.stamped(name, "QXET")
        self.assertEqual(self.golden("print menu 130\n", self.own),
                         self.lines(["latex-dev", "latex", "Pdf", "pdflatex"]))

    def test_those_of_other_engines_are_not(self):
        parent = os.path.dirname(STOCK)
        others = [folder for folder in os.listdir(parent) if os.path.isdir(os.path.join(parent, folder))]
        self.assertGreater(len(others), 1)
        self.assertEqual(self.golden("print menu 130\n", parent + "//"), self.lines(STOCK_NAMES))

    def test_a_stamp_outweighs_the_contents(self):
        self.stock("pdftex.fmt", "a.fmt")
        self.stock("pdftex.fmt", "b.fmt", "qXET")
        self.stock("pdftex.fmt", "c.fmt", "????")
        self.stamped("d.fmt", "QXET")
        self.stamped("e.efmt", "QXET")
        self.stamped("f.efmt", "qXET")
        self.stamped("g.fmt.bak", "QXET")
        self.assertEqual(self.golden("print menu 130\n", self.own), self.lines(["a", "d", "e"]))
        self.assertEqual(self.golden("menu 131 16\nprint menu 130\n", self.own), self.lines(["b", "f"]))

    def test_without_any_the_hint_has_four_lines(self):
        self.assertEqual(self.golden("print menu 130\nprint state format_name\n", self.own, PDFTEXFORMAT="pdflatex"),
                         HINT + "format_name=\n")
        self.assertEqual(self.setting("PDFTEXFORMAT"), "pdflatex")

    def test_the_hint_comes_again_where_the_other_mode_has_none(self):
        self.assertEqual(self.golden("menu 131 16\nprint state format_name\nmenu 131 16\nprint state format_name\n", STOCK,
                                     PDFTEXFORMAT="latex"), HINT + "format_name=\nformat_name=latex\n")

    def test_a_missing_folder_is_said_and_passed_over(self):
        missing = os.path.join(self.home, "nowhere")
        self.assertEqual(self.golden("print menu 130\nprint state format_folder\n", f"{missing}:.:{STOCK}/"),
                         f"I can't find the TeX formats folder <{missing}>.\n" + self.lines(STOCK_NAMES)
                         + f"format_folder={STOCK}\n")

    def test_the_choice_is_chosen_again_after_a_restart(self):
        item = STOCK_NAMES.index("pdflatex") + 1
        self.golden(f"menu 130 {item}\n", STOCK)
        script = "print menu 130\nprint state format_name\nprint setting PDFTEXFORMAT\nprint setting PDFETEXFORMAT\n"
        self.assertEqual(self.golden(script, None), self.lines(STOCK_NAMES, "pdflatex")
                         + "format_name=pdflatex\nPDFTEXFORMAT=pdflatex\nPDFETEXFORMAT\n")

    def test_each_mode_remembers_its_own(self):
        for name, stamp in (("one", "QXET"), ("two", "QXET"), ("three", "qXET"), ("four", "qXET")):
            self.stamped(name + ".fmt", stamp)
        self.golden("menu 130 2\nmenu 131 16\nmenu 130 2\n", self.own)
        self.assertEqual(self.golden("print menu 130\nmenu 131 16\nprint menu 130\nprint setting PDFTEXFORMAT\n"
                                     "print setting PDFETEXFORMAT\n", None),
                         self.lines(["one", "two"], "two") + self.lines(["four", "three"], "three")
                         + "PDFTEXFORMAT=two\nPDFETEXFORMAT=three\n")

    def test_a_choice_whose_file_went_comes_back_with_it(self):
        path = self.stock("latex.fmt", "mine.fmt")
        self.stock("pdftex.fmt", "other.fmt")
        self.golden("menu 130 1\n", self.own)
        os.rename(path, path + ".away")
        self.assertEqual(self.golden("print menu 130\nprint setting PDFTEXFORMAT\n", None),
                         self.lines(["other"]) + "PDFTEXFORMAT=mine\n")
        os.rename(path + ".away", path)
        self.assertEqual(self.golden("print menu 130\n", None), self.lines(["mine", "other"], "mine"))

    def test_files_that_are_no_formats_are_passed_over(self):
        whole = self.stock("pdftex.fmt", "whole.fmt")
        with open(whole, "rb") as file:
            contents = file.read()
        for size in (0, 1, 2, 9, 17):
            self.file(f"cut{size}.fmt", contents[:size], self.own)
        self.file("text.fmt", "\\input plain \\dump\n", self.own)
        self.file("noise.fmt", bytes(range(256)) * 40, self.own)
        self.file("gzip.fmt", b"\x1f\x8b\x08\x00" + bytes(100), self.own)
        os.symlink("nothing", os.path.join(self.own, "link.fmt"))
        os.symlink("loop.fmt", os.path.join(self.own, "loop.fmt"))
        os.symlink("whole.fmt", os.path.join(self.own, "alias.fmt"))
        os.mkdir(os.path.join(self.own, "folder.fmt"))
        os.mkfifo(os.path.join(self.own, "pipe.fmt"))
        self.assertEqual(self.golden("print menu 130\n", self.own), self.lines(["alias", "whole"]))

    def test_a_format_cut_behind_its_header_is_still_named(self):
        # The header says who made it; the engine itself says the rest when it is run.
        with open(os.path.join(STOCK, "pdftex.fmt"), "rb") as file:
            self.file("cut.fmt", file.read(4000), self.own)
        self.assertEqual(self.golden("print menu 130\n", self.own), self.lines(["cut"]))

    def test_names_with_blanks_and_bytes_that_are_no_text(self):
        self.stock("pdftex.fmt", "my own.fmt")
        os.rename(self.stock("pdftex.fmt", "x.fmt"), os.path.join(os.fsencode(self.own), b"caf\xe9.fmt"))
        self.assertEqual(self.golden("print menu 130\n", self.own), self.lines(["caf\udce9", "my own"]))

    def test_a_run_is_given_the_format(self):
        item = STOCK_NAMES.index("pdflatex") + 1
        tex = self.file("paper.tex", "\\documentclass{article}\\begin{document}x\\end{document}\n")
        self.preferences(TEXFORMATS=STOCK, USEPDFTEX="1", DOTEXFILE=tex)
        output = self.shell(f"menu 130 {item}\nchoose {tex}\nmenu 129 1\nwait RUN\nprint state lastcommand\n")
        self.assertIn("-fmt=pdflatex", output)


if __name__ == "__main__":
    unittest.main()
