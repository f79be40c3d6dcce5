"""The tool host builds formats and runs with them."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HostTest, log_of  # noqa: E402

LATEX = r"\documentclass{article}\begin{document}Hi\newpage there\end{document}"


class Formats(HostTest):
    LINES = {
        "pdftex": [("pdftex -ini -jobname=pdftex -progname=pdftex *pdftex.ini", "pdftex", b"QXET"),
                   ("pdftex -ini -jobname=pdflatex -progname=pdflatex *pdflatex.ini", "pdflatex", b"QXET")],
        "pdfetex": [("pdfetex -ini -jobname=pdfetex -progname=pdfetex *pdftex.ini", "pdfetex", b"qXET"),
                    ("pdfetex -ini -jobname=pdfelatex -progname=pdfelatex *pdflatex.ini", "pdfelatex", b"qXET")],
        "etex": [("etex -ini -jobname=etex -progname=etex *etex.ini", "etex", b"qXET"),
                 ("etex -ini -jobname=elatex -progname=elatex *elatex.ini", "elatex", b"qXET")],
        "tex": [("tex -ini -jobname=tex -progname=tex tex.ini", "tex", b"????"),
                ("tex -ini -jobname=latex -progname=latex latex.ini", "latex", b"QXET")],
    }

    def test_every_build_line_makes_a_format_with_its_creator(self):
        for bundle, lines in self.LINES.items():
            tool = self.launch(bundle)
            for line, name, creator in lines:
                with self.subTest(line=line):
                    reply = tool.run(line)
                    self.assertEqual(reply["----"], 0, log_of(reply)[-600:])
                    place = os.path.join(self.work, name + ".fmt")
                    self.assertGreater(os.path.getsize(place), 50000)
                    self.assertEqual(os.getxattr(place, "user.quillon.creator"), creator)
                    self.assertEqual(self.settings()["PDFTEXOUTPUT"], "0")

    def test_a_built_format_is_used(self):
        tool = self.launch("etex")
        self.assertEqual(tool.run("etex -ini -jobname=elatex -progname=elatex *elatex.ini")["----"], 0)
        self.file("x.tex", LATEX)
        reply = tool.run("elatex x.tex")
        self.assertEqual(reply["----"], 0, log_of(reply))
        self.assertIn(b"preloaded format=elatex", log_of(reply))
        self.assertTrue(self.settings()["DVIFILE"].endswith("/x.dvi"))


if __name__ == "__main__":
    unittest.main()
