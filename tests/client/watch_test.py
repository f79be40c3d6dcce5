"""The command `quillon watch`: a document is typeset whenever a file that it is made from is saved."""

import os
import shutil
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import wait_until  # noqa: E402
from harness.clients import Clients  # noqa: E402

MAIN = ("% !TEX program = pdflatex\n\\documentclass{article}\\begin{document}\n\\include{one}\n\\include{two}\n"
        "\\end{document}\n")


class Watch(Clients):
    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1", PDFTEXFORMAT="pdftex", MAGICCOMMENTS="1", RERUN="1", Editor="", AUTOVIEW="1")
        self.said = os.path.join(self.home, "said")

    def watch(self, *words):
        with open(self.said, "wb") as output:
            self.client = self.start("watch", *words, stdout=output, stderr=output)
        return self.client

    def lines(self):
        with open(self.said, encoding="utf-8", errors="surrogateescape") as file:
            return file.read().splitlines()

    def summaries(self):
        return [line for line in self.lines() if " pages, " in line or " page, " in line]

    def after_run(self, count):
        """Waits for the end of run COUNT; its last line."""
        wait_until(lambda: len(self.summaries()) >= count or self.client.poll() is not None, f"run {count}")
        self.assertIsNone(self.client.poll(), self.lines())
        self.assertEqual(len(self.summaries()), count, self.lines())
        return self.summaries()[-1]

    def interrupt(self, number=signal.SIGINT):
        self.client.send_signal(number)
        wait_until(lambda: self.client.poll() is not None, "the end of the command")
        self.assertEqual(self.client.returncode, 128 + number)
        self.nothing_is_left()

    def chapters(self):
        self.file("one.tex", "First.\n")
        self.file("two.tex", "Second.\n")
        return self.file("main.tex", MAIN)

    def test_each_save_is_followed_by_a_run_and_its_problems(self):
        self.chapters()
        self.watch("main.tex")
        self.assertRegex(self.after_run(1), r"^2 pages, [0-9.]+ s$")
        self.file("two.tex", "Second, see \\ref{nowhere}.\n")
        self.assertIn("1 undefined reference", self.after_run(2))
        self.assertEqual([line for line in self.lines() if line.startswith(self.work + "/two.tex:1: ")],
                         self.lines()[-2:-1], self.lines())
        self.file("two.tex", "Second, \\undefd.\n")
        wait_until(lambda: any("Undefined control sequence" in line for line in self.lines()), "the error")
        self.file("two.tex", "Second.\n")
        wait_until(lambda: self.summaries() and self.summaries()[-1].startswith("2 pages, ") and
                   "error" not in self.summaries()[-1], "a good run")
        self.interrupt()

    def test_a_chapter_is_typeset_through_its_root(self):
        self.chapters()
        for name in ("one", "two"):
            self.file(f"{name}.tex", f"% !TEX root = main.tex\nChapter {name}.\n")
        self.watch("one.tex")
        self.after_run(1)
        self.file("two.tex", "Changed.\n")
        self.after_run(2)
        self.interrupt(signal.SIGTERM)

    def test_the_shell_of_the_person_is_used(self):
        path = self.file("x.tex", "One.\\bye\n")
        self.start_shell()
        self.watch(path)
        self.after_run(1)
        self.assertIn("This is pdfTeX", self.output())
        self.file("x.tex", "Two.\\bye\n")
        self.after_run(2)
        # Without it the command goes on with a shell of its own.
        self.assertEqual(self.quillon("quit")[0], 0)
        self.file("x.tex", "Three.\\bye\n")
        self.after_run(3)
        self.interrupt()

    def test_only_on_request_the_viewer_shows_it(self):
        viewer = self.recorder("viewer")
        self.add_preferences(f"PDFVIEW={viewer}\n")
        path = self.file("x.tex", "One.\\bye\n")
        self.watch(path)
        self.after_run(1)
        self.interrupt()
        self.assertEqual(self.starts("viewer"), [])
        self.watch("--view", path)
        wait_until(lambda: self.starts("viewer"), "the viewer")
        self.assertEqual(self.starts("viewer"), [[os.path.join(self.work, "x.pdf")]])
        self.interrupt()

    def test_what_cannot_be_typeset_is_said_and_the_next_save_tried(self):
        path = self.file("x.tex", "% !TEX program = sh -c touch\\ owned\nOne.\\bye\n")
        self.watch(path)
        wait_until(lambda: any("which Quillon does not know" in line for line in self.lines()), "the reason")
        self.file("x.tex", "One.\\bye\n")
        self.after_run(1)
        self.interrupt()
        self.assertNotIn("owned", os.listdir(self.work))

    def test_interrupted_in_a_run(self):
        self.file("x.tex", "\\def\\x{\\x}\\immediate\\write16{endless}\\x\n")
        self.watch("x.tex")
        wait_until(lambda: self.running_as("pdftex"), "the engine")
        self.interrupt()

    def test_a_killed_shell_is_replaced(self):
        path = self.file("x.tex", "One.\\bye\n")
        self.watch(path)
        self.after_run(1)
        for shell in self.processes_of("--private"):
            os.kill(shell, signal.SIGKILL)
        self.file("x.tex", "Two.\\bye\n")
        self.after_run(2)
        self.interrupt()

    def test_a_document_that_goes_and_comes_back(self):
        path = self.file("x.tex", "One.\\bye\n")
        self.watch(path)
        self.after_run(1)
        os.unlink(path)
        shutil.move(self.file("x.new", "Two.\\bye\n"), path)
        self.after_run(2)
        self.interrupt()

    def test_the_reader_of_its_output_goes(self):
        path = self.file("x.tex", "One.\\bye\n")
        self.client = self.start("watch", path)
        wait_until(self.client.stdout.readline, "a line")
        self.client.stdout.close()
        self.file("x.tex", "Two.\\bye\n")
        wait_until(lambda: self.client.poll() is not None, "the end of the command")
        self.assertEqual(self.client.returncode, -signal.SIGPIPE)
        self.nothing_is_left()

    def test_wrong_words(self):
        for words in ((), ("--view",), ("a", "b"), ("-x",)):
            self.assertEqual(self.quillon("watch", *words)[0], 64, words)
        status, _, error = self.quillon("watch", "missing.tex")
        self.assertEqual((status, error), (1, "quillon: there is no file missing.tex\n"))

    def test_eight_at_once(self):
        watchers = []
        for number in range(8):
            self.file(f"d{number}.tex", f"Number {number}.\\bye\n")
            watchers.append(self.start("watch", f"d{number}.tex", stderr=subprocess.DEVNULL))
        for watcher in watchers:
            wait_until(watcher.stdout.readline, "a line")
        for number in range(8):
            self.file(f"d{number}.tex", f"Again {number}.\\bye\n")
        for number, watcher in enumerate(watchers):
            wait_until(watcher.stdout.readline, "the next line")
            watcher.send_signal(signal.SIGINT)
            text = subprocess.run(["pdftotext", os.path.join(self.work, f"d{number}.pdf"), "-"], capture_output=True,
                                  text=True, check=True).stdout
            self.assertIn(f"Again {number}", text)
        for watcher in watchers:
            wait_until(lambda of=watcher: of.poll() is not None, "the end of the command")
        self.nothing_is_left()


if __name__ == "__main__":
    unittest.main()
