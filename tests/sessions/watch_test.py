"""Typeset on save: which saves are followed by a run of the real engine, and by how many."""

import os
import subprocess
import sys
import threading
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import DesktopTest, ServiceTest, stop, wait_until  # noqa: E402

ENGINE_SAYS = "This is pdfTeX"
MAIN = "\\input{chapters/one}\\input{chapters/two}\\bye\n"
BOOK = ("% !TEX program = pdflatex\n\\documentclass{article}\\begin{document}\\cite{a}\\label{l}\\ref{l}\\bibliographystyle{plain}"
        "\\bibliography{books}\\end{document}\n")
BOOKS = "@book{a, author={Ada Linden}, title={%s}, publisher={P}, year=2020}\n"


class Watch(ServiceTest):
    def watch(self, text, *arguments, watched="is watched", **settings):
        """Starts a shell that watches x.tex, whose contents are TEXT; its path."""
        path = self.file("x.tex", text)
        self.preferences(**{"USEPDFTEX": "1", "PDFTEXFORMAT": "pdftex", "WATCH": "1", "AUTOVIEW": "0", "TEXFILE": path,
                            **settings})
        self.start_shell(*arguments)
        wait_until(lambda: watched in self.output(), "the watch")
        return path

    def runs(self):
        return self.output().count(ENGINE_SAYS)

    def wait_for_runs(self, count):
        """Waits until so many runs have ended, and until the shell has nothing more to do."""
        wait_until(lambda: self.runs() >= count, f"run {count}")
        self.idle()
        self.assertEqual(self.runs(), count, self.output())

    def idle(self):
        """Waits until nothing runs. The shell answers once it has looked at what was saved before."""
        def nothing_runs():
            # Each answer is a turn of the shell's loop, and a burst is over after eight milliseconds.
            before = self.runs()
            end = time.monotonic() + 0.05
            while time.monotonic() < end:
                self.shell_object().Locate("x", timeout=60)
            return self.runs() == before and not self.processes_of("pdftex.app/Contents/Linux")

        wait_until(nothing_runs, "the end of the runs")

    def text_of(self, name="x.pdf"):
        return subprocess.run(["pdftotext", os.path.join(self.work, name), "-"], capture_output=True, text=True,
                              check=False).stdout

    def test_a_save_is_followed_by_one_run(self):
        self.watch("One.\\bye\n")
        for count in range(1, 4):
            self.file("x.tex", f"Number {count}.\\bye\n")
            self.wait_for_runs(count)
            self.assertIn(f"Number {count}", self.text_of())

    def test_a_burst_is_one_run(self):
        self.watch("One.\\bye\n")
        for count in range(10):
            self.file("x.tex", f"Number {count}.\\bye\n")
        self.wait_for_runs(1)
        self.assertIn("Number 9", self.text_of())

    def test_a_file_that_is_renamed_over_it_counts(self):
        path = self.watch("One.\\bye\n")
        for count in range(1, 3):
            os.rename(self.file(".x.tex.tmp", f"Number {count}.\\bye\n"), path)
            self.wait_for_runs(count)
        os.unlink(path)
        self.idle()
        self.file("x.tex", "Anew.\\bye\n")
        self.wait_for_runs(3)
        self.assertIn("Anew", self.text_of())

    def test_what_is_no_change_is_followed_by_none(self):
        path = self.watch("One.\\bye\n")
        os.chmod(path, 0o600)
        with open(path, "r+b"):
            pass
        self.file("other.tex", "Nobody reads this.\n")
        self.idle()
        self.assertEqual(self.runs(), 0)

    def test_each_file_that_the_last_run_read_is_watched(self):
        for name in ("one", "two"):
            self.file(f"chapters/{name}.tex", f"Chapter {name}.\n")
        self.watch(MAIN)
        self.file("x.tex", MAIN + "%\n")
        self.wait_for_runs(1)
        self.file("chapters/two.tex", "Second chapter.\n")
        self.wait_for_runs(2)
        self.assertIn("Second chapter", self.text_of())
        # A chapter that is read no more is watched no more, and an error forgets no chapter behind it.
        self.file("x.tex", "\\undefd " + MAIN)
        self.wait_for_runs(3)
        self.file("chapters/two.tex", "Third chapter.\n")
        self.wait_for_runs(4)
        self.file("x.tex", "None.\\bye\n")
        self.wait_for_runs(5)
        self.file("chapters/two.tex", "Fourth chapter.\n")
        self.idle()
        self.assertEqual(self.runs(), 5)

    def test_a_file_behind_a_link_is_watched(self):
        real = self.file("real.tex", "Real.\n", os.path.join(self.home, "elsewhere"))
        os.symlink(real, os.path.join(self.work, "part.tex"))
        self.watch("\\input part \\bye\n")
        self.file("x.tex", "\\input part \\bye %\n")
        self.wait_for_runs(1)
        self.file("real.tex", "Changed.\n", os.path.dirname(real))
        self.wait_for_runs(2)
        self.assertIn("Changed", self.text_of())

    def test_what_runs_write_does_not_count(self):
        self.file("books.bib", BOOKS % "Handbook")
        self.watch(BOOK, MAGICCOMMENTS="1", RERUN="1")
        self.file("x.tex", BOOK + "%\n")
        wait_until(lambda: "Pass 3" in self.output(), "the passes")
        self.idle()
        self.assertEqual(self.output().count("Processing --"), 1, self.output())
        self.file("books.bib", BOOKS % "Manual")
        wait_until(lambda: self.output().count("Processing --") == 2, "the run for the database")
        self.idle()
        self.assertEqual(self.output().count("Processing --"), 2, self.output())
        self.assertIn("Manual", self.text_of())

    def test_every_engine_that_a_document_may_ask_for(self):
        self.file("part.tex", "Before.\n")
        for program in ("latex", "lualatex", "xelatex"):
            text = (f"% !TEX program = {program}\n\\documentclass{{article}}\\begin{{document}}\\input{{part}}"
                    "\\end{document}\n")
            self.watch(text, watched="watched", MAGICCOMMENTS="1", PDFTEXFORMAT="")
            self.file("x.tex", text + "%\n")
            for count in (1, 2):
                wait_until(lambda: self.output().count("Output written on x.") == count, f"run {count} of {program}")
                wait_until(lambda: not self.processes_of(f".app/Contents/Linux/{program}"), "its end")
                self.idle()
                self.file("part.tex", f"After {program} {count}.\n")
            wait_until(lambda: self.output().count("Output written on x.") == 3, f"the last run of {program}")
            self.shell_object().Quit(timeout=60)
            wait_until(self.ended, "the end of the shell")

    def slow_engine(self):
        """An engine that runs until the file go is there."""
        self.script_tool(f"echo '{ENGINE_SAYS}'; echo >> {self.home}/began; "
                         f"until [ -e {self.home}/go ]; do read line < {self.home}/step; done; rm {self.home}/go\n")
        os.mkfifo(f"{self.home}/step")

    def let_go(self):
        self.file("go", "", self.home)
        with open(f"{self.home}/step", "w", encoding="utf-8") as step:
            step.write("on\n")

    def began(self, count):
        wait_until(lambda: os.path.exists(f"{self.home}/began") and os.path.getsize(f"{self.home}/began") >= count,
                   f"run {count}")
        self.assertEqual(os.path.getsize(f"{self.home}/began"), count)

    def test_saves_during_a_run_are_followed_by_one_more(self):
        self.slow_engine()
        self.watch("One.\\bye\n")
        self.file("x.tex", "Two.\\bye\n")
        self.began(1)
        for count in range(20):
            self.file("x.tex", f"Number {count}.\\bye\n")
        self.let_go()
        self.began(2)
        self.let_go()
        self.wait_for_runs(2)

    def test_a_file_that_changes_in_every_run_does_not_loop(self):
        # A program beside the engine writes what the document reads, and something else each time.
        self.file("made.tex", "0\n")
        self.script_tool("date +%s%N > made.tex\nexec pdftex \"$@\"\n")
        self.watch("\\input made \\bye\n")
        self.file("x.tex", "\\input made \\bye %\n")
        wait_until(lambda: "has changed during each of the last runs" in self.output(), "the end of the runs")
        self.idle()
        count = self.runs()
        self.assertLess(count, 10)
        self.file("x.tex", "\\input made \\bye %%\n")
        wait_until(lambda: self.runs() > count, "a run for a save")

    def test_a_file_that_a_run_makes_the_same_each_time_is_followed_by_no_run_for_ever(self):
        self.file("made.tex", "0\n")
        self.script_tool("echo same > made.tex\nexec pdftex \"$@\"\n")
        self.watch("\\input made \\bye\n")
        self.file("x.tex", "\\input made \\bye %\n")
        wait_until(lambda: self.runs() >= 1, "a run")
        self.idle()
        self.assertLessEqual(self.runs(), 2)
        self.assertNotIn("in each of the last", self.output())

    def test_the_menu_item_turns_it_on_and_off(self):
        ends = [os.path.join(self.home, f"end{number}") for number in range(3)]
        script = self.file("script", f"wait FILE {ends[0]}\nmenu 131 20\nwait FILE {ends[1]}\nmenu 131 20\n"
                                     f"wait FILE {ends[2]}\n")
        path = self.file("x.tex", "One.\\bye\n")
        self.preferences(USEPDFTEX="1", PDFTEXFORMAT="pdftex", TEXFILE=path)
        self.start_shell("--script", script)
        self.file("x.tex", "Two.\\bye\n")
        self.idle()
        self.assertEqual(self.runs(), 0)
        self.file(ends[0], "")
        wait_until(lambda: "\"x.tex\" is watched: it is typeset when it is saved." in self.output(), "the watch")
        self.assertEqual(self.setting("WATCH"), "1")
        self.file("x.tex", "Three.\\bye\n")
        self.wait_for_runs(1)
        self.file(ends[1], "")
        wait_until(lambda: self.setting("WATCH") == "0", "the end of the watch")
        self.file("x.tex", "Four.\\bye\n")
        self.idle()
        self.assertEqual(self.runs(), 1)
        self.file(ends[2], "")
        wait_until(self.ended, "the end of the shell")

    def test_the_document_that_was_typeset_last_is_watched(self):
        self.watch("One.\\bye\n")
        other = self.file("other.tex", "Other.\\bye\n")
        self.shell_object().Open(other, timeout=60)
        wait_until(lambda: "\"other.tex\" is watched" in self.output() or self.runs() == 1, "the other document")
        self.idle()
        self.file("x.tex", "Two.\\bye\n")
        self.file("other.tex", "Changed.\\bye\n")
        self.wait_for_runs(2)
        self.assertIn("Changed", self.text_of("other.pdf"))

    def test_a_folder_that_is_renamed_and_comes_back(self):
        self.file("part/a.tex", "Before.\n")
        self.watch("\\input part/a \\bye\n")
        self.file("x.tex", "\\input part/a \\bye %\n")
        self.wait_for_runs(1)
        os.rename(os.path.join(self.work, "part"), os.path.join(self.work, "away"))
        self.file("away/a.tex", "Elsewhere.\n")
        self.idle()
        self.assertEqual(self.runs(), 1)
        os.mkdir(os.path.join(self.work, "part"))
        self.file("part/a.tex", "Again.\n")
        wait_until(lambda: self.runs() >= 2, "a run for the new folder")
        self.idle()
        self.assertIn("Again", self.text_of())
        count = self.runs()
        self.file("part/a.tex", "At last.\n")
        self.wait_for_runs(count + 1)

    def test_a_file_system_that_is_unmounted(self):
        mounted = os.path.join(self.work, "mounted")
        os.mkdir(mounted)
        mount = subprocess.run(["mount", "-t", "tmpfs", "none", mounted], capture_output=True, check=False)
        if mount.returncode:
            self.skipTest("this user may mount nothing")
        self.addCleanup(subprocess.run, ["umount", "-l", mounted], capture_output=True, check=False)
        self.file("mounted/a.tex", "Before.\n")
        self.watch("\\input mounted/a \\bye\n")
        self.file("x.tex", "\\input mounted/a \\bye %\n")
        self.wait_for_runs(1)
        subprocess.run(["umount", mounted], check=True)
        self.idle()
        self.assertEqual(self.runs(), 1)
        self.file("mounted/a.tex", "Under it.\n")
        self.wait_for_runs(2)
        self.assertIn("Under it", self.text_of())

    def test_thousands_of_saves_a_second(self):
        path = self.watch("One.\\bye\n")
        saves, stop = [0], threading.Event()

        def save():
            while not stop.is_set():
                with open(path, "w", encoding="utf-8") as file:
                    file.write(f"Save {saves[0]}.\\bye\n")
                saves[0] += 1

        thread = threading.Thread(target=save)
        thread.start()
        slowest = 0.0
        while saves[0] < 20000:
            before = time.monotonic()
            self.shell_object().Problems(timeout=60)
            slowest = max(slowest, time.monotonic() - before)
        stop.set()
        thread.join()
        self.idle()
        self.assertGreater(self.runs(), 1)
        self.assertIn(f"Save {saves[0] - 1}.", self.text_of())
        # A call waits for the run that goes on, and for no save.
        self.assertLess(slowest, 10)

    def test_names_with_blanks_quotes_and_other_bytes(self):
        name = b"it's a \xff part.tex"
        self.file(os.fsdecode(name), "Before.\n")
        main = b"\\input{\"it's a \xff part\"}\\end\n"
        self.watch(b"\\catcode255=12 " + main)
        self.file("x.tex", b"\\catcode255=12 " + main + b"%\n")
        wait_until(lambda: self.runs() == 1, "a run")
        self.idle()
        self.file(os.fsdecode(name), "After.\n")
        self.wait_for_runs(2)
        self.assertIn("After", self.text_of())

    def test_a_private_shell_watches_nothing(self):
        path = self.file("x.tex", "One.\\bye\n")
        self.preferences(USEPDFTEX="1", PDFTEXFORMAT="pdftex", WATCH="1", TEXFILE=path)
        done = self.run_program(os.path.join(self.binaries, "..", "..", "bin", "quillon"), "exec", "pdftex", "x.tex")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertNotIn("watched", done.stdout)


class WatchOnADesktop(DesktopTest):
    def test_a_run_that_waits_for_an_answer_ends_for_a_save(self):
        path = self.file("x.tex", "One.\\bye\n")
        self.preferences(USEPDFTEX="1", PDFTEXFORMAT="pdftex", WATCH="1", AUTOVIEW="0", TEXFILE=path,
                         TEXWINDOW="100 200 400 800")
        self.start_desktop()
        # The person writes in a window of another program, which keeps the keyboard.
        editor = self.start_editor()
        for text in ("\\undefd\\bye\n", "\\undefd\\undefd\\bye\n"):
            self.file("x.tex", text)
            wait_until(lambda: self.windows("– Quillon$"), "the window of the run")
            self.assertEqual(self.active(), editor)
        self.file("x.tex", "Fine.\\bye\n")
        pdf = os.path.join(self.work, "x.pdf")
        wait_until(lambda: os.path.exists(pdf) and not self.windows("– Quillon$"), "the output")
        wait_until(lambda: not self.processes_of("pdftex.app/Contents/Linux"), "the end of the run")
        self.assertEqual(self.active(), editor)
        self.assertIn("The document was saved, so the run that waits for an answer ends.", self.console())

    def start_editor(self):
        editor = subprocess.Popen(["xterm", "-title", "an editor", "-e", "cat"], env=self.environment)
        self.addCleanup(stop, editor)
        (window,) = wait_until(lambda: self.windows("^an editor$"), "the editor")
        self.activate(window)
        return window


if __name__ == "__main__":
    unittest.main()
