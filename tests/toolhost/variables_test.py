"""What the tool host hands on to programs: search paths, settings, the person's own files."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import APP, HostTest, log_of  # noqa: E402


class Environments(HostTest):
    SHOW = 'for v in "$@"; do [ "$v" = -recorder ] || eval "printf \'%s=%s\\n\' $v \\"\\$$v\\""; done\n'

    def show(self, preferences, names, signature="TEST", **environment):
        self.write_preferences("SPACECHAR=31\n" + preferences)
        program = self.file("show", "#!/bin/sh\n" + self.SHOW, mode=0o755)
        tool = self.launch(self.bundle("show", program, signature), **environment)
        log = log_of(tool.run("true " + names)).decode()
        return dict(line.split("=", 1) for line in log.rstrip("\r").split("\r"))

    def test_only_elements_outside_the_trees_are_handed_on(self):
        shown = self.show("TEXMFTREES=/usr/share/texmf:/var/lib/texmf\n"
                          "TEXINPUTS=.:/own\\x1ftex//:/usr/share/texmf/tex//\n"
                          "BSTINPUTS=/usr/share/texmf/bibtex//\nBIBINPUTS=:~/bib\nTEXCONFIG=.\n"
                          "TYPE1FONTS=/t1\nENCFOLDER=/enc\nISTFILES=/ist\nDVIPSHEADERS=~/../ps\n",
                          "TEXINPUTS BSTINPUTS BIBINPUTS TEXCONFIG T1FONTS ENCFONTS INDEXSTYLE DVIPSHEADERS")
        hand = self.home + "/hand"
        self.assertEqual(shown, {"TEXINPUTS": ".:/own tex//:", "BSTINPUTS": "", "BIBINPUTS": ":" + hand + "/bib",
                                 "TEXCONFIG": "", "T1FONTS": "/t1:", "ENCFONTS": "/enc:", "INDEXSTYLE": "/ist:",
                                 "DVIPSHEADERS": self.home + "/ps:"})

    def test_a_variable_of_the_person_stays_behind_the_setting(self):
        shown = self.show("TEXINPUTS=/own\n", "TEXINPUTS BIBINPUTS", TEXINPUTS="/mine:", BIBINPUTS="/b:")
        self.assertEqual(shown, {"TEXINPUTS": "/own:/mine:", "BIBINPUTS": "/b:"})

    def test_the_persons_cnf_files(self):
        os.makedirs(self.home + "/data/Quillon/formats")
        with open(self.home + "/data/Quillon/formats/tex.cnf", "w") as file:
            file.write("% comment\nmain_memory = 7000000 % more\nopenout_any=p\nbad name$ = 1\n")
        with open(self.home + "/data/Quillon/formats/pdftex.cnf", "w") as file:
            file.write("# comment\nopenout_any = a\n")
        shown = self.show("", "main_memory openout_any", "PXET")
        self.assertEqual(shown, {"main_memory": "7000000", "openout_any": "a"})
        self.assertEqual(self.launch("dvips").property(APP, "Name"), "dvips")

    def test_font_generation_settings(self):
        self.assertEqual(self.show("PDFTEXMODE=cx\nPDFMAKEFONT=0\n", "MODE MKTEXPK", "PXET"),
                         {"MODE": "cx", "MKTEXPK": "0"})

    def test_a_setting_finds_a_file(self):
        self.write_preferences("SPACECHAR=31\nTEXINPUTS=" + self.work.replace(" ", "\\x1f") +
                                     "/own\\x1fstyles//\n")
        self.file("own styles/deep/part.tex", "\\immediate\\write16{found it}")
        self.file("x.tex", "\\input part \\bye\n")
        self.assertIn(b"found it", log_of(self.launch("pdftex").run("pdftex x.tex")))

    def test_bibtex8_when_its_options_are_given(self):
        self.file("x.aux", "\\citation{k}\n\\bibstyle{plain}\n\\bibdata{x}\n")
        self.file("x.bib", "@book{k,author={A},title={T},publisher={P},year=2000}\n")
        tool = self.launch("bibtex")
        self.assertIn(b"This is BibTeX, Version", log_of(tool.run("bibtex x")))
        self.assertNotIn(b"This is BibTeX, Version", log_of(tool.run("bibtex -B x")))
        self.file("own.csf", "\\lowupcase\n%\n\\order\n%\n")
        self.write_preferences("SPACECHAR=31\nCSFFILE=own.csf\n")
        self.assertIn(b"own.csf", log_of(tool.run("bibtex x")))
        self.file("other.csf", "\\lowupcase\n%\n\\order\n%\n")
        log = log_of(tool.run("bibtex -c other.csf x"))
        self.assertIn(b"other.csf", log)
        self.assertNotIn(b"own.csf", log)


if __name__ == "__main__":
    unittest.main()
