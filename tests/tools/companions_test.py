"""The command lines that the companion programs get from the menus, the dialogs and documents, and what is said when one
is missing."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, HomeTest  # noqa: E402

TOOLS = ("dvips", "bibtex", "makeindex", "mpost", "dvipdfm")


class Companions(HomeTest):
    work_name = "a b é"

    def setUp(self):
        super().setUp()
        for tool in TOOLS:
            self.fake_tool(tool, record=self.record_of(tool))
        for name in ("paper.tex", "paper.dvi", "paper.aux", "paper.ps", "paper.idx", "fig.mp"):
            self.file(name, "x")
        self.configure()

    def record_of(self, tool):
        return os.path.join(self.home, tool + " record")

    def configure(self, **settings):
        self.preferences(TEXFILE=self.stored("paper.tex"), **settings)

    def path(self, name):
        return os.path.join(self.work, name)

    def stored(self, name):
        return self.path(name).replace(" ", "\x1f")

    def steps(self, *steps):
        return self.shell("".join(step + "\n" for step in steps))

    def got(self, tool):
        """The command line that the tool got since the last look, in the working folder; None when it got none."""
        if not os.path.exists(self.record_of(tool)):
            return None
        with open(self.record_of(tool), encoding="utf-8") as file:
            line, folder = file.read().split("\n")[:2]
        os.unlink(self.record_of(tool))
        self.assertEqual(folder, self.work)
        return line

    def runs(self, tool, line, *steps):
        output = self.steps(*steps)
        self.assertEqual(self.got(tool), line, output + self.errors)
        return output

    def test_dvips_with_the_stored_options(self):
        self.runs("dvips", "dvips paper.dvi", "menu 129 11")
        self.configure(DVIPS_OPTION_STR="-Ppdf")
        self.runs("dvips", "dvips -Ppdf paper.dvi", "menu 129 11")
        self.configure(DVIPS_OPTION_STR="x" * 511)
        self.runs("dvips", "dvips " + "x" * 511 + " paper.dvi", "menu 129 11")

    def test_a_full_dvips_run(self):
        for options, output, line in (("", "", 'dvips "paper.dvi"'), ("-Ppdf", "", 'dvips -Ppdf "paper.dvi"'),
                                      ("", "out é.ps", 'dvips -o "out é.ps" "paper.dvi"'),
                                      ("-t a4", "o.ps", 'dvips -t a4 -o "o.ps" "paper.dvi"')):
            self.runs("dvips", line, "dialog dvips run", f"  set 4 {options}", f"  set 6 {output}", "  press 1", "menu 135 2")

    def test_a_cancelled_dvips_run(self):
        self.steps("dialog dvips run", "  press 2", "menu 135 2")
        self.assertIsNone(self.got("dvips"))

    def test_bibtex_on_the_current_file_and_a_chosen_one(self):
        self.runs("bibtex", "bibtex paper", "menu 129 8")
        self.file("other file.aux", "x")
        self.configure(BIBTEXOPTIONS="-B")
        self.runs("bibtex", "bibtex -B other\x1ffile", f"choose {self.path('other file.aux')}", "menu 135 1")
        self.steps("choose", "menu 135 1")
        self.assertIsNone(self.got("bibtex"))

    def test_makeindex_as_its_dialog_says(self):
        self.runs("makeindex", "makeindex  -c -p 3 -s my.ist -t log.ilg -o out.ind  paper.idx",
                  f"choose {self.path('paper.idx')}", "dialog makeindex options", "  press 3", "  check 4 1", "  set 8 3",
                  "  set 9 my.ist", "  set 10 out.ind", "  set 11 log.ilg", "  press 1", "menu 135 3")

    def test_metapost(self):
        self.runs("mpost", "mpost fig", f"choose {self.path('fig.mp')}", "menu 135 4")
        self.assertEqual(self.setting("MPOSTFILE"), self.stored("fig.mp").replace("\x1f", "\\x1f"))
        self.configure(USE8BIT="1")
        self.runs("mpost", "mpost -8bit fig", f"choose {self.path('fig.mp')}", "menu 135 4")
        self.configure(TEXDIR=self.stored(""))
        self.steps("choose", "menu 135 4")
        self.assertIsNone(self.got("mpost"))

    def test_the_format_of_metapost_is_proposed(self):
        self.runs("mpost", "mpost -ini -jobname=mpost plain \\dump", f"choose {self.work}", "dialog command line", "  press 3",
                  "  press 1", "menu 135 5")
        self.runs("mpost", "mpost other", f"choose {self.work}", "dialog command line", "  press 3", "  set 4 mpost other",
                  "  press 1", "menu 135 5")

    def test_dvipdfm_on_the_current_dvi_file(self):
        self.runs("dvipdfm", "dvipdfm paper.dvi", "menu 135 9")

    def test_documents_go_to_their_companions(self):
        self.configure(MICOMPRESS="1", MISTYLE="my.ist", USE8BIT="1")
        for name, tool, line in (("paper.dvi", "dvips", "dvips paper.dvi"), ("paper.aux", "bibtex", "bibtex paper"),
                                 ("paper.idx", "makeindex", "makeindex  -c -s my.ist paper.idx"),
                                 ("fig.mp", "mpost", "mpost fig")):
            self.runs(tool, line, f"event aevt odoc ---- fss {self.path(name)}")

    def test_a_postscript_file_goes_to_the_converter(self):
        documents = os.path.join(self.home, "documents")
        self.fake_tool("pdftex", documents=documents)
        self.configure(PS2PDFEXE="~/pdftex.app")
        for steps in (["menu 129 14"], [f"choose {self.path('paper.ps')}", "menu 135 7"],
                      [f"event aevt odoc ---- fss {self.path('paper.ps')}"]):
            self.steps(*steps, f"wait FILE {documents}", "event aevt quit")
            with open(documents, encoding="utf-8") as file:
                self.assertEqual(file.read(), self.path("paper.ps") + "\0")
            os.unlink(documents)

    def test_a_converter_is_asked_for_once(self):
        bundle = os.path.join(self.binaries, "ps2pdf.app")
        self.file("paper.ps", "%!PS\nshowpage\n")
        self.steps(f"choose {bundle}", "menu 129 14", f"wait FILE {self.path('paper.pdf')}")
        self.assertEqual(self.setting("PS2PDFEXE"), bundle)
        self.steps("choose", "menu 129 14")
        self.assertNotIn("chooser", self.errors)

    def test_makeindex_with_ten_files(self):
        names = [f"{number}.idx" for number in range(10)]
        for name in names:
            self.file(name, "x")
        self.runs("makeindex", "makeindex   " + " ".join(names), *(f"choose {self.path(name)}" for name in names),
                  "dialog makeindex options", *["  press 3"] * 10, "  press 1", "menu 135 3")

    def test_names_with_blanks_quotes_and_accents(self):
        for name, word in (("a b.dvi", "a\x1fb.dvi"), ("it's é.dvi", "it's\x1fé.dvi"), ("$HOME`x`.dvi", "$HOME`x`.dvi")):
            self.file(name, "x")
            self.runs("dvips", f"dvips {word}", f"event aevt odoc ---- fss \"{self.path(name)}\"")

    def test_a_companion_that_is_missing_is_named(self):
        for tool, step in (("dvips", "menu 129 11"), ("bibtex", "menu 129 8"), ("dvipdfm", "menu 135 9"),
                           ("mpost", f"event aevt odoc ---- fss \"{self.path('fig.mp')}\""),
                           ("makeindex", f"event aevt odoc ---- fss \"{self.path('paper.idx')}\"")):
            package = os.path.join(self.binaries, tool + ".app", "Contents", "PkgInfo")
            os.unlink(package)
            self.assertIn(f"I can't find {tool}. It should be in the binaries folder.\n", self.steps(step))

    def test_the_status_is_that_of_the_companion(self):
        self.fake_tool("bibtex", reply={"----": ["long", 2]})
        self.assertIn("exit_status=1\n", self.steps("menu 129 8", "print state exit_status"))
        self.fake_tool("bibtex", reply={"----": ["long", 0]})
        self.assertIn("exit_status=0\n", self.steps("menu 129 8", "print state exit_status"))

    def test_a_file_that_goes_before_it_is_run(self):
        path = self.path("fig.mp")
        os.unlink(path)
        self.assertIn(f"I can't use {path}.\n", self.steps(f"choose {path}", "menu 135 4"))
        self.assertIsNone(self.got("mpost"))
        # The real program says itself what it misses.
        self.binaries = BINARIES
        output = self.steps(f"event QUIL exec ---- TEXT 'dvips gone.dvi' dest fss \"{self.work}\"", "print state exit_status")
        self.assertIn("gone.dvi", output)
        self.assertIn("exit_status=1\n", output)

    def test_an_unknown_control_is_an_error_of_the_script(self):
        self.steps("dialog dvips run", "  set 9 x", "  check 4 1", "  press 4", "  wave 3", "  press 2", "dialog no window",
                   "menu 135 2")
        for said in ('window "dvips run" has no such control: 9', 'window "dvips run" has no such control: 4',
                     "a window takes set, check and press:  wave 3", 'there is no window "no window"'):
            self.assertIn(said, self.errors)


if __name__ == "__main__":
    unittest.main()
