"""Start-up: the flags and their defaults, and what happens without preferences."""

import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402


class Start(HomeTest):
    def state(self, name, **settings):
        self.preferences(**settings)
        output = self.shell(f"print state {name}\n")
        lines = [line for line in output.split("\n") if line.startswith(name + "=")]
        self.assertEqual(len(lines), 1, output + self.errors)
        return lines[0][len(name) + 1:]

    def test_spacechar_out_of_range_or_no_number_is_202(self):
        for value in ("0", "256", "-3", "abc", None):
            self.assertEqual(self.state("space_char", SPACECHAR=value), "202", value)

    def test_spacechar_in_range_is_itself(self):
        for value in ("32", "1", "255", "31"):
            self.assertEqual(self.state("space_char", SPACECHAR=value), value)

    def test_debug_is_on_unless_it_begins_with_0(self):
        self.assertEqual(self.state("doDebug", DEBUG=None), "1")
        self.assertEqual(self.state("doDebug", DEBUG="0"), "0")
        self.assertEqual(self.state("doDebug", DEBUG="no"), "1")

    def test_mptexformat_is_2_only_for_2(self):
        for value, expected in (("2", "2"), ("3", "1"), ("", "1"), (None, "1"), ("21", "2")):
            self.assertEqual(self.state("mp_format_type", MPTEXFORMAT=value), expected, value)

    def test_only_the_first_character_of_a_flag_is_read(self):
        flags = {"USEPDFTEX": "usePdfTeX", "DATABASE": "dataBaseSearch", "USE8BIT": "use8bit",
                 "USEFULLPATHS": "useFullPaths", "AUTOVIEW": "doView", "ADDSPECIALS": "addSpecials",
                 "DORECORD": "doRecord", "RERUN": "runUntilStable", "SNAPSHOT": "fastPreamble",
                 "WATCH": "typesetOnSave"}
        for key, name in flags.items():
            if key == "DATABASE":
                continue  # a missing database turns it off again
            self.assertEqual(self.state(name, **{key: "10"}), "1", key)
            self.assertEqual(self.state(name, **{key: "on"}), "0", key)
            self.assertEqual(self.state(name), "0", key)

    def test_the_modes_without_a_setting_start_off(self):
        self.assertEqual(self.state("useETeX"), "0")
        self.assertEqual(self.state("parseFirstLine"), "0")
        self.assertEqual(self.state("doAlias"), "0")

    def test_a_folder_of_programs_with_too_long_a_path_is_refused(self):
        self.preferences()
        self.copy_binaries()
        deep = self.home
        while len(deep) < 240:
            deep = os.path.join(deep, "d" * 40)
        os.makedirs(deep)
        moved = os.path.join(deep, "quillon")
        os.rename(self.binaries, moved)
        self.binaries = moved
        self.shell("print state home\n")
        self.assertEqual(self.status, 78)
        self.assertIn(f"the path of the programs' folder is too long ({len(moved)} bytes of 255): {moved}\n", self.errors)

    def test_without_a_script_nothing_opens_and_nothing_is_asked(self):
        mark = os.path.join(self.work, "opened")
        viewer = self.file("viewer", f"#!/bin/sh\ntouch '{mark}'\n", mode=0o755)
        tex = self.file("paper.tex", "Hello.\n\\bye\n")
        for settings in ({}, {"PDFVIEW": viewer}):
            self.preferences(AUTOVIEW="1", USEPDFTEX="1", **settings)
            done = subprocess.run(["dbus-run-session", "--", self.shell_program(), "--headless", tex],
                                  env=self.environment, cwd=self.work, capture_output=True, text=True, timeout=100,
                                  check=False)
            self.assertEqual(done.returncode, 0, done.stdout)
            self.assertIn("Output written on paper.pdf", done.stdout)
            self.assertNotIn("chooser", done.stderr)
        self.assertFalse(os.path.exists(mark))

    def test_transcripts_that_nobody_will_read_are_removed(self):
        self.preferences()
        folder = os.path.join(self.environment["XDG_CACHE_HOME"], "quillon")
        gone = subprocess.Popen(["true"])
        gone.wait()
        names = {f"transcript-{gone.pid}-old": (100, False), f"transcript-{os.getpid()}-old": (100, True),
                 f"transcript-{gone.pid}-new": (0, True), "other": (100, True), "transcript-noname": (100, False)}
        for name, (age, _) in names.items():
            path = self.file(name, "x", folder)
            os.utime(path, (os.stat(path).st_mtime - age,) * 2)
        self.shell("print state home\n")
        self.assertEqual(sorted(os.listdir(folder)), sorted(name for name, (_, stays) in names.items() if stays))

    def test_without_a_script_a_missing_editor_is_named(self):
        self.preferences(USEPDFTEX="1")
        tex = self.file("bad.tex", "\\wrong\n\\bye\n")
        done = subprocess.run(["dbus-run-session", "--", self.shell_program(), "--headless", tex], env=self.environment,
                              cwd=self.work, capture_output=True, text=True, timeout=100, check=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn(f"Application Editor has not been set.\n\nUse any text editor to edit {tex}\nat line number 1.\n",
                      done.stdout)
        self.assertNotIn("chooser", done.stderr)

    def test_the_previewer_without_a_signature_is_qvw8(self):
        self.copy_binaries()
        package = os.path.join(self.binaries, "dviview.app", "Contents", "PkgInfo")
        if os.path.exists(package):
            os.unlink(package)
        self.assertEqual(self.state("preview_creator"), "QVW8")

    def test_the_folders_follow_from_the_program(self):
        self.preferences()
        output = self.shell("print state home\nprint state contentsFolder\nprint state shortroot\nprint state pdfexe\n"
                            "print state curr_dir\nprint state supportFolder\nprint state prefsFolder\n")
        home = os.path.realpath(self.binaries)
        self.assertIn(f"home={home}\ncontentsFolder={home}/Quillon.app/Contents\nshortroot={os.path.dirname(home)}\n"
                      f"pdfexe={home}/pdftex.app\ncurr_dir={home}\nsupportFolder={self.home}/data/Quillon\n"
                      f"prefsFolder={self.home}/config/QuillonDataBases\n", output)

    def test_without_preferences_the_quit_window_is_all_that_happens(self):
        output = self.shell("print menu 129\nprint state home\n")
        self.assertEqual(output, "")
        self.assertIn('There is no preferences file "Quillon Preferences".', self.errors)
        self.assertEqual(self.status, 0)
        self.assertFalse(os.path.exists(self.preferences_path))

    def script_file(self, script):
        """Runs a shell on a script that it can read before it starts: standard output, standard error, status."""
        done = self.run_program("dbus-run-session", "--", self.shell_program(), "--headless", "--script",
                                self.file("steps", script))
        return done.stdout, done.stderr, done.returncode

    def test_without_preferences_in_the_background_it_waits_to_be_in_front(self):
        notice = 'There is no preferences file "Quillon Preferences".'
        output, errors, status = self.script_file("background\nforeground\nprint state home\n")
        self.assertEqual((output, status), ("", 0))
        self.assertIn(notice, errors)
        # Never brought there, it leaves at the end of its script without the window.
        output, errors, status = self.script_file("background\n")
        self.assertEqual((output, status), ("", 0))
        self.assertNotIn(notice, errors)

    def test_a_start_in_the_background(self):
        self.preferences()
        output = self.script_file("background\nprint state inBackground\nforeground\nprint state inBackground\n")[0]
        self.assertIn("inBackground=1\ninBackground=0\n", output)

    def test_without_preferences_files_to_open_change_nothing(self):
        done = self.run_program("dbus-run-session", "--", self.shell_program(), "--headless", "x.tex")
        self.assertEqual((done.stdout, done.returncode), ("", 0))

    def test_every_job_state_variable_can_be_printed(self):
        names = """progname appvol appdir home contentsFolder shortroot prefsFolder supportFolder curr_dir texexe etexexe
            pdfexe pdfeexe dvipreview dvipsexe bibexe mkexe mpostexe setup viewpsexe ps2pdfexe editor pdfview
            preview_creator ed_creator default_creator fname format_name dotexfile mydvifile mypdffile mypsfile mybibfile
            current_dvifile current_outputfile lastcommand lastdir mycommand editfile editlinenumber exit_status tex_error
            calleditor usePdfTeX useETeX doDebug dataBaseSearch use8bit mp_format_type useFullPaths doView addSpecials
            doRecord runUntilStable fastPreamble typesetOnSave parseFirstLine doAlias space_char haveosx hasSys9 hasAqua inBackground notifying doQuit aeQuit at_exit
            forceQuit in_dvii myMask sleepTime shift_key_down option_key_down doAppleTeX doFind findString oldItem
            output_is_pdf""".split()
        self.preferences()
        output = self.shell("".join(f"print state {name}\n" for name in names))
        printed = [line.split("=")[0] for line in output.split("\n") if "=" in line]
        self.assertEqual(printed, names)
        self.assertIn("myMask=0xFFFF\nsleepTime=10\n", output)

    def test_an_unknown_step_is_said(self):
        self.preferences()
        self.shell("wait FOR GODOT\n")
        self.assertIn("quillon: script: unknown step: wait FOR GODOT\n", self.errors)

    def test_the_last_command_is_restored(self):
        self.preferences(LASTCOMMAND="pdftex " + "x" * 900, LASTDIR="/tmp")
        output = self.shell("print state lastcommand\nprint state lastdir\n")
        self.assertIn("lastcommand=pdftex " + "x" * 900 + "\nlastdir=/tmp\n", output)

    def test_the_debug_lines_of_the_start(self):
        self.preferences(DEBUG="1")
        output = self.shell("")
        home = os.path.realpath(self.binaries)
        self.assertIn(f"Application directory:\n<{home}>\nDatabase directory:\n<{self.home}/data/Quillon>\n", output)
        self.assertIn("Application VIEWPS has not been set.\n", output)

    def test_as_a_system_9_the_databases_lie_in_the_preferences_folder(self):
        self.preferences(DEBUG="1")
        output = self.shell("print state haveosx\nprint state hasSys9\n", "--system", "9")
        self.assertIn("haveosx=0\nhasSys9=1\n", output)
        self.assertIn(f"Database directory:\n<{self.home}/config/QuillonDataBases>\n", output)


if __name__ == "__main__":
    unittest.main()
