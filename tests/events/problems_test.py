"""The problems of the last run: over the bus, by the command, in a script, and the editor at their lines."""

import os
import pty
import subprocess
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, wait_until  # noqa: E402
from service import Service  # noqa: E402

BAD = ("\\documentclass{article}\n\\begin{document}\nSee \\ref{none} and\n\\cite{gone}.\n\\input{my part}\n"
       "\\end{document}\n")
PART = "a\n\\wrong\n"
QUILLON = os.path.join(BUILD, "bin", "quillon")
LATEX = "pdflatex -interaction=nonstopmode "


class Problems(Service):
    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1", AUTOVIEW="0")
        self.file("bad.tex", BAD)
        self.part = self.file("my part.tex", PART)
        self.bad = os.path.join(self.work, "bad.tex")
        self.lines = [(self.bad, 3, "reference"), (self.bad, 4, "reference"), (self.part, 2, "error")]

    def exec(self, line):
        return self.shell_object().Exec(line, self.work, timeout=90)

    def problems(self):
        return [(str(file), int(line), str(kind), str(text))
                for file, line, kind, text in self.shell_object().Problems()]

    def places(self):
        return [problem[:3] for problem in self.problems()]

    def transcripts(self):
        return os.listdir(os.path.join(self.environment["XDG_CACHE_HOME"], "quillon"))

    def test_the_bus_tells_those_of_the_last_run(self):
        self.start_shell()
        self.assertEqual(self.problems(), [])
        self.assertEqual(self.exec(LATEX + "bad.tex"), 1)
        self.assertEqual(self.places(), self.lines)
        self.assertEqual(self.problems()[2][3], "Undefined control sequence.")
        self.assertEqual([name for name in self.transcripts() if "problems" in name], [])
        self.assertEqual(self.exec("pdftex x.tex"), 0)
        self.assertEqual(self.problems(), [])

    def test_a_program_that_reports_none_leaves_the_list(self):
        self.start_shell()
        self.exec(LATEX + "bad.tex")
        self.assertEqual(self.exec("dvips nosuchfile"), 1)
        self.assertEqual(self.places(), self.lines)

    def test_names_that_are_not_utf_8_are_made_valid(self):
        with open(os.path.join(os.fsencode(self.work), b"caf\xe9.tex"), "wb") as file:
            file.write(b"\\wrong\n")
        with open(os.path.join(self.work, "y.tex"), "wb") as file:
            file.write(b"\\input caf\xe9.tex\n\\bye\n")
        self.start_shell()
        self.exec("pdftex -interaction=nonstopmode y.tex")
        self.assertEqual(self.places(), [(os.path.join(self.work, "caf\ufffd.tex"), 1, "error")])

    def test_busctl_reads_them(self):
        self.start_shell()
        self.exec(LATEX + "bad.tex")
        done = self.run_program("busctl", "--user", "call", "org.quillon.Shell", "/org/quillon/Shell",
                                "org.quillon.Shell1", "Problems")
        self.assertEqual((done.returncode, done.stdout.split()[:2]), (0, ["a(suss)", "3"]))

    def test_the_command_prints_a_line_each(self):
        self.start_shell()
        done = self.run_program(QUILLON, "problems")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        self.exec(LATEX + "bad.tex")
        done = self.run_program(QUILLON, "problems")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout.splitlines()[2], self.part + ":2: error: Undefined control sequence.")
        self.assertEqual(len(done.stdout.splitlines()), 3)

    def test_the_command_without_a_shell(self):
        done = self.run_program(QUILLON, "problems")
        self.assertEqual((done.returncode, done.stdout), (69, ""))
        self.assertIn("the shell is not running", done.stderr)
        self.assertEqual(self.run_program(QUILLON, "problems", "x").returncode, 64)

    def test_a_hundred_thousand(self):
        self.file("many.tex", "\\tracinglostchars2\\count1=0 \\setbox0\\vbox{\\loop\\ifnum\\count1<100002 "
                              "\\setbox1\\hbox to1pt{\\kern2pt}\\advance\\count1 1 \\repeat}\\end\n")
        self.start_shell()
        self.exec("pdftex -interaction=nonstopmode many.tex")
        self.assertEqual(len(self.problems()), 100000)
        done = self.run_program(QUILLON, "problems")
        self.assertEqual(len(done.stdout.splitlines()), 100000)

    def test_a_cancelled_run_keeps_what_it_found(self):
        self.file("long.tex", "\\wrong\n\\immediate\\openout1=begun.txt \\loop\\iftrue\\repeat\n")
        self.start_shell()
        command = "pdftex -interaction=nonstopmode long.tex"
        thread = self.in_background(lambda: self.error_of(lambda: self.exec(command)))
        wait_until(lambda: os.path.exists(os.path.join(self.work, "begun.txt")), "the engine behind its error")
        self.shell_object().Cancel()
        thread.join(60)
        self.assertEqual(self.places(), [(os.path.join(self.work, "long.tex"), 1, "error")])

    def fake(self, *places, numbers="3 1 0 0 0 100"):
        """A tool that reports the first of the places whose file is its problems, and what its reply says."""
        reply = {"----": ["long", 0], "nums": ["TEXT", numbers]}
        if places:
            reply["prbs"] = ["fss ", places[0]]
        self.fake_tool("pdftex", reply=reply)
        self.start_shell()
        self.exec("pdftex x.tex")

    def test_only_a_file_of_the_transcripts_folder_is_read_and_deleted(self):
        records = "e7\0/etc/passwd\0Wrong\0"
        other = self.file("other", records)
        self.fake(other)
        self.assertEqual(self.problems(), [])
        self.assertTrue(os.path.exists(other))

    def test_a_file_of_that_folder_is_read_up_to_what_is_no_record(self):
        folder = os.path.join(self.environment["XDG_CACHE_HOME"], "quillon")
        os.makedirs(folder, 0o700)
        path = self.file("list", "e7\0/etc/passwd\0Wrong\0b3\0\0Box\0x1\0/a\0No\0w2\0/b\0Hidden\0", folder)
        self.fake(path)
        self.assertEqual(self.problems(), [("/etc/passwd", 7, "error", "Wrong"), ("/etc/passwd", 3, "box", "Box")])
        self.assertFalse(os.path.exists(path))

    def run_with(self, **options):
        status, result = self.shell_object().Run(
            dbus.ByteArray(os.fsencode(LATEX + "bad.tex")), dbus.ByteArray(os.fsencode(self.work)),
            dbus.Dictionary({name: dbus.Boolean(value) for name, value in options.items()}, signature="sv"), timeout=90)
        self.assertEqual(status, 1)
        return result

    def test_run_sums_up_when_it_is_asked_to(self):
        self.start_shell()
        self.assertNotIn("summary", self.run_with())
        self.assertNotIn("summary", self.run_with(summary=False))
        self.assertRegex(str(self.run_with(summary=True)["summary"]),
                         r"^1 page, 1 error, 2 undefined references, [0-9.]+ s$")

    def test_exec_sums_up_on_a_terminal_and_with_f(self):
        self.start_shell()
        self.assertNotIn(" page", self.run_program(QUILLON, "exec", "pdftex", "x.tex").stderr)
        self.assertRegex(self.run_program(QUILLON, "exec", "-f", "pdftex", "x.tex").stderr, r"^1 page, [0-9.]+ s\n$")
        self.assertEqual(self.run_program(QUILLON, "exec", "-f", "dvips", "nosuchfile").stderr, "")
        master, slave = pty.openpty()
        done = subprocess.run([QUILLON, "exec", "pdftex", "x.tex"], cwd=self.work, stdout=slave,
                              stderr=subprocess.PIPE, env=self.environment, text=True, timeout=60, check=False)
        os.close(slave)
        os.close(master)
        self.assertRegex(done.stderr, r"^1 page, [0-9.]+ s\n$")


if __name__ == "__main__":
    unittest.main()
