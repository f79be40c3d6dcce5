"""Bad input and faults: preferences, command lines, file names, transcripts, full disks."""

import fcntl
import os
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402

PLAIN = "Hello.\n\\bye\n"


class Faults(HomeTest):
    def setUp(self):
        super().setUp()
        self.file("x.tex", PLAIN)
        self.run_x = f"event QUIL exec ---- TEXT pdftex x.tex dest fss {self.work}\n"

    def assert_runs(self):
        output = self.shell(self.run_x)
        self.assertIn("Output written on x.pdf", output)
        self.assertIn("reply 0 ---- long 0\n", output)

    def test_empty_preferences(self):
        self.write_preferences(b"")
        self.assert_runs()
        self.assertEqual(self.setting("TEXFILE"), f"{self.work}/x.tex")

    def test_binary_preferences_are_kept(self):
        junk = bytes(range(256)) * 40
        self.write_preferences(junk + b"\nSPACECHAR=31\n")
        self.assert_runs()
        self.assertTrue(self.preferences_bytes().startswith(junk))

    def test_preferences_of_20_megabytes(self):
        self.write_preferences(b"SPACECHAR=31\n" + b"# a line that stays\n" * 1000000)
        self.assert_runs()
        self.assertEqual(self.setting("TEXFILE"), f"{self.work}/x.tex")

    def test_preferences_without_a_final_line_end(self):
        self.write_preferences(b"DEBUG=0\nSPACECHAR=31")
        output = self.shell("print state space_char\n" + self.run_x)
        self.assertIn("space_char=31\n", output)
        self.assertEqual((self.setting("SPACECHAR"), self.setting("TEXFILE")), ("31", f"{self.work}/x.tex"))

    def test_preferences_locked_by_another_process(self):
        self.preferences()
        lock = os.open(os.path.join(os.path.dirname(self.preferences_path), ".Quillon Preferences.lock"),
                       os.O_RDWR | os.O_CREAT, 0o600)
        fcntl.flock(lock, fcntl.LOCK_EX)
        output = self.shell("menu 133 11\nprint state use8bit\n")
        self.assertIn("use8bit=1\n", output)
        self.assertIsNone(self.setting("USE8BIT"))
        os.close(lock)

    def test_preferences_changed_between_two_reads(self):
        self.preferences(USE8BIT="0")
        path = self.file("change.tex", "\\immediate\\write18{sed -i s/USE8BIT=0/USE8BIT=1/ '" + self.preferences_path
                         + "'}\\bye\n")
        output = self.shell(f"print setting USE8BIT\nevent QUIL exec ---- TEXT pdftex -shell-escape {path} dest fss "
                            f"{self.work}\nprint setting USE8BIT\n")
        self.assertIn("USE8BIT=0\n", output)
        self.assertTrue(output.endswith("USE8BIT=1\n"), output)

    def test_read_only_preferences_as_an_ordinary_user(self):
        self.preferences(USEPDFTEX="1")
        before = self.preferences_bytes()
        output = self.as_ordinary_user(lambda: self.shell(self.run_x + "print state exit_status\n"),
                                       lambda: (os.chmod(self.preferences_path, 0o444),
                                                os.chmod(os.path.dirname(self.preferences_path), 0o555)))
        self.assertIn("Output written on x.pdf", output)
        self.assertEqual(self.preferences_bytes(), before)

    def test_a_folder_without_permission_as_an_ordinary_user(self):
        self.preferences(USEPDFTEX="1")
        output = self.as_ordinary_user(lambda: self.shell(self.run_x), lambda: os.chmod(self.work, 0o555))
        self.assertIn("reply 0 ---- long 1\n", output)
        self.assertIn("can't write", output.lower())

    def as_ordinary_user(self, procedure, prepare):
        """Runs PROCEDURE with the programs as nobody when the tests are root's."""
        if os.getuid() == 0:
            # The build may lie where only root looks.
            self.copy_binaries(shutil.copy2)
            for folder, _, files in os.walk(self.home):
                os.chown(folder, 65534, 65534)
                for name in files:
                    os.lchown(os.path.join(folder, name), 65534, 65534)
            self.user = 65534
        prepare()
        try:
            return procedure()
        finally:
            for folder, _, _ in os.walk(self.home):
                os.chmod(folder, 0o755)

    def test_command_lines_of_1023_and_1024_bytes(self):
        self.preferences()
        words = "pdftex x.tex \\relax "
        whole = words + "%" + "y" * (1023 - len(words) - 1)
        output = self.shell(f"event QUIL exec ---- TEXT {whole} dest fss {self.work}\nprint setting LASTCOMMAND\n")
        self.assertIn(f"LASTCOMMAND={whole}\n", output)
        self.assertNotIn("characters was received", output)
        output = self.shell(f"event QUIL exec ---- TEXT {whole}z dest fss {self.work}\nprint setting LASTCOMMAND\n")
        self.assertIn(f"LASTCOMMAND={whole}\n", output)
        self.assertIn("A text of 1024 characters was received; only its first 1023 are used.\n", output)

    def test_a_command_line_of_100000_bytes(self):
        self.preferences()
        output = self.shell(f"event QUIL exec ---- TEXT pdftex x.tex %{'y' * 100000} dest fss {self.work}\n")
        self.assertIn("A text of 100014 characters was received; only its first 1023 are used.\n", output)
        self.assertIn("reply 0 ---- long", output)

    def test_file_names_that_the_engine_can_open(self):
        self.preferences(USEPDFTEX="1")
        for name in (b"a'b.tex", b"a`id`.tex", b"a\xffb.tex", b"a&b.tex", b"a:b.tex", b"a b;c.tex", b"a|b.tex"):
            with open(os.path.join(os.fsencode(self.work), name), "w", encoding="ascii") as file:
                file.write(PLAIN)
            path = os.path.join(self.work, name.decode("utf-8", "surrogateescape"))
            self.shell(f"event aevt odoc ---- fss '{path}'\n" if "'" not in path else
                       f"event aevt odoc ---- fss \"{path}\"\n")
            self.assertTrue(os.path.exists(os.fsencode(path).replace(b".tex", b".pdf")), name)

    def test_file_names_that_the_engine_cannot_open_are_said(self):
        self.preferences(USEPDFTEX="1")
        for name, escaped, message in (('a"b.tex', 'a\\"b.tex', 'No engine can open "a"b.tex"'),
                                       ("a$HOME.tex", "a$HOME.tex", "I can't find file"),
                                       ("a\nb.tex", "a\\nb.tex", "I can't find file")):
            self.file(name, PLAIN)
            output = self.shell(f"event aevt odoc ---- fss \"{self.work}/{escaped}\"\nprint state exit_status\n")
            self.assertIn(message, output, name)
            self.assertIn("exit_status=1\n", output)

    def test_a_name_of_30_characters_is_too_long_and_29_are_not(self):
        self.preferences(USEPDFTEX="1")
        for length in (29, 30):
            self.file("n" * (length - 4) + ".tex", PLAIN)
        output = self.shell(f"event aevt odoc ---- fss {self.work}/{'n' * 25}.tex\n")
        self.assertIn("Output written on", output)
        output = self.shell(f"event aevt odoc ---- fss {self.work}/{'n' * 26}.tex\n")
        self.assertIn(f"Filename \"{'n' * 26}.tex\" is too long for Quillon.\n"
                      f"It can be typeset with: quillon exec pdftex {'n' * 26}.tex\n", output)
        self.assertNotIn("Processing", output)

    def test_a_folder_too_deep_for_the_job_state_is_said(self):
        self.preferences(USEPDFTEX="1")
        folder = os.path.join(self.work, *["d" * 40] * 7)
        path = self.file("x.tex", PLAIN, folder)
        output = self.shell(f"event aevt odoc ---- fss {path}\n")
        self.assertIn("is too long for Quillon.\n", output)
        self.assertNotIn("Processing", output)

    def test_an_open_event_with_three_files_takes_the_first(self):
        self.preferences(USEPDFTEX="1")
        paths = [self.file(name, PLAIN) for name in ("one.tex", "two.tex", "three.tex")]
        output = self.shell(f"event aevt odoc ---- list {' '.join(paths)}\n")
        self.assertEqual(output.count("Processing"), 1)
        self.assertIn("Processing -- pdftex one.tex", output)

    def test_a_folder_parameter_in_the_command(self):
        self.preferences()
        other = os.path.join(self.home, "paper")
        self.file("y.tex", PLAIN, other)
        output = self.shell(f"event QUIL exec ---- TEXT pdftex y.tex -@ {other} dest fss {self.work}\n")
        self.assertIn(f"Processing -- pdftex y.tex\nworking directory --  {other}\n", output)
        output = self.shell(f"event QUIL exec ---- TEXT pdftex x.tex -@ /nowhere/at/all dest fss {self.work}\n")
        self.assertIn(f"Processing -- pdftex x.tex\nworking directory --  {self.work}\n", output)

    def test_a_transcript_of_100_megabytes(self):
        self.preferences()
        self.file("flood.tex", "\\def\\line{" + "x" * 990 + "}\\count1=0 \\loop\\immediate\\write16{\\line}"
                  "\\advance\\count1 by 1 \\ifnum\\count1<100000 \\repeat\\bye\n")
        output = self.shell(f"event QUIL exec ---- TEXT pdftex flood.tex dest fss {self.work}\n")
        self.assertEqual(output.count("x" * 990 + "\n"), 100000)
        self.assertIn("reply 0 ---- long 0\n", output)

    def test_half_characters_and_nuls_pass_through(self):
        self.preferences()
        self.file("nuls.sh", "head -c 5000 /dev/zero\nprintf 'a\\303'\nprintf '\\251b\\n'\n")
        self.file("nuls.tex", "\\immediate\\write18{sh nuls.sh}\\bye\n")
        output = self.shell(f"event QUIL exec ---- TEXT pdftex -shell-escape nuls.tex dest fss {self.work}\n")
        self.assertEqual(output.count("\0"), 5000)
        self.assertIn("aéb\n", output)

    def test_a_full_disk_loses_nothing_that_was_there(self):
        self.preferences(USEPDFTEX="1")
        before = self.preferences_bytes()
        self.limit = 0
        output = self.shell(self.run_x + "menu 133 11\nprint state use8bit\n")
        self.assertIn("use8bit=1\n", output)
        self.assertEqual(self.preferences_bytes(), before)

    def test_a_disk_that_fills_up_during_the_transcript_is_said(self):
        self.preferences()
        self.file("flood.tex", "\\def\\line{" + "x" * 990 + "}\\count1=0 \\loop\\immediate\\write16{\\line}"
                  "\\advance\\count1 by 1 \\ifnum\\count1<3000 \\repeat\\end\n")
        self.limit = 2000000
        output = self.shell(f"event QUIL exec ---- TEXT pdftex flood.tex dest fss {self.work}\nprint state home\n")
        self.assertIn("reply 0 ---- long", output)
        self.assertIn("home=", output)


class Transcripts(HomeTest):
    def test_where_no_transcript_can_be_kept_the_console_shows_what_was_said(self):
        self.preferences(USEPDFTEX="1")
        self.environment["XDG_CACHE_HOME"] = self.file("no folder", "x")
        tex = self.file("paper.tex", "Hello.\n\\bye\n")
        output = self.shell(f"choose {tex}\nmenu 129 1\nwait RUN\n")
        self.assertIn("The tool's transcript could not be kept: no transcripts folder\nThis is pdfTeX", output)
        self.assertIn("Output written on paper.pdf (1 page", output)


if __name__ == "__main__":
    unittest.main()
