"""The tool host as the shell sees it: real bundles, real engines, a real bus."""

import os
import signal
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import APP, BINARIES, HostTest, code, log_of, wait_until  # noqa: E402

LATEX = r"\documentclass{article}\begin{document}Hi\newpage there\end{document}"


class Runs(HostTest):
    def test_says_who_it_is(self):
        tool = self.launch("pdftex")
        self.assertEqual(str(tool.property(APP, "Signature")), "PXET")
        self.assertEqual(str(tool.property(APP, "Name")), "pdftex")
        self.assertEqual(str(tool.property(APP, "Path")), BINARIES + "/pdftex.app")
        self.assertFalse(tool.waiting())

    def test_every_bundle_has_its_signature(self):
        for name, signature in {"tex": "*Xet", "etex": "eXet", "pdftex": "PXET", "pdfetex": "PxET", "dvips": "DVPS",
                                "bibtex": "BIBT", "makeindex": "MKIX", "mpost": "MPST", "dvipdfm": "DPDF",
                                "setpaths": "SETP"}.items():
            with open(os.path.join(BINARIES, name + ".app/Contents/PkgInfo")) as file:
                self.assertEqual(file.read(), "APPL" + signature)

    def test_a_clean_run_in_a_folder_with_blanks_and_accents(self):
        self.file("my file.tex", LATEX)
        reply = self.launch("pdftex").run("pdftex -fmt=pdflatex my\x1ffile.tex ")
        self.assertEqual((reply["----"], reply["edit"], reply["iden"]), (0, 0, code("PXET")))
        log = log_of(reply)
        self.assertIn(b'\rOutput written on "my file.pdf" (2 pages, ', log)
        self.assertNotIn(b"\n", log)
        settings = self.settings()
        self.assertEqual(settings["PDFTEXOUTPUT"], "1")
        self.assertEqual(settings["PDFFILE"],
                         (self.work + "/my file.pdf").replace(" ", "\\x1f"))
        self.assertNotIn("LINENUMBER", settings)
        self.assertEqual(os.stat(reply["logf"]).st_mode & 0o777, 0o600)
        self.assertEqual(os.stat(os.path.dirname(reply["logf"])).st_mode & 0o777, 0o700)

    def test_a_quoted_name_with_blanks(self):
        self.file("my file.tex", LATEX)
        reply = self.launch("pdftex").run('pdftex -fmt=pdflatex "my file.tex"')
        self.assertEqual(reply["----"], 0)

    def test_dvi_output(self):
        self.file("x.tex", "Hi\\bye\n")
        reply = self.launch("pdftex").run("pdftex -output-format=dvi x.tex ")
        self.assertEqual(reply["----"], 0)
        self.assertEqual(self.settings()["PDFTEXOUTPUT"], "2")
        self.assertTrue(self.settings()["DVIFILE"].endswith("/x.dvi"))

    def test_output_directory_and_jobname(self):
        self.file("x.tex", "Hi\\bye\n")
        os.mkdir(self.work + "/the out")
        tool = self.launch("pdfetex")
        for mode in ("", "-interaction=batchmode "):
            reply = tool.run('pdfetex %s-output-directory="the out" -jobname="a b" x.tex' % mode)
            self.assertEqual(reply["----"], 0)
            self.assertEqual(self.settings()["PDFTEXOUTPUT"], "1")
            self.assertTrue(self.settings()["PDFFILE"].endswith("/the\\x1fout/a\\x1fb.pdf"))
            os.remove(self.work + "/the out/a b.pdf")

    def test_an_older_output_is_not_this_runs(self):
        self.file("x.tex", "\\bye\n")
        self.file("x.pdf", "old")
        os.utime(self.work + "/x.pdf", (1000, 1000))
        reply = self.launch("pdftex").run("pdftex x.tex")
        self.assertEqual(reply["----"], 0)
        self.assertEqual(self.settings()["PDFTEXOUTPUT"], "0")

    def test_an_error_without_a_display_asks_for_the_editor(self):
        self.file("sub/part.tex", "ok\n\n\\wrong\n")
        self.file("main.tex", "Hello\n\\input sub/part\n\\bye\n")
        reply = self.launch("pdftex").run("pdftex main.tex")
        self.assertEqual((reply["----"], reply["edit"]), (1, 1))
        self.assertIn(b"! Emergency stop.", log_of(reply))
        settings = self.settings()
        self.assertTrue(settings["FILENAME"].endswith("/sub/part.tex"), settings)
        self.assertTrue(settings["FILENAME"].startswith("/"))
        self.assertEqual(settings["LINENUMBER"], "3")
        self.assertEqual(settings["PDFTEXOUTPUT"], "0")

    def test_an_error_in_a_deep_path_is_not_cut(self):
        name = "/".join(["a folder with a long name " + str(i) for i in range(5)]) + "/the part.tex"
        self.file(name, "\n\\wrong\n")
        self.file("main.tex", '\\input "%s"\n\\bye\n' % name)
        reply = self.launch("pdftex").run("pdftex main.tex")
        self.assertEqual(reply["edit"], 1)
        self.assertEqual(self.settings()["FILENAME"],
                         (self.work + "/" + name).replace(" ", "\\x1f"))

    def test_file_line_error_style(self):
        self.file("b c.tex", "\n\n\n\\wrong\n")
        self.file("main.tex", '\\input "b c"\n\\bye\n')
        reply = self.launch("pdftex").run("pdftex -file-line-error -interaction=nonstopmode main.tex")
        self.assertEqual((reply["----"], reply["edit"]), (1, 1))
        self.assertTrue(self.settings()["FILENAME"].endswith("/b\\x1fc.tex"))
        self.assertEqual(self.settings()["LINENUMBER"], "4")

    def test_of_several_errors_the_first_is_shown(self):
        self.file("main.tex", "\\wrong\n\n\\wrong\n\\bye\n")
        reply = self.launch("pdftex").run("pdftex -interaction=nonstopmode main.tex")
        self.assertEqual((reply["edit"], self.settings()["LINENUMBER"]), (1, "1"))

    def test_a_missing_file_has_no_line(self):
        reply = self.launch("pdftex").run("pdftex nothing.tex")
        self.assertEqual((reply["----"], reply["edit"]), (1, 0))
        self.assertNotIn("LINENUMBER", self.settings())

    def test_a_program_that_is_missing(self):
        tool = self.launch(self.bundle("lost", "no-such-program"))
        reply = tool.run("lost x")
        self.assertEqual((reply["----"], reply["edit"]), (127, 0))
        self.assertEqual(log_of(reply), b"I can't start no-such-program: there is no such program\r")

    def test_a_folder_that_is_missing(self):
        reply = self.launch("pdftex").run("pdftex x", self.work + "/none")
        self.assertEqual(reply["----"], 127)
        self.assertEqual(log_of(reply), b"I can't start pdftex: No such file or directory\r")

    def test_a_program_that_prints_nothing_has_no_log(self):
        reply = self.shell_tool("exit 5\n").run("x")
        self.assertEqual(reply["----"], 5)
        self.assertNotIn("logf", reply)

    def test_a_program_that_dies_by_a_signal(self):
        reply = self.shell_tool("kill -SEGV $$\n").run("x")
        self.assertEqual(reply["----"], 128 + signal.SIGSEGV)

    def test_wrong_parameters_are_refused(self):
        tool = self.launch("dvips")
        long = dbus.Struct(("long", dbus.Int32(3)), signature="sv")
        line = dbus.Struct(("TEXT", dbus.String("dvips x")), signature="sv")
        self.assertEqual(tool.event("QUIL", "priv")[0], -1701)
        self.assertEqual(tool.event("QUIL", "priv", {"----": line})[0], -1701)
        self.assertEqual(tool.event("QUIL", "priv", {"----": long, "dest": long})[0], -1700)
        self.assertEqual(tool.event("QUIL", "zzzz")[0], -1708)
        self.assertEqual(tool.event("aevt", "oapp")[0], 0)

    def test_words_reach_the_program_as_they_are(self):
        tool = self.shell_tool('for w in "$@"; do printf "<%s>" "$w"; done; printf "[%s]" "$0"\n')
        reply = tool.run('word a\x1fb "c  d" "" $HOME `id` \'x\' e"f g"h ;')
        self.assertTrue(log_of(reply).startswith(b"<a b><c  d><><$HOME><`id`><'x'><ef gh><;>"), log_of(reply))

    def test_a_command_line_that_is_not_utf8(self):
        tool = self.shell_tool('printf "%s" "$1"\n')
        self.assertEqual(log_of(tool.run(b"x \xca\xff")), b"\xca\xff")

    def test_the_output_follows_the_space_setting(self):
        self.write_preferences("SPACECHAR=abc\n")
        tool = self.shell_tool('printf "%s" "$1"\n')
        self.assertEqual(log_of(tool.run(b"x a\xcab")), b"a b")

    def test_the_engine_runs_under_the_commands_first_word(self):
        self.file("x.tex", "\\immediate\\write16{[\\jobname]}\\end\n")
        reply = self.launch("etex").run("etex x.tex")
        self.assertEqual(reply["----"], 0)
        self.assertIn(b"preloaded format=etex", log_of(reply))

    def test_knuths_engine_runs_for_tex(self):
        self.file("x.tex", "Hi\\bye\n")
        reply = self.launch("tex").run("tex x.tex")
        self.assertIn(b"This is TeX, Version", log_of(reply))
        self.assertEqual(self.settings()["PDFTEXOUTPUT"], "2")

    def test_a_second_command_while_one_runs_is_refused(self):
        tool = self.shell_tool("touch started; sleep 100\n")
        tool.send("x")
        wait_until(lambda: os.path.exists(self.work + "/started"), "the start")
        tool.send("x")
        wait_until(lambda: tool.replies, "the refusal")
        self.assertEqual(tool.replies[0][0], -609)

    def test_quit_while_idle(self):
        tool = self.launch("dvips")
        self.assertEqual(tool.event("aevt", "quit")[0], 0)
        wait_until(tool.gone, "the end")
        self.assertEqual(tool.process.returncode, 0)


class Names(HostTest):
    def test_a_name_that_begins_like_an_option_is_none(self):
        for name in ("-x.tex", "-shell-escape.tex", "--version.tex"):
            self.file(name, "Hello.\n\\bye\n")
            reply = self.launch("pdftex").run("pdftex " + name)
            self.assertEqual(reply["----"], 0, log_of(reply))
            self.assertIn(b"Output written on " + name[:-4].encode() + b".pdf", log_of(reply))
            self.assertTrue(self.settings()["PDFFILE"].endswith("/" + name[:-4] + ".pdf"))

    def test_an_option_that_names_no_file_stays_one(self):
        self.assertIn(b"pdfTeX 3.", log_of(self.launch("pdftex").run("pdftex --version")))

    def test_a_run_with_errors_leaves_nothing_to_view_by_itself(self):
        self.file("bad.tex", "Hello\\wrong.\n\\bye\n")
        reply = self.launch("pdftex").run("pdftex -interaction=nonstopmode bad.tex")
        self.assertEqual(reply["----"], 1)
        settings = self.settings()
        self.assertEqual(settings["PDFTEXOUTPUT"], "0")
        self.assertTrue(settings["PDFFILE"].endswith("/bad.pdf"))
        self.assertTrue(os.path.exists(os.path.join(self.work, "bad.pdf")))


if __name__ == "__main__":
    unittest.main()
