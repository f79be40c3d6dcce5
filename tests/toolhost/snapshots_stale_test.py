"""What a snapshot rests on changes between two runs: real engines under the tool host."""

import os
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import ENGINE, SnapshotTest  # noqa: E402

PREAMBLE = ["\\usepackage{hyperref}", "\\newcommand\\x{y}", "\\typeout{the preamble speaks}"]


class Stale(SnapshotTest):
    """What a snapshot rests on changes: the next run executes the preamble, and there is a new snapshot after it."""

    def check(self, change, wanted=True):
        self.typeset()
        self.assertTrue(self.snapshot_was_read(), self.said_of_it)
        change()
        self.assertEqual(self.snapshot_was_read(), not wanted)
        if wanted:
            self.assertTrue(self.snapshot_was_read())
            self.assertIn("Output written", self.bare())

    def test_a_line_is_added_to_the_preamble(self):
        self.document(PREAMBLE)
        self.check(lambda: self.document([*PREAMBLE, "\\newcommand\\z{z}"], "\\z"))

    def test_a_letter_changes_in_the_preamble(self):
        self.document(PREAMBLE)
        self.check(lambda: self.document([line.replace("{y}", "{z}") for line in PREAMBLE]))

    def test_a_change_of_the_body_changes_nothing(self):
        self.document(PREAMBLE)
        self.check(lambda: self.document(PREAMBLE, "Other text."), wanted=False)

    def test_a_file_of_the_preamble_changes(self):
        style = self.file("my.sty", "\\newcommand\\mine{a}\n", self.work)
        self.document(["\\usepackage{my}"], "\\mine")

        def change():
            # As many bytes, in the same file, with its old time.
            times = os.stat(style)
            with open(style, "r+", encoding="ascii") as file:
                file.write("\\newcommand\\mine{b}\n")
            os.utime(style, ns=(times.st_atime_ns, times.st_mtime_ns))
            self.settle(style)

        self.check(change)

    def test_a_file_appears_that_was_looked_for_in_vain(self):
        self.document(["\\InputIfFileExists{later.cfg}{}{}", "\\newcommand\\x{y}"], "\\x")
        self.check(lambda: self.settle(self.file("later.cfg", "\\relax\n", self.work)))

    def test_a_file_appears_under_the_name_in_other_letters(self):
        self.document(["\\InputIfFileExists{later.cfg}{}{}", "\\newcommand\\x{y}"], "\\x")
        self.check(lambda: self.settle(self.file("Later.CFG", "\\relax\n", self.work)))

    def test_a_package_appears_in_the_document_s_folder(self):
        self.document(["\\usepackage{url}"], "\\url{a}")
        self.check(lambda: self.settle(shutil.copy(subprocess.run(
            ["kpsewhich", "url.sty"], capture_output=True, text=True, check=True).stdout.strip(), self.work)))

    def test_a_package_appears_earlier_in_the_search_path(self):
        own = os.path.join(self.home, "own", "deep")
        os.makedirs(own)
        self.environment["TEXINPUTS"] = os.path.join(self.home, "own") + "//:"
        self.document(["\\usepackage{url}"], "\\url{a}")
        self.check(lambda: self.settle(shutil.copy(subprocess.run(
            ["kpsewhich", "-progname=latex", "url.sty"], capture_output=True, text=True,
            check=True).stdout.strip(), own)))

    def test_only_the_size_of_a_file_was_asked_for(self):
        data = self.file("data.txt", "abc", self.work)
        self.document(["\\edef\\size{\\pdffilesize{data.txt}}", "\\edef\\sum{\\pdfmdfivesum file {data.txt}}"],
                      "\\size\\sum")

        def change():
            self.file("data.txt", "abcd", self.work)
            self.settle(data)

        self.check(change)

    def test_a_variable_of_the_environment_changes(self):
        self.document(PREAMBLE)
        self.check(lambda: self.environment.update(TEXMFHOME=os.path.join(self.home, "elsewhere")))

    def test_a_setting_of_the_distribution_changes(self):
        folder = os.path.join(self.home, "settings")
        own = os.path.join(self.home, "own")
        for path in (folder, own):
            os.makedirs(path)
        settings = self.file("texmf.cnf", "% nothing\n", folder)
        self.file("my.sty", "\\newcommand\\mine{the own one}\n", own)
        self.file("my.sty", "\\newcommand\\mine{that of the folder}\n", self.work)
        self.environment["TEXMFCNF"] = folder + ":"
        self.document(["\\usepackage{my}"], "\\typeout{It is \\mine.}")

        self.assertIn("It is that of the folder.", self.typeset())
        self.assertTrue(self.snapshot_was_read())
        self.file("texmf.cnf", f"TEXINPUTS.pdflatex={own}:.:$TEXMF/tex/{{latex,generic,}}//\n", folder)
        self.settle(settings)
        self.assertIn("It is the own one.", self.typeset())

    def test_a_database_of_the_distribution_changes(self):
        tree = os.path.join(self.home, "tree")
        os.makedirs(os.path.join(tree, "first"))
        database = self.file("ls-R", "% ls-R -- filename database for kpathsea; do not change this line.\n./:\nfirst\n\n",
                             tree)
        known = subprocess.run(["kpsewhich", "-var-value=TEXMFDBS"], capture_output=True, text=True, check=True).stdout
        self.environment.update(TEXMFDBS=f"{tree}:{known.strip()}", TEXINPUTS=f"!!{tree}//:.:")
        self.file("my.sty", "\\newcommand\\mine{that of the folder}\n", self.work)
        self.file("my.sty", "\\newcommand\\mine{that of the tree}\n", os.path.join(tree, "first"))
        self.document(["\\usepackage{my}"], "\\typeout{It is \\mine.}")
        self.assertIn("It is that of the folder.", self.typeset())
        self.assertTrue(self.snapshot_was_read())
        with open(database, "a", encoding="ascii") as file:
            file.write("./first:\nmy.sty\n")
        self.settle(database)
        self.assertIn("It is that of the tree.", self.typeset())

    def test_a_font_map_is_read_at_each_run(self):
        fonts = self.file("my.map", "cmr10 CMR10 <cmr10.pfb\n", self.work)
        self.document(["\\pdfmapfile{=my.map}", "\\fontencoding{OT1}"], "Text.")
        self.typeset()
        self.assertTrue(self.snapshot_was_read())
        self.file("my.map", 'cmr10 CMR10 " 0.2 SlantFont " <cmr10.pfb\n', self.work)
        self.settle(fonts)
        self.typeset()
        made = self.left()["doc.pdf"]
        self.bare()
        self.assertEqual(self.left()["doc.pdf"], made)

    def test_a_variable_of_the_session_changes_nothing(self):
        self.document(PREAMBLE)
        self.check(lambda: self.environment.update(XDG_SESSION_ID="7", TERM="xterm"), wanted=False)

    def test_an_engine_is_updated(self):
        folder = os.path.join(self.home, "bin")
        os.makedirs(folder)
        self.engine = shutil.copy(ENGINE, folder)
        os.symlink(shutil.which("kpsewhich"), os.path.join(folder, "kpsewhich"))
        self.tool = self.bundle("pdftex", self.engine, "PXET")
        self.document(PREAMBLE)

        def change():
            os.unlink(self.engine)
            shutil.copy(ENGINE, folder)

        self.check(change)

    def test_a_clock_that_jumps(self):
        self.document(PREAMBLE)
        self.check(lambda: os.utime(self.kept()[0], (4000000000, 4000000000)), wanted=False)
        path = os.path.join(self.work, "doc.tex")
        os.utime(path, (4000000000, 4000000000))
        self.assertTrue(self.snapshot_was_read())

    def test_a_truncated_snapshot(self):
        self.document(PREAMBLE)
        self.check(lambda: os.truncate(os.path.join(self.kept()[0], "pdflatex.fmt"), 100000))

    def test_bytes_of_a_snapshot_that_change(self):
        self.document(PREAMBLE)

        def change():
            with open(os.path.join(self.kept()[0], "pdflatex.fmt"), "r+b") as file:
                file.seek(1000)
                file.write(b"garbage")

        self.check(change)

    def test_a_snapshot_of_another_engine_version(self):
        self.document(PREAMBLE)

        def change():
            path = os.path.join(self.kept()[0], "pdflatex.fmt")
            with open(path, "rb") as file:
                content = file.read()
            os.unlink(path)
            self.file(path, content.replace(b"pdftex", b"pdfold", 1))

        self.check(change)

    def test_a_snapshot_that_is_gone(self):
        self.document(PREAMBLE)
        self.check(lambda: shutil.rmtree(self.kept()[0]))

    def test_a_snapshot_that_cannot_be_read(self):
        self.document(PREAMBLE)
        self.typeset()
        if os.geteuid() == 0:
            # Root may read everything, so something else lies there.
            path = os.path.join(self.kept()[0], "pdflatex.fmt")
            os.unlink(path)
            os.mkdir(path)
        else:
            os.chmod(os.path.join(self.kept()[0], "pdflatex.fmt"), 0)
        self.assertFalse(self.snapshot_was_read())
        self.assertTrue(self.snapshot_was_read())

    def test_a_snapshot_of_somebody_else(self):
        if os.geteuid() != 0:
            self.skipTest("only root can give a folder away")
        self.document(PREAMBLE)
        self.check(lambda: os.chown(self.kept()[0], 65534, 65534))

    def test_a_folder_that_others_may_write_to(self):
        self.document(PREAMBLE)
        self.check(lambda: os.chmod(self.kept()[0], 0o777))


if __name__ == "__main__":
    unittest.main()
